// The polling half of the stripe page over the virtual reader: single steps, and the loop that chains them.
#include "pages/magstripe/form_mag_stripe.h"
#include "tests/virtual/bench/virtual_bench.h"

namespace {

using Slot = VirtualBench::Slot;

const QString kSeparator = BenchWindow::separator("磁条卡");
const QString kStarted = "[磁条卡] vek_msr_qm_start return[0] (assert 0)";
const QString kStopped = "[磁条卡] vek_msr_qm_stop return[0] (assert 0)";
const QString kNothingYet = "[磁条卡] vek_msr_qm_status return[0][未刷卡] (assert 1)";
const QString kSwiped = "[磁条卡] vek_msr_qm_status return[1][检测到刷卡] (assert 1)";

class PollingBench : public VirtualBench {
public:
    PollingBench() { openDevice(); }

    Form_Mag_Stripe *form() { return page<Form_Mag_Stripe>(); }
    QStringList pressed(const char *button) { return logOf(button, form()); }

    QString track(const char *number) { return cardText(Slot::Stripe, (std::string("/tracks/") + number).c_str()); }
};

} // namespace

class TestBenchVirtualStripePolling : public QObject {
    Q_OBJECT

private slots:
    void singleStepsOfASwipe()
    {
        PollingBench bench;
        QCOMPARE(bench.pressed("pushButton_async_start"), QStringList({kSeparator, kStarted}));
        QCOMPARE(bench.pressed("pushButton_async_get_status"), QStringList({kNothingYet}));
        QCOMPARE(bench.pressed("pushButton_async_get_data"),
                 QStringList({"[磁条卡] vek_msr_qm_get return[-3] (assert 0)"}));
        QVERIFY(runTrayTool({"swipe"}));
        QCOMPARE(bench.pressed("pushButton_async_get_status"), QStringList({kSwiped}));
        QCOMPARE(bench.pressed("pushButton_async_get_data"),
                 QStringList({"[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                              QString("[磁条卡] vek_msr_qm_get tracklen: [%1] [%2] [%3]")
                                  .arg(bench.track("1").size())
                                  .arg(bench.track("2").size())
                                  .arg(bench.track("3").size())}));
        QCOMPARE(bench.text("lineEdit_msr_track_2"), bench.track("2"));
        QCOMPARE(bench.text("lineEdit_msr_track_3"), bench.track("3"));
        QCOMPARE(bench.pressed("pushButton_stop"), QStringList({kStopped}));
        QCOMPARE(bench.pressed("pushButton_async_get_status"), QStringList({kNothingYet}));
    }

    void emptyStripeIsNine()
    {
        PollingBench bench;
        bench.pressed("pushButton_async_start");
        QVERIFY(runTrayTool({"swipe", "stripe-empty"}));
        QCOMPARE(bench.pressed("pushButton_async_get_status"),
                 QStringList({"[磁条卡] vek_msr_qm_status return[9][未刷卡] (assert 1)"}));
        QCOMPARE(bench.pressed("pushButton_async_get_data"),
                 QStringList({"[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                              "[磁条卡] vek_msr_qm_get tracklen: [0] [0] [0]"}));
    }

    void swipeBeforeTheStartIsNotSeen()
    {
        PollingBench bench;
        QVERIFY(runTrayTool({"swipe"}));
        bench.pressed("pushButton_async_start");
        QCOMPARE(bench.pressed("pushButton_async_get_status"), QStringList({kNothingYet}));
    }

    void keyboardModeIsInvisibleToTheSteps()
    {
        PollingBench bench;
        bench.pressed("pushButton_msr_switch_mode_keyboard");
        bench.pressed("pushButton_async_start");
        QVERIFY(runTrayTool({"swipe"}));
        QCOMPARE(bench.pressed("pushButton_async_get_status"), QStringList({kNothingYet}));
        // The power cut brings the head back to command mode.
        QVERIFY(runTrayTool({"power"}));
        bench.pressed("pushButton_async_start");
        QVERIFY(runTrayTool({"swipe"}));
        QCOMPARE(bench.pressed("pushButton_async_get_status"), QStringList({kSwiped}));
    }

    void loopShowsSwipeAfterSwipe()
    {
        PollingBench bench;
        bench.type("lineEdit_async_thread_interval_time", "20", bench.form());
        QCOMPARE(bench.pressed("pushButton_async_thread_start"), QStringList({kSeparator}));
        const QStringList first{kSeparator, "[磁条卡] track1[" + bench.track("1") + "]",
                                "[磁条卡] track2[" + bench.track("2") + "]",
                                "[磁条卡] track3[" + bench.track("3") + "]"};
        bench.clearLog();
        swipeUntilLogged(bench, {"swipe"}, first);
        QCOMPARE(bench.text("lineEdit_msr_track_2"), bench.track("2"));

        const auto tracks = bench.world().tray().card("stripe-track-2").at("tracks");
        bench.clearLog();
        swipeUntilLogged(bench, {"swipe", "stripe-track-2"},
                         {kSeparator, "[磁条卡] track1[]",
                          "[磁条卡] track2[" + QString::fromStdString(tracks.at("2")) + "]", "[磁条卡] track3[]"});

        QCOMPARE(bench.pressed("pushButton_async_thread_stop"), QStringList({kStopped}));
        QVERIFY(runTrayTool({"swipe"}));
        bench.clearLog();
        QTest::qWait(500);
        QCOMPARE(bench.log(), QStringList());
    }

    void loopTellsAnEmptyStripe()
    {
        PollingBench bench;
        bench.pressed("pushButton_async_thread_start");
        bench.clearLog();
        const QString empty = "[磁条卡] 检测到刷卡，但磁条无信息！return[9]";
        QTRY_VERIFY_WITH_TIMEOUT(runTrayTool({"swipe", "stripe-empty"}) && bench.log().contains(empty), 10000);
        // The session goes on, so that each tick tells it again.
        QTRY_VERIFY(bench.log().size() >= 2);
        for (const QString &line : bench.log())
            QCOMPARE(line, empty);
        bench.pressed("pushButton_async_thread_stop");
    }

    void loopOutlivesAnUnloadedLibrary()
    {
        PollingBench bench;
        bench.type("lineEdit_async_thread_interval_time", "10", bench.form());
        bench.pressed("pushButton_async_thread_start");
        QTest::qWait(50);
        bench.press("pushButton_unload_driver");
        bench.clearLog();
        QTest::qWait(100);
        QCOMPARE(bench.log(), QStringList());
        bench.press("pushButton_select_driver");
        bench.press("pushButton_close");
        bench.press("pushButton_open_default");
        bench.pressed("pushButton_async_thread_stop");
    }

private:
    /// The loop begins a session with the first tick after a swipe: some ticks are waited for.
    static void swipeUntilLogged(PollingBench &bench, const QStringList &swipe, const QStringList &expected)
    {
        QTest::qWait(400);
        QVERIFY(runTrayTool(swipe));
        QTRY_VERIFY_WITH_TIMEOUT(bench.log().size() >= expected.size(), 5000);
        QCOMPARE(bench.log(), expected);
    }
};

QTEST_MAIN(TestBenchVirtualStripePolling)
#include "test_bench_virtual_stripe_polling.moc"
