// What the three tracks of a magnetic stripe can hold (ISO/IEC 7811-2 and 7811-6, ISO/IEC 7813). Track texts here are
// the data between the sentinels: start and end sentinel and the check character are the head's business, but they
// count in the standard's 79, 40 and 107 characters, which leaves 76, 37 and 104.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drivers::cards {

constexpr int kStripeTracks = 3;

/// The most data characters of track 1, 2 or 3.
std::size_t trackCapacity(int track);

/// Whether a track's data may hold the character. Track 1: space # $ ( ) - . / 0-9 A-Z [ \ ] ^; tracks 2 and 3: 0-9
/// and =. The sentinels, and the codes that the standard keeps for hardware control, are no data.
bool trackHolds(int track, char character);

/// The data of a track's text, which may be given with both its sentinels (% or ; and ?) or with none. On failure
/// nothing, and `reason` tells why.
std::optional<std::string> trackData(int track, std::string_view text, std::string &reason);

/// The tracks that a selection names: 1, 2, 3, 12, 13, 23 or 123. Any other number names none.
std::vector<int> tracksOfSelection(int selection);

} // namespace drivers::cards
