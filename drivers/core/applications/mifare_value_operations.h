// How a reader adds to a value block of a Mifare card. PC/SC says nothing of it but in an amendment that few readers
// know, so that every family of readers has a command of its own.
#pragma once

#include "drivers/core/bytes.h"

#include <cstdint>
#include <string_view>

namespace drivers {

/// The environment variable that settles it where the table of reader names is wrong: "d7", "d4", "c2" or "write".
constexpr char kMifareValueVariable[] = "UNIFOLD_MIFARE_VALUE";

enum class ValueOperations : std::uint8_t {
    kOneCommand,       ///< FF D7, the operation in the data, value most significant byte first
    kTwoCommands,      ///< FF D4 increments, FF D8 decrements, value least significant byte first
    kAmendment,        ///< FF C2 00 03, value least significant byte first
    kReadComputeWrite, ///< no command: the block is read, computed and written
};

/// By the reader's name, unless the environment settles it. A name that is not in the table means
/// kReadComputeWrite.
ValueOperations valueOperationsOf(std::string_view readerName);

/// Whether the card itself computes, so that nothing can come between. kReadComputeWrite is not atomic: a card taken
/// away halfway keeps its old value, but another reader's change in between is overwritten; and it needs the right to
/// write the block where the others need that to increment or decrement.
constexpr bool isAtomic(ValueOperations operations)
{
    return operations != ValueOperations::kReadComputeWrite;
}

enum class ValueChange : std::uint8_t { kIncrement, kDecrement };

/// The command of any family but kReadComputeWrite, which has none. `amount` is 0 or more.
Bytes valueCommand(ValueOperations operations, ValueChange change, std::uint8_t block, std::uint32_t amount);

} // namespace drivers
