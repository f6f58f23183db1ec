// The tray: one folder with the cards of the deck and what lies where. Several programs and threads use it at once.
//
//   tray.json         what lies in the slots and what the reader remembers (TrayState)
//   cards/<id>.json   one card each
//   .lock             what FolderLock lies on
#pragma once

#include "drivers/virtual/tray/file_store.h"
#include "drivers/virtual/tray/tray_error.h"
#include "drivers/virtual/tray/tray_state.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace drivers::tray {

/// The environment variable that names another folder for the tray.
constexpr char kTrayVariable[] = "UNIFOLD_TRAY";

/// Where the tray is: kTrayVariable, or unifold-bench/tray in the XDG data directory. Throws TrayError when neither
/// these nor HOME are set.
std::filesystem::path trayFolder();

/// Whether a text can be a card's id (and so a file name): 1 to 64 of a-z 0-9 . _ -, the first a letter or digit.
bool isCardId(const std::string &id);

/// All methods may be called from several threads and throw TrayError.
class Tray {
public:
    /// Lays the tray out from the sample deck if the folder holds none; cards that are there already stay as they are.
    /// A folder with other things in it is refused and left alone.
    explicit Tray(std::filesystem::path folder);

    const std::filesystem::path &folder() const { return m_folder; }

    /// The present state. Read from disk only when it changed there.
    std::shared_ptr<const TrayState> state();

    /// Keeps every other program and thread from changing the tray. Not recursive.
    FolderLock lock() const;

    /// Changes the state under the lock. If `change` throws, nothing is changed.
    void update(const std::function<void(TrayState &)> &change);
    void update(const FolderLock &held, const std::function<void(TrayState &)> &change);

    /// The ids of all cards, in order. Reads the folder's names, not the cards.
    std::vector<std::string> cardIds() const;

    std::filesystem::path cardFile(const std::string &id) const;

    /// A card of the deck, checked against its schema.
    nlohmann::json card(const std::string &id) const;

    /// The same of a card's file that the caller follows.
    static nlohmann::json readCard(WatchedFile &file);

    /// Writes a card, new or changed, after checking it. `held` is the lock of this tray.
    void saveCard(const FolderLock &held, const std::string &id, const nlohmann::json &card);

    /// Takes a card out of the deck, and out of the slot in which it lies.
    void removeCard(const std::string &id);

    /// Puts a card of the deck into a slot that takes its kind, out of any other in which it lies.
    void put(Slot slot, const std::string &id);

    /// Lays the tray out anew: the sample deck, the first layout, no other cards.
    void reset();

private:
    void layOut();
    void saveSampleCards(const FolderLock &held, bool replace);

    std::filesystem::path m_folder;
    std::mutex m_mutex; ///< guards the two below
    WatchedFile m_file;
    std::shared_ptr<const TrayState> m_state;
};

} // namespace drivers::tray
