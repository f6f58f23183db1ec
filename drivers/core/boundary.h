// What every exported function does before and after its work: no exception leaves it, no bad handle enters.
#pragma once

#include "drivers/core/handles.h"
#include "drivers/core/return_codes.h"

#include <utility>

namespace drivers {

/// Runs `call` and returns its result, or `failure` if it threw.
template <class Result, class Call>
Result guardedOr(Result failure, Call &&call) noexcept
{
    try {
        return std::forward<Call>(call)();
    } catch (...) {
        return failure;
    }
}

/// Runs `call`, which returns a code, a status or a count. An exception becomes kTransportFailure.
template <class Call>
int guarded(Call &&call) noexcept
{
    return guardedOr<int>(kTransportFailure, std::forward<Call>(call));
}

/// Runs `call(device)` on the device of `handle`; kBadHandle if it is not open.
template <class Device, class Call>
int withDevice(const HandleTable<Device> &table, sdk::DeviceHandle handle, Call &&call) noexcept
{
    return guarded([&]() -> int {
        const std::shared_ptr<Device> device = table.find(handle);
        return device ? static_cast<int>(std::forward<Call>(call)(*device)) : static_cast<int>(kBadHandle);
    });
}

/// The answer of an entry point that this driver does not serve: kBadHandle or kNotSupported.
template <class Device>
int notSupported(const HandleTable<Device> &table, sdk::DeviceHandle handle) noexcept
{
    return withDevice(table, handle, [](const Device &) { return kNotSupported; });
}

} // namespace drivers
