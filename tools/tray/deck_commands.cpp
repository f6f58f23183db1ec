#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/tray/schema_check.h"
#include "tools/tray/command.h"
#include "tools/tray/output.h"

#include <iostream>
#include <memory>
#include <optional>

namespace tray_tool {

using drivers::tray::FolderLock;
using drivers::tray::Slot;
using drivers::tray::Tray;
using drivers::tray::TrayError;
using drivers::tray::TrayState;
using nlohmann::json;

namespace {

std::string slotOfCard(const TrayState &state, const std::string &id)
{
    for (const Slot slot : drivers::tray::kAllSlots) {
        if (state.at(slot).card == id)
            return std::string(slotName(slot));
    }
    return {};
}

/// One card of the list; a card that cannot be read is listed with the reason.
json describe(const Tray &tray, const TrayState &state, const std::string &id)
{
    json entry = {{"id", id}, {"slot", slotOfCard(state, id)}};
    try {
        const json card = tray.card(id);
        entry["kind"] = card.at("kind");
        entry["label"] = drivers::reader::cardLabel(card);
    } catch (const TrayError &error) {
        entry["error"] = error.what();
    }
    return entry;
}

void list(const Options &options)
{
    Tray tray = openTray(options);
    const auto state = tray.state();
    json cards = json::array();
    for (const std::string &id : tray.cardIds())
        cards.push_back(describe(tray, *state, id));
    if (options.json) {
        printJson(cards);
        return;
    }
    std::vector<std::vector<std::string>> rows = {{"CARD", "KIND", "SLOT", "LABEL"}};
    for (const json &card : cards) {
        rows.push_back({card.at("id"), card.value("kind", "?"), card.at("slot"),
                        card.contains("error") ? card.at("error") : card.at("label")});
    }
    printTable(rows);
}

/// A member's JSON pointer; the leading slash may be left out.
json::json_pointer pointerOf(const std::string &place)
{
    return json::json_pointer(place.empty() || place.front() == '/' ? place : '/' + place);
}

/// What a user types as a value: JSON where it is JSON, and text otherwise. A text member stays text, so that a
/// number or "true" can be typed for it without quotes.
json valueOf(const std::string &text, const json &before)
{
    json value = json::parse(text, nullptr, false);
    const bool staysText = before.is_string() && !value.is_string();
    return value.is_discarded() || staysText ? json(text) : value;
}

/// Whether a value may stand there: at a member's place, known or new, or at the end of a list.
bool isPlace(const json &card, const json::json_pointer &pointer)
{
    if (pointer.empty() || !card.contains(pointer.parent_pointer()))
        return false;
    const json &parent = card.at(pointer.parent_pointer());
    if (!parent.is_array() || card.contains(pointer))
        return parent.is_structured();
    // A list would be filled up with empty members to a place beyond its end.
    return pointer.back() == "-" || pointer.back() == std::to_string(parent.size());
}

void set(const Options &options, const std::string &id, const std::string &place, const std::string &text)
{
    Tray tray = openTray(options);
    const FolderLock held = tray.lock();
    json card = tray.card(id);
    const json::json_pointer pointer = pointerOf(place);
    const json before = card.contains(pointer) ? card.at(pointer) : json();
    if (!isPlace(card, pointer))
        throw std::runtime_error("card " + id + " has no place " + pointer.to_string());
    card[pointer] = valueOf(text, before);
    drivers::reader::checkModel(card, tray.cardFile(id).string());
    tray.saveCard(held, id, card);
    printDone(options.json, {{"card", id}, {"place", pointer.to_string()}, {"value", card.at(pointer)}});
}

void add(const Options &options, const std::string &file, std::string id, bool replace)
{
    if (id.empty())
        id = std::filesystem::path(file).stem().string();
    const json card = drivers::tray::parseJson(readInput(file), inputName(file), TrayError::Subject::Card);
    drivers::reader::checkModel(card, inputName(file));
    Tray tray = openTray(options);
    const FolderLock held = tray.lock();
    if (!replace && std::filesystem::exists(tray.cardFile(id)))
        throw std::runtime_error("there is a card " + id + " already (--replace writes over it)");
    tray.saveCard(held, id, card);
    printDone(options.json, {{"card", id}});
}

void remove(const Options &options, const std::string &id)
{
    openTray(options).removeCard(id);
    printDone(options.json, {{"card", id}});
}

void addSet(CLI::App &app, const Options &options)
{
    struct Arguments {
        std::string card;
        std::string place;
        std::string value;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand("set", "Change a member of a card");
    command->add_option("card", arguments->card, "The card's id")->required();
    command->add_option("place", arguments->place, "Where, as a JSON pointer: /fields/name, /blocks/4")->required();
    command->add_option("value", arguments->value, "JSON, or text as it stands")->required();
    command->callback([=, &options] { set(options, arguments->card, arguments->place, arguments->value); });
}

void addAdd(CLI::App &app, const Options &options)
{
    struct Arguments {
        std::string file;
        std::string id;
        bool replace = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand("add", "Add a card to the deck from a JSON file");
    command->add_option("file", arguments->file, "The card's description; - is standard input")->required();
    command->add_option("--id", arguments->id, "Its id (else the file's name without ending)");
    command->add_flag("--replace", arguments->replace, "Write over a card of the same id");
    command->callback([=, &options] { add(options, arguments->file, arguments->id, arguments->replace); });
}

} // namespace

void addDeckCommands(CLI::App &app, const Options &options)
{
    app.add_subcommand("list", "List the cards of the deck")->callback([&options] { list(options); });

    const auto shown = std::make_shared<std::string>();
    CLI::App *const show = app.add_subcommand("show", "Print a card as JSON");
    show->add_option("card", *shown, "The card's id")->required();
    show->callback([=, &options] { printJson(openTray(options).card(*shown)); });

    addSet(app, options);
    addAdd(app, options);

    const auto removed = std::make_shared<std::string>();
    CLI::App *const removing = app.add_subcommand("remove", "Remove a card from the deck");
    removing->add_option("card", *removed, "The card's id")->required();
    removing->callback([=, &options] { remove(options, *removed); });
}

} // namespace tray_tool
