// Reading a card's JSON description. Every function throws std::runtime_error whose text begins with the place, a JSON
// pointer such as "/blocks/3", so that whoever wrote the file finds the mistake.
#pragma once

#include "drivers/core/bytes.h"

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <string>

namespace drivers::cards {

/// Throws "<place>: <reason>"; an empty place is shown as "/".
[[noreturn]] void rejectDescription(const std::string &place, const std::string &reason);

/// Rejects a value that is not an object or has a member of another name than `allowed` ("kind", "title" and
/// "$schema" may always stand at the top).
void requireObject(const nlohmann::json &value, const std::string &place, std::initializer_list<const char *> allowed);

/// Rejects a description whose "kind" is not `kind`.
void requireKind(const nlohmann::json &description, const std::string &kind);

/// The member `key` of the object at `place`, which must have it.
const nlohmann::json &requireMember(const nlohmann::json &object, const std::string &place, const std::string &key);

/// A member that must be text without NUL characters.
std::string requireText(const nlohmann::json &object, const std::string &place, const std::string &key);

/// As requireText, or `fallback` where the member is missing.
std::string optionalText(const nlohmann::json &object, const std::string &place, const std::string &key,
                         const std::string &fallback);

/// The bytes of a value that must be hexadecimal text.
Bytes requireHex(const nlohmann::json &value, const std::string &place);

/// As requireHex, of exactly `size` bytes.
Bytes requireHex(const nlohmann::json &value, const std::string &place, std::size_t size);

} // namespace drivers::cards
