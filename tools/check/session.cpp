#include "tools/check/session.h"

#include "drivers/core/return_codes.h"
#include "tools/check/child_runner.h"

#include <array>
#include <chrono>
#include <utility>

namespace check {

const char *const kNoDevice = "no device opened";

namespace {

std::intptr_t openFirst(const DriverLibrary &driver, int transport, int baud)
{
    const std::vector<std::string> names = enumerate(driver, transport);
    if (names.empty())
        return 0;
    beginStep("vek_open");
    return driver.vek_open(names.front().c_str(), 0, baud);
}

std::intptr_t openAny(const DriverLibrary &driver, int baud)
{
    beginStep("vek_open");
    std::intptr_t handle = driver.vek_open(nullptr, 0, 0);
    for (const int transport : {sdk::kTransportUsb, sdk::kTransportSerial, sdk::kTransportPcsc, sdk::kTransportSdt}) {
        if (handle == 0)
            handle = openFirst(driver, transport, baud);
    }
    return handle;
}

/// Whether our drivers' table has the code, or the call's own answers do.
bool isOurCode(const Call &call, int result)
{
    if ((call.traits & kCardStatus) != 0 && result >= drivers::kCardAbsent && result <= drivers::kCardPowered)
        return true;
    if ((call.traits & kMsrStatus) != 0 && result >= 0 && result <= sdk::kMsrSwipedNoData)
        return true;
    return result <= drivers::kSuccess && result >= drivers::kCardError;
}

} // namespace

std::vector<std::string> enumerate(const DriverLibrary &driver, int transport)
{
    std::vector<std::string> names;
    char *list = nullptr;
    beginStep("vek_enum_devices");
    if (driver.vek_enum_devices == nullptr || driver.vek_enum_devices(transport, &list) < 1 || list == nullptr)
        return names;
    const std::string text = list;
    beginStep("vek_free_list");
    if (driver.vek_free_list != nullptr)
        driver.vek_free_list(list);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('|', begin), text.size());
        names.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return names;
}

Session::Session(const DriverLibrary &driver, const Settings &settings) : m_driver(driver)
{
    if (driver.vek_open == nullptr)
        return;
    if (!settings.device.empty()) {
        beginStep("vek_open");
        m_handle = driver.vek_open(settings.device.c_str(), 0, settings.baud);
    } else if (settings.transport != 0) {
        m_handle = openFirst(driver, settings.transport, settings.baud);
    } else {
        m_handle = openAny(driver, settings.baud);
    }
}

int Session::close()
{
    const sdk::DeviceHandle handle = std::exchange(m_handle, 0);
    if (handle == 0 || m_driver.vek_close == nullptr)
        return 0;
    beginStep("vek_close");
    return m_driver.vek_close(handle, 0);
}

bool succeeded(const Call &call, int result)
{
    return (call.traits & (kCardStatus | kMsrStatus)) != 0 ? result >= 0 : result == 0;
}

Answer makeCall(const DriverLibrary &driver, const Settings &settings, const Target &target, const Call &call)
{
    using Clock = std::chrono::steady_clock;
    Buffers buffers(call.name);
    Answer answer;
    beginStep(call.name);
    const Clock::time_point start = Clock::now();
    answer.result = call.make(driver, target, buffers);
    answer.milliseconds =
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    answer.problem = buffers.problem(succeeded(call, answer.result));
    if (!answer.problem && settings.ourCodes && !isOurCode(call, answer.result))
        answer.problem = "returned " + std::to_string(answer.result) + ", which our table of codes does not have";
    return answer;
}

Answer makeCallInTurn(const DriverLibrary &driver, const Settings &settings, const Target &target, const Call &call)
{
    for (const char *const name : call.before) {
        if (!driver.has(name))
            continue;
        const Answer first = makeCall(driver, settings, target, callNamed(name));
        if (first.problem) {
            Answer answer = first;
            answer.problem = std::string(name) + ": " + *first.problem;
            return answer;
        }
    }
    return makeCall(driver, settings, target, call);
}

std::optional<Outcome> obstacle(const DriverLibrary &driver, const Settings &settings, const Call &call)
{
    if (!driver.has(call.name))
        return notApplicable(std::string("the library has no ") + call.name);
    if ((call.traits & kWrites) != 0 && !settings.allowWrites)
        return notApplicable("writes; only with --allow-writes");
    return std::nullopt;
}

std::optional<Outcome> settled(const Settings &settings, const Answer &answer)
{
    if (answer.problem)
        return fail(*answer.problem);
    if (settings.notSupportedCode == answer.result)
        return notSupported("returned " + std::to_string(answer.result));
    return std::nullopt;
}

} // namespace check
