// The status page over the virtual reader: version, beeper, bit rate.
#include "pages/status/form_info_status_indicator.h"
#include "tests/virtual/bench/virtual_bench.h"

namespace {

const QString kSeparator = BenchWindow::separator("状态指示");

const QStringList kVersionLines{kSeparator, "[状态指示] vek_firm_version return[0] (assert 0)",
                                "[状态指示] firm_version [Unifold virtual reader " UNIFOLD_VERSION "]"};
const QStringList kVersionTimedOut{kSeparator, "[状态指示] vek_firm_version return[-5] (assert 0)"};
const QStringList kRateSet{kSeparator, "[状态指示] vek_set_baud return[0] (assert 0), ",
                           "更新波特率成功, 不需要重新打开设备"};

class StatusBench : public VirtualBench {
public:
    Form_Info_Status_Indicator *form() { return page<Form_Info_Status_Indicator>(); }

    QStringList askVersion() { return logOf("pushButton_firm_version", form()); }

    QStringList setRate(const QString &rate)
    {
        widget<QComboBox>("comboBox_set_baud")->setCurrentText(rate);
        return logOf("pushButton_set_baud", form());
    }

    QString openingRate() { return widget<QComboBox>("comboBox_baud")->currentText(); }

    /// Closes the device and opens it again at the rate that the window shows.
    void reopen()
    {
        press("pushButton_close");
        press("pushButton_open_select");
    }
};

} // namespace

class TestBenchVirtualStatus : public QObject {
    Q_OBJECT

private slots:
    void versionIsShown()
    {
        StatusBench bench;
        bench.openDevice();
        QCOMPARE(bench.askVersion(), kVersionLines);
        QCOMPARE(bench.text("lineEdit_frim_version"), "Unifold virtual reader " UNIFOLD_VERSION);
    }

    void startValuesBeepThreeTimes()
    {
        StatusBench bench;
        bench.openDevice();
        QCOMPARE(bench.logOf("pushButton_beep", bench.form()),
                 QStringList({kSeparator, "[状态指示] vek_beep return[0] (assert 0)"}));
        const auto state = bench.world().tray().state();
        QCOMPARE(state->beeps, std::uint64_t{3});
        QCOMPARE(state->beepMs, std::uint64_t{150});
    }

    void startRateIsTakenByUsbWithoutEffect()
    {
        StatusBench bench;
        bench.openDevice();
        QCOMPARE(bench.logOf("pushButton_set_baud", bench.form()), kRateSet);
        QCOMPARE(bench.openingRate(), "115200");
        QVERIFY(bench.world().tray().state()->serial.empty());
        QCOMPARE(bench.askVersion(), kVersionLines);
    }

    void serialReaderKeepsATemporaryRateUntilThePowerGoes()
    {
        StatusBench bench;
        bench.openDevice("radioButton_serial", "VCOM1");
        QCOMPARE(bench.askVersion(), kVersionLines);
        QCOMPARE(bench.setRate("115200"), kRateSet);
        QCOMPARE(bench.openingRate(), "115200");
        QCOMPARE(bench.askVersion(), kVersionLines);
        bench.reopen();
        QCOMPARE(bench.askVersion(), kVersionLines);

        QVERIFY(runTrayTool({"power"}));
        QCOMPARE(bench.askVersion(), kVersionTimedOut);
        QVERIFY(bench.text("lineEdit_frim_version").isEmpty());
        QCOMPARE(bench.setRate("57600"), QStringList({kSeparator, "[状态指示] vek_set_baud return[-5] (assert 0)"}));
        QCOMPARE(bench.openingRate(), "115200");
        bench.widget<QComboBox>("comboBox_baud")->setCurrentText("9600");
        bench.reopen();
        QCOMPARE(bench.askVersion(), kVersionLines);
    }

    void serialReaderKeepsADefaultRateOverThePowerCut()
    {
        StatusBench bench;
        bench.openDevice("radioButton_serial", "VCOM2");
        bench.press("radioButton_baud_default", bench.form());
        QCOMPARE(bench.setRate("38400"), kRateSet);
        QVERIFY(runTrayTool({"power"}));
        QCOMPARE(bench.askVersion(), kVersionLines);
        bench.reopen();
        QCOMPARE(bench.askVersion(), kVersionLines);
    }

    void serialReaderOpenedAtAnotherRateOpensAndTimesOut()
    {
        StatusBench bench;
        bench.loadLibrary();
        bench.press("radioButton_serial");
        bench.press("pushButton_enum_select");
        bench.widget<QComboBox>("comboBox_baud")->setCurrentText("19200");
        bench.openNamed("VCOM1");
        QCOMPARE(bench.askVersion(), kVersionTimedOut);
        QCOMPARE(bench.logOf("pushButton_beep", bench.form()),
                 QStringList({kSeparator, "[状态指示] vek_beep return[-5] (assert 0)"}));
        QCOMPARE(bench.world().tray().state()->beeps, std::uint64_t{0});
    }

    void everyRateOfTheListIsTaken()
    {
        StatusBench bench;
        bench.openDevice("radioButton_serial", "VCOM1");
        auto *const rates = bench.widget<QComboBox>("comboBox_set_baud");
        for (int i = 0; i < rates->count(); ++i) {
            QCOMPARE(bench.setRate(rates->itemText(i)), kRateSet);
            QCOMPARE(bench.openingRate(), rates->itemText(i));
            QCOMPARE(bench.world().tray().state()->serial.at("VCOM1").inForce(), rates->itemText(i).toInt());
        }
    }

    void powerCutLeavesAUsbReaderAnswering()
    {
        StatusBench bench;
        bench.openDevice();
        QVERIFY(runTrayTool({"power"}));
        QCOMPARE(bench.askVersion(), kVersionLines);
    }
};

QTEST_MAIN(TestBenchVirtualStatus)
#include "test_bench_virtual_status.moc"
