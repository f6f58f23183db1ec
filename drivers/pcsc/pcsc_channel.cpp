#include "drivers/pcsc/pcsc_channel.h"

#include "drivers/core/t0_exchange.h"
#include "drivers/core/trace.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace drivers {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTransactionPause{5};
// pcscd looks at its slots every 400 ms: only after that does it know that a card which stopped answering is gone.
constexpr DWORD kRemovalNoticeMs = 1200;

} // namespace

PcscChannel::PcscChannel(PcscContext &context, std::string readerName)
    : m_context(context), m_readerName(std::move(readerName)), m_buffer(MAX_BUFFER_SIZE_EXTENDED)
{
}

PcscChannel::~PcscChannel()
{
    if (cutPower(kTransactionPatience) != SCARD_S_SUCCESS)
        drop();
}

LONG PcscChannel::connect(Bytes &atr)
{
    drop();
    LONG result = SCardConnect(m_context.handle(), m_readerName.c_str(), SCARD_SHARE_SHARED, SCARD_PROTOCOL_ANY,
                               &m_card, &m_protocol);
    if (result != SCARD_S_SUCCESS)
        return result;
    m_connected = true;

    result = statusOnceFree(kTransactionPatience, atr);
    if (result != SCARD_S_SUCCESS)
        drop();
    return result;
}

LONG PcscChannel::cutPower(std::chrono::milliseconds patience)
{
    if (!m_connected)
        return SCARD_S_SUCCESS;
    // The daemon would let the disconnection wait for another's transaction, however long it takes.
    Bytes atr;
    const LONG result = statusOnceFree(patience, atr);
    if (result == SCARD_E_SHARING_VIOLATION)
        return result;
    m_connected = false;
    return SCardDisconnect(m_card, SCARD_UNPOWER_CARD);
}

void PcscChannel::drop()
{
    if (m_connected)
        SCardDisconnect(m_card, SCARD_LEAVE_CARD);
    m_connected = false;
}

// SCardStatus, put off while another program's transaction lasts.
LONG PcscChannel::statusOnceFree(std::chrono::milliseconds patience, Bytes &atr)
{
    const Clock::time_point deadline = Clock::now() + patience;
    for (;;) {
        std::array<std::uint8_t, MAX_ATR_SIZE> answer{};
        DWORD size = answer.size();
        const LONG result = SCardStatus(m_card, nullptr, nullptr, nullptr, nullptr, answer.data(), &size);
        if (result == SCARD_S_SUCCESS)
            atr.assign(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(size));
        if (result != SCARD_E_SHARING_VIOLATION || Clock::now() >= deadline)
            return result;
        std::this_thread::sleep_for(kTransactionPause);
    }
}

bool PcscChannel::isAlive()
{
    if (!m_connected)
        return false;
    const LONG result = SCardStatus(m_card, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (result != SCARD_S_SUCCESS && result != SCARD_E_SHARING_VIOLATION)
        drop();
    return m_connected;
}

ReturnCode PcscChannel::transmit(const Bytes &command, Bytes &reply)
{
    reply.clear();
    if (!m_connected)
        return kNotPowered;
    const auto once = [this](const Bytes &tpdu, Bytes &answer) { return exchangeOnce(tpdu, answer); };
    if (m_protocol != SCARD_PROTOCOL_T0)
        return tracedExchange(once, command, reply);
    const auto raw = [&once](const Bytes &tpdu, Bytes &answer) { return tracedExchange(once, tpdu, answer); };
    return exchangeT0(raw, command, reply);
}

LONG PcscChannel::exchangeRaw(const Bytes &tpdu, Bytes &reply)
{
    const SCARD_IO_REQUEST *protocol = SCARD_PCI_T1;
    if (m_protocol == SCARD_PROTOCOL_T0)
        protocol = SCARD_PCI_T0;
    else if (m_protocol == SCARD_PROTOCOL_RAW)
        protocol = SCARD_PCI_RAW;

    DWORD size = m_buffer.size();
    const LONG result = SCardTransmit(m_card, protocol, tpdu.data(), tpdu.size(), nullptr, m_buffer.data(), &size);
    // Some reader drivers call an exchange that broke off a success without a reply.
    if (result == SCARD_S_SUCCESS && size < 2)
        return SCARD_F_COMM_ERROR;
    if (result == SCARD_S_SUCCESS)
        reply.assign(m_buffer.begin(), m_buffer.begin() + static_cast<std::ptrdiff_t>(size));
    return result;
}

ReturnCode PcscChannel::exchangeOnce(const Bytes &tpdu, Bytes &reply)
{
    LONG result = exchangeRaw(tpdu, reply);
    if (result == SCARD_S_SUCCESS)
        return kSuccess;
    const Clock::time_point deadline = Clock::now() + kTransactionPatience;
    while (result == SCARD_E_SHARING_VIOLATION && Clock::now() < deadline) {
        std::this_thread::sleep_for(kTransactionPause);
        result = exchangeRaw(tpdu, reply);
    }
    if (result != SCARD_S_SUCCESS && result != SCARD_E_SHARING_VIOLATION)
        result = reasonOf(result);
    const ReturnCode code = returnCodeOf(result);
    if (code == kCardRemoved || code == kNoCard || code == kNotPowered || code == kReaderGone)
        drop();
    if (code == kReaderGone)
        m_context.release();
    return code;
}

// A failed exchange says little by itself: the reader's state tells whether the card or the reader went.
LONG PcscChannel::reasonOf(LONG failure) const
{
    if (returnCodeOf(failure) != kTransportFailure)
        return failure;
    SCARD_READERSTATE state{};
    LONG result = readerStateNow(m_context, m_readerName, state);
    if (result == SCARD_S_SUCCESS && (state.dwEventState & SCARD_STATE_PRESENT) != 0) {
        state.dwCurrentState = state.dwEventState;
        result = m_context.waitForChange(kRemovalNoticeMs, state);
    }
    if (result == SCARD_S_SUCCESS)
        return (state.dwEventState & SCARD_STATE_EMPTY) != 0 ? SCARD_W_REMOVED_CARD : failure;
    if (result == SCARD_E_TIMEOUT)
        return failure;
    return isServiceLost(result) ? SCARD_E_SERVICE_STOPPED : result;
}

} // namespace drivers
