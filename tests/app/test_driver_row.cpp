#include "sdk/entry_points.h"
#include "sdk/loader.h"
#include "tests/support/bench.h"

#include <QApplication>
#include <QComboBox>

namespace {

void checkLoaded(Bench &bench, bool loaded)
{
    for (const char *name : {"pushButton_unload_driver", "groupBox_config", "tabWidget", "label_device_info"})
        QVERIFY2(bench.widget<QWidget>(name)->isEnabled() == loaded, name);
    for (const char *name : {"comboBox_select_driver", "pushButton_select_driver"})
        QVERIFY2(bench.widget<QWidget>(name)->isEnabled() != loaded, name);
}

int resolvedEntryPoints()
{
    int resolved = 0;
#define UNIFOLD_COUNT_CALLED(name, Contract) resolved += (name) != nullptr ? 1 : 0;
#define UNIFOLD_COUNT_UNCALLED(name) resolved += (name) != nullptr ? 1 : 0;
    UNIFOLD_ENTRY_POINTS(UNIFOLD_COUNT_CALLED, UNIFOLD_COUNT_UNCALLED)
#undef UNIFOLD_COUNT_CALLED
#undef UNIFOLD_COUNT_UNCALLED
    return resolved;
}

} // namespace

class TestDriverRow : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { sdk::unload(); }

    void loadAndUnloadSwitchTheControls()
    {
        Bench bench;
        bench.window.show();
        checkLoaded(bench, false);
        bench.press("pushButton_select_driver");
        checkLoaded(bench, true);
        QVERIFY(bench.log().isEmpty());
        bench.press("pushButton_unload_driver");
        checkLoaded(bench, false);
        QVERIFY(bench.log().isEmpty());
    }

    void aFailedLoadLeavesTheNotLoadedState()
    {
        Bench bench;
        bench.window.show();
        bench.widget<QComboBox>("comboBox_select_driver")->setCurrentText("tarvozent.dll");
        bench.press("pushButton_select_driver");
        checkLoaded(bench, false);
        QVERIFY(bench.log().isEmpty());
    }

    void aLibraryWithoutAnyNameEnablesThePages()
    {
        Bench bench;
        bench.window.show();
        bench.widget<QComboBox>("comboBox_select_driver")->setCurrentText("libtarvozent.so");
        bench.press("pushButton_select_driver");
        checkLoaded(bench, true);
    }

    /// The pressed button is disabled then, and the log, next in order, takes what is typed.
    void theKeyboardStaysInTheDriverRow()
    {
        Bench bench;
        bench.window.show();
        QApplication::setActiveWindow(&bench.window);
        const auto focus = [] { return QApplication::focusWidget()->objectName(); };
        bench.press("pushButton_select_driver");
        QCOMPARE(focus(), "pushButton_unload_driver");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        checkLoaded(bench, false);
        QCOMPARE(focus(), "pushButton_select_driver");
        bench.widget<QComboBox>("comboBox_select_driver")->setCurrentText("tarvozent.dll");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        checkLoaded(bench, false);
        QCOMPARE(focus(), "pushButton_select_driver");
    }

    void aLoadAfterAFailedOneSucceeds()
    {
        Bench bench;
        bench.window.show();
        auto *libraries = bench.widget<QComboBox>("comboBox_select_driver");
        libraries->setCurrentText("tarvovek.dll");
        bench.press("pushButton_select_driver");
        libraries->setCurrentText("libtarvovek.so");
        bench.press("pushButton_select_driver");
        checkLoaded(bench, true);
        QCOMPARE(resolvedEntryPoints(), 85);
    }

    void anotherNameAfterAnUnloadOpensTheOtherFile()
    {
        Bench bench;
        bench.window.show();
        bench.press("pushButton_select_driver");
        QCOMPARE(resolvedEntryPoints(), 85);
        bench.press("pushButton_unload_driver");
        bench.widget<QComboBox>("comboBox_select_driver")->setCurrentIndex(1);
        bench.press("pushButton_select_driver");
        QCOMPARE(resolvedEntryPoints(), 0);
    }

    void unloadingKeepsTheDeviceOpen()
    {
        Bench bench;
        bench.openDevice();
        bench.press("pushButton_unload_driver");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_handle")->text(), "1A2BH");
        bench.press("pushButton_select_driver");
        QVERIFY(bench.widget<QWidget>("pushButton_close")->isEnabled());
        QVERIFY(!bench.widget<QWidget>("pushButton_open_select")->isEnabled());
        bench.press("pushButton_close");
        QCOMPARE(Bench::calls(), QStringList({"vek_close(1A2B, 0)"}));
    }

    void closingTheWindowNeitherClosesTheDeviceNorUnloads()
    {
        {
            Bench bench;
            bench.openDevice();
            bench.window.close();
        }
        QVERIFY(plib_handle != 0);
        QVERIFY(Bench::calls().isEmpty());
    }

    void aHundredLoadsAndUnloadsByTheButtons()
    {
        Bench bench;
        bench.window.show();
        for (int i = 0; i < 100; ++i) {
            bench.press("pushButton_select_driver");
            bench.press("pushButton_unload_driver");
        }
        checkLoaded(bench, false);
    }
};

QTEST_MAIN(TestDriverRow)
#include "test_driver_row.moc"
