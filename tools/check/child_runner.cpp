#include "tools/check/child_runner.h"

#include "tools/check/guard_buffer.h"
#include "tools/check/interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace check {

namespace {

using Clock = std::chrono::steady_clock;

/// The step's name outlives the child in memory that both share.
using Step = std::array<char, 64>;
Step *sharedStep = nullptr;

int resultPipe = -1;

void send(Verdict verdict, const char *reason, std::size_t length) noexcept
{
    std::array<char, 4096> record{};
    record[0] = static_cast<char>(verdict);
    length = std::min(length, record.size() - 1);
    std::memcpy(record.data() + 1, reason, length);
    // One write below PIPE_BUF: the record is there whole or not at all.
    [[maybe_unused]] const ssize_t written = write(resultPipe, record.data(), length + 1);
}

/// Signals that tell of a crash. What a sanitizer or a debugger may have installed for them gives way.
constexpr std::array kCrashSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP};

void onCrash(int number, siginfo_t *info, void *)
{
    if (number == SIGSEGV) {
        if (const char *const reason = guardFault(info->si_addr)) {
            send(Verdict::Fail, reason, std::strlen(reason));
            _exit(0);
        }
    }
    std::signal(number, SIG_DFL); // NOLINT(bugprone-signal-handler): allowed in a handler by POSIX
    raise(number);                // NOLINT(bugprone-signal-handler)
}

void watchCrashes()
{
    static std::array<char, 65536> stack;
    stack_t alternate = {};
    alternate.ss_sp = stack.data();
    alternate.ss_size = stack.size();
    sigaltstack(&alternate, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = onCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (const int number : kCrashSignals)
        sigaction(number, &action, nullptr);
}

void redirectOutput(bool verbose)
{
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nowhere, STDIN_FILENO);
    dup2(verbose ? STDERR_FILENO : nowhere, STDOUT_FILENO);
    if (!verbose)
        dup2(nowhere, STDERR_FILENO);
}

[[noreturn]] void runChild(const std::function<Outcome()> &body, bool verbose, pid_t parent)
{
    // A process group of its own, so that what the library starts ends with the check.
    setpgid(0, 0);
    restoreSignals();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0);
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    redirectOutput(verbose);
    watchCrashes();
    Outcome outcome;
    try {
        outcome = body();
    } catch (const std::exception &error) {
        outcome = fail(std::string("an exception left the library: ") + error.what());
    } catch (...) {
        outcome = fail("an exception left the library");
    }
    send(outcome.verdict, outcome.reason.data(), outcome.reason.size());
    // No destructors of the library's: whether it unloads well is a check of its own.
    _exit(0);
}

std::string inStep()
{
    return sharedStep->front() == '\0' ? std::string() : std::string(" in ") + sharedStep->data();
}

/// The child's record, or nothing if it ends without one. False when the watchdog's time is over or the program is to
/// end.
bool receive(int pipe, Clock::time_point deadline, std::string &record)
{
    for (;;) {
        const auto left = std::max<Clock::duration>(deadline - Clock::now(), Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        const timespec time = {seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
        pollfd wait = {pipe, POLLIN, 0};
        const int ready = ppoll(&wait, 1, &time, &interruptibleMask());
        if (ready < 0 && errno == EINTR && !isInterrupted())
            continue;
        if (ready <= 0)
            return false;
        std::array<char, 4096> bytes{};
        const ssize_t count = read(pipe, bytes.data(), bytes.size());
        record.assign(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return true;
    }
}

Outcome endWithoutRecord(int status)
{
    if (WIFSIGNALED(status)) {
        const char *const name = sigabbrev_np(WTERMSIG(status));
        return fail("crashed with SIG" + (name != nullptr ? name : std::to_string(WTERMSIG(status))) + inStep());
    }
    return fail("ended the program with exit code " + std::to_string(WEXITSTATUS(status)) + inStep());
}

int waitFor(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

void shareStep()
{
    if (sharedStep != nullptr)
        return;
    void *const memory = mmap(nullptr, sizeof(Step), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no memory to share with the checks");
    sharedStep = static_cast<Step *>(memory);
}

} // namespace

void beginStep(const char *step)
{
    if (sharedStep != nullptr)
        std::snprintf(sharedStep->data(), sharedStep->size(), "%s", step);
}

ChildResult runInChild(const std::function<Outcome()> &body, int watchdogMs, bool verbose)
{
    shareStep();
    beginStep("");
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe for a check");
    const Clock::time_point start = Clock::now();
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        resultPipe = ends[1];
        runChild(body, verbose, parent);
    }
    close(ends[1]);
    if (child < 0) {
        close(ends[0]);
        throw std::runtime_error("no process for a check");
    }
    setpgid(child, child);

    std::string record;
    const bool inTime = receive(ends[0], start + std::chrono::milliseconds(watchdogMs), record);
    close(ends[0]);
    // Also when the check is done: what the library started in other processes ends with it.
    kill(-child, SIGKILL);
    kill(child, SIGKILL); // which may have left its group
    const int status = waitFor(child);
    ChildResult result;
    if (!inTime)
        result.outcome = fail("hung" + inStep() + ", ended after " + std::to_string(watchdogMs) + " ms");
    else if (record.empty())
        result.outcome = endWithoutRecord(status);
    else
        result.outcome = {static_cast<Verdict>(record[0]), record.substr(1)};
    result.milliseconds =
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    return result;
}

} // namespace check
