// killed_writer <seed> <first number>: writes to the cards of the virtual reader until it is killed, and records that
// on standard output.
#include "drivers/virtual/reader/card_models.h"
#include "tests/endurance/card_work.h"
#include "tests/endurance/writer_record.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <thread>
#include <unistd.h>

using namespace endurance;

namespace {

void record(std::uint32_t kind, std::uint32_t number = 0, std::int32_t code = 0)
{
    const WriterRecord entry{kind, number, code};
    if (::write(STDOUT_FILENO, &entry, sizeof entry) != sizeof entry)
        std::exit(1); // NOLINT(concurrency-mt-unsafe): the parent is gone
}

/// A hand that swipes the card while a call waits for it.
class Hand {
public:
    explicit Hand(drivers::tray::Tray &tray) : m_thread([this, &tray] { swipe(tray); }) {}
    Hand(const Hand &) = delete;
    Hand &operator=(const Hand &) = delete;
    ~Hand()
    {
        m_done = true;
        m_thread.join();
    }

private:
    void swipe(drivers::tray::Tray &tray)
    {
        while (!m_done) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            record(WriterRecord::kSwipeBegin);
            drivers::reader::swipe(tray, kStripeCard);
            record(WriterRecord::kSwipeEnd);
        }
    }

    std::atomic<bool> m_done = false;
    std::thread m_thread;
};

[[noreturn]] void writeOn(std::uint32_t seed, std::uint32_t number)
{
    const DriverApi driver("libtarvovek.so");
    drivers::tray::Tray tray(drivers::tray::trayFolder());
    const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
    if (device == 0)
        throw std::runtime_error("the device does not open");
    record(WriterRecord::kReady);
    for (;; ++number) {
        const Operation operation = operationOf(seed, number);
        if (!operation.isStripe()) {
            if (const int code = openSector(driver, device, operation.block); code != 0)
                record(WriterRecord::kFailed, number, code);
        }
        record(WriterRecord::kBegin, number);
        std::optional<Hand> hand;
        if (operation.isStripe())
            hand.emplace(tray);
        const int code = perform(driver, device, operation);
        record(WriterRecord::kEnd, number, code);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    try {
        writeOn(static_cast<std::uint32_t>(std::stoul(argv[1])), static_cast<std::uint32_t>(std::stoul(argv[2])));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "killed_writer: %s\n", error.what());
        return 1;
    }
}
