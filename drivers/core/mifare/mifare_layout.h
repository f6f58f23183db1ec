// The memory of a Mifare Classic 1K card: 16 sectors of 4 blocks of 16 bytes. The last block of a sector is its
// trailer: key A (6 bytes), access bits (3), a user byte, key B (6). Block 0 is the manufacturer's.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace drivers {

constexpr int kMifareSectors = 16;
constexpr int kBlocksPerSector = 4;
constexpr int kMifareBlocks = kMifareSectors * kBlocksPerSector;
constexpr std::size_t kMifareBlockBytes = 16;
constexpr std::size_t kMifareBytes = kMifareBlocks * kMifareBlockBytes;

using Block16 = std::array<std::uint8_t, kMifareBlockBytes>;
using SectorKey = std::array<std::uint8_t, 6>;
using MifareImage = std::array<Block16, kMifareBlocks>;

// Where the parts of a trailer begin, in bytes.
constexpr std::size_t kKeyAOffset = 0;
constexpr std::size_t kAccessOffset = 6;
constexpr std::size_t kUserByteOffset = 9;
constexpr std::size_t kKeyBOffset = 10;

constexpr bool isMifareSector(int sector)
{
    return sector >= 0 && sector < kMifareSectors;
}

/// `block` is absolute, 0 to 63, here and below.
constexpr bool isMifareBlock(int block)
{
    return block >= 0 && block < kMifareBlocks;
}

constexpr int sectorOfBlock(int block)
{
    return block / kBlocksPerSector;
}

constexpr int blockInSector(int block)
{
    return block % kBlocksPerSector;
}

constexpr bool isTrailerBlock(int block)
{
    return blockInSector(block) == kBlocksPerSector - 1;
}

/// The absolute number of a sector's trailer.
constexpr int trailerOfSector(int sector)
{
    return sector * kBlocksPerSector + kBlocksPerSector - 1;
}

} // namespace drivers
