// The record of the open device. The main window owns the only one and alone writes it; every page keeps its address
// and reads it on each action.
#pragma once

#include <cstdint>

struct DeviceContext {
    std::int64_t handle; ///< from vek_open; 0 while no device is open
    int transport;       ///< 1 USB, 2 serial port, 3 PC/SC, 4 SDT
    char reserved[256];  ///< stays zero
    int timeoutSeconds;  ///< as typed by the user: may be 0 or negative
};

/// The time-out in milliseconds, computed wide and then narrowed to 32 bits on purpose: a value past the range wraps
/// instead of being undefined.
constexpr std::uint32_t timeoutMs(const DeviceContext &device)
{
    return static_cast<std::uint32_t>(std::int64_t{device.timeoutSeconds} * 1000);
}
