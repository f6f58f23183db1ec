// A card under T=0 does not give its data at once: it answers 61xx ("xx bytes are waiting") or 6Cxx ("ask again for
// xx bytes"). The completion asks until the whole reply is there. Cards under T=1 hardly ever answer so, and then the
// same treatment is right.
#pragma once

#include <functional>
#include <utility>

#include "drivers/core/card_channel.h"

namespace drivers {

/// One exchange with the card as it stands, without completion.
using RawExchange = std::function<ReturnCode(const Bytes &command, Bytes &reply)>;

/// Sends a command and completes its reply. A card that promises data for ever, or answers less than a status word, is
/// kCardError. On any code but kSuccess `reply` is empty.
ReturnCode completeExchange(const RawExchange &exchange, const Bytes &command, Bytes &reply);

/// A card channel out of a raw exchange.
class CompletingChannel : public CardChannel {
public:
    explicit CompletingChannel(RawExchange exchange) : m_exchange(std::move(exchange)) {}

    ReturnCode transmit(const Bytes &command, Bytes &reply) override
    {
        return completeExchange(m_exchange, command, reply);
    }

private:
    RawExchange m_exchange;
};

} // namespace drivers
