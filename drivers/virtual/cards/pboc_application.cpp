#include "drivers/virtual/cards/pboc_application.h"

#include <algorithm>

#include "drivers/virtual/cards/file_description.h"
#include "drivers/virtual/cards/pboc_data.h"
#include "drivers/virtual/cards/tlv_list.h"

namespace drivers::cards {

namespace {

constexpr std::uint8_t kPinReference = 0x80;
constexpr std::uint16_t kLastCounter = 0xFFFF;
constexpr std::uint16_t kIssuerAuthenticationFailed = 0x6300;
constexpr std::size_t kAuthenticatedSize = 29; ///< from the amount to the unpredictable number
constexpr std::size_t kResponseCodeSize = 2;
constexpr std::size_t kCryptogramSize = 8;

/// Holder verification, terminal risk management, issuer authentication; no offline data authentication.
const Bytes kProfile{0x1C, 0x00};

/// The kinds of cryptogram, as P1 of GENERATE AC and as the cryptogram information.
constexpr std::uint8_t kDeclined = 0x00;
constexpr std::uint8_t kApproved = 0x40;
constexpr std::uint8_t kOnline = 0x80;

/// A PIN as VERIFY carries it: format and length, digits, F up to 8 bytes.
Bytes pinBlock(const std::string &pin)
{
    constexpr std::size_t kBlockDigits = 16;
    std::string digits = "2" + std::string(1, "0123456789ABC"[pin.size()]) + pin;
    digits.resize(kBlockDigits, 'F');
    return fromHex(digits).value();
}

Bytes counterBytes(std::uint16_t counter)
{
    return {static_cast<std::uint8_t>(counter >> 8U), static_cast<std::uint8_t>(counter & 0xFFU)};
}

void append(Bytes &bytes, const Bytes &more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

class PbocApplication : public Application {
public:
    PbocApplication(PbocData data, const Directory &directory, Revision &revision);

    void restart() override;
    void save(nlohmann::json &description) const override;

private:
    enum class Stage { kSelected, kStarted, kWentOnline, kFinished };

    Reply getProcessingOptions(const Command &command);
    Reply generate(const Command &command);
    Reply generateFirst(std::uint8_t wanted, const Bytes &data);
    Reply generateSecond(std::uint8_t wanted, const Bytes &data);
    Reply externalAuthenticate(const Command &command);
    Reply getData(const Command &command) const;

    Reply answer(std::uint8_t kind, const Bytes &authenticated);
    Bytes verificationResults() const;
    Bytes currentSessionKey() const { return sessionKey(m_data.algorithm, m_data.cardKey, m_data.counter); }

    PbocData m_data;
    const Directory &m_directory;
    Revision &m_revision;
    Stage m_stage = Stage::kSelected;
    std::uint8_t m_firstKind = kDeclined;
    std::uint8_t m_secondKind = kOnline; ///< in the results, "online" says: not asked for yet
    bool m_issuerAnswered = false;
    bool m_issuerAuthentic = false;
    Bytes m_request; ///< the cryptogram that went online
};

PbocApplication::PbocApplication(PbocData data, const Directory &directory, Revision &revision)
    : m_data(std::move(data)), m_directory(directory), m_revision(revision)
{
    m_instructions[0xA8] = {0x80, [this](const Command &c) { return getProcessingOptions(c); }};
    m_instructions[0xAE] = {0x80, [this](const Command &c) { return generate(c); }};
    m_instructions[0xCA] = {0x80, [this](const Command &c) { return getData(c); }};
    m_instructions[0x82] = {0x00, [this](const Command &c) { return externalAuthenticate(c); }};
}

void PbocApplication::restart()
{
    m_stage = Stage::kSelected;
    m_firstKind = kDeclined;
    m_secondKind = kOnline;
    m_issuerAnswered = false;
    m_issuerAuthentic = false;
    m_request.clear();
}

void PbocApplication::save(nlohmann::json &description) const
{
    description["transactionCounter"] = m_data.counter;
    if (m_data.lastOnlineCounter != 0)
        description["lastOnlineCounter"] = m_data.lastOnlineCounter;
}

Reply PbocApplication::getProcessingOptions(const Command &command)
{
    if (command.p1p2() != 0)
        return sw::kWrongP1P2;
    if (command.data.size() != 2 + listedSize(processingOptionsList()))
        return sw::kWrongLength;
    if (command.data[0] != 0x83 || command.data[1] != command.data.size() - 2)
        return sw::kWrongData;
    // A counter that began anew would make old cryptograms good again.
    if (m_stage != Stage::kSelected || m_data.counter == kLastCounter)
        return sw::kConditionsNotSatisfied;
    ++m_data.counter;
    m_revision.bump();
    m_stage = Stage::kStarted;
    Bytes value = kProfile;
    append(value, fileLocator());
    return encodeTlv(0x80, value);
}

Reply PbocApplication::generate(const Command &command)
{
    const auto wanted = static_cast<std::uint8_t>(command.p1 & 0xC0U);
    if (command.p1 != wanted || wanted == 0xC0 || command.p2 != 0)
        return sw::kWrongP1P2;
    if (m_stage == Stage::kStarted)
        return generateFirst(wanted, command.data);
    if (m_stage == Stage::kWentOnline)
        return generateSecond(wanted, command.data);
    return sw::kConditionsNotSatisfied;
}

/// A card of this kind approves nothing offline: what the terminal would approve goes online.
Reply PbocApplication::generateFirst(std::uint8_t wanted, const Bytes &data)
{
    if (data.size() != listedSize(firstCryptogramList()))
        return sw::kWrongLength;
    m_firstKind = wanted == kDeclined ? kDeclined : kOnline;
    m_stage = m_firstKind == kOnline ? Stage::kWentOnline : Stage::kFinished;
    return answer(m_firstKind, Bytes(data.begin(), data.begin() + kAuthenticatedSize));
}

Reply PbocApplication::generateSecond(std::uint8_t wanted, const Bytes &data)
{
    if (data.size() != listedSize(secondCryptogramList()))
        return sw::kWrongLength;
    if (wanted == kOnline)
        return sw::kConditionsNotSatisfied;
    m_secondKind = wanted == kApproved && m_issuerAuthentic ? kApproved : kDeclined;
    m_stage = Stage::kFinished;
    if (m_issuerAuthentic) {
        m_data.lastOnlineCounter = m_data.counter;
        m_revision.bump();
    }
    const auto begin = data.begin() + kResponseCodeSize;
    return answer(m_secondKind, Bytes(begin, begin + kAuthenticatedSize));
}

Reply PbocApplication::answer(std::uint8_t kind, const Bytes &authenticated)
{
    const Bytes results = verificationResults();
    Bytes input = authenticated;
    append(input, kProfile);
    append(input, counterBytes(m_data.counter));
    append(input, results);
    m_request = cryptogram(m_data.algorithm, currentSessionKey(), input);

    constexpr std::uint8_t kCryptogramVersion = 0x01;
    const std::uint8_t algorithmId = m_data.algorithm == Algorithm::kSm4 ? 0x04 : 0x01;
    Bytes issuerData{0x07, m_data.keyIndex, kCryptogramVersion};
    append(issuerData, results);
    issuerData.push_back(algorithmId);

    Bytes value{kind};
    append(value, counterBytes(m_data.counter));
    append(value, m_request);
    append(value, issuerData);
    return encodeTlv(0x80, value);
}

/// Four bytes: their number, which cryptograms were given, what went wrong.
Bytes PbocApplication::verificationResults() const
{
    const auto &pin = m_directory.pin;
    unsigned given = m_secondKind | m_firstKind >> 2U;
    if (m_issuerAnswered && !m_issuerAuthentic)
        given |= 0x08U;
    if (pin && pin->verified)
        given |= 0x04U;
    const std::uint8_t trouble = pin && pin->left == 0 ? 0x40 : 0x00;
    return {0x03, static_cast<std::uint8_t>(given), trouble, 0x00};
}

Reply PbocApplication::externalAuthenticate(const Command &command)
{
    if (command.p1p2() != 0)
        return sw::kWrongP1P2;
    if (command.data.size() != kCryptogramSize + kResponseCodeSize)
        return sw::kWrongLength;
    if (m_stage != Stage::kWentOnline || m_issuerAnswered)
        return sw::kConditionsNotSatisfied;
    m_issuerAnswered = true;
    const auto code = command.data.begin() + kCryptogramSize;
    const Bytes expected =
        responseCryptogram(m_data.algorithm, currentSessionKey(), m_request, Bytes(code, command.data.end()));
    m_issuerAuthentic = std::equal(expected.begin(), expected.end(), command.data.begin());
    return m_issuerAuthentic ? sw::kOk : kIssuerAuthenticationFailed;
}

Reply PbocApplication::getData(const Command &command) const
{
    constexpr std::size_t kAmountSize = 6;
    const std::uint16_t tag = command.p1p2();
    switch (tag) {
    case 0x9F36:
        return encodeTlv(tag, counterBytes(m_data.counter));
    case 0x9F13:
        return encodeTlv(tag, counterBytes(m_data.lastOnlineCounter));
    case 0x9F17:
        if (m_directory.pin)
            return encodeTlv(tag, {static_cast<std::uint8_t>(m_directory.pin->left)});
        break;
    case 0x9F79:
    case 0x9F77:
        if (m_data.hasElectronicCash)
            return encodeTlv(tag,
                             numericBytes(std::to_string(tag == 0x9F79 ? m_data.balance : m_data.limit), kAmountSize));
        break;
    default:
        break;
    }
    return sw::kReferenceNotFound;
}

} // namespace

PaymentEntry buildPboc(const JsonNode &node, Directory &directory, Revision &revision)
{
    PbocData data = loadPbocData(node);
    directory.place = node.place();
    directory.name = node.at("aid").hex(5, 16);
    if (const auto pin = node.find("pin"))
        directory.pin = loadPin(*pin, kPinReference, pinBlock);
    directory.files = pbocFiles(data);
    directory.proprietary = tlvList({
        {0x50, data.label},
        {0x87, {data.priority}},
        {0x5F2D, {'z', 'h'}},
        {0x9F38, processingOptionsList()},
    });
    PaymentEntry entry{directory.name, data.label, data.priority};
    directory.application = std::make_unique<PbocApplication>(std::move(data), directory, revision);
    return entry;
}

} // namespace drivers::cards
