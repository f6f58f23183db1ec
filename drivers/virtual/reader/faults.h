// Faults: how they get into the tray, and what they do to calls and cards.
#pragma once

#include "drivers/core/exported_call.h"
#include "drivers/core/return_codes.h"
#include "drivers/virtual/tray/tray.h"

#include <functional>

namespace drivers::reader {

/// Adds a fault to the tray and returns its id; `fault.id` and `fault.seen` do not count. Throws std::runtime_error
/// with the reason for a fault that could never strike, such as one of a call that there is not.
std::uint64_t addFault(tray::Tray &tray, tray::Fault fault);

/// Removes a fault, or all of them (id 0). Returns how many there were to remove.
std::size_t clearFaults(tray::Tray &tray, std::uint64_t id = 0);

/// Whether the reader is away at this moment.
bool isUnplugged(const tray::TrayState &state);

/// Counts an exchange with the card in a slot. True if the card goes at this one: it is out of the slot then.
/// `held` is the lock of the tray.
bool losesCard(tray::Tray &tray, const tray::FolderLock &held, tray::Slot slot);

/// Carries a call out with the faults of the tray on it. `wait` lets so many milliseconds go by and returns a code
/// other than kSuccess if the device was closed meanwhile.
std::int64_t callWithFaults(tray::Tray &tray, const Call &call, const std::function<ReturnCode(std::int64_t)> &wait);

} // namespace drivers::reader
