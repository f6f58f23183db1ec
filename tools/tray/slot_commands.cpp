#include "drivers/virtual/reader/card_models.h"
#include "tools/tray/command.h"
#include "tools/tray/output.h"

#include <iostream>
#include <memory>

namespace tray_tool {

using drivers::tray::Slot;
using drivers::tray::Tray;
using drivers::tray::TrayState;
using nlohmann::json;

namespace {

json slotsOf(Tray &tray, const TrayState &state)
{
    json slots = json::object();
    for (const Slot slot : drivers::tray::kAllSlots) {
        const std::string &card = state.at(slot).card;
        json &entry = slots[std::string(slotName(slot))];
        if (card.empty())
            continue;
        entry = {{"card", card}};
        try {
            entry["label"] = drivers::reader::cardLabel(tray.card(card));
        } catch (const drivers::tray::TrayError &error) {
            entry["error"] = error.what();
        }
    }
    return slots;
}

json serialOf(const TrayState &state)
{
    json serial = json::object();
    for (const auto &[name, rate] : state.serial)
        serial[name] = {{"stored", rate.stored}, {"inForce", rate.inForce()}};
    return serial;
}

void status(const Options &options)
{
    Tray tray = openTray(options);
    const auto state = tray.state();
    const json document = {{"tray", tray.folder().string()},
                           {"slots", slotsOf(tray, *state)},
                           {"beeps", state->beeps},
                           {"beepMs", state->beepMs},
                           {"swipes", state->swipeCount},
                           {"powerCycles", state->powerCycles},
                           {"keyboardMode", state->keyboardMode},
                           {"serial", serialOf(*state)}};
    if (options.json) {
        printJson(document);
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const Slot slot : drivers::tray::kAllSlots) {
        const std::string name(slotName(slot));
        const json &entry = document.at("slots").at(name);
        if (entry.is_null())
            rows.push_back({name, "-"});
        else
            rows.push_back({name, entry.at("card"), entry.contains("error") ? entry.at("error") : entry.at("label")});
    }
    printTable(rows);
    std::cout << "\nbeeps " << state->beeps << " (" << state->beepMs << " ms), swipes " << state->swipeCount
              << ", power cycles " << state->powerCycles << '\n'
              << "stripe mode " << (state->keyboardMode ? "keyboard" : "command") << '\n';
    for (const auto &[name, rate] : state->serial)
        std::cout << name << ' ' << rate.inForce() << " baud, stored " << rate.stored << '\n';
    std::cout << "tray " << tray.folder().string() << '\n';
}

Slot slotNamed(const std::string &name)
{
    const auto slot = drivers::tray::slotOfName(name);
    if (!slot)
        throw std::runtime_error("there is no slot " + name + " (contact, antenna, psam1 to psam4, id, stripe)");
    return *slot;
}

/// Where a card goes when nobody says.
Slot usualSlot(const std::string &kind)
{
    for (const Slot slot : {Slot::Contact, Slot::Antenna, Slot::IdPlate, Slot::Stripe}) {
        if (drivers::tray::slotTakesKind(slot, kind))
            return slot;
    }
    throw std::runtime_error("no slot takes a card of the kind " + kind);
}

void put(const Options &options, const std::string &card, const std::string &slot)
{
    Tray tray = openTray(options);
    const Slot to = slot.empty() ? usualSlot(tray.card(card).at("kind")) : slotNamed(slot);
    tray.put(to, card);
    printDone(options.json, {{"card", card}, {"slot", slotName(to)}});
}

void take(const Options &options, const std::string &slot)
{
    const Slot from = slotNamed(slot);
    std::string card;
    openTray(options).update([&](TrayState &state) {
        card = state.at(from).card;
        if (card.empty())
            throw std::runtime_error("nothing lies in slot " + slot);
        state.take(from);
    });
    printDone(options.json, {{"card", card}, {"slot", slot}});
}

void swipe(const Options &options, std::string card)
{
    Tray tray = openTray(options);
    if (card.empty())
        card = tray.state()->at(Slot::Stripe).card;
    if (card.empty())
        throw std::runtime_error("no stripe lies ready: name the card to swipe");
    drivers::reader::swipe(tray, card);
    printDone(options.json, {{"card", card}});
}

void cyclePower(const Options &options)
{
    std::uint64_t cycles = 0;
    openTray(options).update([&cycles](TrayState &state) {
        state.cyclePower();
        cycles = state.powerCycles;
    });
    printDone(options.json, {{"powerCycles", cycles}});
}

void reset(const Options &options)
{
    Tray tray = openTray(options);
    tray.reset();
    printDone(options.json, {{"tray", tray.folder().string()}});
}

CLI::App *addWithCard(CLI::App &app, const char *name, const char *what, std::string &card)
{
    CLI::App *const command = app.add_subcommand(name, what);
    command->add_option("card", card, "The card's id");
    return command;
}

} // namespace

void addSlotCommands(CLI::App &app, const Options &options)
{
    app.add_subcommand("status", "Show what lies where, the counters and the rates")->callback([&options] {
        status(options);
    });

    const auto putCard = std::make_shared<std::string>();
    const auto putSlot = std::make_shared<std::string>();
    CLI::App *const putCommand = addWithCard(app, "put", "Put a card into a slot", *putCard);
    putCommand->get_option("card")->required();
    putCommand->add_option("slot", *putSlot, "The slot (else where a card of its kind usually goes)");
    putCommand->callback([=, &options] { put(options, *putCard, *putSlot); });

    const auto takenSlot = std::make_shared<std::string>();
    CLI::App *const takeCommand = app.add_subcommand("take", "Take the card out of a slot");
    takeCommand->add_option("slot", *takenSlot, "The slot")->required();
    takeCommand->callback([=, &options] { take(options, *takenSlot); });

    const auto swiped = std::make_shared<std::string>();
    addWithCard(app, "swipe", "Swipe a card (else the one that lies ready)", *swiped)->callback([=, &options] {
        swipe(options, *swiped);
    });

    app.add_subcommand("power", "Take the reader's power away and give it back")->callback([&options] {
        cyclePower(options);
    });
    app.add_subcommand("reset", "Lay the tray out anew from the sample deck; other cards are lost")
        ->callback([&options] { reset(options); });
}

} // namespace tray_tool
