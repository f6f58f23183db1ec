// Device calls: list, open, close, and what a reader tells of itself.
#include "drivers/core/abi.h"
#include "drivers/core/boundary.h"
#include "drivers/core/text_arguments.h"
#include "drivers/pcsc/open_readers.h"

namespace drivers {

HandleTable<PcscReader> &openReaders()
{
    static HandleTable<PcscReader> readers;
    return readers;
}

namespace {

LentTexts &lentLists()
{
    static LentTexts lists;
    return lists;
}

} // namespace

} // namespace drivers

using namespace drivers;

int vek_enum_devices(int transport, char **list)
{
    return guardedOr<int>(0, [&] {
        PcscContext context;
        std::vector<std::string> names;
        if (transport != sdk::kTransportPcsc || list == nullptr)
            return 0;
        if (context.establish() != SCARD_S_SUCCESS || context.listReaders(names) != SCARD_S_SUCCESS || names.empty())
            return 0;
        *list = lentLists().lend(joinNames(names));
        return static_cast<int>(names.size());
    });
}

void vek_free_list(char *list)
{
    guarded([&] {
        lentLists().takeBack(list);
        return kSuccess;
    });
}

std::intptr_t vek_open(const char *device, std::intptr_t /*reserved*/, int /*baud*/)
{
    return guardedOr<std::intptr_t>(0, [&]() -> std::intptr_t {
        std::shared_ptr<PcscReader> reader = PcscReader::open(device);
        return reader ? static_cast<std::intptr_t>(openReaders().add(std::move(reader))) : 0;
    });
}

int vek_close(sdk::DeviceHandle handle, int /*reserved*/)
{
    return guarded([&] {
        const std::shared_ptr<PcscReader> reader = openReaders().remove(handle);
        if (!reader)
            return kBadHandle;
        reader->close();
        return kSuccess;
    });
}

int vek_set_baud(sdk::DeviceHandle handle, int baud, std::uint8_t mode)
{
    return withDevice(openReaders(), handle,
                      [&](const PcscReader &) { return baud > 0 && mode <= 1 ? kSuccess : kBadArgument; });
}

int vek_firm_version(sdk::DeviceHandle handle, char *version, std::uint32_t *length)
{
    return withDevice(openReaders(), handle, [&](const PcscReader &) {
        constexpr std::string_view kVersion =
            "pcsc-lite " PCSCLITE_VERSION_NUMBER ", tarvozent " UNIFOLD_DRIVER_VERSION;
        if (length == nullptr)
            return kBadArgument;
        const ReturnCode result = copyText(version, sdk::kFirmVersionSize, kVersion);
        if (result == kSuccess)
            *length = static_cast<std::uint32_t>(kVersion.size());
        return result;
    });
}
