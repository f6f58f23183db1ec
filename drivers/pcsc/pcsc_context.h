// A connection to the PC/SC daemon, which may be stopped and restarted at any time.
#pragma once

#include "drivers/pcsc/scard_codes.h"

#include <string>
#include <vector>

namespace drivers {

class PcscContext {
public:
    PcscContext() = default;
    ~PcscContext();
    PcscContext(const PcscContext &) = delete;
    PcscContext &operator=(const PcscContext &) = delete;

    /// Connects to the daemon unless connected already.
    LONG establish();

    /// Ends the connection, and every card handle made with it.
    void release();

    /// The names of the readers that the daemon knows, as UTF-8; none is a success too.
    LONG listReaders(std::vector<std::string> &names) const;

    /// SCardGetStatusChange for one reader.
    LONG waitForChange(DWORD timeoutMs, SCARD_READERSTATE &state) const;

    SCARDCONTEXT handle() const { return m_context; }

private:
    SCARDCONTEXT m_context = 0;
    bool m_established = false;
};

/// How a reader stands now, without waiting. `state` is filled as SCardGetStatusChange does; SCARD_E_UNKNOWN_READER
/// if the daemon no longer has it. `name` must outlive `state`.
LONG readerStateNow(const PcscContext &context, const std::string &name, SCARD_READERSTATE &state);

} // namespace drivers
