#include "drivers/virtual/cards/payment_directory.h"

#include <string_view>

#include "drivers/virtual/cards/tlv_list.h"

namespace drivers::cards {

namespace {

constexpr std::uint16_t kContactId = 0xDF81;
constexpr std::uint16_t kContactlessId = 0xDF82;
constexpr std::uint8_t kEntriesShortId = 1;

Bytes ascii(std::string_view text)
{
    return {text.begin(), text.end()};
}

Bytes entryTemplate(const PaymentEntry &entry)
{
    return encodeTlv(0x61, tlvList({{0x4F, entry.aid}, {0x50, entry.label}, {0x87, {entry.priority}}}));
}

} // namespace

void buildPaymentDirectories(const std::vector<PaymentEntry> &entries, Directory &master)
{
    ElementaryFile file;
    file.shortId = kEntriesShortId;
    file.id = kEntriesShortId;
    file.hasRecords = true;
    Bytes all;
    std::uint8_t number = 0;
    for (const PaymentEntry &entry : entries) {
        const Bytes one = entryTemplate(entry);
        all.insert(all.end(), one.begin(), one.end());
        file.records[++number] = encodeTlv(0x70, one);
    }
    Directory &contact = master.add(kContactId);
    contact.name = ascii("1PAY.SYS.DDF01");
    contact.proprietary = tlvList({{0x88, {kEntriesShortId}}, {0x5F2D, ascii("zh")}});
    contact.files.push_back(std::move(file));

    Directory &contactless = master.add(kContactlessId);
    contactless.name = ascii("2PAY.SYS.DDF01");
    contactless.proprietary = encodeTlv(0xBF0C, all);
}

} // namespace drivers::cards
