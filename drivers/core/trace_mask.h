// Stars in the place of secrets. What is masked keeps its length.
#pragma once

#include "drivers/core/call_shapes.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace drivers {

/// A text of a call without its secrets. `block` counts for Secret::Block.
std::string masked(std::string text, Secret secret, std::int64_t block = 0);

/// A card's answer without its secrets: those of Secret::Answer, or, if `command` is one of a reader's own, what it may
/// have read of a storage card's keys. Both are hexadecimal.
std::string maskedAnswer(std::string_view command, std::string answer);

} // namespace drivers
