// A card in a PC/SC reader, from power-on to power-off.
#pragma once

#include "drivers/core/card_channel.h"
#include "drivers/pcsc/pcsc_context.h"

#include <string>

namespace drivers {

class PcscChannel : public CardChannel {
public:
    /// `context` must outlive the channel.
    PcscChannel(PcscContext &context, std::string readerName);
    ~PcscChannel() override;
    PcscChannel(const PcscChannel &) = delete;
    PcscChannel &operator=(const PcscChannel &) = delete;

    /// Connects to the card, shared with other programs, and gives its answer to reset.
    LONG connect(Bytes &atr);

    /// Ends the connection; `disposition` is one of SCARD_LEAVE_CARD, SCARD_UNPOWER_CARD...
    LONG disconnect(DWORD disposition);

    bool isConnected() const { return m_connected; }

    /// Asks whether the connection still reaches the card it was made to. One that does not is ended.
    bool isAlive();

    /// kNotPowered unless connected. A card that was pulled out, reset by another program or lost with its reader ends
    /// the connection.
    ReturnCode transmit(const Bytes &command, Bytes &reply) override;

private:
    LONG exchangeRaw(const Bytes &tpdu, Bytes &reply);
    ReturnCode exchangeOnce(const Bytes &tpdu, Bytes &reply);
    LONG reasonOf(LONG failure) const;

    PcscContext &m_context;
    const std::string m_readerName;
    SCARDHANDLE m_card = 0;
    DWORD m_protocol = SCARD_PROTOCOL_UNDEFINED;
    bool m_connected = false;
    Bytes m_buffer;
};

} // namespace drivers
