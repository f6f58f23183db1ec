// Pictures as JPEG files.
#pragma once

#include "drivers/virtual/cards/picture.h"

#include <string>

namespace drivers::cards {

/// The bytes of a JPEG file. Throws std::runtime_error if the encoder refuses.
std::vector<std::uint8_t> encodeJpeg(const Picture &picture);

/// Writes a file under a temporary name beside it and then renames it, so that whoever looks at `path` sees the old
/// file or the whole new one. Throws std::runtime_error with the path and the system's reason; nothing is left behind
/// then.
void replaceFile(const std::string &path, const std::vector<std::uint8_t> &content);

} // namespace drivers::cards
