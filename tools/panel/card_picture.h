// Pictures of cards. All are kCardWidth x kCardHeight pixels.
#pragma once

#include "drivers/virtual/tray/tray_state.h"

#include <QImage>

#include <nlohmann/json.hpp>

namespace tray_panel {

constexpr int kCardWidth = 404;
constexpr int kCardHeight = 257;

/// The card's face, from a description that has passed its schema. ID cards look like what a reading of them shows;
/// the others are drawn after their kind. Throws std::exception for a description that makes no card.
QImage cardPicture(const nlohmann::json &card);

/// For a card whose file cannot be read.
QImage brokenCardPicture();

/// The slot without a card.
QImage emptySlotPicture(drivers::tray::Slot slot);

} // namespace tray_panel
