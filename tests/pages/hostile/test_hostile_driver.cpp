// Every button of every page against a driver that is hostile by design. No press may crash, read past a buffer (the
// sanitizer build looks), take a driver's text for markup or leave the window unusable.
//
//   UNIFOLD_HOSTILE_COUNT=5000   that many seeds, from 1 (without it 300, or fewer if they take too long)
//   UNIFOLD_HOSTILE_SEED=17      this seed alone, to repeat a failure: each session follows from its seed
#include "sdk/entry_point_table.h"
#include "tests/pages/hostile/hostile_session.h"
#include "tests/support/hostility.h"

#include <QElapsedTimer>
#include <QTest>

namespace {

constexpr int kDefaultCount = 300;
constexpr int kLeastCount = 20;
constexpr int kPatienceMs = 20000;

/// The blocking read takes up to a second of real time.
constexpr std::uint32_t kSeedsPerBlockingRead = 60;

QSet<QString> calledByTheBench()
{
#define UNIFOLD_NAME_CALLED(name, Contract) #name,
#define UNIFOLD_NAME_UNCALLED(name)
    return {UNIFOLD_ENTRY_POINTS(UNIFOLD_NAME_CALLED, UNIFOLD_NAME_UNCALLED)};
#undef UNIFOLD_NAME_CALLED
#undef UNIFOLD_NAME_UNCALLED
}

} // namespace

class TestHostileDriver : public QObject {
    Q_OBJECT

public:
    /// Qt Test ends a function after five minutes unless told otherwise: a run of thousands takes longer.
    static void initMain()
    {
        if (qEnvironmentVariableIsSet("UNIFOLD_HOSTILE_COUNT"))
            qputenv("QTEST_FUNCTION_TIMEOUT", "86400000");
    }

private slots:
    void everyButtonSurvives()
    {
        const bool single = qEnvironmentVariableIsSet("UNIFOLD_HOSTILE_SEED");
        const bool counted = qEnvironmentVariableIsSet("UNIFOLD_HOSTILE_COUNT");
        const int count = counted ? qEnvironmentVariableIntValue("UNIFOLD_HOSTILE_COUNT") : kDefaultCount;
        const int first = single ? qEnvironmentVariableIntValue("UNIFOLD_HOSTILE_SEED") : 1;
        const int last = single ? first : count;
        QElapsedTimer sinceStart;
        sinceStart.start();
        int sessions = 0;
        m_sum = Sum();
        for (int seed = first; seed <= last; ++seed) {
            if (!counted && sessions >= kLeastCount && sinceStart.elapsed() > kPatienceMs)
                break;
            runSession(static_cast<std::uint32_t>(seed), single);
            if (QTest::currentTestFailed())
                return;
            ++sessions;
        }
        qInfo("%d seeds, %d presses, %d message boxes, %d pieces of markup shown as characters", sessions,
              m_sum.presses, m_sum.messageBoxes, m_sum.markersShown);
        QVERIFY(m_sum.presses > 0);
        // One seed alone need not meet everything.
        if (single)
            return;
        QVERIFY(m_sum.markersShown > 0);
        QVERIFY(m_sum.messageBoxes > 0);
        const QStringList missed = (calledByTheBench() - m_sum.called).values();
        QVERIFY2(missed.isEmpty(), qPrintable("never called: " + missed.join(", ")));
    }

private:
    /// Over all sessions, so that a run that met nothing does not pass.
    struct Sum {
        int presses = 0;
        int markersShown = 0;
        int messageBoxes = 0;
        QSet<QString> called;
    };

    void runSession(std::uint32_t seed, bool single)
    {
        // A crash ends the program: the last seed printed is the one to repeat.
        std::fprintf(stderr, "seed %u%s", seed, seed % 20 == 0 ? "\n" : " ");
        const QByteArray where = "seed " + QByteArray::number(seed) + ": ";
        HostileSession session(seed);
        session.pressEverything();
        if (single || seed % kSeedsPerBlockingRead == 1)
            session.readStripe();
        const QString complaint = session.complaint();
        m_sum.presses += session.presses();
        m_sum.markersShown += session.markersShown();
        m_sum.messageBoxes += session.messageBoxes();
        m_sum.called += HostileSession::calledEntryPoints();
        QVERIFY2(complaint.isEmpty(), (where + complaint.toUtf8()).constData());
        session.reloadDriver();
        QVERIFY2(session.isUsable(), (where + "the window is not usable").constData());
    }

    Sum m_sum;
};

QTEST_MAIN(TestHostileDriver)
#include "test_hostile_driver.moc"
