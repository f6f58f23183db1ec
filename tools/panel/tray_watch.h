// What the panel shows of a tray, followed while other programs change it, and what the panel changes in it.
#pragma once

#include "drivers/virtual/tray/tray.h"

#include <QFileSystemWatcher>
#include <QImage>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tray_panel {

/// What a slot holds. All texts come from files that anyone may have written: show them as plain text.
struct SlotView {
    std::string card; ///< the card's id; empty: nothing lies there
    QString title;    ///< the card's name for people, or why the card cannot be read
    bool broken = false;
    QImage picture; ///< null if nothing lies there
};

/// What the whole window shows.
struct TrayView {
    QString error; ///< why the tray cannot be read; the rest is then what was last seen
    std::array<SlotView, drivers::tray::kAllSlots.size()> contents;
    std::uint64_t beeps = 0;
    std::uint64_t beepMs = 0;
    std::uint64_t swipes = 0;
    bool keyboardMode = false;
    QStringList faults; ///< one line each

    const SlotView &at(drivers::tray::Slot slot) const { return contents[static_cast<std::size_t>(slot)]; }
};

/// A card of the deck as a menu offers it.
struct DeckCard {
    std::string id;
    QString title;
};

class TrayWatch : public QObject {
    Q_OBJECT

public:
    /// Throws nothing for a folder that cannot be used: view().error tells, and it is tried again until it can.
    explicit TrayWatch(std::filesystem::path folder, QObject *parent = nullptr);

    const TrayView &view() const { return m_view; }
    const std::filesystem::path &folder() const { return m_folder; }

    /// The cards that the slot takes, in order of their ids; those that cannot be read are left out. Reports like the
    /// actions below.
    std::vector<DeckCard> fittingCards(drivers::tray::Slot slot);

    // Actions of the person at the reader. Each ends with done(), and shows in view() at once.
    void put(drivers::tray::Slot slot, const std::string &card);
    void take(drivers::tray::Slot slot);
    void swipe(); ///< what lies in the stripe slot
    void clearFaults();

    /// Looks at the files now.
    void refresh();

signals:
    /// view() is another one.
    void changed();

    /// An action is over; the text is empty, or says why nothing was done.
    void done(const QString &failure);

private:
    /// A slot's card and its file, as last read.
    struct Lying {
        std::string card;
        std::optional<drivers::tray::WatchedFile> file;
    };

    bool readTray();
    bool readSlot(drivers::tray::Slot slot, const drivers::tray::TrayState &state);
    void watchFolders();
    void act(const std::function<void(drivers::tray::Tray &)> &action);

    std::filesystem::path m_folder;
    std::unique_ptr<drivers::tray::Tray> m_tray; ///< null until the folder can be opened
    std::shared_ptr<const drivers::tray::TrayState> m_state;
    std::array<Lying, drivers::tray::kAllSlots.size()> m_lying;
    TrayView m_view;
    QFileSystemWatcher m_watcher;
    QTimer m_timer;
};

} // namespace tray_panel
