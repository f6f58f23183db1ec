// unifold-driver-check: whether a driver library keeps what the contracts of the SDK promise.
#include "app/standard_streams.h"
#include "drivers/core/return_codes.h"
#include "tools/check/checks.h"
#include "tools/check/child_runner.h"
#include "tools/check/interruption.h"
#include "tools/check/picture_folder.h"
#include "tools/check/report.h"

#include <CLI/CLI.hpp>

#include <fnmatch.h>

#include <algorithm>
#include <exception>
#include <iostream>

namespace {

// Exit codes; the man page lists them.
constexpr int kAllFine = 0;
constexpr int kFailures = 1;
constexpr int kWrongUsage = 2; // or nobody learns what was found

struct CommandLine {
    check::Settings settings;
    std::vector<std::string> patterns;
    bool json = false;
    bool list = false;
};

void addOptions(CLI::App &app, CommandLine &line)
{
    constexpr int kLongest = 60000; // what fits the shortest type of a time-out in the contracts
    check::Settings &settings = line.settings;
    app.set_version_flag("--version", "unifold-driver-check " UNIFOLD_VERSION);
    app.add_option("library", settings.library, "The driver library, as the dynamic loader takes it")
        ->type_name("LIBRARY");
    app.add_flag("--json", line.json, "Print JSON");
    app.add_flag("--list", line.list, "List the checks and run none");
    app.add_option("--only", line.patterns, "Run only checks whose names match, such as 'handle.*'; may be repeated")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    app.add_option("--device", settings.device, "The device to open (else the default one, or the first found)")
        ->type_name("NAME");
    app.add_option("--transport", settings.transport, "Open the first device of 1 USB, 2 serial, 3 PC/SC, 4 SDT")
        ->check(CLI::Range(sdk::kTransportUsb, sdk::kTransportSdt));
    app.add_option("--baud", settings.baud, "Bit rate of a serial device")->check(CLI::PositiveNumber);
    app.add_option_function<int>(
           "--slot", [&settings](int slot) { settings.slot = static_cast<std::uint8_t>(slot); },
           "Slot code of the card calls, such as 0 (contact, the default) or 0xFF (contactless)")
        ->check(CLI::Range(0, 0xFF));
    app.add_option("--timeout", settings.timeoutMs, "Time-out of calls that wait, in milliseconds")
        ->check(CLI::Range(0, kLongest));
    app.add_option("--slack", settings.slackMs, "How many milliseconds later than that they may return")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--watchdog", settings.watchdogMs, "A check that takes longer, in milliseconds, hangs")
        ->check(CLI::PositiveNumber);
    app.add_flag("--allow-writes", settings.allowWrites, "Change the card and the reader");
    app.add_flag("--our-codes", settings.ourCodes, "Hold the return codes against the table of our own libraries");
    app.add_option("--not-supported", settings.notSupportedCode, "The library's code for \"not supported\"")
        ->type_name("CODE");
    app.add_flag("--verbose", settings.verbose, "Let the library's own output through, to standard error");
    app.footer("By default nothing on a card or a reader is changed.\n"
               "Exit code: 0 nothing failed, 1 failures, 2 wrong usage.");
}

bool isChosen(const check::Check &check, const std::vector<std::string> &patterns)
{
    return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), [&check](const std::string &pattern) {
               return fnmatch(pattern.c_str(), check.name.c_str(), 0) == 0;
           });
}

std::vector<check::Check> chosenChecks(const std::vector<std::string> &patterns)
{
    std::vector<check::Check> chosen;
    for (check::Check &check : check::allChecks()) {
        if (isChosen(check, patterns))
            chosen.push_back(std::move(check));
    }
    return chosen;
}

check::ChildResult runCheck(const check::Check &check, const check::Settings &settings)
{
    return check::runInChild([&] { return check.run(settings); }, settings.watchdogMs, settings.verbose);
}

/// A library that does not load fails, whatever was asked for.
void addFailingLoad(std::vector<check::Check> &checks, const check::Settings &settings)
{
    const check::Check load = check::allChecks().front();
    if (checks.front().name != load.name && runCheck(load, settings).outcome.verdict == check::Verdict::Fail)
        checks.insert(checks.begin(), load);
}

std::vector<check::Row> runChecks(const std::vector<check::Check> &checks, const CommandLine &line)
{
    const check::PictureFolder pictures;
    std::size_t width = 0;
    for (const check::Check &check : checks)
        width = std::max(width, check.name.size());
    std::vector<check::Row> rows;
    for (const check::Check &check : checks) {
        rows.push_back({check.name, runCheck(check, line.settings)});
        if (check::isInterrupted())
            break;
        if (!line.json)
            check::printRow(rows.back(), width);
    }
    return rows;
}

int checkLibrary(CommandLine &line)
{
    std::vector<check::Check> checks = chosenChecks(line.patterns);
    if (checks.empty()) {
        std::cerr << "unifold-driver-check: no check has such a name; --list shows them\n";
        return kWrongUsage;
    }
    if (line.list) {
        check::printList(checks, line.json);
        return kAllFine;
    }
    if (line.settings.library.empty()) {
        std::cerr << "unifold-driver-check: which library?\n";
        return kWrongUsage;
    }
    if (line.settings.ourCodes && !line.settings.notSupportedCode)
        line.settings.notSupportedCode = drivers::kNotSupported;
    addFailingLoad(checks, line.settings);
    const std::vector<check::Row> rows = runChecks(checks, line);
    check::endIfInterrupted();
    if (line.json)
        check::printJson(line.settings.library, rows);
    else
        check::printSummary(rows);
    return check::hasFailure(rows) ? kFailures : kAllFine;
}

/// A list or a result that is lost must not look like one that was written.
int unlessLost(int exitCode)
{
    if (std::cout.flush())
        return exitCode;
    std::cerr << "unifold-driver-check: standard output cannot be written\n";
    return kWrongUsage;
}

int run(int argc, char **argv)
{
    CommandLine line;
    CLI::App app(
        "Checks what the contracts of the SDK promise of a driver library, each check in a process of its own.",
        "unifold-driver-check");
    app.option_defaults()->always_capture_default();
    addOptions(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? unlessLost(kAllFine) : kWrongUsage;
    }
    return unlessLost(checkLibrary(line));
}

} // namespace

int main(int argc, char **argv)
{
    keepStandardStreams();
    check::deferInterruption();
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::cerr << "unifold-driver-check: " << error.what() << '\n';
        return kWrongUsage;
    } catch (...) {
        return kWrongUsage;
    }
}
