// The bench for a long day: 100,000 log lines, a minute of polling without a pause, 1,000 loads and unloads. Prints
// time and memory of each step's parts and fails if memory grows where nothing is kept.
#include "pages/magstripe/form_mag_stripe.h"
#include "tests/support/bench.h"

#include <QApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <fstream>
#include <functional>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// What heap fragmentation and Qt's caches may add over a step that keeps nothing.
constexpr long kFlatKilobytes = 2048;

constexpr int kParts = 10;

long residentKilobytes()
{
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

/// Runs a step in parts and prints a line for each. Returns by how much memory grew from the second part's end on: the
/// first ones fill the caches.
long measure(const char *step, const std::function<void(int)> &part)
{
    long settled = 0;
    for (int i = 0; i < kParts; ++i) {
        QElapsedTimer timer;
        timer.start();
        part(i);
        const long memory = residentKilobytes();
        if (i == 1)
            settled = memory;
        std::fprintf(stderr, "%-24s part %2d of %d  %8lld ms  %8ld KB\n", step, i + 1, kParts,
                     static_cast<long long>(timer.elapsed()), memory);
    }
    return residentKilobytes() - settled;
}

bool isFlat(const char *step, long growth)
{
    const bool flat = growth <= kFlatKilobytes;
    std::fprintf(stderr, "%s: %ld KB more after %d parts than after 2: %s\n", step, growth, kParts,
                 flat ? "flat" : "GROWS");
    return flat;
}

void logLines()
{
    Bench bench;
    bench.window.show();
    constexpr long kLines = 100000L / kParts;
    const long growth = measure("log lines", [&bench](int /*part*/) {
        for (long i = 0; i < kLines; ++i) {
            emit bench.window.addLog("[2026/11/15 123456-789] [IC卡] vek_icc_apdu return[0x0] (assert 0)");
            if (i % 100 == 0)
                QApplication::processEvents();
        }
    });
    // The pane keeps every line, since it is the record of the work.
    std::fprintf(stderr, "log lines: %ld bytes a line\n", growth * 1024 / (kLines * (kParts - 2)));
}

bool polling()
{
    Bench bench;
    bench.openDevice();
    auto *page = bench.page<Form_Mag_Stripe>();
    bench.type("lineEdit_async_thread_interval_time", "0", page);
    bench.press("pushButton_async_thread_start", page);
    long ticks = 0;
    recorder().vek_msr_qm_status = [&ticks](auto) {
        ++ticks;
        recorder().calls.clear();
        return 0;
    };
    const long growth = measure("polling at 0 ms", [](int /*part*/) { QTest::qWait(60000 / kParts); });
    std::fprintf(stderr, "polling at 0 ms: %ld ticks\n", ticks);
    bench.press("pushButton_async_thread_stop", page);
    return isFlat("polling at 0 ms", growth) && ticks > 0;
}

bool loads()
{
    Bench bench;
    bench.window.show();
    return isFlat("loads and unloads", measure("loads and unloads", [&bench](int /*part*/) {
                      for (int i = 0; i < 1000 / kParts; ++i) {
                          bench.press("pushButton_select_driver");
                          bench.press("pushButton_unload_driver");
                      }
                  }));
}

} // namespace

int main(int argc, char *argv[])
{
    // The loader's console lines would bury the figures, which go to standard error.
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    QApplication application(argc, argv);
    logLines();
    const bool pollingIsFlat = polling();
    const bool loadsAreFlat = loads();
    return pollingIsFlat && loadsAreFlat ? 0 : 1;
}
