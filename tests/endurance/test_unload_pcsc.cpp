// The PC/SC driver is loaded and unloaded beside the daemon, with a reader open or not and a card powered or not, while
// another program's call waits in it.
//
//   UNIFOLD_UNLOAD_ROUNDS=1000  that many rounds (without it as many, or fewer if they take too long)
#include "tests/endurance/child.h"
#include "tests/endurance/load_rounds.h"
#include "tests/endurance/writer_record.h"
#include "tests/pcsc/pcsc_daemon.h"
#include "tests/support/driver_api.h"
#include "tests/support/vpcd_card.h"

#include <QtTest>

using namespace endurance;
using namespace testsupport;

namespace {

constexpr char kLibrary[] = "libtarvozent.so";
constexpr std::uint32_t kCardTimeoutMs = 4000;

Bytes succeed(const Bytes &)
{
    return {0x90, 0x00};
}

} // namespace

class TestUnloadPcsc : public QObject {
    Q_OBJECT

public:
    /// Qt Test ends a function after five minutes unless told otherwise.
    static void initMain() { qputenv("QTEST_FUNCTION_TIMEOUT", "86400000"); }

private slots:
    void nothingStays()
    {
        const PcscDaemon daemon;
        QVERIFY2(daemon.problem().isEmpty(), qPrintable(daemon.problem()));
        const VpcdCard card({0x3B, 0x00}, succeed);
        Child waiting({UNIFOLD_WAITING_CALLER, kLibrary, kReader1, std::to_string(sdk::kSlotContact)});
        WriterRecord record{};
        QVERIFY(waiting.read(record));
        const QString grown = runLoadRounds(kLibrary, [](int round) { useCard(round); });
        QVERIFY2(grown.isEmpty(), qPrintable(grown));

        const VpcdCard awaited({0x3B, 0x00}, succeed, kVpcdPort1);
        QVERIFY(waiting.read(record));
        QCOMPARE(record.code, 0);
        QCOMPARE(waiting.wait(), 0);
    }

private:
    static void useCard(int round)
    {
        const DriverApi driver(kLibrary);
        char *list = nullptr;
        QVERIFY(driver.vek_enum_devices(sdk::kTransportPcsc, &list) >= 2);
        const sdk::DeviceHandle device = driver.vek_open(kReader0, 0, 0);
        QVERIFY(device != 0);
        std::array<char, sdk::kAtrSize> atr{};
        std::array<char, sdk::kApduReplySize> reply{};
        std::uint32_t length = 0;
        QCOMPARE(driver.vek_icc_poweron(device, sdk::kSlotContact, kCardTimeoutMs, atr.data(), &length), 0);
        QCOMPARE(driver.vek_icc_apdu(device, sdk::kSlotContact, "00A40000", 8, reply.data(), &length), 0);
        if (round % 3 == 0)
            QCOMPARE(driver.vek_icc_poweroff(device, sdk::kSlotContact, 0), 0);
        if (round % 2 == 0) {
            driver.vek_free_list(list);
            QCOMPARE(driver.vek_close(device, 0), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestUnloadPcsc)
#include "test_unload_pcsc.moc"
