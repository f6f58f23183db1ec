// Input: a dump file of a Mifare card; each of the three formats is tried.
#include "drivers/virtual/cards/mifare_card.h"
#include "drivers/virtual/cards/mifare_dump.h"
#include "tests/fuzz/require.h"

#include <optional>
#include <stdexcept>

using namespace drivers::cards;
using drivers::MifareImage;
using fuzz::require;
using nlohmann::json;

namespace {

template <class Import>
std::optional<MifareImage> imported(const Import &import)
{
    try {
        return import();
    } catch (const std::runtime_error &) {
        return std::nullopt;
    }
}

/// An image that was read goes through all formats, and the card that holds it is the same image or refused.
void checkImage(const std::optional<MifareImage> &image)
{
    if (!image)
        return;
    require(importRawDump(exportRawDump(*image)) == *image, "a raw dump comes back");
    require(importEmlDump(exportEmlDump(*image)) == *image, "an .eml dump comes back");
    require(importJsonDump(exportJsonDump(*image)) == *image, "a JSON dump comes back");
    try {
        const MifareCard card({{"kind", "mifare"}, {"blocks", mifareBlocksToJson(*image)}});
        require(card.image() == *image, "the card holds the dump");
    } catch (const std::runtime_error &) {
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string content(data, data + size);
    checkImage(imported([&] { return importRawDump(content); }));
    checkImage(imported([&] { return importEmlDump(content); }));
    const json dump = json::parse(content, nullptr, false);
    if (!dump.is_discarded())
        checkImage(imported([&] { return importJsonDump(dump); }));
    return 0;
}
