// The blocking half of the stripe page over the virtual reader: swipes that come while a call waits.
#include "pages/magstripe/form_mag_stripe.h"
#include "tests/virtual/bench/virtual_bench.h"

#include <QElapsedTimer>

namespace {

using Slot = VirtualBench::Slot;

const QString kSeparator = BenchWindow::separator("磁条卡");

class StripeBench : public VirtualBench {
public:
    StripeBench() { openDevice(); }

    Form_Mag_Stripe *form() { return page<Form_Mag_Stripe>(); }

    QString track(int number)
    {
        const auto tracks = cardIn(Slot::Stripe).at("tracks");
        return QString::fromStdString(tracks.value(std::to_string(number), std::string()));
    }

    QString shown(int number)
    {
        return text(QString("lineEdit_msr_track_%1").arg(number).toLatin1().constData(), form());
    }

    void fill(int number, const QString &value)
    {
        widget<QLineEdit>(QString("lineEdit_msr_track_%1").arg(number).toLatin1().constData(), form())->setText(value);
    }

    /// Presses a button that waits, while a card is swiped by another program.
    QStringList swipedLogOf(const char *button, const QStringList &swipe = {"swipe"})
    {
        const Meanwhile hand([swipe] { runTrayTool(swipe); });
        return logOf(button, form());
    }
};

/// The log of a read that found these tracks.
QStringList fetched(const QStringList &tracks)
{
    const QString lengths = "[磁条卡] vek_msr_qm_get tracklen: [%1] [%2] [%3]";
    return {kSeparator, "[磁条卡] vek_msr_qm_get return[0] (assert 0)",
            lengths.arg(tracks[0].size()).arg(tracks[1].size()).arg(tracks[2].size())};
}

const QStringList kWritten{kSeparator, "[磁条卡] vek_msr_write return[0] (assert 0)"};

} // namespace

class TestBenchVirtualStripe : public QObject {
    Q_OBJECT

private slots:
    void swipeDuringTheBlockingReadIsShown()
    {
        StripeBench bench;
        const QStringList log = bench.swipedLogOf("pushButton_msr_sync_read");
        QCOMPARE(log, fetched({bench.track(1), bench.track(2), bench.track(3)}));
        // At start the second and third tracks are ticked.
        QCOMPARE(bench.shown(1), "");
        QCOMPARE(bench.shown(2), bench.track(2));
        QCOMPARE(bench.shown(3), bench.track(3));
        QVERIFY(!bench.shown(2).isEmpty() && !bench.shown(3).isEmpty());
        // Too long for its field: its beginning is in sight.
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_msr_track_3", bench.form())->cursorPosition(), 0);
    }

    void tickedTracksAreShown()
    {
        StripeBench bench;
        bench.press("checkBox_1", bench.form());
        bench.press("checkBox_3", bench.form());
        bench.swipedLogOf("pushButton_msr_sync_read");
        QCOMPARE(bench.shown(1), bench.track(1));
        QCOMPARE(bench.shown(2), bench.track(2));
        QCOMPARE(bench.shown(3), "");
    }

    void stripeWithOneTrackHasNoOthers()
    {
        StripeBench bench;
        const QStringList log = bench.swipedLogOf("pushButton_msr_sync_read", {"swipe", "stripe-track-2"});
        const auto tracks = bench.world().tray().card("stripe-track-2").at("tracks");
        const QString second = QString::fromStdString(tracks.at("2"));
        QCOMPARE(log, fetched({"", second, ""}));
        QCOMPARE(bench.shown(2), second);
        QCOMPARE(bench.shown(3), "");
    }

    void readTimesOutSilently()
    {
        StripeBench bench;
        bench.fill(2, "left from before");
        bench.type("lineEdit_msr_timeout", "1", bench.form());
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(bench.logOf("pushButton_msr_sync_read", bench.form()), QStringList({kSeparator}));
        QVERIFY2(timer.elapsed() >= 1000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(bench.shown(2), "");
    }

    void emptyStripeDoesNotEndTheBlockingRead()
    {
        StripeBench bench;
        bench.type("lineEdit_msr_timeout", "1", bench.form());
        QCOMPARE(bench.swipedLogOf("pushButton_msr_sync_read", {"swipe", "stripe-empty"}), QStringList({kSeparator}));
    }

    void unreasonableTimeoutFallsToTheGlobalOne()
    {
        StripeBench bench;
        bench.setTimeout("1");
        bench.type("lineEdit_msr_timeout", "0", bench.form());
        QCOMPARE(bench.logOf("pushButton_msr_sync_read", bench.form()),
                 QStringList({kSeparator, "[磁条卡] 超时时间设置不合理！将使用全局超时设定 1秒"}));
    }

    void writeThenReadBack()
    {
        StripeBench bench;
        const QString first = bench.track(1);
        bench.fill(2, "1234567890=99");
        bench.fill(3, "0123456789");
        QCOMPARE(bench.swipedLogOf("pushButton__msr_sync_write"), kWritten);
        QCOMPARE(bench.track(1), first);
        QCOMPARE(bench.track(2), "1234567890=99");
        QCOMPARE(bench.track(3), "0123456789");
        const QStringList log = bench.swipedLogOf("pushButton_msr_sync_read");
        QCOMPARE(log, fetched({first, "1234567890=99", "0123456789"}));
        QCOMPARE(bench.shown(2), "1234567890=99");
        QCOMPARE(bench.shown(3), "0123456789");
    }

    void writingOneTrackLeavesTheOthers()
    {
        StripeBench bench;
        const QString second = bench.track(2);
        const QString third = bench.track(3);
        bench.press("checkBox_1", bench.form());
        bench.fill(1, "B4000^NEW/NAME^2912101");
        QCOMPARE(bench.swipedLogOf("pushButton__msr_sync_write"), kWritten);
        QCOMPARE(bench.track(1), "B4000^NEW/NAME^2912101");
        QCOMPARE(bench.track(2), second);
        QCOMPARE(bench.track(3), third);
    }

    void nothingToWriteIsSaid()
    {
        StripeBench bench;
        QCOMPARE(bench.logOf("pushButton__msr_sync_write", bench.form()),
                 QStringList({kSeparator, "[磁条卡] 写卡数据为空，请填写写卡数据！"}));
    }

    void writeTimesOutAndLeavesTheStripe()
    {
        StripeBench bench;
        const QString second = bench.track(2);
        bench.fill(2, "1234567890");
        bench.type("lineEdit_msr_timeout", "1", bench.form());
        QCOMPARE(bench.logOf("pushButton__msr_sync_write", bench.form()),
                 QStringList({kSeparator, "[磁条卡] vek_msr_write return[-5] (assert 0)"}));
        QCOMPARE(bench.track(2), second);
    }

    void whatATrackCannotHoldIsRefused()
    {
        StripeBench bench;
        bench.fill(2, "LETTERS");
        QCOMPARE(bench.logOf("pushButton__msr_sync_write", bench.form()),
                 QStringList({kSeparator, "[磁条卡] vek_msr_write return[-2] (assert 0)"}));
    }

    void keyboardModeHidesSwipes()
    {
        StripeBench bench;
        QCOMPARE(bench.logOf("pushButton_msr_switch_mode_keyboard", bench.form()),
                 QStringList({kSeparator, "[磁条卡] 磁条设置为USB键盘方式 return[0] (assert 0)"}));
        bench.type("lineEdit_msr_timeout", "1", bench.form());
        QCOMPARE(bench.swipedLogOf("pushButton_msr_sync_read"), QStringList({kSeparator}));
        QVERIFY(bench.world().tray().state()->swipeCount > 0);
        QCOMPARE(bench.logOf("pushButton_msr_switch_mode_command", bench.form()),
                 QStringList({kSeparator, "[磁条卡] 磁条设置为指令交互方式 return[0] (assert 0)"}));
        bench.type("lineEdit_msr_timeout", "15", bench.form());
        QCOMPARE(bench.swipedLogOf("pushButton_msr_sync_read"),
                 fetched({bench.track(1), bench.track(2), bench.track(3)}));
    }

    void clearButtonsEmptyTheFields()
    {
        StripeBench bench;
        for (int number = 1; number <= 3; ++number)
            bench.fill(number, "123");
        bench.press("pushButton_clear_2", bench.form());
        QCOMPARE(QStringList({bench.shown(1), bench.shown(2), bench.shown(3)}), QStringList({"123", "", "123"}));
        bench.press("pushButton_msr_clear_data", bench.form());
        QCOMPARE(QStringList({bench.shown(1), bench.shown(2), bench.shown(3)}), QStringList({"", "", ""}));
    }
};

QTEST_MAIN(TestBenchVirtualStripe)
#include "test_bench_virtual_stripe.moc"
