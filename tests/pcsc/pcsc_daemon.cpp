#include "tests/pcsc/pcsc_daemon.h"

#include "drivers/pcsc/pcsc_context.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
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

// A reader is there when its second slot is, which comes last.
bool hasReader(const char *firstSlot)
{
    std::string lastSlot = firstSlot;
    lastSlot.back() = '1';
    drivers::PcscContext context;
    std::vector<std::string> names;
    return context.establish() == SCARD_S_SUCCESS && context.listReaders(names) == SCARD_S_SUCCESS &&
           std::count(names.begin(), names.end(), firstSlot) + std::count(names.begin(), names.end(), lastSlot) == 2;
}

/// Whoever was first made the file; a lock needs no more than reading it. -1 on failure.
int openLockFile()
{
    for (const int flags : {0, O_CREAT, 0}) { // a file of another user's may not be opened with O_CREAT in /tmp
        const int file = open(kLockFile, flags | O_RDONLY | O_CLOEXEC, 0644);
        if (file >= 0)
            return file;
    }
    return -1;
}

} // namespace

PcscDaemon::PcscDaemon() : m_lock(openLockFile())
{
    if (m_lock < 0 || flock(m_lock, LOCK_EX) != 0) {
        m_problem = QStringLiteral("cannot lock %1").arg(QLatin1String(kLockFile));
        return;
    }
    if (!daemonAnswers())
        start();
    else if (!waitForReader(kReader0, kStopMs))
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
    return launch({}, kReader0);
}

bool PcscDaemon::startWithOtherReader()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("other"));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write("FRIENDLYNAME \"Other PCD\"\n"
               "DEVICENAME /dev/null:0x8D7B\n"
               "LIBPATH /usr/lib/pcsc/drivers/serial/libifdvpcd.so\n"
               "CHANNELID 0x8D7B\n");
    file.close();
    return launch({QStringLiteral("--config"), folder.path()}, kOtherReader);
}

bool PcscDaemon::launch(const QStringList &options, const char *reader)
{
    m_problem.clear();
    const QString program = QStandardPaths::findExecutable(QStringLiteral("pcscd"), {QStringLiteral("/usr/sbin")});
    if (program.isEmpty()) {
        m_problem = QStringLiteral("pcscd is not installed");
        return false;
    }
    m_process = std::make_unique<BoundProcess>();
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->start(program, QStringList{QStringLiteral("--foreground")} + options);
    if (m_process->waitForStarted() && waitForReader(reader, kStartMs))
        return true;
    const QString output = QString::fromLocal8Bit(m_process->readAll());
    stop();
    m_problem = QStringLiteral("pcscd does not show the reader \"%1\" (package vsmartcard-vpcd); it said: %2")
                    .arg(QLatin1String(reader), output);
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

bool PcscDaemon::waitForReader(const char *reader, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!hasReader(reader)) {
        const bool died = m_process && m_process->state() == QProcess::NotRunning;
        if (died || deadline.hasExpired())
            return false;
        QThread::msleep(20);
    }
    return true;
}

} // namespace testsupport
