// The street between the card applications (drivers/core/applications) and whatever carries a card: a PC/SC reader or
// a simulated slot.
#pragma once

#include "drivers/core/bytes.h"
#include "drivers/core/return_codes.h"

#include <functional>

namespace drivers {

/// A powered card.
class CardChannel {
public:
    virtual ~CardChannel() = default;

    /// Sends one command APDU and receives its reply: data followed by SW1 SW2. 61xx and 6Cxx of a T=0 card are
    /// completed by the channel, so the caller sees the merged reply. On any code but kSuccess `reply` is empty.
    virtual ReturnCode transmit(const Bytes &command, Bytes &reply) = 0;
};

/// What is to be done on a powered card.
using CardJob = std::function<ReturnCode(CardChannel &)>;

/// Runs a job on the card of a call. A driver's own part of each call: which card it is, and what becomes of its power.
using RunOnCard = std::function<ReturnCode(const CardJob &job)>;

} // namespace drivers
