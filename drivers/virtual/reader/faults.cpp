#include "drivers/virtual/reader/faults.h"

#include "drivers/virtual/reader/reply_damage.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace drivers::reader {

using tray::Fault;
using tray::FaultKind;
using tray::TrayState;

namespace {

/// What is longer counts as no wait at all (waitTime()).
constexpr std::int64_t kLongestDelayMs = std::numeric_limits<std::int32_t>::max();

[[noreturn]] void refuse(const std::string &reason)
{
    throw std::runtime_error(reason);
}

/// The results with which a call says that it failed are not the same for all.
void checkCode(const Fault &fault)
{
    if (fault.call == "vek_free_list")
        refuse("vek_free_list returns nothing");
    if (fault.call == "vek_open" && fault.value != 0)
        refuse("vek_open returns a handle: the only code it can fail with is 0");
    if (fault.call == "vek_enum_devices" && fault.value > 0)
        refuse("vek_enum_devices returns how many devices there are: it can fail with 0 or less only");
    if (fault.value < std::numeric_limits<std::int32_t>::min() ||
        fault.value > std::numeric_limits<std::int32_t>::max())
        refuse("a code has 32 bits");
}

void checkCall(const Fault &fault)
{
    if (fault.call.empty())
        refuse("a fault of the kind " + std::string(faultKindName(fault.kind)) + " needs a call");
    if (!isEntryPoint(fault.call))
        refuse("there is no call " + fault.call);
    const CallShape *const shape = findCallShape(fault.call);
    const bool damages = fault.kind == FaultKind::Short || fault.kind == FaultKind::Flipped;
    if (damages && (shape == nullptr || !shape->givesReply()))
        refuse(fault.call + " gives no reply that could be damaged");
    if (fault.kind == FaultKind::Code)
        checkCode(fault);
    else if (fault.value < 0)
        refuse("less than 0 does not go with a fault of the kind " + std::string(faultKindName(fault.kind)));
    else if (fault.kind == FaultKind::Delay && fault.value > kLongestDelayMs)
        refuse("the longest delay is " + std::to_string(kLongestDelayMs) + " ms");
}

void check(const Fault &fault)
{
    // A larger count, such as what -1 becomes without its sign, would leave a tray that nobody can read.
    if (fault.from == 0 || fault.from > tray::kMostCount || fault.times > tray::kMostCount)
        refuse("calls are counted from 1 to " + std::to_string(tray::kMostCount));
    if (fault.mask < 1 || fault.mask > 0xFF)
        refuse("a mask has 1 to 8 bits: 01 to FF");
    switch (fault.kind) {
    case FaultKind::Unplugged:
        if (!fault.call.empty())
            refuse("an unplugged reader is so for all calls: name none");
        return;
    case FaultKind::Removed:
        if (!fault.call.empty())
            refuse("a removed card is so for all calls: name none");
        if (fault.slot != "contact" && fault.slot != "antenna" && fault.slot.substr(0, 4) != "psam")
            refuse("a card is removed from contact, antenna or psam1 to psam4, not from \"" + fault.slot + '"');
        if (!tray::slotOfName(fault.slot))
            refuse("there is no slot " + fault.slot);
        return;
    default:
        checkCall(fault);
    }
}

bool needsReader(const CallShape &shape)
{
    return (shape.takesHandle() && shape.name != "vek_close") || shape.name == "vek_open" ||
           shape.name == "vek_enum_devices";
}

bool concerns(const Fault &fault, const CallShape &shape)
{
    if (fault.kind == FaultKind::Removed || fault.spent())
        return false;
    return fault.kind == FaultKind::Unplugged ? needsReader(shape) : fault.call == shape.name;
}

/// A tray that cannot be read has no faults; the call itself tells what is wrong.
std::shared_ptr<const TrayState> readableState(tray::Tray &tray)
{
    try {
        return tray.state();
    } catch (const tray::TrayError &) {
        return nullptr;
    }
}

/// Counts the call in all faults that it concerns, and returns those that strike.
std::vector<Fault> strike(tray::Tray &tray, const CallShape &shape)
{
    std::vector<Fault> striking;
    const auto concerned = [&shape](const Fault &fault) { return concerns(fault, shape); };
    const auto state = readableState(tray);
    if (state == nullptr || std::none_of(state->faults.begin(), state->faults.end(), concerned))
        return striking;
    tray.update([&](TrayState &changed) {
        for (Fault &fault : changed.faults) {
            if (!concerned(fault) || !fault.strike())
                continue;
            if (fault.kind == FaultKind::Unplugged && fault.seen == fault.from)
                changed.cyclePower();
            striking.push_back(fault);
        }
    });
    return striking;
}

/// What a call returns instead of being carried out. Who edits tray.json by hand gets around checkCode(), but a caller
/// must not be told of devices or of a handle that there are not.
std::int64_t resultOf(const Fault &code, const CallShape &shape)
{
    if (shape.name == "vek_open")
        return 0;
    return shape.name == "vek_enum_devices" ? std::min<std::int64_t>(code.value, 0) : code.value;
}

const Fault *find(const std::vector<Fault> &faults, FaultKind kind)
{
    const auto found =
        std::find_if(faults.begin(), faults.end(), [kind](const Fault &fault) { return fault.kind == kind; });
    return found == faults.end() ? nullptr : &*found;
}

} // namespace

std::uint64_t addFault(tray::Tray &tray, Fault fault)
{
    check(fault);
    fault.seen = 0;
    tray.update([&fault](TrayState &state) {
        fault.id = 1;
        for (const Fault &other : state.faults)
            fault.id = std::max(fault.id, other.id + 1);
        if (fault.id > tray::kMostCount)
            refuse("no number is left for a fault: clear the others first");
        state.faults.push_back(fault);
    });
    return fault.id;
}

std::size_t clearFaults(tray::Tray &tray, std::uint64_t id)
{
    std::size_t cleared = 0;
    tray.update([&](TrayState &state) {
        const std::size_t before = state.faults.size();
        state.faults.erase(std::remove_if(state.faults.begin(), state.faults.end(),
                                          [id](const Fault &fault) { return id == 0 || fault.id == id; }),
                           state.faults.end());
        cleared = before - state.faults.size();
    });
    return cleared;
}

bool isUnplugged(const TrayState &state)
{
    return std::any_of(state.faults.begin(), state.faults.end(),
                       [](const Fault &fault) { return fault.kind == FaultKind::Unplugged && fault.strikesNext(); });
}

bool losesCard(tray::Tray &tray, const tray::FolderLock &held, tray::Slot slot)
{
    const auto concerned = [slot](const Fault &fault) {
        return fault.kind == FaultKind::Removed && !fault.spent() && fault.slot == slotName(slot);
    };
    const auto state = tray.state();
    if (std::none_of(state->faults.begin(), state->faults.end(), concerned))
        return false;
    bool lost = false;
    tray.update(held, [&](TrayState &changed) {
        for (Fault &fault : changed.faults)
            lost = (concerned(fault) && fault.strike()) || lost;
        if (lost)
            changed.take(slot);
    });
    return lost;
}

std::int64_t callWithFaults(tray::Tray &tray, const Call &call, const std::function<ReturnCode(std::int64_t)> &wait)
{
    const std::vector<Fault> striking = strike(tray, call.shape);
    if (const Fault *const delay = find(striking, FaultKind::Delay)) {
        if (const ReturnCode result = wait(delay->value); result != kSuccess)
            return result;
    }
    if (find(striking, FaultKind::Unplugged) != nullptr)
        return call.shape.takesHandle() ? std::int64_t{kReaderGone} : 0;
    if (const Fault *const code = find(striking, FaultKind::Code))
        return resultOf(*code, call.shape);
    const std::int64_t result = call.proceed();
    if (result == kSuccess) {
        for (const Fault &fault : striking)
            damageReplies(fault, call);
    }
    return result;
}

} // namespace drivers::reader
