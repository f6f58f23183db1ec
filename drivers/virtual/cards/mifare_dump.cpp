#include "drivers/virtual/cards/mifare_dump.h"

#include "drivers/virtual/cards/json_node.h"

#include <algorithm>
#include <stdexcept>

namespace drivers::cards {

namespace {

constexpr std::size_t kUidBytes = 4;

template <typename Iterator>
std::string hexOf(Iterator begin, std::size_t count)
{
    return toHex(Bytes(begin, begin + static_cast<std::ptrdiff_t>(count)));
}

[[noreturn]] void rejectLine(std::size_t line, const std::string &reason)
{
    throw std::runtime_error("line " + std::to_string(line) + ": " + reason);
}

std::string_view trimmed(std::string_view line)
{
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

Block16 blockOfLine(std::string_view line, std::size_t number)
{
    const auto bytes = fromHex(line);
    if (!bytes || bytes->size() != kMifareBlockBytes)
        rejectLine(number, "must be 32 hexadecimal digits");
    Block16 block{};
    std::copy(bytes->begin(), bytes->end(), block.begin());
    return block;
}

nlohmann::json sectorKeysOf(const Block16 &trailer)
{
    return {{"KeyA", hexOf(trailer.begin() + kKeyAOffset, kAccessOffset - kKeyAOffset)},
            {"AccessConditions", hexOf(trailer.begin() + kAccessOffset, kKeyBOffset - kAccessOffset)},
            {"KeyB", hexOf(trailer.begin() + kKeyBOffset, kMifareBlockBytes - kKeyBOffset)}};
}

void overlay(const JsonNode &keys, const char *name, Block16 &trailer, std::size_t begin, std::size_t end)
{
    const auto part = keys.find(name);
    if (!part)
        return;
    const Bytes bytes = part->hex(end - begin, end - begin);
    std::copy(bytes.begin(), bytes.end(), trailer.begin() + static_cast<std::ptrdiff_t>(begin));
}

void overlaySectorKeys(const JsonNode &sectors, MifareImage &image)
{
    for (int sector = 0; sector < kMifareSectors; ++sector) {
        const auto keys = sectors.find(std::to_string(sector));
        if (!keys)
            continue;
        Block16 &trailer = image.at(static_cast<std::size_t>(trailerOfSector(sector)));
        overlay(*keys, "KeyA", trailer, kKeyAOffset, kAccessOffset);
        overlay(*keys, "AccessConditions", trailer, kAccessOffset, kKeyBOffset);
        overlay(*keys, "KeyB", trailer, kKeyBOffset, kMifareBlockBytes);
    }
}

void requireSameUid(const JsonNode &dump, const Block16 &manufacturer)
{
    const auto card = dump.find("Card");
    const auto uid = card && card->isObject() ? card->find("UID") : std::nullopt;
    if (!uid)
        return;
    const Bytes bytes = uid->hex(kUidBytes, kUidBytes);
    if (!std::equal(bytes.begin(), bytes.end(), manufacturer.begin()))
        uid->fail("is not the UID of block 0, " + hexOf(manufacturer.begin(), kUidBytes));
}

} // namespace

std::string exportRawDump(const MifareImage &image)
{
    std::string content;
    content.reserve(kMifareBytes);
    for (const Block16 &block : image)
        content.append(block.begin(), block.end());
    return content;
}

MifareImage importRawDump(std::string_view content)
{
    if (content.size() != kMifareBytes)
        throw std::runtime_error("a raw dump must be 1024 bytes, not " + std::to_string(content.size()));
    MifareImage image{};
    for (std::size_t i = 0; i < content.size(); ++i)
        image.at(i / kMifareBlockBytes).at(i % kMifareBlockBytes) = static_cast<std::uint8_t>(content[i]);
    return image;
}

std::string exportEmlDump(const MifareImage &image)
{
    std::string content;
    for (const Block16 &block : image)
        content += hexOf(block.begin(), block.size()) + "\n";
    return content;
}

MifareImage importEmlDump(std::string_view content)
{
    MifareImage image{};
    std::size_t number = 0;
    while (!content.empty()) {
        const std::size_t end = content.find('\n');
        const std::string_view line = trimmed(content.substr(0, end));
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
        ++number;
        if (number <= image.size())
            image[number - 1] = blockOfLine(line, number);
        else if (!line.empty())
            rejectLine(number, "more than 64 blocks");
    }
    if (number < image.size())
        rejectLine(number + 1, "only " + std::to_string(number) + " of 64 blocks");
    return image;
}

nlohmann::json exportJsonDump(const MifareImage &image)
{
    nlohmann::json dump;
    dump["Card"] = {{"UID", hexOf(image[0].begin(), kUidBytes)}};
    for (std::size_t i = 0; i < image.size(); ++i)
        dump["blocks"][std::to_string(i)] = hexOf(image[i].begin(), kMifareBlockBytes);
    for (int sector = 0; sector < kMifareSectors; ++sector) {
        const auto trailer = static_cast<std::size_t>(trailerOfSector(sector));
        dump["SectorKeys"][std::to_string(sector)] = sectorKeysOf(image.at(trailer));
    }
    return dump;
}

MifareImage importJsonDump(const nlohmann::json &dump)
{
    const JsonNode root(dump);
    const JsonNode blocks = root.at("blocks");
    MifareImage image{};
    for (std::size_t i = 0; i < image.size(); ++i) {
        const Bytes bytes = blocks.at(std::to_string(i)).hex(kMifareBlockBytes, kMifareBlockBytes);
        std::copy(bytes.begin(), bytes.end(), image[i].begin());
    }
    if (blocks.members().size() != image.size())
        blocks.fail("must hold the blocks 0 to 63 and nothing else");
    if (const auto sectors = root.find("SectorKeys"))
        overlaySectorKeys(*sectors, image);
    requireSameUid(root, image[0]);
    return image;
}

} // namespace drivers::cards
