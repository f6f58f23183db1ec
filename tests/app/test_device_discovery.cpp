#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/support/bench.h"

#include <QComboBox>
#include <QLabel>
#include <QRadioButton>

#include <cstdlib>
#include <cstring>
#include <map>

namespace {

const QString kSeparator = Bench::separator("主界面");

/// Lets the driver find `lists` by transport: the text it hands out (null for a null pointer) and the count it reports.
struct Found {
    int count;
    const char *list;
};

void script(const std::map<int, Found> &found)
{
    recorder().vek_enum_devices = [found](int transport, char **list) {
        const auto entry = found.find(transport);
        if (entry == found.end())
            return 0;
        // The bench gives back only lists of found devices.
        static char leftAlone[] = "left alone";
        if (entry->second.count < 1)
            *list = leftAlone;
        else
            *list = entry->second.list == nullptr ? nullptr : strdup(entry->second.list);
        return entry->second.count;
    };
    recorder().vek_free_list = [](char *list) { std::free(list); };
}

QStringList devices(Bench &bench)
{
    QStringList names;
    auto *combo = bench.widget<QComboBox>("comboBox_select_device");
    for (int i = 0; i < combo->count(); ++i)
        names << combo->itemText(i);
    return names;
}

QString help(const QString &text)
{
    return "<p><span style=\" font-size:10pt; color:#0000ff;\">" + text + "</span></p>";
}

} // namespace

class TestDeviceDiscovery : public QObject {
    Q_OBJECT

private slots:
    void eachTransportHasItsCodeAndHelpText_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("USB") << "radioButton_usb" << 1 << "USB多功能读卡器,具体功能取决于硬件配置";
        QTest::newRow("serial") << "radioButton_serial" << 2 << "串口多功能读卡器, 具体功能取决于硬件配置";
        QTest::newRow("PC/SC") << "radioButton_pcsc" << 3 << "PC/SC智能卡读卡器";
        QTest::newRow("SDT")
            << "radioButton_sdt" << 4
            << "部标SDT设备, "
               "仅支持读取身份证卡面信息和读取模块码。端口SDT0001~0016是串口设备，对应于COM1~COM16；SDT1001"
               "~1016是USB设备";
    }

    void eachTransportHasItsCodeAndHelpText()
    {
        QFETCH(QString, button);
        QFETCH(int, code);
        QFETCH(QString, text);
        Bench bench;
        bench.loadDriver();
        bench.press(button.toUtf8().constData());
        QVERIFY(bench.widget<QLabel>("label_device_info")->text().contains(help(text)));
        QVERIFY(bench.log().isEmpty());
        bench.press("pushButton_enum_select");
        QCOMPARE(Bench::calls(), QStringList({QString("vek_enum_devices(%1, &null)").arg(code)}));
    }

    void theFormStartsWithTheUsbHelpText()
    {
        Bench bench;
        const QString initial = bench.widget<QLabel>("label_device_info")->text();
        bench.loadDriver();
        bench.press("radioButton_serial");
        bench.press("radioButton_usb");
        QCOMPARE(initial, bench.widget<QLabel>("label_device_info")->text());
        QVERIFY(initial.contains(help("USB多功能读卡器,具体功能取决于硬件配置")));
    }

    void sdtFills32PortNames()
    {
        Bench bench;
        bench.loadDriver();
        bench.press("radioButton_sdt");
        QStringList expected;
        for (int n = 1; n <= 16; ++n)
            expected << QString("SDT10%1").arg(n, 2, 10, QChar('0')) << QString("SDT00%1").arg(n, 2, 10, QChar('0'));
        QCOMPARE(devices(bench), expected);
        QCOMPARE(expected.size(), 32);
        QCOMPARE(bench.widget<QComboBox>("comboBox_select_device")->currentIndex(), 0);
        bench.press("radioButton_usb");
        QCOMPARE(devices(bench), expected);
    }

    void enumeratingTheSelectedTransport()
    {
        Bench bench;
        bench.loadDriver();
        script({{1, {2, "甲|B|"}}});
        bench.press("pushButton_enum_select");
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(1, &null)", "vek_free_list(list)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[主界面] vek_enum_devices 检索到2个设备.", "[主界面] 设备列表[甲|B|].",
                              "[主界面] 设备1 [甲].", "[主界面] 设备2 [B]."}));
        QCOMPARE(devices(bench), QStringList({"甲", "B"}));
        QCOMPARE(bench.widget<QComboBox>("comboBox_select_device")->currentIndex(), 0);
    }

    void listsOfEveryShapeAreAccepted_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<bool>("null");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("last name without separator") << QByteArray("A|B") << false << QStringList({"A", "B"});
        QTest::newRow("one name without separator") << QByteArray("A") << false << QStringList({"A"});
        QTest::newRow("empty list") << QByteArray("") << false << QStringList();
        QTest::newRow("null list") << QByteArray() << true << QStringList();
        QTest::newRow("empty name") << QByteArray("A||B|") << false << QStringList({"A", "", "B"});
        QTest::newRow("markup") << QByteArray("<b>A</b>|") << false << QStringList({"<b>A</b>"});
        QByteArray many;
        QStringList names;
        for (int i = 0; i < 500; ++i) {
            names << QString("Reader %1").arg(i);
            many += names.last().toUtf8() + '|';
        }
        QTest::newRow("500 readers") << many << false << names;
    }

    void listsOfEveryShapeAreAccepted()
    {
        QFETCH(QByteArray, list);
        QFETCH(bool, null);
        QFETCH(QStringList, names);
        const QString raw = QString::fromUtf8(list);
        Bench bench;
        bench.loadDriver();
        script({{1, {1, null ? nullptr : list.constData()}}});

        bench.press("pushButton_enum_select");
        QStringList lines{kSeparator, "[主界面] vek_enum_devices 检索到1个设备.", "[主界面] 设备列表[" + raw + "]."};
        for (int i = 0; i < names.size(); ++i)
            lines << QString("[主界面] 设备%1 [%2].").arg(i + 1).arg(names[i]);
        QCOMPARE(bench.log(), lines);
        QCOMPARE(devices(bench), names);
        const QString freed = null ? "vek_free_list(null)" : "vek_free_list(list)";
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(1, &null)", freed}));

        bench.forget();
        bench.press("pushButton_enum_all");
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(1, &null)", freed, "vek_enum_devices(2, &null)"}));
        QCOMPARE(devices(bench), names);
        lines[1] = "[主界面] vek_enum_devices 检索到1个HID设备.";
        lines << "[主界面] vek_enum_devices 检索到0个串口设备.";
        QCOMPARE(bench.log(), lines);
    }

    void nothingFoundLogsTheCountAndReleasesNothing()
    {
        Bench bench;
        bench.loadDriver();
        script({{1, {1, "A|"}}});
        bench.press("pushButton_enum_select");
        script({{1, {-5, ""}}});
        bench.forget();
        bench.press("pushButton_enum_select");
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_enum_devices 检索到-5个设备."}));
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(1, &null)"}));
        QVERIFY(devices(bench).isEmpty());
        bench.forget();
        bench.press("pushButton_open_select");
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] 没有可以打开的设备！"}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void enumeratingAllWithNothingAttached()
    {
        Bench bench;
        bench.loadDriver();
        bench.press("pushButton_enum_all");
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_enum_devices 检索到0个HID设备.",
                                           "[主界面] vek_enum_devices 检索到0个串口设备."}));
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(1, &null)", "vek_enum_devices(2, &null)"}));
        QVERIFY(devices(bench).isEmpty());
    }

    void enumeratingAllNumbersDevicesAcrossTransports()
    {
        Bench bench;
        bench.loadDriver();
        script({{1, {2, "A|B|"}}, {2, {1, "C"}}, {3, {1, "never asked|"}}});
        bench.press("radioButton_pcsc");
        bench.press("pushButton_enum_all");
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_enum_devices 检索到2个HID设备.",
                                           "[主界面] 设备列表[A|B|].", "[主界面] 设备1 [A].", "[主界面] 设备2 [B].",
                                           "[主界面] vek_enum_devices 检索到1个串口设备.", "[主界面] 设备列表[C].",
                                           "[主界面] 设备3 [C]."}));
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(1, &null)", "vek_free_list(list)",
                                              "vek_enum_devices(2, &null)", "vek_free_list(list)"}));
        QCOMPARE(devices(bench), QStringList({"A", "B", "C"}));
    }

    void openingTheSelectedDevicePassesNameAndRate()
    {
        Bench bench;
        bench.loadDriver();
        script({{1, {2, "A|读卡器|"}}});
        bench.press("pushButton_enum_select");
        bench.widget<QComboBox>("comboBox_select_device")->setCurrentIndex(1);
        bench.widget<QComboBox>("comboBox_baud")->setCurrentText("57600");
        bench.forget();
        bench.press("pushButton_open_select");
        QCOMPARE(Bench::calls(), QStringList({"vek_open(\"读卡器\", 0, 57600)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_open 打开设备成功！return[1A2BH]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_handle")->text(), "1A2BH");
        for (const char *disabled :
             {"pushButton_open_select", "pushButton_open_default", "comboBox_baud", "comboBox_select_device"})
            QVERIFY2(!bench.widget<QWidget>(disabled)->isEnabled(), disabled);
        for (const char *enabled : {"pushButton_close", "radioButton_serial", "lineEdit_timeout"})
            QVERIFY2(bench.widget<QWidget>(enabled)->isEnabled(), enabled);
    }

    void aHandleOfAllBitsIsShownWhole()
    {
        Bench bench;
        bench.loadDriver();
        recorder().vek_open = [](auto, auto, auto) { return std::intptr_t{-1}; };
        bench.press("pushButton_open_default");
        QCOMPARE(Bench::calls(), QStringList({"vek_open(null, 0, 0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_open 打开设备成功！return[FFFFFFFFFFFFFFFFH]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_handle")->text(), "FFFFFFFFFFFFFFFFH");
    }

    void aFailedOpenLeavesTheOpenControlsEnabled()
    {
        Bench bench;
        bench.loadDriver();
        recorder().vek_open = [](auto, auto, auto) { return std::intptr_t{0}; };
        bench.press("radioButton_sdt");
        bench.press("pushButton_open_select");
        QCOMPARE(Bench::calls(), QStringList({"vek_open(\"SDT1001\", 0, 9600)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_open 打开设备失败！return[0H]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_handle")->text(), "");
        for (const char *enabled :
             {"pushButton_open_select", "pushButton_open_default", "comboBox_baud", "comboBox_select_device"})
            QVERIFY2(bench.widget<QWidget>(enabled)->isEnabled(), enabled);
        QVERIFY(!bench.widget<QWidget>("pushButton_close")->isEnabled());
    }

    void theDefaultDeviceIsOpenedWithANullName()
    {
        Bench bench;
        bench.loadDriver();
        bench.press("radioButton_pcsc");
        bench.press("pushButton_open_default");
        QCOMPARE(Bench::calls(), QStringList({"vek_open(null, 0, 0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_open 打开设备成功！return[1A2BH]"}));
    }

    void closeDropsTheHandleWhateverTheResult()
    {
        Bench bench;
        bench.openDevice();
        recorder().vek_close = [](auto, auto) { return -7; };
        bench.press("pushButton_close");
        QCOMPARE(Bench::calls(), QStringList({"vek_close(1A2B, 0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_close return[-7]."}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_handle")->text(), "");
        QVERIFY(!bench.widget<QWidget>("pushButton_close")->isEnabled());
        for (const char *enabled :
             {"pushButton_open_select", "pushButton_open_default", "comboBox_baud", "comboBox_select_device"})
            QVERIFY2(bench.widget<QWidget>(enabled)->isEnabled(), enabled);
    }

    void closeWithNoDeviceStillCallsTheDriver()
    {
        Bench bench;
        bench.loadDriver();
        // The button is disabled then; its slot is not.
        QMetaObject::invokeMethod(&bench.window, "on_pushButton_close_clicked");
        QCOMPARE(Bench::calls(), QStringList({"vek_close(0, 0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[主界面] vek_close return[0]."}));
    }

    void theTimeoutIsTakenAsTyped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("milliseconds");
        QTest::newRow("number") << "12"
                                << "12000";
        QTest::newRow("zero") << "0"
                              << "0";
        QTest::newRow("negative") << "-1"
                                  << "4294966296";
        QTest::newRow("letters keep the last") << "abc"
                                               << "5000";
        QTest::newRow("empty keeps the last") << ""
                                              << "5000";
        QTest::newRow("letters behind digits keep the digits typed before them") << "7x"
                                                                                 << "7000";
        QTest::newRow("too large keeps the digits before the overflow") << "99999999999"
                                                                        << "3567586328";
    }

    void theTimeoutIsTakenAsTyped()
    {
        QFETCH(QString, typed);
        QFETCH(QString, milliseconds);
        Bench bench;
        bench.openDevice();
        bench.widget<QLineEdit>("lineEdit_timeout")->setText("5");
        bench.type("lineEdit_timeout", typed);
        bench.press("pushButton_cpucard_poweroff", bench.page<Form_CPU_Iccard>());
        QCOMPARE(Bench::calls(), QStringList({"vek_icc_poweroff(1A2B, 0x02, " + milliseconds + ")"}));
    }
};

QTEST_MAIN(TestDeviceDiscovery)
#include "test_device_discovery.moc"
