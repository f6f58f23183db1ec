// The host side of the card applications over a card that answers as it likes. Input: which call, how the card ends
// (0: it goes, else: it repeats its last answer for ever), the call's texts, then the card's answers.
#include "drivers/core/applications/application_calls.h"
#include "drivers/core/applications/mifare.h"
#include "drivers/core/command_apdu.h"
#include "drivers/core/t0_exchange.h"
#include "sdk/contracts.h"
#include "tests/fuzz/exact_memory.h"
#include "tests/fuzz/input.h"

using namespace drivers;
using fuzz::ExactBuffer;
using fuzz::exactCharacters;
using fuzz::exactText;
using fuzz::Input;
using fuzz::require;

namespace {

class HostileCard : public CardChannel {
public:
    HostileCard(Input &input, bool endless) : m_input(input), m_endless(endless) {}

    ReturnCode transmit(const Bytes &command, Bytes &reply) override
    {
        require(command.size() <= 5 + 255 + 1, "a command is a short one");
        return answer(reply);
    }

    ReturnCode answer(Bytes &reply)
    {
        reply.clear();
        ++m_answers;
        if (m_input.atEnd() && !m_endless)
            return kCardRemoved;
        if (!m_input.atEnd())
            m_last = m_input.bytes();
        reply = m_last;
        return kSuccess;
    }

    int answers() const { return m_answers; }

private:
    Input &m_input;
    const bool m_endless;
    Bytes m_last;
    int m_answers = 0;
};

/// The length of a call's text; of one that failed, the buffers must be as they were.
void checkText(ReturnCode code, const ExactBuffer &text, const std::uint16_t *length)
{
    const std::size_t found = text.textLength();
    require(code == kSuccess || (text.untouched() && (length == nullptr || *length == 0)),
            "a call that failed leaves its outputs as they were");
    require(code != kSuccess || length == nullptr || *length == found, "the length is the text's");
}

void cardInfo(HostileCard &card, Input &input)
{
    ExactBuffer aid = exactText(input.text());
    ExactBuffer tags = exactText(input.text());
    ExactBuffer result(sdk::kPbocResultSize);
    std::uint8_t interfaceUsed = 0;
    std::uint16_t length = 0;
    const auto run = [&card](const CardJob &job) { return job(card); };
    checkText(callCardInfo(run, aid.data(), tags.data(), &interfaceUsed, result.data(), &length), result, &length);
}

void arqc(HostileCard &card, Input &input)
{
    ExactBuffer aid = exactText(input.text());
    ExactBuffer transaction = exactCharacters(input.text());
    ExactBuffer result(sdk::kPbocResultSize);
    std::uint16_t length = 0;
    const auto run = [&card](const CardJob &job) { return job(card); };
    const auto size = static_cast<int>(transaction.size());
    checkText(callArqc(run, aid.data(), transaction.data(), size, result.data(), &length), result, &length);
}

void socialSecurity(HostileCard &card, ReturnCode (*call)(const RunOnCard &, char *))
{
    ExactBuffer record(sdk::kSsseRecordSize);
    const ReturnCode code = call([&card](const CardJob &job) { return job(card); }, record.data());
    checkText(code, record, nullptr);
    const std::string_view text(record.data(), record.textLength());
    require(code != kSuccess || std::count(text.begin(), text.end(), '|') == 6, "a record has seven fields");
}

/// One command of a Mifare session: what, where, and with which value or key.
void mifareCommand(MifareSession &session, HostileCard &card, Input &input)
{
    const std::uint8_t what = input.byte();
    const int where = input.byte() - 16; // some below all sectors and blocks, many above
    const char keyType = (what & 0x80U) == 0 ? 'A' : 'B';
    SectorKey key{};
    Block16 block{};
    std::int32_t value = input.number<std::int16_t>();
    std::string uid;
    block.fill(static_cast<std::uint8_t>(value));
    key.fill(static_cast<std::uint8_t>(value));
    switch (what % 8) {
    case 0:
        MifareSession::readUid(card, uid);
        break;
    case 1:
        session.authenticate(card, where, keyType, key);
        break;
    case 2:
        session.read(card, where, block);
        break;
    case 3:
        session.write(card, where, block);
        break;
    case 4:
        session.initValue(card, where, value);
        break;
    case 5:
        session.readValue(card, where, value);
        break;
    case 6:
        session.change(card, keyType == 'A' ? ValueChange::kIncrement : ValueChange::kDecrement, where, value);
        break;
    default:
        session.changeKey(card, where, keyType, key);
        break;
    }
}

void mifare(HostileCard &card, Input &input)
{
    MifareSession session(static_cast<ValueOperations>(input.byte() % 4));
    isMifareClassic(input.bytes());
    for (int commands = 0; commands < 32 && !input.atEnd(); ++commands)
        mifareCommand(session, card, input);
}

void underT0(HostileCard &card, Input &input)
{
    Bytes command = input.bytes();
    command.resize(std::max(command.size(), kApduHeaderSize));
    const auto exchange = [&card](const Bytes &part, Bytes &answer) {
        require(part.size() >= kApduHeaderSize, "nothing shorter than a header is sent");
        return card.answer(answer);
    };
    Bytes reply;
    const ReturnCode code = exchangeT0(exchange, command, reply);
    require(code == kSuccess ? reply.size() >= 2 : reply.empty(), "a reply has a status word, a failure no reply");
}

void call(HostileCard &card, Input &input, std::uint8_t which)
{
    switch (which % 6) {
    case 0:
        return cardInfo(card, input);
    case 1:
        return arqc(card, input);
    case 2:
        return socialSecurity(card, callIssuerInfo);
    case 3:
        return socialSecurity(card, callHolderInfo);
    case 4:
        return mifare(card, input);
    default:
        return underT0(card, input);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const std::uint8_t which = input.byte();
    HostileCard card(input, input.byte() != 0);
    call(card, input, which);
    require(card.answers() <= 1000, "a card that never ends is given up");
    return 0;
}
