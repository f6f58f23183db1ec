// The codes of the ethnic groups on social security cards.
#pragma once

#include <array>
#include <cstdint>

struct EthnicGroup {
    std::int32_t code;
    const char *name; ///< UTF-8
};

extern const std::array<EthnicGroup, 57> kEthnicGroups;

/// The UTF-8 name for a card's field, which is read as a decimal number the C way: leading white space and a sign may
/// stand before the digits, what follows them is ignored, and text without digits is 0. "其他" for a code of no entry.
const char *ethnicGroupName(const char *code);
