// The handles that a driver gives out. Callers may hand anything back: 0, a closed handle, a number of their own.
#pragma once

#include "sdk/contracts.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <random>
#include <unordered_map>

namespace drivers {

/// Thread-safe table of open devices. A device lives as long as a call that found it: closing a handle while another
/// thread's call waits inside the device ends the handle at once and the device with that call.
template <class Device>
class HandleTable {
public:
    /// Enters a device and returns its handle: never 0, and positive also where a pointer has 32 bits.
    sdk::DeviceHandle add(std::shared_ptr<Device> device)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        sdk::DeviceHandle handle = 0;
        do {
            handle = scatter(m_serial++);
        } while (handle == 0 || m_devices.count(handle) != 0);
        m_devices.emplace(handle, std::move(device));
        return handle;
    }

    /// The device of a handle, or null for a handle that is not open.
    std::shared_ptr<Device> find(sdk::DeviceHandle handle) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_devices.find(handle);
        return found == m_devices.end() ? nullptr : found->second;
    }

    /// Ends a handle and returns its device, or null for a handle that is not open.
    std::shared_ptr<Device> remove(sdk::DeviceHandle handle)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_devices.find(handle);
        if (found == m_devices.end())
            return nullptr;
        std::shared_ptr<Device> device = std::move(found->second);
        m_devices.erase(found);
        return device;
    }

private:
    // Multiplying by an odd number visits every 31-bit value once before the first comes again, and the neighbours of
    // an open handle are not handles.
    static sdk::DeviceHandle scatter(std::uint32_t serial) { return (serial * 0x9E3779B1U) & 0x7FFFFFFFU; }

    mutable std::mutex m_mutex;
    std::unordered_map<sdk::DeviceHandle, std::shared_ptr<Device>> m_devices;
    // A random start: a handle kept from before the library was unloaded is not one of the next load.
    std::uint32_t m_serial = std::random_device{}();
};

} // namespace drivers
