#include "tests/endurance/shared_calls.h"

#include "tests/endurance/card_work.h"

#include <array>
#include <cstring>

namespace endurance {

namespace {

using Call = int (*)(const DriverApi &, sdk::DeviceHandle);

/// Long enough for calls to be waiting when the device is closed.
constexpr int kWaitMs = 30;

int enumerate(const DriverApi &driver, sdk::DeviceHandle)
{
    char *list = nullptr;
    const int count = driver.vek_enum_devices(sdk::kTransportSerial, &list);
    driver.vek_free_list(list);
    return count;
}

int powerOn(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kAtrSize> atr{};
    std::uint32_t length = 0;
    return driver.vek_icc_poweron(device, sdk::kSlotContact, kWaitMs, atr.data(), &length);
}

int waitForSwipe(const DriverApi &driver, sdk::DeviceHandle device)
{
    return driver.vek_msr_write(device, 3, 0, "", "", "123456", kWaitMs);
}

int selectFile(const DriverApi &driver, sdk::DeviceHandle device)
{
    constexpr char kSelect[] = "00A4000C023F00";
    std::array<char, sdk::kApduReplySize> reply{};
    std::uint32_t length = 0;
    return driver.vek_icc_apdu(device, sdk::kSlotContact, kSelect, sizeof kSelect - 1, reply.data(), &length);
}

int makeCryptogram(const DriverApi &driver, sdk::DeviceHandle device)
{
    constexpr char kTransaction[] = "P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024"
                                    "D7DBBACFB9F1C3E6B2E2CAD4";
    std::array<char, sdk::kPbocResultSize> result{};
    std::uint16_t length = 0;
    return driver.vek_pboc_get_arqc(device, sdk::kSlotContact, kWaitMs, "A000000333", 10, kTransaction,
                                    static_cast<int>(sizeof kTransaction - 1), result.data(), &length, 0);
}

int readHolder(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kSsseRecordSize> record{};
    return driver.vek_ssse_get_user_info(device, sdk::kSlotContact, kWaitMs, record.data(), 1);
}

int readIdCard(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kIdInfoSize> info{};
    std::array<char, sdk::kIdExtraSize> extra{};
    constexpr std::uint32_t kTextPhotoAndBothSides = 0x0E;
    return driver.vek_idcr_getinfo(device, kTextPhotoAndBothSides, kWaitMs, 1, info.data(), extra.data(), "photo.jpg",
                                   "front.jpg", "back.jpg");
}

int readIdCardText(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kIdInfoSize> info{};
    std::array<char, sdk::kIdExtraSize> extra{};
    driver.vek_idcr_set_separation(device % 2 == 0 ? '|' : ';');
    return driver.vek_idcr_getinfo(device, 0x12, kWaitMs, 1, info.data(), extra.data(), "", "", "");
}

int readBlock(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kMifareBlockSize> data{};
    const int result = openSector(driver, device, 1);
    return result == 0 ? driver.vek_mifare_read_block(device, 1, data.data()) : result;
}

int writeBlock(const DriverApi &driver, sdk::DeviceHandle device)
{
    const int result = openSector(driver, device, 1);
    return result == 0 ? driver.vek_mifare_write_block(device, 1, "0123456789ABCDEF0123456789ABCDEF") : result;
}

int probe(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::uint8_t state = 0;
    std::uint8_t type = 0;
    return driver.vek_probe_rf(device, &state, &type);
}

int readSwipe(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<std::array<char, sdk::kTrackSize>, 3> tracks{};
    std::array<int, 3> lengths{};
    driver.vek_msr_qm_start(device);
    return driver.vek_msr_qm_get(device, tracks[0].data(), tracks[1].data(), tracks[2].data(), &lengths[0], &lengths[1],
                                 &lengths[2]);
}

constexpr Call kCalls[] = {
    enumerate,
    powerOn,
    waitForSwipe,
    selectFile,
    makeCryptogram,
    readHolder,
    readIdCard,
    readIdCardText,
    readBlock,
    writeBlock,
    probe,
    readSwipe,
    [](const DriverApi &driver, sdk::DeviceHandle device) { return driver.vek_icc_status(device, sdk::kSlotContact); },
    [](const DriverApi &driver, sdk::DeviceHandle device) {
        return driver.vek_icc_poweroff(device, sdk::kSlotContact, 0);
    },
    [](const DriverApi &driver, sdk::DeviceHandle device) { return driver.vek_msr_qm_status(device); },
    [](const DriverApi &driver, sdk::DeviceHandle device) { return driver.vek_msr_qm_stop(device); },
    [](const DriverApi &driver, sdk::DeviceHandle device) { return driver.vek_set_baud(device, 9600, 0); },
};

} // namespace

int callOnShared(const DriverApi &driver, sdk::DeviceHandle device, std::uint32_t choice)
{
    return kCalls[choice % std::size(kCalls)](driver, device);
}

} // namespace endurance
