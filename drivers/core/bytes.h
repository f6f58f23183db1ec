// Bytes and their hexadecimal text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drivers {

using Bytes = std::vector<std::uint8_t>;

/// Upper-case hexadecimal text, two digits a byte.
std::string toHex(const Bytes &bytes);

/// The bytes of a hexadecimal text of either case. Nothing for an odd number of digits or any other character; the
/// empty text gives no bytes.
std::optional<Bytes> fromHex(std::string_view text);

} // namespace drivers
