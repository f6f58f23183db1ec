#include "app/quit_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

int selfPipe[2] = {-1, -1};

extern "C" void writeToSelfPipe(int /*signal*/)
{
    const int interrupted = errno; // of whatever the signal came into
    const char byte = 0;
    // Nothing can be done about a full pipe here, and nothing needs to be: the loop has been woken already.
    [[maybe_unused]] const ssize_t written = write(selfPipe[1], &byte, 1);
    errno = interrupted;
}

void handle(int signal)
{
    struct sigaction action = {};
    action.sa_handler = writeToSelfPipe;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

bool isIgnored(int signal)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

} // namespace

void quitOnSignals(QCoreApplication &application)
{
    std::signal(SIGPIPE, SIG_IGN);
    if (pipe2(selfPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *notifier = new QSocketNotifier(selfPipe[0], QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, [] {
        char byte = 0;
        while (read(selfPipe[0], &byte, 1) == 1) {
        }
        QCoreApplication::quit();
    });
    handle(SIGINT);
    handle(SIGTERM);
    if (!isIgnored(SIGHUP))
        handle(SIGHUP);
}
