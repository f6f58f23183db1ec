// The calls for hardware that this reader lacks. They have to be there: the bench calls them without looking.
#include "examples/driver/exports.h"

using example::unserved;
using sdk::DeviceHandle;

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

int vek_beep(DeviceHandle handle, int /*onTime*/, int /*offTime*/, int /*times*/)
{
    return unserved(handle);
}

int vek_msr_write(DeviceHandle handle, int /*selection*/, int /*reserved*/, const char * /*track1*/,
                  const char * /*track2*/, const char * /*track3*/, int /*timeoutMs*/)
{
    return unserved(handle);
}

int vek_pboc_get_card_info(DeviceHandle handle, std::uint8_t /*slot*/, std::uint16_t /*timeoutMs*/,
                           const char * /*aid*/, const char * /*tags*/, std::uint8_t * /*interfaceUsed*/,
                           char * /*result*/, std::uint16_t * /*length*/, std::uint8_t /*flag*/)
{
    return unserved(handle);
}

int vek_pboc_get_arqc(DeviceHandle handle, std::uint8_t /*slot*/, std::uint16_t /*timeoutMs*/, const char * /*aid*/,
                      int /*constant*/, const char * /*transactionData*/, int /*transactionDataLength*/,
                      char * /*result*/, std::uint16_t * /*length*/, std::uint8_t /*flag*/)
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
    return example::kNotSupported;
}

int vek_idcr_transive(DeviceHandle handle, std::uint32_t /*timeoutMs*/, std::uint8_t /*byte1*/, std::uint8_t /*byte2*/,
                      std::uint32_t * /*statusWord*/, std::uint8_t * /*data*/, int /*capacity*/,
                      std::int32_t * /*length*/)
{
    return unserved(handle);
}

int vek_probe_rf(DeviceHandle handle, std::uint8_t * /*state*/, std::uint8_t * /*cardType*/)
{
    return unserved(handle);
}

int vek_mifare_request(DeviceHandle handle, int /*timeoutMs*/, char * /*type*/, char * /*uid*/)
{
    return unserved(handle);
}

int vek_mifare_authentication(DeviceHandle handle, std::uint8_t /*sector*/, char /*keyType*/, const char * /*key*/)
{
    return unserved(handle);
}

int vek_mifare_read_block(DeviceHandle handle, std::uint8_t /*block*/, char * /*data*/)
{
    return unserved(handle);
}

int vek_mifare_write_block(DeviceHandle handle, std::uint8_t /*block*/, const char * /*data*/)
{
    return unserved(handle);
}

int vek_mifare_init_value(DeviceHandle handle, std::uint8_t /*block*/, int /*value*/)
{
    return unserved(handle);
}

int vek_mifare_read_value(DeviceHandle handle, std::uint8_t /*block*/, int * /*value*/)
{
    return unserved(handle);
}

int vek_mifare_increase_value(DeviceHandle handle, std::uint8_t /*block*/, int /*value*/)
{
    return unserved(handle);
}

int vek_mifare_decrease_value(DeviceHandle handle, std::uint8_t /*block*/, int /*value*/)
{
    return unserved(handle);
}

int vek_mifare_change_key(DeviceHandle handle, std::uint8_t /*sector*/, char /*keyType*/, const char * /*key*/)
{
    return unserved(handle);
}

int vek_ssse_get_issuer_info(DeviceHandle handle, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/, char * /*record*/,
                             int /*constant*/)
{
    return unserved(handle);
}

int vek_ssse_get_user_info(DeviceHandle handle, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/, char * /*record*/,
                           int /*constant*/)
{
    return unserved(handle);
}
