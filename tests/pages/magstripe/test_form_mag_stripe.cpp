#include "pages/magstripe/form_mag_stripe.h"
#include "tests/pages/magstripe/stripe_script.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"
#include "tests/support/widget_table.h"

#include <QCheckBox>
#include <QLabel>
#include <QTimer>

class TestFormMagStripe : public QObject {
    Q_OBJECT

private slots:
    void metaObjectListsSignalAndSlotsInOrder()
    {
        QCOMPARE(ownMethods(Form_Mag_Stripe::staticMetaObject),
                 QStringList({"addLog(QString)", "on_pushButton_msr_sync_read_clicked()",
                              "on_pushButton__msr_sync_write_clicked()", "on_pushButton_sync_rand_write_clicked()",
                              "on_pushButton_msr_clear_data_clicked()", "on_pushButton_async_start_clicked()",
                              "on_pushButton_async_get_status_clicked()", "on_pushButton_async_get_data_clicked()",
                              "on_pushButton_stop_clicked()", "on_pushButton_async_thread_start_clicked()",
                              "on_pushButton_async_thread_stop_clicked()", "on_pushButton_clear_1_clicked()",
                              "on_pushButton_clear_2_clicked()", "on_pushButton_clear_3_clicked()",
                              "on_timer_msr_query_timeout()", "on_timer_msr_raw_query_timeout()",
                              "on_pushButton_msr_switch_mode_command_clicked()",
                              "on_pushButton_msr_switch_mode_keyboard_clicked()"}));
        QCOMPARE(Form_Mag_Stripe::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        addWidgetRows({
            {"checkBox_1", "QCheckBox", "一磁道"},
            {"lineEdit_msr_track_1", "QLineEdit", ""},
            {"pushButton_clear_1", "QPushButton", "清空"},
            {"checkBox_2", "QCheckBox", "二磁道"},
            {"lineEdit_msr_track_2", "QLineEdit", ""},
            {"pushButton_clear_2", "QPushButton", "清空"},
            {"checkBox_3", "QCheckBox", "三磁道"},
            {"lineEdit_msr_track_3", "QLineEdit", ""},
            {"pushButton_clear_3", "QPushButton", "清空"},
            {"groupBox", "QGroupBox", "读写磁条(阻塞方式)"},
            {"label", "QLabel", "阻塞超时"},
            {"lineEdit_msr_timeout", "QLineEdit", "15"},
            {"label_2", "QLabel", "秒"},
            {"pushButton_msr_sync_read", "QPushButton", "读卡"},
            {"pushButton__msr_sync_write", "QPushButton", "写卡"},
            {"pushButton_sync_rand_write", "QPushButton", "随机数据写卡"},
            {"pushButton_msr_clear_data", "QPushButton", "清空数据"},
            {"line", "QFrame", ""},
            {"groupBox_2", "QGroupBox", "轮询方式读磁条"},
            {"pushButton_async_start", "QPushButton", "启动刷卡"},
            {"pushButton_async_get_status", "QPushButton", "获取状态"},
            {"pushButton_async_get_data", "QPushButton", "取回数据"},
            {"pushButton_stop", "QPushButton", "终止刷卡"},
            {"line_2", "QFrame", ""},
            {"groupBox_3", "QGroupBox", "轮询读卡(组合调用)"},
            {"label_3", "QLabel", "轮询间隔"},
            {"lineEdit_async_thread_interval_time", "QLineEdit", "200"},
            {"label_4", "QLabel", "毫秒"},
            {"pushButton_async_thread_start", "QPushButton", "开始"},
            {"pushButton_async_thread_stop", "QPushButton", "结束"},
            {"pushButton_msr_switch_mode_command", "QPushButton", "设置为指令交互方式刷卡"},
            {"pushButton_msr_switch_mode_keyboard", "QPushButton", "设置为USB键盘方式刷卡"},
        });
    }

    void widgetsAreThereWithTheirTexts()
    {
        Bench bench;
        auto *page = bench.page<Form_Mag_Stripe>();
        compareWidget(page);
        // The only one that is disabled at start.
        QCOMPARE(bench.widget<QWidget>(QTest::currentDataTag(), page)->isEnabledTo(page),
                 QTest::currentDataTag() != QString("pushButton_sync_rand_write"));
        QCOMPARE(page->windowTitle(), "Form");
    }

    void fieldsHaveTheirHintsAndWidths()
    {
        Bench bench;
        auto *page = bench.page<Form_Mag_Stripe>();
        for (const char *name : {"lineEdit_msr_track_1", "lineEdit_msr_track_2", "lineEdit_msr_track_3"})
            QCOMPARE(bench.widget<QLineEdit>(name, page)->inputMethodHints(), Qt::ImhUppercaseOnly);
        auto *timeout = bench.widget<QLineEdit>("lineEdit_msr_timeout", page);
        QCOMPARE(timeout->inputMethodHints(), Qt::ImhLatinOnly);
        QCOMPARE(timeout->maximumWidth(), 30);
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_async_thread_interval_time", page)->inputMethodHints(),
                 Qt::ImhLatinOnly | Qt::ImhPreferNumbers);
        for (const char *name : {"line", "line_2"})
            QCOMPARE(bench.widget<QFrame>(name, page)->frameShape(), QFrame::HLine);
        QCOMPARE(bench.widget<QLabel>("label", page)->buddy(), timeout);
    }

    void tracks2And3AreCheckedAndTheTimerStandsStill()
    {
        Bench bench;
        auto *page = bench.page<Form_Mag_Stripe>();
        QVERIFY(!bench.widget<QCheckBox>("checkBox_1", page)->isChecked());
        QVERIFY(bench.widget<QCheckBox>("checkBox_2", page)->isChecked());
        QVERIFY(bench.widget<QCheckBox>("checkBox_3", page)->isChecked());
        const auto timers = page->findChildren<QTimer *>();
        QCOMPARE(timers.size(), 1);
        QCOMPARE(timers.first()->parent(), page);
        QVERIFY(!timers.first()->isActive());
        QVERIFY(!timers.first()->isSingleShot());
    }

    void eachClearButtonEmptiesItsTrack()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "one", "two", "three");
        bench.press("pushButton_clear_1", page);
        QCOMPARE(trackTexts(bench), QStringList({"", "two", "three"}));
        bench.press("pushButton_clear_2", page);
        QCOMPARE(trackTexts(bench), QStringList({"", "", "three"}));
        bench.press("pushButton_clear_3", page);
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
        fillTracks(bench, "one", "two", "three");
        bench.press("pushButton_msr_clear_data", page);
        QCOMPARE(trackTexts(bench), QStringList({"", "", ""}));
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
    }

    void randomWriteDoesNothing()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        fillTracks(bench, "one", "two", "three");
        QVERIFY(QMetaObject::invokeMethod(page, "on_pushButton_sync_rand_write_clicked"));
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(trackTexts(bench), QStringList({"one", "two", "three"}));
    }

    void rawQuerySlotIsEmpty()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mag_Stripe>();
        QVERIFY(QMetaObject::invokeMethod(page, "on_timer_msr_raw_query_timeout"));
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        QVERIFY(!page->findChild<QTimer *>()->isActive());
    }
};

QTEST_MAIN(TestFormMagStripe)
#include "test_form_mag_stripe.moc"
