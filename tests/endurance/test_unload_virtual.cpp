// The virtual driver is loaded and unloaded, with devices open or not, while another program's call waits in it.
//
//   UNIFOLD_UNLOAD_ROUNDS=1000  that many rounds (without it as many, or fewer if they take too long)
#include "tests/endurance/card_work.h"
#include "tests/endurance/child.h"
#include "tests/endurance/load_rounds.h"
#include "tests/endurance/writer_record.h"
#include "tests/virtual/support/tray_world.h"

using namespace endurance;
using drivers::tray::Slot;

namespace {

constexpr char kLibrary[] = "libtarvovek.so";

/// Drawing takes most of a round's time.
constexpr int kRoundsPerPicture = 10;

void readCards(const DriverApi &driver, sdk::DeviceHandle device, int round, const QTemporaryDir &folder)
{
    std::array<char, sdk::kAtrSize> atr{};
    std::array<char, sdk::kApduReplySize> reply{};
    std::array<char, sdk::kIdInfoSize> info{};
    std::array<char, sdk::kIdExtraSize> extra{};
    std::uint32_t length = 0;
    const auto path = [&folder](const char *name) { return folder.filePath(name).toStdString(); };
    QCOMPARE(driver.vek_icc_poweron(device, sdk::kSlotPsam1, 0, atr.data(), &length), 0);
    QCOMPARE(driver.vek_icc_apdu(device, sdk::kSlotPsam1, "0084000008", 10, reply.data(), &length), 0);
    QCOMPARE(openSector(driver, device, 5), 0);
    QCOMPARE(driver.vek_mifare_increase_value(device, 5, 1), 0);
    QCOMPARE(driver.vek_msr_qm_start(device), 0);
    QCOMPARE(driver.vek_idcr_getinfo(device, round % kRoundsPerPicture == 0 ? 0x0E : 0x02, 0, 1, info.data(),
                                     extra.data(), path("photo").c_str(), path("front").c_str(), path("back").c_str()),
             0);
}

} // namespace

class TestUnloadVirtual : public QObject {
    Q_OBJECT

public:
    /// Qt Test ends a function after five minutes unless told otherwise.
    static void initMain() { qputenv("QTEST_FUNCTION_TIMEOUT", "86400000"); }

private slots:
    /// Before the others: nothing has been drawn yet, so no library that draws stays by itself.
    void nothingStaysOfLoadingAlone()
    {
        const QString grown = runLoadRounds(kLibrary, [](int) { const DriverApi driver(kLibrary); });
        QVERIFY2(grown.isEmpty(), qPrintable(grown));
    }

    void nothingStays()
    {
        QTemporaryDir folder;
        virtual_test::TrayWorld world;
        world.take(Slot::Contact);
        Child waiting({UNIFOLD_WAITING_CALLER, kLibrary, "", std::to_string(sdk::kSlotContact)});
        WriterRecord record{};
        QVERIFY(waiting.read(record));
        const QString grown = runLoadRounds(kLibrary, [&](int round) {
            const DriverApi driver(kLibrary);
            char *list = nullptr;
            QCOMPARE(driver.vek_enum_devices(sdk::kTransportUsb, &list), 2);
            const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
            QVERIFY(device != 0);
            readCards(driver, device, round, folder);
            if (round % 2 == 0) {
                driver.vek_free_list(list);
                QCOMPARE(driver.vek_close(device, 0), 0);
            }
        });
        QVERIFY2(grown.isEmpty(), qPrintable(grown));

        world.tray().put(Slot::Contact, "file-card");
        QVERIFY(waiting.read(record));
        QCOMPARE(record.code, 0);
        QCOMPARE(waiting.wait(), 0);
    }

    void traceIsLetGo()
    {
        QTemporaryDir folder;
        virtual_test::TrayWorld world;
        qputenv("UNIFOLD_TRACE", folder.filePath("trace").toUtf8());
        const QString grown = runLoadRounds(kLibrary, [](int) {
            const DriverApi driver(kLibrary);
            QVERIFY(driver.vek_open(nullptr, 0, 0) != 0);
        });
        qunsetenv("UNIFOLD_TRACE");
        QVERIFY2(grown.isEmpty(), qPrintable(grown));
    }
};

QTEST_GUILESS_MAIN(TestUnloadVirtual)
#include "test_unload_virtual.moc"
