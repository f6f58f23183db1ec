#include "drivers/virtual/cards/atr.h"

#include <numeric>
#include <stdexcept>

namespace drivers::cards {

namespace {

constexpr std::size_t kMaxSize = 33;

std::uint8_t byteAt(const Bytes &atr, std::size_t position)
{
    if (position >= atr.size())
        throw std::runtime_error("the answer to reset is cut off");
    return atr[position];
}

std::size_t bitCount(unsigned nibble)
{
    return (nibble & 1U) + (nibble >> 1U & 1U) + (nibble >> 2U & 1U) + (nibble >> 3U & 1U);
}

void check(const Bytes &atr, std::size_t sizeWithoutCheckByte, bool hasCheckByte)
{
    if (atr.size() > kMaxSize || atr.size() != sizeWithoutCheckByte + (hasCheckByte ? 1U : 0U))
        throw std::runtime_error("the answer to reset has " + std::to_string(atr.size()) + " bytes and announces " +
                                 std::to_string(sizeWithoutCheckByte + (hasCheckByte ? 1U : 0U)));
    const unsigned sum = std::accumulate(atr.begin() + 1, atr.end(), 0U, [](unsigned a, unsigned b) { return a ^ b; });
    if (hasCheckByte && sum != 0)
        throw std::runtime_error("the answer to reset has a wrong check byte");
}

} // namespace

Protocol protocolOfAtr(const Bytes &atr)
{
    const std::uint8_t convention = byteAt(atr, 0);
    if (convention != 0x3B && convention != 0x3F)
        throw std::runtime_error("the answer to reset begins with 3B or 3F");
    const std::size_t historical = byteAt(atr, 1) & 0x0FU;
    unsigned present = byteAt(atr, 1) >> 4U;
    std::size_t position = 2;
    bool offersT1 = false;
    bool hasCheckByte = false;
    while (present != 0) {
        position += bitCount(present);
        if ((present & 0x08U) == 0)
            break;
        const unsigned next = byteAt(atr, position - 1);
        offersT1 = offersT1 || (next & 0x0FU) == 1;
        hasCheckByte = hasCheckByte || (next & 0x0FU) != 0;
        present = next >> 4U;
    }
    check(atr, position + historical, hasCheckByte);
    return offersT1 ? Protocol::kT1 : Protocol::kT0;
}

} // namespace drivers::cards
