// The C interface of the virtual reader. Input: steps of a byte each with what it needs. 0 to 84: that call of the
// table, its arguments after it (sdk_calls.cpp); 85 to 95: something happens to the tray meanwhile.
#include "drivers/core/trace.h"
#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/reader/faults.h"
#include "tests/fuzz/quick_clock.h"
#include "tests/fuzz/scratch_tray.h"
#include "tests/fuzz/sdk_calls.h"

#include <cstdlib>
#include <fstream>

using namespace drivers;
using fuzz::Input;
using fuzz::require;

namespace {

constexpr int kMostSteps = 64;

struct World {
    World()
    {
        std::filesystem::create_directory(pictures);
        ::setenv(kTraceVariable, trace.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        cards = scratch.tray().cardIds();
    }

    fuzz::ScratchTray scratch;
    std::filesystem::path pictures = scratch.folder() / "pictures";
    std::filesystem::path trace = scratch.folder() / "trace.jsonl";
    std::vector<std::string> cards;
};

World &world()
{
    static World instance;
    return instance;
}

const std::string &someCard(Input &input)
{
    return world().cards.at(input.byte() % world().cards.size());
}

tray::Slot someSlot(Input &input)
{
    return tray::kAllSlots.at(input.byte() % tray::kAllSlots.size());
}

void addFault(Input &input)
{
    tray::Fault fault;
    fault.kind = static_cast<tray::FaultKind>(input.byte() % 6);
    if (fault.kind == tray::FaultKind::Removed)
        fault.slot = tray::slotName(someSlot(input));
    else if (fault.kind != tray::FaultKind::Unplugged)
        fault.call = input.text();
    fault.from = input.byte();
    fault.times = input.byte();
    fault.value = input.number<std::int16_t>();
    fault.mask = input.byte();
    reader::addFault(world().scratch.tray(), fault);
}

/// Changes a piece of a file's text in its place.
void damage(const std::filesystem::path &file, Input &input)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(stream)), {});
    const std::size_t at = input.number<std::uint16_t>() % (text.size() + 1);
    const std::size_t removed = input.byte();
    text.replace(at, removed, input.text());
    fuzz::ScratchTray::overwrite(file, text);
}

void happen(std::uint8_t what, Input &input)
{
    tray::Tray &tray = world().scratch.tray();
    switch (what % 7) {
    case 0:
        return tray.put(someSlot(input), someCard(input));
    case 1:
        return tray.update([slot = someSlot(input)](tray::TrayState &state) { state.take(slot); });
    case 2:
        return reader::swipe(tray, someCard(input));
    case 3:
        return addFault(input);
    case 4:
        reader::clearFaults(tray);
        return;
    case 5:
        return damage(tray.cardFile(someCard(input)), input);
    default:
        return damage(world().scratch.stateFile(), input);
    }
}

void step(Input &input, fuzz::Session &session)
{
    constexpr std::uint8_t kCalls = 85;
    const std::uint8_t what = input.byte() % 96;
    if (what < kCalls) {
        fuzz::beginSleeping();
        fuzz::makeCall(what, input, session);
        return;
    }
    try {
        happen(what, input);
    } catch (const std::runtime_error &) { // NOLINT(bugprone-empty-catch): a tray or a fault that is refused
    }
}

/// Every line of the trace is JSON, whatever texts went through the calls.
void checkTrace()
{
    std::ifstream stream(world().trace);
    for (std::string line; std::getline(stream, line);)
        require(nlohmann::json::accept(line), "a line of the trace is JSON");
    std::filesystem::resize_file(world().trace, 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    fuzz::Session session;
    session.pictures = world().pictures;
    for (int steps = 0; steps < kMostSteps && !input.atEnd(); ++steps)
        step(input, session);
    fuzz::endSession(session);
    checkTrace();
    world().scratch.restore();
    return 0;
}
