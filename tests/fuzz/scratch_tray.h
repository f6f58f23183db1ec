// A tray for fuzzing, in a folder of its own that ends with the program.
#pragma once

#include "drivers/virtual/tray/tray.h"

#include <map>
#include <sys/stat.h>

namespace fuzz {

class ScratchTray {
public:
    /// Lays the tray out, and makes it the one that the driver finds.
    ScratchTray();
    ~ScratchTray();
    ScratchTray(const ScratchTray &) = delete;
    ScratchTray &operator=(const ScratchTray &) = delete;

    drivers::tray::Tray &tray() { return *m_tray; }

    /// The folder around the tray, for other files.
    const std::filesystem::path &folder() const { return m_folder; }

    std::filesystem::path stateFile() const { return m_tray->folder() / "tray.json"; }

    /// Puts a text into the place of a file as an editor would, whatever the text is.
    static void overwrite(const std::filesystem::path &file, const std::string &text);

    /// Brings every file that was changed since the layout back to what it was.
    void restore();

private:
    struct Original {
        std::string text;
        struct stat stamp;
    };

    std::filesystem::path m_folder;
    std::unique_ptr<drivers::tray::Tray> m_tray;
    std::map<std::filesystem::path, Original> m_originals;
};

} // namespace fuzz
