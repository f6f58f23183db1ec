#include "drivers/virtual/cards/card_builder.h"

#include "drivers/virtual/cards/file_description.h"
#include "drivers/virtual/cards/payment_directory.h"
#include "drivers/virtual/cards/pboc_application.h"
#include "drivers/virtual/cards/psam_application.h"
#include "drivers/virtual/cards/ssse_application.h"

namespace drivers::cards {

namespace {

constexpr std::uint16_t kFirstFreeId = 0xDF01;

/// A directory's own identifier, or the next free one by the application's place in the list.
std::uint16_t applicationId(const JsonNode &node, std::size_t index)
{
    const auto id = node.find("id");
    return id ? fileId(*id) : static_cast<std::uint16_t>(kFirstFreeId + index);
}

void buildApplication(const JsonNode &node, Directory &directory, Revision &revision,
                      std::vector<PaymentEntry> &payments)
{
    const JsonNode type = node.at("type");
    const std::string word = type.text();
    if (word == "pboc")
        payments.push_back(buildPboc(node, directory, revision));
    else if (word == "ssse")
        buildSsse(node, directory);
    else if (word == "psam")
        buildPsam(node, directory);
    else if (word == "files")
        loadDirectory(node, directory);
    else
        type.fail("must be \"pboc\", \"ssse\", \"psam\" or \"files\"");
}

} // namespace

void buildCard(const JsonNode &description, Directory &master, Revision &revision)
{
    if (const auto masterFile = description.find("masterFile"))
        loadDirectory(*masterFile, master);
    std::vector<PaymentEntry> payments;
    std::size_t index = 0;
    for (const JsonNode &node : description.at("applications").items()) {
        Directory &directory = master.add(applicationId(node, index++));
        buildApplication(node, directory, revision, payments);
    }
    if (!payments.empty())
        buildPaymentDirectories(payments, master);
}

void saveCard(Directory &master, nlohmann::json &description)
{
    forEachDirectory(master, [&](Directory &directory) {
        if (directory.place)
            saveDirectory(directory, description.at(nlohmann::json::json_pointer(*directory.place)));
    });
}

} // namespace drivers::cards
