// Every call that waits for a card, begun before there is one: it answers within 50 ms of the card's coming.
#include "drivers/virtual/reader/card_models.h"
#include "tests/virtual/support/tray_world.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

using drivers::tray::Slot;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

namespace {

constexpr std::uint32_t kTimeoutMs = 5000;
constexpr std::int64_t kSoonMs = UNIFOLD_SOON_MS;
constexpr char kAid[] = "A000000333";
constexpr char kTransaction[] = "P012000000000000R0040156S006140426T00201U006143837";

using Call = std::function<int(const DriverLibrary &, sdk::DeviceHandle)>;
using Arrival = std::function<void(TrayWorld &)>;

Arrival put(Slot slot, const char *card)
{
    return [=](TrayWorld &world) { world.tray().put(slot, card); };
}

/// What the calls write into; they are not looked at here.
struct Outputs {
    std::array<char, 8192> text{};
    std::array<char, 2048> more{};
    std::array<std::uint8_t, sdk::kTransiveDataSize> data{};
    std::uint32_t length32 = 0;
    std::int32_t signed32 = 0;
    std::uint16_t length16 = 0;
    std::uint8_t byte = 0;
};

Call readText(const char *name)
{
    return [=](const DriverLibrary &library, sdk::DeviceHandle device) {
        Outputs out;
        return library.entry<sdk::IdcrReadText>(name)(device, kTimeoutMs, out.text.data());
    };
}

Call socialSecurity(const char *name)
{
    return [=](const DriverLibrary &library, sdk::DeviceHandle device) {
        Outputs out;
        return library.entry<sdk::SsseGetInfo>(name)(device, sdk::kSlotAutomatic, kTimeoutMs, out.text.data(), 1);
    };
}

int powerOn(const DriverLibrary &library, sdk::DeviceHandle device)
{
    Outputs out;
    const int result = library.entry<sdk::IccPowerOn>("vek_icc_poweron")(device, sdk::kSlotAutomatic, kTimeoutMs,
                                                                         out.text.data(), &out.length32);
    library.entry<sdk::IccPowerOff>("vek_icc_poweroff")(device, sdk::kSlotAutomatic, 0);
    return result;
}

int cardInfo(const DriverLibrary &library, sdk::DeviceHandle device)
{
    Outputs out;
    return library.entry<sdk::PbocGetCardInfo>("vek_pboc_get_card_info")(
        device, sdk::kSlotAutomatic, kTimeoutMs, kAid, "A", &out.byte, out.text.data(), &out.length16, 1);
}

int arqc(const DriverLibrary &library, sdk::DeviceHandle device)
{
    Outputs out;
    return library.entry<sdk::PbocGetArqc>("vek_pboc_get_arqc")(
        device, sdk::kSlotAutomatic, kTimeoutMs, kAid, 10, kTransaction, static_cast<int>(std::strlen(kTransaction)),
        out.text.data(), &out.length16, 0);
}

int readIdCard(const DriverLibrary &library, sdk::DeviceHandle device)
{
    Outputs out;
    return library.entry<sdk::IdcrGetInfo>("vek_idcr_getinfo")(device, 0x12, kTimeoutMs, 1, out.text.data(),
                                                               out.more.data(), nullptr, nullptr, nullptr);
}

int passThrough(const DriverLibrary &library, sdk::DeviceHandle device)
{
    Outputs out;
    return library.entry<sdk::IdcrTransive>("vek_idcr_transive")(device, kTimeoutMs, 0x20, 0x01, &out.length32,
                                                                 out.data.data(), static_cast<int>(out.data.size()),
                                                                 &out.signed32);
}

int findMifare(const DriverLibrary &library, sdk::DeviceHandle device)
{
    Outputs out;
    return library.entry<sdk::MifareRequest>("vek_mifare_request")(device, kTimeoutMs, out.text.data(),
                                                                   out.more.data());
}

int writeStripe(const DriverLibrary &library, sdk::DeviceHandle device)
{
    return library.entry<sdk::MsrWrite>("vek_msr_write")(device, 2, 0, "", "1234=5678", "", kTimeoutMs);
}

void swipe(TrayWorld &world)
{
    drivers::reader::swipe(world.tray(), world.cardIn(Slot::Stripe));
}

} // namespace

Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(Arrival)

class TestVirtualWaits : public QObject {
    Q_OBJECT

private slots:
    void answersSoonAfterTheCardCame_data();
    void answersSoonAfterTheCardCame();

private:
    TrayWorld m_world;
    DriverLibrary m_library;
};

void TestVirtualWaits::answersSoonAfterTheCardCame_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Arrival>("arrival");
    const Arrival cpuCard = put(Slot::Contact, "social-security-and-bank-card");
    const Arrival idCard = put(Slot::IdPlate, "id-resident");
    QTest::newRow("vek_icc_poweron") << Call(powerOn) << cpuCard;
    QTest::newRow("vek_icc_poweron, antenna") << Call(powerOn) << put(Slot::Antenna, "contactless-bank-card");
    QTest::newRow("vek_pboc_get_card_info") << Call(cardInfo) << cpuCard;
    QTest::newRow("vek_pboc_get_arqc") << Call(arqc) << cpuCard;
    for (const char *name : {"vek_ssse_get_issuer_info", "vek_ssse_get_user_info"})
        QTest::newRow(name) << socialSecurity(name) << cpuCard;
    QTest::newRow("vek_idcr_getinfo") << Call(readIdCard) << idCard;
    for (const char *name : {"vek_idcr_read_uid", "vek_idcr_read_dn", "vek_idcr_read_emid"})
        QTest::newRow(name) << readText(name) << idCard;
    QTest::newRow("vek_idcr_transive") << Call(passThrough) << idCard;
    QTest::newRow("vek_mifare_request") << Call(findMifare) << put(Slot::Antenna, "mifare-wallet");
    QTest::newRow("vek_msr_write") << Call(writeStripe) << Arrival(swipe);
}

void TestVirtualWaits::answersSoonAfterTheCardCame()
{
    QFETCH(Call, call);
    QFETCH(Arrival, arrival);
    OpenDevice device(m_library);
    // What takes long is the driver's doing only if it takes long each time.
    std::int64_t soonest = kTimeoutMs;
    for (int round = 0; round < 5 && soonest >= kSoonMs; ++round) {
        for (const Slot slot : {Slot::Contact, Slot::Antenna, Slot::IdPlate})
            m_world.take(slot);
        QElapsedTimer timer;
        timer.start();
        std::atomic<std::int64_t> came = -1;
        std::thread person([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            arrival(m_world);
            came = timer.elapsed();
        });
        const int result = call(m_library, device);
        const std::int64_t answered = timer.elapsed();
        person.join();
        QCOMPARE(result, 0);
        QVERIFY2(answered >= 100, qPrintable(QString::number(answered)));
        soonest = std::min(soonest, answered - came);
    }
    QVERIFY2(soonest < kSoonMs, qPrintable(QString::number(soonest)));
}

QTEST_GUILESS_MAIN(TestVirtualWaits)
#include "test_virtual_waits.moc"
