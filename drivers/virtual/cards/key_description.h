// Keys in a card's description.
#pragma once

#include "drivers/virtual/cards/cryptogram.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

/// "3DES" or "SM4".
inline Algorithm loadAlgorithm(const JsonNode &node)
{
    const std::string word = node.text();
    if (word == "3DES")
        return Algorithm::kTripleDes;
    if (word != "SM4")
        node.fail("must be \"3DES\" or \"SM4\"");
    return Algorithm::kSm4;
}

} // namespace drivers::cards
