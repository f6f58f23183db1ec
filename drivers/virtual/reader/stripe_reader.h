// The magnetic stripe head as one open device sees it.
#pragma once

#include "drivers/virtual/reader/connection.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace drivers::reader {

using Tracks = std::array<std::string, 3>;

/// All methods may be called from several threads. Each device has a session of its own, and a swipe is seen by all.
class StripeReader {
public:
    enum Status : int {
        kNothingYet = 0,
        kSwiped = 1,
        kSwipedEmpty = 9, ///< only stripes without data have been swiped so far
    };

    explicit StripeReader(Connection &connection) : m_connection(connection) {}

    /// 1: the host polls; 0: the reader types the tracks like a keyboard, and swipes are not seen here.
    ReturnCode setMode(int mode);

    /// Begins a session; swipes from now on count. A running session begins anew.
    ReturnCode start();

    /// A Status, or a code below 0. kNothingYet without a session.
    int status();

    /// The tracks of the swipe that status() reports; kNoCard while there is none.
    ReturnCode get(Tracks &tracks);

    /// Ends the session, if there is one.
    ReturnCode stop();

    /// Waits for a swipe and writes the tracks that `selection` names (1, 2, 3, 12, 13, 23 or 123) to that card.
    /// kBadArgument, without waiting, for another selection or a track that the stripe cannot hold.
    ReturnCode write(int selection, const Tracks &tracks, std::chrono::milliseconds timeout);

private:
    std::optional<tray::Swipe> sessionSwipe();

    Connection &m_connection;
    std::mutex m_mutex;                          ///< guards the session; not held while waiting
    std::optional<std::uint64_t> m_sessionStart; ///< the swipes counted when the session began
};

} // namespace drivers::reader
