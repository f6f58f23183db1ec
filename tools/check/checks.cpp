#include "tools/check/checks.h"

#include <filesystem>
#include <utility>

namespace check {

std::vector<Check> allChecks()
{
    std::vector<Check> all;
    for (const auto family : {libraryChecks, deviceChecks, handleChecks, callChecks, timeoutChecks, argumentChecks}) {
        std::vector<Check> some = family();
        std::move(some.begin(), some.end(), std::back_inserter(all));
    }
    return all;
}

std::function<Outcome(const Settings &)>
withLibrary(std::function<Outcome(const DriverLibrary &, const Settings &)> body)
{
    return [body = std::move(body)](const Settings &settings) {
        const DriverLibrary driver(settings.library);
        return driver.isOpen() ? body(driver, settings) : notApplicable("the library does not load");
    };
}

int threadCount()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<int>(std::distance(begin(tasks), end(tasks)));
}

} // namespace check
