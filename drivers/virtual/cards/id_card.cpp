#include "drivers/virtual/cards/id_card.h"

#include "drivers/virtual/cards/id_fields.h"
#include "drivers/virtual/cards/json_node.h"

#include <algorithm>

namespace drivers::cards {

namespace {

constexpr char kUsualSeparator = '|';
constexpr std::size_t kFingerprintBytes = 1023; // twice as many digits and a NUL fill the caller's buffer

/// The description, once it is known to be an ID card's.
const nlohmann::json &checked(const nlohmann::json &description)
{
    const JsonNode root(description);
    root.requireKind("id");
    root.allowOnly({"letter", "fields", "uid", "dn", "emid", "fingerprint", "portrait", "module"});
    return description;
}

char letterOf(const JsonNode &root)
{
    const JsonNode node = root.at("letter");
    const std::string letter = node.text();
    if (letter.size() != 1 || letter[0] <= ' ' || letter[0] > '~' || letter[0] == kUsualSeparator)
        node.fail("must be one printable ASCII character other than |");
    return letter[0];
}

std::string plainText(const JsonNode &node)
{
    std::string text = node.text();
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F || character == kUsualSeparator)
            node.fail("must not contain control characters or |");
    }
    return text;
}

std::map<std::string, std::string> fieldsOf(const JsonNode &root, char letter)
{
    const IdFieldNames &names = idFieldNames(letter);
    std::map<std::string, std::string> fields;
    for (const auto &[key, node] : root.at("fields").members()) {
        if (std::find(names.begin(), names.end(), key) == names.end())
            node.fail(std::string("is not a field of kind ") + letter);
        fields[key] = plainText(node);
    }
    return fields;
}

std::string codeOf(const JsonNode &root, const std::string &key, std::size_t longest)
{
    std::string text = root.textOr(key, "");
    if (text.size() > longest)
        root.at(key).fail("must be at most " + std::to_string(longest) + " bytes");
    return text;
}

/// Long data may stand in a list, one line of the file each.
Bytes longHex(const JsonNode &data)
{
    if (!data.isArray())
        return data.hex();
    Bytes bytes;
    for (const JsonNode &line : data.items()) {
        const Bytes part = line.hex();
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

Bytes fingerprintOf(const JsonNode &root)
{
    const auto node = root.find("fingerprint");
    if (!node)
        return {};
    Bytes bytes = longHex(*node);
    if (bytes.size() > kFingerprintBytes)
        node->fail("must be at most " + std::to_string(kFingerprintBytes) + " bytes");
    return bytes;
}

Portrait portraitOf(const JsonNode &root)
{
    Portrait portrait;
    const auto node = root.find("portrait");
    if (!node)
        return portrait;
    node->allowOnly({"seed", "glasses", "longHair"});
    if (const auto seed = node->find("seed"))
        portrait.seed = static_cast<std::uint32_t>(seed->number(0, UINT32_MAX));
    if (const auto glasses = node->find("glasses"))
        portrait.glasses = glasses->flag();
    if (const auto longHair = node->find("longHair"))
        portrait.longHair = longHair->flag();
    return portrait;
}

ModuleReply replyOf(const JsonNode &answer)
{
    answer.allowOnly({"sw", "data"});
    ModuleReply reply;
    for (const std::uint8_t byte : answer.at("sw").hex(4, 4))
        reply.statusWord = reply.statusWord << 8U | byte;
    if (const auto data = answer.find("data"))
        reply.data = longHex(*data);
    return reply;
}

std::map<std::string, ModuleReply> repliesOf(const JsonNode &root)
{
    std::map<std::string, ModuleReply> replies;
    const auto module = root.find("module");
    if (!module)
        return replies;
    for (const auto &[command, answer] : module->members()) {
        const auto bytes = fromHex(command);
        if (!bytes || bytes->size() != 2)
            answer.fail("must be named by a command of 4 hexadecimal digits");
        replies[toHex(*bytes)] = replyOf(answer);
    }
    return replies;
}

} // namespace

IdCard::IdCard(const nlohmann::json &description) : IdCard(JsonNode(checked(description)), description) {}

IdCard::IdCard(const JsonNode &root, const nlohmann::json &description)
    : m_description(description), m_letter(letterOf(root)), m_fields(fieldsOf(root, m_letter)),
      m_uid(codeOf(root, "uid", kIdUidBytes)), m_dn(codeOf(root, "dn", kIdDnBytes)),
      m_emid(codeOf(root, "emid", kIdEmidBytes)), m_fingerprint(fingerprintOf(root)), m_portrait(portraitOf(root)),
      m_replies(repliesOf(root))
{
    const std::size_t size = info(kIdOptionText, kUsualSeparator).size();
    if (size > kIdInfoBytes)
        root.at("fields").fail("make a text of " + std::to_string(size) + " bytes, at most " +
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
