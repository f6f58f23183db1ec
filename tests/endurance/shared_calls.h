// Calls on a device that others use too and that may be closed at any moment.
#pragma once

#include "tests/support/driver_api.h"

#include <cstdint>

namespace endurance {

using testsupport::DriverApi;

/// The highest status or count that a call gives; the lowest result is the lowest code.
constexpr int kHighestSharedResult = 9;

/// Makes the call that `choice` picks and returns its result. Nothing that it changes is counted by anyone.
int callOnShared(const DriverApi &driver, sdk::DeviceHandle device, std::uint32_t choice);

} // namespace endurance
