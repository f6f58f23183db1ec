// The simulated cards. Input: which card, then command APDUs; an empty one resets the card.
#include "drivers/virtual/cards/cpu_card.h"
#include "drivers/virtual/cards/storage_card.h"
#include "drivers/virtual/tray/embedded_files.h"
#include "drivers/virtual/tray/schema_check.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/require.h"

#include <array>

using namespace drivers;
using fuzz::Input;
using fuzz::require;
using nlohmann::json;

namespace {

constexpr std::array<std::string_view, 5> kCards = {"file-card.json", "social-security-and-bank-card.json",
                                                    "contactless-bank-card.json", "psam-1.json", "mifare-wallet.json"};

std::vector<json> loadCards()
{
    std::vector<json> cards;
    for (const std::string_view name : kCards) {
        for (const tray::EmbeddedFile &file : tray::embeddedDeck()) {
            if (file.name == name)
                cards.push_back(json::parse(file.text));
        }
    }
    require(cards.size() == kCards.size(), "the deck has the cards");
    return cards;
}

/// What a card that was changed writes down is a card again, and the same one.
template <class Card>
void checkDescription(const Card &card)
{
    if (!card.changed())
        return;
    const json description = card.description();
    tray::checkCard(description, "changed card");
    require(Card(description).description() == description, "a card's description makes the same card");
}

template <class Card>
void play(const json &description, Input &input)
{
    Card card(description);
    while (!input.atEnd()) {
        const Bytes command = input.bytes();
        if (command.empty()) {
            card.reset();
            continue;
        }
        const Bytes reply = card.transmit(command);
        require(reply.size() >= 2 && reply.size() <= 256 + 2, "a reply is short data and a status word");
    }
    checkDescription(card);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::vector<json> cards = loadCards();
    Input input(data, size);
    const json &description = cards.at(input.byte() % cards.size());
    if (description.at("kind") == "mifare")
        play<cards::StorageCard>(description, input);
    else
        play<cards::CpuCard>(description, input);
    return 0;
}
