// One opened device: what it offers, whether the reader hears it, and waiting for the tray.
#pragma once

#include "drivers/core/return_codes.h"
#include "drivers/virtual/reader/device_list.h"
#include "drivers/virtual/tray/tray.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace drivers::reader {

/// The groups of calls that a transport offers or not.
enum class Feature {
    Device, ///< firmware version
    Beeper,
    Stripe,
    IdCard,   ///< reading a card and the module's number
    IdModule, ///< the module's other commands
    CpuCard,
    Antenna, ///< looking for cards in the field, Mifare
};

class Connection {
public:
    /// How long a serial device waits for the first byte of an answer.
    static constexpr std::chrono::milliseconds kAnswerTime{200};

    /// `baud` counts for serial devices. `entry` outlives the connection.
    Connection(const DeviceEntry &entry, std::shared_ptr<tray::Tray> tray, int baud);

    const DeviceEntry &entry() const { return m_entry; }
    tray::Tray &tray() const { return *m_tray; }
    std::shared_ptr<tray::Tray> sharedTray() const { return m_tray; }

    /// kSuccess if the device offers the feature and hears its host; kNotSupported; kTimeout (after kAnswerTime) for a
    /// serial device whose rate is not the connection's.
    ReturnCode reach(Feature feature);

    /// Sets the rate of a serial device, and this connection's with it. Other devices: kSuccess at once.
    ReturnCode setBaud(int baud, std::uint8_t mode);

    /// Makes `attempt` until it returns a code, the time is over (kTimeout), the device is closed (kBadHandle) or the
    /// reader unplugged (kReaderGone). It is made at least once.
    ReturnCode waitFor(std::chrono::milliseconds timeout, const std::function<std::optional<ReturnCode>()> &attempt);

    /// Ends the waits of other threads.
    void close() { m_closed = true; }

private:
    bool hears() const;

    const DeviceEntry &m_entry;
    std::shared_ptr<tray::Tray> m_tray;
    std::atomic<int> m_baud;
    std::atomic<bool> m_closed = false;
};

} // namespace drivers::reader
