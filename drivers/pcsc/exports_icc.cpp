// IC card calls. Every slot code addresses the opened reader.
#include "drivers/core/abi.h"
#include "drivers/core/boundary.h"
#include "drivers/core/text_arguments.h"
#include "drivers/core/wait_time.h"
#include "drivers/pcsc/open_readers.h"

using namespace drivers;

namespace {

// Runs `call(reader)` if the handle is open and the slot code is one.
template <class Call>
int withSlot(sdk::DeviceHandle handle, std::uint8_t slot, Call &&call) noexcept
{
    return withDevice(openReaders(), handle, [&](PcscReader &reader) {
        return isSlotCode(slot) ? static_cast<int>(call(reader)) : static_cast<int>(kBadArgument);
    });
}

} // namespace

int vek_icc_poweron(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *atr,
                    std::uint32_t *length)
{
    return withSlot(handle, slot, [&](PcscReader &reader) {
        if (atr == nullptr || length == nullptr)
            return kBadArgument;
        Bytes bytes;
        ReturnCode result = reader.powerOn(waitTime(timeoutMs), bytes);
        if (result == kSuccess)
            result = copyText(atr, sdk::kAtrSize, toHex(bytes));
        if (result == kSuccess)
            *length = static_cast<std::uint32_t>(bytes.size() * 2);
        return result;
    });
}

int vek_icc_poweroff(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t /*timeoutMs*/)
{
    return withSlot(handle, slot, [](PcscReader &reader) { return reader.powerOff(); });
}

int vek_icc_status(sdk::DeviceHandle handle, std::uint8_t slot)
{
    return withSlot(handle, slot, [](PcscReader &reader) { return reader.status(); });
}

int vek_icc_apdu(sdk::DeviceHandle handle, std::uint8_t slot, const char *command, std::uint32_t commandLength,
                 char *reply, std::uint32_t *replyLength)
{
    return withSlot(handle, slot, [&](PcscReader &reader) {
        const auto run = [&reader](const CardJob &job) { return reader.withCard(job); };
        return exchangeApduText(run, command, commandLength, reply, replyLength);
    });
}

int vek_probe_rf(sdk::DeviceHandle handle, std::uint8_t *state, std::uint8_t *cardType)
{
    return withDevice(openReaders(), handle, [&](PcscReader &reader) {
        return state != nullptr && cardType != nullptr ? reader.probe(*state, *cardType) : kBadArgument;
    });
}
