#include "drivers/virtual/cards/cryptogram.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

namespace drivers::cards {

namespace {

constexpr std::size_t kKeySize = 16;
constexpr std::size_t kHalfKey = 8;
constexpr std::size_t kDesBlock = 8;
constexpr std::size_t kSm4Block = 16;
constexpr std::size_t kCryptogramSize = 8;

void require(bool holds, const char *what)
{
    if (!holds)
        throw std::runtime_error(what);
}

Bytes part(const Bytes &bytes, std::size_t from, std::size_t count)
{
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
    return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

/// Whole blocks through a cipher, without padding, the vector zero.
Bytes runCipher(const EVP_CIPHER *cipher, const Bytes &key, const Bytes &data, bool encrypt)
{
    require(!data.empty(), "nothing to encrypt");
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                  EVP_CIPHER_CTX_free);
    const Bytes zeroVector(EVP_MAX_IV_LENGTH, 0);
    Bytes result(data.size() + EVP_MAX_BLOCK_LENGTH);
    int length = 0;
    int rest = 0;
    const bool done =
        context &&
        EVP_CipherInit_ex(context.get(), cipher, nullptr, key.data(), zeroVector.data(), encrypt ? 1 : 0) == 1 &&
        EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
        EVP_CipherUpdate(context.get(), result.data(), &length, data.data(), static_cast<int>(data.size())) == 1 &&
        EVP_CipherFinal_ex(context.get(), result.data() + length, &rest) == 1;
    require(done, "the cipher failed");
    result.resize(static_cast<std::size_t>(length) + static_cast<std::size_t>(rest));
    return result;
}

/// Single DES is no longer at hand in the crypto library's default provider; EDE with equal halves is the same.
Bytes doubled(const Bytes &half)
{
    Bytes key = half;
    key.insert(key.end(), half.begin(), half.end());
    return key;
}

Bytes padded(Bytes data, std::size_t blockSize)
{
    data.push_back(0x80);
    data.resize((data.size() + blockSize - 1) / blockSize * blockSize, 0x00);
    return data;
}

Bytes retailMac(const Bytes &key, const Bytes &message)
{
    const Bytes left = doubled(part(key, 0, kHalfKey));
    const Bytes right = doubled(part(key, kHalfKey, kHalfKey));
    Bytes last(kDesBlock, 0);
    for (std::size_t i = 0; i < message.size(); i += kDesBlock) {
        for (std::size_t j = 0; j < kDesBlock; ++j)
            last[j] = static_cast<std::uint8_t>(last[j] ^ message[i + j]);
        last = runCipher(EVP_des_ede_ecb(), left, last, true);
    }
    last = runCipher(EVP_des_ede_ecb(), right, last, false);
    return runCipher(EVP_des_ede_ecb(), left, last, true);
}

} // namespace

Bytes encryptBlocks(Algorithm algorithm, const Bytes &key, const Bytes &block)
{
    require(key.size() == kKeySize && block.size() % kDesBlock == 0, "a key or a block has the wrong size");
    return runCipher(algorithm == Algorithm::kSm4 ? EVP_sm4_ecb() : EVP_des_ede_ecb(), key, block, true);
}

Bytes diversifyKey(Algorithm algorithm, const Bytes &masterKey, const Bytes &factor)
{
    require(factor.size() == kHalfKey, "a diversification factor has 8 bytes");
    Bytes block = factor;
    std::transform(factor.begin(), factor.end(), std::back_inserter(block),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    return encryptBlocks(algorithm, masterKey, block);
}

Bytes cardFactor(std::string_view pan, std::string_view sequence)
{
    constexpr std::size_t kDigits = 16;
    std::string digits = std::string(kDigits, '0') + std::string(pan) + std::string(sequence);
    const auto factor = fromHex(digits.substr(digits.size() - kDigits));
    require(factor.has_value(), "an account number has decimal digits only");
    return *factor;
}

Bytes sessionKey(Algorithm algorithm, const Bytes &cardKey, std::uint16_t counter)
{
    const auto high = static_cast<std::uint8_t>(counter >> 8U);
    const auto low = static_cast<std::uint8_t>(counter & 0xFFU);
    Bytes block(kKeySize, 0);
    block[6] = high;
    block[7] = low;
    block[14] = static_cast<std::uint8_t>(~high);
    block[15] = static_cast<std::uint8_t>(~low);
    return encryptBlocks(algorithm, cardKey, block);
}

Bytes cryptogram(Algorithm algorithm, const Bytes &key, const Bytes &data)
{
    require(key.size() == kKeySize, "a session key has 16 bytes");
    if (algorithm == Algorithm::kTripleDes)
        return retailMac(key, padded(data, kDesBlock));
    const Bytes chained = runCipher(EVP_sm4_cbc(), key, padded(data, kSm4Block), true);
    return part(chained, chained.size() - kSm4Block, kCryptogramSize);
}

Bytes responseCryptogram(Algorithm algorithm, const Bytes &key, const Bytes &request, const Bytes &responseCode)
{
    require(request.size() == kCryptogramSize && responseCode.size() == 2, "a cryptogram has 8 bytes, its code 2");
    Bytes block = request;
    block[0] = static_cast<std::uint8_t>(block[0] ^ responseCode[0]);
    block[1] = static_cast<std::uint8_t>(block[1] ^ responseCode[1]);
    if (algorithm == Algorithm::kSm4)
        block.resize(kSm4Block, 0x00);
    return part(encryptBlocks(algorithm, key, block), 0, kCryptogramSize);
}

Bytes randomBytes(std::size_t count)
{
    Bytes bytes(count);
    require(RAND_bytes(bytes.data(), static_cast<int>(count)) == 1, "no random bytes");
    return bytes;
}

} // namespace drivers::cards
