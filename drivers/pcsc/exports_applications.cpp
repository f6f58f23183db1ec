// Calls that speak to a card's application: PBOC, social security, Mifare. Not offered yet.
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

int vek_pboc_get_card_info(DeviceHandle handle, std::uint8_t /*slot*/, std::uint16_t /*timeoutMs*/,
                           const char * /*aid*/, const char * /*tags*/, std::uint8_t * /*interfaceUsed*/,
                           char * /*result*/, std::uint16_t * /*length*/, std::uint8_t /*flag*/)
{
    return notYet(handle);
}

int vek_pboc_get_arqc(DeviceHandle handle, std::uint8_t /*slot*/, std::uint16_t /*timeoutMs*/, const char * /*aid*/,
                      int /*constant*/, const char * /*transactionData*/, int /*transactionDataLength*/,
                      char * /*result*/, std::uint16_t * /*length*/, std::uint8_t /*flag*/)
{
    return notYet(handle);
}

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

int vek_ssse_get_issuer_info(DeviceHandle handle, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/, char * /*record*/,
                             int /*constant*/)
{
    return notYet(handle);
}

int vek_ssse_get_user_info(DeviceHandle handle, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/, char * /*record*/,
                           int /*constant*/)
{
    return notYet(handle);
}
