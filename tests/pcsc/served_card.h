// A card of a tray of the test's own, lent to pcscd by "unifold-tray serve".
#pragma once

#include "drivers/pcsc/pcsc_context.h"
#include "tests/pcsc/pcsc_daemon.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QString>
#include <QThread>

namespace testsupport {

class ServedCard {
public:
    /// Returns when pcscd shows the card; problem() tells if it never did.
    ServedCard(const QString &tool, const QString &tray, const char *card)
    {
        m_tool.setProcessChannelMode(QProcess::MergedChannels);
        m_tool.start(tool, {"--tray", tray, "serve", card});
        if (!m_tool.waitForReadyRead(10000) || !isPresent(true))
            m_problem = "not served: " + m_tool.readAll() + m_tool.errorString().toUtf8();
    }
    ~ServedCard() { kill(); }
    ServedCard(const ServedCard &) = delete;
    ServedCard &operator=(const ServedCard &) = delete;

    /// Empty if all is well.
    QByteArray problem() const { return m_problem; }

    qint64 processId() const { return m_tool.processId(); }

    /// Ends the program as a crash would, and waits until pcscd knows.
    void kill()
    {
        if (m_tool.state() == QProcess::NotRunning)
            return;
        m_tool.kill();
        m_tool.waitForFinished();
        isPresent(false);
    }

    /// Waits some seconds for pcscd to see a card, or none.
    static bool isPresent(bool wanted)
    {
        const std::string reader = kReader0;
        const QDeadlineTimer deadline(8000);
        drivers::PcscContext context;
        while (context.establish() == SCARD_S_SUCCESS && !deadline.hasExpired()) {
            SCARD_READERSTATE state{};
            const bool known = drivers::readerStateNow(context, reader, state) == SCARD_S_SUCCESS;
            // A card counts as there when its answer to reset is known.
            if (known && ((state.dwEventState & SCARD_STATE_PRESENT) != 0 && state.cbAtr > 0) == wanted)
                return true;
            QThread::msleep(50);
        }
        return false;
    }

private:
    QProcess m_tool;
    QByteArray m_problem;
};

} // namespace testsupport
