// Calls that wait for a card come back in time.
#include "tools/check/checks.h"
#include "tools/check/session.h"

namespace check {

namespace {

Outcome comesBack(const DriverLibrary &driver, const Settings &settings, const Call &call, std::uint8_t slot)
{
    if (const auto hindered = obstacle(driver, settings, call))
        return *hindered;
    const Session session(driver, settings);
    if (!session.isOpen())
        return notApplicable(kNoDevice);
    std::string note;
    for (const int timeoutMs : {0, settings.timeoutMs}) {
        const Answer answer = makeCall(driver, settings, {session.handle(), slot, timeoutMs}, call);
        if (const auto early = settled(settings, answer))
            return *early;
        if (answer.result == 0)
            return notApplicable("a card answered; take it away to check the time-out");
        const std::string took = std::to_string(answer.milliseconds) + " ms of " + std::to_string(timeoutMs);
        if (answer.milliseconds > timeoutMs + settings.slackMs)
            return fail("took " + took);
        note += (note.empty() ? "" : ", ") + took;
    }
    return pass(note);
}

Check checkOf(const Call &call, const std::string &name, std::optional<std::uint8_t> slot)
{
    return {"timeout." + name, std::string(call.name) + " keeps its time-out when no card comes.",
            withLibrary([&call, slot](const DriverLibrary &driver, const Settings &settings) {
                return comesBack(driver, settings, call, slot.value_or(settings.slot));
            })};
}

} // namespace

std::vector<Check> timeoutChecks()
{
    std::vector<Check> checks;
    for (const Call &call : allCalls()) {
        if ((call.traits & kWaits) != 0)
            checks.push_back(checkOf(call, call.name, std::nullopt));
    }
    const Call &powerOn = callNamed("vek_icc_poweron");
    checks.push_back(checkOf(powerOn, "vek_icc_poweron.contactless", sdk::kSlotContactless));
    checks.push_back(checkOf(powerOn, "vek_icc_poweron.automatic", sdk::kSlotAutomatic));
    checks.push_back(checkOf(powerOn, "vek_icc_poweron.psam4", sdk::kSlotPsam4));
    return checks;
}

} // namespace check
