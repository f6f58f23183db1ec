// CPU cards through the C interface: slots, power, APDUs, and the applications above them.
#include "drivers/core/return_codes.h"
#include "tests/virtual/support/tray_world.h"

#include <QElapsedTimer>
#include <QtTest>

#include <array>
#include <fstream>
#include <thread>

using namespace drivers;
using tray::Slot;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

namespace {

constexpr char kSelectPboc[] = "00A4040008A000000333010101";
constexpr char kAid[] = "A000000333";
constexpr char kTransaction[] = "P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024"
                                "D7DBBACFB9F1C3E6B2E2CAD4";

} // namespace

class TestVirtualIcc : public QObject {
    Q_OBJECT

private slots:
    void startValuesSucceed();
    void everySlotHasItsCode();
    void statusFollowsTheCard();
    void removalIsToldOnce();
    void powerCycleLeavesCardsUnpowered();
    void apduNeedsPowerAndHexadecimal();
    void automaticTakesContactFirst();
    void poweringOnGivesUpAtTheTimeout();
    void waitEndsWhenTheDeviceIsClosed();
    void brokenCardIsACardError();
    void pbocReadsAndSigns();
    void counterIsKeptAcrossPrograms();
    void socialSecurityIsRead();
    void pcscReaderIsItsOneSlot();
    void probeTellsComingAndLeaving();

private:
    int status(sdk::DeviceHandle device, std::uint8_t slot)
    {
        return m_library.entry<sdk::IccStatus>("vek_icc_status")(device, slot);
    }
    int powerOn(sdk::DeviceHandle device, std::uint8_t slot, std::uint32_t timeoutMs = 1000)
    {
        std::array<char, sdk::kAtrSize> atr{};
        std::uint32_t length = 0;
        const int result =
            m_library.entry<sdk::IccPowerOn>("vek_icc_poweron")(device, slot, timeoutMs, atr.data(), &length);
        m_text = atr.data();
        return result;
    }
    int powerOff(sdk::DeviceHandle device, std::uint8_t slot)
    {
        return m_library.entry<sdk::IccPowerOff>("vek_icc_poweroff")(device, slot, 1000);
    }
    int apdu(sdk::DeviceHandle device, std::uint8_t slot, const QByteArray &command = kSelectPboc)
    {
        std::array<char, sdk::kApduReplySize> reply{};
        std::uint32_t length = 0;
        const int result = m_library.entry<sdk::IccApdu>("vek_icc_apdu")(
            device, slot, command.constData(), static_cast<std::uint32_t>(command.size()), reply.data(), &length);
        m_text = reply.data();
        return result;
    }
    int probe(sdk::DeviceHandle device)
    {
        return m_library.entry<sdk::ProbeRf>("vek_probe_rf")(device, &m_state, &m_type);
    }
    int cardInfo(sdk::DeviceHandle device, std::uint8_t slot, const char *tags)
    {
        std::array<char, sdk::kPbocResultSize> result{};
        std::uint16_t length = 0;
        std::uint8_t interfaceUsed = 0;
        const int code = m_library.entry<sdk::PbocGetCardInfo>("vek_pboc_get_card_info")(
            device, slot, 1000, kAid, tags, &interfaceUsed, result.data(), &length, 1);
        m_text = result.data();
        return code;
    }
    int arqc(sdk::DeviceHandle device, std::uint8_t slot)
    {
        std::array<char, sdk::kPbocResultSize> result{};
        std::uint16_t length = 0;
        const int code = m_library.entry<sdk::PbocGetArqc>("vek_pboc_get_arqc")(
            device, slot, 1000, kAid, 10, kTransaction, static_cast<int>(std::strlen(kTransaction)), result.data(),
            &length, 0);
        m_text = result.data();
        return code;
    }
    int socialSecurity(sdk::DeviceHandle device, const char *name)
    {
        std::array<char, sdk::kSsseRecordSize> record{};
        const int code = m_library.entry<sdk::SsseGetInfo>(name)(device, sdk::kSlotAutomatic, 1000, record.data(), 1);
        m_text = record.data();
        return code;
    }

    DriverLibrary m_library;
    QByteArray m_text;
    std::uint8_t m_state = 0;
    std::uint8_t m_type = 0;
};

void TestVirtualIcc::startValuesSucceed()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(status(device, sdk::kSlotAutomatic), static_cast<int>(kCardPresent));
    QCOMPARE(powerOn(device, sdk::kSlotAutomatic, 5000), 0);
    QVERIFY2(m_text.startsWith("3B"), m_text.constData());
    QCOMPARE(status(device, sdk::kSlotAutomatic), static_cast<int>(kCardPowered));
    QCOMPARE(apdu(device, sdk::kSlotAutomatic), 0);
    QVERIFY2(m_text.startsWith("6F") && m_text.endsWith("9000"), m_text.constData());
    QCOMPARE(powerOff(device, sdk::kSlotAutomatic), 0);
    QCOMPARE(status(device, sdk::kSlotAutomatic), static_cast<int>(kCardPresent));
    QCOMPARE(probe(device), 0);
}

void TestVirtualIcc::everySlotHasItsCode()
{
    TrayWorld world;
    OpenDevice device(m_library);
    for (const std::uint8_t slot :
         {sdk::kSlotContact, sdk::kSlotPsam1, sdk::kSlotPsam2, sdk::kSlotPsam3, sdk::kSlotPsam4}) {
        QCOMPARE(powerOn(device, slot), 0);
        QCOMPARE(apdu(device, slot, "0084000008"), 0);
        QVERIFY2(m_text.size() == 20 && m_text.endsWith("9000"), m_text.constData());
    }
    for (const std::uint8_t slot : {std::uint8_t{0x01}, std::uint8_t{0x14}, std::uint8_t{0x80}}) {
        QCOMPARE(status(device, slot), static_cast<int>(kBadArgument));
        QCOMPARE(powerOn(device, slot), static_cast<int>(kBadArgument));
        QCOMPARE(apdu(device, slot), static_cast<int>(kBadArgument));
    }
    // The Mifare card on the antenna has no answer to reset.
    QCOMPARE(powerOn(device, sdk::kSlotContactless), static_cast<int>(kCardError));
}

void TestVirtualIcc::statusFollowsTheCard()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const std::string card = world.cardIn(Slot::Contact);
    world.take(Slot::Contact);
    QCOMPARE(status(device, sdk::kSlotContact), static_cast<int>(kCardAbsent));
    QCOMPARE(apdu(device, sdk::kSlotContact), static_cast<int>(kNoCard));
    QCOMPARE(powerOff(device, sdk::kSlotContact), static_cast<int>(kNoCard));
    world.tray().put(Slot::Contact, card);
    QCOMPARE(status(device, sdk::kSlotContact), static_cast<int>(kCardPresent));
}

void TestVirtualIcc::removalIsToldOnce()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const std::string card = world.cardIn(Slot::Contact);
    QCOMPARE(powerOn(device, sdk::kSlotAutomatic), 0);
    world.take(Slot::Contact);
    world.tray().put(Slot::Contact, card);
    QCOMPARE(apdu(device, sdk::kSlotAutomatic), static_cast<int>(kCardRemoved));
    QCOMPARE(apdu(device, sdk::kSlotAutomatic), static_cast<int>(kNotPowered));
    QCOMPARE(powerOn(device, sdk::kSlotAutomatic), 0);
    QCOMPARE(apdu(device, sdk::kSlotAutomatic), 0);
}

void TestVirtualIcc::powerCycleLeavesCardsUnpowered()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(powerOn(device, sdk::kSlotContact), 0);
    world.tray().update([](tray::TrayState &state) { state.cyclePower(); });
    QCOMPARE(status(device, sdk::kSlotContact), static_cast<int>(kCardPresent));
    QCOMPARE(apdu(device, sdk::kSlotContact), static_cast<int>(kNotPowered));
}

void TestVirtualIcc::apduNeedsPowerAndHexadecimal()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(apdu(device, sdk::kSlotContact), static_cast<int>(kNotPowered));
    QCOMPARE(powerOn(device, sdk::kSlotContact), 0);
    for (const char *command : {"00A", "00A4040G", "0 A4"})
        QCOMPARE(apdu(device, sdk::kSlotContact, command), static_cast<int>(kBadArgument));
    std::array<char, sdk::kApduReplySize> reply{};
    std::uint32_t length = 0;
    const auto call = m_library.entry<sdk::IccApdu>("vek_icc_apdu");
    QCOMPARE(call(device, 0, nullptr, 10, reply.data(), &length), static_cast<int>(kBadArgument));
    QCOMPARE(call(device, 0, "00A4", 400, reply.data(), &length), static_cast<int>(kBadArgument));
    QCOMPARE(call(device, 0, "0084000008", 10, nullptr, &length), static_cast<int>(kBadArgument));
    QCOMPARE(call(device, 0, "0084000008", 10, reply.data(), &length), 0);
    QCOMPARE(std::size_t{length}, std::strlen(reply.data()));
}

void TestVirtualIcc::automaticTakesContactFirst()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const std::string card = world.cardIn(Slot::Contact);
    world.tray().put(Slot::Antenna, card);
    QCOMPARE(powerOn(device, sdk::kSlotAutomatic), 0);
    QCOMPARE(status(device, sdk::kSlotContactless), static_cast<int>(kCardPowered));
    QCOMPARE(status(device, sdk::kSlotContact), static_cast<int>(kCardAbsent));
}

void TestVirtualIcc::poweringOnGivesUpAtTheTimeout()
{
    TrayWorld world;
    OpenDevice device(m_library);
    world.take(Slot::Contact);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(powerOn(device, sdk::kSlotContact, 300), static_cast<int>(kTimeout));
    QVERIFY2(timer.elapsed() >= 300 && timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
}

void TestVirtualIcc::waitEndsWhenTheDeviceIsClosed()
{
    TrayWorld world;
    OpenDevice device(m_library);
    world.take(Slot::Contact);
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        device.close();
    });
    QElapsedTimer timer;
    timer.start();
    const sdk::DeviceHandle handle = device;
    const int result = powerOn(handle, sdk::kSlotContact, 10000);
    other.join();
    QCOMPARE(result, static_cast<int>(kBadHandle));
    QVERIFY(timer.elapsed() < 3000);
}

void TestVirtualIcc::brokenCardIsACardError()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(powerOn(device, sdk::kSlotContact), 0);
    std::ofstream(world.tray().cardFile(world.cardIn(Slot::Contact)), std::ios::trunc) << R"({"kind": "cpu"})";
    QCOMPARE(apdu(device, sdk::kSlotContact), static_cast<int>(kCardError));
    QCOMPARE(powerOn(device, sdk::kSlotContact), static_cast<int>(kCardError));
    QCOMPARE(powerOn(device, sdk::kSlotPsam1), 0);
}

void TestVirtualIcc::pbocReadsAndSigns()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(cardInfo(device, sdk::kSlotAutomatic, "ABCDEFGHIJKLMNOPQ"), 0);
    const QByteArray whole = m_text;
    QVERIFY2(whole.startsWith("A0"), whole.constData());
    QCOMPARE(cardInfo(device, sdk::kSlotAutomatic, "ACDEIJ"), 0);
    QVERIFY(m_text.size() < whole.size());
    QCOMPARE(cardInfo(device, sdk::kSlotAutomatic, "a"), static_cast<int>(kBadArgument));
    QCOMPARE(arqc(device, sdk::kSlotAutomatic), 0);
    QVERIFY2(m_text.startsWith("A016"), m_text.constData());
    // A card that was not powered is left so.
    QCOMPARE(status(device, sdk::kSlotContact), static_cast<int>(kCardPresent));
    QCOMPARE(cardInfo(device, sdk::kSlotPsam1, "A"), static_cast<int>(kCardError));
    world.take(Slot::Psam2);
    QCOMPARE(cardInfo(device, sdk::kSlotPsam2, "A"), static_cast<int>(kTimeout));
}

void TestVirtualIcc::counterIsKeptAcrossPrograms()
{
    TrayWorld world;
    OpenDevice device(m_library);
    OpenDevice other(m_library, "VUSB0002");
    QCOMPARE(powerOn(device, sdk::kSlotContact), 0);
    const auto counter = [&](sdk::DeviceHandle from) {
        return cardInfo(from, sdk::kSlotContact, "I") == 0 ? m_text.mid(4).toInt(nullptr, 16) : -1;
    };
    const int before = counter(device);
    QVERIFY(before >= 0);
    QCOMPARE(arqc(device, sdk::kSlotContact), 0);
    const int once = counter(other);
    QVERIFY(once > before);
    QCOMPARE(arqc(other, sdk::kSlotContact), 0);
    QVERIFY(counter(device) > once);
}

void TestVirtualIcc::socialSecurityIsRead()
{
    TrayWorld world;
    OpenDevice device(m_library);
    for (const char *call : {"vek_ssse_get_issuer_info", "vek_ssse_get_user_info"}) {
        QCOMPARE(socialSecurity(device, call), 0);
        QCOMPARE(m_text.count('|'), 6);
    }
}

void TestVirtualIcc::pcscReaderIsItsOneSlot()
{
    TrayWorld world;
    OpenDevice contact(m_library, "Unifold Virtual Reader [Contact] (TRAY0001) 00 00");
    OpenDevice contactless(m_library, "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01");
    for (const std::uint8_t slot : {sdk::kSlotContact, sdk::kSlotContactless, sdk::kSlotAutomatic, sdk::kSlotPsam1})
        QCOMPARE(powerOn(contact, slot), 0);
    QCOMPARE(powerOn(contact, 0x77), static_cast<int>(kBadArgument));
    QCOMPARE(powerOn(contactless, sdk::kSlotContact), static_cast<int>(kCardError));
    QCOMPARE(probe(contact), static_cast<int>(kNotSupported));
    QCOMPARE(probe(contactless), 0);
    QCOMPARE(m_library.entry<sdk::MsrSession>("vek_msr_qm_start")(contact), static_cast<int>(kNotSupported));
}

void TestVirtualIcc::probeTellsComingAndLeaving()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const std::string mifare = world.cardIn(Slot::Antenna);
    const std::string cpu = world.cardIn(Slot::Contact);
    QCOMPARE(probe(device), 0);
    QCOMPARE(int{m_state}, 3);
    QCOMPARE(int{m_type}, 0x08);
    QCOMPARE(probe(device), 0);
    QCOMPARE(int{m_state}, 1);
    world.take(Slot::Antenna);
    QCOMPARE(probe(device), 0);
    QCOMPARE(int{m_state}, 2);
    QCOMPARE(probe(device), 0);
    QCOMPARE(int{m_state}, 1);
    world.tray().put(Slot::Antenna, cpu);
    QCOMPARE(probe(device), 0);
    QCOMPARE(int{m_state}, 3);
    QCOMPARE(int{m_type}, 0x20);
    world.tray().put(Slot::Antenna, mifare);
    QCOMPARE(probe(device), 0);
    QCOMPARE(int{m_state}, 3);
    QCOMPARE(m_library.entry<sdk::ProbeRf>("vek_probe_rf")(device, nullptr, &m_type), static_cast<int>(kBadArgument));
}

QTEST_GUILESS_MAIN(TestVirtualIcc)
#include "test_virtual_icc.moc"
