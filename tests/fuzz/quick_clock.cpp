#include "tests/fuzz/quick_clock.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::int64_t kNanoseconds = 1000000000;
constexpr std::int64_t kFirstSleep = 1000000;
constexpr std::int64_t kLongestSleep = 86400 * kNanoseconds;

std::atomic<std::int64_t> slept = 0;
std::atomic<std::int64_t> leastSleep = kFirstSleep;

} // namespace

void fuzz::beginSleeping()
{
    leastSleep = kFirstSleep;
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's are reserved ones
extern "C" __attribute__((visibility("default"))) int nanosleep(const timespec *time, timespec *)
{
    const std::int64_t asked = time->tv_sec * kNanoseconds + time->tv_nsec;
    slept += std::max(asked, leastSleep.load());
    leastSleep = std::min(2 * leastSleep, kLongestSleep);
    return 0;
}

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time)); // NOLINT(*-vararg)
    if (result != 0 || clock != CLOCK_MONOTONIC)
        return result;
    const std::int64_t nanoseconds = time->tv_nsec + slept % kNanoseconds;
    time->tv_sec += slept / kNanoseconds + nanoseconds / kNanoseconds;
    time->tv_nsec = nanoseconds % kNanoseconds;
    return 0;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
