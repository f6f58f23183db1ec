// The drawn portrait of an ID card's holder.
#pragma once

#include "drivers/virtual/cards/canvas.h"
#include "drivers/virtual/cards/id_card.h"

namespace drivers::cards {

constexpr int kIdPhotoWidth = 102;
constexpr int kIdPhotoHeight = 126;

/// A number of a text, the same on every machine; what varies in the drawings is taken from it.
std::uint64_t textNumber(const std::string &text);

/// Draws the face on a canvas of the photo's size. It follows the card's portrait parameters and its name fields, so
/// that another name is another face.
void drawPortrait(Canvas &canvas, const IdCard &card);

} // namespace drivers::cards
