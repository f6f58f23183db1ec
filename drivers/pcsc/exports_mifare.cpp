// Calls of Mifare cards. Not offered yet.
#include "drivers/core/abi.h"
#include "drivers/core/boundary.h"
#include "drivers/pcsc/open_readers.h"

using sdk::DeviceHandle;

namespace {

int notYet(DeviceHandle handle) noexcept
{
    return drivers::notSupported(drivers::openReaders(), handle);
}

} // namespace

int vek_mifare_request(DeviceHandle handle, int /*timeoutMs*/, char * /*type*/, char * /*uid*/)
{
    return notYet(handle);
}

int vek_mifare_authentication(DeviceHandle handle, std::uint8_t /*sector*/, char /*keyType*/, const char * /*key*/)
{
    return notYet(handle);
}

int vek_mifare_read_block(DeviceHandle handle, std::uint8_t /*block*/, char * /*data*/)
{
    return notYet(handle);
}

int vek_mifare_write_block(DeviceHandle handle, std::uint8_t /*block*/, const char * /*data*/)
{
    return notYet(handle);
}

int vek_mifare_init_value(DeviceHandle handle, std::uint8_t /*block*/, int /*value*/)
{
    return notYet(handle);
}

int vek_mifare_read_value(DeviceHandle handle, std::uint8_t /*block*/, int * /*value*/)
{
    return notYet(handle);
}

int vek_mifare_increase_value(DeviceHandle handle, std::uint8_t /*block*/, int /*value*/)
{
    return notYet(handle);
}

int vek_mifare_decrease_value(DeviceHandle handle, std::uint8_t /*block*/, int /*value*/)
{
    return notYet(handle);
}

int vek_mifare_change_key(DeviceHandle handle, std::uint8_t /*sector*/, char /*keyType*/, const char * /*key*/)
{
    return notYet(handle);
}
