// The commands of unifold-tray. Each add...() function hangs its commands into the command line; a command acts when
// the line has been parsed, and throws a std::exception whose text is for the user.
#pragma once

#include "drivers/virtual/tray/tray.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

namespace tray_tool {

/// The options that stand before every command.
struct Options {
    std::string folder; ///< empty: where the driver looks
    bool json = false;
};

inline drivers::tray::Tray openTray(const Options &options)
{
    return drivers::tray::Tray(options.folder.empty() ? drivers::tray::trayFolder()
                                                      : std::filesystem::path(options.folder));
}

/// list, show, set, add, remove
void addDeckCommands(CLI::App &app, const Options &options);

/// status, put, take, swipe, power, reset
void addSlotCommands(CLI::App &app, const Options &options);

/// import, export
void addDumpCommands(CLI::App &app, const Options &options);

/// fault add, fault list, fault clear
void addFaultCommands(CLI::App &app, const Options &options);

/// serve
void addServeCommand(CLI::App &app, const Options &options);

} // namespace tray_tool
