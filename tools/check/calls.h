// Every call that takes a handle, with arguments that a program would give it. The one table from which the checks of
// handles, buffers, time-outs and codes are made.
#pragma once

#include "tools/check/buffers.h"
#include "tools/check/driver_library.h"
#include "tools/check/settings.h"

#include <cstdint>
#include <vector>

namespace check {

struct Target {
    sdk::DeviceHandle handle;
    std::uint8_t slot;
    int timeoutMs;
};

// What a call is like.
constexpr unsigned kWrites = 1U;     ///< changes something on a card or in the reader
constexpr unsigned kWaits = 2U;      ///< waits for a card
constexpr unsigned kCardStatus = 4U; ///< the result is the card's status
constexpr unsigned kMsrStatus = 8U;  ///< the result is the swipe session's status

struct Call {
    const char *name;
    unsigned traits;
    /// Calls to be made first, so that this one has something to work on.
    std::vector<const char *> before;
    /// Makes the call with memory out of the buffers and returns its result.
    int (*make)(const DriverLibrary &, const Target &, Buffers &);
};

/// All of them, in families.
const std::vector<Call> &allCalls();

/// Never null for a name of allCalls().
const Call &callNamed(const char *name);

// The families.
std::vector<Call> deviceCalls();
std::vector<Call> stripeCalls();
std::vector<Call> iccCalls();
std::vector<Call> idCalls();
std::vector<Call> mifareCalls();

} // namespace check
