#include "tests/endurance/load_rounds.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <dlfcn.h>
#include <malloc.h>

namespace endurance {

namespace {

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define UNIFOLD_HAS_SANITIZER
#endif
#endif

/// The sanitizers keep memory of their own at each load and hold back what is freed; what leaks they find themselves.
#ifdef UNIFOLD_HAS_SANITIZER
constexpr bool kMemoryCounts = false;
constexpr int kDefaultRounds = 100;
#else
constexpr bool kMemoryCounts = true;
constexpr int kDefaultRounds = 1000;
#endif
constexpr int kLeastRounds = 20;
constexpr int kPatienceMs = 4000;

/// The smallest thing that can leak takes 24 bytes of the heap. Half of that in every round is none.
constexpr std::size_t kHeapBytesPerRound = 12;

/// What something that happens once, late, may keep.
constexpr std::size_t kHeapBytesOnce = 1024;

/// What fragmentation may add. A library that stays mapped is far larger.
constexpr long kResidentKilobytes = 1024;

int entries(const char *folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

/// The C library counts what threads keep for their next requests as used: the tests switch that off (GLIBC_TUNABLES).
std::size_t heapInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

long residentKilobytes()
{
    QFile rollup("/proc/self/smaps_rollup");
    if (!rollup.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : rollup.readAll().split('\n')) {
        if (line.startsWith("Rss:"))
            return line.simplified().split(' ').at(1).toLong();
    }
    return -1;
}

bool goesOn(int round, const QElapsedTimer &clock)
{
    if (qEnvironmentVariableIsSet("UNIFOLD_UNLOAD_ROUNDS"))
        return round < qEnvironmentVariableIntValue("UNIFOLD_UNLOAD_ROUNDS");
    return round < kDefaultRounds && (round < kLeastRounds || clock.elapsed() < kPatienceMs);
}

QString whatGrew(const Figures &before, const Figures &after, std::size_t rounds)
{
    if (after.files != before.files)
        return QStringLiteral("open files: %1, then %2").arg(before.files).arg(after.files);
    if (after.threads != before.threads)
        return QStringLiteral("threads: %1, then %2").arg(before.threads).arg(after.threads);
    if (kMemoryCounts && after.heapBytes > before.heapBytes + kHeapBytesOnce + rounds * kHeapBytesPerRound)
        return QStringLiteral("heap: %1 bytes, then %2").arg(before.heapBytes).arg(after.heapBytes);
    if (kMemoryCounts && after.residentKilobytes > before.residentKilobytes + kResidentKilobytes)
        return QStringLiteral("memory: %1 KB, then %2").arg(before.residentKilobytes).arg(after.residentKilobytes);
    return {};
}

void tell(const char *library, int round, const Figures &figures)
{
    qInfo("%s after %4d rounds: heap %zu bytes, %d files, %d threads, %ld KB in memory", library, round,
          figures.heapBytes, figures.files, figures.threads, figures.residentKilobytes);
}

} // namespace

Figures Figures::now()
{
    // Before the listings below take memory of their own.
    const std::size_t heap = heapInUse();
    return {heap, entries("/proc/self/fd"), entries("/proc/self/task"), endurance::residentKilobytes()};
}

bool isLoaded(const char *library)
{
    void *const found = ::dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (found != nullptr)
        ::dlclose(found);
    return found != nullptr;
}

QString runLoadRounds(const char *library, const std::function<void(int)> &round)
{
    const bool given = qEnvironmentVariableIsSet("UNIFOLD_UNLOAD_ROUNDS");
    const int settling = (given ? qEnvironmentVariableIntValue("UNIFOLD_UNLOAD_ROUNDS") : kLeastRounds) / 4;
    QElapsedTimer clock;
    clock.start();
    Figures settled{};
    int done = 0;
    while (goesOn(done, clock)) {
        round(done);
        if (isLoaded(library))
            return QStringLiteral("%1 stays in memory after round %2").arg(library).arg(done);
        if (++done == settling) {
            tell(library, done, Figures::now());
            settled = Figures::now(); // the first look made what looking and telling keep
        }
    }
    const Figures last = Figures::now();
    tell(library, done, last);
    return whatGrew(settled, last, static_cast<std::size_t>(done - settling));
}

} // namespace endurance
