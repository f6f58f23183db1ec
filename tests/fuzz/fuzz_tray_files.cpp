// Input: the text of tray.json, with its slots, swipes, rates and faults.
#include "drivers/virtual/reader/faults.h"
#include "drivers/virtual/tray/schema_check.h"
#include "drivers/virtual/tray/tray_state.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/scratch_tray.h"

using namespace drivers;
using fuzz::require;
using nlohmann::json;
using tray::TrayError;
using tray::TrayState;

namespace {

constexpr char kSchema[] = "tray.schema.json";

fuzz::ScratchTray &scratch()
{
    static fuzz::ScratchTray world;
    return world;
}

bool isState(const json &document)
{
    try {
        tray::checkAgainstSchema(document, kSchema, "tray.json", TrayError::Subject::Tray);
        return true;
    } catch (const TrayError &) {
        return false;
    }
}

/// Everything that a program does to a state by itself.
void change(TrayState &state)
{
    for (const tray::Slot slot : tray::kAllSlots)
        state.put(slot, "file-card");
    state.take(tray::Slot::Antenna);
    state.forget("file-card");
    state.swipe("stripe-empty", {"", "1=2", ""});
    for (tray::Fault &fault : state.faults) {
        require(!tray::describe(fault).empty(), "a fault can be told of");
        if (!fault.spent())
            fault.strike();
    }
    reader::isUnplugged(state);
    state.cyclePower();
}

void checkState(const json &document)
{
    TrayState state = tray::stateFromJson(document);
    const json written = tray::toJson(state);
    require(isState(written), "what was read can be written");
    require(tray::toJson(tray::stateFromJson(written)) == written, "what was written is read the same");
    change(state);
    require(isState(tray::toJson(state)), "a changed state can be read again");
}

/// Adds a fault and clears it, unless the last fault has the last number.
void addAndClear(tray::Tray &tray)
{
    const auto state = tray.state();
    const bool full = std::any_of(state->faults.begin(), state->faults.end(),
                                  [](const tray::Fault &fault) { return fault.id == tray::kMostCount; });
    if (full)
        return;
    tray::Fault fault;
    fault.call = "vek_beep";
    const std::uint64_t id = reader::addFault(tray, fault);
    require(tray.state()->faults.back().id == id, "a fault is added to any tray");
    require(reader::clearFaults(tray, id) == 1, "a fault can be cleared");
}

/// The same through the files, as several programs do it.
void checkFiles(const std::string &text)
{
    fuzz::ScratchTray &world = scratch();
    fuzz::ScratchTray::overwrite(world.stateFile(), text);
    tray::Tray &tray = world.tray();
    addAndClear(tray);
    reader::losesCard(tray, tray.lock(), tray::Slot::Contact);
    tray.put(tray::Slot::Contact, "file-card");
    reader::clearFaults(tray);
    require(tray.state()->faults.empty(), "all faults can be cleared");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(data, data + size);
    try {
        const json document = tray::parseJson(text, "tray.json", TrayError::Subject::Tray);
        tray::checkAgainstSchema(document, kSchema, "tray.json", TrayError::Subject::Tray);
        checkState(document);
    } catch (const TrayError &) {
        return 0;
    }
    checkFiles(text);
    return 0;
}
