// The calls of the device itself: finding, opening, version, beeper, rate.
#include "drivers/core/abi.h"
#include "drivers/virtual/exports/library.h"
#include "drivers/virtual/reader/beeper.h"

#include <string_view>

using namespace drivers;
using exports::library;
using exports::serve;

namespace {

constexpr std::string_view kVersion = "Unifold virtual reader " UNIFOLD_VERSION;

} // namespace

exports::Library &exports::library()
{
    static Library instance;
    return instance;
}

int vek_enum_devices(int transport, char **list)
{
    return guardedOr<int>(0, [&] {
        const auto names = reader::deviceNames(transport);
        if (list == nullptr || names.empty())
            return 0;
        *list = library().lists.lend(joinNames(names));
        return static_cast<int>(names.size());
    });
}

void vek_free_list(char *list)
{
    guarded([&] {
        library().lists.takeBack(list);
        return kSuccess;
    });
}

std::intptr_t vek_open(const char *device, std::intptr_t, int baud)
{
    return guardedOr<std::intptr_t>(0, [&]() -> std::intptr_t {
        const reader::DeviceEntry *const entry =
            device == nullptr ? &reader::defaultDevice() : reader::findDevice(device);
        if (entry == nullptr)
            return 0;
        auto tray = std::make_shared<tray::Tray>(tray::trayFolder());
        tray->state(); // a tray that cannot be read opens no device
        const auto opened = std::make_shared<reader::Device>(*entry, std::move(tray), baud);
        return static_cast<std::intptr_t>(library().devices.add(opened));
    });
}

int vek_close(sdk::DeviceHandle handle, int)
{
    return guarded([&] {
        const auto device = library().devices.remove(handle);
        if (device == nullptr)
            return kBadHandle;
        device->connection.close();
        return kSuccess;
    });
}

int vek_set_baud(sdk::DeviceHandle handle, int baud, std::uint8_t mode)
{
    return serve(handle, [&](reader::Device &device) { return device.connection.setBaud(baud, mode); });
}

int vek_firm_version(sdk::DeviceHandle handle, char *version, std::uint32_t *length)
{
    return serve(handle, [&](reader::Device &device) {
        if (version == nullptr || length == nullptr)
            return kBadArgument;
        if (const ReturnCode result = device.connection.reach(reader::Feature::Device); result != kSuccess)
            return result;
        *length = static_cast<std::uint32_t>(kVersion.size());
        return copyText(version, sdk::kFirmVersionSize, kVersion);
    });
}

int vek_beep(sdk::DeviceHandle handle, int onTime, int offTime, int times)
{
    return serve(handle,
                 [&](reader::Device &device) { return reader::beep(device.connection, onTime, offTime, times); });
}
