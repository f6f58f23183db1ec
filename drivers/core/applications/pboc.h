// The host side of a PBOC debit/credit application.
#pragma once

#include <string>
#include <string_view>

#include "drivers/core/card_channel.h"

namespace drivers {

/// Reads the data elements that `tags` names, one letter each (drivers/core/applications/pboc_letters.h), in the order
/// asked for.
/// @param aid     the application's identifier or a leading part of it, 10 to 32 hexadecimal digits
/// @param result  for each letter the letter, three decimal digits of length and the value; an element that the card
///                does not have has length 000. Empty on any code but kSuccess.
/// @return kBadArgument for a bad identifier, an empty tag list or an unknown letter; kCardError when the card refuses
///         or its answers cannot be understood.
ReturnCode readCardInfo(CardChannel &channel, std::string_view aid, std::string_view tags, std::string &result);

/// Asks the card for an application cryptogram that sends the transaction online (ARQC).
/// @param transactionData fields of one letter, three decimal digits of length and the value, each letter at most once
/// @param result          the cryptogram and what an issuer needs to check it, in the same form
/// @return as readCardInfo; kBadArgument also for malformed transaction data, kCardError when the card declines.
ReturnCode makeArqc(CardChannel &channel, std::string_view aid, std::string_view transactionData, std::string &result);

} // namespace drivers
