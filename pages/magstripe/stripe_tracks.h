// What a swipe gives: the three tracks of a magnetic stripe.
#pragma once

#include "sdk/contracts.h"

#include <QString>

#include <array>

struct StripeTracks {
    std::array<std::array<char, sdk::kTrackSize>, 3> buffers{};
    std::array<int, 3> lengths{}; ///< as the driver tells them: not checked, never used to read the buffers

    /// Fetches the tracks of the swipe from the driver; the result is vek_msr_qm_get's.
    int fetch(sdk::DeviceHandle device);

    /// The text of a track, `index` 0 to 2. Tracks are ASCII; should a byte be none, it is taken as one Latin-1
    /// character, so that each byte is seen.
    QString text(std::size_t index) const;
};
