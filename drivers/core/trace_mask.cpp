#include "drivers/core/trace_mask.h"

#include "drivers/core/ber_tlv.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <vector>

namespace drivers {

namespace {

constexpr std::size_t kHeaderDigits = 10; // CLA INS P1 P2 Lc

// The class of a reader's own commands for storage cards (PC/SC part 3).
constexpr std::uint8_t kReaderClass = 0xFF;
constexpr std::uint8_t kLoadKey = 0x82;
constexpr std::uint8_t kReadBlock = 0xB0;
constexpr std::uint8_t kWriteBlock = 0xD6;

bool isTrailer(std::int64_t block)
{
    return block % 4 == 3;
}

// The header of a command, or nothing for what is none. Only a reader's own commands are looked at beyond the
// instruction.
std::optional<Bytes> headerOf(std::string_view command)
{
    std::optional<Bytes> header = fromHex(command.substr(0, 8));
    return header && header->size() == 4 ? header : std::nullopt;
}

// Keys of a storage card on their way to the reader.
bool carriesKey(const Bytes &header)
{
    return header[0] == kReaderClass && (header[1] == kLoadKey || (header[1] == kWriteBlock && isTrailer(header[3])));
}

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
    // What cannot be understood may be anything.
    const std::optional<Bytes> header = headerOf(text);
    if (!header || carriesPin((*header)[1]) || carriesKey(*header))
        star(text, header ? kHeaderDigits : 0, text.size());
}

// Where elements are cut off, or there are none, whatever follows something like the tag of a track may be one.
void maskFromTrackTag(std::string &text, const Bytes &bytes)
{
    const auto tag = std::find_if(bytes.begin(), bytes.end(),
                                  [](std::uint8_t byte) { return byte == 0x56 || byte == 0x57 || byte == 0x9F; });
    if (tag != bytes.end())
        star(text, 2 * static_cast<std::size_t>(tag - bytes.begin()) + 2, text.size());
}

bool isTrackTag(std::uint32_t tag)
{
    constexpr std::array<std::uint32_t, 5> kTrackTags = {0x56, 0x57, 0x9F6B, 0x9F1F, 0x9F20};
    return std::find(kTrackTags.begin(), kTrackTags.end(), tag) != kTrackTags.end();
}

// The tracks of all levels, the same one as often as it is there.
void collectTracks(const Bytes &data, std::vector<Bytes> &tracks)
{
    const auto elements = parseTlv(data);
    for (const Tlv &element : elements ? *elements : std::vector<Tlv>()) {
        if (isConstructed(element.tag))
            collectTracks(element.value, tracks);
        else if (isTrackTag(element.tag) && !element.value.empty())
            tracks.push_back(element.value);
    }
}

void starEverywhere(std::string &text, const Bytes &bytes, const Bytes &secret)
{
    auto at = bytes.begin();
    while ((at = std::search(at, bytes.end(), secret.begin(), secret.end())) != bytes.end()) {
        star(text, 2 * static_cast<std::size_t>(at - bytes.begin()), 2 * secret.size());
        ++at;
    }
}

void maskAnswer(std::string &text)
{
    std::optional<Bytes> bytes = fromHex(text);
    if (!bytes || bytes->size() < 2)
        return;
    bytes->resize(bytes->size() - 2); // SW1 SW2
    TlvMap elements;
    if (!collectPrimitives(*bytes, elements)) {
        maskFromTrackTag(text, *bytes);
        return;
    }
    std::vector<Bytes> tracks;
    collectTracks(*bytes, tracks);
    for (const Bytes &track : tracks)
        starEverywhere(text, *bytes, track);
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
        if (isTrailer(block))
            star(text, 0, text.size());
        break;
    }
    return text;
}

std::string maskedAnswer(std::string_view command, std::string answer)
{
    constexpr std::size_t kStatusDigits = 4;
    const std::optional<Bytes> header = headerOf(command);
    if (header && (*header)[0] == kReaderClass && (*header)[1] == kReadBlock && isTrailer((*header)[3])) {
        star(answer, 0, answer.size() - std::min(answer.size(), kStatusDigits));
        return answer;
    }
    return masked(std::move(answer), Secret::Answer);
}

} // namespace drivers
