// Input: the text of a card file.
#include "drivers/virtual/cards/cpu_card.h"
#include "drivers/virtual/cards/id_card.h"
#include "drivers/virtual/cards/mifare_card.h"
#include "drivers/virtual/cards/stripe_card.h"
#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/tray/schema_check.h"
#include "tests/fuzz/require.h"

#include <stdexcept>

using namespace drivers;
using fuzz::require;
using nlohmann::json;

namespace {

constexpr char kFile[] = "card.json";

void use(cards::CpuCard &card)
{
    const std::vector<Bytes> commands = {
        {0x00, 0xA4, 0x00, 0x00, 0x02, 0x3F, 0x00, 0x00},
        {0x00, 0xA4, 0x04, 0x00, 0x05, 0xA0, 0x00, 0x00, 0x03, 0x33, 0x00},
        {0x80, 0xA8, 0x00, 0x00, 0x02, 0x83, 0x00, 0x00},
        {0x00, 0xB0, 0x81, 0x00, 0x00},
        {0x00, 0xB2, 0x01, 0x0C, 0x00},
        {0x00, 0x20, 0x00, 0x01, 0x02, 0x12, 0x34},
    };
    for (const Bytes &command : commands)
        require(card.transmit(command).size() >= 2, "a reply has a status word");
}

void use(cards::MifareCard &card)
{
    Block16 block{};
    card.authenticate(1, 'A', {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
    card.read(4, block);
    card.increment(4, 1);
}

void use(const cards::StripeCard &card)
{
    for (std::size_t i = 0; i < card.tracks().size(); ++i)
        require(card.tracks().at(i).size() <= cards::trackCapacity(static_cast<int>(i) + 1), "a track fits its stripe");
}

void use(const cards::IdCard &card)
{
    require(card.info(cards::kIdOptionText, '|').size() <= cards::kIdInfoBytes, "the fields fit the caller's buffer");
    require(card.extra(cards::kIdOptionFingerprint).size() < 2048, "the template fits the caller's buffer");
    card.moduleReply(0x20, 0x01);
}

/// Makes a card of a text that no schema has looked at; anything but a card or std::runtime_error ends the program.
template <class Card>
bool make(const json &description)
{
    try {
        Card card(description);
        use(card);
        return true;
    } catch (const std::runtime_error &) {
        return false;
    }
}

bool makeByKind(const json &description, const std::string &kind)
{
    if (kind == "cpu")
        return make<cards::CpuCard>(description);
    if (kind == "mifare")
        return make<cards::MifareCard>(description);
    if (kind == "stripe")
        return make<cards::StripeCard>(description);
    return kind == "id" && make<cards::IdCard>(description);
}

bool passes(const json &description)
{
    try {
        reader::checkModel(description, kFile);
        return true;
    } catch (const tray::TrayError &) {
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    json description;
    try {
        description = tray::parseJson({data, data + size}, kFile, tray::TrayError::Subject::Card);
    } catch (const tray::TrayError &) {
        return 0;
    }
    const auto kind = description.is_object() ? description.find("kind") : description.end();
    const bool named = kind != description.end() && kind->is_string();
    const bool made = named && makeByKind(description, kind->get<std::string>());
    require(made || !passes(description), "a card that passes its check can be made");
    return 0;
}
