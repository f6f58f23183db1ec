// The value block of a Mifare Classic card: value, complement, value (32 bits each, least significant byte first),
// then address, complement, address, complement.
#pragma once

#include "drivers/core/mifare/mifare_layout.h"

#include <optional>

namespace drivers {

struct ValueBlock {
    std::int32_t value = 0;
    std::uint8_t address = 0; ///< free for a backup scheme; the block's own number as a rule
};

Block16 encodeValueBlock(const ValueBlock &block);

/// Nothing if the copies disagree: the block then is plain data.
std::optional<ValueBlock> decodeValueBlock(const Block16 &block);

/// value + delta, or nothing where that does not fit in 32 bits.
std::optional<std::int32_t> addToValue(std::int32_t value, std::int64_t delta);

} // namespace drivers
