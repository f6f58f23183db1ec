// A simulated ISO 7816-4 card. It sees commands and knows nothing of readers.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>

#include "drivers/core/bytes.h"
#include "drivers/virtual/cards/atr.h"

namespace drivers::cards {

class CpuCard {
public:
    /// Builds the card from its description (the whole JSON object of a card file, "kind": "cpu"). Throws
    /// std::runtime_error with the JSON place on nonsense. The card is as after reset().
    explicit CpuCard(const nlohmann::json &description);
    ~CpuCard();
    CpuCard(const CpuCard &) = delete;
    CpuCard &operator=(const CpuCard &) = delete;

    /// The description with everything that changed (counters, file contents, PIN tries) brought up to date.
    nlohmann::json description() const;

    Bytes atr() const;

    /// What the card speaks, by its answer to reset.
    Protocol protocol() const;

    /// Power on: volatile state is cleared.
    void reset();

    /// One raw exchange as a card sees it: a card under T=0 answers 61xx and 6Cxx and wants GET RESPONSE, a card under
    /// T=1 answers in full. Never throws for what is in the command.
    Bytes transmit(const Bytes &command);

    /// True once anything that outlives the power has changed since construction.
    bool changed() const;

    /// Counts those changes, so that each can be kept as soon as it is made.
    unsigned long revision() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace drivers::cards
