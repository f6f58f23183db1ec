// The library as a file: loading, names, unloading.
#include "tools/check/checks.h"
#include "tools/check/session.h"

#include <optional>
#include <thread>

namespace check {

namespace {

constexpr int kReloads = 20;

Outcome loads(const Settings &settings)
{
    const DriverLibrary driver(settings.library);
    return driver.isOpen() ? pass() : fail(driver.error());
}

Outcome hasAllNames(const DriverLibrary &driver, const Settings &)
{
    const auto &names = entryPointNames();
    std::string missing;
    std::size_t count = 0;
    for (const std::string &name : names) {
        if (driver.has(name.c_str()))
            continue;
        missing += (count++ == 0 ? "" : ", ") + name;
    }
    if (count == 0)
        return pass(std::to_string(names.size()) + " names");
    return fail(std::to_string(count) + " of " + std::to_string(names.size()) + " names are missing: " + missing);
}

/// A thread that is about to end may still be counted.
bool threadsComeDownTo(int count)
{
    constexpr int kTries = 100;
    for (int i = 0; i < kTries && threadCount() > count; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return threadCount() <= count;
}

Outcome loadsAgain(const Settings &settings)
{
    const int threads = threadCount();
    for (int i = 0; i < kReloads; ++i) {
        const DriverLibrary driver(settings.library);
        if (!driver.isOpen())
            return i == 0 ? notApplicable("the library does not load") : fail("does not load again: " + driver.error());
        enumerate(driver, sdk::kTransportUsb);
    }
    return threadsComeDownTo(threads) ? pass() : fail("a thread lives on after the library is unloaded");
}

/// The bench unloads a library without closing the device.
Outcome unloadsWithDeviceOpen(const Settings &settings)
{
    const int threads = threadCount();
    std::optional<DriverLibrary> driver(std::in_place, settings.library);
    if (!driver->isOpen())
        return notApplicable("the library does not load");
    if (driver->vek_open == nullptr || driver->vek_open(nullptr, 0, 0) == 0)
        return notApplicable("no default device opened");
    driver.reset();
    return threadsComeDownTo(threads) ? pass() : fail("a thread lives on after the library is unloaded");
}

} // namespace

std::vector<Check> libraryChecks()
{
    return {
        {"library.load", "The library loads.", loads},
        {"library.names", "It has the names of all entry points.", withLibrary(hasAllNames)},
        {"library.reload", "It can be unloaded and loaded again, and leaves no thread.", loadsAgain},
        {"library.unload_open", "It can be unloaded while a device is open.", unloadsWithDeviceOpen},
    };
}

} // namespace check
