// A Mifare Classic card as a PC/SC reader shows it: a storage card with an answer to reset that the reader makes up and
// pseudo-APDUs of class FF, the value operations of all reader families among them.
#pragma once

#include "drivers/core/bytes.h"
#include "drivers/virtual/cards/mifare_card.h"

#include <map>

namespace drivers::cards {

class StorageCard {
public:
    /// Takes what MifareCard takes, and throws as it does.
    explicit StorageCard(const nlohmann::json &description) : m_card(description) {}

    nlohmann::json description() const { return m_card.description(); }
    bool changed() const { return m_card.changed(); }

    /// That of a Mifare Classic 1K.
    static Bytes atr();

    /// The card is found anew. The keys stay: they are in the reader's memory.
    void reset() { m_card.select(); }

    /// One command and its reply, data and SW1 SW2. Never throws for what is in the command.
    Bytes transmit(const Bytes &command);

private:
    MifareCard m_card;
    std::map<std::uint8_t, SectorKey> m_keys; ///< volatile key memory, by key number
};

} // namespace drivers::cards
