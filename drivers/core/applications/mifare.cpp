#include "drivers/core/applications/mifare.h"

#include "drivers/core/applications/card_commands.h"
#include "drivers/core/mifare/mifare_value.h"

#include <algorithm>

namespace drivers {

namespace {

// Where the reader keeps the key of the next authentication.
constexpr std::uint8_t kKeyNumber = 0x00;
constexpr std::uint8_t kVolatileMemory = 0x00;
constexpr std::uint8_t kNonVolatileMemory = 0x20; // wears out: only for readers that have no other

// Status words of PC/SC part 3.
constexpr unsigned kDone = 0x9000;
constexpr unsigned kFailed = 0x6300;
constexpr unsigned kNoVolatileMemory = 0x6386;
constexpr unsigned kNotAuthenticated = 0x6982;
constexpr unsigned kMethodBlocked = 0x6983;
constexpr unsigned kConditionsOfUse = 0x6985;
constexpr unsigned kNotAllowed = 0x6986;
constexpr unsigned kNoFunction = 0x6A81;
constexpr unsigned kNoInstruction = 0x6D00;
constexpr unsigned kNoClass = 0x6E00;

// `failed` is what "no information given" means for the command.
ReturnCode codeOf(unsigned status, ReturnCode failed)
{
    switch (status) {
    case kDone:
        return kSuccess;
    case kFailed:
        return failed;
    case kNotAuthenticated:
    case kMethodBlocked:
        return kAuthenticationFailed;
    case kConditionsOfUse:
    case kNotAllowed:
        return kAccessDenied;
    case kNoFunction:
    case kNoInstruction:
    case kNoClass:
        return kNotSupported;
    default:
        return kCardError;
    }
}

ReturnCode send(CardChannel &card, const Bytes &command, ReturnCode failed, Bytes &data)
{
    data.clear();
    Bytes reply;
    ReturnCode result = card.transmit(command, reply);
    if (result == kSuccess)
        result = codeOf(statusWord(reply), failed);
    if (result == kSuccess)
        data.assign(reply.begin(), reply.end() - 2);
    return result;
}

Bytes withTail(Bytes head, const std::uint8_t *first, std::size_t count)
{
    head.insert(head.end(), first, first + count);
    return head;
}

ReturnCode loadKey(CardChannel &card, const SectorKey &key)
{
    Bytes reply;
    for (const std::uint8_t memory : {kVolatileMemory, kNonVolatileMemory}) {
        const Bytes head = {0xFF, 0x82, memory, kKeyNumber, static_cast<std::uint8_t>(key.size())};
        const ReturnCode result = card.transmit(withTail(head, key.data(), key.size()), reply);
        if (result != kSuccess)
            return result;
        if (statusWord(reply) != kNoVolatileMemory)
            break;
    }
    return codeOf(statusWord(reply), kCardError);
}

ReturnCode readBlock(CardChannel &card, int block, Block16 &out)
{
    Bytes data;
    const ReturnCode result =
        send(card, {0xFF, 0xB0, 0x00, static_cast<std::uint8_t>(block), kMifareBlockBytes}, kAccessDenied, data);
    if (result != kSuccess)
        return result;
    if (data.size() != out.size())
        return kCardError;
    std::copy(data.begin(), data.end(), out.begin());
    return kSuccess;
}

ReturnCode writeBlock(CardChannel &card, int block, const Block16 &bytes)
{
    const Bytes head = {0xFF, 0xD6, 0x00, static_cast<std::uint8_t>(block), kMifareBlockBytes};
    Bytes none;
    return send(card, withTail(head, bytes.data(), bytes.size()), kAccessDenied, none);
}

// The amendment reports inside its reply: C0 03, the place of the first error, SW1 SW2.
bool reportsError(const Bytes &data)
{
    return data.size() >= 5 && data[0] == 0xC0 && data[1] == 0x03 && (data[3] != 0x90 || data[4] != 0x00);
}

std::optional<KeyType> keyTypeOf(char letter)
{
    if (letter == 'A')
        return KeyType::a;
    if (letter == 'B')
        return KeyType::b;
    return std::nullopt;
}

void putKey(Block16 &trailer, KeyType type, const SectorKey &key)
{
    const std::size_t offset = type == KeyType::a ? kKeyAOffset : kKeyBOffset;
    std::copy(key.begin(), key.end(), trailer.begin() + static_cast<std::ptrdiff_t>(offset));
}

} // namespace

bool isMifareClassic(const Bytes &atr)
{
    // RID of the PC/SC workgroup, standard 03 (ISO/IEC 14443 A part 3), then the card's name.
    constexpr std::array<std::uint8_t, 10> kBegin = {0x80, 0x4F, 0x0C, 0xA0, 0x00, 0x00, 0x03, 0x06, 0x03, 0x00};
    constexpr std::uint8_t k1K = 0x01;
    constexpr std::uint8_t k4K = 0x02;
    constexpr std::uint8_t kMini = 0x26;
    const auto found = std::search(atr.begin(), atr.end(), kBegin.begin(), kBegin.end());
    if (atr.end() - found <= static_cast<std::ptrdiff_t>(kBegin.size()))
        return false;
    const std::uint8_t name = *(found + kBegin.size());
    return name == k1K || name == k4K || name == kMini;
}

void MifareSession::forget()
{
    m_sector.reset();
    m_known = {};
}

ReturnCode MifareSession::readUid(CardChannel &card, std::string &uid)
{
    Bytes data;
    const ReturnCode result = send(card, {0xFF, 0xCA, 0x00, 0x00, 0x00}, kCardError, data);
    if (result == kSuccess)
        uid = toHex(data);
    return result;
}

ReturnCode MifareSession::authenticate(CardChannel &card, int sector, char keyType, const SectorKey &key)
{
    m_sector.reset();
    const std::optional<KeyType> type = keyTypeOf(keyType);
    if (!isMifareSector(sector) || !type)
        return kBadArgument;
    ReturnCode result = loadKey(card, key);
    if (result != kSuccess)
        return result;
    const auto block = static_cast<std::uint8_t>(sector * kBlocksPerSector);
    const auto structure = static_cast<std::uint8_t>(*type == KeyType::a ? 0x60 : 0x61);
    Bytes none;
    result = send(card, {0xFF, 0x86, 0x00, 0x00, 0x05, 0x01, 0x00, block, structure, kKeyNumber}, kAuthenticationFailed,
                  none);
    if (result != kSuccess)
        return result;
    m_sector = sector;
    m_key = *type;
    KnownKeys &known = m_known.at(static_cast<std::size_t>(sector));
    (*type == KeyType::a ? known.a : known.b) = key;
    return kSuccess;
}

ReturnCode MifareSession::settle(ReturnCode result)
{
    if (result != kSuccess)
        m_sector.reset();
    return result;
}

ReturnCode MifareSession::checkBlock(int block) const
{
    if (!isMifareBlock(block))
        return kBadArgument;
    return m_sector == sectorOfBlock(block) ? kSuccess : kAuthenticationFailed;
}

// A value block written over a trailer would destroy the sector's keys.
ReturnCode MifareSession::checkValueBlock(int block) const
{
    const ReturnCode result = checkBlock(block);
    return result == kSuccess && (isTrailerBlock(block) || block == 0) ? kAccessDenied : result;
}

ReturnCode MifareSession::read(CardChannel &card, int block, Block16 &data)
{
    const ReturnCode result = checkBlock(block);
    return settle(result == kSuccess ? readBlock(card, block, data) : result);
}

ReturnCode MifareSession::write(CardChannel &card, int block, const Block16 &data)
{
    const ReturnCode result = checkBlock(block);
    return settle(result == kSuccess ? writeBlock(card, block, data) : result);
}

ReturnCode MifareSession::initValue(CardChannel &card, int block, std::int32_t value)
{
    const ReturnCode result = checkValueBlock(block);
    if (result != kSuccess)
        return settle(result);
    return settle(writeBlock(card, block, encodeValueBlock({value, static_cast<std::uint8_t>(block)})));
}

ReturnCode MifareSession::readValue(CardChannel &card, int block, std::int32_t &value)
{
    // Block 0 may be read; it is no value block.
    ReturnCode result = checkBlock(block);
    if (result == kSuccess && isTrailerBlock(block))
        result = kAccessDenied;
    Block16 bytes{};
    if (result == kSuccess)
        result = readBlock(card, block, bytes);
    if (result != kSuccess)
        return settle(result);
    const std::optional<ValueBlock> decoded = decodeValueBlock(bytes);
    if (!decoded)
        return settle(kCardError);
    value = decoded->value;
    return kSuccess;
}

ReturnCode MifareSession::change(CardChannel &card, ValueChange change, int block, std::int32_t amount)
{
    ReturnCode result = amount < 0 ? kBadArgument : checkValueBlock(block);
    if (result == kSuccess)
        result = changeChecked(card, change, block, amount);
    return settle(result);
}

ReturnCode MifareSession::changeChecked(CardChannel &card, ValueChange change, int block, std::int32_t amount)
{
    // The chip lets a value wrap round, and readers answer every failure alike, so the block is looked at first.
    // Every key that may increment or decrement may read.
    Block16 bytes{};
    if (const ReturnCode result = readBlock(card, block, bytes); result != kSuccess)
        return result;
    const std::optional<ValueBlock> old = decodeValueBlock(bytes);
    if (!old)
        return kCardError;
    const std::int64_t delta = change == ValueChange::kIncrement ? amount : -std::int64_t{amount};
    const std::optional<std::int32_t> sum = addToValue(old->value, delta);
    if (!sum)
        return kCardError;

    m_wasAtomic = isAtomic(m_operations);
    if (m_wasAtomic) {
        const auto number = static_cast<std::uint8_t>(block);
        Bytes data;
        const ReturnCode result = send(
            card, valueCommand(m_operations, change, number, static_cast<std::uint32_t>(amount)), kAccessDenied, data);
        if (result == kSuccess && reportsError(data))
            return kAccessDenied;
        if (result != kNotSupported)
            return result;
        m_wasAtomic = false;
    }
    return writeBlock(card, block, encodeValueBlock({*sum, old->address}));
}

ReturnCode MifareSession::changeKey(CardChannel &card, int sector, char keyType, const SectorKey &key)
{
    const std::optional<KeyType> type = keyTypeOf(keyType);
    ReturnCode result = isMifareSector(sector) && type ? checkBlock(trailerOfSector(sector)) : kBadArgument;
    if (result == kSuccess)
        result = changeKeyChecked(card, sector, *type, key);
    return settle(result);
}

ReturnCode MifareSession::changeKeyChecked(CardChannel &card, int sector, KeyType type, const SectorKey &key)
{
    Block16 trailer{};
    if (const ReturnCode result = readBlock(card, trailerOfSector(sector), trailer); result != kSuccess)
        return result;
    const auto access = decodeAccess({trailer[kAccessOffset], trailer[kAccessOffset + 1], trailer[kAccessOffset + 2]});
    if (!access)
        return kCardError;
    const std::uint8_t condition = access->block.back();
    const auto mayWrite = [&](KeyType which) {
        const TrailerRight right = which == KeyType::a ? TrailerRight::writeKeyA : TrailerRight::writeKeyB;
        return trailerRightGranted(condition, right, m_key);
    };
    if (!mayWrite(type))
        return kAccessDenied;
    const KeyType other = type == KeyType::a ? KeyType::b : KeyType::a;
    const std::optional<SectorKey> kept = otherKey(sector, other, condition, trailer);
    if (!kept && mayWrite(other))
        return kAuthenticationFailed;
    putKey(trailer, type, key);
    if (kept)
        putKey(trailer, other, *kept);
    const ReturnCode result = writeBlock(card, trailerOfSector(sector), trailer);
    if (result == kSuccess) {
        KnownKeys &known = m_known.at(static_cast<std::size_t>(sector));
        (type == KeyType::a ? known.a : known.b) = key;
    }
    return result;
}

// A readable key B is data, which may differ from what once opened the sector.
std::optional<SectorKey> MifareSession::otherKey(int sector, KeyType other, std::uint8_t condition,
                                                 const Block16 &trailer) const
{
    if (other == KeyType::b && keyBReadable(condition)) {
        SectorKey read{};
        std::copy(trailer.begin() + kKeyBOffset, trailer.end(), read.begin());
        return read;
    }
    const KnownKeys &known = m_known.at(static_cast<std::size_t>(sector));
    return other == KeyType::a ? known.a : known.b;
}

} // namespace drivers
