// The cards keep Chinese text in GBK, their descriptions in UTF-8.
#pragma once

#include <optional>
#include <string>

#include "drivers/core/bytes.h"

namespace drivers::cards {

/// Nothing for malformed UTF-8 and for characters that GBK does not have.
std::optional<Bytes> gbkFromUtf8(const std::string &text);

} // namespace drivers::cards
