// Mifare cards through the C interface.
#include "drivers/core/return_codes.h"
#include "tests/virtual/support/tray_world.h"

#include <QElapsedTimer>
#include <QtTest>

#include <array>
#include <limits>
#include <thread>

using namespace drivers;
using tray::Slot;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

namespace {

constexpr char kFactoryKey[] = "FFFFFFFFFFFF";
constexpr char kBlock[] = "00112233445566778899AABBCCDDEEFF";
// What the bench shows at start.
constexpr std::uint8_t kSector = 1;
constexpr std::uint8_t kBlockNumber = 5;

} // namespace

class TestVirtualMifare : public QObject {
    Q_OBJECT

private slots:
    void startValuesSucceed();
    void walletEndsAt210();
    void refusesWithoutAuthentication();
    void failureEndsTheAuthentication();
    void refusesMalformedArguments();
    void keyChangeHolds();
    void writesAreKept();
    void seesWhatAnotherProgramWrote();
    void removalIsToldOnce();
    void writesToNoCardThatIsOutOfTheField();
    void findingGivesUpAtTheTimeout();
    void contactReaderHasNone();

private:
    int find(sdk::DeviceHandle device, int timeoutMs = 1000)
    {
        std::array<char, sdk::kMifareTypeSize> type{};
        std::array<char, sdk::kMifareUidSize> uid{};
        const int result =
            m_library.entry<sdk::MifareRequest>("vek_mifare_request")(device, timeoutMs, type.data(), uid.data());
        m_text = QByteArray(type.data()).append(' ').append(uid.data());
        return result;
    }
    int authenticate(sdk::DeviceHandle device, char type = 'A', const char *key = kFactoryKey, std::uint8_t sector = 1)
    {
        return m_library.entry<sdk::MifareKey>("vek_mifare_authentication")(device, sector, type, key);
    }
    int changeKey(sdk::DeviceHandle device, char type, const char *key)
    {
        return m_library.entry<sdk::MifareKey>("vek_mifare_change_key")(device, kSector, type, key);
    }
    int read(sdk::DeviceHandle device, std::uint8_t block = kBlockNumber)
    {
        std::array<char, sdk::kMifareBlockSize> data{};
        const int result = m_library.entry<sdk::MifareReadBlock>("vek_mifare_read_block")(device, block, data.data());
        m_text = data.data();
        return result;
    }
    int write(sdk::DeviceHandle device, const char *data, std::uint8_t block = kBlockNumber)
    {
        return m_library.entry<sdk::MifareWriteBlock>("vek_mifare_write_block")(device, block, data);
    }
    int value(sdk::DeviceHandle device, const char *name, int amount)
    {
        return m_library.entry<sdk::MifareValue>(name)(device, kBlockNumber, amount);
    }
    int balance(sdk::DeviceHandle device)
    {
        return m_library.entry<sdk::MifareReadValue>("vek_mifare_read_value")(device, kBlockNumber, &m_value);
    }

    DriverLibrary m_library;
    QByteArray m_text;
    int m_value = 0;
};

void TestVirtualMifare::startValuesSucceed()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(find(device, 5000), 0);
    QVERIFY2(m_text.size() == 10, m_text.constData());
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(read(device), 0);
    QCOMPARE(m_text.size(), 32);
    QCOMPARE(write(device, kBlock), 0);
    QCOMPARE(read(device), 0);
    QCOMPARE(m_text, QByteArray(kBlock));
    // Without looking for the card first.
    QCOMPARE(authenticate(OpenDevice(m_library)), 0);
}

void TestVirtualMifare::walletEndsAt210()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(find(device), 0);
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(value(device, "vek_mifare_init_value", 100), 0);
    QCOMPARE(value(device, "vek_mifare_increase_value", 170), 0);
    QCOMPARE(value(device, "vek_mifare_decrease_value", 60), 0);
    QCOMPARE(balance(device), 0);
    QCOMPARE(m_value, 210);
    QCOMPARE(value(device, "vek_mifare_increase_value", std::numeric_limits<int>::max()), static_cast<int>(kCardError));
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(value(device, "vek_mifare_increase_value", -1), static_cast<int>(kBadArgument));
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(balance(device), 0);
    QCOMPARE(m_value, 210);
}

void TestVirtualMifare::refusesWithoutAuthentication()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(read(device), static_cast<int>(kAuthenticationFailed));
    QCOMPARE(find(device), 0);
    QCOMPARE(read(device), static_cast<int>(kAuthenticationFailed));
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(read(device, 8), static_cast<int>(kAuthenticationFailed));
    world.take(Slot::Antenna);
    QCOMPARE(read(OpenDevice(m_library)), static_cast<int>(kNoCard));
    QCOMPARE(authenticate(OpenDevice(m_library)), static_cast<int>(kNoCard));
}

void TestVirtualMifare::failureEndsTheAuthentication()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(write(device, kBlock), 0);
    QCOMPARE(balance(device), static_cast<int>(kCardError));
    QCOMPARE(read(device), static_cast<int>(kAuthenticationFailed));
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(authenticate(device, 'A', "000000000000"), static_cast<int>(kAuthenticationFailed));
    QCOMPARE(read(device), static_cast<int>(kAuthenticationFailed));
}

void TestVirtualMifare::refusesMalformedArguments()
{
    TrayWorld world;
    OpenDevice device(m_library);
    for (const char *key : {"", "FFFFFFFFFFF", "FFFFFFFFFFFFF", "FFFFFFFFFFFFFF", "GFFFFFFFFFFF"})
        QCOMPARE(authenticate(device, 'A', key), static_cast<int>(kBadArgument));
    QCOMPARE(authenticate(device, 'A', nullptr), static_cast<int>(kBadArgument));
    QCOMPARE(authenticate(device, 'C'), static_cast<int>(kBadArgument));
    QCOMPARE(authenticate(device, 'A', kFactoryKey, 16), static_cast<int>(kBadArgument));
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(write(device, "0011"), static_cast<int>(kBadArgument));
    QCOMPARE(write(device, nullptr), static_cast<int>(kBadArgument));
    QCOMPARE(read(device), 0);
    QCOMPARE(read(device, 64), static_cast<int>(kBadArgument));
    QCOMPARE(m_library.entry<sdk::MifareRequest>("vek_mifare_request")(device, 0, nullptr, nullptr),
             static_cast<int>(kBadArgument));
}

void TestVirtualMifare::keyChangeHolds()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(changeKey(device, 'A', "A0A1A2A3A4A5"), static_cast<int>(kAuthenticationFailed));
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(changeKey(device, 'A', ""), static_cast<int>(kBadArgument));
    QCOMPARE(changeKey(device, 'A', "A0A1A2A3A4A5"), 0);
    OpenDevice other(m_library);
    QCOMPARE(authenticate(other), static_cast<int>(kAuthenticationFailed));
    QCOMPARE(authenticate(other, 'A', "a0a1a2a3a4a5"), 0);
}

void TestVirtualMifare::writesAreKept()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(write(device, kBlock), 0);
    const nlohmann::json card = world.tray().card(world.cardIn(Slot::Antenna));
    QCOMPARE(card.at("blocks").at(kBlockNumber).get<std::string>(), std::string(kBlock));
}

void TestVirtualMifare::seesWhatAnotherProgramWrote()
{
    TrayWorld world;
    OpenDevice device(m_library);
    OpenDevice other(m_library);
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(authenticate(other), 0);
    QCOMPARE(value(device, "vek_mifare_init_value", 0), 0);
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(value(i % 2 == 0 ? device : other, "vek_mifare_increase_value", 1), 0);
        QCOMPARE(balance(i % 2 == 0 ? other : device), 0);
        QCOMPARE(m_value, i + 1);
    }
}

void TestVirtualMifare::removalIsToldOnce()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const std::string card = world.cardIn(Slot::Antenna);
    QCOMPARE(authenticate(device), 0);
    world.take(Slot::Antenna);
    QCOMPARE(read(device), static_cast<int>(kCardRemoved));
    QCOMPARE(read(device), static_cast<int>(kNoCard));
    world.tray().put(Slot::Antenna, card);
    QCOMPARE(find(device), 0);
    QCOMPARE(authenticate(device), 0);
    QCOMPARE(read(device), 0);
}

void TestVirtualMifare::writesToNoCardThatIsOutOfTheField()
{
    TrayWorld world;
    const OpenDevice device(m_library);
    QCOMPARE(find(device), kSuccess);
    QCOMPARE(authenticate(device), kSuccess);
    const std::string card = world.cardIn(Slot::Antenna);
    const auto before = world.tray().card(card);
    int result = kSuccess;
    std::thread writer;
    {
        // The call stands before the lock while another program takes the card out.
        const tray::FolderLock held = world.tray().lock();
        writer = std::thread([&] { result = write(device, kBlock); });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        world.tray().update(held, [](tray::TrayState &state) { state.take(Slot::Antenna); });
    }
    writer.join();
    QCOMPARE(result, int{kCardRemoved});
    QVERIFY(world.tray().card(card) == before);
}

void TestVirtualMifare::findingGivesUpAtTheTimeout()
{
    TrayWorld world;
    OpenDevice device(m_library);
    world.tray().put(Slot::Antenna, world.cardIn(Slot::Contact));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(find(device, 200), static_cast<int>(kTimeout));
    QVERIFY(timer.elapsed() >= 200);
    QCOMPARE(find(device, -5), static_cast<int>(kTimeout));
}

void TestVirtualMifare::contactReaderHasNone()
{
    TrayWorld world;
    QCOMPARE(find(OpenDevice(m_library, "Unifold Virtual Reader [Contact] (TRAY0001) 00 00")),
             static_cast<int>(kNotSupported));
    QCOMPARE(find(OpenDevice(m_library, "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01")), 0);
}

QTEST_GUILESS_MAIN(TestVirtualMifare)
#include "test_virtual_mifare.moc"
