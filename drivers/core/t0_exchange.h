// APDUs over the T=0 protocol, which knows only a header, one length byte and data in one direction (ISO 7816-3).
#pragma once

#include "drivers/core/bytes.h"
#include "drivers/core/return_codes.h"

#include <functional>

namespace drivers {

/// Sends one TPDU to the card and receives its reply, data followed by SW1 SW2.
using RawExchange = std::function<ReturnCode(const Bytes &tpdu, Bytes &reply)>;

/// Sends the command APDU `command` (at least a header) as T=0 wants it and completes the reply: 61xx is followed by
/// GET RESPONSE in the command's own class until the card has given everything, 6Cxx by the same command with that
/// length. `reply` is the merged data and the last SW1 SW2; it is empty on any code but kSuccess. A command of no known
/// shape goes to the card as it stands. kCardError: the card promises data without end or answers without SW1 SW2.
ReturnCode exchangeT0(const RawExchange &raw, const Bytes &command, Bytes &reply);

} // namespace drivers
