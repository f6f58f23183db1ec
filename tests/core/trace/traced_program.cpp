#include "tests/core/trace/traced_program.h"

#include "tests/support/driver_api.h"

#include <array>
#include <csignal>
#include <cstring>
#include <string>
#include <unistd.h>

namespace {

/// One call of each secret, on the cards of a fresh tray.
int callAll(const testsupport::DriverApi &driver)
{
    const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
    std::array<char, sdk::kApduReplySize> reply{};
    std::uint32_t length = 0;
    int failures = device == 0 ? 1 : 0;
    const auto expect = [&failures](int result) { failures += result == 0 ? 0 : 1; };
    expect(driver.vek_icc_poweron(device, sdk::kSlotContact, 1000, reply.data(), &length));
    for (const char *command : {"00A4040008A000000333010101", "00B2010C00", "0020008003123456"}) {
        reply.fill('\0');
        expect(driver.vek_icc_apdu(device, sdk::kSlotContact, command, static_cast<std::uint32_t>(std::strlen(command)),
                                   reply.data(), &length));
    }
    expect(driver.vek_mifare_authentication(device, 1, 'A', "FFFFFFFFFFFF"));
    expect(driver.vek_msr_write(device, 2, 0, "", "987654321", "", 0) == -5 ? 0 : 1);
    char *list = nullptr;
    expect(driver.vek_enum_devices(sdk::kTransportUsb, &list) == 2 ? 0 : 1);
    driver.vek_free_list(list);
    expect(driver.vek_beep(0, 1, 1, 1) == -1 ? 0 : 1);
    expect(driver.vek_firm_version(device, nullptr, nullptr) == -2 ? 0 : 1);
    expect(driver.vek_close(device, 0));
    return failures;
}

template <class Result, class... Arguments>
void callWithZeros(Result (*function)(Arguments...))
{
    function(Arguments{}...);
}

/// Every exported function once, in the table's order. Without a handle none gets far.
void callEveryExport(const testsupport::DriverApi &driver)
{
#define UNIFOLD_CALL_CALLED(name, Contract) callWithZeros(driver.name);
#define UNIFOLD_CALL_UNCALLED(name) callWithZeros(reinterpret_cast<int (*)()>(driver.symbol(#name)));
    UNIFOLD_ENTRY_POINTS(UNIFOLD_CALL_CALLED, UNIFOLD_CALL_UNCALLED)
#undef UNIFOLD_CALL_CALLED
#undef UNIFOLD_CALL_UNCALLED
}

} // namespace

int runTracedPart(const char *part)
{
    const std::string name = part;
    const testsupport::DriverApi driver(name.substr(0, 4) == "pcsc" ? "libtarvozent.so" : "libtarvovek.so");
    if (name == "all")
        return callAll(driver);
    if (name == "every" || name == "pcsc every") {
        callEveryExport(driver);
        return 0;
    }
    if (name == "pcsc")
        return driver.vek_beep(0, 1, 1, 1) == -1 ? 0 : 1;
    if (name == "many") {
        for (int i = 0; i < 300; ++i)
            driver.vek_beep(0, i, 1, 1);
        return 0;
    }
    if (name == "killed") {
        // Dies in the middle of a wait.
        const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
        ::alarm(1); // the default action of SIGALRM ends the process
        std::array<char, 64> type{};
        std::array<char, 64> uid{};
        driver.vek_mifare_request(device, 20000, type.data(), uid.data());
    }
    return 99;
}
