// Input: BER-TLV, a data object list, or a command APDU; all three are tried.
#include "drivers/core/ber_tlv.h"
#include "drivers/core/command_apdu.h"
#include "drivers/virtual/cards/apdu.h"
#include "tests/fuzz/require.h"

using namespace drivers;
using fuzz::require;

namespace {

bool sameElements(const std::vector<Tlv> &left, const std::vector<Tlv> &right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Tlv &a, const Tlv &b) { return a.tag == b.tag && a.value == b.value; });
}

void checkTlv(const Bytes &bytes)
{
    TlvMap primitives;
    const bool collected = collectPrimitives(bytes, primitives);
    const auto elements = parseTlv(bytes);
    require(elements || !collected, "what has elements on all levels has them on the first");
    if (!elements)
        return;
    Bytes encoded;
    for (const Tlv &element : *elements) {
        const Bytes one = encodeTlv(element.tag, element.value);
        encoded.insert(encoded.end(), one.begin(), one.end());
    }
    require(elements->empty() || findTlv(bytes, elements->back().tag), "an element is found by its tag");
    const auto again = parseTlv(encoded);
    require(again && sameElements(*elements, *again), "elements are the same after encoding");
}

void checkDol(const Bytes &bytes)
{
    const auto entries = parseDol(bytes);
    if (!entries)
        return;
    for (const DolEntry &entry : *entries)
        require(entry.length <= 0xFF, "an entry's length has one byte");
}

void checkCommand(const Bytes &bytes)
{
    const auto command = parseCommandApdu(bytes);
    const auto shortCommand = cards::parseCommand(bytes);
    if (command) {
        require(kApduHeaderSize + command->data.size() <= bytes.size(), "the data lie inside the command");
        require(!command->le || (*command->le >= 1 && *command->le <= 65536), "Le is 1 to 65536");
    }
    if (!shortCommand)
        return;
    require(command && !command->extended && command->data == shortCommand->data &&
                command->le == shortCommand->expected,
            "reader and card see the same short command");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Bytes bytes(data, data + size);
    checkTlv(bytes);
    checkDol(bytes);
    checkCommand(bytes);
    return 0;
}
