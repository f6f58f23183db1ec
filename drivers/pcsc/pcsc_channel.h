// A card in a PC/SC reader, from power-on to power-off.
#pragma once

#include "drivers/core/card_channel.h"
#include "drivers/pcsc/pcsc_context.h"

#include <chrono>
#include <string>

namespace drivers {

class PcscChannel : public CardChannel {
public:
    /// `context` must outlive the channel.
    PcscChannel(PcscContext &context, std::string readerName);
    ~PcscChannel() override;
    PcscChannel(const PcscChannel &) = delete;
    PcscChannel &operator=(const PcscChannel &) = delete;

    /// How long a call waits for the end of another program's transaction.
    static constexpr std::chrono::milliseconds kTransactionPatience{1000};

    /// Connects to the card, shared with other programs, and gives its answer to reset. A transaction that another
    /// program holds at that moment is waited for by the daemon, however long it takes.
    LONG connect(Bytes &atr);

    /// Cuts the card's power and ends the connection. SCARD_E_SHARING_VIOLATION, and nothing is done, if another
    /// program's transaction goes on for longer than `patience`.
    LONG cutPower(std::chrono::milliseconds patience);

    /// Ends the connection and leaves the card as it is. Never waits.
    void drop();

    bool isConnected() const { return m_connected; }

    /// Asks whether the connection still reaches the card it was made to. One that does not is ended.
    bool isAlive();

    /// kNotPowered unless connected. A card that was pulled out, reset by another program or lost with its reader ends
    /// the connection.
    ReturnCode transmit(const Bytes &command, Bytes &reply) override;

private:
    LONG statusOnceFree(std::chrono::milliseconds patience, Bytes &atr);
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
