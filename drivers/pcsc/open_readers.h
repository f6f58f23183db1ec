// What the library holds between calls.
#pragma once

#include "drivers/core/handles.h"
#include "drivers/pcsc/pcsc_reader.h"

namespace drivers {

/// The readers that vek_open opened.
HandleTable<PcscReader> &openReaders();

} // namespace drivers
