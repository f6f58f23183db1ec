// The text forms of the PBOC calls: application identifiers, transaction data, and fields of one letter, three decimal
// digits of length and the value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "drivers/core/applications/pboc_letters.h"
#include "drivers/core/ber_tlv.h"

namespace drivers::pboc {

/// The bytes of an application identifier, at least its registered part of 5 bytes.
std::optional<Bytes> parseAid(std::string_view text);

/// The elements that transaction data gives. Nothing for an empty text, an unknown or repeated letter, a length that is
/// not three digits or goes past the end, or a value of the wrong length or characters.
std::optional<TlvMap> parseTransaction(std::string_view text);

/// One field of a reply. A null `value` gives length 000. Control bytes of a text become "?".
std::string field(char letter, const Bytes *value, TextForm form);

} // namespace drivers::pboc
