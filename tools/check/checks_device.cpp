// Finding, opening and closing devices.
#include "tools/check/checks.h"
#include "tools/check/child_runner.h"
#include "tools/check/memory.h"
#include "tools/check/session.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace check {

namespace {

constexpr char kUnknownName[] = "no such device 5F3A";

/// What is wrong with a list of `count` names, if anything.
std::string problemOfList(const std::string &text, int count)
{
    if (text.empty())
        return "the list is empty";
    if (text.front() == '|' || text.find("||") != std::string::npos)
        return "the list has an empty name";
    const bool ended = text.back() == '|';
    const auto names = std::count(text.begin(), text.end(), '|') + (ended ? 0 : 1);
    if (names != count)
        return "the list has " + std::to_string(names) + " names, the result is " + std::to_string(count);
    return {};
}

Outcome listsDevices(const DriverLibrary &driver, int transport)
{
    if (driver.vek_enum_devices == nullptr || driver.vek_free_list == nullptr)
        return notApplicable("the library has no vek_enum_devices or no vek_free_list");
    char *list = nullptr;
    beginStep("vek_enum_devices");
    const int count = driver.vek_enum_devices(transport, &list);
    if (count < 1)
        return list == nullptr ? pass("no device") : fail("found no device and set the list all the same");
    if (list == nullptr)
        return fail("found " + std::to_string(count) + " devices and gave no list");
    const std::string problem = problemOfList(list, count);
    beginStep("vek_free_list");
    driver.vek_free_list(list);
    return problem.empty() ? pass(std::to_string(count) + " devices") : fail(problem);
}

Outcome knowsNoOtherTransport(const DriverLibrary &driver, const Settings &)
{
    if (driver.vek_enum_devices == nullptr)
        return notApplicable("the library has no vek_enum_devices");
    for (const int transport : {0, -1, 99}) {
        char *list = nullptr;
        beginStep("vek_enum_devices");
        if (driver.vek_enum_devices(transport, &list) > 0)
            return fail("found devices on transport " + std::to_string(transport));
    }
    return pass();
}

/// Enumerates all transports until the rounds or the time are over, and returns how many rounds there were.
int enumerateRounds(const DriverLibrary &driver, int rounds)
{
    constexpr std::chrono::seconds kLongest{4};
    const auto end = std::chrono::steady_clock::now() + kLongest;
    int done = 0;
    while (done < rounds && std::chrono::steady_clock::now() < end) {
        for (int transport = sdk::kTransportUsb; transport <= sdk::kTransportSdt; ++transport)
            enumerate(driver, transport);
        ++done;
    }
    return done;
}

Outcome releasesLists(const DriverLibrary &driver, const Settings &)
{
    constexpr int kWarmUp = 20;
    constexpr int kRounds = 300;
    constexpr std::size_t kGrowthPerRound = 8;
    if (driver.vek_enum_devices == nullptr || driver.vek_free_list == nullptr)
        return notApplicable("the library has no vek_enum_devices or no vek_free_list");
    enumerateRounds(driver, kWarmUp);
    const std::size_t before = allocatedBytes();
    const auto rounds = static_cast<std::size_t>(enumerateRounds(driver, kRounds));
    const std::size_t after = allocatedBytes();
    const std::size_t growth = after > before ? after - before : 0;
    if (growth > rounds * kGrowthPerRound)
        return fail(std::to_string(rounds) + " enumerations left " + std::to_string(growth) + " bytes allocated");
    return pass(std::to_string(rounds) + " rounds");
}

Outcome opensDefault(const DriverLibrary &driver, const Settings &)
{
    if (driver.vek_open == nullptr || driver.vek_close == nullptr)
        return notApplicable("the library has no vek_open or no vek_close");
    beginStep("vek_open");
    const std::intptr_t handle = driver.vek_open(nullptr, 0, 0);
    if (handle == 0)
        return notApplicable("no default device");
    beginStep("vek_close");
    const int result = driver.vek_close(handle, 0);
    return result == 0 ? pass() : fail("vek_close returned " + std::to_string(result));
}

Outcome refusesUnknownNames(const DriverLibrary &driver, const Settings &settings)
{
    if (driver.vek_open == nullptr)
        return notApplicable("the library has no vek_open");
    constexpr std::size_t kLong = 100000;
    Buffers buffers("vek_open");
    for (const std::string &name : {std::string(kUnknownName), std::string(kLong, 'x'), std::string("\xFF%s|\n")}) {
        beginStep("vek_open");
        if (driver.vek_open(buffers.input("device", name), 0, settings.baud) != 0)
            return fail("opened a device by a name that no device has");
    }
    return pass();
}

Outcome closesAndOpensAgain(const DriverLibrary &driver, const Settings &settings)
{
    constexpr int kRounds = 10;
    for (int i = 0; i < kRounds; ++i) {
        Session session(driver, settings);
        if (!session.isOpen())
            return i == 0 ? notApplicable(kNoDevice)
                          : fail("does not open again after " + std::to_string(i) + " rounds");
        if (const int result = session.close(); result != 0)
            return fail("vek_close returned " + std::to_string(result));
    }
    return pass(std::to_string(kRounds) + " rounds");
}

std::function<Outcome(const Settings &)> lister(int transport)
{
    return withLibrary(
        [transport](const DriverLibrary &driver, const Settings &) { return listsDevices(driver, transport); });
}

} // namespace

std::vector<Check> deviceChecks()
{
    constexpr char kList[] = "A list has as many names as the result says, none of them empty.";
    return {
        {"device.list.usb", kList, lister(sdk::kTransportUsb)},
        {"device.list.serial", kList, lister(sdk::kTransportSerial)},
        {"device.list.pcsc", kList, lister(sdk::kTransportPcsc)},
        {"device.list.sdt", kList, lister(sdk::kTransportSdt)},
        {"device.list.unknown", "No devices on transports that do not exist.", withLibrary(knowsNoOtherTransport)},
        {"device.list_memory", "The memory of lists is released.", withLibrary(releasesLists)},
        {"device.open_default", "A null name opens the default device.", withLibrary(opensDefault)},
        {"device.open_unknown", "A name that no device has opens none.", withLibrary(refusesUnknownNames)},
        {"device.reopen", "A device can be closed and opened again.", withLibrary(closesAndOpensAgain)},
    };
}

} // namespace check
