#include "drivers/virtual/cards/id_card.h"

#include "drivers/virtual/cards/card_description.h"
#include "drivers/virtual/cards/id_fields.h"

#include <algorithm>

namespace drivers::cards {

namespace {

constexpr char kUsualSeparator = '|';
constexpr std::size_t kFingerprintBytes = 1023; // twice as many digits and a NUL fill the caller's buffer

/// The description, once it is known to be an ID card's.
const nlohmann::json &checked(const nlohmann::json &description)
{
    requireKind(description, "id");
    requireObject(description, "", {"letter", "fields", "uid", "dn", "emid", "fingerprint", "portrait", "module"});
    return description;
}

char letterOf(const nlohmann::json &description)
{
    const std::string letter = requireText(description, "", "letter");
    if (letter.size() != 1 || letter[0] <= ' ' || letter[0] > '~' || letter[0] == kUsualSeparator)
        rejectDescription("/letter", "must be one printable ASCII character other than |");
    return letter[0];
}

void requirePlainText(const std::string &text, const std::string &place)
{
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F || character == kUsualSeparator)
            rejectDescription(place, "must not contain control characters or |");
    }
}

std::map<std::string, std::string> fieldsOf(const nlohmann::json &description, char letter)
{
    const nlohmann::json &members = requireMember(description, "", "fields");
    if (!members.is_object())
        rejectDescription("/fields", "must be an object");
    const IdFieldNames &names = idFieldNames(letter);
    std::map<std::string, std::string> fields;
    for (const auto &[key, ignored] : members.items()) {
        const std::string place = "/fields/" + key;
        if (std::find(names.begin(), names.end(), key) == names.end())
            rejectDescription(place, std::string("is not a field of kind ") + letter);
        std::string text = requireText(members, "/fields", key);
        requirePlainText(text, place);
        fields[key] = std::move(text);
    }
    return fields;
}

std::string codeOf(const nlohmann::json &description, const std::string &key, std::size_t longest)
{
    std::string text = optionalText(description, "", key, "");
    if (text.size() > longest)
        rejectDescription("/" + key, "must be at most " + std::to_string(longest) + " bytes");
    return text;
}

/// Long data may stand in a list, one line of the file each.
Bytes longHex(const nlohmann::json &data, const std::string &place)
{
    if (!data.is_array())
        return requireHex(data, place);
    Bytes bytes;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const Bytes part = requireHex(data.at(i), place + "/" + std::to_string(i));
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

Bytes fingerprintOf(const nlohmann::json &description)
{
    if (!description.contains("fingerprint"))
        return {};
    Bytes bytes = longHex(description.at("fingerprint"), "/fingerprint");
    if (bytes.size() > kFingerprintBytes)
        rejectDescription("/fingerprint", "must be at most " + std::to_string(kFingerprintBytes) + " bytes");
    return bytes;
}

bool flagOf(const nlohmann::json &portrait, const std::string &key)
{
    if (!portrait.contains(key))
        return false;
    if (!portrait.at(key).is_boolean())
        rejectDescription("/portrait/" + key, "must be true or false");
    return portrait.at(key).get<bool>();
}

Portrait portraitOf(const nlohmann::json &description)
{
    Portrait portrait;
    const auto found = description.find("portrait");
    if (found == description.end())
        return portrait;
    requireObject(*found, "/portrait", {"seed", "glasses", "longHair"});
    if (found->contains("seed")) {
        const nlohmann::json &seed = found->at("seed");
        const bool inRange = seed.is_number_integer() && seed >= 0 && seed <= UINT32_MAX;
        if (!inRange)
            rejectDescription("/portrait/seed", "must be a whole number from 0 to 4294967295");
        portrait.seed = seed.get<std::uint32_t>();
    }
    portrait.glasses = flagOf(*found, "glasses");
    portrait.longHair = flagOf(*found, "longHair");
    return portrait;
}

std::map<std::string, ModuleReply> repliesOf(const nlohmann::json &description)
{
    std::map<std::string, ModuleReply> replies;
    const auto found = description.find("module");
    if (found == description.end())
        return replies;
    if (!found->is_object())
        rejectDescription("/module", "must be an object");
    for (const auto &[command, answer] : found->items()) {
        const std::string place = "/module/" + command;
        const auto bytes = fromHex(command);
        if (!bytes || bytes->size() != 2)
            rejectDescription(place, "must be named by a command of 4 hexadecimal digits");
        requireObject(answer, place, {"sw", "data"});
        ModuleReply reply;
        for (const std::uint8_t byte : requireHex(requireMember(answer, place, "sw"), place + "/sw", 4))
            reply.statusWord = reply.statusWord << 8U | byte;
        if (answer.contains("data"))
            reply.data = longHex(answer.at("data"), place + "/data");
        replies[toHex(*bytes)] = std::move(reply);
    }
    return replies;
}

} // namespace

IdCard::IdCard(const nlohmann::json &description)
    : m_description(checked(description)), m_letter(letterOf(description)), m_fields(fieldsOf(description, m_letter)),
      m_uid(codeOf(description, "uid", kIdUidBytes)), m_dn(codeOf(description, "dn", kIdDnBytes)),
      m_emid(codeOf(description, "emid", kIdEmidBytes)), m_fingerprint(fingerprintOf(description)),
      m_portrait(portraitOf(description)), m_replies(repliesOf(description))
{
    const std::size_t size = info(kIdOptionText, kUsualSeparator).size();
    if (size > kIdInfoBytes)
        rejectDescription("/fields", "make a text of " + std::to_string(size) + " bytes, at most " +
                                         std::to_string(kIdInfoBytes) + " fit");
}

std::string IdCard::field(const std::string &name) const
{
    const auto found = m_fields.find(name);
    return found == m_fields.end() ? std::string() : found->second;
}

std::string IdCard::info(std::uint32_t options, char separator) const
{
    if ((options & kIdOptionText) == 0)
        return {};
    std::string text(1, m_letter);
    for (const std::string_view name : idFieldNames(m_letter)) {
        text += separator;
        text += field(std::string(name));
    }
    return text;
}

std::string IdCard::extra(std::uint32_t options) const
{
    return (options & kIdOptionFingerprint) != 0 ? toHex(m_fingerprint) : std::string();
}

ModuleReply IdCard::moduleReply(std::uint8_t byte1, std::uint8_t byte2) const
{
    const auto found = m_replies.find(toHex({byte1, byte2}));
    return found == m_replies.end() ? ModuleReply{kModuleWrongCommand, {}} : found->second;
}

} // namespace drivers::cards
