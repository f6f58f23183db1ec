#include "drivers/virtual/reader/beeper.h"

namespace drivers::reader {

ReturnCode beep(Connection &connection, int onTime, int offTime, int times)
{
    constexpr std::chrono::milliseconds kUnit{50};
    const auto within = [](int value, int most) { return value >= 1 && value <= most; };
    if (!within(onTime, kMostBeepUnits) || !within(offTime, kMostBeepUnits) || !within(times, kMostBeeps))
        return kBadArgument;
    const std::chrono::milliseconds sounding = kUnit * onTime * times;
    const std::chrono::milliseconds pattern = sounding + kUnit * offTime * (times - 1);
    if (pattern > kLongestPattern)
        return kBadArgument;
    if (const ReturnCode result = connection.reach(Feature::Beeper); result != kSuccess)
        return result;
    connection.tray().update([&](tray::TrayState &state) {
        state.beeps += static_cast<std::uint64_t>(times);
        state.beepMs += static_cast<std::uint64_t>(sounding.count());
    });
    const ReturnCode result = connection.waitFor(pattern, [] { return std::nullopt; });
    return result == kTimeout ? kSuccess : result;
}

} // namespace drivers::reader
