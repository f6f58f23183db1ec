// Finding, opening, closing; version, beeper and bit rate; what no call may do.
#include "drivers/core/return_codes.h"
#include "sdk/entry_point_table.h"
#include "tests/virtual/support/tray_world.h"

#include <QElapsedTimer>
#include <QtTest>

#include <array>
#include <fstream>
#include <limits>

using namespace drivers;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

class TestVirtualDevice : public QObject {
    Q_OBJECT

private slots:
    void exportsEveryName();
    void uncalledNamesAreNotSupported();
    void listsDevicesOfEveryTransport();
    void opensByNameAndByDefault();
    void refusesBadHandles();
    void tellsItsVersion();
    void beepsAsLongAsThePattern();
    void refusesBeepsOutOfRange();
    void serialDeviceNeedsItsRate();
    void storedRateOutlivesThePower();
    void otherDevicesTakeAnyRate();
    void sdtReadsCardsOnly();
    void brokenTrayOpensNothing();

private:
    int version(sdk::DeviceHandle handle)
    {
        std::array<char, sdk::kFirmVersionSize> text{};
        std::uint32_t length = 0;
        return m_library.entry<sdk::FirmVersion>("vek_firm_version")(handle, text.data(), &length);
    }
    int setBaud(sdk::DeviceHandle handle, int baud, std::uint8_t mode)
    {
        return m_library.entry<sdk::SetBaud>("vek_set_baud")(handle, baud, mode);
    }
    int beep(sdk::DeviceHandle handle, int on, int off, int times)
    {
        return m_library.entry<sdk::Beep>("vek_beep")(handle, on, off, times);
    }

    DriverLibrary m_library;
};

void TestVirtualDevice::exportsEveryName()
{
#define CHECK_CALLED(name, Contract) QVERIFY(m_library.entry<sdk::Contract>(#name) != nullptr);
#define CHECK_UNCALLED(name) QVERIFY(m_library.entry<int()>(#name) != nullptr);
    UNIFOLD_ENTRY_POINTS(CHECK_CALLED, CHECK_UNCALLED)
}

void TestVirtualDevice::uncalledNamesAreNotSupported()
{
    int count = 0;
#define SKIP_CALLED(name, Contract)
#define CALL_UNCALLED(name)                                                                                            \
    QCOMPARE(m_library.entry<int()>(#name)(), static_cast<int>(kNotSupported));                                        \
    ++count;
    UNIFOLD_ENTRY_POINTS(SKIP_CALLED, CALL_UNCALLED)
    QCOMPARE(count, 47);
}

void TestVirtualDevice::listsDevicesOfEveryTransport()
{
    const auto enumerate = m_library.entry<sdk::EnumDevices>("vek_enum_devices");
    const auto release = m_library.entry<sdk::FreeList>("vek_free_list");
    for (const int transport : {sdk::kTransportUsb, sdk::kTransportSerial, sdk::kTransportPcsc, sdk::kTransportSdt}) {
        const int devices = transport == sdk::kTransportSdt ? 32 : 2;
        char *list = nullptr;
        QCOMPARE(enumerate(transport, &list), devices);
        const QString text = QString::fromUtf8(list);
        QVERIFY(text.endsWith('|'));
        QCOMPARE(text.count('|'), devices);
        release(list);
    }
    char *list = nullptr;
    for (const int transport : {0, 5, -1})
        QCOMPARE(enumerate(transport, &list), 0);
    QVERIFY(list == nullptr);
    QCOMPARE(enumerate(sdk::kTransportUsb, nullptr), 0);
    release(nullptr);
    std::array<char, 4> foreign{};
    release(foreign.data());
}

void TestVirtualDevice::opensByNameAndByDefault()
{
    TrayWorld world;
    for (const char *name : {"VUSB0001", "VUSB0002", "VCOM1", "VCOM2", "SDT1001", "SDT0001", "SDT1016", "SDT0016",
                             "Unifold Virtual Reader [Contact] (TRAY0001) 00 00",
                             "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01"}) {
        OpenDevice device(m_library, name, 9600);
        QVERIFY2(device != 0, name);
        QCOMPARE(device.close(), 0);
    }
    OpenDevice byDefault(m_library);
    QVERIFY(byDefault != 0);
    for (const char *name : {"SDT1017", "SDT0017", "SDT0000", "SDT1", "VCOM3", ""})
        QCOMPARE(sdk::DeviceHandle(OpenDevice(m_library, name)), sdk::DeviceHandle(0));
}

void TestVirtualDevice::refusesBadHandles()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const sdk::DeviceHandle closed = device;
    QCOMPARE(device.close(), 0);
    for (const sdk::DeviceHandle handle :
         {sdk::DeviceHandle(0), closed, sdk::DeviceHandle(-1), std::numeric_limits<sdk::DeviceHandle>::max()}) {
        QCOMPARE(m_library.entry<sdk::Close>("vek_close")(handle, 0), static_cast<int>(kBadHandle));
        QCOMPARE(version(handle), static_cast<int>(kBadHandle));
        QCOMPARE(beep(handle, 1, 1, 1), static_cast<int>(kBadHandle));
        QCOMPARE(setBaud(handle, 9600, 0), static_cast<int>(kBadHandle));
    }
}

void TestVirtualDevice::tellsItsVersion()
{
    TrayWorld world;
    OpenDevice device(m_library);
    std::array<char, sdk::kFirmVersionSize> text{};
    std::uint32_t length = 0;
    const auto call = m_library.entry<sdk::FirmVersion>("vek_firm_version");
    QCOMPARE(call(device, text.data(), &length), 0);
    QCOMPARE(std::size_t{length}, std::string(text.data()).size());
    QVERIFY(length > 0);
    QCOMPARE(call(device, nullptr, &length), static_cast<int>(kBadArgument));
    QCOMPARE(call(device, text.data(), nullptr), static_cast<int>(kBadArgument));
}

void TestVirtualDevice::beepsAsLongAsThePattern()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(beep(device, 1, 2, 3), 0);
    QVERIFY2(timer.elapsed() >= 350 && timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(world.tray().state()->beeps, std::uint64_t{3});
    QCOMPARE(world.tray().state()->beepMs, std::uint64_t{150});
}

void TestVirtualDevice::refusesBeepsOutOfRange()
{
    TrayWorld world;
    OpenDevice device(m_library);
    constexpr int kHuge = std::numeric_limits<int>::max();
    for (const auto &[on, off, times] :
         {std::array{-1, 1, 1}, {1, -1, 1}, {1, 1, -1}, {0, 1, 1}, {256, 1, 1}, {255, 255, 255}, {kHuge, kHuge, kHuge}})
        QCOMPARE(beep(device, on, off, times), static_cast<int>(kBadArgument));
    QCOMPARE(world.tray().state()->beeps, std::uint64_t{0});
}

void TestVirtualDevice::serialDeviceNeedsItsRate()
{
    TrayWorld world;
    OpenDevice wrong(m_library, "VCOM1", 115200);
    QVERIFY(wrong != 0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(version(wrong), static_cast<int>(kTimeout));
    QVERIFY(timer.elapsed() >= 150);
    QCOMPARE(setBaud(wrong, 9600, 0), static_cast<int>(kTimeout));

    OpenDevice right(m_library, "VCOM1", 9600);
    QCOMPARE(version(right), 0);
    QCOMPARE(setBaud(right, 115200, 0), 0);
    QCOMPARE(version(right), 0);
    QCOMPARE(version(wrong), 0);
    OpenDevice other(m_library, "VCOM2", 9600);
    QCOMPARE(version(other), 0);

    // Back to 9600 after the power was gone.
    world.tray().update([](tray::TrayState &state) { state.cyclePower(); });
    QCOMPARE(version(right), static_cast<int>(kTimeout));
    OpenDevice again(m_library, "VCOM1", 9600);
    QCOMPARE(version(again), 0);
    for (const auto &[baud, mode] : {std::array{9601, 0}, {0, 0}, {9600, 2}})
        QCOMPARE(setBaud(again, baud, static_cast<std::uint8_t>(mode)), static_cast<int>(kBadArgument));
}

void TestVirtualDevice::storedRateOutlivesThePower()
{
    TrayWorld world;
    OpenDevice device(m_library, "VCOM2", 9600);
    QCOMPARE(setBaud(device, 57600, 1), 0);
    QCOMPARE(setBaud(device, 19200, 0), 0);
    world.tray().update([](tray::TrayState &state) { state.cyclePower(); });
    QCOMPARE(version(OpenDevice(m_library, "VCOM2", 57600)), 0);
    QCOMPARE(version(OpenDevice(m_library, "VCOM2", 9600)), static_cast<int>(kTimeout));
}

void TestVirtualDevice::otherDevicesTakeAnyRate()
{
    TrayWorld world;
    for (const char *name : {"VUSB0002", "SDT0001", "Unifold Virtual Reader [Contact] (TRAY0001) 00 00"}) {
        OpenDevice device(m_library, name, 1234);
        QCOMPARE(setBaud(device, 115200, 1), 0);
    }
    QVERIFY(world.tray().state()->serial.empty());
}

void TestVirtualDevice::sdtReadsCardsOnly()
{
    TrayWorld world;
    OpenDevice device(m_library, "SDT1001");
    std::array<char, sdk::kSamIdSize> text{};
    QCOMPARE(m_library.entry<sdk::IdcrReadText>("vek_idcr_read_samid")(device, 100, text.data()), 0);
    QCOMPARE(version(device), static_cast<int>(kNotSupported));
    QCOMPARE(beep(device, 1, 1, 1), static_cast<int>(kNotSupported));
    QCOMPARE(m_library.entry<sdk::IccStatus>("vek_icc_status")(device, sdk::kSlotContact),
             static_cast<int>(kNotSupported));
    QCOMPARE(m_library.entry<sdk::MsrSession>("vek_msr_qm_start")(device), static_cast<int>(kNotSupported));
    QCOMPARE(m_library.entry<sdk::IdcrReadText>("vek_idcr_read_uid")(device, 100, text.data()),
             static_cast<int>(kNotSupported));
}

void TestVirtualDevice::brokenTrayOpensNothing()
{
    TrayWorld world;
    OpenDevice before(m_library);
    std::ofstream(world.tray().folder() / "tray.json", std::ios::trunc) << "{";
    QCOMPARE(sdk::DeviceHandle(OpenDevice(m_library)), sdk::DeviceHandle(0));
    QCOMPARE(m_library.entry<sdk::IccStatus>("vek_icc_status")(before, sdk::kSlotContact),
             static_cast<int>(kTransportFailure));
    world.tray().reset();
    QCOMPARE(m_library.entry<sdk::IccStatus>("vek_icc_status")(before, sdk::kSlotContact),
             static_cast<int>(kCardPresent));
}

QTEST_GUILESS_MAIN(TestVirtualDevice)
#include "test_virtual_device.moc"
