// The front and the back of an ID card, drawn from its fields.
#pragma once

#include "drivers/virtual/cards/canvas.h"
#include "drivers/virtual/cards/id_card.h"

namespace drivers::cards {

constexpr int kIdCompositeWidth = 404;
constexpr int kIdCompositeHeight = 257;

/// Both draw on a canvas of the size above.
void drawIdFront(Canvas &canvas, const IdCard &card);
void drawIdBack(Canvas &canvas, const IdCard &card);

} // namespace drivers::cards
