#include "app/identity.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"

#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QMenuBar>
#include <QRadioButton>
#include <QStatusBar>
#include <QStyle>

class TestMainWindow : public QObject {
    Q_OBJECT

private slots:
    void metaObjectListsSignalsAndSlotsInOrder()
    {
        QCOMPARE(ownMethods(MainWindow::staticMetaObject),
                 QStringList({"addLog(QString)", "updateWindowPos(QPoint*)", "on_pushButton_enum_select_clicked()",
                              "on_pushButton_enum_all_clicked()", "on_pushButton_clear_log_clicked()",
                              "on_pushButton_open_select_clicked()", "on_radioButton_usb_clicked()",
                              "on_radioButton_serial_clicked()", "on_lineEdit_timeout_textChanged(QString)",
                              "onAddLog(QString)", "onChangeBaudIndex(int)", "on_pushButton_open_default_clicked()",
                              "on_pushButton_close_clicked()", "on_pushButton_select_driver_clicked()",
                              "on_pushButton_unload_driver_clicked()", "on_radioButton_pcsc_clicked()",
                              "on_radioButton_sdt_clicked()"}));
        QCOMPARE(MainWindow::staticMetaObject.superClass(), &QMainWindow::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("property");
        QTest::addColumn<QString>("value");
        const char *const rows[][4] = {
            {"label_7", "QLabel", "text", "选择驱动库"},
            {"pushButton_select_driver", "QPushButton", "text", "加载"},
            {"pushButton_unload_driver", "QPushButton", "text", "卸载"},
            {"groupBox_config", "QGroupBox", "title", "通讯配置"},
            {"label", "QLabel", "text", "设备类型"},
            {"radioButton_usb", "QRadioButton", "text", "USB"},
            {"radioButton_serial", "QRadioButton", "text", "串口"},
            {"radioButton_pcsc", "QRadioButton", "text", "PCSC"},
            {"radioButton_sdt", "QRadioButton", "text", "SDT"},
            {"pushButton_enum_select", "QPushButton", "text", "检索选中"},
            {"pushButton_enum_all", "QPushButton", "text", "检索全部"},
            {"label_2", "QLabel", "text", "波特率"},
            {"label_3", "QLabel", "text", "超时"},
            {"lineEdit_timeout", "QLineEdit", "text", "5"},
            {"label_4", "QLabel", "text", "秒"},
            {"pushButton_clear_log", "QPushButton", "text", "清空日志"},
            {"label_5", "QLabel", "text", "选择设备"},
            {"pushButton_open_select", "QPushButton", "text", "打开选中"},
            {"pushButton_open_default", "QPushButton", "text", "打开默认USB"},
            {"pushButton_close", "QPushButton", "text", "关闭"},
            {"label_6", "QLabel", "text", "设备句柄"},
            {"lineEdit_handle", "QLineEdit", "text", ""},
            {"textEdit_log", "QTextEdit", "styleSheet", "background-color: rgb(0, 0, 0);\ncolor: rgb(0, 255, 0);"},
            {"tabWidget", "QTabWidget", "styleSheet", ""},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << row[0] << row[1] << row[2] << row[3];
    }

    void widgetsAreThereWithTheirTexts()
    {
        QFETCH(QString, name);
        QFETCH(QString, className);
        QFETCH(QString, property);
        QFETCH(QString, value);
        Bench bench;
        // The pages have labels of the same names; the window's own widgets are those outside the tabs.
        auto *tabs = bench.widget<QTabWidget>("tabWidget");
        QWidget *found = nullptr;
        for (QWidget *candidate : bench.window.findChildren<QWidget *>(name))
            if (candidate->window() == &bench.window && (candidate == tabs || !tabs->isAncestorOf(candidate)))
                found = candidate;
        if (found == nullptr)
            QFAIL("no such widget");
        QCOMPARE(found->metaObject()->className(), className);
        QCOMPARE(found->property(property.toUtf8().constData()).toString(), value);
    }

    void windowHasItsTitleSizeAndStyle()
    {
        Bench bench;
        QCOMPARE(bench.window.windowTitle(), "多功能读卡器演示程序");
        QCOMPARE(bench.window.size(), QSize(867, 644));
        const QString style = bench.window.styleSheet();
        for (const char *part :
             {"2px solid rgb(0, 170, 0)", "border-radius: 5px", "margin-top: 14px", "bold 16pt",
              "subcontrol-origin: margin;", "subcontrol-position: top center;", "padding: 0 3px;", "margin-top: 0px;",
              "color: rgb(0, 170, 0)", "/*", "QPushButton:hover", "QPushButton:pressed", "QFrame", "*/"})
            QVERIFY2(style.contains(part), part);
        QVERIFY(bench.window.menuBar()->actions().isEmpty());
        QCOMPARE(bench.window.statusBar()->currentMessage(), "");
    }

    void groupBoxTitlesAreBold16Points()
    {
        Bench bench;
        bench.window.show();
        const QFont font = bench.widget<QGroupBox>("groupBox_config")->font();
        QVERIFY(font.bold());
        QCOMPARE(font.pointSize(), 16);
        QVERIFY(!bench.widget<QRadioButton>("radioButton_usb")->font().bold());
    }

    void pagesStandInTheirOrderUnderTheirTitles()
    {
        Bench bench;
        auto *tabs = bench.widget<QTabWidget>("tabWidget");
        QStringList classes;
        QStringList titles;
        for (int i = 0; i < tabs->count(); ++i) {
            classes << tabs->widget(i)->metaObject()->className();
            titles << tabs->tabText(i);
        }
        QCOMPARE(classes, QStringList({"Form_Info_Status_Indicator", "Form_CPU_Iccard", "Form_Mag_Stripe",
                                       "Form_Idcard", "Form_Mifare_Card", "Form_ssse"}));
        QCOMPARE(titles, QStringList({"设备信息与状态指示", "IC卡/CPU卡", "磁条卡", "二代证", "M1卡", "社保卡"}));
    }

    void driverAndBaudCombosHaveTheirEntries()
    {
        Bench bench;
        const auto entries = [&bench](const char *name) {
            QStringList texts;
            auto *combo = bench.widget<QComboBox>(name);
            for (int i = 0; i < combo->count(); ++i)
                texts << combo->itemText(i);
            return texts;
        };
        QCOMPARE(entries("comboBox_select_driver"),
                 QStringList({"libtarvovek.so", "libtarvozent.so", "tarvovek.dll", "tarvozent.dll"}));
        QCOMPARE(entries("comboBox_baud"), QStringList({"9600", "19200", "38400", "57600", "115200"}));
        QCOMPARE(bench.widget<QComboBox>("comboBox_select_driver")->currentText(), "libtarvovek.so");
        QCOMPARE(bench.widget<QComboBox>("comboBox_baud")->currentText(), "9600");
    }

    void onAWindowsSystemTheFirstWindowsLibraryIsChosen()
    {
        QCOMPARE(defaultDriverIndex("windows"), 2);
        QCOMPARE(defaultDriverIndex("winrt"), 2);
        QCOMPARE(defaultDriverIndex("Windows"), 0);
        QCOMPARE(defaultDriverIndex("debian"), 0);
        QCOMPARE(defaultDriverIndex(""), 0);
    }

    void systemTypeIsWrittenAsADebugMessage()
    {
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^System type:  \"" + QSysInfo::productType() + "\"$"));
        const MainWindow window;
    }

    void beforeALoadOnlyTheDriverRowAndTheLogWork()
    {
        Bench bench;
        bench.window.show();
        for (const char *enabled :
             {"comboBox_select_driver", "pushButton_select_driver", "pushButton_clear_log", "textEdit_log"})
            QVERIFY2(bench.widget<QWidget>(enabled)->isEnabled(), enabled);
        for (const char *disabled : {"pushButton_unload_driver", "groupBox_config", "tabWidget", "pushButton_close",
                                     "radioButton_usb", "pushButton_enum_all", "lineEdit_timeout"})
            QVERIFY2(!bench.widget<QWidget>(disabled)->isEnabled(), disabled);
    }

    void onlyTheCloseButtonIsDisabledInsideTheGroup()
    {
        Bench bench;
        bench.loadDriver();
        for (const char *enabled : {"pushButton_open_select", "pushButton_open_default", "comboBox_baud",
                                    "comboBox_select_device", "label_device_info", "lineEdit_handle"})
            QVERIFY2(bench.widget<QWidget>(enabled)->isEnabled(), enabled);
        QVERIFY(!bench.widget<QWidget>("pushButton_close")->isEnabled());
        QVERIFY(bench.widget<QLineEdit>("lineEdit_handle")->isReadOnly());
    }

    /// Down the window as the work goes; of the transports Tab reaches the chosen one, the arrow keys the others.
    void tabKeyGoesFromTheDriverRowToThePages()
    {
        Bench bench;
        bench.loadDriver();
        QApplication::setActiveWindow(&bench.window);
        bench.widget<QWidget>("pushButton_unload_driver")->setFocus();
        QStringList reached;
        while (QApplication::focusWidget() != bench.widget<QTabWidget>("tabWidget") && reached.size() < 20) {
            reached << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            if (QApplication::focusWidget()->objectName() == "qt_tabwidget_tabbar")
                break;
        }
        QCOMPARE(reached,
                 QStringList({"pushButton_unload_driver", "radioButton_usb", "pushButton_enum_select",
                              "pushButton_enum_all", "comboBox_baud", "lineEdit_timeout", "comboBox_select_device",
                              "pushButton_open_select", "pushButton_open_default", "lineEdit_handle"}));
    }

    void arrowKeysChooseATransport()
    {
        Bench bench;
        bench.loadDriver();
        QApplication::setActiveWindow(&bench.window);
        bench.widget<QRadioButton>("radioButton_usb")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
        QVERIFY(bench.widget<QRadioButton>("radioButton_serial")->isChecked());
        bench.press("pushButton_enum_select");
        QCOMPARE(Bench::calls(), QStringList({"vek_enum_devices(2, &null)"}));
    }

    void transportsAreOneGroupWithUsbChecked()
    {
        Bench bench;
        auto *usb = bench.widget<QRadioButton>("radioButton_usb");
        QVERIFY(usb->isChecked());
        QCOMPARE(usb->group()->parent(), &bench.window);
        int id = 0;
        for (const char *name : {"radioButton_usb", "radioButton_serial", "radioButton_pcsc", "radioButton_sdt"})
            QCOMPARE(usb->group()->id(bench.widget<QRadioButton>(name)), id++);
        QVERIFY(usb->group()->exclusive());
    }

    void theBaudMirrorTakesTheFirstFiveRatesOnly()
    {
        Bench bench;
        auto *combo = bench.widget<QComboBox>("comboBox_baud");
        const auto mirror = [&bench](int index) {
            QMetaObject::invokeMethod(&bench.window, "onChangeBaudIndex", Q_ARG(int, index));
        };
        for (const int index : {0, 4, 3}) {
            mirror(index);
            QCOMPARE(combo->currentIndex(), index);
        }
        for (const int index : {5, -1, 7, -2147483647}) {
            mirror(index);
            QCOMPARE(combo->currentIndex(), 3);
        }
    }

    void theProgramSaysWhoItIs()
    {
        setIdentity();
        QCOMPARE(QApplication::organizationName(), "Tarvo");
        QVERIFY(!QApplication::organizationDomain().isEmpty());
        QCOMPARE(QApplication::applicationName(), "Tarvo Unifold card reader SDK APIs demo application");
        QCOMPARE(QApplication::applicationVersion(), "1.23.4.25");
        QVERIFY(!QApplication::windowIcon().isNull());
    }

    void theIconIsDrawn()
    {
        const QPixmap pixmap(":res/app.svg");
        QVERIFY(!pixmap.isNull());
        const QImage small = pixmap.scaled(16, 16, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).toImage();
        QVERIFY(small.pixelColor(8, 12).green() > 100);
        QVERIFY(small.pixelColor(8, 12).red() < 60);
        QVERIFY(small.pixelColor(11, 8).red() > 150);
    }
};

QTEST_MAIN(TestMainWindow)
#include "test_main_window.moc"
