#include "drivers/virtual/cards/file_description.h"

#include "drivers/virtual/cards/gbk.h"

namespace drivers::cards {

namespace {

constexpr std::size_t kMaxRecord = 254;
constexpr std::size_t kMaxContent = 0x8000; ///< what the offset of READ BINARY reaches
constexpr int kMaxTries = 15;               ///< one digit of the status word
constexpr int kDefaultTries = 3;

Bytes textBytes(const std::string &text)
{
    return {text.begin(), text.end()};
}

Access loadAccess(const JsonNode &file, const char *key, Access fallback)
{
    const auto node = file.find(key);
    if (!node)
        return fallback;
    const std::string word = node->text();
    if (word == "always")
        return Access::kAlways;
    if (word == "pin")
        return Access::kPin;
    if (word != "never")
        node->fail("must be \"always\", \"pin\" or \"never\"");
    return Access::kNever;
}

void loadRecords(const JsonNode &node, ElementaryFile &file)
{
    constexpr std::size_t kMaxRecords = 254;
    file.hasRecords = true;
    std::size_t number = 0;
    for (const JsonNode &record : node.items()) {
        if (++number > kMaxRecords)
            record.fail("a file has at most 254 records");
        file.records[static_cast<std::uint8_t>(number)] = record.hex(1, kMaxRecord);
    }
}

ElementaryFile loadFile(const JsonNode &node)
{
    ElementaryFile file;
    file.id = fileId(node.at("id"));
    if (const auto shortId = node.find("sfi"))
        file.shortId = static_cast<std::uint8_t>(shortId->number(1, 30));
    file.read = loadAccess(node, "read", Access::kAlways);
    file.update = loadAccess(node, "update", Access::kNever);
    if (const auto records = node.find("records"))
        loadRecords(*records, file);
    else if (const auto text = node.find("text"))
        file.content = textBytes(text->text());
    else
        file.content = node.at("content").hex(0, kMaxContent);
    if (file.content.size() > kMaxContent)
        node.fail("a file has at most 32768 bytes");
    return file;
}

void saveFile(const ElementaryFile &file, nlohmann::json &description)
{
    if (!file.hasRecords) {
        // What was written need not be text any more.
        description.erase("text");
        description["content"] = toHex(file.content);
        return;
    }
    nlohmann::json records = nlohmann::json::array();
    for (const auto &[number, record] : file.records)
        records.push_back(toHex(record));
    description["records"] = records;
}

} // namespace

std::uint16_t fileId(const JsonNode &node)
{
    const Bytes id = node.hex(2, 2);
    return static_cast<std::uint16_t>(id[0] << 8U | id[1]);
}

Bytes directoryName(const JsonNode &node)
{
    constexpr std::size_t kMaxName = 16;
    if (const auto aid = node.find("aid"))
        return aid->hex(1, kMaxName);
    const auto name = node.find("name");
    if (!name)
        return {};
    const auto bytes = gbkFromUtf8(name->text());
    if (!bytes || bytes->empty() || bytes->size() > kMaxName)
        name->fail("must be 1 to 16 bytes of GBK text");
    return *bytes;
}

Pin loadPin(const JsonNode &node, std::uint8_t reference, const std::function<Bytes(const std::string &)> &encode)
{
    Pin pin;
    pin.reference = reference;
    const JsonNode value = node.at("value");
    pin.value = encode(value.digits(4, 12));
    const auto tries = node.find("tries");
    pin.tries = tries ? static_cast<int>(tries->number(1, kMaxTries)) : kDefaultTries;
    const auto left = node.find("left");
    pin.left = left ? static_cast<int>(left->number(0, pin.tries)) : pin.tries;
    return pin;
}

void loadDirectory(const JsonNode &node, Directory &directory)
{
    directory.place = node.place();
    directory.name = directoryName(node);
    if (const auto pin = node.find("pin")) {
        const auto reference = pin->find("reference");
        directory.pin = loadPin(
            *pin, reference ? static_cast<std::uint8_t>(reference->number(0, 0xFF)) : std::uint8_t{0x01}, textBytes);
    }
    if (const auto objects = node.find("dataObjects")) {
        for (const auto &[key, value] : objects->members()) {
            const auto tag = fromHex(key);
            if (!tag || tag->size() != 2)
                value.fail("a data object is named by P1 P2, four hexadecimal digits");
            directory.dataObjects[static_cast<std::uint16_t>((*tag)[0] << 8U | (*tag)[1])] = value.hex(1, kMaxRecord);
        }
    }
    if (const auto files = node.find("files")) {
        for (const JsonNode &file : files->items()) {
            ElementaryFile loaded = loadFile(file);
            if (directory.file(loaded.id) != nullptr)
                file.fail("another file of the directory has the same identifier");
            directory.files.push_back(std::move(loaded));
        }
    }
    if (const auto directories = node.find("directories")) {
        for (const JsonNode &child : directories->items())
            loadDirectory(child, directory.add(fileId(child.at("id"))));
    }
}

void saveDirectory(const Directory &directory, nlohmann::json &object)
{
    if (directory.pin && directory.pin->left != object["pin"].value("left", directory.pin->tries))
        object["pin"]["left"] = directory.pin->left;
    for (std::size_t i = 0; i < directory.files.size(); ++i) {
        if (directory.files[i].changed)
            saveFile(directory.files[i], object["files"][i]);
    }
    if (directory.application)
        directory.application->save(object);
}

} // namespace drivers::cards
