// The check character of 18-character resident numbers (ISO 7064 MOD 11-2).
#pragma once

#include <optional>
#include <string_view>

namespace drivers::cards {

/// The check character, 0 to 9 or X, of the 17 digits before it; nothing for any other text.
std::optional<char> idNumberCheckCharacter(std::string_view digits);

/// Whether a number is 17 digits and their check character.
bool isValidIdNumber(std::string_view number);

} // namespace drivers::cards
