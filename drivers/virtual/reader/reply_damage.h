// What a bad line does to replies.
#pragma once

#include "drivers/core/exported_call.h"
#include "drivers/virtual/tray/fault.h"

namespace drivers::reader {

/// Cuts or inverts every text or byte reply of a call that succeeded. Faults of other kinds do nothing. Stays within
/// what the driver wrote.
void damageReplies(const tray::Fault &fault, const Call &call);

} // namespace drivers::reader
