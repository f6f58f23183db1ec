#include "drivers/pcsc/pcsc_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <thread>

namespace drivers {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A wait is made of slices, so that closing the reader ends it soon.
constexpr milliseconds kWaitSlice{200};
// A card that was exchanged a moment ago still counts as the old one and cannot be powered, until pcscd looks at its
// slots again. Only after that is a card that stays silent taken for a dead one.
constexpr milliseconds kExchangeNotice{1200};
constexpr milliseconds kExchangePause{100};

bool hasCard(const SCARD_READERSTATE &state)
{
    return (state.dwEventState & SCARD_STATE_PRESENT) != 0;
}

// pcscd counts a reader's insertions and removals in the upper half of its state.
DWORD eventCount(const SCARD_READERSTATE &state)
{
    return (state.dwEventState >> 16U) & 0xFFFFU;
}

milliseconds remaining(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    return std::max(left, milliseconds(0));
}

// The ATR that PC/SC makes up for a contactless storage card carries the PC/SC workgroup's RID and the kind of card.
std::uint8_t cardTypeOf(const SCARD_READERSTATE &state)
{
    constexpr std::array<std::uint8_t, 8> kStorageMark = {0x80, 0x4F, 0x0C, 0xA0, 0x00, 0x00, 0x03, 0x06};
    const auto *end = state.rgbAtr + std::min<DWORD>(state.cbAtr, sizeof state.rgbAtr);
    const bool storage = std::search(state.rgbAtr, end, kStorageMark.begin(), kStorageMark.end()) != end;
    return storage ? kCardTypeStorage : kCardTypeProcessor;
}

const std::string *firstWithCard(const PcscContext &context, const std::vector<std::string> &names)
{
    for (const std::string &name : names) {
        SCARD_READERSTATE state{};
        if (readerStateNow(context, name, state) == SCARD_S_SUCCESS && hasCard(state))
            return &name;
    }
    return names.empty() ? nullptr : &names.front();
}

} // namespace

std::shared_ptr<PcscReader> PcscReader::open(const char *name)
{
    PcscContext context;
    std::vector<std::string> names;
    if (context.establish() != SCARD_S_SUCCESS || context.listReaders(names) != SCARD_S_SUCCESS)
        return nullptr;
    if (name != nullptr) {
        const bool known = std::find(names.begin(), names.end(), name) != names.end();
        return known ? std::make_shared<PcscReader>(name) : nullptr;
    }
    const std::string *chosen = firstWithCard(context, names);
    return chosen != nullptr ? std::make_shared<PcscReader>(*chosen) : nullptr;
}

ReturnCode PcscReader::Card::transmit(const Bytes &command, Bytes &reply)
{
    reply.clear();
    const ReturnCode ready = m_reader.requireCard();
    return ready == kSuccess ? m_reader.m_channel.transmit(command, reply) : ready;
}

PcscReader::PcscReader(std::string name)
    : m_name(std::move(name)), m_channel(m_context, m_name), m_mifare(valueOperationsOf(m_name))
{
}

ReturnCode PcscReader::powerOn(milliseconds timeout, Bytes &atr)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Clock::time_point deadline = Clock::now() + timeout;
    const LONG cut = m_channel.cutPower(std::min(timeout, PcscChannel::kTransactionPatience));
    if (cut == SCARD_E_SHARING_VIOLATION)
        return kCardBusy;
    m_mifare.forget();
    std::optional<Clock::time_point> silentUntil;
    for (;;) {
        const ReturnCode waited = waitForCard(deadline);
        if (waited != kSuccess)
            return waited;
        const LONG result = m_channel.connect(atr);
        if (isServiceLost(result)) {
            loseService();
            return kReaderGone;
        }
        const ReturnCode code = returnCodeOf(result);
        const bool pulled = code == kNoCard || code == kCardRemoved;
        const bool silent = code == kNotPowered || code == kTransportFailure;
        if (!pulled && !silent)
            return code;
        if (silent && !silentUntil)
            silentUntil = std::min(deadline, Clock::now() + kExchangeNotice);
        if (Clock::now() >= (silent ? *silentUntil : deadline))
            return silent ? kTransportFailure : code;
        std::this_thread::sleep_for(kExchangePause);
    }
}

ReturnCode PcscReader::powerOff()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    SCARD_READERSTATE state{};
    const ReturnCode result = currentState(state);
    if (result != kSuccess)
        return result;
    const LONG cut = m_channel.cutPower(PcscChannel::kTransactionPatience);
    return hasCard(state) ? returnCodeOf(cut) : kNoCard;
}

ReturnCode PcscReader::requestMifare(milliseconds timeout)
{
    const Clock::time_point deadline = Clock::now() + timeout;
    for (;;) {
        Bytes atr;
        const ReturnCode result = powerOn(remaining(deadline), atr);
        if (result != kSuccess || isMifareClassic(atr))
            return result;
        // Another card lies there. Only its power-on tells what it is.
        powerOff();
        if (Clock::now() >= deadline)
            return kTimeout;
        std::this_thread::sleep_for(std::min(remaining(deadline), kWaitSlice));
    }
}

ReturnCode PcscReader::runApplication(milliseconds timeout, const std::function<ReturnCode(CardChannel &)> &job)
{
    if (status() == kCardPowered)
        return withCard(job);
    Bytes atr;
    if (const ReturnCode result = powerOn(timeout, atr); result != kSuccess)
        return result;
    const ReturnCode result = withCard(job);
    powerOff();
    return result;
}

int PcscReader::status()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    SCARD_READERSTATE state{};
    const ReturnCode result = currentState(state);
    if (result != kSuccess)
        return result;
    if (!hasCard(state))
        return kCardAbsent;
    return m_channel.isAlive() ? kCardPowered : kCardPresent;
}

ReturnCode PcscReader::probe(std::uint8_t &state, std::uint8_t &cardType)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    SCARD_READERSTATE reader{};
    const ReturnCode result = currentState(reader);
    if (result != kSuccess)
        return result;
    const bool found = hasCard(reader);
    if (found)
        state = m_probeFoundCard && m_probeEvents == eventCount(reader) ? kProbeCardStays : kProbeCardCame;
    else
        state = m_probeFoundCard ? kProbeCardLeft : kProbeNoCard;
    cardType = found ? cardTypeOf(reader) : kCardTypeNone;
    m_probeFoundCard = found;
    m_probeEvents = eventCount(reader);
    return kSuccess;
}

void PcscReader::close()
{
    m_closed = true;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_channel.cutPower(PcscChannel::kTransactionPatience) != SCARD_S_SUCCESS)
        m_channel.drop();
    m_context.release();
}

// A connected channel finds out by itself what became of its card.
ReturnCode PcscReader::requireCard()
{
    if (m_channel.isConnected())
        return kSuccess;
    SCARD_READERSTATE state{};
    const ReturnCode result = currentState(state);
    if (result != kSuccess)
        return result;
    return hasCard(state) ? kNotPowered : kNoCard;
}

ReturnCode PcscReader::currentState(SCARD_READERSTATE &state)
{
    for (int attempt = 0;; ++attempt) {
        const ReturnCode established = establish();
        if (established != kSuccess)
            return established;
        const LONG result = readerStateNow(m_context, m_name, state);
        if (!isServiceLost(result))
            return returnCodeOf(result);
        loseService();
        if (attempt > 0)
            return kReaderGone;
    }
}

ReturnCode PcscReader::waitForCard(Clock::time_point deadline)
{
    SCARD_READERSTATE state{};
    ReturnCode result = currentState(state);
    while (result == kSuccess && !hasCard(state)) {
        const milliseconds left = remaining(deadline);
        if (m_closed)
            return kBadHandle;
        if (left.count() == 0)
            return kTimeout;
        state.dwCurrentState = state.dwEventState & ~DWORD{SCARD_STATE_CHANGED};
        const LONG changed = m_context.waitForChange(static_cast<DWORD>(std::min(left, kWaitSlice).count()), state);
        if (isServiceLost(changed)) {
            loseService();
            return kReaderGone;
        }
        result = changed == SCARD_E_TIMEOUT ? kSuccess : returnCodeOf(changed);
    }
    return result;
}

ReturnCode PcscReader::establish()
{
    if (m_closed)
        return kBadHandle;
    return returnCodeOf(m_context.establish());
}

void PcscReader::loseService()
{
    m_channel.drop();
    m_context.release();
}

} // namespace drivers
