// What the tools need of cards of any kind.
#pragma once

#include "drivers/virtual/tray/tray.h"

#include <nlohmann/json.hpp>
#include <string>

namespace drivers::reader {

/// The card's name for people, in the language ("en" or "zh") if it has one for each; empty if it has none. `card` has
/// passed its schema.
std::string cardLabel(const nlohmann::json &card, const std::string &language = "en");

/// Checks a card against its schema and against all that a schema cannot say. Throws tray::TrayError naming `file`,
/// the place and the reason.
void checkModel(const nlohmann::json &card, const std::string &file);

/// Swipes a card of the deck: records what its stripe holds at this moment. Throws tray::TrayError.
void swipe(tray::Tray &tray, const std::string &card);

} // namespace drivers::reader
