#include "drivers/virtual/cards/card_description.h"

#include <algorithm>
#include <stdexcept>

namespace drivers::cards {

namespace {

std::string checkedText(const nlohmann::json &value, const std::string &place)
{
    if (!value.is_string())
        rejectDescription(place, "must be text");
    auto text = value.get<std::string>();
    if (text.find('\0') != std::string::npos)
        rejectDescription(place, "must not contain a NUL character");
    return text;
}

std::string memberPlace(const std::string &place, const std::string &key)
{
    std::string result = place;
    return result.append("/").append(key);
}

bool isCommonMember(const std::string &place, const std::string &key)
{
    if (!place.empty())
        return false;
    return key == "kind" || key == "title" || key == "$schema";
}

} // namespace

void rejectDescription(const std::string &place, const std::string &reason)
{
    throw std::runtime_error((place.empty() ? "/" : place) + ": " + reason);
}

void requireObject(const nlohmann::json &value, const std::string &place, std::initializer_list<const char *> allowed)
{
    if (!value.is_object())
        rejectDescription(place, "must be an object");
    for (const auto &[key, ignored] : value.items()) {
        const auto isKey = [&name = key](const char *known) { return name == known; };
        if (!isCommonMember(place, key) && std::none_of(allowed.begin(), allowed.end(), isKey))
            rejectDescription(memberPlace(place, key), "is not known here");
    }
}

void requireKind(const nlohmann::json &description, const std::string &kind)
{
    if (!description.is_object())
        rejectDescription("", "must be an object");
    if (requireText(description, "", "kind") != kind)
        rejectDescription("/kind", "must be \"" + kind + "\"");
}

const nlohmann::json &requireMember(const nlohmann::json &object, const std::string &place, const std::string &key)
{
    const auto found = object.find(key);
    if (found == object.end())
        rejectDescription(memberPlace(place, key), "is missing");
    return *found;
}

std::string requireText(const nlohmann::json &object, const std::string &place, const std::string &key)
{
    return checkedText(requireMember(object, place, key), memberPlace(place, key));
}

std::string optionalText(const nlohmann::json &object, const std::string &place, const std::string &key,
                         const std::string &fallback)
{
    return object.contains(key) ? requireText(object, place, key) : fallback;
}

Bytes requireHex(const nlohmann::json &value, const std::string &place)
{
    const auto bytes = fromHex(checkedText(value, place));
    if (!bytes)
        rejectDescription(place, "must be an even number of hexadecimal digits");
    return *bytes;
}

Bytes requireHex(const nlohmann::json &value, const std::string &place, std::size_t size)
{
    auto bytes = requireHex(value, place);
    if (bytes.size() != size)
        rejectDescription(place, "must be " + std::to_string(size * 2) + " hexadecimal digits");
    return bytes;
}

} // namespace drivers::cards
