// What libtarvozent.so exports.
#include "drivers/core/exports.h"

UNIFOLD_DEFINE_EXPORTS(nullptr)
