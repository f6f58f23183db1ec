// unifold-tray: what lies in the virtual reader, from the command line.
#include "tools/tray/command.h"
#include "tools/tray/output.h"

#include <exception>
#include <iostream>

namespace {

// Exit codes; the man page lists them.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int reportFailure(const std::string &text, bool json)
{
    std::cerr << "unifold-tray: " << text << '\n';
    if (json)
        tray_tool::printJson({{"error", text}});
    return kFailed;
}

int run(int argc, char **argv)
{
    tray_tool::Options options;
    CLI::App app("Acts on the tray of the virtual reader: what lies in its slots, and what the cards hold.",
                 "unifold-tray");
    app.set_version_flag("--version", "unifold-tray " UNIFOLD_VERSION);
    app.add_option("--tray", options.folder,
                   "Folder of the tray (else $UNIFOLD_TRAY, else unifold-bench/tray in the XDG data directory)")
        ->type_name("DIR");
    app.add_flag("--json", options.json, "Print JSON");
    app.require_subcommand(1);
    app.fallthrough(); // lets --json and --tray stand behind the command too
    app.footer("Slots: contact, antenna, psam1 to psam4, id, stripe.\n"
               "Exit code: 0 done, 1 refused or failed, 2 wrong usage.");

    tray_tool::addSlotCommands(app, options);
    tray_tool::addDeckCommands(app, options);
    tray_tool::addDumpCommands(app, options);
    tray_tool::addFaultCommands(app, options);
    tray_tool::addServeCommand(app, options);

    try {
        app.parse(argc, argv);
        tray_tool::finishOutput();
        return kDone;
    } catch (const CLI::ParseError &error) {
        // Help and the version come this way too.
        if (app.exit(error) != 0) {
            if (options.json)
                tray_tool::printJson({{"error", error.what()}});
            return kWrongUsage;
        }
        return std::cout.flush() ? kDone : reportFailure("standard output cannot be written", false);
    } catch (const std::exception &error) {
        return reportFailure(error.what(), options.json);
    }
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (...) {
        return kFailed;
    }
}
