#include "drivers/virtual/cards/apdu.h"

namespace drivers::cards {

std::optional<Command> parseCommand(const Bytes &bytes)
{
    constexpr std::size_t kHeader = 4;
    if (bytes.size() < kHeader)
        return std::nullopt;
    Command command{bytes[0], bytes[1], bytes[2], bytes[3], {}, std::nullopt};
    if (bytes.size() == kHeader)
        return command;
    const std::size_t p3 = bytes[kHeader];
    const auto expected = [](std::size_t value) { return value == 0 ? std::size_t{256} : value; };
    if (bytes.size() == kHeader + 1) {
        command.expected = expected(p3);
        return command;
    }
    const auto begin = bytes.begin() + kHeader + 1;
    const std::size_t rest = bytes.size() - kHeader - 1;
    if (p3 == 0 || (rest != p3 && rest != p3 + 1))
        return std::nullopt;
    command.data.assign(begin, begin + static_cast<std::ptrdiff_t>(p3));
    if (rest == p3 + 1)
        command.expected = expected(bytes.back());
    return command;
}

Bytes Reply::bytes() const
{
    Bytes all = data;
    all.push_back(static_cast<std::uint8_t>(status >> 8U));
    all.push_back(static_cast<std::uint8_t>(status & 0xFFU));
    return all;
}

} // namespace drivers::cards
