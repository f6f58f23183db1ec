// What the tests of the CPU cards share: cards of the sample deck and commands as hexadecimal text.
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "drivers/core/card_channel.h"
#include "drivers/core/t0_exchange.h"
#include "drivers/virtual/cards/cpu_card.h"

namespace tests {

inline drivers::Bytes hex(std::string_view text)
{
    return drivers::fromHex(text).value();
}

/// A card file of the sample deck, by its name without ".json".
inline nlohmann::json deckCard(const std::string &name)
{
    std::ifstream file(std::string(UNIFOLD_DECK) + "/" + name + ".json");
    if (!file)
        throw std::runtime_error("no card " + name);
    return nlohmann::json::parse(file);
}

/// One raw exchange, as hexadecimal text.
inline std::string ask(drivers::cards::CpuCard &card, std::string_view command)
{
    return drivers::toHex(card.transmit(hex(command)));
}

/// The card behind a channel, as a reader has it there.
class CardInChannel : public drivers::CardChannel {
public:
    explicit CardInChannel(drivers::cards::CpuCard &card) : m_card(card) {}

    drivers::ReturnCode transmit(const drivers::Bytes &command, drivers::Bytes &reply) override
    {
        const auto raw = [this](const drivers::Bytes &bytes, drivers::Bytes &answer) {
            answer = m_card.transmit(bytes);
            return drivers::kSuccess;
        };
        return m_card.protocol() == drivers::cards::Protocol::kT0 ? drivers::exchangeT0(raw, command, reply)
                                                                  : raw(command, reply);
    }

private:
    drivers::cards::CpuCard &m_card;
};

/// One exchange with 61xx and 6Cxx of a T=0 card completed, as hexadecimal text.
inline std::string askWhole(drivers::cards::CpuCard &card, std::string_view command)
{
    drivers::Bytes reply;
    CardInChannel(card).transmit(hex(command), reply);
    return drivers::toHex(reply);
}

} // namespace tests
