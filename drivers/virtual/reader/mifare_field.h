// The antenna as one open device sees it: the Mifare card that it selected, and cards that come and go.
#pragma once

#include "drivers/virtual/cards/mifare_card.h"
#include "drivers/virtual/reader/connection.h"
#include "drivers/virtual/reader/held_card.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace drivers::reader {

/// All methods may be called from several threads.
class MifareField {
public:
    explicit MifareField(Connection &connection) : m_connection(connection) {}

    /// Waits for a Mifare card and selects it. `type` is one character, `uid` hexadecimal digits.
    ReturnCode request(std::chrono::milliseconds timeout, std::string &type, std::string &uid);

    /// Selects the card in the field if none is selected. Every device has an authentication of its own.
    ReturnCode authenticate(int sector, char keyType, const SectorKey &key);

    using Command = std::function<cards::MifareResult(cards::MifareCard &)>;

    /// Runs a command on the card; what it changes is kept before this returns.
    ReturnCode run(const Command &command);

private:
    struct Authentication {
        int sector;
        char keyType;
        SectorKey key;
    };
    struct SelectedCard {
        std::uint64_t inserted;
        std::uint64_t powerCycles;
        HeldCard<cards::MifareCard> card;
        std::optional<Authentication> authentication;
    };

    std::optional<ReturnCode> trySelect();
    ReturnCode checkSelected();
    void refresh();
    ReturnCode perform(const tray::FolderLock &held, const Command &command);

    Connection &m_connection;
    std::mutex m_mutex; ///< guards the rest; not held while waiting
    std::optional<SelectedCard> m_selected;
};

/// Watches the antenna for one open device.
class FieldProbe {
public:
    enum State : std::uint8_t { kNothingNew = 1, kLeft = 2, kCame = 3 };
    // The card types are the selection bytes of ISO/IEC 14443-3.
    enum CardType : std::uint8_t { kNoType = 0x00, kMifareType = 0x08, kCpuType = 0x20 };

    explicit FieldProbe(Connection &connection) : m_connection(connection) {}

    /// What happened since the device was opened or last probed, and what lies there now.
    ReturnCode probe(std::uint8_t &state, std::uint8_t &cardType);

private:
    Connection &m_connection;
    std::mutex m_mutex;
    std::uint64_t m_seen = 0; ///< the insertion seen last; 0: the antenna was empty
};

} // namespace drivers::reader
