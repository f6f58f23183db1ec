// The calls of the card applications as they cross the C boundary: every driver checks the same arguments and fills the
// same buffers, whatever carries its card.
#pragma once

#include "drivers/core/card_channel.h"

#include <cstdint>

namespace drivers {

// `run` powers the card on for the job if need be. On any code but kSuccess the output buffers are left as they were.
// Null pointers are kBadArgument, and the card is not asked then.

/// vek_pboc_get_card_info; `result` has sdk::kPbocResultSize bytes. The interface byte is the caller's to fill: no card
/// tells it.
ReturnCode callCardInfo(const RunOnCard &run, const char *aid, const char *tags, const std::uint8_t *interfaceUsed,
                        char *result, std::uint16_t *length);

/// vek_pboc_get_arqc; `transactionData` ends at a NUL or after `transactionDataLength` characters.
ReturnCode callArqc(const RunOnCard &run, const char *aid, const char *transactionData, int transactionDataLength,
                    char *result, std::uint16_t *length);

/// vek_ssse_get_issuer_info and vek_ssse_get_user_info; `record` has sdk::kSsseRecordSize bytes.
ReturnCode callIssuerInfo(const RunOnCard &run, char *record);
ReturnCode callHolderInfo(const RunOnCard &run, char *record);

} // namespace drivers
