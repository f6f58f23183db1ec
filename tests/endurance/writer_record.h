// What the program that is killed tells its parent, over a pipe: a record before each step and one after it. A record
// is one write(2) of fewer bytes than a pipe takes at once, so that none is cut by the kill and none lost.
#pragma once

#include <cstdint>

namespace endurance {

struct WriterRecord {
    enum Kind : std::uint32_t {
        kReady,      ///< the device is open
        kBegin,      ///< operation `number` is about to be called
        kEnd,        ///< it returned `code`
        kSwipeBegin, ///< a card is about to be swiped
        kSwipeEnd,
        kFailed, ///< a call on the way to an operation returned `code`
    };
    std::uint32_t kind;
    std::uint32_t number;
    std::int32_t code;
};

} // namespace endurance
