// A card with a magnetic stripe.
#pragma once

#include "drivers/virtual/cards/stripe_tracks.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <string>

namespace drivers::cards {

enum class StripeResult : std::uint8_t {
    ok,
    badSelection, ///< not one of 1, 2, 3, 12, 13, 23, 123
    badTrack,     ///< a selected track's text is empty, too long, or not in the track's alphabet
};

/// Description: "kind": "stripe", "tracks": an object of "1", "2" and "3", the data of each track without sentinels; a
/// missing track is blank.
class StripeCard {
public:
    using Tracks = std::array<std::string, kStripeTracks>;

    /// Throws std::runtime_error with the JSON place.
    explicit StripeCard(const nlohmann::json &description);

    /// What the constructor takes, with the tracks as they are now.
    nlohmann::json description() const;

    /// Whether a track was changed since construction.
    bool changed() const { return m_changed; }

    /// The data of track 1, 2 and 3 in this order, without sentinels, empty where a track is blank.
    const Tracks &tracks() const { return m_tracks; }

    /// Whether no track holds data: a swipe then finds nothing.
    bool empty() const;

    /// Writes the tracks that `selection` names, all of them or, if one is refused, none. A text may have its
    /// sentinels around it or not; what is not selected is not looked at.
    StripeResult write(int selection, const Tracks &tracks);

private:
    nlohmann::json m_description;
    Tracks m_tracks;
    bool m_changed = false;
};

} // namespace drivers::cards
