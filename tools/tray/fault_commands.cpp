#include "drivers/core/bytes.h"
#include "drivers/virtual/reader/faults.h"
#include "tools/tray/command.h"
#include "tools/tray/output.h"

#include <iostream>
#include <memory>

namespace tray_tool {

using drivers::tray::Fault;
using drivers::tray::FaultKind;
using drivers::tray::Tray;
using nlohmann::json;

namespace {

constexpr auto kLargestId = static_cast<std::int64_t>(drivers::tray::kMostCount);

/// What stands on the command line of "fault add".
struct Request {
    std::string kind;
    std::string call;
    std::string mask = "FF";
    std::uint64_t after = 0;
    Fault fault;
};

/// Which options a kind understands, besides --from and --times. Another one is a mistake, not an idle word.
void checkOptions(const CLI::App &command, FaultKind kind)
{
    const auto allow = [&](const char *option, FaultKind of, bool required) {
        const bool given = command.get_option(option)->count() != 0;
        const std::string name(faultKindName(kind));
        if (given && kind != of)
            throw std::runtime_error(std::string(option) + " does not go with a fault of the kind " + name);
        if (!given && kind == of && required)
            throw std::runtime_error("a fault of the kind " + name + " needs " + option);
    };
    allow("--code", FaultKind::Code, true);
    allow("--ms", FaultKind::Delay, true);
    allow("--keep", FaultKind::Short, true);
    allow("--offset", FaultKind::Flipped, false);
    allow("--mask", FaultKind::Flipped, false);
    allow("--slot", FaultKind::Removed, true);
    allow("--after", FaultKind::Removed, true);
    for (const char *option : {"--from", "--times"}) {
        if (kind == FaultKind::Removed && command.get_option(option)->count() != 0)
            throw std::runtime_error(std::string(option) + " does not go with a fault of the kind removed");
    }
}

int maskOf(const std::string &text)
{
    const auto bytes = drivers::fromHex(text);
    if (!bytes || bytes->size() != 1)
        throw std::runtime_error("a mask is two hexadecimal digits, not " + text);
    return bytes->front();
}

void add(const Options &options, const CLI::App &command, const Request &request)
{
    const auto kind = drivers::tray::faultKindOfName(request.kind);
    if (!kind)
        throw std::runtime_error("there is no fault of the kind " + request.kind +
                                 " (code, delay, removed, short, flipped, unplugged)");
    checkOptions(command, *kind);
    Fault fault = request.fault;
    fault.kind = *kind;
    fault.call = request.call;
    fault.mask = maskOf(request.mask);
    if (*kind == FaultKind::Removed) {
        fault.from = request.after + 1;
        fault.times = 1;
    }
    Tray tray = openTray(options);
    fault.id = drivers::reader::addFault(tray, fault);
    if (options.json)
        printJson(toJson(fault));
    else
        std::cout << "fault " << fault.id << ": " << describe(fault) << '\n';
}

std::string when(const Fault &fault)
{
    std::string text = "from " + std::to_string(fault.from);
    if (fault.times != 0)
        text += ", " + std::to_string(fault.times) + (fault.times == 1 ? " time" : " times");
    return text;
}

void list(const Options &options)
{
    Tray tray = openTray(options);
    const auto state = tray.state();
    if (options.json) {
        printJson(drivers::tray::toJson(*state).at("faults"));
        return;
    }
    std::vector<std::vector<std::string>> rows = {{"ID", "KIND", "FAULT", "WHEN", "SEEN", "STATE"}};
    for (const Fault &fault : state->faults) {
        rows.push_back({std::to_string(fault.id), std::string(faultKindName(fault.kind)), describe(fault), when(fault),
                        std::to_string(fault.seen), fault.spent() ? "spent" : "armed"});
    }
    printTable(rows);
}

void clear(const Options &options, std::uint64_t id)
{
    Tray tray = openTray(options);
    const std::size_t cleared = drivers::reader::clearFaults(tray, id);
    if (cleared == 0 && id != 0)
        throw std::runtime_error("there is no fault " + std::to_string(id));
    printDone(options.json, {{"cleared", cleared}});
}

void addAddCommand(CLI::App &fault, const Options &options)
{
    const auto request = std::make_shared<Request>();
    CLI::App *const command = fault.add_subcommand("add", "Add a fault");
    command->add_option("kind", request->kind, "code, delay, removed, short, flipped or unplugged")->required();
    command->add_option("call", request->call, "The entry point (code, delay, short, flipped)");
    command->add_option("--code", request->fault.value, "code: what the call returns, without being carried out");
    command->add_option("--ms", request->fault.value, "delay: milliseconds")->type_name("N");
    command->add_option("--keep", request->fault.value, "short: how many bytes of the reply stay")->type_name("N");
    command->add_option("--offset", request->fault.value, "flipped: which byte of the reply, from 0")->type_name("N");
    command->add_option("--mask", request->mask, "flipped: the bits, two hexadecimal digits (else FF)");
    command->add_option("--slot", request->fault.slot, "removed: contact, antenna, psam1 to psam4");
    command->add_option("--after", request->after, "removed: after how many APDUs or Mifare commands");
    command->add_option("--from", request->fault.from, "The first call that is struck (else 1)");
    command->add_option("--times", request->fault.times, "How many calls are struck (else, or 0, all)");
    command->callback([=, &options] { add(options, *command, *request); });
}

} // namespace

void addFaultCommands(CLI::App &app, const Options &options)
{
    CLI::App *const fault = app.add_subcommand("fault", "Make the reader fail: add, list, clear");
    fault->require_subcommand(1);
    addAddCommand(*fault, options);
    fault->add_subcommand("list", "List the faults")->callback([&options] { list(options); });
    const auto id = std::make_shared<std::uint64_t>(0);
    CLI::App *const clearCommand = fault->add_subcommand("clear", "Clear a fault, or all");
    clearCommand->add_option("id", *id, "The fault (else all)")->check(CLI::Range(std::int64_t{1}, kLargestId));
    clearCommand->callback([=, &options] { clear(options, *id); });
}

} // namespace tray_tool
