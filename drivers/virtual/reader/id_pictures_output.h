// The picture files of an ID card reading.
#pragma once

#include "drivers/core/return_codes.h"
#include "drivers/virtual/cards/id_card.h"

#include <cstdint>

namespace drivers::reader {

/// Where a caller wants the pictures; any may be null.
struct PicturePaths {
    const char *photo;
    const char *front;
    const char *back;
};

/// Whether there is a path for every picture that the options ask for.
bool canWritePictures(std::uint32_t options, const PicturePaths &paths);

/// Writes the JPEG files that the options ask for, readable by their owner alone. kTransportFailure for a file that
/// cannot be written.
ReturnCode writePictures(const cards::IdCard &card, std::uint32_t options, const PicturePaths &paths);

} // namespace drivers::reader
