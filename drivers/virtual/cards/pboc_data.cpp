#include "drivers/virtual/cards/pboc_data.h"

#include "drivers/virtual/cards/gbk.h"
#include "drivers/virtual/cards/key_description.h"
#include "drivers/virtual/cards/tlv_list.h"

namespace drivers::cards {

namespace {

constexpr std::size_t kKeySize = 16;
constexpr std::uint8_t kHolderShortId = 1;
constexpr std::uint8_t kAccountShortId = 2;

Bytes gbkText(const JsonNode &node, std::size_t min, std::size_t max)
{
    const auto bytes = gbkFromUtf8(node.text());
    if (!bytes || bytes->size() < min || bytes->size() > max)
        node.fail("must be " + std::to_string(min) + " to " + std::to_string(max) + " bytes of GBK text");
    return *bytes;
}

/// Digits, two a byte, padded with F on the right.
Bytes compressedDigits(std::string digits)
{
    if (digits.size() % 2 != 0)
        digits.push_back('F');
    return fromHex(digits).value();
}

/// The last six digits of YYYYMMDD.
Bytes shortDate(const std::string &date)
{
    return fromHex(date.substr(2)).value();
}

Bytes trackTwo(const PbocData &data)
{
    constexpr const char *kDiscretionary = "000000";
    return compressedDigits(data.pan + "D" + data.expiry.substr(2, 4) + data.serviceCode + kDiscretionary);
}

void loadKey(const JsonNode &node, PbocData &data)
{
    data.algorithm = loadAlgorithm(node.at("algorithm"));
    const Bytes masterKey = node.at("masterKey").hex(kKeySize, kKeySize);
    data.cardKey = diversifyKey(data.algorithm, masterKey, cardFactor(data.pan, data.sequence));
    if (const auto index = node.find("keyIndex"))
        data.keyIndex = static_cast<std::uint8_t>(index->number(0, 0xFF));
}

void loadHolder(const JsonNode &node, PbocData &data)
{
    data.holderName = gbkText(node.at("name"), 2, 26);
    const std::string idType = node.at("idType").digits(2, 2);
    data.idType = {idType.begin(), idType.end()};
    data.idNumber = gbkText(node.at("idNumber"), 1, 40);
}

void loadElectronicCash(const JsonNode &node, PbocData &data)
{
    constexpr long kMaxAmount = 999'999'999'999;
    data.hasElectronicCash = true;
    data.balance = node.at("balance").number(0, kMaxAmount);
    data.limit = node.at("limit").number(0, kMaxAmount);
}

} // namespace

PbocData loadPbocData(const JsonNode &node)
{
    PbocData data;
    data.label = gbkText(node.at("label"), 1, 16);
    if (const auto priority = node.find("priority"))
        data.priority = static_cast<std::uint8_t>(priority->number(1, 15));
    data.pan = node.at("pan").digits(12, 19);
    data.sequence = node.at("panSequence").digits(2, 2);
    loadKey(node, data);
    loadHolder(node.at("holder"), data);
    data.effective = node.at("effective").date();
    data.expiry = node.at("expiry").date();
    data.serviceCode = node.at("serviceCode").digits(3, 3);
    data.country = node.at("country").digits(4, 4);
    data.currency = node.at("currency").digits(4, 4);
    data.counter = static_cast<std::uint16_t>(node.at("transactionCounter").number(0, 0xFFFF));
    if (const auto last = node.find("lastOnlineCounter"))
        data.lastOnlineCounter = static_cast<std::uint16_t>(last->number(0, 0xFFFF));
    if (const auto cash = node.find("electronicCash"))
        loadElectronicCash(*cash, data);
    return data;
}

Bytes processingOptionsList()
{
    return {0x9F, 0x66, 0x04, 0x9F, 0x02, 0x06, 0x9F, 0x1A, 0x02};
}

Bytes firstCryptogramList()
{
    return {0x9F, 0x02, 0x06, 0x9F, 0x03, 0x06, 0x9F, 0x1A, 0x02, 0x95, 0x05, 0x5F, 0x2A, 0x02,
            0x9A, 0x03, 0x9C, 0x01, 0x9F, 0x37, 0x04, 0x9F, 0x21, 0x03, 0x9F, 0x4E, 0x14};
}

Bytes secondCryptogramList()
{
    return {0x8A, 0x02, 0x9F, 0x02, 0x06, 0x9F, 0x03, 0x06, 0x9F, 0x1A, 0x02, 0x95, 0x05,
            0x5F, 0x2A, 0x02, 0x9A, 0x03, 0x9C, 0x01, 0x9F, 0x37, 0x04, 0x9F, 0x21, 0x03};
}

std::size_t listedSize(const Bytes &list)
{
    std::size_t size = 0;
    const auto entries = parseDol(list);
    for (const DolEntry &entry : entries.value())
        size += entry.length;
    return size;
}

std::vector<ElementaryFile> pbocFiles(const PbocData &data)
{
    const auto withOneRecord = [](std::uint8_t shortId, const Bytes &elements) {
        ElementaryFile file;
        file.id = shortId;
        file.shortId = shortId;
        file.hasRecords = true;
        file.records[1] = encodeTlv(0x70, elements);
        return file;
    };
    const Bytes holder = tlvList({
        {0x57, trackTwo(data)},
        {0x5F20, data.holderName},
        {0x9F61, data.idNumber},
        {0x9F62, data.idType},
    });
    const Bytes account = tlvList({
        {0x5A, compressedDigits(data.pan)},
        {0x5F34, numericBytes(data.sequence, 1)},
        {0x5F24, shortDate(data.expiry)},
        {0x5F25, shortDate(data.effective)},
        {0x5F28, numericBytes(data.country, 2)},
        {0x5F30, numericBytes(data.serviceCode, 2)},
        {0x9F51, numericBytes(data.currency, 2)},
        {0x9F07, {0xFF, 0x00}}, // usage: everything
        {0x9F08, {0x00, 0x30}}, // version
        {0x8E, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x42, 0x03, 0x1E, 0x03, 0x1F, 0x00}}, // verification
        {0x8C, firstCryptogramList()},
        {0x8D, secondCryptogramList()},
    });
    return {withOneRecord(kHolderShortId, holder), withOneRecord(kAccountShortId, account)};
}

Bytes fileLocator()
{
    return {kHolderShortId << 3U, 0x01, 0x01, 0x00, kAccountShortId << 3U, 0x01, 0x01, 0x00};
}

Bytes numericBytes(const std::string &digits, std::size_t size)
{
    const std::string padded = std::string(size * 2, '0') + digits;
    return fromHex(padded.substr(padded.size() - size * 2)).value();
}

} // namespace drivers::cards
