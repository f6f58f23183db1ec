#include "drivers/virtual/cards/psam_application.h"

#include "drivers/virtual/cards/cryptogram.h"
#include "drivers/virtual/cards/file_description.h"

namespace drivers::cards {

namespace {

constexpr std::size_t kKeySize = 16;
constexpr std::size_t kBlock = 8;

class PsamApplication : public Application {
public:
    explicit PsamApplication(std::map<std::uint8_t, Bytes> keys) : m_keys(std::move(keys))
    {
        m_instructions[0x88] = {0x00, [this](const Command &c) { return internalAuthenticate(c); }};
    }

private:
    Reply internalAuthenticate(const Command &command) const
    {
        if (command.p1 != 0)
            return sw::kWrongP1P2;
        const auto found = m_keys.find(command.p2);
        if (found == m_keys.end())
            return sw::kReferenceNotFound;
        switch (command.data.size()) {
        case kBlock:
            return encryptBlocks(Algorithm::kTripleDes, found->second, command.data);
        case 2 * kBlock: {
            const auto challenge = command.data.begin() + kBlock;
            const Bytes factor(command.data.begin(), challenge);
            const Bytes key = diversifyKey(Algorithm::kTripleDes, found->second, factor);
            return encryptBlocks(Algorithm::kTripleDes, key, Bytes(challenge, command.data.end()));
        }
        default:
            return sw::kWrongLength;
        }
    }

    std::map<std::uint8_t, Bytes> m_keys; ///< by index
};

} // namespace

void buildPsam(const JsonNode &node, Directory &directory)
{
    loadDirectory(node, directory);
    std::map<std::uint8_t, Bytes> keys;
    for (const JsonNode &key : node.at("keys").items()) {
        const auto index = static_cast<std::uint8_t>(key.at("index").number(0, 0xFF));
        if (!keys.emplace(index, key.at("key").hex(kKeySize, kKeySize)).second)
            key.fail("another key has the same index");
    }
    directory.application = std::make_unique<PsamApplication>(std::move(keys));
}

} // namespace drivers::cards
