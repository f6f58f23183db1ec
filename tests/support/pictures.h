// Picture files as a driver may leave them, made without any picture library.
#pragma once

#include <string>

/// A sound baseline JPEG file: one even grey, `width` by `height` pixels (each at most 65535). It takes a quarter of a
/// byte for 64 pixels, so that huge ones are cheap to write.
std::string greyJpeg(unsigned width, unsigned height);
