// What the PC/SC driver costs: APDUs a second through vek_icc_apdu against a bare SCardTransmit loop, on the same card
// in the same run. The two take short turns, so that whatever else the machine does strikes both; the medians are
// compared.
//
// Usage: unifold-bench-apdu DRIVER [READER [ROUNDS [APDUS]]]
// The card in READER must answer 00B0000010 with 16 bytes and 9000, for example
//   vpcd-card 3B951381018073FF01000B '00B0000010=000102030405060708090A0B0C0D0E0F9000'
#include "sdk/contracts.h"

#include <dlfcn.h>
#include <time.h>
#include <winscard.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr char kCommandText[] = "00B0000010";
constexpr std::array<std::uint8_t, 5> kCommand = {0x00, 0xB0, 0x00, 0x00, 0x10};
constexpr std::size_t kReplySize = 18;

void require(bool met, const char *what)
{
    if (!met)
        throw std::runtime_error(what);
}

// The driver's side of the race.
class Driver {
public:
    Driver(const char *file, const char *reader)
        : m_library(dlopen(file, RTLD_NOW)), m_apdu(symbol<sdk::IccApdu>("vek_icc_apdu")),
          m_close(symbol<sdk::Close>("vek_close")), m_handle(symbol<sdk::Open>("vek_open")(reader, 0, 0))
    {
        require(m_handle != 0, "the driver cannot open the reader");
        std::array<char, sdk::kAtrSize> atr{};
        std::uint32_t length = 0;
        const int result = symbol<sdk::IccPowerOn>("vek_icc_poweron")(m_handle, 0, 5000, atr.data(), &length);
        require(result == 0, "the driver cannot power the card on");
    }
    ~Driver()
    {
        m_close(m_handle, 0);
        dlclose(m_library);
    }
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;

    void exchange()
    {
        std::array<char, sdk::kApduReplySize> reply{};
        std::uint32_t length = 0;
        const int result = m_apdu(m_handle, 0, kCommandText, sizeof kCommandText - 1, reply.data(), &length);
        require(result == 0 && length == kReplySize * 2, "the driver's exchange failed");
    }

private:
    template <class Function>
    Function *symbol(const char *name)
    {
        require(m_library != nullptr, "cannot load the driver");
        auto *function = reinterpret_cast<Function *>(dlsym(m_library, name));
        require(function != nullptr, name);
        return function;
    }

    void *m_library;
    sdk::IccApdu *m_apdu;
    sdk::Close *m_close;
    sdk::DeviceHandle m_handle;
};

// The same exchange with nothing in between.
class Bare {
public:
    explicit Bare(const char *reader)
    {
        require(SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context) == SCARD_S_SUCCESS,
                "no PC/SC daemon");
        DWORD protocol = 0;
        require(SCardConnect(m_context, reader, SCARD_SHARE_SHARED, SCARD_PROTOCOL_ANY, &m_card, &protocol) ==
                    SCARD_S_SUCCESS,
                "no card in the reader");
        m_protocol = protocol == SCARD_PROTOCOL_T0 ? SCARD_PCI_T0 : SCARD_PCI_T1;
    }
    ~Bare()
    {
        SCardDisconnect(m_card, SCARD_LEAVE_CARD);
        SCardReleaseContext(m_context);
    }
    Bare(const Bare &) = delete;
    Bare &operator=(const Bare &) = delete;

    void exchange()
    {
        DWORD size = m_reply.size();
        const LONG result =
            SCardTransmit(m_card, m_protocol, kCommand.data(), kCommand.size(), nullptr, m_reply.data(), &size);
        require(result == SCARD_S_SUCCESS && size == kReplySize, "the bare exchange failed");
    }

private:
    SCARDCONTEXT m_context = 0;
    SCARDHANDLE m_card = 0;
    const SCARD_IO_REQUEST *m_protocol = nullptr;
    // As long as a reply can be, as in the driver.
    std::vector<std::uint8_t> m_reply = std::vector<std::uint8_t>(MAX_BUFFER_SIZE_EXTENDED);
};

// The rounds of one side: APDUs a second, and microseconds of this thread's own work an APDU. The second leaves out
// the daemon and the card, so it stays steady on a busy machine.
struct Rounds {
    std::vector<double> rates;
    std::vector<double> work;
};

double threadMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

template <class Side>
void measure(Side &side, int apdus, Rounds &rounds)
{
    const double workBefore = threadMicroseconds();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < apdus; ++i)
        side.exchange();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    rounds.rates.push_back(apdus / elapsed.count());
    rounds.work.push_back((threadMicroseconds() - workBefore) / apdus);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

int run(const char *file, const char *reader, int rounds, int apdus)
{
    require(rounds > 0 && apdus > 0, "ROUNDS and APDUS are at least 1");
    Driver driver(file, reader);
    Bare bare(reader);
    Rounds warmUp;
    measure(bare, 100, warmUp);
    measure(driver, 100, warmUp);
    Rounds ofDriver;
    Rounds ofBare;
    for (int round = 0; round < rounds; ++round) {
        // Who goes first changes too.
        if (round % 2 == 0)
            measure(bare, apdus, ofBare);
        measure(driver, apdus, ofDriver);
        if (round % 2 != 0)
            measure(bare, apdus, ofBare);
    }
    const double driverRate = median(ofDriver.rates);
    const double bareRate = median(ofBare.rates);
    const double driverWork = median(ofDriver.work);
    const double bareWork = median(ofBare.work);
    std::printf("%d rounds of %d APDUs each, medians:\n", rounds, apdus);
    std::printf("  SCardTransmit  %8.0f APDU/s  %6.2f us of the caller's own time\n", bareRate, bareWork);
    std::printf("  vek_icc_apdu   %8.0f APDU/s  %6.2f us of the caller's own time\n", driverRate, driverWork);
    std::printf("  the driver costs %.1f %% of the rate; its own work is %.1f %% of a bare exchange\n",
                (1 - driverRate / bareRate) * 100, (driverWork - bareWork) * bareRate / 1e6 * 100);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("usage: unifold-bench-apdu DRIVER [READER [ROUNDS [APDUS]]]\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        return run(argv[1], argc > 2 ? argv[2] : "Virtual PCD 00 00", argc > 3 ? std::stoi(argv[3]) : 2001,
                   argc > 4 ? std::stoi(argv[4]) : 10);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "unifold-bench-apdu: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
