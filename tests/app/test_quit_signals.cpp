#include "app/quit_signals.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <csignal>

namespace {

/// More signals than the pipe to the event loop has room for.
constexpr int kPipeful = 70000;

constexpr int kNobodyCame = 1;

/// Milliseconds.
constexpr int kPatience = 1000;

/// Raises `signal` in the event loop. Returns the loop's result, or kNobodyCame if the signal did not end it.
int loopEndedBy(int signal)
{
    QTimer late;
    QObject::connect(&late, &QTimer::timeout, [] { QCoreApplication::exit(kNobodyCame); });
    late.start(kPatience);
    QTimer::singleShot(0, [signal] { std::raise(signal); });
    return QCoreApplication::exec();
}

} // namespace

class TestQuitSignals : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        std::signal(SIGHUP, SIG_DFL);
        quitOnSignals(*QCoreApplication::instance());
    }

    void aSignalEndsTheLoop_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void aSignalEndsTheLoop()
    {
        QFETCH(int, signal);
        QCOMPARE(loopEndedBy(signal), 0);
    }

    void aBlockingCallReturnsFirst()
    {
        bool returned = false;
        QTimer::singleShot(0, [&returned] {
            std::raise(SIGTERM);
            std::raise(SIGINT);
            QTest::qSleep(50);
            returned = true;
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(returned);
    }

    void aClosedStandardOutputEndsNothing() { QCOMPARE(std::raise(SIGPIPE), 0); }

    /// A call of a driver that looks at errno may be what the signal came into.
    void signalsLeaveErrnoAlone()
    {
        for (int i = 0; i < kPipeful; ++i) {
            errno = ENOENT;
            std::raise(SIGTERM);
            if (errno != ENOENT)
                break;
        }
        QCOMPARE(errno, ENOENT);
        QCOMPARE(loopEndedBy(SIGTERM), 0);
    }

    void anIgnoredHangupStaysIgnored()
    {
        std::signal(SIGHUP, SIG_IGN);
        quitOnSignals(*QCoreApplication::instance());
        QCOMPARE(loopEndedBy(SIGHUP), kNobodyCame);
    }
};

QTEST_GUILESS_MAIN(TestQuitSignals)
#include "test_quit_signals.moc"
