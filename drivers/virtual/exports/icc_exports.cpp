// The calls of CPU cards: power, APDUs, and the card applications on top of them.
#include "drivers/core/abi.h"
#include "drivers/core/applications/application_calls.h"
#include "drivers/virtual/exports/library.h"

using namespace drivers;
using exports::serve;

namespace {

// Runs `call(run)`, `run` being the way to the device's card in that slot.
template <class Call>
int onCard(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, const Call &call)
{
    return serve(handle, [&](reader::Device &device) {
        return call([&](const CardJob &job) { return device.cpu.runApplication(slot, waitTime(timeoutMs), job); });
    });
}

} // namespace

int vek_icc_status(sdk::DeviceHandle handle, std::uint8_t slot)
{
    return serve(handle, [&](reader::Device &device) { return device.cpu.status(slot); });
}

int vek_icc_poweron(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *atr,
                    std::uint32_t *length)
{
    return serve(handle, [&](reader::Device &device) {
        if (atr == nullptr || length == nullptr)
            return kBadArgument;
        Bytes bytes;
        const ReturnCode result = device.cpu.powerOn(slot, waitTime(timeoutMs), bytes);
        if (result != kSuccess)
            return result;
        *length = static_cast<std::uint32_t>(bytes.size() * 2);
        return copyText(atr, sdk::kAtrSize, toHex(bytes));
    });
}

int vek_icc_poweroff(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t)
{
    return serve(handle, [&](reader::Device &device) { return device.cpu.powerOff(slot); });
}

int vek_icc_apdu(sdk::DeviceHandle handle, std::uint8_t slot, const char *command, std::uint32_t commandLength,
                 char *reply, std::uint32_t *replyLength)
{
    return serve(handle, [&](reader::Device &device) {
        const auto run = [&](const CardJob &job) { return device.cpu.exchange(slot, job); };
        return exchangeApduText(run, command, commandLength, reply, replyLength);
    });
}

int vek_probe_rf(sdk::DeviceHandle handle, std::uint8_t *state, std::uint8_t *cardType)
{
    return serve(handle, [&](reader::Device &device) {
        return state == nullptr || cardType == nullptr ? kBadArgument : device.probe.probe(*state, *cardType);
    });
}

int vek_pboc_get_card_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid,
                           const char *tags, std::uint8_t *interfaceUsed, char *result, std::uint16_t *length,
                           std::uint8_t)
{
    return onCard(handle, slot, timeoutMs,
                  [&](const RunOnCard &run) { return callCardInfo(run, aid, tags, interfaceUsed, result, length); });
}

int vek_pboc_get_arqc(sdk::DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid, int,
                      const char *transactionData, int transactionDataLength, char *result, std::uint16_t *length,
                      std::uint8_t)
{
    return onCard(handle, slot, timeoutMs, [&](const RunOnCard &run) {
        return callArqc(run, aid, transactionData, transactionDataLength, result, length);
    });
}

int vek_ssse_get_issuer_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record, int)
{
    return onCard(handle, slot, timeoutMs, [&](const RunOnCard &run) { return callIssuerInfo(run, record); });
}

int vek_ssse_get_user_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record, int)
{
    return onCard(handle, slot, timeoutMs, [&](const RunOnCard &run) { return callHolderInfo(run, record); });
}
