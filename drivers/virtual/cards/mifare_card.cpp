#include "drivers/virtual/cards/mifare_card.h"

#include "drivers/virtual/cards/json_node.h"

#include <algorithm>

namespace drivers::cards {

namespace {

constexpr std::size_t kUidBytes = 4;

std::optional<KeyType> keyTypeOf(char letter)
{
    if (letter == 'A')
        return KeyType::a;
    if (letter == 'B')
        return KeyType::b;
    return std::nullopt;
}

void copyPart(const Block16 &from, Block16 &to, std::size_t begin, std::size_t end)
{
    for (std::size_t i = begin; i < end; ++i)
        to[i] = from[i];
}

void clearPart(Block16 &block, std::size_t begin, std::size_t end)
{
    for (std::size_t i = begin; i < end; ++i)
        block[i] = 0;
}

void requireManufacturerBlock(const JsonNode &node, const Block16 &block)
{
    std::uint8_t check = 0;
    for (std::size_t i = 0; i < kUidBytes; ++i)
        check ^= block[i];
    if (block[kUidBytes] != check)
        node.fail("the fifth byte must be the check byte of a four-byte UID, " + toHex(Bytes{check}));
}

MifareImage imageOf(const nlohmann::json &description)
{
    const JsonNode root(description);
    root.requireKind("mifare");
    root.allowOnly({"type", "blocks"});
    const std::vector<JsonNode> blocks = root.at("blocks").items();
    if (blocks.size() != static_cast<std::size_t>(kMifareBlocks))
        root.at("blocks").fail("must be a list of 64 blocks");
    MifareImage image{};
    for (std::size_t i = 0; i < image.size(); ++i) {
        const Bytes bytes = blocks.at(i).hex(kMifareBlockBytes, kMifareBlockBytes);
        std::copy(bytes.begin(), bytes.end(), image[i].begin());
    }
    requireManufacturerBlock(blocks.front(), image[0]);
    return image;
}

} // namespace

MifareCard::MifareCard(const nlohmann::json &description) : m_description(description), m_image(imageOf(description))
{
    const JsonNode root(description);
    const std::string type = root.textOr("type", "A");
    if (type.size() != 1 || type[0] <= ' ' || type[0] > '~')
        root.at("type").fail("must be one printable ASCII character");
    m_type = type[0];
}

nlohmann::json MifareCard::description() const
{
    nlohmann::json description = m_description;
    description["blocks"] = mifareBlocksToJson(m_image);
    return description;
}

std::string MifareCard::uid() const
{
    return toHex(Bytes(m_image[0].begin(), m_image[0].begin() + kUidBytes));
}

void MifareCard::select()
{
    m_sector.reset();
    m_register.reset();
}

MifareResult MifareCard::authenticate(int sector, char keyType, const SectorKey &key)
{
    select();
    const auto type = keyTypeOf(keyType);
    if (!isMifareSector(sector) || !type)
        return MifareResult::badArgument;
    const auto access = conditions(sector);
    if (!access || (*type == KeyType::b && keyBReadable(access->block.back())))
        return MifareResult::authenticationFailed;
    const Block16 &trailer = at(trailerOfSector(sector));
    const std::size_t offset = *type == KeyType::a ? kKeyAOffset : kKeyBOffset;
    if (!std::equal(key.begin(), key.end(), trailer.begin() + static_cast<std::ptrdiff_t>(offset)))
        return MifareResult::authenticationFailed;
    m_sector = sector;
    m_key = *type;
    return MifareResult::ok;
}

MifareResult MifareCard::read(int block, Block16 &out)
{
    out.fill(0);
    const bool trailer = isMifareBlock(block) && isTrailerBlock(block);
    const MifareResult result = trailer ? checkSector(block) : checkData(block, DataRight::read);
    if (result != MifareResult::ok)
        return settle(result);
    out = at(block);
    if (!trailer)
        return result;
    clearPart(out, kKeyAOffset, kAccessOffset);
    if (!mayTrailer(sectorOfBlock(block), TrailerRight::readKeyB))
        clearPart(out, kKeyBOffset, kMifareBlockBytes);
    return result;
}

MifareResult MifareCard::write(int block, const Block16 &data)
{
    if (isMifareBlock(block) && isTrailerBlock(block)) {
        const MifareResult result = checkSector(block);
        return settle(result == MifareResult::ok ? writeTrailer(sectorOfBlock(block), data) : result);
    }
    const MifareResult result = checkData(block, DataRight::write);
    if (result == MifareResult::ok)
        put(block, data);
    return settle(result);
}

MifareResult MifareCard::increment(int block, std::int32_t amount)
{
    return settle(add(block, amount, DataRight::increment, 1));
}

MifareResult MifareCard::decrement(int block, std::int32_t amount)
{
    return settle(add(block, amount, DataRight::decrement, -1));
}

MifareResult MifareCard::restore(int block)
{
    return settle(load(block, DataRight::decrement));
}

MifareResult MifareCard::transfer(int block)
{
    return settle(store(block));
}

MifareResult MifareCard::initValue(int block, std::int32_t value)
{
    // A value block written over a trailer would destroy the sector's keys.
    const MifareResult result = checkData(block, DataRight::write);
    if (result == MifareResult::ok)
        put(block, encodeValueBlock({value, static_cast<std::uint8_t>(block)}));
    return settle(result);
}

MifareResult MifareCard::readValue(int block, std::int32_t &value)
{
    value = 0;
    const MifareResult result = checkData(block, DataRight::read);
    if (result != MifareResult::ok)
        return settle(result);
    const auto decoded = decodeValueBlock(at(block));
    if (!decoded)
        return settle(MifareResult::notAValueBlock);
    value = decoded->value;
    return result;
}

MifareResult MifareCard::changeKey(int sector, char keyType, const SectorKey &key)
{
    const auto type = keyTypeOf(keyType);
    if (!isMifareSector(sector) || !type)
        return settle(MifareResult::badArgument);
    const MifareResult result = checkSector(trailerOfSector(sector));
    if (result != MifareResult::ok)
        return settle(result);
    const bool isA = *type == KeyType::a;
    if (!mayTrailer(sector, isA ? TrailerRight::writeKeyA : TrailerRight::writeKeyB))
        return settle(MifareResult::accessDenied);
    const auto offset = static_cast<std::ptrdiff_t>(isA ? kKeyAOffset : kKeyBOffset);
    Block16 trailer = at(trailerOfSector(sector));
    std::copy(key.begin(), key.end(), trailer.begin() + offset);
    put(trailerOfSector(sector), trailer);
    return result;
}

MifareResult MifareCard::settle(MifareResult result)
{
    if (result != MifareResult::ok)
        select();
    return result;
}

MifareResult MifareCard::checkSector(int block) const
{
    if (!isMifareBlock(block))
        return MifareResult::badArgument;
    if (m_sector != sectorOfBlock(block))
        return MifareResult::notAuthenticated;
    return conditions(sectorOfBlock(block)) ? MifareResult::ok : MifareResult::accessDenied;
}

MifareResult MifareCard::checkData(int block, DataRight right) const
{
    const MifareResult result = checkSector(block);
    if (result != MifareResult::ok)
        return result;
    const bool manufacturer = block == 0;
    if (isTrailerBlock(block) || (manufacturer && right != DataRight::read))
        return MifareResult::accessDenied;
    const auto access = conditions(sectorOfBlock(block));
    const std::uint8_t condition = access->block.at(static_cast<std::size_t>(blockInSector(block)));
    return dataRightGranted(condition, right, m_key) ? MifareResult::ok : MifareResult::accessDenied;
}

bool MifareCard::mayTrailer(int sector, TrailerRight right) const
{
    const auto access = conditions(sector);
    return access && trailerRightGranted(access->block.back(), right, m_key);
}

std::optional<AccessConditions> MifareCard::conditions(int sector) const
{
    const Block16 &trailer = at(trailerOfSector(sector));
    return decodeAccess({trailer[kAccessOffset], trailer[kAccessOffset + 1], trailer[kAccessOffset + 2]});
}

MifareResult MifareCard::writeTrailer(int sector, const Block16 &data)
{
    const bool keyA = mayTrailer(sector, TrailerRight::writeKeyA);
    const bool access = mayTrailer(sector, TrailerRight::writeAccess);
    const bool keyB = mayTrailer(sector, TrailerRight::writeKeyB);
    if (!keyA && !access && !keyB)
        return MifareResult::accessDenied;
    Block16 trailer = at(trailerOfSector(sector));
    if (keyA)
        copyPart(data, trailer, kKeyAOffset, kAccessOffset);
    if (access)
        copyPart(data, trailer, kAccessOffset, kKeyBOffset);
    if (keyB)
        copyPart(data, trailer, kKeyBOffset, kMifareBlockBytes);
    put(trailerOfSector(sector), trailer);
    return MifareResult::ok;
}

void MifareCard::put(int block, const Block16 &data)
{
    Block16 &stored = m_image.at(static_cast<std::size_t>(block));
    m_changed = m_changed || stored != data;
    stored = data;
}

MifareResult MifareCard::load(int block, DataRight right)
{
    m_register.reset();
    const MifareResult result = checkData(block, right);
    if (result != MifareResult::ok)
        return result;
    m_register = decodeValueBlock(at(block));
    return m_register ? MifareResult::ok : MifareResult::notAValueBlock;
}

MifareResult MifareCard::add(int block, std::int32_t amount, DataRight right, int sign)
{
    if (amount < 0)
        return MifareResult::badArgument;
    const MifareResult result = load(block, right);
    if (result != MifareResult::ok)
        return result;
    const auto sum = addToValue(m_register->value, std::int64_t{amount} * sign);
    if (!sum)
        return MifareResult::overflow;
    m_register->value = *sum;
    return store(block);
}

MifareResult MifareCard::store(int block)
{
    const MifareResult result = checkData(block, DataRight::decrement);
    if (result != MifareResult::ok)
        return result;
    if (!m_register)
        return MifareResult::notAValueBlock;
    put(block, encodeValueBlock(*m_register));
    return result;
}

nlohmann::json mifareBlocksToJson(const MifareImage &image)
{
    auto blocks = nlohmann::json::array();
    for (const Block16 &block : image)
        blocks.push_back(toHex(Bytes(block.begin(), block.end())));
    return blocks;
}

} // namespace drivers::cards
