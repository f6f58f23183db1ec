// What an answer to reset says about the card's protocol (ISO 7816-3).
#pragma once

#include "drivers/core/bytes.h"

namespace drivers::cards {

enum class Protocol { kT0, kT1 };

/// The protocol that a card with this answer to reset speaks. A card that offers T=1 besides T=0 is taken to speak
/// T=1: so do all contactless cards, whose answer to reset the reader makes up and which offers both.
/// Throws std::runtime_error with the reason when the answer is cut off, too long, or its check byte is wrong.
Protocol protocolOfAtr(const Bytes &atr);

} // namespace drivers::cards
