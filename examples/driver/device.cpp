// One USB device: list, open, close, and what it tells of itself.
#include "examples/driver/exports.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr char kDevice[] = "EXAMPLE1";
constexpr char kVersion[] = "example driver 1.0";

// 0: nothing is open. Counted up at every open, so that the handle of a closed device is never good again.
sdk::DeviceHandle current = 0;
sdk::DeviceHandle last = 0x1000;

} // namespace

bool example::isOpen(sdk::DeviceHandle handle)
{
    return handle != 0 && handle == current;
}

int example::unserved(sdk::DeviceHandle handle)
{
    return isOpen(handle) ? kNotSupported : kBadHandle;
}

int vek_enum_devices(int transport, char **list)
{
    if (transport != sdk::kTransportUsb || list == nullptr)
        return 0;
    constexpr char kList[] = "EXAMPLE1|";
    *list = static_cast<char *>(std::malloc(sizeof kList));
    if (*list == nullptr)
        return 0;
    std::memcpy(*list, kList, sizeof kList);
    return 1;
}

void vek_free_list(char *list)
{
    std::free(list);
}

std::intptr_t vek_open(const char *device, std::intptr_t /*reserved*/, int /*baud*/)
{
    const bool isOurs = device == nullptr || std::strcmp(device, kDevice) == 0;
    if (!isOurs || current != 0)
        return 0;
    current = ++last;
    return static_cast<std::intptr_t>(current);
}

int vek_close(sdk::DeviceHandle handle, int /*reserved*/)
{
    if (!example::isOpen(handle))
        return example::kBadHandle;
    vek_icc_poweroff(handle, sdk::kSlotContact, 0);
    current = 0;
    return example::kSuccess;
}

int vek_firm_version(sdk::DeviceHandle handle, char *version, std::uint32_t *length)
{
    if (!example::isOpen(handle))
        return example::kBadHandle;
    if (version == nullptr || length == nullptr)
        return example::kBadArgument;
    static_assert(sizeof kVersion <= sdk::kFirmVersionSize);
    std::memcpy(version, kVersion, sizeof kVersion);
    *length = sizeof kVersion - 1;
    return example::kSuccess;
}

int vek_set_baud(sdk::DeviceHandle handle, int /*baud*/, std::uint8_t /*mode*/)
{
    return example::isOpen(handle) ? example::kSuccess : example::kBadHandle; // a USB device has no rate to set
}
