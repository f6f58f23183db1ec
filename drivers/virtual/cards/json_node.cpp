#include "drivers/virtual/cards/json_node.h"

#include <algorithm>
#include <stdexcept>

namespace drivers::cards {

namespace {

bool allDigits(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string withoutBlanks(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

std::string range(std::size_t min, std::size_t max)
{
    return min == max ? std::to_string(min) : std::to_string(min) + " to " + std::to_string(max);
}

} // namespace

void JsonNode::fail(const std::string &reason) const
{
    throw std::runtime_error((m_place.empty() ? "/" : m_place) + ": " + reason);
}

void JsonNode::requireKind(const std::string &kind) const
{
    const JsonNode found = at("kind");
    if (found.text() != kind)
        found.fail("must be \"" + kind + "\"");
}

void JsonNode::allowOnly(std::initializer_list<const char *> keys) const
{
    for (const auto &[key, node] : members()) {
        const auto isKey = [&name = key](const char *known) { return name == known; };
        const bool common = m_place.empty() && (key == "kind" || key == "title" || key == "$schema");
        if (!common && std::none_of(keys.begin(), keys.end(), isKey))
            node.fail("is not known here");
    }
}

std::optional<JsonNode> JsonNode::find(const std::string &key) const
{
    if (!m_value.is_object())
        fail("must be an object");
    const auto found = m_value.find(key);
    if (found == m_value.end())
        return std::nullopt;
    return JsonNode(*found, m_place + "/" + key);
}

JsonNode JsonNode::at(const std::string &key) const
{
    const auto found = find(key);
    if (!found)
        fail("\"" + key + "\" is missing");
    return *found;
}

std::vector<JsonNode> JsonNode::items() const
{
    if (!m_value.is_array())
        fail("must be an array");
    std::vector<JsonNode> nodes;
    for (std::size_t i = 0; i < m_value.size(); ++i)
        nodes.emplace_back(m_value[i], m_place + "/" + std::to_string(i));
    return nodes;
}

std::vector<std::pair<std::string, JsonNode>> JsonNode::members() const
{
    if (!m_value.is_object())
        fail("must be an object");
    std::vector<std::pair<std::string, JsonNode>> nodes;
    for (const auto &[key, value] : m_value.items())
        nodes.emplace_back(key, JsonNode(value, m_place + "/" + key));
    return nodes;
}

std::string JsonNode::text() const
{
    if (!m_value.is_string())
        fail("must be text");
    auto text = m_value.get<std::string>();
    if (text.find('\0') != std::string::npos)
        fail("must not contain a NUL character");
    return text;
}

std::string JsonNode::textOr(const std::string &key, const std::string &fallback) const
{
    const auto member = find(key);
    return member ? member->text() : fallback;
}

bool JsonNode::flag() const
{
    if (!m_value.is_boolean())
        fail("must be true or false");
    return m_value.get<bool>();
}

long JsonNode::number(long min, long max) const
{
    if (!m_value.is_number_integer() || m_value < min || m_value > max)
        fail("must be a whole number from " + std::to_string(min) + " to " + std::to_string(max));
    return m_value.get<long>();
}

std::string JsonNode::digits(std::size_t min, std::size_t max) const
{
    std::string value = text();
    if (value.size() < min || value.size() > max || !allDigits(value))
        fail("must be " + range(min, max) + " decimal digits");
    return value;
}

Bytes JsonNode::hex() const
{
    auto bytes = fromHex(withoutBlanks(text()));
    if (!bytes)
        fail("must be an even number of hexadecimal digits");
    return *bytes;
}

Bytes JsonNode::hex(std::size_t minBytes, std::size_t maxBytes) const
{
    auto bytes = fromHex(withoutBlanks(text()));
    if (!bytes || bytes->size() < minBytes || bytes->size() > maxBytes)
        fail("must be " + range(minBytes, maxBytes) + " bytes in hexadecimal");
    return *bytes;
}

std::string JsonNode::date() const
{
    std::string value = text();
    if (value.size() != 10 || value[4] != '-' || value[7] != '-')
        fail("must be a date YYYY-MM-DD");
    value.erase(7, 1).erase(4, 1);
    if (!allDigits(value) || value.substr(4, 2) < "01" || value.substr(4, 2) > "12" || value.substr(6) < "01" ||
        value.substr(6) > "31")
        fail("must be a date YYYY-MM-DD");
    return value;
}

} // namespace drivers::cards
