// What one of several programs does with the one tray that all of them use, in several threads.
#pragma once

#include "tests/support/driver_api.h"

#include <chrono>
#include <cstdint>

namespace endurance {

using testsupport::DriverApi;

/// What a program's calls add up to. All of it is in the tray afterwards, none of it twice.
struct Sums {
    std::int64_t increments = 0; ///< of kCountedBlock, by one each
    std::int64_t beeps = 0;
    std::int64_t swipes = 0;
    std::int64_t stripeWrites = 0;
    std::int64_t otherCalls = 0;
    std::int64_t reopened = 0;   ///< how often the device was closed that other threads were using
    std::int64_t wrongCodes = 0; ///< results that the call cannot have

    void operator+=(const Sums &other);
};

/// A value block of the card on the antenna.
constexpr std::uint8_t kCountedBlock = 5;

/// Works for that long. Throws what goes wrong with the tray itself.
Sums workTogether(const DriverApi &driver, std::chrono::milliseconds time, std::uint32_t seed);

} // namespace endurance
