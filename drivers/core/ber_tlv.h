// BER-TLV as ISO 7816-4 and EMV use it: definite lengths, tags of up to three bytes. The parser takes bytes from
// strangers' cards, so it is bounded in depth and never reads past the end of what it is given.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "drivers/core/bytes.h"

namespace drivers {

struct Tlv {
    std::uint32_t tag = 0; ///< the tag's bytes as a number, most significant first: 0x9F36
    Bytes value;
};

/// Elements by tag.
using TlvMap = std::map<std::uint32_t, Bytes>;

/// The elements of one level; constructed ones are not opened. Bytes 00 between elements are padding. Nothing when a
/// tag or a length is cut off, a value is longer than what is left, or a length is indefinite or longer than 65535.
std::optional<std::vector<Tlv>> parseTlv(const Bytes &data);

/// Shows the primitive elements of all levels, in their order. False, after those that come before the flaw, for
/// malformed data or nesting deeper than any card application needs.
bool visitPrimitives(const Bytes &data, const std::function<void(const Tlv &)> &visit);

/// Puts the primitive elements of all levels into `elements`; of elements with the same tag the first one stays. False
/// as visitPrimitives() is, with `elements` as far as it got.
bool collectPrimitives(const Bytes &data, TlvMap &elements);

/// The value of the first element `tag` of the data's outermost level.
std::optional<Bytes> findTlv(const Bytes &data, std::uint32_t tag);

/// True for a tag whose value holds elements.
bool isConstructed(std::uint32_t tag);

/// One element as bytes.
/// @param value at most 65535 bytes
Bytes encodeTlv(std::uint32_t tag, const Bytes &value);

/// An entry of a data object list: which element, and the length that it has to have.
struct DolEntry {
    std::uint32_t tag = 0;
    std::size_t length = 0;
};

/// The entries of a data object list (PDOL, CDOL). Nothing when it is cut off.
std::optional<std::vector<DolEntry>> parseDol(const Bytes &dol);

} // namespace drivers
