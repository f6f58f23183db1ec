#include "drivers/virtual/cards/mifare_card.h"
#include "drivers/virtual/cards/mifare_dump.h"
#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/tray/schema_check.h"
#include "tools/tray/command.h"
#include "tools/tray/output.h"

#include <algorithm>
#include <memory>

namespace tray_tool {

using drivers::MifareImage;
using drivers::tray::Tray;
using drivers::tray::TrayError;
using nlohmann::json;

namespace {

struct Arguments {
    std::string card;
    std::string file;
    std::string format;
};

char asciiLower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The format asked for, or the one that the file's ending names; raw where neither does.
std::string formatOf(const Arguments &arguments)
{
    if (!arguments.format.empty())
        return arguments.format;
    std::string ending = std::filesystem::path(arguments.file).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), asciiLower);
    if (ending == ".eml" || ending == ".json")
        return ending.substr(1);
    return "raw";
}

MifareImage importDump(const Arguments &arguments)
{
    const std::string content = readInput(arguments.file);
    const std::string name = inputName(arguments.file);
    const std::string format = formatOf(arguments);
    try {
        if (format == "eml")
            return drivers::cards::importEmlDump(content);
        if (format == "json") {
            return drivers::cards::importJsonDump(drivers::tray::parseJson(content, name, TrayError::Subject::Card));
        }
        return drivers::cards::importRawDump(content);
    } catch (const TrayError &) {
        throw;
    } catch (const std::runtime_error &error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

void importCard(const Options &options, const Arguments &arguments)
{
    const MifareImage image = importDump(arguments);
    Tray tray = openTray(options);
    const drivers::tray::FolderLock held = tray.lock();
    const std::filesystem::path file = tray.cardFile(arguments.card);
    json card = {{"kind", "mifare"}};
    if (std::filesystem::exists(file))
        card = tray.card(arguments.card);
    if (card.at("kind") != "mifare")
        throw std::runtime_error("card " + arguments.card + " is no Mifare card");
    card["blocks"] = drivers::cards::mifareBlocksToJson(image);
    drivers::reader::checkModel(card, inputName(arguments.file)); // what is wrong now is wrong in the dump
    tray.saveCard(held, arguments.card, card);
    printDone(options.json, {{"card", arguments.card}, {"format", formatOf(arguments)}});
}

std::string dumpText(const MifareImage &image, const std::string &format)
{
    if (format == "eml")
        return drivers::cards::exportEmlDump(image);
    if (format == "json")
        return drivers::cards::exportJsonDump(image).dump(2) + '\n';
    return drivers::cards::exportRawDump(image);
}

void exportCard(const Options &options, const Arguments &arguments)
{
    const json card = openTray(options).card(arguments.card);
    if (card.at("kind") != "mifare")
        throw std::runtime_error("card " + arguments.card + " is no Mifare card");
    writeOutput(arguments.file, dumpText(drivers::cards::MifareCard(card).image(), formatOf(arguments)));
    // On standard output the dump is all there is.
    printDone(options.json && arguments.file != "-",
              {{"card", arguments.card}, {"file", arguments.file}, {"format", formatOf(arguments)}});
}

void addDumpCommand(CLI::App &app, const Options &options, const char *name, const char *what,
                    void (*act)(const Options &, const Arguments &))
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(name, what);
    command->add_option("card", arguments->card, "The card's id")->required();
    command->add_option("file", arguments->file, "The dump; - is standard input or output")->required();
    command->add_option("--format", arguments->format, "raw (1024 bytes), eml or json; else by the file's ending")
        ->check(CLI::IsMember({"raw", "eml", "json"}));
    command->callback([=, &options] { act(options, *arguments); });
}

} // namespace

void addDumpCommands(CLI::App &app, const Options &options)
{
    addDumpCommand(app, options, "import", "Read a Mifare dump into a card, new or known", importCard);
    addDumpCommand(app, options, "export", "Write a Mifare card as a dump, keys included", exportCard);
}

} // namespace tray_tool
