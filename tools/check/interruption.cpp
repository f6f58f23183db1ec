#include "tools/check/interruption.h"

#include <array>

namespace check {

namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

sigset_t maskBefore;
volatile std::sig_atomic_t signalThatCame = 0;

extern "C" void noteSignal(int number)
{
    signalThatCame = number;
}

void setHandler(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(number, &action, nullptr);
}

bool isIgnored(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

} // namespace

void deferInterruption()
{
    sigset_t deferred;
    sigemptyset(&deferred);
    for (const int number : kSignals) {
        if (isIgnored(number))
            continue;
        sigaddset(&deferred, number);
        setHandler(number, noteSignal);
    }
    sigprocmask(SIG_BLOCK, &deferred, &maskBefore);
    setHandler(SIGPIPE, SIG_IGN);
}

bool isInterrupted()
{
    return signalThatCame != 0;
}

const sigset_t &interruptibleMask()
{
    return maskBefore;
}

void restoreSignals()
{
    for (const int number : kSignals) {
        if (!isIgnored(number))
            setHandler(number, SIG_DFL);
    }
    setHandler(SIGPIPE, SIG_DFL);
    sigprocmask(SIG_SETMASK, &maskBefore, nullptr);
}

void endIfInterrupted()
{
    const int number = signalThatCame;
    restoreSignals(); // one that still waited ends the program here
    if (number != 0)
        raise(number);
}

} // namespace check
