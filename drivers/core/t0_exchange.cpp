#include "drivers/core/t0_exchange.h"

#include "drivers/core/command_apdu.h"

#include <algorithm>

namespace drivers {

namespace {

constexpr std::uint8_t kInsGetResponse = 0xC0;
constexpr std::uint8_t kInsEnvelope = 0xC2;
constexpr std::size_t kMaxSegment = 255;
// The longest reply that an extended Le can ask for.
constexpr std::size_t kMaxReplyData = 65536;

struct StatusWord {
    std::uint8_t sw1;
    std::uint8_t sw2;
};

StatusWord statusOf(const Bytes &reply)
{
    return {reply[reply.size() - 2], reply[reply.size() - 1]};
}

ReturnCode sendTpdu(const RawExchange &raw, const Bytes &tpdu, Bytes &reply)
{
    const ReturnCode result = raw(tpdu, reply);
    return result == kSuccess && reply.size() < 2 ? kCardError : result;
}

// A TPDU that asks for data: on 6Cxx once more, with the length the card names.
ReturnCode fetch(const RawExchange &raw, Bytes tpdu, Bytes &reply)
{
    const ReturnCode result = sendTpdu(raw, tpdu, reply);
    if (result != kSuccess || statusOf(reply).sw1 != 0x6C)
        return result;
    tpdu.back() = statusOf(reply).sw2;
    return sendTpdu(raw, tpdu, reply);
}

ReturnCode collectResponse(const RawExchange &raw, std::uint8_t cla, Bytes &reply)
{
    Bytes data;
    bool first = true;
    while (statusOf(reply).sw1 == 0x61) {
        data.insert(data.end(), reply.begin(), reply.end() - 2);
        const bool stalled = !first && reply.size() == 2;
        if (stalled || data.size() > kMaxReplyData)
            return kCardError;
        first = false;
        const ReturnCode result = fetch(raw, {cla, kInsGetResponse, 0, 0, statusOf(reply).sw2}, reply);
        if (result != kSuccess)
            return result;
    }
    reply.insert(reply.begin(), data.begin(), data.end());
    return kSuccess;
}

// Data too long for one length byte: the whole APDU travels inside ENVELOPE commands.
ReturnCode sendEnveloped(const RawExchange &raw, const Bytes &command, Bytes &reply)
{
    for (std::size_t at = 0; at < command.size(); at += kMaxSegment) {
        const std::size_t size = std::min(kMaxSegment, command.size() - at);
        Bytes tpdu = {command[0], kInsEnvelope, 0, 0, static_cast<std::uint8_t>(size)};
        const auto first = command.begin() + static_cast<std::ptrdiff_t>(at);
        tpdu.insert(tpdu.end(), first, first + static_cast<std::ptrdiff_t>(size));
        const ReturnCode result = sendTpdu(raw, tpdu, reply);
        if (result != kSuccess)
            return result;
        const StatusWord status = statusOf(reply);
        if (status.sw1 != 0x90 || status.sw2 != 0x00)
            break;
    }
    return kSuccess;
}

ReturnCode sendShaped(const RawExchange &raw, const CommandApdu &shape, const Bytes &command, Bytes &reply)
{
    if (shape.data.size() > kMaxSegment)
        return sendEnveloped(raw, command, reply);
    Bytes tpdu(shape.header.begin(), shape.header.end());
    if (!shape.data.empty()) {
        tpdu.push_back(static_cast<std::uint8_t>(shape.data.size()));
        tpdu.insert(tpdu.end(), shape.data.begin(), shape.data.end());
        return sendTpdu(raw, tpdu, reply);
    }
    // 00 means 256 to a T=0 card, and is the length byte of a command without any.
    const std::size_t expected = shape.le.value_or(0);
    tpdu.push_back(static_cast<std::uint8_t>(expected < 256 ? expected : 0));
    return shape.le ? fetch(raw, std::move(tpdu), reply) : sendTpdu(raw, tpdu, reply);
}

} // namespace

ReturnCode exchangeT0(const RawExchange &raw, const Bytes &command, Bytes &reply)
{
    const std::optional<CommandApdu> shape = parseCommandApdu(command);
    ReturnCode result = shape ? sendShaped(raw, *shape, command, reply) : sendTpdu(raw, command, reply);
    if (result == kSuccess)
        result = collectResponse(raw, command[0], reply);
    if (result != kSuccess)
        reply.clear();
    return result;
}

} // namespace drivers
