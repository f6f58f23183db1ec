// Handles that are none: 0, closed, made up.
#include "drivers/core/return_codes.h"
#include "tools/check/checks.h"
#include "tools/check/session.h"

#include <limits>

namespace check {

namespace {

enum class Kind { Zero, Closed, MadeUp };

int closeCall(const DriverLibrary &driver, const Target &target, Buffers &)
{
    return driver.vek_close(target.handle, 0);
}

const Call kClose = {"vek_close", 0, {}, closeCall};

/// Whether the result tells that the handle was not taken. The card status of a library that we do not know can be any
/// number.
bool refused(const Call &call, const Settings &settings, Kind kind, int result)
{
    if (settings.ourCodes)
        return result == drivers::kBadHandle;
    if ((call.traits & kCardStatus) != 0)
        return true;
    if ((call.traits & kMsrStatus) != 0)
        return result != sdk::kMsrSwiped && result != sdk::kMsrSwipedNoData;
    // The bench closes handle 0 when nothing is open.
    return result != 0 || (call.make == closeCall && kind == Kind::Zero);
}

Outcome tryHandle(const DriverLibrary &driver, const Settings &settings, const Call &call, Kind kind,
                  sdk::DeviceHandle handle)
{
    const Answer answer = makeCall(driver, settings, {handle, settings.slot, 0}, call);
    const std::string which = "handle " + std::to_string(handle);
    if (answer.problem)
        return fail(which + ": " + *answer.problem);
    if (!refused(call, settings, kind, answer.result))
        return fail(which + " was not refused: returned " + std::to_string(answer.result));
    return pass("returned " + std::to_string(answer.result));
}

Outcome tryMadeUp(const DriverLibrary &driver, const Settings &settings, const Call &call)
{
    using Limits = std::numeric_limits<sdk::DeviceHandle>;
    // A device that is open must not lend its name to others.
    const Session session(driver, settings);
    Outcome outcome;
    for (const sdk::DeviceHandle handle :
         {sdk::DeviceHandle{1}, sdk::DeviceHandle{-1}, sdk::DeviceHandle{0x1234567}, Limits::max(), Limits::min()}) {
        if (handle == session.handle())
            continue;
        outcome = tryHandle(driver, settings, call, Kind::MadeUp, handle);
        if (outcome.verdict == Verdict::Fail)
            return outcome;
    }
    return outcome;
}

Outcome tryClosed(const DriverLibrary &driver, const Settings &settings, const Call &call)
{
    Session session(driver, settings);
    const sdk::DeviceHandle handle = session.handle();
    if (handle == 0)
        return notApplicable(kNoDevice);
    session.close();
    return tryHandle(driver, settings, call, Kind::Closed, handle);
}

Check checkOf(const Call &call, Kind kind, const char *name, const char *what)
{
    return {std::string("handle.") + name + '.' + call.name, std::string(call.name) + " refuses " + what + '.',
            withLibrary([&call, kind](const DriverLibrary &driver, const Settings &settings) {
                if (const auto hindered = obstacle(driver, settings, call))
                    return *hindered;
                switch (kind) {
                case Kind::Closed:
                    return tryClosed(driver, settings, call);
                case Kind::MadeUp:
                    return tryMadeUp(driver, settings, call);
                case Kind::Zero:
                    break;
                }
                return tryHandle(driver, settings, call, Kind::Zero, 0);
            })};
}

} // namespace

std::vector<Check> handleChecks()
{
    std::vector<Check> checks;
    const auto addAll = [&checks](Kind kind, const char *name, const char *what) {
        checks.push_back(checkOf(kClose, kind, name, what));
        for (const Call &call : allCalls())
            checks.push_back(checkOf(call, kind, name, what));
    };
    addAll(Kind::Zero, "zero", "handle 0");
    addAll(Kind::Closed, "closed", "the handle of a closed device");
    addAll(Kind::MadeUp, "made_up", "handles that were never given out");
    return checks;
}

} // namespace check
