// Sleeping without waiting: the program's own sleep and monotonic clock stand in place of the system's.
#pragma once

namespace fuzz {

/// Until the next call of this every sleep is at least twice as long as the one before, so that the longest time-out
/// is over after some thirty looks.
void beginSleeping();

} // namespace fuzz
