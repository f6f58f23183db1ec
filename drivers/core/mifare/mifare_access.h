// The access bits of a Mifare Classic sector: three bits C1 C2 C3 for each of its four blocks, every one stored twice,
// once inverted.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace drivers {

using AccessBytes = std::array<std::uint8_t, 3>;

/// Transport configuration: what a blank card carries.
constexpr AccessBytes kTransportAccess{0xFF, 0x07, 0x80};

/// For each block of the sector, the trailer last, its condition 0 to 7: C1 is bit 2, C2 bit 1, C3 bit 0.
struct AccessConditions {
    std::array<std::uint8_t, 4> block{};
};

enum class KeyType : std::uint8_t { a, b };

enum class DataRight : std::uint8_t {
    read,
    write,
    increment,
    decrement, ///< also transfer and restore
};

/// Key A has no right to be read: no condition grants one.
enum class TrailerRight : std::uint8_t { writeKeyA, readAccess, writeAccess, readKeyB, writeKeyB };

/// The conditions in a trailer's access bytes; nothing if a bit and its inverted copy agree, which blocks the sector.
std::optional<AccessConditions> decodeAccess(const AccessBytes &bytes);

/// The access bytes of four conditions, of each of which the lowest three bits count.
AccessBytes encodeAccess(const AccessConditions &conditions);

/// Whether a data block's condition grants a right to the key that authenticated.
bool dataRightGranted(std::uint8_t condition, DataRight right, KeyType key);

/// The same for a trailer's condition.
bool trailerRightGranted(std::uint8_t condition, TrailerRight right, KeyType key);

/// Whether a trailer's condition lets key B be read. It then is data and cannot authenticate.
bool keyBReadable(std::uint8_t trailerCondition);

} // namespace drivers
