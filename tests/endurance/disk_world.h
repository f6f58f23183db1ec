// A tray on a small disk.
#pragma once

#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/tray/tray.h"
#include "tests/endurance/small_disk.h"

#include <QTemporaryDir>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>

namespace endurance {

/// The driver finds the tray, as long as this lives.
class DiskWorld {
public:
    DiskWorld() : m_disk(m_folder.path().toStdString())
    {
        qputenv(drivers::tray::kTrayVariable, trayFolder().c_str());
        m_tray = std::make_unique<drivers::tray::Tray>(trayFolder());
    }
    ~DiskWorld() { qunsetenv(drivers::tray::kTrayVariable); }
    DiskWorld(const DiskWorld &) = delete;
    DiskWorld &operator=(const DiskWorld &) = delete;

    const SmallDisk &disk() const { return m_disk; }
    drivers::tray::Tray &tray() { return *m_tray; }
    std::filesystem::path trayFolder() const { return m_disk.folder() / "tray"; }

    /// Every file of the tray with its text, those that lie there by mistake too.
    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> texts;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(trayFolder())) {
            std::ifstream file(entry.path(), std::ios::binary);
            if (entry.is_regular_file())
                texts[entry.path()] = {std::istreambuf_iterator<char>(file), {}};
        }
        return texts;
    }

private:
    QTemporaryDir m_folder;
    SmallDisk m_disk;
    std::unique_ptr<drivers::tray::Tray> m_tray;
};

} // namespace endurance
