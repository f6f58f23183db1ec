// Command and reply of ISO 7816-4 as a card sees them.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "drivers/core/bytes.h"

namespace drivers::cards {

/// Status words.
namespace sw {
constexpr std::uint16_t kOk = 0x9000;
constexpr std::uint16_t kDataWaiting = 0x6100; ///< low byte: how many bytes
constexpr std::uint16_t kPinWrong = 0x63C0;    ///< low digit: tries left
constexpr std::uint16_t kWrongLength = 0x6700;
constexpr std::uint16_t kIncompatibleFile = 0x6981;
constexpr std::uint16_t kSecurityNotSatisfied = 0x6982;
constexpr std::uint16_t kPinBlocked = 0x6983;
constexpr std::uint16_t kConditionsNotSatisfied = 0x6985;
constexpr std::uint16_t kNoCurrentFile = 0x6986;
constexpr std::uint16_t kWrongData = 0x6A80;
constexpr std::uint16_t kFileNotFound = 0x6A82;
constexpr std::uint16_t kRecordNotFound = 0x6A83;
constexpr std::uint16_t kNoSpace = 0x6A84;
constexpr std::uint16_t kWrongP1P2 = 0x6A86;
constexpr std::uint16_t kReferenceNotFound = 0x6A88;
constexpr std::uint16_t kWrongOffset = 0x6B00;
constexpr std::uint16_t kExpectLength = 0x6C00; ///< low byte: the right length
constexpr std::uint16_t kWrongInstruction = 0x6D00;
constexpr std::uint16_t kWrongClass = 0x6E00;
} // namespace sw

struct Command {
    std::uint8_t cla = 0;
    std::uint8_t ins = 0;
    std::uint8_t p1 = 0;
    std::uint8_t p2 = 0;
    Bytes data;
    std::optional<std::size_t> expected; ///< 1 to 256; nothing when the command has no Le

    std::uint16_t p1p2() const { return static_cast<std::uint16_t>(p1 << 8U | p2); }
};

/// A short command. Nothing when its length does not agree with its length byte.
std::optional<Command> parseCommand(const Bytes &bytes);

struct Reply {
    Bytes data;
    std::uint16_t status = sw::kOk;

    Reply(std::uint16_t statusWord) : status(statusWord) {}
    Reply(Bytes bytes) : data(std::move(bytes)) {}

    Bytes bytes() const;
};

} // namespace drivers::cards
