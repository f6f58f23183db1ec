#include "drivers/virtual/reader/connection.h"

#include "drivers/virtual/reader/faults.h"
#include "sdk/contracts.h"

#include <algorithm>
#include <array>
#include <thread>

namespace drivers::reader {

namespace {

constexpr std::array kRates = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};

constexpr std::uint8_t kTemporaryRate = 0;
constexpr std::uint8_t kStoredRate = 1;

/// Far below the 50 ms in which a card that comes has to be seen, far above what one look at the tray costs.
constexpr std::chrono::milliseconds kPollTime{10};

bool offers(const DeviceEntry &entry, Feature feature)
{
    switch (entry.transport) {
    case sdk::kTransportSdt:
        return feature == Feature::IdCard;
    case sdk::kTransportPcsc:
        return feature == Feature::Device || feature == Feature::CpuCard ||
               (feature == Feature::Antenna && entry.onlySlot == tray::Slot::Antenna);
    default:
        return true;
    }
}

} // namespace

Connection::Connection(const DeviceEntry &entry, std::shared_ptr<tray::Tray> tray, int baud)
    : m_entry(entry), m_tray(std::move(tray)), m_baud(baud)
{
}

bool Connection::hears() const
{
    if (m_entry.transport != sdk::kTransportSerial)
        return true;
    const auto state = m_tray->state();
    const auto rate = state->serial.find(m_entry.name);
    return m_baud == (rate == state->serial.end() ? tray::SerialRate() : rate->second).inForce();
}

ReturnCode Connection::reach(Feature feature)
{
    if (!offers(m_entry, feature))
        return kNotSupported;
    if (hears())
        return kSuccess;
    std::this_thread::sleep_for(kAnswerTime);
    return kTimeout;
}

ReturnCode Connection::setBaud(int baud, std::uint8_t mode)
{
    if (std::find(kRates.begin(), kRates.end(), baud) == kRates.end() || mode > kStoredRate)
        return kBadArgument;
    if (m_entry.transport != sdk::kTransportSerial)
        return kSuccess;
    if (const ReturnCode result = reach(Feature::Device); result != kSuccess)
        return result;
    m_tray->update([&](tray::TrayState &state) {
        tray::SerialRate &rate = state.serial[m_entry.name];
        if (mode == kTemporaryRate)
            rate.temporary = baud;
        else
            rate = {baud, std::nullopt};
    });
    m_baud = baud;
    return kSuccess;
}

ReturnCode Connection::waitFor(std::chrono::milliseconds timeout,
                               const std::function<std::optional<ReturnCode>()> &attempt)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        if (m_closed)
            return kBadHandle;
        if (isUnplugged(*m_tray->state()))
            return kReaderGone;
        if (const std::optional<ReturnCode> result = attempt())
            return *result;
        const auto left = end - std::chrono::steady_clock::now();
        if (left <= std::chrono::nanoseconds::zero())
            return kTimeout;
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(left, kPollTime));
    }
}

} // namespace drivers::reader
