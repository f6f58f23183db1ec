#include "tests/endurance/together_work.h"

#include "drivers/core/return_codes.h"
#include "drivers/virtual/reader/card_models.h"
#include "tests/endurance/card_work.h"
#include "tests/endurance/shared_calls.h"

#include <atomic>
#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace endurance {

namespace {

using Clock = std::chrono::steady_clock;

/// How many threads call on the device that is closed under them.
constexpr unsigned kSharers = 3;

/// Opens a device for a thread of its own.
class OwnDevice {
public:
    explicit OwnDevice(const DriverApi &driver) : m_driver(driver), m_handle(driver.vek_open(nullptr, 0, 0)) {}
    ~OwnDevice() { m_driver.vek_close(m_handle, 0); }
    OwnDevice(const OwnDevice &) = delete;
    OwnDevice &operator=(const OwnDevice &) = delete;
    operator sdk::DeviceHandle() const { return m_handle; } // NOLINT(*-explicit-*): stands for the handle in calls

private:
    const DriverApi &m_driver;
    sdk::DeviceHandle m_handle;
};

class Work {
public:
    Work(const DriverApi &driver, std::chrono::milliseconds time, std::uint32_t seed)
        : m_driver(driver), m_end(Clock::now() + time), m_seed(seed)
    {
    }

    Sums run()
    {
        std::vector<std::function<Sums()>> jobs = {[this] { return increment(); },   [this] { return increment(); },
                                                   [this] { return beep(); },        [this] { return swipe(); },
                                                   [this] { return writeStripe(); }, [this] { return reopen(); }};
        for (unsigned i = 0; i < kSharers; ++i)
            jobs.emplace_back([this, i] { return callShared(m_seed + i); });
        std::vector<Sums> sums(jobs.size());
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < jobs.size(); ++i)
            threads.emplace_back([&sums, &jobs, i] { sums[i] = jobs[i](); });
        Sums all;
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            threads[i].join();
            all += sums[i];
        }
        return all;
    }

private:
    bool goesOn() const { return Clock::now() < m_end; }

    Sums increment() const
    {
        Sums sums;
        const OwnDevice device(m_driver);
        while (goesOn()) {
            const bool done = openSector(m_driver, device, kCountedBlock) == 0 &&
                              m_driver.vek_mifare_increase_value(device, kCountedBlock, 1) == 0;
            ++(done ? sums.increments : sums.wrongCodes);
        }
        return sums;
    }

    Sums beep() const
    {
        Sums sums;
        const OwnDevice device(m_driver);
        while (goesOn())
            ++(m_driver.vek_beep(device, 1, 1, 1) == 0 ? sums.beeps : sums.wrongCodes);
        return sums;
    }

    Sums swipe() const
    {
        Sums sums;
        drivers::tray::Tray tray(drivers::tray::trayFolder());
        for (; goesOn(); ++sums.swipes) {
            drivers::reader::swipe(tray, kStripeCard);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return sums;
    }

    Sums writeStripe() const
    {
        Sums sums;
        const OwnDevice device(m_driver);
        for (std::uint32_t number = 0; goesOn(); ++number) {
            const Operation operation = operationOf(m_seed, number);
            if (operation.isStripe())
                ++(perform(m_driver, device, operation) == 0 ? sums.stripeWrites : sums.wrongCodes);
        }
        return sums;
    }

    Sums reopen()
    {
        Sums sums;
        for (; goesOn(); ++sums.reopened) {
            m_shared = m_driver.vek_open(nullptr, 0, 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(15));
            if (m_driver.vek_close(m_shared, 0) != 0)
                ++sums.wrongCodes;
        }
        return sums;
    }

    Sums callShared(std::uint32_t seed) const
    {
        Sums sums;
        std::mt19937 random(seed);
        for (; goesOn(); ++sums.otherCalls) {
            const int result = callOnShared(m_driver, m_shared, static_cast<std::uint32_t>(random()));
            if (result < drivers::kCardError || result > kHighestSharedResult)
                ++sums.wrongCodes;
        }
        return sums;
    }

    const DriverApi &m_driver;
    const Clock::time_point m_end;
    const std::uint32_t m_seed;
    std::atomic<sdk::DeviceHandle> m_shared = 0;
};

} // namespace

void Sums::operator+=(const Sums &other)
{
    increments += other.increments;
    beeps += other.beeps;
    swipes += other.swipes;
    stripeWrites += other.stripeWrites;
    otherCalls += other.otherCalls;
    reopened += other.reopened;
    wrongCodes += other.wrongCodes;
}

Sums workTogether(const DriverApi &driver, std::chrono::milliseconds time, std::uint32_t seed)
{
    return Work(driver, time, seed).run();
}

} // namespace endurance
