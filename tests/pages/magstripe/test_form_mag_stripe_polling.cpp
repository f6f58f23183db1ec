// The single steps, the reader's mode, and the polling loop as its table of states, driven by its real timer.
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
    void startStepClearsAndStarts()
    {
        StripeBench bench;
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_qm_start = [](auto) { return -4; };
        bench.press("pushButton_async_start", bench.page());
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_start(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_start return[-4] (assert 0)"}));
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
    }

    void statusStepNamesTheSwipe_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("word");
        QTest::newRow("1") << 1 << "检测到刷卡";
        QTest::newRow("0") << 0 << "未刷卡";
        QTest::newRow("9") << 9 << "未刷卡";
        QTest::newRow("-1") << -1 << "未刷卡";
    }

    void statusStepNamesTheSwipe()
    {
        QFETCH(int, status);
        QFETCH(QString, word);
        StripeBench bench;
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_qm_status = [status](auto) { return status; };
        bench.press("pushButton_async_get_status", bench.page());
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_status(1A2B)"}));
        QCOMPARE(bench.log(),
                 QStringList({QString("[磁条卡] vek_msr_qm_status return[%1][%2] (assert 1)").arg(status).arg(word)}));
        QCOMPARE(trackTexts(bench), QStringList({"1", "2", "3"}));
    }

    void getStepShowsTheCheckedTracksAndKeepsTheSession()
    {
        StripeBench bench;
        fillTracks(bench, "old", "old", "old");
        recorder().vek_msr_qm_get = swipe("TRACK1", "22", "");
        bench.press("pushButton_async_get_data", bench.page());
        QCOMPARE(Bench::calls(), QStringList({kGet}));
        QCOMPARE(bench.log(), QStringList({"[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                                           "[磁条卡] vek_msr_qm_get tracklen: [6] [2] [0]"}));
        QCOMPARE(trackTexts(bench), QStringList({"old", "22", ""}));
    }

    void getStepFailureChangesNothing()
    {
        StripeBench bench;
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_qm_get = failedSwipe(2);
        bench.press("pushButton_async_get_data", bench.page());
        QCOMPARE(Bench::calls(), QStringList({kGet}));
        QCOMPARE(bench.log(), QStringList({"[磁条卡] vek_msr_qm_get return[2] (assert 0)"}));
        QCOMPARE(trackTexts(bench), QStringList({"1", "2", "3"}));
    }

    void stopStepStops()
    {
        StripeBench bench;
        recorder().vek_msr_qm_stop = [](auto) { return 6; };
        bench.press("pushButton_stop", bench.page());
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({"[磁条卡] vek_msr_qm_stop return[6] (assert 0)"}));
    }

    void modeButtonsClearAndSwitch_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("line");
        QTest::newRow("command") << "pushButton_msr_switch_mode_command" << 1
                                 << "[磁条卡] 磁条设置为指令交互方式 return[-8] (assert 0)";
        QTest::newRow("keyboard") << "pushButton_msr_switch_mode_keyboard" << 0
                                  << "[磁条卡] 磁条设置为USB键盘方式 return[-8] (assert 0)";
    }

    void modeButtonsClearAndSwitch()
    {
        QFETCH(QString, button);
        QFETCH(int, mode);
        QFETCH(QString, line);
        StripeBench bench;
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_mode_switch = [](auto, auto) { return -8; };
        bench.press(qPrintable(button), bench.page());
        QCOMPARE(Bench::calls(), QStringList({QString("vek_msr_mode_switch(1A2B, %1)").arg(mode)}));
        QCOMPARE(bench.log(), QStringList({kSeparator, line}));
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
    }

    void withoutDeviceEachButtonLogsItsGuardLine_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("separator");
        for (const char *button : {"pushButton_async_start", "pushButton_msr_switch_mode_command",
                                   "pushButton_msr_switch_mode_keyboard", "pushButton_async_thread_start"})
            QTest::newRow(button) << button << true;
        for (const char *button : {"pushButton_async_get_status", "pushButton_async_get_data", "pushButton_stop",
                                   "pushButton_async_thread_stop"})
            QTest::newRow(button) << button << false;
    }

    void withoutDeviceEachButtonLogsItsGuardLine()
    {
        QFETCH(QString, button);
        QFETCH(bool, separator);
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "1", "2", "3");
        bench.press(qPrintable(button), page);
        QCOMPARE(bench.log(), separator ? QStringList({kSeparator, kNotOpen}) : QStringList({kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(trackTexts(bench), QStringList({"1", "2", "3"}));
        QVERIFY(!page->findChild<QTimer *>()->isActive());
        for (const char *name : {"pushButton_async_thread_start", "pushButton_async_thread_stop"})
            QVERIFY(bench.widget<QPushButton>(name, page)->isEnabled());
    }

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
        QStringList expected{"vek_msr_qm_start(1A2B)"};
        for (int i = StripeBench::count("vek_msr_qm_status"); i > 0; --i)
            expected << "vek_msr_qm_status(1A2B)";
        QCOMPARE(Bench::calls(), expected);
        QCOMPARE(bench.log(), QStringList({kSeparator}));
    }

    void failedStartIsLoggedOnceAndTheLoopCarriesOn()
    {
        StripeBench bench;
        recorder().vek_msr_qm_start = [](auto) { return -2; };
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_status") >= 3);
        QCOMPARE(StripeBench::count("vek_msr_qm_start"), 1);
        QCOMPARE(Bench::calls().mid(0, 2), QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_start return[-2] (assert 0)"}));
    }

    void swipeIsShownAndTheNextTickStartsAgain()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({0, 1});
        recorder().vek_msr_qm_get = swipe("TRACK1", "22", "333");
        recorder().vek_msr_qm_stop = [](auto) { return -1; };
        bench.start();
        QTRY_VERIFY(Bench::calls().size() >= 7);
        QCOMPARE(Bench::calls().mid(0, 7),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", "vek_msr_qm_status(1A2B)", kGet,
                              "vek_msr_qm_stop(1A2B)", "vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, kSeparator, "[磁条卡] track1[TRACK1]", "[磁条卡] track2[22]",
                                           "[磁条卡] track3[333]"}));
        QCOMPARE(trackTexts(bench), QStringList({"", "22", "333"}));
        QCOMPARE(bench.enabled(), QList<bool>({false, false, true}));
    }

    void everySwipeInARowIsTaken()
    {
        StripeBench bench;
        recorder().vek_msr_qm_status = statuses({1, 1, 1});
        bench.start();
        QTRY_VERIFY(StripeBench::count("vek_msr_qm_start") == 4);
        QCOMPARE(StripeBench::count("vek_msr_qm_get"), 3);
        QCOMPARE(StripeBench::count("vek_msr_qm_stop"), 3);
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
        QCOMPARE(StripeBench::count("vek_msr_qm_start"), 1);
        QCOMPARE(StripeBench::count("vek_msr_qm_stop"), 0);
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
        QVERIFY(bench.log().size() <= 2);

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

    void rawQuerySlotIsEmpty()
    {
        StripeBench bench;
        QVERIFY(QMetaObject::invokeMethod(bench.page(), "on_timer_msr_raw_query_timeout"));
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        QVERIFY(!bench.timer()->isActive());
    }
};

QTEST_MAIN(TestFormMagStripePolling)
#include "test_form_mag_stripe_polling.moc"
