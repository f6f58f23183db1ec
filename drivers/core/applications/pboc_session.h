// One run through a PBOC debit/credit application: SELECT, GET PROCESSING OPTIONS, records, GENERATE AC.
#pragma once

#include <cstdint>

#include "drivers/core/ber_tlv.h"
#include "drivers/core/card_channel.h"

namespace drivers::pboc {

/// The steps are to be called in the order in which they stand here. They keep to EMV's rules for what a card may
/// answer; an answer outside of them is kCardError. The number of commands sent is bounded, whatever the card says.
class Session {
public:
    explicit Session(CardChannel &channel);

    /// Elements of the transaction that the card's lists may ask for.
    void provide(const TlvMap &elements);

    /// Selects the first application whose name begins with `aid`.
    ReturnCode select(const Bytes &aid);

    /// GET PROCESSING OPTIONS with what the card's PDOL asks for.
    ReturnCode start();

    /// Reads the records that the application file locator names.
    ReturnCode readRecords();

    /// GET DATA. An element that the card does not have, or does not give away, is no error.
    ReturnCode getData(std::uint32_t tag);

    /// GENERATE AC for an online cryptogram over what CDOL1 asks for.
    ReturnCode generateArqc();

    /// An element of the card's or of the transaction's; null if there is none.
    const Bytes *element(std::uint32_t tag) const;

private:
    ReturnCode send(const Bytes &command, Bytes &data);
    ReturnCode readRecord(std::uint8_t shortIdentifier, std::uint8_t number);
    std::optional<Bytes> fillDol(const Bytes &dol) const;

    CardChannel &m_channel;
    TlvMap m_terminal; ///< what the terminal knows; wins over the card's elements
    TlvMap m_card;
    Bytes m_locator;
};

} // namespace drivers::pboc
