// PC/SC's error codes in our terms.
#pragma once

#include "drivers/core/return_codes.h"

#include <winscard.h>

namespace drivers {

/// The return code of a PC/SC error; kSuccess for SCARD_S_SUCCESS.
ReturnCode returnCodeOf(LONG scard);

/// Whether the daemon behind a context is gone, so that the context and every card handle of it are worth nothing.
bool isServiceLost(LONG scard);

} // namespace drivers
