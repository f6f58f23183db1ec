#include "tests/pcsc/pcsc_daemon.h"

#include "drivers/pcsc/pcsc_context.h"

#include <QDeadlineTimer>
#include <QStandardPaths>
#include <QThread>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>

namespace testsupport {

namespace {

constexpr char kLockFile[] = "/tmp/unifold-vpcd.lock";
constexpr int kStartMs = 15000;
constexpr int kStopMs = 5000;

// A child that ends with the test, however the test ends.
class BoundProcess : public QProcess {
protected:
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGTERM); }
};

bool daemonAnswers()
{
    drivers::PcscContext context;
    return context.establish() == SCARD_S_SUCCESS;
}

bool hasVirtualReader()
{
    drivers::PcscContext context;
    std::vector<std::string> names;
    return context.establish() == SCARD_S_SUCCESS && context.listReaders(names) == SCARD_S_SUCCESS &&
           std::count(names.begin(), names.end(), kReader0) + std::count(names.begin(), names.end(), kReader1) == 2;
}

} // namespace

PcscDaemon::PcscDaemon() : m_lock(open(kLockFile, O_CREAT | O_RDWR | O_CLOEXEC, 0666))
{
    if (m_lock < 0 || flock(m_lock, LOCK_EX) != 0) {
        m_problem = QStringLiteral("cannot lock %1").arg(QLatin1String(kLockFile));
        return;
    }
    if (!daemonAnswers())
        start();
    else if (!waitForReaders(kStopMs))
        m_problem = QStringLiteral("a pcscd runs, but without the reader \"%1\": install vsmartcard-vpcd and restart "
                                   "that pcscd, or stop it")
                        .arg(QLatin1String(kReader0));
}

PcscDaemon::~PcscDaemon()
{
    stop();
    if (m_lock >= 0)
        close(m_lock);
}

bool PcscDaemon::start()
{
    m_problem.clear();
    const QString program = QStandardPaths::findExecutable(QStringLiteral("pcscd"), {QStringLiteral("/usr/sbin")});
    if (program.isEmpty()) {
        m_problem = QStringLiteral("pcscd is not installed");
        return false;
    }
    m_process = std::make_unique<BoundProcess>();
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->start(program, {QStringLiteral("--foreground")});
    if (m_process->waitForStarted() && waitForReaders(kStartMs))
        return true;
    const QString output = QString::fromLocal8Bit(m_process->readAll());
    stop();
    m_problem = QStringLiteral("pcscd does not show the reader \"%1\" (package vsmartcard-vpcd); it said: %2")
                    .arg(QLatin1String(kReader0), output);
    return false;
}

void PcscDaemon::stop()
{
    if (!m_process)
        return;
    m_process->terminate();
    if (!m_process->waitForFinished(kStopMs)) {
        m_process->kill();
        m_process->waitForFinished(kStopMs);
    }
    m_process.reset();
}

bool PcscDaemon::waitForReaders(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!hasVirtualReader()) {
        const bool died = m_process && m_process->state() == QProcess::NotRunning;
        if (died || deadline.hasExpired())
            return false;
        QThread::msleep(20);
    }
    return true;
}

} // namespace testsupport
