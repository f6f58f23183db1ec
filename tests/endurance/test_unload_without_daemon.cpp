// The PC/SC driver is loaded and unloaded where no daemon runs.
//
//   UNIFOLD_UNLOAD_ROUNDS=1000  that many rounds (without it as many, or fewer if they take too long)
#include "tests/endurance/load_rounds.h"
#include "tests/support/driver_api.h"

#include <QtTest>

class TestUnloadWithoutDaemon : public QObject {
    Q_OBJECT

private slots:
    void nothingStays()
    {
        constexpr char kLibrary[] = "libtarvozent.so";
        qputenv("PCSCLITE_CSOCK_NAME", "/proc/self/no-such-socket");
        const QString grown = endurance::runLoadRounds(kLibrary, [&kLibrary](int) {
            const testsupport::DriverApi driver(kLibrary);
            char *list = nullptr;
            QCOMPARE(driver.vek_enum_devices(sdk::kTransportPcsc, &list), 0);
            QVERIFY(list == nullptr);
            QCOMPARE(driver.vek_open("Virtual PCD 00 00", 0, 0), std::intptr_t{0});
            QCOMPARE(driver.vek_close(0, 0), -1);
        });
        QVERIFY2(grown.isEmpty(), qPrintable(grown));
    }
};

QTEST_GUILESS_MAIN(TestUnloadWithoutDaemon)
#include "test_unload_without_daemon.moc"
