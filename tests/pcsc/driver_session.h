// The driver as a test uses it: a reader opened, calls with buffers whose overrun shows.
#pragma once

#include "drivers/core/return_codes.h"
#include "tests/support/driver_api.h"

#include <QByteArray>

#include <algorithm>
#include <array>

namespace testsupport {

/// A caller's buffer of `Size` bytes between two guards.
template <std::size_t Size>
class GuardedBuffer {
public:
    GuardedBuffer() { m_bytes.fill(kFill); }
    char *data() { return m_bytes.data() + kGuard; }
    QByteArray text() const { return {m_bytes.data() + kGuard}; }
    bool overrun() const
    {
        return !std::all_of(m_bytes.begin(), m_bytes.begin() + kGuard, isFill) ||
               !std::all_of(m_bytes.end() - kGuard, m_bytes.end(), isFill);
    }
    bool untouched() const { return std::all_of(m_bytes.begin(), m_bytes.end(), isFill); }

private:
    static constexpr std::size_t kGuard = 32;
    static constexpr char kFill = '#';
    static bool isFill(char c) { return c == kFill; }

    std::array<char, kGuard + Size + kGuard> m_bytes{};
};

/// What a call gave.
struct Answer {
    int code = 0;
    QByteArray text;
    std::uint32_t length = 0;
    bool overrun = false;
    bool untouched = false;
};

class DriverSession {
public:
    DriverSession(DriverApi &api, const char *reader) : m_api(api), handle(api.vek_open(reader, 0, 9600)) {}
    ~DriverSession() { m_api.vek_close(handle, 0); }
    DriverSession(const DriverSession &) = delete;
    DriverSession &operator=(const DriverSession &) = delete;

    Answer powerOn(std::uint32_t timeoutMs = 4000, std::uint8_t slot = sdk::kSlotAutomatic)
    {
        GuardedBuffer<sdk::kAtrSize> buffer;
        Answer answer;
        answer.code = m_api.vek_icc_poweron(handle, slot, timeoutMs, buffer.data(), &answer.length);
        return filled(answer, buffer);
    }

    Answer apdu(const QByteArray &command, std::uint8_t slot = sdk::kSlotAutomatic)
    {
        GuardedBuffer<sdk::kApduReplySize> buffer;
        Answer answer;
        answer.code = m_api.vek_icc_apdu(handle, slot, command.constData(), static_cast<std::uint32_t>(command.size()),
                                         buffer.data(), &answer.length);
        return filled(answer, buffer);
    }

    int powerOff() { return m_api.vek_icc_poweroff(handle, sdk::kSlotAutomatic, 4000); }
    int status() { return m_api.vek_icc_status(handle, sdk::kSlotAutomatic); }

private:
    template <class Buffer>
    static Answer filled(Answer answer, const Buffer &buffer)
    {
        answer.overrun = buffer.overrun();
        answer.untouched = buffer.untouched();
        if (!answer.untouched)
            answer.text = buffer.text();
        return answer;
    }

    DriverApi &m_api;

public:
    const sdk::DeviceHandle handle;
};

} // namespace testsupport
