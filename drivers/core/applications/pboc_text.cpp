#include "drivers/core/applications/pboc_text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace drivers::pboc {

namespace {

constexpr std::size_t kLengthDigits = 3;
constexpr std::size_t kMaxFieldLength = 999;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool allDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isDigit);
}

const TransactionLetter *findLetter(char letter)
{
    for (const auto &entry : kTransactionLetters) {
        if (entry.letter == letter)
            return &entry;
    }
    return nullptr;
}

/// Takes the length and the value that follow a letter off the front of `text`.
std::optional<std::string_view> takeValue(std::string_view &text)
{
    if (text.size() < kLengthDigits || !allDigits(text.substr(0, kLengthDigits)))
        return std::nullopt;
    std::size_t length = 0;
    for (const char digit : text.substr(0, kLengthDigits))
        length = length * 10 + static_cast<std::size_t>(digit - '0');
    text.remove_prefix(kLengthDigits);
    if (length > text.size())
        return std::nullopt;
    const std::string_view value = text.substr(0, length);
    text.remove_prefix(length);
    return value;
}

std::optional<Bytes> parseValue(const TransactionLetter &letter, std::string_view value)
{
    if (value.size() < letter.minDigits || value.size() > letter.maxDigits || (letter.decimal && !allDigits(value)))
        return std::nullopt;
    return fromHex(value);
}

std::string characters(const Bytes &value)
{
    std::string text;
    for (const std::uint8_t byte : value)
        text.push_back(byte < 0x20 || byte == 0x7F ? '?' : static_cast<char>(byte));
    return text;
}

std::string valueText(const Bytes &value, TextForm form)
{
    if (form == TextForm::kLetters)
        return characters(value);
    std::string digits = toHex(value);
    if (form == TextForm::kPadded)
        digits.erase(digits.find_last_not_of('F') + 1);
    return digits;
}

} // namespace

std::optional<Bytes> parseAid(std::string_view text)
{
    constexpr std::size_t kMinSize = 5;
    constexpr std::size_t kMaxSize = 16;
    auto aid = fromHex(text);
    if (!aid || aid->size() < kMinSize || aid->size() > kMaxSize)
        return std::nullopt;
    return aid;
}

std::optional<TlvMap> parseTransaction(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    TlvMap elements;
    while (!text.empty()) {
        const TransactionLetter *letter = findLetter(text.front());
        text.remove_prefix(1);
        const auto value = letter != nullptr ? takeValue(text) : std::nullopt;
        auto bytes = value ? parseValue(*letter, *value) : std::nullopt;
        if (!bytes || elements.count(letter->tag) != 0)
            return std::nullopt;
        if (letter->alsoTag != 0)
            elements[letter->alsoTag] = *bytes;
        elements[letter->tag] = std::move(*bytes);
    }
    return elements;
}

std::string field(char letter, const Bytes *value, TextForm form)
{
    std::string text = value != nullptr ? valueText(*value, form) : std::string();
    text.resize(std::min(text.size(), kMaxFieldLength));
    std::array<char, kLengthDigits + 1> length{};
    std::snprintf(length.data(), length.size(), "%03u", static_cast<unsigned>(text.size() % 1000U));
    return letter + std::string(length.data()) + text;
}

} // namespace drivers::pboc
