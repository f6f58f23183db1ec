// What libtarvovek.so exports: its calls with the faults of the tray around them.
#include "drivers/core/exports.h"
#include "drivers/virtual/exports/library.h"
#include "drivers/virtual/reader/faults.h"

#include <thread>

namespace drivers::exports {

namespace {

std::shared_ptr<reader::Device> deviceOf(const Call &call)
{
    return call.shape.takesHandle() ? library().devices.find(call.arguments[0].number()) : nullptr;
}

/// The tray in the usual place, for calls that are not about an open device. Null if there is none yet.
std::shared_ptr<tray::Tray> usualTray()
{
    static std::mutex mutex;
    static std::shared_ptr<tray::Tray> known;
    const std::filesystem::path folder = tray::trayFolder();
    const std::lock_guard guard(mutex);
    if (known != nullptr && known->folder() == folder && std::filesystem::exists(folder / "tray.json"))
        return known;
    known = std::filesystem::exists(folder / "tray.json") ? std::make_shared<tray::Tray>(folder) : nullptr;
    return known;
}

ReturnCode wait(const std::shared_ptr<reader::Device> &device, std::int64_t timeMs)
{
    const auto time = waitTime(timeMs);
    if (device == nullptr) {
        std::this_thread::sleep_for(time);
        return kSuccess;
    }
    const ReturnCode result = device->connection.waitFor(time, [] { return std::nullopt; });
    return result == kTimeout ? kSuccess : result;
}

std::shared_ptr<tray::Tray> trayOf(const std::shared_ptr<reader::Device> &device)
{
    try {
        return device != nullptr ? device->connection.sharedTray() : usualTray();
    } catch (...) {
        return nullptr;
    }
}

std::int64_t withFaults(const Call &call)
{
    // Looked up once: a device that is closed from here on ends the call's delay.
    const std::shared_ptr<reader::Device> device = deviceOf(call);
    const std::shared_ptr<tray::Tray> tray = trayOf(device);
    if (tray == nullptr)
        return call.proceed();
    const auto waitOnDevice = [&device](std::int64_t timeMs) { return wait(device, timeMs); };
    return guardedOr<std::int64_t>(call.shape.takesHandle() ? kTransportFailure : 0,
                                   [&] { return reader::callWithFaults(*tray, call, waitOnDevice); });
}

} // namespace

} // namespace drivers::exports

UNIFOLD_DEFINE_EXPORTS(drivers::exports::withFaults)
