#include "drivers/core/command_apdu.h"

#include <algorithm>

namespace drivers {

namespace {

std::size_t shortLe(std::uint8_t coded)
{
    return coded == 0 ? 256 : coded;
}

std::size_t number16(const Bytes &bytes, std::size_t at)
{
    return std::size_t{bytes[at]} * 256 + bytes[at + 1];
}

std::size_t extendedLe(const Bytes &bytes, std::size_t at)
{
    const std::size_t coded = number16(bytes, at);
    return coded == 0 ? 65536 : coded;
}

Bytes slice(const Bytes &bytes, std::size_t at, std::size_t length)
{
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    return {first, first + static_cast<std::ptrdiff_t>(length)};
}

// Whether data of `lc` bytes and an Le of 0 or `leSize` bytes fill the command from `at` on.
bool fills(const Bytes &bytes, std::size_t at, std::size_t lc, std::size_t leSize)
{
    return lc > 0 && (bytes.size() == at + lc || bytes.size() == at + lc + leSize);
}

bool parseShortBody(const Bytes &bytes, CommandApdu &command)
{
    constexpr std::size_t kDataAt = kApduHeaderSize + 1;
    const std::size_t lc = bytes[kApduHeaderSize];
    if (!fills(bytes, kDataAt, lc, 1))
        return false;
    command.data = slice(bytes, kDataAt, lc);
    if (bytes.size() > kDataAt + lc)
        command.le = shortLe(bytes.back());
    return true;
}

bool parseExtendedBody(const Bytes &bytes, CommandApdu &command)
{
    constexpr std::size_t kLengthAt = kApduHeaderSize + 1;
    constexpr std::size_t kDataAt = kLengthAt + 2;
    command.extended = true;
    if (bytes.size() == kDataAt) {
        command.le = extendedLe(bytes, kLengthAt);
        return true;
    }
    if (bytes.size() < kDataAt)
        return false;
    const std::size_t lc = number16(bytes, kLengthAt);
    if (!fills(bytes, kDataAt, lc, 2))
        return false;
    command.data = slice(bytes, kDataAt, lc);
    if (bytes.size() > kDataAt + lc)
        command.le = extendedLe(bytes, kDataAt + lc);
    return true;
}

} // namespace

std::optional<CommandApdu> parseCommandApdu(const Bytes &bytes)
{
    if (bytes.size() < kApduHeaderSize)
        return std::nullopt;
    CommandApdu command;
    std::copy_n(bytes.begin(), kApduHeaderSize, command.header.begin());
    if (bytes.size() == kApduHeaderSize)
        return command;
    if (bytes.size() == kApduHeaderSize + 1) {
        command.le = shortLe(bytes.back());
        return command;
    }
    const bool understood =
        bytes[kApduHeaderSize] == 0 ? parseExtendedBody(bytes, command) : parseShortBody(bytes, command);
    return understood ? std::optional<CommandApdu>(std::move(command)) : std::nullopt;
}

} // namespace drivers
