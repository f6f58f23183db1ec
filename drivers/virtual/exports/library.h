// What the exported functions share: the library's state and how a call gets to its device.
#pragma once

#include "drivers/core/boundary.h"
#include "drivers/core/text_arguments.h"
#include "drivers/core/wait_time.h"
#include "drivers/virtual/reader/device.h"

#include <atomic>

namespace drivers::exports {

struct Library {
    HandleTable<reader::Device> devices;
    LentTexts lists;
    std::atomic<char> separator = '|';
};

Library &library();

/// Runs `call(device)` on the device of a handle. A card whose file cannot be understood is kCardError; whatever else
/// is wrong with the tray is kTransportFailure.
template <class Call>
int serve(sdk::DeviceHandle handle, Call &&call) noexcept
{
    return withDevice(library().devices, handle, [&](reader::Device &device) -> int {
        try {
            return call(device);
        } catch (const tray::TrayError &error) {
            return error.subject() == tray::TrayError::Subject::Card ? kCardError : kTransportFailure;
        }
    });
}

} // namespace drivers::exports
