#include "drivers/core/mifare/mifare_access.h"

namespace drivers {

namespace {

using Keys = std::uint8_t;
constexpr Keys kNone = 0;
constexpr Keys kA = 1;
constexpr Keys kB = 2;
constexpr Keys kBoth = kA | kB;

// Rows by condition C1 C2 C3; columns: read, write, increment, decrement.
constexpr std::array<std::array<Keys, 4>, 8> kDataKeys{{
    {kBoth, kBoth, kBoth, kBoth},
    {kBoth, kNone, kNone, kBoth},
    {kBoth, kNone, kNone, kNone},
    {kB, kB, kNone, kNone},
    {kBoth, kB, kNone, kNone},
    {kB, kNone, kNone, kNone},
    {kBoth, kB, kB, kBoth},
    {kNone, kNone, kNone, kNone},
}};

// Rows likewise; columns: write key A, read access bits, write access bits, read key B, write key B.
constexpr std::array<std::array<Keys, 5>, 8> kTrailerKeys{{
    {kA, kA, kNone, kA, kA},
    {kA, kA, kA, kA, kA},
    {kNone, kA, kNone, kA, kNone},
    {kB, kBoth, kB, kNone, kB},
    {kB, kBoth, kNone, kNone, kB},
    {kNone, kBoth, kB, kNone, kNone},
    {kNone, kBoth, kNone, kNone, kNone},
    {kNone, kBoth, kNone, kNone, kNone},
}};

bool includes(Keys keys, KeyType key)
{
    return (keys & (key == KeyType::a ? kA : kB)) != 0;
}

unsigned lowNibble(unsigned byte)
{
    return byte & 0x0FU;
}

} // namespace

std::optional<AccessConditions> decodeAccess(const AccessBytes &bytes)
{
    // One nibble a bit name, one bit of the nibble a block: ~C2 ~C1, C1 ~C3, C3 C2.
    const unsigned c1 = bytes[1] >> 4U;
    const unsigned c2 = lowNibble(bytes[2]);
    const unsigned c3 = bytes[2] >> 4U;
    if ((c1 ^ lowNibble(bytes[0])) != 0x0FU || (c2 ^ (bytes[0] >> 4U)) != 0x0FU || (c3 ^ lowNibble(bytes[1])) != 0x0FU)
        return std::nullopt;
    AccessConditions conditions;
    for (unsigned i = 0; i < conditions.block.size(); ++i)
        conditions.block[i] =
            static_cast<std::uint8_t>(((c1 >> i) & 1U) << 2U | ((c2 >> i) & 1U) << 1U | ((c3 >> i) & 1U));
    return conditions;
}

AccessBytes encodeAccess(const AccessConditions &conditions)
{
    unsigned c1 = 0;
    unsigned c2 = 0;
    unsigned c3 = 0;
    for (unsigned i = 0; i < conditions.block.size(); ++i) {
        c1 |= ((conditions.block[i] >> 2U) & 1U) << i;
        c2 |= ((conditions.block[i] >> 1U) & 1U) << i;
        c3 |= (conditions.block[i] & 1U) << i;
    }
    return {static_cast<std::uint8_t>(lowNibble(~c2) << 4U | lowNibble(~c1)),
            static_cast<std::uint8_t>(c1 << 4U | lowNibble(~c3)), static_cast<std::uint8_t>(c3 << 4U | c2)};
}

bool dataRightGranted(std::uint8_t condition, DataRight right, KeyType key)
{
    return includes(kDataKeys.at(condition).at(static_cast<std::size_t>(right)), key);
}

bool trailerRightGranted(std::uint8_t condition, TrailerRight right, KeyType key)
{
    return includes(kTrailerKeys.at(condition).at(static_cast<std::size_t>(right)), key);
}

bool keyBReadable(std::uint8_t trailerCondition)
{
    return trailerRightGranted(trailerCondition, TrailerRight::readKeyB, KeyType::a);
}

} // namespace drivers
