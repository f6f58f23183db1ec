// A place in a card's description. Every complaint names the place as a JSON pointer, so that whoever edits the file
// finds it.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "drivers/core/bytes.h"

namespace drivers::cards {

class JsonNode {
public:
    explicit JsonNode(const nlohmann::json &value, std::string place = {}) : m_value(value), m_place(std::move(place))
    {
    }

    /// Throws std::runtime_error: "place: reason".
    [[noreturn]] void fail(const std::string &reason) const;

    const std::string &place() const { return m_place; }

    /// A member of an object; at() throws when there is none.
    JsonNode at(const std::string &key) const;
    std::optional<JsonNode> find(const std::string &key) const;

    /// The elements of an array.
    std::vector<JsonNode> items() const;

    /// The members of an object by key.
    std::vector<std::pair<std::string, JsonNode>> members() const;

    std::string text() const;
    long number(long min, long max) const;

    /// A text of min to max decimal digits.
    std::string digits(std::size_t min, std::size_t max) const;

    /// A text of hexadecimal digits; blanks between bytes are allowed.
    Bytes hex(std::size_t minBytes, std::size_t maxBytes) const;

    /// A date "YYYY-MM-DD" as the digits "YYYYMMDD".
    std::string date() const;

private:
    const nlohmann::json &m_value;
    std::string m_place;
};

} // namespace drivers::cards
