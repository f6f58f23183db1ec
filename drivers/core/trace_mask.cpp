#include "drivers/core/trace_mask.h"

#include "drivers/core/ber_tlv.h"
#include "drivers/core/command_apdu.h"

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
constexpr std::uint8_t kReadBlock = 0xB0;
constexpr std::uint8_t kWriteBlock = 0xD6;

template <std::size_t count>
bool isOneOf(const std::array<std::uint8_t, count> &instructions, std::uint8_t ins)
{
    return std::find(instructions.begin(), instructions.end(), ins) != instructions.end();
}

bool isTrailer(std::int64_t block)
{
    return block % 4 == 3;
}

// Whether so many bytes from a block on reach a sector trailer.
bool reachTrailer(std::uint8_t block, std::size_t bytes)
{
    constexpr std::size_t kBlockBytes = 16;
    const std::size_t blocks = std::max<std::size_t>(1, (bytes + kBlockBytes - 1) / kBlockBytes);
    return block % 4 + blocks >= 4;
}

// The header of a command, or nothing for what is none.
std::optional<Bytes> headerOf(std::string_view command)
{
    std::optional<Bytes> header = fromHex(command.substr(0, 8));
    return header && header->size() == 4 ? header : std::nullopt;
}

// A reader's own command with `bytes` on their way to a storage card or from it. What is not known, such as a command
// for the reader's chip, may carry a key.
bool readerCarriesKey(const Bytes &header, std::size_t bytes)
{
    constexpr std::array<std::uint8_t, 6> kHarmless = {
        0xCA,             // the UID
        0x86, 0x88,       // authentication by the number of a key
        0xD4, 0xD7, 0xD8, // value blocks
    };
    if (header[1] == kReadBlock || header[1] == kWriteBlock)
        return reachTrailer(header[3], bytes);
    return !isOneOf(kHarmless, header[1]);
}

// Commands whose data hold a PIN or a key, and ENVELOPE, which may hold any of them.
bool carriesSecret(std::uint8_t ins)
{
    constexpr std::array<std::uint8_t, 9> kInstructions = {
        0x20, 0x21, // VERIFY
        0x24, 0x25, // CHANGE REFERENCE DATA
        0x2C, 0x2D, // RESET RETRY COUNTER
        0xC2,       // ENVELOPE
        0xD4,       // WRITE KEY
        0xD8,       // PUT KEY
    };
    return isOneOf(kInstructions, ins);
}

// Commands that bring a card its data.
bool writesData(std::uint8_t ins)
{
    constexpr std::array<std::uint8_t, 10> kInstructions = {
        0xD0, 0xD1, // WRITE BINARY
        0xD2,       // WRITE RECORD
        0xD6, 0xD7, // UPDATE BINARY
        0xDA, 0xDB, // PUT DATA
        0xDC, 0xDD, // UPDATE RECORD
        0xE2,       // APPEND RECORD, STORE DATA
    };
    return isOneOf(kInstructions, ins);
}

void star(std::string &text, std::size_t from, std::size_t count)
{
    if (from < text.size())
        std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(from), std::min(count, text.size() - from), '*');
}

// Where elements are cut off, or there are none, whatever follows something like the tag of a track may be one.
void maskFromTrackTag(std::string &text, std::size_t at, const Bytes &bytes)
{
    const auto tag = std::find_if(bytes.begin(), bytes.end(),
                                  [](std::uint8_t byte) { return byte == 0x56 || byte == 0x57 || byte == 0x9F; });
    if (tag != bytes.end())
        star(text, at + 2 * static_cast<std::size_t>(tag - bytes.begin()) + 2, text.size());
}

bool isTrackTag(std::uint32_t tag)
{
    constexpr std::array<std::uint32_t, 5> kTrackTags = {0x56, 0x57, 0x9F6B, 0x9F1F, 0x9F20};
    return std::find(kTrackTags.begin(), kTrackTags.end(), tag) != kTrackTags.end();
}

void starEverywhere(std::string &text, std::size_t begin, const Bytes &bytes, const Bytes &secret)
{
    auto at = bytes.begin();
    while ((at = std::search(at, bytes.end(), secret.begin(), secret.end())) != bytes.end()) {
        star(text, begin + 2 * static_cast<std::size_t>(at - bytes.begin()), 2 * secret.size());
        ++at;
    }
}

// Hides the tracks among the elements that stand in the text from `begin` on.
void maskElements(std::string &text, std::size_t begin, const Bytes &bytes)
{
    std::vector<Bytes> tracks;
    const bool whole = visitPrimitives(bytes, [&](const Tlv &element) {
        if (isTrackTag(element.tag) && !element.value.empty())
            tracks.push_back(element.value);
    });
    if (!whole) {
        maskFromTrackTag(text, begin, bytes);
        return;
    }
    for (const Bytes &track : tracks)
        starEverywhere(text, begin, bytes, track);
}

void maskAnswer(std::string &text)
{
    std::optional<Bytes> bytes = fromHex(text);
    if (!bytes || bytes->size() < 2)
        return;
    bytes->resize(bytes->size() - 2); // SW1 SW2
    maskElements(text, 0, *bytes);
}

// Without a known end of the data all that follows the header counts as such.
void maskWrittenData(std::string &text, const Bytes &bytes)
{
    if (const auto command = parseCommandApdu(bytes)) {
        const std::size_t before = kApduHeaderSize + (command->extended ? 3 : 1);
        maskElements(text, 2 * before, command->data);
        return;
    }
    maskFromTrackTag(text, 2 * kApduHeaderSize, {bytes.begin() + kApduHeaderSize, bytes.end()});
}

void maskCommand(std::string &text)
{
    const std::optional<Bytes> bytes = fromHex(std::string_view(text).substr(0, text.size() - text.size() % 2));
    const std::optional<Bytes> header = headerOf(text);
    if (!bytes || !header) { // what cannot be understood may be anything
        star(text, header ? kHeaderDigits : 0, text.size());
        return;
    }
    if (header->front() == kReaderClass) {
        const auto command = parseCommandApdu(*bytes);
        if (readerCarriesKey(*header, command ? command->data.size() : bytes->size()))
            star(text, kHeaderDigits, text.size());
    } else if (carriesSecret((*header)[1])) {
        star(text, kHeaderDigits, text.size());
    } else if (writesData((*header)[1])) {
        maskWrittenData(text, *bytes);
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
    if (!header || header->front() != kReaderClass)
        return masked(std::move(answer), Secret::Answer);
    const std::size_t digits = answer.size() - std::min(answer.size(), kStatusDigits);
    if (readerCarriesKey(*header, digits / 2))
        star(answer, 0, digits);
    return answer;
}

} // namespace drivers
