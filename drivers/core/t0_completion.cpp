#include "drivers/core/t0_completion.h"

namespace drivers {

namespace {

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kMaxReplySize = 0x10000;
constexpr int kMaxRounds = 300; ///< 64 KiB in pieces of 256 bytes, and some to spare

/// The same command with another expected length.
Bytes withExpectedLength(Bytes command, std::uint8_t expected)
{
    const bool headerOnly = command.size() <= kHeaderSize;
    const bool dataWithoutLength =
        !headerOnly && command.size() > kHeaderSize + 1 && command.size() == kHeaderSize + 1 + command[kHeaderSize];
    if (headerOnly || dataWithoutLength)
        command.push_back(expected);
    else
        command.back() = expected;
    return command;
}

} // namespace

ReturnCode completeExchange(const RawExchange &exchange, const Bytes &command, Bytes &reply)
{
    reply.clear();
    Bytes collected;
    Bytes next = command;
    bool lengthCorrected = false;
    for (int round = 0; round < kMaxRounds && collected.size() <= kMaxReplySize; ++round) {
        Bytes part;
        const ReturnCode result = exchange(next, part);
        if (result != kSuccess)
            return result;
        if (part.size() < 2)
            return kCardError;
        const std::uint8_t sw1 = part[part.size() - 2];
        const std::uint8_t sw2 = part[part.size() - 1];
        if (sw1 == 0x6C && !lengthCorrected && !next.empty()) {
            lengthCorrected = true;
            next = withExpectedLength(std::move(next), sw2);
            continue;
        }
        const bool more = sw1 == 0x61;
        collected.insert(collected.end(), part.begin(), more ? part.end() - 2 : part.end());
        if (!more) {
            reply = std::move(collected);
            return kSuccess;
        }
        lengthCorrected = false;
        next = {command.empty() ? std::uint8_t{0} : command.front(), 0xC0, 0x00, 0x00, sw2};
    }
    return kCardError;
}

} // namespace drivers
