#include "tools/check/buffers.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace check {

namespace {

/// How many bytes follow a lead byte, or nothing if it is none.
std::optional<int> followers(unsigned char lead)
{
    if (lead < 0x80)
        return 0;
    if (lead >= 0xC2 && lead < 0xE0)
        return 1;
    if (lead >= 0xE0 && lead < 0xF0)
        return 2;
    if (lead >= 0xF0 && lead < 0xF5)
        return 3;
    return std::nullopt;
}

/// Overlong forms, surrogates and what lies past U+10FFFF show in the second byte.
bool canFollow(unsigned char lead, unsigned char second)
{
    switch (lead) {
    case 0xE0:
        return second >= 0xA0;
    case 0xED:
        return second < 0xA0;
    case 0xF0:
        return second >= 0x90;
    case 0xF4:
        return second < 0x90;
    default:
        return true;
    }
}

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

bool isHexadecimal(const std::string &text)
{
    return text.size() % 2 == 0 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

} // namespace

bool isUtf8(const std::string &text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const std::optional<int> more = followers(lead);
        if (!more)
            return false;
        for (int k = 0; k < *more; ++k, ++i) {
            if (i == text.size() || !isContinuation(text[i]))
                return false;
            if (k == 0 && !canFollow(lead, static_cast<unsigned char>(text[i])))
                return false;
        }
    }
    return true;
}

const GuardBuffer &Buffers::add(const std::string &label, std::size_t size)
{
    return m_memory.emplace_back(size, "the buffer \"" + label + "\" of " + m_call);
}

const char *Buffers::input(const char *label, const std::string &text)
{
    const GuardBuffer &memory =
        m_memory.emplace_back(text.size() + 1, "the argument \"" + std::string(label) + "\" of " + m_call);
    std::memcpy(memory.data(), text.c_str(), text.size() + 1);
    return memory.data();
}

char *Buffers::text(const char *label, std::size_t size, TextKind kind, std::size_t leastLength)
{
    const GuardBuffer &memory = add(label, size);
    m_texts.push_back({label, &memory, kind, leastLength});
    return memory.data();
}

std::uint8_t *Buffers::bytes(const char *label, std::size_t size)
{
    return reinterpret_cast<std::uint8_t *>(add(label, size).data());
}

std::optional<std::string> Buffers::problemOf(const Text &text, bool succeeded)
{
    const char *const begin = text.memory->data();
    const std::size_t length = strnlen(begin, text.memory->size());
    if (length == text.memory->size())
        return "no NUL within the " + std::to_string(length) + " bytes of \"" + text.label + "\"";
    if (!succeeded)
        return std::nullopt;
    const std::string value(begin, length);
    if (length < text.leastLength)
        return '"' + text.label + "\" has " + std::to_string(length) + " characters, not " +
               std::to_string(text.leastLength);
    if (text.kind == TextKind::Utf8 && !isUtf8(value))
        return '"' + text.label + "\" is not UTF-8";
    if (text.kind == TextKind::Hexadecimal && !isHexadecimal(value))
        return '"' + text.label + "\" is not hexadecimal text";
    return std::nullopt;
}

std::optional<std::string> Buffers::problem(bool succeeded) const
{
    for (const GuardBuffer &memory : m_memory) {
        if (!memory.startIntact())
            return "wrote before a buffer of " + m_call;
    }
    for (const Text &text : m_texts) {
        if (auto found = problemOf(text, succeeded))
            return found;
    }
    if (!succeeded)
        return std::nullopt;
    for (const Condition &condition : m_conditions) {
        if (auto found = condition())
            return found;
    }
    return std::nullopt;
}

} // namespace check
