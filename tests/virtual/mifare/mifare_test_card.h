// Mifare cards made for the tests.
#pragma once

#include "drivers/virtual/cards/mifare_card.h"

#include <QtTest>

#include <algorithm>
#include <functional>

namespace mifare_test {

using namespace drivers;
namespace cards = drivers::cards;

constexpr SectorKey kKeyA{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
constexpr SectorKey kKeyB{0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5};

constexpr int kSector = 1;
constexpr int kFirstBlock = 4;
constexpr int kTrailer = 7;

inline Block16 trailerBlock(const AccessBytes &access)
{
    Block16 block{};
    std::copy(kKeyA.begin(), kKeyA.end(), block.begin());
    std::copy(access.begin(), access.end(), block.begin() + kAccessOffset);
    block[kUserByteOffset] = 0x69;
    std::copy(kKeyB.begin(), kKeyB.end(), block.begin() + kKeyBOffset);
    return block;
}

/// Every sector with the keys above and these access bytes; data blocks are zeros.
inline MifareImage imageWithAccess(const AccessBytes &access)
{
    MifareImage image{};
    image[0] = {0x12, 0x34, 0x56, 0x78, 0x08, 0x08, 0x04, 0x00};
    for (int sector = 0; sector < kMifareSectors; ++sector)
        image.at(static_cast<std::size_t>(trailerOfSector(sector))) = trailerBlock(access);
    return image;
}

inline nlohmann::json describe(const MifareImage &image)
{
    return {{"kind", "mifare"}, {"blocks", cards::mifareBlocksToJson(image)}};
}

inline cards::MifareCard transportCard()
{
    return cards::MifareCard(describe(imageWithAccess(kTransportAccess)));
}

} // namespace mifare_test
