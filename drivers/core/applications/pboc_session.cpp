#include "drivers/core/applications/pboc_session.h"

#include <algorithm>
#include <array>
#include <random>

#include "drivers/core/applications/card_commands.h"

namespace drivers::pboc {

namespace {

constexpr std::uint32_t kFciTemplate = 0x6F;
constexpr std::uint32_t kRecordTemplate = 0x70;
constexpr std::uint32_t kReplyFormat1 = 0x80;
constexpr std::uint32_t kReplyFormat2 = 0x77;
constexpr std::uint32_t kProfile = 0x82;
constexpr std::uint32_t kLocator = 0x94;
constexpr std::uint32_t kPdol = 0x9F38;
constexpr std::uint32_t kCdol1 = 0x8C;
constexpr std::uint32_t kCryptogramInformation = 0x9F27;
constexpr std::uint32_t kCounter = 0x9F36;
constexpr std::uint32_t kCryptogram = 0x9F26;
constexpr std::uint32_t kIssuerData = 0x9F10;

constexpr std::uint8_t kOnlineCryptogram = 0x80;
constexpr int kMaxRecords = 64; ///< far more than any card has

bool isNumeric(std::uint32_t tag)
{
    constexpr std::array<std::uint32_t, 7> kNumeric{0x9F02, 0x9F03, 0x9F1A, 0x5F2A, 0x9A, 0x9C, 0x9F21};
    return std::find(kNumeric.begin(), kNumeric.end(), tag) != kNumeric.end();
}

/// An element with the length that a list demands: numbers keep their right end, other elements their left one.
Bytes fitted(Bytes value, std::size_t length, bool numeric)
{
    if (numeric && value.size() > length)
        value.erase(value.begin(), value.end() - static_cast<std::ptrdiff_t>(length));
    else if (numeric)
        value.insert(value.begin(), length - value.size(), 0x00);
    value.resize(length, 0x00);
    return value;
}

Bytes unpredictableNumber()
{
    const std::uint32_t number = std::random_device{}();
    return {static_cast<std::uint8_t>(number >> 24U), static_cast<std::uint8_t>(number >> 16U),
            static_cast<std::uint8_t>(number >> 8U), static_cast<std::uint8_t>(number)};
}

/// A terminal that is attended, goes online and authenticates no card offline.
TlvMap terminalElements()
{
    return {
        {0x9F66, {0x26, 0x00, 0x00, 0x80}},       // contactless terminal qualifiers
        {0x9F33, {0xE0, 0xE1, 0xC8}},             // capabilities
        {0x9F35, {0x22}},                         // type
        {0x9F40, {0x60, 0x00, 0xF0, 0xA0, 0x01}}, // additional capabilities
        {0x95, {0x80, 0x00, 0x00, 0x00, 0x00}},   // verification results: no offline authentication
        {0x9F37, unpredictableNumber()},
    };
}

/// Splits the first form of a reply into elements: fixed lengths, the last one takes the rest.
bool splitFormat1(const Bytes &value, const std::vector<DolEntry> &layout, TlvMap &elements)
{
    std::size_t position = 0;
    for (const DolEntry &entry : layout) {
        const bool last = &entry == &layout.back();
        if (entry.length > value.size() - position)
            return false;
        const std::size_t length = last ? value.size() - position : entry.length;
        const auto begin = value.begin() + static_cast<std::ptrdiff_t>(position);
        elements[entry.tag] = Bytes(begin, begin + static_cast<std::ptrdiff_t>(length));
        position += length;
    }
    return true;
}

/// The elements of a reply in either form.
bool readReply(const Bytes &reply, const std::vector<DolEntry> &format1Layout, TlvMap &elements)
{
    if (const auto value = findTlv(reply, kReplyFormat1))
        return splitFormat1(*value, format1Layout, elements);
    const auto value = findTlv(reply, kReplyFormat2);
    return value && collectPrimitives(*value, elements);
}

} // namespace

Session::Session(CardChannel &channel) : m_channel(channel), m_terminal(terminalElements()) {}

void Session::provide(const TlvMap &elements)
{
    for (const auto &[tag, value] : elements)
        m_terminal[tag] = value;
}

ReturnCode Session::send(const Bytes &command, Bytes &data)
{
    return exchange(m_channel, command, data);
}

ReturnCode Session::select(const Bytes &aid)
{
    Bytes reply;
    const ReturnCode result = send(selectByName(aid), reply);
    if (result != kSuccess)
        return result;
    const auto description = findTlv(reply, kFciTemplate);
    return description && collectPrimitives(*description, m_card) ? kSuccess : kCardError;
}

ReturnCode Session::start()
{
    const Bytes *pdol = element(kPdol);
    const auto options = fillDol(pdol != nullptr ? *pdol : Bytes());
    if (!options)
        return kCardError;
    Bytes reply;
    const ReturnCode result = send(commandWithData(0x80, 0xA8, 0x00, 0x00, encodeTlv(0x83, *options)), reply);
    if (result != kSuccess)
        return result;
    TlvMap elements;
    if (!readReply(reply, {{kProfile, 2}, {kLocator, 0}}, elements) || elements.count(kProfile) == 0)
        return kCardError;
    m_locator = elements[kLocator];
    m_card[kProfile] = elements[kProfile];
    return m_locator.size() % 4 == 0 ? kSuccess : kCardError;
}

ReturnCode Session::readRecords()
{
    int count = 0;
    for (std::size_t i = 0; i + 4 <= m_locator.size(); i += 4) {
        const auto shortIdentifier = static_cast<std::uint8_t>(m_locator[i] >> 3U);
        const unsigned first = m_locator[i + 1];
        const unsigned last = m_locator[i + 2];
        if (shortIdentifier < 1 || shortIdentifier > 30 || first < 1 || last < first)
            return kCardError;
        for (unsigned number = first; number <= last; ++number) {
            if (++count > kMaxRecords)
                return kCardError;
            const ReturnCode result = readRecord(shortIdentifier, static_cast<std::uint8_t>(number));
            if (result != kSuccess)
                return result;
        }
    }
    return kSuccess;
}

ReturnCode Session::readRecord(std::uint8_t shortIdentifier, std::uint8_t number)
{
    Bytes reply;
    const ReturnCode result = send(drivers::readRecord(number, shortIdentifier), reply);
    if (result != kSuccess)
        return result;
    const auto record = findTlv(reply, kRecordTemplate);
    return record && collectPrimitives(*record, m_card) ? kSuccess : kCardError;
}

ReturnCode Session::getData(std::uint32_t tag)
{
    Bytes reply;
    const ReturnCode result = m_channel.transmit(
        {0x80, 0xCA, static_cast<std::uint8_t>(tag >> 8U), static_cast<std::uint8_t>(tag & 0xFFU), 0x00}, reply);
    if (result != kSuccess || statusWord(reply) != 0x9000)
        return result;
    reply.resize(reply.size() - 2);
    const auto value = findTlv(reply, tag);
    if (!value)
        return kCardError;
    m_card[tag] = *value;
    return kSuccess;
}

ReturnCode Session::generateArqc()
{
    const Bytes *cdol = element(kCdol1);
    const auto data = cdol != nullptr ? fillDol(*cdol) : std::nullopt;
    if (!data || data->empty())
        return kCardError;
    Bytes reply;
    const ReturnCode result = send(commandWithData(0x80, 0xAE, kOnlineCryptogram, 0x00, *data), reply);
    if (result != kSuccess)
        return result;
    TlvMap elements;
    const std::vector<DolEntry> layout{{kCryptogramInformation, 1}, {kCounter, 2}, {kCryptogram, 8}, {kIssuerData, 0}};
    if (!readReply(reply, layout, elements) || elements[kCryptogram].size() != 8)
        return kCardError;
    const Bytes &information = elements[kCryptogramInformation];
    if (information.size() != 1 || (information[0] & 0xC0U) != kOnlineCryptogram)
        return kCardError;
    for (const auto &[tag, value] : elements)
        m_card[tag] = value;
    return kSuccess;
}

const Bytes *Session::element(std::uint32_t tag) const
{
    for (const TlvMap *elements : {&m_terminal, &m_card}) {
        const auto found = elements->find(tag);
        if (found != elements->end())
            return &found->second;
    }
    return nullptr;
}

std::optional<Bytes> Session::fillDol(const Bytes &dol) const
{
    constexpr std::size_t kMaxSize = 252; // with the template's tag and length still one short command
    const auto entries = parseDol(dol);
    if (!entries)
        return std::nullopt;
    Bytes data;
    for (const DolEntry &entry : *entries) {
        const Bytes *value = element(entry.tag);
        const Bytes piece = fitted(value != nullptr ? *value : Bytes(), entry.length, isNumeric(entry.tag));
        data.insert(data.end(), piece.begin(), piece.end());
    }
    return data.size() <= kMaxSize ? std::optional<Bytes>(std::move(data)) : std::nullopt;
}

} // namespace drivers::pboc
