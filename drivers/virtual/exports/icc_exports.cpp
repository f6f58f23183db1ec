// The calls of CPU cards: power, APDUs, and the card applications on top of them.
#include "drivers/core/abi.h"
#include "drivers/core/applications/pboc.h"
#include "drivers/core/applications/ssse.h"
#include "drivers/virtual/exports/library.h"

using namespace drivers;
using exports::milliseconds;
using exports::serve;

namespace {

using ReadRecord = ReturnCode (*)(CardChannel &, std::string &);

int readSocialSecurity(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record,
                       ReadRecord read)
{
    return serve(handle, [&](reader::Device &device) {
        if (record == nullptr)
            return kBadArgument;
        return device.cpu.runApplication(slot, milliseconds(timeoutMs), [&](CardChannel &card) {
            std::string text;
            const ReturnCode result = read(card, text);
            return result == kSuccess ? copyText(record, sdk::kSsseRecordSize, text) : result;
        });
    });
}

/// The end of both PBOC calls.
ReturnCode giveResult(const std::string &text, char *result, std::uint16_t *length)
{
    const ReturnCode copied = copyText(result, sdk::kPbocResultSize, text);
    if (copied == kSuccess)
        *length = static_cast<std::uint16_t>(text.size());
    return copied;
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
        const ReturnCode result = device.cpu.powerOn(slot, milliseconds(timeoutMs), bytes);
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
        return device.cpu.exchange(slot, [&](CardChannel &card) {
            return exchangeApduText(card, command, commandLength, reply, replyLength);
        });
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
    return serve(handle, [&](reader::Device &device) {
        if (aid == nullptr || tags == nullptr || interfaceUsed == nullptr || result == nullptr || length == nullptr)
            return kBadArgument;
        return device.cpu.runApplication(slot, milliseconds(timeoutMs), [&](CardChannel &card) {
            std::string text;
            const ReturnCode read = readCardInfo(card, aid, tags, text);
            return read == kSuccess ? giveResult(text, result, length) : read;
        });
    });
}

int vek_pboc_get_arqc(sdk::DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid, int,
                      const char *transactionData, int transactionDataLength, char *result, std::uint16_t *length,
                      std::uint8_t)
{
    return serve(handle, [&](reader::Device &device) {
        if (aid == nullptr || transactionData == nullptr || transactionDataLength < 0 || result == nullptr ||
            length == nullptr)
            return kBadArgument;
        const std::string data(transactionData,
                               strnlen(transactionData, static_cast<std::size_t>(transactionDataLength)));
        return device.cpu.runApplication(slot, milliseconds(timeoutMs), [&](CardChannel &card) {
            std::string text;
            const ReturnCode made = makeArqc(card, aid, data, text);
            return made == kSuccess ? giveResult(text, result, length) : made;
        });
    });
}

int vek_ssse_get_issuer_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record, int)
{
    return readSocialSecurity(handle, slot, timeoutMs, record, readIssuerInfo);
}

int vek_ssse_get_user_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record, int)
{
    return readSocialSecurity(handle, slot, timeoutMs, record, readHolderInfo);
}
