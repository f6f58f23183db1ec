// A social security application: the issuer's and the holder's data as files of items.
#pragma once

#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

/// Makes the application "type": "ssse". Throws std::runtime_error with the place.
void buildSsse(const JsonNode &node, Directory &directory);

} // namespace drivers::cards
