// The slots of CPU cards as one open device sees them: contact, antenna and the four PSAM slots.
#pragma once

#include "drivers/core/card_channel.h"
#include "drivers/virtual/cards/cpu_card.h"
#include "drivers/virtual/reader/connection.h"
#include "drivers/virtual/reader/held_card.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace drivers::reader {

/// What a device powered on is powered for that device alone: each has its own selection of files, while what a card
/// keeps (files, counters, PIN tries) is one for all. A card that another program changed is met as if just reset.
/// All methods may be called from several threads; slot codes are those of sdk/contracts.h.
class CpuSlots {
public:
    using Job = std::function<ReturnCode(CardChannel &)>;

    explicit CpuSlots(Connection &connection) : m_connection(connection) {}

    /// A CardStatus, or a code below 0.
    int status(std::uint8_t slotCode);

    /// Waits for a card and powers it on, again if it is powered already. kCardError for a card without an answer to
    /// reset, such as a Mifare card on the antenna.
    ReturnCode powerOn(std::uint8_t slotCode, std::chrono::milliseconds timeout, Bytes &atr);

    /// A card that is not powered stays so.
    ReturnCode powerOff(std::uint8_t slotCode);

    /// Runs a job on the powered card, while no other program or thread uses any card.
    ReturnCode exchange(std::uint8_t slotCode, const Job &job);

    /// The same on a card that need not be powered: it is waited for and powered for the job.
    ReturnCode runApplication(std::uint8_t slotCode, std::chrono::milliseconds timeout, const Job &job);

private:
    struct PoweredCard {
        std::uint64_t inserted;
        std::uint64_t powerCycles;
        HeldCard<cards::CpuCard> card;
    };
    class Channel;

    std::optional<tray::Slot> resolve(std::uint8_t slotCode, const tray::TrayState &state) const;
    ReturnCode checkPowered(tray::Slot slot, const tray::TrayState &state);
    std::optional<ReturnCode> tryPowerOn(std::uint8_t slotCode, Bytes &atr);
    ReturnCode exchangeLocked(std::uint8_t slotCode, const Job &job);

    Connection &m_connection;
    std::mutex m_mutex; ///< guards the rest; not held while waiting
    std::map<tray::Slot, PoweredCard> m_powered;
};

} // namespace drivers::reader
