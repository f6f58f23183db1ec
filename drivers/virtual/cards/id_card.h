// A resident ID card: its fields, its codes, its answers to module commands and what its portrait is drawn from.
#pragma once

#include "drivers/core/bytes.h"

#include <nlohmann/json.hpp>

#include <array>
#include <map>
#include <string>

namespace drivers::cards {

class JsonNode;

// Option bits of a reading.
constexpr std::uint32_t kIdOptionFingerprint = 0x01;
constexpr std::uint32_t kIdOptionText = 0x02;
constexpr std::uint32_t kIdOptionPhoto = 0x04;
constexpr std::uint32_t kIdOptionComposite = 0x08;

// Longest texts, in bytes without the closing NUL.
constexpr std::size_t kIdInfoBytes = 511;
constexpr std::size_t kIdUidBytes = 31;
constexpr std::size_t kIdDnBytes = 255;
constexpr std::size_t kIdEmidBytes = 63;

/// What the drawn portrait varies by. The seed settles whatever is not named here.
struct Portrait {
    std::uint32_t seed = 0;
    bool glasses = false;
    bool longHair = false;
};

/// The module's answer to a two-byte command.
struct ModuleReply {
    std::uint32_t statusWord = 0;
    Bytes data;
};

/// Status word for a command that the card's description has no answer to: wrong command.
constexpr std::uint32_t kModuleWrongCommand = 0x21;

/// Description: "kind": "id"; "letter": the card kind, one printable ASCII character; "fields": an object of the
/// letter's field names (id_fields.h), a missing one is empty; and optionally "uid", "dn", "emid" (text),
/// "fingerprint" (at most 1023 bytes), "portrait" (seed, glasses, longHair), "module": an object of command ("2001") to
/// {"sw": 8 digits, "data": bytes}. Bytes are hexadecimal text or a list of such.
class IdCard {
public:
    /// Throws std::runtime_error with the JSON place. Fields hold no control character and no "|", which separates
    /// them as long as nobody sets another separator.
    explicit IdCard(const nlohmann::json &description);

    nlohmann::json description() const { return m_description; }

    /// Reading does not change a card.
    static bool changed() { return false; }

    char letter() const { return m_letter; }

    /// A field by its name; empty if the card's kind has none of that name.
    std::string field(const std::string &name) const;

    /// The letter and the fields joined by the separator, UTF-8, at most kIdInfoBytes. Empty without
    /// kIdOptionText.
    std::string info(std::uint32_t options, char separator) const;

    /// The fingerprint template as hexadecimal text. Empty without kIdOptionFingerprint or on a card that has none.
    std::string extra(std::uint32_t options) const;

    const std::string &uid() const { return m_uid; }
    const std::string &dn() const { return m_dn; }
    const std::string &emid() const { return m_emid; }
    const Portrait &portrait() const { return m_portrait; }

    /// kModuleWrongCommand and no data for a command without an answer.
    ModuleReply moduleReply(std::uint8_t byte1, std::uint8_t byte2) const;

private:
    IdCard(const JsonNode &root, const nlohmann::json &description);

    nlohmann::json m_description;
    char m_letter;
    std::map<std::string, std::string> m_fields;
    std::string m_uid;
    std::string m_dn;
    std::string m_emid;
    Bytes m_fingerprint;
    Portrait m_portrait;
    std::map<std::string, ModuleReply> m_replies;
};

} // namespace drivers::cards
