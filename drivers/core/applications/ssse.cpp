#include "drivers/core/applications/ssse.h"

#include <algorithm>

#include "drivers/core/applications/card_commands.h"
#include "drivers/core/applications/ssse_items.h"

namespace drivers {

namespace {

using ssse::Item;
using ssse::ItemKind;

constexpr unsigned kRecordNotFound = 0x6A83;

bool isControl(std::uint8_t byte)
{
    return byte < 0x20 || byte == 0x7F || byte == 0xFF;
}

bool isLetterOrDigit(std::uint8_t byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

/// The value without its padding: everything from the first 00 or FF on, neither of which begins a character.
Bytes withoutPadding(const Bytes &value)
{
    const auto end = std::find_if(value.begin(), value.end(), [](std::uint8_t b) { return b == 0x00 || b == 0xFF; });
    return {value.begin(), end};
}

/// Bytes as text that can stand in a "|"-separated, NUL-terminated record. A reader of the record knows no GBK and
/// splits at every byte 7C, so that a character with that second byte cannot be passed on.
std::string safeText(const Bytes &value, bool gbk)
{
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const std::uint8_t byte = value[i];
        if (gbk && byte >= 0x81 && byte != 0xFF && i + 1 < value.size()) {
            const std::uint8_t second = value[++i];
            if (second == '|' || isControl(second)) {
                text.push_back('?');
            } else {
                text.push_back(static_cast<char>(byte));
                text.push_back(static_cast<char>(second));
            }
        } else {
            text.push_back(byte == '|' || isControl(byte) ? '?' : static_cast<char>(byte));
        }
    }
    return text;
}

std::string cardNumberText(const Bytes &value)
{
    const Bytes number = withoutPadding(value);
    if (std::all_of(number.begin(), number.end(), isLetterOrDigit))
        return safeText(number, false);
    std::string digits = toHex(value);
    digits.erase(digits.find_last_not_of('F') + 1);
    return digits;
}

std::string itemText(const Bytes &value, ItemKind kind)
{
    switch (kind) {
    case ItemKind::kHex:
    case ItemKind::kDigits:
        return toHex(value);
    case ItemKind::kCardNumber:
        return cardNumberText(value);
    case ItemKind::kText:
        return safeText(withoutPadding(value), false);
    case ItemKind::kGbk:
        return safeText(withoutPadding(value), true);
    }
    return {};
}

/// Reads one item of the current file: a record of id, length and value.
ReturnCode readItem(CardChannel &channel, const Item &item, std::string &text)
{
    const auto expected = static_cast<std::uint8_t>(item.length + 2);
    Bytes reply;
    const ReturnCode result = channel.transmit({0x00, 0xB2, item.id, 0x00, expected}, reply);
    if (result != kSuccess)
        return result;
    if (statusWord(reply) == kRecordNotFound)
        return kSuccess;
    if (statusWord(reply) != 0x9000)
        return kCardError;
    reply.resize(reply.size() - 2);
    if (reply.size() < 2 || reply[0] != item.id || reply[1] > reply.size() - 2)
        return kCardError;
    text = itemText(Bytes(reply.begin() + 2, reply.begin() + 2 + reply[1]), item.kind);
    return kSuccess;
}

template <typename Items>
ReturnCode readItems(CardChannel &channel, std::uint16_t file, const Items &items, std::string &record)
{
    record.clear();
    Bytes description;
    ReturnCode result =
        exchange(channel, selectByName({ssse::kApplicationName.begin(), ssse::kApplicationName.end()}), description);
    if (result == kSuccess)
        result = exchange(channel, selectFile(file), description);
    std::string fields;
    for (const Item &item : items) {
        if (result != kSuccess)
            return result;
        std::string text;
        result = readItem(channel, item, text);
        if (&item != &items.front())
            fields.push_back('|');
        fields += text;
    }
    if (result == kSuccess)
        record = std::move(fields);
    return result;
}

} // namespace

ReturnCode readIssuerInfo(CardChannel &channel, std::string &record)
{
    return readItems(channel, ssse::kIssuerFile, ssse::kIssuerItems, record);
}

ReturnCode readHolderInfo(CardChannel &channel, std::string &record)
{
    return readItems(channel, ssse::kHolderFile, ssse::kHolderItems, record);
}

} // namespace drivers
