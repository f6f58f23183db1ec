// Calls for what a PC/SC reader does not have: a beeper, a magnetic stripe head, an ID card module.
#include "drivers/core/abi.h"
#include "drivers/core/boundary.h"
#include "drivers/pcsc/open_readers.h"

using drivers::kNotSupported;
using sdk::DeviceHandle;

namespace {

int unserved(DeviceHandle handle) noexcept
{
    return drivers::notSupported(drivers::openReaders(), handle);
}

} // namespace

int vek_beep(DeviceHandle handle, int /*onTime*/, int /*offTime*/, int /*times*/)
{
    return unserved(handle);
}

int vek_msr_mode_switch(DeviceHandle handle, int /*mode*/)
{
    return unserved(handle);
}

int vek_msr_qm_start(DeviceHandle handle)
{
    return unserved(handle);
}

int vek_msr_qm_status(DeviceHandle handle)
{
    return unserved(handle);
}

int vek_msr_qm_get(DeviceHandle handle, char * /*track1*/, char * /*track2*/, char * /*track3*/, int * /*length1*/,
                   int * /*length2*/, int * /*length3*/)
{
    return unserved(handle);
}

int vek_msr_qm_stop(DeviceHandle handle)
{
    return unserved(handle);
}

int vek_msr_write(DeviceHandle handle, int /*selection*/, int /*reserved*/, const char * /*track1*/,
                  const char * /*track2*/, const char * /*track3*/, int /*timeoutMs*/)
{
    return unserved(handle);
}

int vek_idcr_getinfo(DeviceHandle handle, std::uint32_t /*flags*/, std::uint32_t /*timeoutMs*/, int /*constant*/,
                     char * /*info*/, char * /*extra*/, const char * /*photoPath*/, const char * /*frontPath*/,
                     const char * /*backPath*/)
{
    return unserved(handle);
}

int vek_idcr_read_samid(DeviceHandle handle, std::uint32_t /*timeoutMs*/, char * /*text*/)
{
    return unserved(handle);
}

int vek_idcr_read_uid(DeviceHandle handle, std::uint32_t /*timeoutMs*/, char * /*text*/)
{
    return unserved(handle);
}

int vek_idcr_read_emid(DeviceHandle handle, std::uint32_t /*timeoutMs*/, char * /*text*/)
{
    return unserved(handle);
}

int vek_idcr_read_dn(DeviceHandle handle, std::uint32_t /*timeoutMs*/, char * /*text*/)
{
    return unserved(handle);
}

int vek_idcr_set_separation(char /*separator*/)
{
    return kNotSupported;
}

int vek_idcr_transive(DeviceHandle handle, std::uint32_t /*timeoutMs*/, std::uint8_t /*byte1*/, std::uint8_t /*byte2*/,
                      std::uint32_t * /*statusWord*/, std::uint8_t * /*data*/, int /*capacity*/,
                      std::int32_t * /*length*/)
{
    return unserved(handle);
}
