// The readers that the virtual driver shows: doors of different transports to the one tray.
#pragma once

#include "drivers/virtual/tray/tray_state.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drivers::reader {

struct DeviceEntry {
    int transport; ///< sdk::kTransport...
    std::string name;
    /// A PC/SC reader is one slot: every slot code addresses it.
    std::optional<tray::Slot> onlySlot;
};

/// The devices of a transport, in the order in which they are enumerated.
std::vector<std::string> deviceNames(int transport);

/// Null for a name that no device has.
const DeviceEntry *findDevice(std::string_view name);

/// What vek_open without a name opens.
const DeviceEntry &defaultDevice();

} // namespace drivers::reader
