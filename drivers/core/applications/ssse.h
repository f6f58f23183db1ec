// The host side of the social security card: the issuer's and the holder's data, read item by item.
#pragma once

#include <string>

#include "drivers/core/card_channel.h"

namespace drivers {

/// Reads the issuer's data (EF05) as seven fields joined by "|": identification code (hexadecimal), card type,
/// version, initialising body (hexadecimal), date of issue, date of expiry (YYYYMMDD), card number.
///
/// Holds for both calls: an item that the card does not have is an empty field. A field never contains a control byte
/// or "|", not even as the second byte of a GBK character: each such byte or character becomes "?". kCardError when
/// the card has no social security application, or answers with something that is not an item.
ReturnCode readIssuerInfo(CardChannel &channel, std::string &record);

/// Reads the holder's data (EF06) as seven fields joined by "|": social security number, name (GBK), name extension
/// (GBK), sex, ethnic group (two digits), birthplace (six digits), date of birth (YYYYMMDD).
ReturnCode readHolderInfo(CardChannel &channel, std::string &record);

} // namespace drivers
