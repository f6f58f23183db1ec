// The reader's beeper.
#pragma once

#include "drivers/virtual/reader/connection.h"

namespace drivers::reader {

// What one call may ask for; the units are 50 ms.
constexpr int kMostBeepUnits = 255;
constexpr int kMostBeeps = 255;
constexpr std::chrono::milliseconds kLongestPattern{60000};

/// Sounds the pattern and returns when it is over: `times` sounds with a pause between them, none after the last. The
/// tray counts them when they begin. kBadArgument for numbers below 1 or beyond the limits above.
ReturnCode beep(Connection &connection, int onTime, int offTime, int times);

} // namespace drivers::reader
