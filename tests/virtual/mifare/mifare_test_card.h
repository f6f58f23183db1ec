// Mifare cards made for the tests.
#pragma once

#include "drivers/virtual/cards/mifare_card.h"

#include <QtTest>

#include <algorithm>
#include <functional>

namespace mifare_test {

namespace cards = drivers::cards;

constexpr cards::SectorKey kKeyA{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
constexpr cards::SectorKey kKeyB{0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5};

constexpr int kSector = 1;
constexpr int kFirstBlock = 4;
constexpr int kTrailer = 7;

inline cards::Block16 trailerBlock(const cards::AccessBytes &access)
{
    cards::Block16 block{};
    std::copy(kKeyA.begin(), kKeyA.end(), block.begin());
    std::copy(access.begin(), access.end(), block.begin() + cards::kAccessOffset);
    block[cards::kUserByteOffset] = 0x69;
    std::copy(kKeyB.begin(), kKeyB.end(), block.begin() + cards::kKeyBOffset);
    return block;
}

/// Every sector with the keys above and these access bytes; data blocks are zeros.
inline cards::MifareImage imageWithAccess(const cards::AccessBytes &access)
{
    cards::MifareImage image{};
    image[0] = {0x12, 0x34, 0x56, 0x78, 0x08, 0x08, 0x04, 0x00};
    for (int sector = 0; sector < cards::kMifareSectors; ++sector)
        image.at(static_cast<std::size_t>(cards::trailerOfSector(sector))) = trailerBlock(access);
    return image;
}

inline nlohmann::json describe(const cards::MifareImage &image)
{
    return {{"kind", "mifare"}, {"blocks", cards::mifareBlocksToJson(image)}};
}

inline cards::MifareCard transportCard()
{
    return cards::MifareCard(describe(imageWithAccess(cards::kTransportAccess)));
}

} // namespace mifare_test
