// The driver row and the communication group over the virtual reader: devices found, opened and closed; the tray gone
// wrong; the library unloaded under an open device.
#include "pages/cpucard/form_cpu_iccard.h"
#include "pages/status/form_info_status_indicator.h"
#include "tests/virtual/bench/virtual_bench.h"

#include <fstream>

namespace {

const QString kSeparator = BenchWindow::separator("主界面");

QString opened(VirtualBench &bench)
{
    return "[主界面] vek_open 打开设备成功！return[" + bench.text("lineEdit_handle") + "]";
}

QStringList shownDevices(VirtualBench &bench)
{
    QStringList names;
    auto *const combo = bench.widget<QComboBox>("comboBox_select_device");
    for (int i = 0; i < combo->count(); ++i)
        names << combo->itemText(i);
    return names;
}

} // namespace

class TestBenchVirtualDevice : public QObject {
    Q_OBJECT

private slots:
    void eachTransportShowsItsDevices_data()
    {
        QTest::addColumn<QString>("transport");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("USB") << "radioButton_usb" << QStringList({"VUSB0001", "VUSB0002"});
        QTest::newRow("serial") << "radioButton_serial" << QStringList({"VCOM1", "VCOM2"});
        QTest::newRow("PC/SC") << "radioButton_pcsc"
                               << QStringList({"Unifold Virtual Reader [Contact] (TRAY0001) 00 00",
                                               "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01"});
        QStringList ports;
        for (int port = 1; port <= 16; ++port)
            ports << QString::asprintf("SDT%04d", 1000 + port) << QString::asprintf("SDT%04d", port);
        QTest::newRow("SDT") << "radioButton_sdt" << ports;
    }

    void eachTransportShowsItsDevices()
    {
        QFETCH(QString, transport);
        QFETCH(QStringList, names);
        VirtualBench bench;
        bench.loadLibrary();
        bench.press(transport.toLatin1().constData());
        QStringList lines{kSeparator, "[主界面] vek_enum_devices 检索到" + QString::number(names.size()) + "个设备.",
                          "[主界面] 设备列表[" + names.join('|') + "|]."};
        for (int i = 0; i < names.size(); ++i)
            lines << "[主界面] 设备" + QString::number(i + 1) + " [" + names[i] + "].";
        QCOMPARE(bench.logOf("pushButton_enum_select"), lines);
        QCOMPARE(shownDevices(bench), names);
    }

    void enumeratingAllNumbersUsbAndSerialThrough()
    {
        VirtualBench bench;
        bench.loadLibrary();
        QCOMPARE(
            bench.logOf("pushButton_enum_all"),
            QStringList({kSeparator, "[主界面] vek_enum_devices 检索到2个HID设备.",
                         "[主界面] 设备列表[VUSB0001|VUSB0002|].", "[主界面] 设备1 [VUSB0001].",
                         "[主界面] 设备2 [VUSB0002].", "[主界面] vek_enum_devices 检索到2个串口设备.",
                         "[主界面] 设备列表[VCOM1|VCOM2|].", "[主界面] 设备3 [VCOM1].", "[主界面] 设备4 [VCOM2]."}));
        QCOMPARE(shownDevices(bench), QStringList({"VUSB0001", "VUSB0002", "VCOM1", "VCOM2"}));
    }

    void everyListedDeviceOpensByNameAndCloses_data() { eachTransportShowsItsDevices_data(); }

    void everyListedDeviceOpensByNameAndCloses()
    {
        QFETCH(QString, transport);
        QFETCH(QStringList, names);
        VirtualBench bench;
        bench.loadLibrary();
        bench.press(transport.toLatin1().constData());
        bench.press("pushButton_enum_select");
        for (const QString &name : names) {
            bench.widget<QComboBox>("comboBox_select_device")->setCurrentText(name);
            const QStringList log = bench.logOf("pushButton_open_select");
            QVERIFY(!bench.text("lineEdit_handle").isEmpty());
            QCOMPARE(log, QStringList({kSeparator, opened(bench)}));
            QCOMPARE(bench.logOf("pushButton_close"), QStringList({kSeparator, "[主界面] vek_close return[0]."}));
            QVERIFY(bench.text("lineEdit_handle").isEmpty());
        }
    }

    void theDefaultDeviceOpensWithoutAList()
    {
        VirtualBench bench;
        bench.loadLibrary();
        const QStringList log = bench.logOf("pushButton_open_default");
        QVERIFY(!bench.text("lineEdit_handle").isEmpty());
        QCOMPARE(log, QStringList({kSeparator, opened(bench)}));
        QCOMPARE(bench.logOf("pushButton_close"), QStringList({kSeparator, "[主界面] vek_close return[0]."}));
    }

    void everySdtPortThatTheWindowOffersOpens()
    {
        VirtualBench bench;
        bench.loadLibrary();
        bench.press("radioButton_sdt");
        const QStringList ports = shownDevices(bench);
        QCOMPARE(ports.size(), 32);
        for (const QString &port : ports) {
            bench.widget<QComboBox>("comboBox_select_device")->setCurrentText(port);
            const QStringList log = bench.logOf("pushButton_open_select");
            QCOMPARE(log, QStringList({kSeparator, opened(bench)}));
            bench.press("pushButton_close");
        }
    }

    void brokenTrayOpensNoDevice()
    {
        VirtualBench bench;
        std::ofstream(bench.world().tray().folder() / "tray.json") << "{ not json";
        bench.loadLibrary();
        QCOMPARE(bench.logOf("pushButton_open_default"),
                 QStringList({kSeparator, "[主界面] vek_open 打开设备失败！return[0H]"}));
        QVERIFY(runTrayTool({"reset"}));
        bench.press("pushButton_open_default");
        QVERIFY(!bench.text("lineEdit_handle").isEmpty());
    }

    void trayBrokenUnderAnOpenDeviceFailsItsCallsUntilItIsMended()
    {
        VirtualBench bench;
        bench.openDevice();
        auto *const page = bench.page<Form_CPU_Iccard>();
        const auto file = bench.world().tray().folder() / "tray.json";
        std::ofstream(file) << "{ not json";
        const QString separator = BenchWindow::separator("IC卡");
        QCOMPARE(bench.logOf("pushButton_cpucard_poweron", page),
                 QStringList({separator, "[IC卡] vek_icc_poweron return[0xFFFFFFF7] (assert 0)"}));
        QVERIFY(runTrayTool({"reset"}));
        QCOMPARE(bench.logOf("pushButton_cpucard_poweron", page),
                 QStringList({separator, "[IC卡] vek_icc_poweron return[0x0] (assert 0)",
                              "[IC卡] ATR = [" + bench.cardText(VirtualBench::Slot::Contact, "/atr") + "]"}));
    }

    void brokenCardIsACardError()
    {
        VirtualBench bench;
        bench.openDevice();
        const std::string card = bench.world().cardIn(VirtualBench::Slot::Contact);
        std::ofstream(bench.world().tray().cardFile(card)) << R"({"kind": "cpu"})";
        QCOMPARE(bench.logOf("pushButton_cpucard_poweron", bench.page<Form_CPU_Iccard>()),
                 QStringList({BenchWindow::separator("IC卡"), "[IC卡] vek_icc_poweron return[0xFFFFFFF2] (assert 0)"}));
    }

    void libraryUnloadedUnderAnOpenDeviceComesBackWithoutIt()
    {
        VirtualBench bench;
        bench.openDevice();
        auto *const page = bench.page<Form_CPU_Iccard>();
        bench.press("pushButton_cpucard_poweron", page);
        bench.press("pushButton_unload_driver");
        QVERIFY(!page->isEnabled());
        bench.press("pushButton_select_driver");
        QVERIFY(page->isEnabled());
        // The handle is of the library's life before: no device has it now.
        QCOMPARE(bench.logOf("pushButton_cpucard_status", page),
                 QStringList({BenchWindow::separator("IC卡"), "[IC卡] vek_icc_status return[0xFFFFFFFF]"}));
        QCOMPARE(bench.logOf("pushButton_close"), QStringList({kSeparator, "[主界面] vek_close return[-1]."}));
        bench.press("pushButton_open_default");
        QVERIFY(!bench.text("lineEdit_handle").isEmpty());
        QCOMPARE(bench.logOf("pushButton_cpucard_status", page),
                 QStringList({BenchWindow::separator("IC卡"), "[IC卡] vek_icc_status return[0x1]"}));
    }
};

QTEST_MAIN(TestBenchVirtualDevice)
#include "test_bench_virtual_device.moc"
