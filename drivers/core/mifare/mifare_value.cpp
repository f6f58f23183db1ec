#include "drivers/core/mifare/mifare_value.h"

#include <limits>

namespace drivers {

namespace {

void putWord(Block16 &block, std::size_t offset, std::uint32_t word)
{
    for (unsigned i = 0; i < 4; ++i)
        block[offset + i] = static_cast<std::uint8_t>(word >> (8U * i));
}

std::uint32_t wordAt(const Block16 &block, std::size_t offset)
{
    std::uint32_t word = 0;
    for (unsigned i = 0; i < 4; ++i)
        word |= static_cast<std::uint32_t>(block[offset + i]) << (8U * i);
    return word;
}

} // namespace

Block16 encodeValueBlock(const ValueBlock &block)
{
    const auto word = static_cast<std::uint32_t>(block.value);
    const auto inverted = static_cast<std::uint8_t>(~block.address);
    Block16 bytes{};
    putWord(bytes, 0, word);
    putWord(bytes, 4, ~word);
    putWord(bytes, 8, word);
    bytes[12] = block.address;
    bytes[13] = inverted;
    bytes[14] = block.address;
    bytes[15] = inverted;
    return bytes;
}

std::optional<ValueBlock> decodeValueBlock(const Block16 &block)
{
    // The layout has no freedom beyond value and address, so a block is one exactly when it equals its re-encoding.
    const ValueBlock candidate{static_cast<std::int32_t>(wordAt(block, 0)), block[12]};
    if (encodeValueBlock(candidate) != block)
        return std::nullopt;
    return candidate;
}

std::optional<std::int32_t> addToValue(std::int32_t value, std::int64_t delta)
{
    using Limits = std::numeric_limits<std::int32_t>;
    if (delta > std::int64_t{Limits::max()} - value || delta < std::int64_t{Limits::min()} - value)
        return std::nullopt;
    return static_cast<std::int32_t>(value + delta);
}

} // namespace drivers
