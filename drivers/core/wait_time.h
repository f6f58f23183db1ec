// How long a call may wait.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>

namespace drivers {

/// The time-out of a call as a duration. A caller that computes it from a negative number of seconds sends, as 32 bits
/// without a sign, a value of some 49 days: both forms mean no wait at all.
template <typename Number>
constexpr std::chrono::milliseconds waitTime(Number timeoutMs)
{
    const auto wide = static_cast<std::int64_t>(timeoutMs);
    return std::chrono::milliseconds(wide > 0 && wide <= std::numeric_limits<std::int32_t>::max() ? wide : 0);
}

} // namespace drivers
