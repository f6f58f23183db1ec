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

ReturnCode wait(const Call &call, std::int64_t timeMs)
{
    const auto time = milliseconds(timeMs);
    const auto device = deviceOf(call);
    if (device == nullptr) {
        std::this_thread::sleep_for(time);
        return kSuccess;
    }
    const ReturnCode result = device->connection.waitFor(time, [] { return std::nullopt; });
    return result == kTimeout ? kSuccess : result;
}

/// A tray that cannot be read has no faults; the call itself tells what is wrong.
std::shared_ptr<tray::Tray> readableTray(const Call &call)
{
    try {
        const auto device = deviceOf(call);
        // The device may be closed by another thread meanwhile; the tray stays.
        std::shared_ptr<tray::Tray> found = device != nullptr ? device->connection.sharedTray() : usualTray();
        if (found != nullptr)
            found->state();
        return found;
    } catch (...) {
        return nullptr;
    }
}

std::int64_t withFaults(const Call &call)
{
    const std::shared_ptr<tray::Tray> tray = readableTray(call);
    if (tray == nullptr)
        return call.proceed();
    return guardedOr<std::int64_t>(call.shape.takesHandle() ? kTransportFailure : 0,
                                   [&] { return reader::callWithFaults(*tray, call, wait); });
}

} // namespace

} // namespace drivers::exports

UNIFOLD_DEFINE_EXPORTS(drivers::exports::withFaults)
