// A Mifare Classic 1K card with its state: memory, the authenticated sector, the value register.
#pragma once

#include "drivers/core/mifare/mifare_access.h"
#include "drivers/core/mifare/mifare_value.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace drivers::cards {

enum class MifareResult : std::uint8_t {
    ok,
    badArgument,          ///< no such sector, block or key type, or a negative amount
    authenticationFailed, ///< wrong key, key B where it is readable, or a sector blocked by its access bits
    notAuthenticated,     ///< the block's sector is not the authenticated one
    accessDenied,         ///< the access conditions refuse it to this key
    notAValueBlock,       ///< a value operation on plain data, or a transfer with nothing in the register
    overflow,             ///< the result does not fit in 32 bits; the block is unchanged
};

/// Sectors count 0 to 15; blocks are absolute, 0 to 63. As on the chip any result but ok ends the authentication, the
/// refused arguments included, and what is in force is read from the sector's trailer at every command.
///
/// Description: "kind": "mifare", "blocks": the 64 blocks as 32 hexadecimal digits each, keys included; optionally
/// "type": the character that tells the kind of card, "A" (ISO/IEC 14443 type A) if missing.
class MifareCard {
public:
    /// Throws std::runtime_error with the JSON place. The manufacturer block must begin with a UID of four bytes and
    /// its check byte. Broken access bits are allowed: that sector is blocked.
    explicit MifareCard(const nlohmann::json &description);

    /// What the constructor takes, with the memory as it is now.
    nlohmann::json description() const;

    /// Whether the memory was changed since construction; changing it back does not undo that.
    bool changed() const { return m_changed; }

    const MifareImage &image() const { return m_image; }

    /// Eight hexadecimal digits.
    std::string uid() const;
    char type() const { return m_type; }

    /// The card is found anew: its authentication and value register are lost.
    void select();

    /// `keyType`: 'A' or 'B'.
    MifareResult authenticate(int sector, char keyType, const SectorKey &key);

    /// Key A reads as zeros, and so does key B unless the trailer's condition shows it. `out` is zeros on failure.
    MifareResult read(int block, Block16 &out);

    /// In a trailer only the parts that the key may write change; with none of them it is refused. Access bits that
    /// disagree with their copies are taken, as the chip does, and block the sector for good.
    MifareResult write(int block, const Block16 &data);

    /// Loads the block's value, adds or subtracts an amount of 0 or more, and transfers it back to the block.
    MifareResult increment(int block, std::int32_t amount);
    MifareResult decrement(int block, std::int32_t amount);

    /// Loads the block's value and address into the register, and writes the register to a block of the same sector.
    MifareResult restore(int block);
    MifareResult transfer(int block);

    /// Writes a value block whose address is its own number; needs the right to write.
    MifareResult initValue(int block, std::int32_t value);

    /// `value` is 0 on failure.
    MifareResult readValue(int block, std::int32_t &value);

    /// Writes one key of the authenticated sector, which needs the trailer's right to write that key. On a real card
    /// the whole trailer is rewritten, so a reader has to know the other key; the model leaves it as it stands.
    MifareResult changeKey(int sector, char keyType, const SectorKey &key);

private:
    MifareResult settle(MifareResult result);
    MifareResult checkSector(int block) const;
    MifareResult checkData(int block, DataRight right) const;
    bool mayTrailer(int sector, TrailerRight right) const;
    std::optional<AccessConditions> conditions(int sector) const;
    MifareResult writeTrailer(int sector, const Block16 &data);
    MifareResult load(int block, DataRight right);
    MifareResult add(int block, std::int32_t amount, DataRight right, int sign);
    MifareResult store(int block);
    void put(int block, const Block16 &data);
    const Block16 &at(int block) const { return m_image.at(static_cast<std::size_t>(block)); }

    nlohmann::json m_description;
    MifareImage m_image;
    bool m_changed = false;
    char m_type = 'A';
    std::optional<int> m_sector; ///< the authenticated one
    KeyType m_key = KeyType::a;
    std::optional<ValueBlock> m_register;
};

/// The "blocks" member of a description.
nlohmann::json mifareBlocksToJson(const MifareImage &image);

} // namespace drivers::cards
