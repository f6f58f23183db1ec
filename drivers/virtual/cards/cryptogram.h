// The keys and cryptograms of a PBOC debit/credit application, in both of its algorithms. Pure functions.
// Sizes that the caller must keep to are named; a breach, or a failure of the crypto library, throws
// std::runtime_error.
#pragma once

#include <cstdint>
#include <string_view>

#include "drivers/core/bytes.h"

namespace drivers::cards {

enum class Algorithm { kTripleDes, kSm4 };

/// The 16 bytes of `block` under a 16 byte key, block by block.
Bytes encryptBlocks(Algorithm algorithm, const Bytes &key, const Bytes &block);

/// A key made from a master key and a factor of 8 bytes: the factor and its complement, encrypted.
Bytes diversifyKey(Algorithm algorithm, const Bytes &masterKey, const Bytes &factor);

/// The factor of a card: the right 16 digits of account number and sequence number, padded with 0 on the left.
/// @param pan      decimal digits
/// @param sequence two decimal digits
Bytes cardFactor(std::string_view pan, std::string_view sequence);

/// The key of one transaction, from the card's key and the transaction counter.
Bytes sessionKey(Algorithm algorithm, const Bytes &cardKey, std::uint16_t counter);

/// The 8 byte application cryptogram over `data`, which is padded here (80 00...). 3DES: single DES chaining with a
/// triple last step (ISO 9797-1 algorithm 3); SM4: the left half of the last chained block.
Bytes cryptogram(Algorithm algorithm, const Bytes &sessionKey, const Bytes &data);

/// The issuer's 8 byte answer to a cryptogram.
/// @param request      the card's cryptogram, 8 bytes
/// @param responseCode 2 bytes
Bytes responseCryptogram(Algorithm algorithm, const Bytes &sessionKey, const Bytes &request, const Bytes &responseCode);

/// Unpredictable bytes.
Bytes randomBytes(std::size_t count);

} // namespace drivers::cards
