// The polling loop as its table of states, driven by its real timer.
#include "pages/magstripe/form_mag_stripe.h"
#include "tests/pages/magstripe/stripe_script.h"
#include "tests/support/bench.h"

#include <QElapsedTimer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

#include <algorithm>
#include <vector>

namespace {

const QString kNoData = "[磁条卡] 检测到刷卡，但磁条无信息！return[9]";

/// The bench on the stripe page with a device open; the interval is short for the tests.
class StripeBench : public Bench {
public:
    explicit StripeBench(const char *interval = "5")
    {
        openDevice();
        page()->findChild<QLineEdit *>("lineEdit_async_thread_interval_time")->setText(interval);
    }

    Form_Mag_Stripe *page() { return Bench::page<Form_Mag_Stripe>(); }
    QTimer *timer() { return page()->findChild<QTimer *>(); }
    void start() { press("pushButton_async_thread_start", page()); }
    void stop() { press("pushButton_async_thread_stop", page()); }

    /// What may be used while the loop runs or stands still: the interval field, 开始, 结束.
    QList<bool> enabled()
    {
        return {widget<QLineEdit>("lineEdit_async_thread_interval_time", page())->isEnabled(),
                widget<QPushButton>("pushButton_async_thread_start", page())->isEnabled(),
                widget<QPushButton>("pushButton_async_thread_stop", page())->isEnabled()};
    }

    /// How often the driver was called under this name.
    static int count(const QString &name)
    {
        const QStringList made = calls();
        return static_cast<int>(
            std::count_if(made.begin(), made.end(), [&](const QString &call) { return call.startsWith(name + "("); }));
    }

    /// The calls of one session, started once and asked as often as it was.
    static QStringList oneSession()
    {
        QStringList expected{"vek_msr_qm_start(1A2B)"};
        for (int i = count("vek_msr_qm_status"); i > 0; --i)
            expected << "vek_msr_qm_status(1A2B)";
        return expected;
    }
};

/// A script of vek_msr_qm_status that gives the answers one after the other and then 0 for ever.
auto statuses(std::initializer_list<int> answers)
{
    return [list = std::vector<int>(answers), next = std::size_t{0}](auto) mutable {
        return next < list.size() ? list[next++] : 0;
    };
}

} // namespace

class TestFormMagStripePolling : public QObject {
    Q_OBJECT

private slots:
    void startOfPollingCallsNothingYet()
    {
        StripeBench bench;
        QCOMPARE(bench.enabled(), QList<bool>({true, true, true}));
        fillTracks(bench, "1", "2", "3");
        bench.start();
        QCOMPARE(bench.log(), QStringList({kSeparator}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
        QCOMPARE(bench.enabled(), QList<bool>({false, false, true}));
        QVERIFY(bench.timer()->isActive());
        QCOMPARE(bench.timer()->interval(), 5);
    }

    void firstTickStartsTheSessionAndLaterOnesOnlyAsk()
    {
        StripeBench bench;
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 4);
        QCOMPARE(Bench::calls(), StripeBench::oneSession());
        QCOMPARE(bench.log(), QStringList({kSeparator}));
    }

    void failedStartIsLoggedOnceAndTheLoopCarriesOn()
    {
        StripeBench bench;
        recorder().vek_msr_qm_start = [](auto) { return -2; };
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 3);
        QCOMPARE(Bench::calls(), StripeBench::oneSession());
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_start return[-2] (assert 0)"}));
    }

    void swipeIsShownAndTheNextTickStartsAgain()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({0, 1});
        recorder().vek_msr_qm_get = swipe("TRACK1", "22", "333");
        QStringList logAtStop;
        recorder().vek_msr_qm_stop = [&](auto) {
            logAtStop = bench.log();
            return -1;
        };
        bench.start();
        QTRY_VERIFY(Bench::calls().size() >= 7);
        QCOMPARE(Bench::calls().mid(0, 7),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", "vek_msr_qm_status(1A2B)", kGet,
                              "vek_msr_qm_stop(1A2B)", "vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, kSeparator, "[磁条卡] track1[TRACK1]", "[磁条卡] track2[22]",
                                           "[磁条卡] track3[333]"}));
        QCOMPARE(bench.log(), logAtStop);
        QCOMPARE(trackTexts(bench), QStringList({"", "22", "333"}));
        QCOMPARE(bench.enabled(), QList<bool>({false, false, true}));
    }

    void everySwipeInARowIsTaken()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({1, 1, 1});
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_start") == 4);
        QStringList expected;
        for (int swipe = 0; swipe < 3; ++swipe)
            expected << "vek_msr_qm_start(1A2B)"
                     << "vek_msr_qm_status(1A2B)" << kGet << "vek_msr_qm_stop(1A2B)";
        QCOMPARE(Bench::calls().mid(0, 12), expected);
    }

    void failedGetIsLoggedAndTheNextTickStartsAgain()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({1});
        recorder().vek_msr_qm_get = failedSwipe(-6);
        bench.start();
        QTRY_VERIFY(Bench::calls().size() >= 6);
        QCOMPARE(Bench::calls().mid(0, 6),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", kGet, "vek_msr_qm_stop(1A2B)",
                              "vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] 取回磁条数据失败！return[-6]"}));
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
    }

    void emptyStripeIsLoggedOnEveryTickAndTheSessionKept()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({9, 9, 0, 9});
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 5);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNoData, kNoData, kNoData}));
        QCOMPARE(Bench::calls(), StripeBench::oneSession());
    }

    void hostileTracksAreShownAsCharacters()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({1});
        recorder().vek_msr_qm_get = [](auto, char *track1, char *track2, char *track3, auto, auto, auto) {
            std::memset(track1, '\xFF', sdk::kTrackSize);
            std::strcpy(track2, "<b>%s%n</b>");
            std::memset(track3, '3', sdk::kTrackSize);
            return 0;
        };
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_stop") == 1);
        const QString ff(256, QChar(0xFF));
        const QString threes(256, '3');
        QCOMPARE(bench.log(), QStringList({kSeparator, kSeparator, "[磁条卡] track1[" + ff + "]",
                                           "[磁条卡] track2[<b>%s%n</b>]", "[磁条卡] track3[" + threes + "]"}));
        QCOMPARE(trackTexts(bench), QStringList({"", "<b>%s%n</b>", threes}));
    }

    void endStopsTheLoopAndTheSession()
    {
        StripeBench bench;
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        bench.forget();
        recorder().vek_msr_qm_stop = [](auto) { return -9; };
        bench.stop();
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({"[磁条卡] vek_msr_qm_stop return[-9] (assert 0)"}));
        QCOMPARE(bench.enabled(), QList<bool>({true, true, false}));
        QVERIFY(!bench.timer()->isActive());
        QTest::qWait(50);
        QCOMPARE(Bench::calls().size(), 1);
    }

    void startAfterEndOpensAFreshSession()
    {
        StripeBench bench;
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        bench.stop();
        bench.forget();
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        QCOMPARE(Bench::calls().first(), "vek_msr_qm_start(1A2B)");
        QCOMPARE(StripeBench::count("vek_msr_qm_start"), 1);
    }

    void endWithoutDeviceLeavesTheStopButtonEnabled()
    {
        StripeBench bench;
        bench.start();
        bench.press("pushButton_close");
        bench.forget();
        bench.stop();
        QCOMPARE(bench.log(), QStringList({kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(bench.enabled(), QList<bool>({true, true, true}));
        QVERIFY(!bench.timer()->isActive());
    }

    void ticksGoOnWithHandle0AfterAClose()
    {
        StripeBench bench;
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 1);
        bench.press("pushButton_close");
        bench.forget();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 3);
        QCOMPARE(Bench::calls().count("vek_msr_qm_status(0)"), Bench::calls().size());
    }

    void ticksOfADisabledPageOnlyRearm()
    {
        StripeBench bench;
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        QSignalSpy ticks(bench.timer(), SIGNAL(timeout()));
        bench.press("pushButton_unload_driver");
        ticks.clear();
        QTRY_VERIFY(ticks.count() >= 5);
        QVERIFY(bench.timer()->isActive());
        QCOMPARE(bench.log(), QStringList({kSeparator}));

        // The reloaded library is a fresh one; the session is the one that the loop believes to be open.
        bench.press("pushButton_select_driver");
        bench.forget();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        QCOMPARE(Bench::calls().count("vek_msr_qm_status(1A2B)"), Bench::calls().size());
        bench.stop();
        QVERIFY(!bench.timer()->isActive());
    }

    void ticksGoOnWhileAnotherTabIsInFront()
    {
        StripeBench bench;
        bench.start();
        bench.widget<QTabWidget>("tabWidget")->setCurrentIndex(0);
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
    }

    void slowCallDoesNotStackTicks()
    {
        StripeBench bench("30");
        QElapsedTimer clock;
        QList<qint64> begins;
        QList<qint64> ends;
        recorder().vek_msr_qm_status = [&](auto) {
            begins << clock.elapsed();
            QTest::qSleep(80);
            ends << clock.elapsed();
            return 0;
        };
        clock.start();
        bench.start();
        QTRY_VERIFY(begins.size() >= 3);
        // The pause lies between the end of one tick and the start of the next; Qt may fire up to 5 % early.
        QVERIFY(begins[1] - ends[0] >= 25);
        QVERIFY(begins[2] - ends[1] >= 25);
        bench.stop();
        recorder().vek_msr_qm_status = nullptr;
    }

    void intervalCannotBeTypedWhilePolling()
    {
        StripeBench bench("25");
        bench.start();
        auto *field = bench.widget<QLineEdit>("lineEdit_async_thread_interval_time", bench.page());
        QTest::mouseClick(field, Qt::LeftButton);
        QVERIFY(!field->hasFocus());
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        QCOMPARE(field->text(), "25");
        QCOMPARE(bench.timer()->interval(), 25);
        bench.stop();
        bench.type("lineEdit_async_thread_interval_time", "7", bench.page());
        bench.start();
        QCOMPARE(bench.timer()->interval(), 7);
    }

    void intervalIsReadOnEachTick()
    {
        StripeBench bench;
        bench.start();
        bench.page()->findChild<QLineEdit *>("lineEdit_async_thread_interval_time")->setText("77");
        QTRY_COMPARE(bench.timer()->interval(), 77);
        QVERIFY(bench.timer()->isActive());
    }

    void textThatIsNoNumberPollsOnEveryPass_data()
    {
        QTest::addColumn<QString>("typed");
        for (const char *typed : {"", "abc", "12abc", "0", "99999999999"})
            QTest::newRow(typed) << typed;
    }

    void textThatIsNoNumberPollsOnEveryPass()
    {
        QFETCH(QString, typed);
        StripeBench bench(qPrintable(typed));
        bench.start();
        QCOMPARE(bench.timer()->interval(), 0);
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 20);
        QCOMPARE(StripeBench::count("vek_msr_qm_start"), 1);
    }

    void negativeIntervalNeverTicksAndCanBeEnded()
    {
        StripeBench bench("-5");
        bench.start();
        QCOMPARE(bench.enabled(), QList<bool>({false, false, true}));
        QTest::qWait(50);
        QVERIFY(Bench::calls().isEmpty());
        bench.stop();
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(bench.enabled(), QList<bool>({true, true, false}));
    }

    void singleStepsLeaveTheLoopAlone()
    {
        StripeBench bench("20");
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 1);
        bench.press("pushButton_stop", bench.page());
        bench.forget();
        QVERIFY(bench.timer()->isActive());
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 2);
        QCOMPARE(StripeBench::count("vek_msr_qm_start"), 0);
    }
};

QTEST_MAIN(TestFormMagStripePolling)
#include "test_form_mag_stripe_polling.moc"
