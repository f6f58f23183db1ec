// The resident ID card module and the card on its plate, as one open device sees them.
#pragma once

#include "drivers/virtual/cards/id_card.h"
#include "drivers/virtual/reader/connection.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>

namespace drivers::reader {

/// The option of reading that asks for the card as it is now.
constexpr std::uint32_t kReadAgain = 0x10;

/// All methods may be called from several threads; those with a time-out wait for a card on the plate.
class IdModule {
public:
    explicit IdModule(Connection &connection) : m_connection(connection) {}

    /// Reads the card. Without kReadAgain a card that this device has read before, and that stayed on the plate, is
    /// shown as it was then.
    ReturnCode read(std::uint32_t options, std::chrono::milliseconds timeout,
                    std::shared_ptr<const cards::IdCard> &card);

    /// The card for the commands that look at it without reading it.
    ReturnCode find(std::chrono::milliseconds timeout, std::shared_ptr<const cards::IdCard> &card);

    /// The number of the module itself; needs no card.
    ReturnCode samId(std::string &text);

private:
    ReturnCode wait(std::uint32_t options, std::chrono::milliseconds timeout,
                    std::shared_ptr<const cards::IdCard> &card);

    Connection &m_connection;
    std::mutex m_mutex; ///< guards the two below; not held while waiting
    std::uint64_t m_inserted = 0;
    std::shared_ptr<const cards::IdCard> m_lastRead;
};

} // namespace drivers::reader
