// A picture in memory.
#pragma once

#include <cstdint>
#include <vector>

namespace drivers::cards {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb; ///< row by row from the top, three bytes a pixel
};

} // namespace drivers::cards
