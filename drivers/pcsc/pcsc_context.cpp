#include "drivers/pcsc/pcsc_context.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace drivers {

namespace {

// libpcsclite would wait without end for another program's transaction. It reads this once, at the first context of
// the process; a value set by the user stays.
void refuseToBlock()
{
    static std::once_flag once;
    std::call_once(once, [] { setenv("PCSCLITE_NO_BLOCKING", "1", 0); });
}

} // namespace

PcscContext::~PcscContext()
{
    release();
}

LONG PcscContext::establish()
{
    if (m_established)
        return SCARD_S_SUCCESS;
    refuseToBlock();
    const LONG result = SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context);
    m_established = result == SCARD_S_SUCCESS;
    return result;
}

void PcscContext::release()
{
    if (m_established)
        SCardReleaseContext(m_context);
    m_established = false;
}

LONG PcscContext::listReaders(std::vector<std::string> &names) const
{
    names.clear();
    // The list may grow between asking for its size and fetching it.
    LONG result = SCARD_E_INSUFFICIENT_BUFFER;
    std::vector<char> list;
    for (int attempt = 0; attempt < 5 && result == SCARD_E_INSUFFICIENT_BUFFER; ++attempt) {
        DWORD size = 0;
        result = SCardListReaders(m_context, nullptr, nullptr, &size);
        if (result != SCARD_S_SUCCESS)
            break;
        list.assign(size + 1, '\0');
        result = SCardListReaders(m_context, nullptr, list.data(), &size);
    }
    if (result == SCARD_E_NO_READERS_AVAILABLE)
        return SCARD_S_SUCCESS;
    if (result != SCARD_S_SUCCESS)
        return result;
    for (const char *name = list.data(); *name != '\0'; name += std::strlen(name) + 1)
        names.emplace_back(name);
    return result;
}

LONG PcscContext::waitForChange(DWORD timeoutMs, SCARD_READERSTATE &state) const
{
    const LONG result = SCardGetStatusChange(m_context, timeoutMs, &state, 1);
    constexpr DWORD kGone = SCARD_STATE_UNKNOWN | SCARD_STATE_UNAVAILABLE;
    if (result == SCARD_S_SUCCESS && (state.dwEventState & kGone) != 0)
        return SCARD_E_UNKNOWN_READER;
    return result;
}

LONG readerStateNow(const PcscContext &context, const std::string &name, SCARD_READERSTATE &state)
{
    state = {};
    state.szReader = name.c_str();
    state.dwCurrentState = SCARD_STATE_UNAWARE;
    return context.waitForChange(0, state);
}

} // namespace drivers
