// What the tests of the CPU cards share: cards of the sample deck and commands as hexadecimal text.
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "drivers/core/t0_completion.h"
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

/// One exchange with 61xx and 6Cxx completed, as hexadecimal text.
inline std::string askWhole(drivers::cards::CpuCard &card, std::string_view command)
{
    const auto raw = [&](const drivers::Bytes &bytes, drivers::Bytes &reply) {
        reply = card.transmit(bytes);
        return drivers::kSuccess;
    };
    drivers::Bytes reply;
    drivers::completeExchange(raw, hex(command), reply);
    return drivers::toHex(reply);
}

/// The card behind a channel.
class CardInChannel : public drivers::CompletingChannel {
public:
    explicit CardInChannel(drivers::cards::CpuCard &card)
        : CompletingChannel([&card](const drivers::Bytes &bytes, drivers::Bytes &reply) {
              reply = card.transmit(bytes);
              return drivers::kSuccess;
          })
    {
    }
};

} // namespace tests
