// An open device and the calls made on it.
#pragma once

#include "tools/check/calls.h"
#include "tools/check/verdict.h"

#include <optional>
#include <string>
#include <vector>

namespace check {

/// The device names of a transport; the list goes back to the library.
std::vector<std::string> enumerate(const DriverLibrary &driver, int transport);

/// The device that the settings name; without one the default device, or else the first of any transport. Closed by
/// the destructor.
class Session {
public:
    Session(const DriverLibrary &driver, const Settings &settings);
    ~Session() { close(); }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// 0: no device.
    sdk::DeviceHandle handle() const { return m_handle; }
    bool isOpen() const { return m_handle != 0; }

    /// The result of vek_close; 0 when nothing was open.
    int close();

private:
    const DriverLibrary &m_driver;
    sdk::DeviceHandle m_handle = 0;
};

/// What a call came to.
struct Answer {
    int result = 0;
    int milliseconds = 0;
    std::optional<std::string> problem; ///< what is wrong with its buffers, or with a code of ours
};

/// Makes one call with fresh buffers.
Answer makeCall(const DriverLibrary &driver, const Settings &settings, const Target &target, const Call &call);

/// The same after the calls that have to come first.
Answer makeCallInTurn(const DriverLibrary &driver, const Settings &settings, const Target &target, const Call &call);

/// Why a call is not made at all: its name is missing, or it writes and may not.
std::optional<Outcome> obstacle(const DriverLibrary &driver, const Settings &settings, const Call &call);

/// The outcome that needs no further look: a problem, or the answer "not supported".
std::optional<Outcome> settled(const Settings &settings, const Answer &answer);

/// Whether the result says that the call did what it does.
bool succeeded(const Call &call, int result);

extern const char *const kNoDevice;

} // namespace check
