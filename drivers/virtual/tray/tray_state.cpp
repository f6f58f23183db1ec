#include "drivers/virtual/tray/tray_state.h"

namespace drivers::tray {

using nlohmann::json;

namespace {

constexpr std::array<std::string_view, kAllSlots.size()> kSlotNames = {"contact", "antenna", "psam1", "psam2",
                                                                       "psam3",   "psam4",   "id",    "stripe"};

json slotsToJson(const TrayState &state)
{
    json slots = json::object();
    for (const Slot slot : kAllSlots) {
        const SlotContent &content = state.at(slot);
        if (!content.card.empty())
            slots[std::string(slotName(slot))] = {{"card", content.card}, {"inserted", writtenCount(content.inserted)}};
    }
    return slots;
}

json swipesToJson(const TrayState &state)
{
    json swipes = json::array();
    for (const Swipe &swipe : state.swipes)
        swipes.push_back({{"number", writtenCount(swipe.number)}, {"card", swipe.card}, {"tracks", swipe.tracks}});
    return swipes;
}

json faultsToJson(const TrayState &state)
{
    json faults = json::array();
    for (const Fault &fault : state.faults)
        faults.push_back(toJson(fault));
    return faults;
}

json serialToJson(const TrayState &state)
{
    json serial = json::object();
    for (const auto &[name, rate] : state.serial) {
        serial[name]["stored"] = rate.stored;
        if (rate.temporary)
            serial[name]["temporary"] = *rate.temporary;
    }
    return serial;
}

} // namespace

std::string_view slotName(Slot slot)
{
    return kSlotNames[static_cast<std::size_t>(slot)];
}

std::optional<Slot> slotOfName(std::string_view name)
{
    for (const Slot slot : kAllSlots) {
        if (slotName(slot) == name)
            return slot;
    }
    return std::nullopt;
}

bool slotTakesKind(Slot slot, std::string_view kind)
{
    switch (slot) {
    case Slot::Antenna:
        return kind == "cpu" || kind == "mifare";
    case Slot::IdPlate:
        return kind == "id";
    case Slot::Stripe:
        return kind == "stripe";
    default:
        return kind == "cpu";
    }
}

void TrayState::put(Slot slot, const std::string &card)
{
    at(slot) = {card, ++insertions};
}

void TrayState::take(Slot slot)
{
    at(slot) = {};
}

void TrayState::forget(const std::string &card)
{
    for (SlotContent &content : contents) {
        if (content.card == card)
            content = {};
    }
}

void TrayState::swipe(const std::string &card, const std::array<std::string, 3> &tracks)
{
    ++swipeCount;
    if (keyboardMode)
        return;
    swipes.push_back({swipeCount, card, tracks});
    if (swipes.size() > kKeptSwipes)
        swipes.erase(swipes.begin());
}

void TrayState::cyclePower()
{
    ++powerCycles;
    keyboardMode = false;
    swipes.clear();
    for (auto &[name, rate] : serial)
        rate.temporary.reset();
}

TrayState stateFromJson(const json &document)
{
    TrayState state;
    for (const auto &[name, content] : document.at("slots").items()) {
        if (const std::optional<Slot> slot = slotOfName(name))
            state.at(*slot) = {content.at("card"), content.at("inserted")};
    }
    state.insertions = document.value("insertions", std::uint64_t{0});
    state.powerCycles = document.value("powerCycles", std::uint64_t{0});
    state.beeps = document.value("beeps", std::uint64_t{0});
    state.beepMs = document.value("beepMs", std::uint64_t{0});
    state.swipeCount = document.value("swipeCount", std::uint64_t{0});
    state.keyboardMode = document.value("keyboardMode", false);
    for (const auto &fault : document.value("faults", json::array()))
        state.faults.push_back(faultFromJson(fault));
    for (const auto &swipe : document.value("swipes", json::array()))
        state.swipes.push_back({swipe.at("number"), swipe.at("card"), swipe.at("tracks")});
    const json serial = document.value("serial", json::object());
    for (const auto &[name, rate] : serial.items()) {
        SerialRate &entry = state.serial[name];
        entry.stored = rate.at("stored");
        if (rate.contains("temporary"))
            entry.temporary = rate.at("temporary").get<int>();
    }
    return state;
}

json toJson(const TrayState &state)
{
    return {{"slots", slotsToJson(state)},
            {"insertions", writtenCount(state.insertions)},
            {"powerCycles", writtenCount(state.powerCycles)},
            {"beeps", writtenCount(state.beeps)},
            {"beepMs", writtenCount(state.beepMs)},
            {"swipeCount", writtenCount(state.swipeCount)},
            {"swipes", swipesToJson(state)},
            {"serial", serialToJson(state)},
            {"faults", faultsToJson(state)},
            {"keyboardMode", state.keyboardMode}};
}

} // namespace drivers::tray
