// A place in a card's description. Every complaint is a std::runtime_error that begins with the place, a JSON pointer
// such as "/blocks/3", so that whoever edits the file finds it.
#pragma once

#include "drivers/core/bytes.h"

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace drivers::cards {

class JsonNode {
public:
    explicit JsonNode(const nlohmann::json &value, std::string place = {}) : m_value(value), m_place(std::move(place))
    {
    }

    /// Throws std::runtime_error: "place: reason".
    [[noreturn]] void fail(const std::string &reason) const;

    const std::string &place() const { return m_place; }

    /// Fails unless this is an object whose "kind" is `kind`.
    void requireKind(const std::string &kind) const;

    /// Fails unless this is an object with no members but these; "kind", "title" and "$schema" may always stand at the
    /// top.
    void allowOnly(std::initializer_list<const char *> keys) const;

    /// A member of an object; at() throws when there is none.
    JsonNode at(const std::string &key) const;
    std::optional<JsonNode> find(const std::string &key) const;

    bool isObject() const { return m_value.is_object(); }
    bool isArray() const { return m_value.is_array(); }

    /// The elements of an array.
    std::vector<JsonNode> items() const;

    /// The members of an object by key.
    std::vector<std::pair<std::string, JsonNode>> members() const;

    /// A text without NUL characters, which no call could hand on.
    std::string text() const;

    /// As text(), of a member that may be missing.
    std::string textOr(const std::string &key, const std::string &fallback) const;

    bool flag() const;
    long number(long min, long max) const;

    /// A text of min to max decimal digits.
    std::string digits(std::size_t min, std::size_t max) const;

    /// A text of hexadecimal digits; blanks between bytes are allowed.
    Bytes hex() const;
    Bytes hex(std::size_t minBytes, std::size_t maxBytes) const;

    /// A date "YYYY-MM-DD" as the digits "YYYYMMDD".
    std::string date() const;

private:
    const nlohmann::json &m_value;
    std::string m_place;
};

} // namespace drivers::cards
