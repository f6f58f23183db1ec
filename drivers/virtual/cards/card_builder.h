// Makes the files and applications of a card out of its description.
#pragma once

#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

/// Fills the master file. Throws std::runtime_error with the place.
void buildCard(const JsonNode &description, Directory &master, Revision &revision);

/// Writes what changed back into the description that buildCard read.
void saveCard(Directory &master, nlohmann::json &description);

} // namespace drivers::cards
