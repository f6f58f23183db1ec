#include "pages/status/form_info_status_indicator.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"
#include "tests/support/widget_table.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QRadioButton>
#include <QSignalSpy>

#include <cstring>

namespace {

const QString kSeparator = Bench::separator("状态指示");
const QString kNotOpen = "[状态指示] 设备未打开！";
const QString kBadInput = "[状态指示] 输入参数不正确！";

} // namespace

class TestFormInfoStatusIndicator : public QObject {
    Q_OBJECT

private slots:
    void metaObjectListsSignalsAndSlotsInOrder()
    {
        QCOMPARE(ownMethods(Form_Info_Status_Indicator::staticMetaObject),
                 QStringList({"addLog(QString)", "changeBaudIndex(int)", "on_pushButton_firm_version_clicked()",
                              "on_pushButton_beep_clicked()", "on_pushButton_set_baud_clicked()",
                              "on_radioButton_baud_temp_clicked()", "on_radioButton_baud_default_clicked()"}));
        QCOMPARE(Form_Info_Status_Indicator::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        addWidgetRows({
            {"pushButton_firm_version", "QPushButton", "固件版本"},
            {"lineEdit_frim_version", "QLineEdit", ""},
            {"groupBox_2", "QGroupBox", "蜂鸣(时间单位：50ms)"},
            {"pushButton_beep", "QPushButton", "蜂鸣"},
            {"label_2", "QLabel", "鸣叫时间"},
            {"lineEdit_on_time", "QLineEdit", "1"},
            {"label_3", "QLabel", "间隔时间"},
            {"lineEdit_off_time", "QLineEdit", "1"},
            {"label_4", "QLabel", "鸣叫次数"},
            {"lineEdit_beep_times", "QLineEdit", "3"},
            {"groupBox", "QGroupBox", "串口波特率设置"},
            {"radioButton_baud_temp", "QRadioButton", "设置临时波特率，立即生效，断电后恢复9600"},
            {"radioButton_baud_default", "QRadioButton", "设置读卡器默认波特率，立即生效，重新上电依然有效"},
            {"label_5", "QLabel", "设置为"},
            {"comboBox_set_baud", "QComboBox", "115200"},
            {"pushButton_set_baud", "QPushButton", "设置"},
            {"label_6", "QLabel", "注意：仅串口设备支持此操作，其它类型设备会直接返回成功"},
        });
    }

    void widgetsAreThereWithTheirTexts()
    {
        Bench bench;
        compareWidget(bench.page<Form_Info_Status_Indicator>());
    }

    void theBoxOffersFiveRatesAndTheTemporaryModeIsChecked()
    {
        Bench bench;
        auto *page = bench.page<Form_Info_Status_Indicator>();
        QCOMPARE(page->windowTitle(), "Form");
        auto *box = bench.widget<QComboBox>("comboBox_set_baud", page);
        QCOMPARE(itemTexts(*box), QStringList({"9600", "19200", "38400", "57600", "115200"}));
        QCOMPARE(box->currentIndex(), 4);
        auto *temporary = bench.widget<QRadioButton>("radioButton_baud_temp", page);
        auto *stored = bench.widget<QRadioButton>("radioButton_baud_default", page);
        QVERIFY(temporary->isChecked());
        QButtonGroup *const group = temporary->group();
        QCOMPARE(group->parent(), page);
        QCOMPARE(group->buttons().size(), 2);
        QCOMPARE(group->id(temporary), 0);
        QCOMPARE(group->id(stored), 1);
    }

    void rowsStandFromTopToBottomWithLinesBetween()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        int above = -1;
        for (const char *name : {"pushButton_firm_version", "line", "groupBox_2", "line_2", "groupBox"}) {
            auto *widget = bench.widget<QWidget>(name, page);
            QVERIFY2(widget->geometry().top() > above, name);
            above = widget->geometry().bottom();
        }
    }

    void firmwareVersionIsShownAndLogged()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        recorder().vek_firm_version = [](auto, char *version, std::uint32_t *length) {
            std::strcpy(version, "读卡器 V2.0");
            *length = 14;
            return 0;
        };
        bench.press("pushButton_firm_version", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_firm_version(1A2B, char[256], &0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] vek_firm_version return[0] (assert 0)",
                                           "[状态指示] firm_version [读卡器 V2.0]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_frim_version", page)->text(), "读卡器 V2.0");
    }

    void failedFirmwareVersionLeavesTheFieldEmpty()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        auto *field = bench.widget<QLineEdit>("lineEdit_frim_version", page);
        field->setText("old");
        recorder().vek_firm_version = [](auto, char *version, auto) {
            std::strcpy(version, "V2.0");
            return -5;
        };
        bench.press("pushButton_firm_version", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_firm_version(1A2B, char[256], &0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] vek_firm_version return[-5] (assert 0)"}));
        QCOMPARE(field->text(), "");
    }

    void firmwareFieldIsEmptiedAlsoWithoutDevice()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        auto *field = bench.widget<QLineEdit>("lineEdit_frim_version", page);
        field->setText("old");
        bench.press("pushButton_firm_version", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(field->text(), "");
    }

    void separatorLineComesBeforeTheFieldIsEmptied()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        auto *field = bench.widget<QLineEdit>("lineEdit_frim_version", page);
        field->setText("old");
        QStringList textAtLine;
        connect(page, &Form_Info_Status_Indicator::addLog, field, [&] { textAtLine << field->text(); });
        bench.press("pushButton_firm_version", page);
        QCOMPARE(textAtLine, QStringList({"old", ""}));
    }

    void versionWithoutNulEndsAtTheBuffersEnd()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        recorder().vek_firm_version = [](auto, char *version, auto) {
            std::memset(version, 'V', sdk::kFirmVersionSize);
            return 0;
        };
        bench.press("pushButton_firm_version", page);
        const QString whole(256, 'V');
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] vek_firm_version return[0] (assert 0)",
                                           "[状态指示] firm_version [" + whole + "]"}));
        auto *field = bench.widget<QLineEdit>("lineEdit_frim_version", page);
        QCOMPARE(field->text(), whole);
        QCOMPARE(field->cursorPosition(), 0); // shown from its beginning
    }

    void versionWithMarkupIsShownAsCharacters()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        recorder().vek_firm_version = [](auto, char *version, auto) {
            std::strcpy(version, "<b>2</b> %s &amp;");
            return 0;
        };
        bench.press("pushButton_firm_version", page);
        QCOMPARE(bench.log().last(), "[状态指示] firm_version [<b>2</b> %s &amp;]");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_frim_version", page)->text(), "<b>2</b> %s &amp;");
    }

    void beepPassesTimesAsTyped_data()
    {
        QTest::addColumn<QString>("onTime");
        QTest::addColumn<QString>("offTime");
        QTest::addColumn<QString>("times");
        QTest::addColumn<QString>("arguments");
        const char *const rows[][4] = {
            {"1", "1", "3", "1, 1, 3"},
            {"2", "5", "7", "2, 5, 7"},
            {"-1", "-2", "-3", "-1, -2, -3"},
            {" 7", "+4", "007", "7, 4, 7"},
            {"2147483647", "-2147483648", "1", "2147483647, -2147483648, 1"},
        };
        for (const auto &row : rows)
            QTest::newRow(row[3]) << row[0] << row[1] << row[2] << row[3];
    }

    void beepPassesTimesAsTyped()
    {
        QFETCH(QString, onTime);
        QFETCH(QString, offTime);
        QFETCH(QString, times);
        QFETCH(QString, arguments);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        fillBeepFields(bench, onTime, offTime, times);
        recorder().vek_beep = [](auto, auto, auto, auto) { return -12; };
        bench.press("pushButton_beep", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_beep(1A2B, " + arguments + ")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] vek_beep return[-12] (assert 0)"}));
    }

    void beepRefusesZeroBeforeItLooksAtTheDevice_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("open");
        for (const char *field : {"lineEdit_on_time", "lineEdit_off_time", "lineEdit_beep_times"})
            for (const char *text : {"0", "abc", "", "12abc", "1.5", "99999999999", "0x10"})
                for (const bool open : {true, false})
                    QTest::addRow("%s \"%s\" %s", field, text, open ? "open" : "closed") << field << text << open;
    }

    void beepRefusesZeroBeforeItLooksAtTheDevice()
    {
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(bool, open);
        Bench bench;
        if (open)
            bench.openDevice();
        else
            bench.loadDriver();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        bench.widget<QLineEdit>(field.toUtf8().constData(), page)->setText(text);
        bench.press("pushButton_beep", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kBadInput}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void beepWithoutDevicePostsTheGuardLine()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        fillBeepFields(bench, "-1", "1", "1");
        bench.press("pushButton_beep", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void eachRateIsSetAndItsIndexTold_data()
    {
        QTest::addColumn<QString>("rate");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("shownIndex");
        // The window's combo stays at 0 for the rates it does not offer.
        QTest::newRow("9600") << "9600" << 0 << 0;
        QTest::newRow("19200") << "19200" << 1 << 1;
        QTest::newRow("38400") << "38400" << 2 << 2;
        QTest::newRow("57600") << "57600" << 3 << 3;
        QTest::newRow("115200") << "115200" << 4 << 4;
        QTest::newRow("230400") << "230400" << 5 << 0;
        QTest::newRow("460800") << "460800" << 6 << 0;
        QTest::newRow("921600") << "921600" << 7 << 0;
    }

    void eachRateIsSetAndItsIndexTold()
    {
        QFETCH(QString, rate);
        QFETCH(int, index);
        QFETCH(int, shownIndex);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        chooseRate(bench, rate);
        QSignalSpy told(page, SIGNAL(changeBaudIndex(int)));
        bench.press("pushButton_set_baud", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_set_baud(1A2B, " + rate + ", 0x00)"}));
        QCOMPARE(told.size(), 1);
        QCOMPARE(told.first().first().toInt(), index);
        QCOMPARE(bench.widget<QComboBox>("comboBox_baud")->currentIndex(), shownIndex);
        // One message, two lines of the pane.
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] vek_set_baud return[0] (assert 0), ",
                                           "更新波特率成功, 不需要重新打开设备"}));
    }

    void signalComesBeforeTheLineAndTheLineHasItsLineBreak()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        QStringList order;
        connect(page, &Form_Info_Status_Indicator::addLog, page,
                [&order](const QString &line) { order << line.mid(line.indexOf("] ") + 2); });
        connect(page, &Form_Info_Status_Indicator::changeBaudIndex, page,
                [&order](int index) { order << QString("index %1").arg(index); });
        bench.press("pushButton_set_baud", page);
        QCOMPARE(order, QStringList({kSeparator, "index 4",
                                     "[状态指示] vek_set_baud return[0] (assert 0), \r\n更新波特率成功, "
                                     "不需要重新打开设备"}));
    }

    void failedSetBaudEmitsNoSignal()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        QSignalSpy told(page, SIGNAL(changeBaudIndex(int)));
        recorder().vek_set_baud = [](auto, auto, auto) { return -1; };
        bench.press("pushButton_set_baud", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_set_baud(1A2B, 115200, 0x00)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] vek_set_baud return[-1] (assert 0)"}));
        QCOMPARE(told.size(), 0);
        QCOMPARE(bench.widget<QComboBox>("comboBox_baud")->currentIndex(), 0);
    }

    void unsupportedRateIsRefusedBeforeTheDeviceIsLookedAt_data()
    {
        QTest::addColumn<QString>("rate");
        QTest::addColumn<bool>("open");
        for (const char *rate : {"4800", "0", "abc", "9600x", "-9600"})
            for (const bool open : {true, false})
                QTest::addRow("%s %s", rate, open ? "open" : "closed") << rate << open;
    }

    void unsupportedRateIsRefusedBeforeTheDeviceIsLookedAt()
    {
        QFETCH(QString, rate);
        QFETCH(bool, open);
        Bench bench;
        if (open)
            bench.openDevice();
        else
            bench.loadDriver();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        chooseRate(bench, rate);
        bench.press("pushButton_set_baud", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[状态指示] 未执行，不支持的波特率！"}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void setBaudWithoutDevicePostsTheGuardLine()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        QSignalSpy told(page, SIGNAL(changeBaudIndex(int)));
        bench.press("pushButton_set_baud", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(told.size(), 0);
    }

    void modeButtonsSetTheModeByteAndNothingElse()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Info_Status_Indicator>();
        bench.press("radioButton_baud_default", page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        bench.press("pushButton_set_baud", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_set_baud(1A2B, 115200, 0x01)"}));

        bench.press("pushButton_close");
        bench.press("pushButton_open_default");
        bench.forget();
        bench.press("pushButton_set_baud", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_set_baud(1A2B, 115200, 0x01)"}));

        bench.forget();
        bench.press("radioButton_baud_temp", page);
        bench.press("pushButton_set_baud", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_set_baud(1A2B, 115200, 0x00)"}));
    }

private:
    static QStringList itemTexts(const QComboBox &box)
    {
        QStringList texts;
        for (int i = 0; i < box.count(); ++i)
            texts << box.itemText(i);
        return texts;
    }

    static void fillBeepFields(Bench &bench, const QString &onTime, const QString &offTime, const QString &times)
    {
        bench.widget<QLineEdit>("lineEdit_on_time")->setText(onTime);
        bench.widget<QLineEdit>("lineEdit_off_time")->setText(offTime);
        bench.widget<QLineEdit>("lineEdit_beep_times")->setText(times);
    }

    /// Also rates that the page does not offer of itself.
    static void chooseRate(Bench &bench, const QString &rate)
    {
        auto *box = bench.widget<QComboBox>("comboBox_set_baud");
        if (box->findText(rate) < 0)
            box->addItem(rate);
        box->setCurrentText(rate);
    }
};

QTEST_MAIN(TestFormInfoStatusIndicator)
#include "test_form_info_status_indicator.moc"
