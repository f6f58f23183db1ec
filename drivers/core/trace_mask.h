// Stars in the place of secrets. What is masked keeps its length.
#pragma once

#include "drivers/core/call_shapes.h"

#include <cstdint>
#include <string>

namespace drivers {

/// A text of a call without its secrets. `block` counts for Secret::Block.
std::string masked(std::string text, Secret secret, std::int64_t block = 0);

} // namespace drivers
