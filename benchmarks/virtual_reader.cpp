// How fast the virtual reader is through its C interface, and that a large deck does not slow it down: the calls that
// programs make all the time must not look at cards that lie in no slot.
#include "drivers/virtual/reader/card_models.h"
#include "drivers/virtual/tray/tray.h"
#include "sdk/contracts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using drivers::tray::Slot;
using drivers::tray::Tray;

namespace {

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

/// How often `call` runs in a second, over a twentieth of one.
template <class Call>
double perSecond(Call call)
{
    const auto begin = Clock::now();
    int count = 0;
    while (Clock::now() - begin < std::chrono::milliseconds(50)) {
        call();
        ++count;
    }
    return count * 1000.0 / milliseconds(Clock::now() - begin);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// A tray with a deck of its own, and a device on it that has its cards ready: the CPU card powered, the Mifare card
/// authenticated.
class Station {
public:
    Station(const Driver &driver, fs::path folder, std::size_t cards)
        : m_driver(driver), m_folder(std::move(folder)), m_cards(cards), m_tray(m_folder)
    {
        resizeDeck(m_tray, cards);
        require(m_tray.cardIds().size() == cards, "the deck has not the size asked for");
        m_device = open();
        std::array<char, sdk::kAtrSize> atr{};
        std::uint32_t length = 0;
        require(m_driver.entry<sdk::IccPowerOn>("vek_icc_poweron")(m_device, sdk::kSlotContact, 1000, atr.data(),
                                                                   &length) == 0,
                "vek_icc_poweron");
        require(m_driver.entry<sdk::MifareKey>("vek_mifare_authentication")(m_device, 1, 'A', "FFFFFFFFFFFF") == 0,
                "vek_mifare_authentication");
    }
    ~Station() { close(m_device); }
    Station(const Station &) = delete;
    Station &operator=(const Station &) = delete;

    void measureRound()
    {
        m_openMs.push_back(measureOpen());
        m_apdus.push_back(measureApdus());
        m_mifareReads.push_back(measureMifare());
        m_swipeMs.push_back(measureSwipe());
    }

    double openMs() const { return median(m_openMs); }
    double apdusPerSecond() const { return median(m_apdus); }
    double mifareReadsPerSecond() const { return median(m_mifareReads); }
    /// From the beginning of a swipe, which the tray writes to the disk, to the status call that reports it.
    double swipeMs() const { return median(m_swipeMs); }

    void print() const
    {
        std::printf("%8zu %10.2f %10.0f %14.0f %10.2f\n", m_cards, openMs(), apdusPerSecond(), mifareReadsPerSecond(),
                    swipeMs());
    }

private:
    sdk::DeviceHandle open() const
    {
        ::setenv(drivers::tray::kTrayVariable, m_folder.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        const sdk::DeviceHandle handle = m_driver.entry<sdk::Open>("vek_open")(nullptr, 0, 0);
        require(handle != 0, "vek_open");
        return handle;
    }

    void close(sdk::DeviceHandle handle) const { m_driver.entry<sdk::Close>("vek_close")(handle, 0); }

    double measureOpen() const
    {
        const auto begin = Clock::now();
        const sdk::DeviceHandle handle = open();
        const double time = milliseconds(Clock::now() - begin);
        close(handle);
        return time;
    }

    double measureApdus() const
    {
        const auto apdu = m_driver.entry<sdk::IccApdu>("vek_icc_apdu");
        constexpr char kCommand[] = "00A4040008A000000333010101";
        return perSecond([&] {
            std::array<char, sdk::kApduReplySize> reply{};
            std::uint32_t length = 0;
            require(apdu(m_device, sdk::kSlotContact, kCommand, sizeof kCommand - 1, reply.data(), &length) == 0,
                    "vek_icc_apdu");
        });
    }

    double measureMifare() const
    {
        const auto read = m_driver.entry<sdk::MifareReadBlock>("vek_mifare_read_block");
        return perSecond([&] {
            std::array<char, sdk::kMifareBlockSize> data{};
            require(read(m_device, 5, data.data()) == 0, "vek_mifare_read_block");
        });
    }

    double measureSwipe()
    {
        const auto status = m_driver.entry<sdk::MsrSession>("vek_msr_qm_status");
        const std::string card = m_tray.state()->at(Slot::Stripe).card;
        require(m_driver.entry<sdk::MsrSession>("vek_msr_qm_start")(m_device) == 0, "vek_msr_qm_start");
        const auto begin = Clock::now();
        std::thread person([&] { drivers::reader::swipe(m_tray, card); });
        while (status(m_device) != 1)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        const double time = milliseconds(Clock::now() - begin);
        person.join();
        return time;
    }

    const Driver &m_driver;
    fs::path m_folder;
    std::size_t m_cards;
    Tray m_tray;
    sdk::DeviceHandle m_device = 0;
    std::vector<double> m_openMs;
    std::vector<double> m_apdus;
    std::vector<double> m_mifareReads;
    std::vector<double> m_swipeMs;
};

/// The decks take turns, so that whatever else the machine does strikes all; the medians are compared.
void run(const char *library)
{
    constexpr int kRounds = 21;
    const Driver driver(library);
    std::string folder = (fs::temp_directory_path() / "virtual-reader-XXXXXX").string();
    require(::mkdtemp(folder.data()) != nullptr, "no temporary folder");
    {
        std::vector<std::unique_ptr<Station>> stations;
        for (const std::size_t cards : {std::size_t{10}, std::size_t{1000}, std::size_t{10000}})
            stations.push_back(std::make_unique<Station>(driver, fs::path(folder) / std::to_string(cards), cards));
        for (int round = 0; round < kRounds; ++round)
            for (const auto &station : stations)
                station->measureRound();
        std::printf("%8s %10s %10s %14s %10s\n", "cards", "open ms", "APDU/s", "Mifare read/s", "swipe ms");
        for (const auto &station : stations)
            station->print();
        const Station &few = *stations.front();
        const Station &many = *stations.back();
        std::printf("10,000 cards against 10: open x %.2f, APDU x %.2f, Mifare read x %.2f\n",
                    many.openMs() / few.openMs(), many.apdusPerSecond() / few.apdusPerSecond(),
                    many.mifareReadsPerSecond() / few.mifareReadsPerSecond());
    }
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
