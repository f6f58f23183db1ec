#include "drivers/core/trace_mask.h"

#include "drivers/core/ber_tlv.h"

#include <algorithm>
#include <cctype>

namespace drivers {

namespace {

constexpr std::size_t kHeaderDigits = 10; // CLA INS P1 P2 Lc

// Commands whose data hold a PIN, and ENVELOPE, which may hold any of them.
bool carriesPin(std::uint8_t ins)
{
    constexpr std::array<std::uint8_t, 7> kInstructions = {
        0x20, 0x21, // VERIFY
        0x24, 0x25, // CHANGE REFERENCE DATA
        0x2C, 0x2D, // RESET RETRY COUNTER
        0xC2,
    };
    return std::find(kInstructions.begin(), kInstructions.end(), ins) != kInstructions.end();
}

void star(std::string &text, std::size_t from, std::size_t count)
{
    if (from < text.size())
        std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(from), std::min(count, text.size() - from), '*');
}

void maskCommand(std::string &text)
{
    const auto header = fromHex(std::string_view(text).substr(0, 4));
    // What cannot be understood may be anything.
    const bool understood = header && header->size() == 2;
    if (!understood || carriesPin(header->back()))
        star(text, understood ? kHeaderDigits : 0, text.size());
}

// Where elements are cut off, or there are none, whatever follows something like the tag of a track may be one.
void maskFromTrackTag(std::string &text, const Bytes &bytes)
{
    const auto tag = std::find_if(bytes.begin(), bytes.end(),
                                  [](std::uint8_t byte) { return byte == 0x56 || byte == 0x57 || byte == 0x9F; });
    if (tag != bytes.end())
        star(text, 2 * static_cast<std::size_t>(tag - bytes.begin()) + 2, text.size());
}

void maskAnswer(std::string &text)
{
    constexpr std::array<std::uint32_t, 5> kTrackTags = {0x56, 0x57, 0x9F6B, 0x9F1F, 0x9F20};
    std::optional<Bytes> bytes = fromHex(text);
    if (!bytes || bytes->size() < 2)
        return;
    bytes->resize(bytes->size() - 2); // SW1 SW2
    TlvMap elements;
    if (!collectPrimitives(*bytes, elements)) {
        maskFromTrackTag(text, *bytes);
        return;
    }
    for (const std::uint32_t tag : kTrackTags) {
        const auto found = elements.find(tag);
        if (found == elements.end() || found->second.empty())
            continue;
        const auto at = std::search(bytes->begin(), bytes->end(), found->second.begin(), found->second.end());
        star(text, 2 * static_cast<std::size_t>(at - bytes->begin()), 2 * found->second.size());
    }
}

// Fields of one letter, three decimal digits of length and the value.
void maskLetters(std::string &text)
{
    constexpr char kTrack2 = 'D';
    std::size_t at = 0;
    while (at + 4 <= text.size()) {
        std::size_t length = 0;
        for (std::size_t i = 1; i < 4; ++i) {
            if (std::isdigit(static_cast<unsigned char>(text[at + i])) == 0)
                return;
            length = length * 10 + static_cast<std::size_t>(text[at + i] - '0');
        }
        if (text[at] == kTrack2)
            star(text, at + 4, length);
        at += 4 + length;
    }
}

} // namespace

std::string masked(std::string text, Secret secret, std::int64_t block)
{
    switch (secret) {
    case Secret::None:
        break;
    case Secret::All:
        star(text, 0, text.size());
        break;
    case Secret::Command:
        maskCommand(text);
        break;
    case Secret::Answer:
        maskAnswer(text);
        break;
    case Secret::Letters:
        maskLetters(text);
        break;
    case Secret::Block:
        if (block % 4 == 3)
            star(text, 0, text.size());
        break;
    }
    return text;
}

} // namespace drivers
