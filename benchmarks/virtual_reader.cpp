// How fast the virtual reader is through its C interface, and that a large deck does not slow it down: the calls that
// programs make all the time must not look at cards that lie in no slot.
#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/tray/tray.h"
#include "sdk/contracts.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using drivers::tray::Slot;
using drivers::tray::Tray;

namespace {

struct Figures {
    double openMs;
    double apdusPerSecond;
    double mifareReadsPerSecond;
    double swipeMs; ///< from the end of a swipe to the status call that reports it, longest of several
};

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

void require(bool met, const char *what)
{
    if (!met)
        throw std::runtime_error(what);
}

class Driver {
public:
    explicit Driver(const char *file) : m_library(::dlopen(file, RTLD_NOW))
    {
        require(m_library != nullptr, "the driver library cannot be loaded");
    }
    ~Driver() { ::dlclose(m_library); }
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;

    template <class Contract>
    Contract *entry(const char *name) const
    {
        void *const symbol = ::dlsym(m_library, name);
        require(symbol != nullptr, name);
        return reinterpret_cast<Contract *>(symbol); // NOLINT(*-reinterpret-cast)
    }

private:
    void *m_library;
};

/// How often `call` runs in a second, over half a second.
template <class Call>
double perSecond(Call call)
{
    const auto begin = Clock::now();
    int count = 0;
    while (Clock::now() - begin < std::chrono::milliseconds(500)) {
        call();
        ++count;
    }
    return count * 1000.0 / milliseconds(Clock::now() - begin);
}

double measureOpen(const Driver &driver)
{
    const auto open = driver.entry<sdk::Open>("vek_open");
    const auto close = driver.entry<sdk::Close>("vek_close");
    std::vector<double> times;
    for (int i = 0; i < 21; ++i) {
        const auto begin = Clock::now();
        const sdk::DeviceHandle handle = open(nullptr, 0, 0);
        times.push_back(milliseconds(Clock::now() - begin));
        require(handle != 0 && close(handle, 0) == 0, "vek_open");
    }
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

double measureApdus(const Driver &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kAtrSize> atr{};
    std::uint32_t length = 0;
    require(driver.entry<sdk::IccPowerOn>("vek_icc_poweron")(device, sdk::kSlotContact, 1000, atr.data(), &length) == 0,
            "vek_icc_poweron");
    const auto apdu = driver.entry<sdk::IccApdu>("vek_icc_apdu");
    constexpr char kCommand[] = "00A4040008A000000333010101";
    return perSecond([&] {
        std::array<char, sdk::kApduReplySize> reply{};
        require(apdu(device, sdk::kSlotContact, kCommand, sizeof kCommand - 1, reply.data(), &length) == 0,
                "vek_icc_apdu");
    });
}

double measureMifare(const Driver &driver, sdk::DeviceHandle device)
{
    require(driver.entry<sdk::MifareKey>("vek_mifare_authentication")(device, 1, 'A', "FFFFFFFFFFFF") == 0,
            "vek_mifare_authentication");
    const auto read = driver.entry<sdk::MifareReadBlock>("vek_mifare_read_block");
    return perSecond([&] {
        std::array<char, sdk::kMifareBlockSize> data{};
        require(read(device, 5, data.data()) == 0, "vek_mifare_read_block");
    });
}

double measureSwipe(const Driver &driver, sdk::DeviceHandle device, Tray &tray)
{
    const auto start = driver.entry<sdk::MsrSession>("vek_msr_qm_start");
    const auto status = driver.entry<sdk::MsrSession>("vek_msr_qm_status");
    const std::string card = tray.state()->at(Slot::Stripe).card;
    double longest = 0;
    for (int i = 0; i < 10; ++i) {
        require(start(device) == 0, "vek_msr_qm_start");
        std::atomic<Clock::rep> swiped = 0;
        std::thread person([&] {
            drivers::reader::swipe(tray, card);
            swiped = Clock::now().time_since_epoch().count();
        });
        while (status(device) != 1)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        const auto seen = Clock::now().time_since_epoch().count();
        person.join();
        longest = std::max(longest, milliseconds(Clock::duration(seen - swiped)));
    }
    return longest;
}

/// Brings the deck to a number of cards: those that lie in no slot go, copies of one card come. Not by the tray, which
/// would synchronise each.
void resizeDeck(Tray &tray, std::size_t cards)
{
    const auto state = tray.state();
    for (const std::string &id : tray.cardIds()) {
        const bool used = std::any_of(state->contents.begin(), state->contents.end(),
                                      [&id](const drivers::tray::SlotContent &slot) { return slot.card == id; });
        if (!used)
            fs::remove(tray.cardFile(id));
    }
    const std::string text = tray.card(state->at(Slot::Antenna).card).dump();
    for (std::size_t count = tray.cardIds().size(); count < cards; ++count)
        std::ofstream(tray.cardFile("copy-" + std::to_string(count))) << text;
}

Figures measure(const Driver &driver, const fs::path &folder, std::size_t cards)
{
    ::setenv(drivers::tray::kTrayVariable, folder.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    Tray tray(folder);
    resizeDeck(tray, cards);
    require(tray.cardIds().size() == cards, "the deck has not the size asked for");
    const sdk::DeviceHandle device = driver.entry<sdk::Open>("vek_open")(nullptr, 0, 0);
    require(device != 0, "vek_open");
    const Figures figures = {measureOpen(driver), measureApdus(driver, device), measureMifare(driver, device),
                             measureSwipe(driver, device, tray)};
    driver.entry<sdk::Close>("vek_close")(device, 0);
    return figures;
}

void run(const char *library)
{
    const Driver driver(library);
    std::string folder = (fs::temp_directory_path() / "virtual-reader-XXXXXX").string();
    require(::mkdtemp(folder.data()) != nullptr, "no temporary folder");
    std::printf("%8s %10s %10s %14s %10s\n", "cards", "open ms", "APDU/s", "Mifare read/s", "swipe ms");
    std::vector<Figures> all;
    for (const std::size_t cards : {std::size_t{10}, std::size_t{1000}, std::size_t{10000}}) {
        const Figures &figures = all.emplace_back(measure(driver, fs::path(folder) / std::to_string(cards), cards));
        std::printf("%8zu %10.2f %10.0f %14.0f %10.2f\n", cards, figures.openMs, figures.apdusPerSecond,
                    figures.mifareReadsPerSecond, figures.swipeMs);
    }
    std::printf("10,000 cards against 10: open x %.2f, APDU x %.2f, Mifare read x %.2f\n",
                all.back().openMs / all.front().openMs, all.back().apdusPerSecond / all.front().apdusPerSecond,
                all.back().mifareReadsPerSecond / all.front().mifareReadsPerSecond);
    fs::remove_all(folder);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        run(argc > 1 ? argv[1] : UNIFOLD_DRIVER);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
