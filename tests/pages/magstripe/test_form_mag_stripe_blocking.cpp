// Blocking read and write.
#include "pages/magstripe/form_mag_stripe.h"
#include "tests/pages/magstripe/stripe_script.h"
#include "tests/support/bench.h"

#include <QElapsedTimer>

class TestFormMagStripeBlocking : public QObject {
    Q_OBJECT

private slots:
    void readShowsTheCheckedTracksOnly()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "old", "old", "old");
        recorder().vek_msr_qm_status = [](auto) { return 1; };
        recorder().vek_msr_qm_get = swipe("TRACK1", "22=22", "333");
        bench.press("pushButton_msr_sync_read", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", kGet, "vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                                           "[磁条卡] vek_msr_qm_get tracklen: [6] [5] [3]"}));
        QCOMPARE(trackTexts(bench), QStringList({"", "22=22", "333"}));
    }

    void readPollsUntilTheSwipe()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        bench.press("checkBox_1", page);
        bench.press("checkBox_2", page);
        recorder().vek_msr_qm_status = [poll = 0](auto) mutable { return ++poll == 3 ? 1 : 0; };
        recorder().vek_msr_qm_get = swipe("TRACK1", "22=22", "333");
        bench.press("pushButton_msr_sync_read", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", "vek_msr_qm_status(1A2B)",
                              "vek_msr_qm_status(1A2B)", kGet, "vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                                           "[磁条卡] vek_msr_qm_get tracklen: [6] [5] [3]"}));
        QCOMPARE(trackTexts(bench), QStringList({"TRACK1", "", "333"}));
    }

    void oneSecondGivesFivePollsAndEndsSilently_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("nothing yet") << 0;
        QTest::newRow("an empty stripe is no success") << 9;
        QTest::newRow("an error is no success") << -1;
    }

    void oneSecondGivesFivePollsAndEndsSilently()
    {
        QFETCH(int, status);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "old", "old", "old");
        bench.type("lineEdit_msr_timeout", "1", page);
        recorder().vek_msr_qm_status = [status](auto) { return status; };
        QElapsedTimer clock;
        clock.start();
        bench.press("pushButton_msr_sync_read", page);
        QVERIFY(clock.elapsed() >= 1000);
        QStringList calls{"vek_msr_qm_start(1A2B)"};
        for (int poll = 0; poll < 5; ++poll)
            calls << "vek_msr_qm_status(1A2B)";
        QCOMPARE(Bench::calls(), calls << "vek_msr_qm_stop(1A2B)");
        QCOMPARE(bench.log(), QStringList({kSeparator}));
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
    }

    void failedStartIsLoggedAndNotStopped()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "old", "old", "old");
        QStringList textsAtStart;
        recorder().vek_msr_qm_start = [&](auto) {
            textsAtStart = trackTexts(bench);
            return -7;
        };
        bench.press("pushButton_msr_sync_read", page);
        QCOMPARE(textsAtStart, QStringList({"", "", ""}));
        QCOMPARE(Bench::calls(), QStringList({"vek_msr_qm_start(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_start return[-7] (assert 0)"}));
    }

    void failedGetIsLoggedAndStopped()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "old", "old", "old");
        recorder().vek_msr_qm_status = [](auto) { return 1; };
        recorder().vek_msr_qm_get = failedSwipe(-3);
        bench.press("pushButton_msr_sync_read", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", kGet, "vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_get return[-3] (assert 0)"}));
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
    }

    void sessionIsStoppedAfterTheLinesAndTheResultNotLogged()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        recorder().vek_msr_qm_status = [](auto) { return 1; };
        QStringList logAtStop;
        recorder().vek_msr_qm_stop = [&](auto) {
            logAtStop = bench.log();
            return -5;
        };
        bench.press("pushButton_msr_sync_read", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_msr_qm_start(1A2B)", "vek_msr_qm_status(1A2B)", kGet, "vek_msr_qm_stop(1A2B)"}));
        QCOMPARE(logAtStop, QStringList({kSeparator, "[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                                         "[磁条卡] vek_msr_qm_get tracklen: [0] [0] [0]"}));
        QCOMPARE(bench.log(), logAtStop);
    }

    void lengthsAreLoggedAsGivenAndNotBelieved()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        recorder().vek_msr_qm_status = [](auto) { return 1; };
        recorder().vek_msr_qm_get = [](auto, char *, char *track2, char *track3, int *length1, int *length2,
                                       int *length3) {
            std::memset(track2, 'B', sdk::kTrackSize);
            std::memset(track3, '\xE9', sdk::kTrackSize);
            *length1 = -1;
            *length2 = 100000;
            *length3 = INT_MIN;
            return 0;
        };
        bench.press("pushButton_msr_sync_read", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_qm_get return[0] (assert 0)",
                                           "[磁条卡] vek_msr_qm_get tracklen: [-1] [100000] [-2147483648]"}));
        QCOMPARE(trackTexts(bench), QStringList({"", QString(256, 'B'), QString(256, QChar(0xE9))}));
    }

    void writeSelectsTheTracksThatHoldData_data()
    {
        QTest::addColumn<QString>("checked");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QString>("arguments");
        const QStringList all{"ONE", "TWO", "THREE"};
        QTest::newRow("1") << "1" << all << R"(1, 0, "ONE", "", "")";
        QTest::newRow("2") << "2" << all << R"(2, 0, "", "TWO", "")";
        QTest::newRow("3") << "3" << all << R"(3, 0, "", "", "THREE")";
        QTest::newRow("12") << "12" << all << R"(12, 0, "ONE", "TWO", "")";
        QTest::newRow("13") << "13" << all << R"(13, 0, "ONE", "", "THREE")";
        QTest::newRow("23") << "23" << all << R"(23, 0, "", "TWO", "THREE")";
        QTest::newRow("123") << "123" << all << R"(123, 0, "ONE", "TWO", "THREE")";
        QTest::newRow("1 checked but empty") << "13" << QStringList({"", "", "THREE"}) << R"(3, 0, "", "", "THREE")";
        QTest::newRow("text beyond ASCII is UTF-8") << "2" << QStringList({"", "磁é", ""}) << R"(2, 0, "", "磁é", "")";
        QTest::newRow("blanks are data") << "2" << QStringList({"", " ", ""}) << R"(2, 0, "", " ", "")";
    }

    void writeSelectsTheTracksThatHoldData()
    {
        QFETCH(QString, checked);
        QFETCH(QStringList, texts);
        QFETCH(QString, arguments);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        checkTracks(bench, checked);
        fillTracks(bench, texts[0], texts[1], texts[2]);
        bench.press("pushButton__msr_sync_write", page);
        QCOMPARE(Bench::calls(), QStringList({QString("vek_msr_write(1A2B, %1, 15000)").arg(arguments)}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_write return[0] (assert 0)"}));
        QCOMPARE(trackTexts(bench), texts);
    }

    void writeFailureShowsTheReturnLineOnly()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "", "2", "");
        recorder().vek_msr_write = [](auto, auto, auto, auto, auto, auto, auto) { return -11; };
        bench.press("pushButton__msr_sync_write", page);
        QCOMPARE(Bench::calls(), QStringList({R"(vek_msr_write(1A2B, 2, 0, "", "2", "", 15000))"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] vek_msr_write return[-11] (assert 0)"}));
    }

    void writeWithoutDataCallsNothing_data()
    {
        QTest::addColumn<QString>("checked");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("nothing checked") << "" << QStringList({"ONE", "TWO", "THREE"});
        QTest::newRow("only empty tracks checked") << "123" << QStringList({"", "", ""});
        QTest::newRow("text in the unchecked track only") << "23" << QStringList({"ONE", "", ""});
    }

    void writeWithoutDataCallsNothing()
    {
        QFETCH(QString, checked);
        QFETCH(QStringList, texts);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        checkTracks(bench, checked);
        fillTracks(bench, texts[0], texts[1], texts[2]);
        bench.press("pushButton__msr_sync_write", page);
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(bench.log(), QStringList({kSeparator, "[磁条卡] 写卡数据为空，请填写写卡数据！"}));
    }

    void timeoutFieldCountsFrom1To256_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("global");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<int>("passed");
        QTest::newRow("1") << "1"
                           << "5" << true << 1000;
        QTest::newRow("256") << "256"
                             << "5" << true << 256000;
        QTest::newRow("blank before it") << " 7"
                                         << "5" << true << 7000;
        QTest::newRow("0") << "0"
                           << "5" << false << 5000;
        QTest::newRow("257") << "257"
                             << "5" << false << 5000;
        QTest::newRow("-1") << "-1"
                            << "5" << false << 5000;
        QTest::newRow("abc") << "abc"
                             << "5" << false << 5000;
        QTest::newRow("12abc") << "12abc"
                               << "5" << false << 5000;
        QTest::newRow("empty") << ""
                               << "5" << false << 5000;
        QTest::newRow("past 32 bits") << "99999999999"
                                      << "5" << false << 5000;
        QTest::newRow("global negative") << "0"
                                         << "-3" << false << -3000;
        QTest::newRow("global huge: narrowed, wraps") << "0"
                                                      << "2147483647" << false << -1000;
    }

    void timeoutFieldCountsFrom1To256()
    {
        QFETCH(QString, typed);
        QFETCH(QString, global);
        QFETCH(bool, accepted);
        QFETCH(int, passed);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "", "2", "");
        bench.type("lineEdit_timeout", global);
        bench.type("lineEdit_msr_timeout", typed, page);
        bench.press("pushButton__msr_sync_write", page);
        QStringList log{kSeparator};
        if (!accepted)
            log << timeoutWarning(global);
        QCOMPARE(bench.log(), log << "[磁条卡] vek_msr_write return[0] (assert 0)");
        QCOMPARE(Bench::calls(), QStringList({QString(R"(vek_msr_write(1A2B, 2, 0, "", "2", "", %1))").arg(passed)}));
    }

    void readTakesTheGlobalTimeoutToo_data()
    {
        QTest::addColumn<QString>("global");
        QTest::addColumn<int>("polls");
        QTest::newRow("0 stops without a poll") << "0" << 0;
        QTest::newRow("negative stops without a poll") << "-3" << 0;
        QTest::newRow("1") << "1" << 5;
        QTest::newRow("huge does not wrap to none") << "2147483647" << 6;
    }

    void readTakesTheGlobalTimeoutToo()
    {
        QFETCH(QString, global);
        QFETCH(int, polls);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        bench.type("lineEdit_timeout", global);
        bench.type("lineEdit_msr_timeout", "0", page);
        // The sixth poll ends the test of the huge one.
        recorder().vek_msr_qm_status = [poll = 0](auto) mutable { return ++poll == 6 ? 1 : 0; };
        bench.press("pushButton_msr_sync_read", page);
        QStringList calls{"vek_msr_qm_start(1A2B)"};
        QStringList log{kSeparator, timeoutWarning(global)};
        for (int poll = 0; poll < polls; ++poll)
            calls << "vek_msr_qm_status(1A2B)";
        if (polls == 6) {
            calls << kGet;
            log << "[磁条卡] vek_msr_qm_get return[0] (assert 0)"
                << "[磁条卡] vek_msr_qm_get tracklen: [0] [0] [0]";
        }
        QCOMPARE(Bench::calls(), calls << "vek_msr_qm_stop(1A2B)");
        QCOMPARE(bench.log(), log);
    }

    void withoutDeviceTheTimeoutIsStillChosenFirst_data()
    {
        QTest::addColumn<QString>("button");
        for (const char *button : {"pushButton_msr_sync_read", "pushButton__msr_sync_write"})
            QTest::newRow(button) << button;
    }

    void withoutDeviceTheTimeoutIsStillChosenFirst()
    {
        QFETCH(QString, button);
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "one", "two", "three");
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        bench.forget();
        bench.type("lineEdit_msr_timeout", "0", page);
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(bench.log(), QStringList({kSeparator, timeoutWarning("5"), kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(trackTexts(bench), QStringList({"one", "two", "three"}));
    }
};

QTEST_MAIN(TestFormMagStripeBlocking)
#include "test_form_mag_stripe_blocking.moc"
