// A security module's application: keys that answer INTERNAL AUTHENTICATE.
#pragma once

#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

/// Makes the application "type": "psam", which may have files as well. Throws std::runtime_error with the place.
///
/// INTERNAL AUTHENTICATE 00 88 00 key: with 16 bytes of data, a diversification factor of 8 bytes and a challenge of 8
/// bytes, the answer is the challenge under the key that the factor makes of the module's key (factor and complement,
/// encrypted). With 8 bytes, a challenge alone, it is the challenge under the module's key itself. The keys are 3DES
/// keys of 16 bytes, the answer has 8 bytes. A key that the module does not have is 6A88.
void buildPsam(const JsonNode &node, Directory &directory);

} // namespace drivers::cards
