#include "drivers/virtual/cards/ssse_application.h"

#include <array>

#include "drivers/core/applications/ssse_items.h"
#include "drivers/virtual/cards/gbk.h"

namespace drivers::cards {

namespace {

using ssse::Item;
using ssse::ItemKind;

constexpr std::size_t kDateSize = 4;

/// The names of the items in a card's description, in the order of the item tables.
constexpr std::array<const char *, ssse::kIssuerItems.size()> kIssuerKeys{
    "identificationCode", "cardType", "version", "initialisingBody", "issued", "expires", "cardNumber"};
constexpr std::array<const char *, ssse::kHolderItems.size()> kHolderKeys{
    "number", "name", "nameExtension", "sex", "ethnicGroup", "birthplace", "born"};

Bytes paddedText(const JsonNode &node, std::size_t size, std::uint8_t padding)
{
    auto bytes = gbkFromUtf8(node.text());
    if (!bytes || bytes->size() > size)
        node.fail("must be at most " + std::to_string(size) + " bytes of GBK text");
    bytes->resize(size, padding);
    return *bytes;
}

Bytes itemValue(const JsonNode &node, const Item &item)
{
    const std::size_t digits = std::size_t{2} * item.length;
    switch (item.kind) {
    case ItemKind::kHex:
        return node.hex(item.length, item.length);
    case ItemKind::kDigits:
        return fromHex(item.length == kDateSize ? node.date() : node.digits(digits, digits)).value();
    case ItemKind::kCardNumber:
        return paddedText(node, item.length, 0xFF);
    case ItemKind::kText:
    case ItemKind::kGbk:
        return paddedText(node, item.length, 0x00);
    }
    return {};
}

/// An item that the description leaves out is a record that the card does not have.
template <typename Items, typename Keys>
ElementaryFile itemFile(std::uint16_t id, const JsonNode &node, const Items &items, const Keys &keys)
{
    ElementaryFile file;
    file.id = id;
    file.shortId = static_cast<std::uint8_t>(id & 0x1FU);
    file.hasRecords = true;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const auto value = node.find(keys[i]);
        if (!value)
            continue;
        Bytes record{items[i].id, items[i].length};
        const Bytes bytes = itemValue(*value, items[i]);
        record.insert(record.end(), bytes.begin(), bytes.end());
        file.records[items[i].id] = std::move(record);
    }
    return file;
}

} // namespace

void buildSsse(const JsonNode &node, Directory &directory)
{
    directory.place = node.place();
    directory.name.assign(ssse::kApplicationName.begin(), ssse::kApplicationName.end());
    directory.files.push_back(itemFile(ssse::kIssuerFile, node.at("issuer"), ssse::kIssuerItems, kIssuerKeys));
    directory.files.push_back(itemFile(ssse::kHolderFile, node.at("holder"), ssse::kHolderItems, kHolderKeys));
}

} // namespace drivers::cards
