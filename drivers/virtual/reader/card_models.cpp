#include "drivers/virtual/reader/card_models.h"

#include "drivers/virtual/cards/cpu_card.h"
#include "drivers/virtual/cards/id_card.h"
#include "drivers/virtual/cards/mifare_card.h"
#include "drivers/virtual/cards/stripe_card.h"
#include "drivers/virtual/tray/schema_check.h"

namespace drivers::reader {

using tray::TrayError;

std::string cardLabel(const nlohmann::json &card, const std::string &language)
{
    const auto title = card.find("title");
    if (title == card.end())
        return {};
    return title->is_object() ? title->at(language).get<std::string>() : title->get<std::string>();
}

void checkModel(const nlohmann::json &card, const std::string &file)
{
    tray::checkCard(card, file);
    const std::string kind = card.at("kind");
    try {
        if (kind == "cpu")
            cards::CpuCard{card};
        else if (kind == "mifare")
            cards::MifareCard{card};
        else if (kind == "stripe")
            cards::StripeCard{card};
        else if (kind == "id")
            cards::IdCard{card};
    } catch (const std::exception &error) {
        throw TrayError(TrayError::Subject::Card, file + ": " + error.what());
    }
}

void swipe(tray::Tray &tray, const std::string &card)
{
    const tray::FolderLock held = tray.lock();
    const nlohmann::json description = tray.card(card);
    checkModel(description, tray.cardFile(card).string());
    if (description.at("kind") != "stripe")
        throw TrayError(TrayError::Subject::Card, "card " + card + " has no stripe");
    const cards::StripeCard stripe(description);
    tray.update(held, [&](tray::TrayState &state) { state.swipe(card, stripe.tracks()); });
}

} // namespace drivers::reader
