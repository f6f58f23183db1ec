// The shape of a command APDU (ISO 7816-4): its header, data and expected length.
#pragma once

#include "drivers/core/bytes.h"

#include <array>
#include <cstddef>
#include <optional>

namespace drivers {

/// The bytes of a header, and so of the shortest command.
constexpr std::size_t kApduHeaderSize = 4;
/// Header, extended Lc, 65535 bytes of data, extended Le.
constexpr std::size_t kApduMaxSize = kApduHeaderSize + 3 + 65535 + 2;

struct CommandApdu {
    std::array<std::uint8_t, kApduHeaderSize> header{}; ///< CLA INS P1 P2
    Bytes data;                                         ///< empty in cases 1 and 2
    std::optional<std::size_t> le;                      ///< none in cases 1 and 3; a coded 0 is 256 or 65536
    bool extended = false;
};

/// The shape of `bytes`, or nothing if they follow none of the cases 1, 2S, 3S, 4S, 2E, 3E and 4E.
std::optional<CommandApdu> parseCommandApdu(const Bytes &bytes);

} // namespace drivers
