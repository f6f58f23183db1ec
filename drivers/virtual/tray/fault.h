// A fault that the reader has to show: which, on what, and when. Kept in the tray; drivers/virtual/reader/faults.h adds
// and applies them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace drivers::tray {

/// The largest count that can be read back from tray.json, whose schema knows 64 bits with a sign only.
constexpr std::uint64_t kMostCount = 0x7FFFFFFFFFFFFFFF;

/// A count as it is written: one that has come to the end stays there.
constexpr std::uint64_t writtenCount(std::uint64_t count)
{
    return std::min(count, kMostCount);
}

enum class FaultKind {
    Code,      ///< the call is not carried out and returns a code
    Delay,     ///< the call takes longer
    Removed,   ///< the card goes out of its slot in the middle of an exchange
    Short,     ///< a reply is cut short
    Flipped,   ///< bits of a reply's byte are inverted
    Unplugged, ///< the reader is away
};

/// The kind's name in files and on command lines: code, delay, removed, short, flipped, unplugged.
std::string_view faultKindName(FaultKind kind);
std::optional<FaultKind> faultKindOfName(std::string_view name);

struct Fault {
    std::uint64_t id = 0; ///< unique in the tray, from 1
    FaultKind kind = FaultKind::Code;
    std::string call; ///< Code, Delay, Short, Flipped: the entry point
    std::string slot; ///< Removed: the slot's name

    std::uint64_t from = 1;  ///< the first of the calls (Removed: of the exchanges) that it strikes, from 1
    std::uint64_t times = 0; ///< how many it strikes; 0: all from there on
    std::uint64_t seen = 0;  ///< how many there were

    /// Code: the result; Delay: milliseconds; Short: how many bytes stay; Flipped: which byte, from 0. Bytes of a
    /// hexadecimal reply are two digits each.
    std::int64_t value = 0;
    int mask = 0xFF; ///< Flipped: the bits

    /// Whether the next one is struck.
    bool strikesNext() const { return seen + 1 >= from && !spent(); }

    /// Whether it strikes no more.
    bool spent() const { return times != 0 && seen + 1 >= from + times; }

    /// Counts one, and tells whether it is struck. Not for a fault that is spent.
    bool strike()
    {
        const bool struck = strikesNext();
        ++seen;
        return struck;
    }
};

/// `document` has passed tray.schema.json.
Fault faultFromJson(const nlohmann::json &document);
nlohmann::json toJson(const Fault &fault);

/// What the fault does, for people: "vek_beep returns -5".
std::string describe(const Fault &fault);

} // namespace drivers::tray
