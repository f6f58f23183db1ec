// The single steps of a swipe session and the reader's mode.
#include "pages/magstripe/form_mag_stripe.h"
#include "tests/pages/magstripe/stripe_script.h"
#include "tests/support/bench.h"

#include <QPushButton>
#include <QTimer>

class TestFormMagStripeSteps : public QObject {
    Q_OBJECT

private slots:
    void startStepClearsAndStarts()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_qm_start = [](auto) { return -4; };
        bench.press("pushButton_async_start", page);
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
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_qm_status = [status](auto) { return status; };
        bench.press("pushButton_async_get_status", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_status(1A2B)"}));
        QCOMPARE(bench.log(),
                 QStringList({QString("[磁条卡] vek_msr_qm_status return[%1][%2] (assert 1)").arg(status).arg(word)}));
        QCOMPARE(trackTexts(bench), QStringList({"1", "2", "3"}));
    }

    void getStepShowsTheCheckedTracksAndKeepsTheSession()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "old", "old", "old");
        recorder().vek_msr_qm_get = swipe("TRACK1", "22", "");
        bench.press("pushButton_async_get_data", page);
        QCOMPARE(Bench::calls(), QStringList({kGet}));
        QCOMPARE(bench.log(), QStringList({"[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                                           "[磁条卡] vek_msr_qm_get tracklen: [6] [2] [0]"}));
        QCOMPARE(trackTexts(bench), QStringList({"old", "22", ""}));
    }

    void getStepFailureChangesNothing()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_qm_get = failedSwipe(2);
        bench.press("pushButton_async_get_data", page);
        QCOMPARE(Bench::calls(), QStringList({kGet}));
        QCOMPARE(bench.log(), QStringList({"[磁条卡] vek_msr_qm_get return[2] (assert 0)"}));
        QCOMPARE(trackTexts(bench), QStringList({"1", "2", "3"}));
    }

    void stopStepStops()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        recorder().vek_msr_qm_stop = [](auto) { return 6; };
        bench.press("pushButton_stop", page);
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
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "1", "2", "3");
        recorder().vek_msr_mode_switch = [](auto, auto) { return -8; };
        bench.press(qPrintable(button), page);
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
};

QTEST_MAIN(TestFormMagStripeSteps)
#include "test_form_mag_stripe_steps.moc"
