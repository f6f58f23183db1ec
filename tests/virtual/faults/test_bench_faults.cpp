// Every return line of the bench with an error in it: the whole bench over the virtual reader, whose calls fail.
#include "drivers/virtual/reader/faults.h"
#include "tests/support/bench_window.h"
#include "tests/virtual/support/tray_world.h"

#include <QComboBox>
#include <QDirIterator>
#include <QSet>

using drivers::tray::Fault;
using drivers::tray::FaultKind;
using virtual_test::TrayWorld;

namespace {

struct Failure {
    const char *call;
    int code;
};

using Failures = QList<Failure>;

/// A return line without its tag and values.
QString formOf(QString line)
{
    static const QRegularExpression tag(R"(^\[[^]]*\] )");
    static const QRegularExpression value(R"(\[[^]]*\])");
    return line.remove(tag).replace(value, "[]");
}

/// The forms of the return lines in the bench's sources, but for those of success alone.
QSet<QString> formsInSources()
{
    static const QRegularExpression literal("\"\\[%s\\] (\\[%s\\] [^\"]*return\\[[^\"]*%[^\"]*)\"");
    QSet<QString> forms;
    for (const char *folder : {"app", "pages"}) {
        QDirIterator files(QString(UNIFOLD_SOURCE "/") + folder, {"*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly))
                qFatal("%s cannot be read", qPrintable(file.fileName()));
            const QString text = QString::fromUtf8(file.readAll());
            for (auto match = literal.globalMatch(text); match.hasNext();) {
                const QString line = match.next().captured(1);
                if (!line.contains("成功"))
                    forms << formOf(line);
            }
        }
    }
    return forms;
}

} // namespace

Q_DECLARE_METATYPE(Failures)

class TestBenchFaults : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_world = std::make_unique<TrayWorld>();
        m_bench = std::make_unique<BenchWindow>();
        m_bench->loadLibrary();
        m_bench->press("pushButton_enum_all");
    }

    void cleanup()
    {
        m_bench.reset();
        m_world.reset();
    }

    void everyReturnLineShowsAnError_data()
    {
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<Failures>("failures");
        QTest::addColumn<QStringList>("lines");

        const auto row = [](const char *button, const char *call, const char *line, int code = -9) {
            QTest::newRow(button) << QStringList{button} << Failures{{call, code}} << QStringList{line};
        };
        row("pushButton_firm_version", "vek_firm_version", "[状态指示] vek_firm_version return[-9] (assert 0)");
        row("pushButton_beep", "vek_beep", "[状态指示] vek_beep return[-9] (assert 0)");
        row("pushButton_set_baud", "vek_set_baud", "[状态指示] vek_set_baud return[-9] (assert 0)");

        row("pushButton_msr_switch_mode_command", "vek_msr_mode_switch",
            "[磁条卡] 磁条设置为指令交互方式 return[-9] (assert 0)");
        row("pushButton_msr_switch_mode_keyboard", "vek_msr_mode_switch",
            "[磁条卡] 磁条设置为USB键盘方式 return[-9] (assert 0)");
        row("pushButton_async_start", "vek_msr_qm_start", "[磁条卡] vek_msr_qm_start return[-9] (assert 0)");
        row("pushButton_async_get_status", "vek_msr_qm_status",
            "[磁条卡] vek_msr_qm_status return[-9][未刷卡] (assert 1)");
        row("pushButton_async_get_data", "vek_msr_qm_get", "[磁条卡] vek_msr_qm_get return[-9] (assert 0)");
        row("pushButton_stop", "vek_msr_qm_stop", "[磁条卡] vek_msr_qm_stop return[-9] (assert 0)");
        row("pushButton_msr_sync_read", "vek_msr_qm_start", "[磁条卡] vek_msr_qm_start return[-9] (assert 0)");
        row("pushButton__msr_sync_write", "vek_msr_write", "[磁条卡] vek_msr_write return[-9] (assert 0)");
        QTest::newRow("a blocking read whose swipe cannot be fetched")
            << QStringList{"pushButton_msr_sync_read"}
            << Failures{{"vek_msr_qm_status", sdk::kMsrSwiped}, {"vek_msr_qm_get", -9}}
            << QStringList{"[磁条卡] vek_msr_qm_get return[-9] (assert 0)"};

        row("pushButton_read_idc", "vek_idcr_getinfo", "[二代证] vek_idcr_getinfo return[-9] (assert 0)");
        row("pushButton_read_sam_id", "vek_idcr_read_samid", "[二代证] vek_idcr_read_uid return[-9] (assert 0)");
        row("pushButton_read_phsy_id", "vek_idcr_read_uid", "[二代证] vek_idcr_read_uid return[-9] (assert 0)");
        row("pushButton_read_dn", "vek_idcr_read_dn", "[二代证] vek_idcr_read_dn return[-9] (assert 0)");
        row("pushButton_read_emid", "vek_idcr_read_emid", "[二代证] vek_idcr_read_emid return[-9] (assert 0)");
        row("pushButton_command_aa", "vek_idcr_transive", "[二代证] vek_idcr_transive return[-9] (assert 0)");

        row("pushButton_cpucard_status", "vek_icc_status", "[IC卡] vek_icc_status return[0xFFFFFFF7]");
        row("pushButton_cpucard_poweron", "vek_icc_poweron", "[IC卡] vek_icc_poweron return[0xFFFFFFF7] (assert 0)");
        row("pushButton_cpucard_apdu", "vek_icc_apdu", "[IC卡] vek_icc_apdu return[0xFFFFFFF7] (assert 0)");
        row("pushButton_cpucard_poweroff", "vek_icc_poweroff", "[IC卡] vek_icc_poweroff return[0xFFFFFFF7] (assert 0)");
        row("pushButton_pboc_readinfo", "vek_pboc_get_card_info",
            "[IC卡] vek_pboc_get_card_info return[0xFFFFFFF7] (assert 0)");
        row("pushButton_pboc_arqc", "vek_pboc_get_arqc", "[IC卡] vek_pboc_get_arqc return[0xFFFFFFF7] (assert 0)");
        row("pushButton_rf_probe", "vek_probe_rf", "[IC卡] vek_probe_rf return[0xFFFFFFF7] (assert 0)");

        row("pushButton_mifare_find", "vek_mifare_request", "[M1卡] vek_mifare_request return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_auth", "vek_mifare_authentication",
            "[M1卡] vek_mifare_authentication return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_change_password", "vek_mifare_change_key",
            "[M1卡] vek_mifare_change_key return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_read_block", "vek_mifare_read_block",
            "[M1卡] vek_mifare_read_block return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_write_block", "vek_mifare_write_block",
            "[M1卡] vek_mifare_write_block return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_wallet_init", "vek_mifare_init_value",
            "[M1卡] vek_mifare_init_value return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_wallet_inc", "vek_mifare_increase_value",
            "[M1卡] vek_mifare_increase_value return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_wallet_dec", "vek_mifare_decrease_value",
            "[M1卡] vek_mifare_decrease_value return[0xFFFFFFF7] (assert 0)");
        row("pushButton_mifare_wallet_val", "vek_mifare_read_value",
            "[M1卡] vek_mifare_read_value return[0xFFFFFFF7] (assert 0)");

        row("pushButton_gov_info", "vek_ssse_get_issuer_info",
            "[社保卡] vek_ssse_get_issuer_info return[0xFFFFFFF7] (assert 0)");
        row("pushButton_user_info", "vek_ssse_get_user_info",
            "[社保卡] vek_ssse_get_user_info return[0xFFFFFFF7] (assert 0)");

        row("pushButton_close", "vek_close", "[主界面] vek_close return[-9].");
    }

    void everyReturnLineShowsAnError()
    {
        QFETCH(QStringList, buttons);
        QFETCH(Failures, failures);
        QFETCH(QStringList, lines);
        m_bench->press("pushButton_open_default");
        for (const Failure &failure : failures)
            fail(failure);
        prepareFields();
        m_bench->clearLog();
        for (const QString &button : buttons)
            pressAnywhere(button.toUtf8().constData());
        QCOMPARE(returnLines(), lines);
        for (const Fault &fault : m_world->tray().state()->faults)
            QVERIFY2(fault.seen >= 1, fault.call.c_str());
    }

    void openingFails()
    {
        for (const char *button : {"pushButton_open_default", "pushButton_open_select"}) {
            drivers::reader::clearFaults(m_world->tray());
            fail({"vek_open", 0});
            m_bench->clearLog();
            m_bench->press(button);
            QCOMPARE(returnLines(), QStringList{"[主界面] vek_open 打开设备失败！return[0H]"});
        }
    }

    void listingFails()
    {
        fail({"vek_enum_devices", -9});
        m_bench->clearLog();
        m_bench->press("pushButton_enum_select");
        QCOMPARE(m_bench->log().filter("-9"), QStringList{"[主界面] vek_enum_devices 检索到-9个设备."});
        m_bench->clearLog();
        m_bench->press("pushButton_enum_all");
        QCOMPARE(m_bench->log().filter("-9"), (QStringList{"[主界面] vek_enum_devices 检索到-9个HID设备.",
                                                           "[主界面] vek_enum_devices 检索到-9个串口设备."}));
        QCOMPARE(m_bench->widget<QComboBox>("comboBox_select_device")->count(), 0);
    }

    void closingFailsWithoutADevice()
    {
        m_bench->press("pushButton_open_default");
        m_bench->press("pushButton_close");
        fail({"vek_close", -9});
        m_bench->widget<QAbstractButton>("pushButton_close")->setEnabled(true);
        m_bench->clearLog();
        m_bench->press("pushButton_close");
        QCOMPARE(returnLines(), QStringList{"[主界面] vek_close return[-9]."});
    }

    void pollingShowsWhatFails_data()
    {
        QTest::addColumn<Failures>("failures");
        QTest::addColumn<QString>("line");
        QTest::newRow("start") << Failures{{"vek_msr_qm_start", -9}}
                               << "[磁条卡] vek_msr_qm_start return[-9] (assert 0)";
        QTest::newRow("a swipe without data")
            << Failures{{"vek_msr_qm_status", sdk::kMsrSwipedNoData}} << "[磁条卡] 检测到刷卡，但磁条无信息！return[9]";
        QTest::newRow("fetching") << Failures{{"vek_msr_qm_status", sdk::kMsrSwiped}, {"vek_msr_qm_get", -9}}
                                  << "[磁条卡] 取回磁条数据失败！return[-9]";
    }

    void pollingShowsWhatFails()
    {
        QFETCH(Failures, failures);
        QFETCH(QString, line);
        m_bench->press("pushButton_open_default");
        for (const Failure &failure : failures)
            fail(failure);
        m_bench->clearLog();
        pressAnywhere("pushButton_async_thread_start");
        QTRY_VERIFY2(returnLines().contains(line), qPrintable(m_bench->log().join('\n')));
        pressAnywhere("pushButton_async_thread_stop");
    }

    /// Only after all the others.
    void noReturnLineIsLeftOut()
    {
        const QSet<QString> forms = formsInSources();
        QVERIFY(forms.size() > 30);
        const QStringList missing = (forms - m_seen).values();
        QVERIFY2(missing.isEmpty(), qPrintable("never seen with an error: " + missing.join(" | ")));
    }

private:
    void fail(const Failure &failure)
    {
        Fault fault;
        fault.kind = FaultKind::Code;
        fault.call = failure.call;
        fault.value = failure.code;
        drivers::reader::addFault(m_world->tray(), fault);
    }

    /// What some buttons want to find before they call anything.
    void prepareFields()
    {
        m_bench->widget<QLineEdit>("lineEdit__mifare_block_data_new")->setText(QString(32, '0'));
        m_bench->widget<QAbstractButton>("checkBox_mifare_en_change_password")->setChecked(true);
        m_bench->widget<QAbstractButton>("checkBox_2")->setChecked(true);
        m_bench->widget<QLineEdit>("lineEdit_msr_track_2")->setText("12345");
    }

    /// Presses a button wherever it is: its page comes to the front.
    void pressAnywhere(const char *name)
    {
        auto *const tabs = m_bench->widget<QTabWidget>("tabWidget");
        for (int i = 0; i < tabs->count(); ++i) {
            if (tabs->widget(i)->findChild<QAbstractButton *>(name) != nullptr)
                tabs->setCurrentIndex(i);
        }
        m_bench->press(name);
    }

    QStringList returnLines()
    {
        QStringList lines = m_bench->log().filter("return[");
        for (const QString &line : qAsConst(lines))
            m_seen << formOf(line);
        return lines;
    }

    QSet<QString> m_seen; ///< the forms of the return lines of all tests so far

    std::unique_ptr<TrayWorld> m_world;
    std::unique_ptr<BenchWindow> m_bench;
};

QTEST_MAIN(TestBenchFaults)
#include "test_bench_faults.moc"
