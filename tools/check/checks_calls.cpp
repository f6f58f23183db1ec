// Every call once, as a program makes it: its buffers, texts and numbers.
#include "tools/check/checks.h"
#include "tools/check/session.h"

namespace check {

namespace {

Outcome makeProperly(const DriverLibrary &driver, const Settings &settings, const Call &call)
{
    if (const auto hindered = obstacle(driver, settings, call))
        return *hindered;
    const Session session(driver, settings);
    if (!session.isOpen())
        return notApplicable(kNoDevice);
    const Answer answer = makeCallInTurn(driver, settings, {session.handle(), settings.slot, settings.timeoutMs}, call);
    if (const auto early = settled(settings, answer))
        return *early;
    const std::string note = "returned " + std::to_string(answer.result);
    return succeeded(call, answer.result) ? pass(note) : notApplicable(note);
}

/// Takes no handle, and sets the library's state: it is set back.
Outcome setsSeparator(const DriverLibrary &driver, const Settings &settings)
{
    if (driver.vek_idcr_set_separation == nullptr)
        return notApplicable("the library has no vek_idcr_set_separation");
    Answer answer;
    for (const char separator : {'#', '\0', '\xFF', '|'})
        answer.result = driver.vek_idcr_set_separation(separator);
    return settled(settings, answer).value_or(pass("returned " + std::to_string(answer.result)));
}

} // namespace

std::vector<Check> callChecks()
{
    std::vector<Check> checks;
    for (const Call &call : allCalls()) {
        checks.push_back({std::string("call.") + call.name,
                          std::string(call.name) + " stays in its buffers and gives sound texts and numbers.",
                          withLibrary([&call](const DriverLibrary &driver, const Settings &settings) {
                              return makeProperly(driver, settings, call);
                          })});
    }
    checks.push_back(
        {"call.vek_idcr_set_separation", "vek_idcr_set_separation takes any character.", withLibrary(setsSeparator)});
    return checks;
}

} // namespace check
