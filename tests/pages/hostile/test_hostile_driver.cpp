// Every button of every page against a driver that is hostile by design. No press may crash, read past a buffer (the
// sanitizer build looks), take a driver's text for markup or leave the window unusable.
//
//   UNIFOLD_HOSTILE_COUNT=5000   that many seeds, from 1 (default 300)
//   UNIFOLD_HOSTILE_SEED=17      this seed alone, to repeat a failure: each session follows from its seed
#include "tests/pages/hostile/hostile_session.h"
#include "tests/support/hostility.h"

#include <QTest>

namespace {

constexpr int kDefaultCount = 300;

/// The blocking read takes up to a second of real time.
constexpr std::uint32_t kSeedsPerBlockingRead = 60;

} // namespace

class TestHostileDriver : public QObject {
    Q_OBJECT

private slots:
    void everyButtonSurvives()
    {
        const bool single = qEnvironmentVariableIsSet("UNIFOLD_HOSTILE_SEED");
        const int count = qEnvironmentVariableIsSet("UNIFOLD_HOSTILE_COUNT")
                              ? qEnvironmentVariableIntValue("UNIFOLD_HOSTILE_COUNT")
                              : kDefaultCount;
        const auto first =
            single ? static_cast<std::uint32_t>(qEnvironmentVariableIntValue("UNIFOLD_HOSTILE_SEED")) : 1;
        const std::uint32_t last = single ? first : static_cast<std::uint32_t>(count);
        int presses = 0;
        int markersShown = 0;
        for (std::uint32_t seed = first; seed <= last; ++seed) {
            runSession(seed, single);
            if (QTest::currentTestFailed())
                return;
            presses += m_presses;
            markersShown += m_markersShown;
        }
        qInfo("%u seeds, %d presses, %d pieces of markup shown as characters", last - first + 1, presses, markersShown);
        // One seed alone may have shown none.
        QVERIFY(presses > 0);
        QVERIFY(single || markersShown > 0);
    }

private:
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
        m_presses = session.presses();
        m_markersShown = session.markersShown();
        QVERIFY2(complaint.isEmpty(), (where + complaint.toUtf8()).constData());
        session.reloadDriver();
        QVERIFY2(session.isUsable(), (where + "the window is not usable").constData());
    }

    int m_presses = 0;
    int m_markersShown = 0;
};

QTEST_MAIN(TestHostileDriver)
#include "test_hostile_driver.moc"
