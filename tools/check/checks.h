// The checks, in families; each source file makes the checks of one.
#pragma once

#include "tools/check/driver_library.h"
#include "tools/check/settings.h"
#include "tools/check/verdict.h"

#include <functional>
#include <string>
#include <vector>

namespace check {

/// A check by the name under which it is listed, chosen and reported. `run` is called in a process of its own.
struct Check {
    std::string name;
    std::string what;
    std::function<Outcome(const Settings &)> run;
};

/// All checks in the order in which they are run. The first one is that the library loads.
std::vector<Check> allChecks();

std::vector<Check> libraryChecks();
std::vector<Check> deviceChecks();
std::vector<Check> handleChecks();
std::vector<Check> callChecks();
std::vector<Check> timeoutChecks();
std::vector<Check> argumentChecks();

/// A check over the loaded library. One that does not load is not applicable, since "library.load" tells of it.
std::function<Outcome(const Settings &)>
withLibrary(std::function<Outcome(const DriverLibrary &, const Settings &)> body);

/// How many threads this process has.
int threadCount();

} // namespace check
