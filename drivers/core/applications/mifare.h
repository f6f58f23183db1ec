// The host side of a Mifare Classic card in a PC/SC reader, which shows it as a storage card: pseudo-APDUs of class FF.
#pragma once

#include "drivers/core/applications/mifare_value_operations.h"
#include "drivers/core/card_channel.h"
#include "drivers/core/mifare/mifare_access.h"
#include "drivers/core/mifare/mifare_layout.h"

#include <array>
#include <optional>
#include <string>

namespace drivers {

/// Whether an answer to reset is the one that PC/SC makes up for a Mifare Classic card (Mini, 1K or 4K).
bool isMifareClassic(const Bytes &atr);

/// What is known of the card in a reader: the authenticated sector and the keys that have opened sectors since it was
/// put in. Sectors count 0 to 15, blocks are absolute, 0 to 63, key types 'A' and 'B'.
///
/// kBadArgument: no such sector, block or key type, or a negative amount. kAuthenticationFailed: wrong key, or the
/// block's sector is not the authenticated one. kAccessDenied: the card refuses. kCardError: no value block, overflow,
/// or nonsense from the card. As on the chip every code but kSuccess ends the authentication.
class MifareSession {
public:
    explicit MifareSession(ValueOperations operations) : m_operations(operations) {}

    /// The card is new, or was reset.
    void forget();

    /// The UID as hexadecimal digits.
    static ReturnCode readUid(CardChannel &card, std::string &uid);

    ReturnCode authenticate(CardChannel &card, int sector, char keyType, const SectorKey &key);

    ReturnCode read(CardChannel &card, int block, Block16 &data);
    /// A trailer is written as it stands: access bits that disagree with their copies block the sector for good.
    ReturnCode write(CardChannel &card, int block, const Block16 &data);

    /// Writes a value block whose address is its own number.
    ReturnCode initValue(CardChannel &card, int block, std::int32_t value);
    ReturnCode readValue(CardChannel &card, int block, std::int32_t &value);
    /// `amount` is 0 or more. Where the reader has no command for it the block is read, computed and written:
    /// wasAtomic() tells.
    ReturnCode change(CardChannel &card, ValueChange change, int block, std::int32_t amount);

    /// Whether the last value change was one operation of the card's own.
    bool wasAtomic() const { return m_wasAtomic; }

    /// Changes one key of the authenticated sector by writing its trailer: key A, access bits, key B. The access bits
    /// are read from the card. The other key must be written too, where the authenticated key has the right to: key A
    /// never reads back and key B rarely, so it has to be known by having opened the sector in this session; else
    /// kAuthenticationFailed and the card is unchanged. kAccessDenied where the trailer's condition gives the
    /// authenticated key no right to write the key.
    ReturnCode changeKey(CardChannel &card, int sector, char keyType, const SectorKey &key);

private:
    struct KnownKeys {
        std::optional<SectorKey> a;
        std::optional<SectorKey> b;
    };

    ReturnCode settle(ReturnCode result);
    ReturnCode checkBlock(int block) const;
    ReturnCode checkValueBlock(int block) const;
    ReturnCode changeChecked(CardChannel &card, ValueChange change, int block, std::int32_t amount);
    ReturnCode changeKeyChecked(CardChannel &card, int sector, KeyType type, const SectorKey &key);
    std::optional<SectorKey> otherKey(int sector, KeyType other, std::uint8_t condition, const Block16 &trailer) const;

    ValueOperations m_operations;
    bool m_wasAtomic = false;
    std::optional<int> m_sector; ///< the authenticated one
    KeyType m_key = KeyType::a;
    std::array<KnownKeys, kMifareSectors> m_known{};
};

} // namespace drivers
