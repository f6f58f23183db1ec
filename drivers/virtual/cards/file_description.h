// Files and directories out of a card's description, and back into it.
#pragma once

#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

/// Reads "name", "pin", "dataObjects", "files" and "directories" of an object into a directory. Throws with the place.
void loadDirectory(const JsonNode &node, Directory &directory);

/// Reads "pin". `encode` makes the bytes that VERIFY carries out of the text; throws with the place.
Pin loadPin(const JsonNode &node, std::uint8_t reference, const std::function<Bytes(const std::string &)> &encode);

/// Writes what changed in a directory, without those below it, back into the object that it was made from.
void saveDirectory(const Directory &directory, nlohmann::json &object);

/// The two bytes of an identifier, "EF05".
std::uint16_t fileId(const JsonNode &node);

/// A name: hexadecimal under "aid", or text under "name"; empty when neither is there.
Bytes directoryName(const JsonNode &node);

} // namespace drivers::cards
