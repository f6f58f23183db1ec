// Every button of the window on the tray as it is first laid out, with every field as it starts: all succeed, and the
// log is compared line by line. A button that is not pressed here fails the test of its page.
#include "pages/cpucard/form_cpu_iccard.h"
#include "pages/idcard/dialog_idc_image_display.h"
#include "pages/idcard/form_idcard.h"
#include "pages/magstripe/form_mag_stripe.h"
#include "pages/mifare/form_mifare_card.h"
#include "pages/ssse/form_ssse.h"
#include "pages/status/form_info_status_indicator.h"
#include "tests/support/box_watch.h"
#include "tests/virtual/bench/every_button_bench.h"

namespace {

using Slot = VirtualBench::Slot;

const QStringList kNothing;

} // namespace

class TestBenchVirtualEveryButton : public QObject {
    Q_OBJECT

private slots:
    void mainWindow();
    void statusPage();
    void stripePage();
    void idCardPage();
    void imageDialog();
    void cpuCardPage();
    void mifarePage();
    void socialSecurityPage();
};

void TestBenchVirtualEveryButton::mainWindow()
{
    EveryButtonBench bench;
    bench.window.show();
    QCOMPARE(bench.pressed("pushButton_select_driver"), kNothing);
    QCOMPARE(bench.pressedAll({"radioButton_sdt", "radioButton_pcsc", "radioButton_serial", "radioButton_usb"}),
             kNothing);
    QCOMPARE(bench.pressed("pushButton_enum_all").size(), 9);
    QCOMPARE(bench.pressed("pushButton_enum_select"),
             bench.lines({"vek_enum_devices 检索到2个设备.", "设备列表[VUSB0001|VUSB0002|].", "设备1 [VUSB0001].",
                          "设备2 [VUSB0002]."}));
    for (const char *button : {"pushButton_open_select", "pushButton_open_default"}) {
        const QStringList opened = bench.pressed(button);
        QVERIFY(!bench.text("lineEdit_handle").isEmpty());
        QCOMPARE(opened, bench.lines({"vek_open 打开设备成功！return[" + bench.text("lineEdit_handle") + "]"}));
        QCOMPARE(bench.pressed("pushButton_close"), bench.lines({"vek_close return[0]."}));
    }
    bench.press("pushButton_enum_select");
    QVERIFY(!bench.log().isEmpty());
    bench.press("pushButton_clear_log");
    QCOMPARE(bench.log(), kNothing);
    QCOMPARE(bench.pressedAll({"pushButton_clear_log", "pushButton_unload_driver"}), kNothing);
    QCOMPARE(bench.notPressed(), kNothing);
}

void TestBenchVirtualEveryButton::statusPage()
{
    const auto bench = EveryButtonBench::on<Form_Info_Status_Indicator>("状态指示");
    const QStringList rateSet = bench->lines({"vek_set_baud return[0] (assert 0), "})
                                << "更新波特率成功, 不需要重新打开设备";
    QCOMPARE(bench->pressed("pushButton_firm_version"),
             bench->lines({"vek_firm_version return[0] (assert 0)",
                           "firm_version [Unifold virtual reader " UNIFOLD_VERSION "]"}));
    QCOMPARE(bench->pressed("pushButton_beep"), bench->lines({"vek_beep return[0] (assert 0)"}));
    QCOMPARE(bench->pressed("pushButton_set_baud"), rateSet);
    for (const char *mode : {"radioButton_baud_default", "radioButton_baud_temp"}) {
        QCOMPARE(bench->pressed(mode), kNothing);
        QCOMPARE(bench->pressed("pushButton_set_baud"), rateSet);
    }
    QCOMPARE(bench->notPressed(), kNothing);
}

void TestBenchVirtualEveryButton::stripePage()
{
    const auto bench = EveryButtonBench::on<Form_Mag_Stripe>("磁条卡");
    const QString started = "vek_msr_qm_start return[0] (assert 0)";
    const QString stopped = bench->line("vek_msr_qm_stop return[0] (assert 0)");
    const QString fetched = "vek_msr_qm_get return[0] (assert 0)";
    const QStringList tracks{bench->cardText(Slot::Stripe, "/tracks/1"), bench->cardText(Slot::Stripe, "/tracks/2"),
                             bench->cardText(Slot::Stripe, "/tracks/3")};
    const QString lengths = QString("vek_msr_qm_get tracklen: [%1] [%2] [%3]")
                                .arg(tracks[0].size())
                                .arg(tracks[1].size())
                                .arg(tracks[2].size());
    QCOMPARE(bench->pressedAndSwiped("pushButton_msr_sync_read"), bench->lines({fetched, lengths}));
    QCOMPARE(bench->text("lineEdit_msr_track_2"), tracks[1]);
    // What was read is what the fields hold now, and goes back as it was.
    QCOMPARE(bench->pressedAndSwiped("pushButton__msr_sync_write"),
             bench->lines({"vek_msr_write return[0] (assert 0)"}));
    QCOMPARE(bench->cardText(Slot::Stripe, "/tracks/2"), tracks[1]);
    QCOMPARE(bench->pressedAll({"pushButton_clear_1", "pushButton_clear_2", "pushButton_clear_3",
                                "pushButton_msr_clear_data", "checkBox_1", "checkBox_2", "checkBox_3"}),
             kNothing);
    QCOMPARE(bench->text("lineEdit_msr_track_2") + bench->text("lineEdit_msr_track_3"), "");

    QCOMPARE(bench->pressed("pushButton_async_start"), bench->lines({started}));
    QVERIFY(runTrayTool({"swipe"}));
    QCOMPARE(bench->pressed("pushButton_async_get_status"),
             QStringList({bench->line("vek_msr_qm_status return[1][检测到刷卡] (assert 1)")}));
    QCOMPARE(bench->pressed("pushButton_async_get_data"), QStringList({bench->line(fetched), bench->line(lengths)}));
    QCOMPARE(bench->text("lineEdit_msr_track_1"), tracks[0]);
    QCOMPARE(bench->pressed("pushButton_stop"), QStringList({stopped}));

    QCOMPARE(bench->pressed("pushButton_async_thread_start"), bench->lines({}));
    bench->clearLog();
    QTest::qWait(400); // the first tick begins the session
    QVERIFY(runTrayTool({"swipe"}));
    const QStringList looped =
        bench->lines({"track1[" + tracks[0] + "]", "track2[" + tracks[1] + "]", "track3[" + tracks[2] + "]"});
    QTRY_COMPARE(bench->log(), looped);
    QCOMPARE(bench->pressed("pushButton_async_thread_stop"), QStringList({stopped}));

    QCOMPARE(bench->pressed("pushButton_msr_switch_mode_keyboard"),
             bench->lines({"磁条设置为USB键盘方式 return[0] (assert 0)"}));
    QCOMPARE(bench->pressed("pushButton_msr_switch_mode_command"),
             bench->lines({"磁条设置为指令交互方式 return[0] (assert 0)"}));
    // Not made yet, and never enabled.
    QCOMPARE(bench->notPressed(), QStringList({"pushButton_sync_rand_write"}));
    QVERIFY(!bench->widget<QPushButton>("pushButton_sync_rand_write")->isEnabled());
}

void TestBenchVirtualEveryButton::idCardPage()
{
    const auto bench = EveryButtonBench::on<Form_Idcard>("二代证");
    const BoxWatch watch;
    const auto told = [&](const char *call, const char *name, const QString &text) {
        return bench->lines(
            {QString("vek_idcr_%1 return[0] (assert 0)").arg(call), QString("%1 = [%2]").arg(name, text)});
    };
    QCOMPARE(bench->pressed("pushButton_read_idc"), bench->lines({"vek_idcr_getinfo return[0] (assert 0)"}));
    QCOMPARE(bench->pressed("pushButton_read_sam_id"),
             told("read_uid", "SAM ID", "05.01-20260101-0000012345-0000067890"));
    QCOMPARE(bench->pressed("pushButton_read_phsy_id"),
             told("read_uid", "物理ID", bench->cardText(Slot::IdPlate, "/uid")));
    QCOMPARE(bench->pressed("pushButton_read_dn"), told("read_dn", "身份证DN", bench->cardText(Slot::IdPlate, "/dn")));
    QCOMPARE(bench->pressed("pushButton_read_emid"),
             told("read_emid", "EMID", bench->cardText(Slot::IdPlate, "/emid")));
    const QString data = bench->cardText(Slot::IdPlate, "/module/2001/data");
    QCOMPARE(bench->pressed("pushButton_command_aa"),
             bench->lines(
                 {"vek_idcr_transive return[0] (assert 0)", QString("SW=[%1], length=[%2].")
                                                                .arg(bench->cardText(Slot::IdPlate, "/module/2001/sw"))
                                                                .arg(data.size() / 2)})
                 << "Data={" << data << "}");
    QCOMPARE(bench->pressed("pushButton_info_separator"), QStringList({bench->line("设置分隔符为 | 成功")}));
    QCOMPARE(bench->pressedAll({"pushButton_idc_clear_info", "checkBox_text", "checkBox_photo", "checkBox_compatible",
                                "checkBox_composite", "checkBox_finger", "checkBox_reread", "checkBox_stop_on_error",
                                "pushButton_2", "pushButton_3", "pushButton_4", "pushButton_5"}),
             kNothing);
    QCOMPARE(bench->text("lineEdit_sam_id", bench->part()) + bench->text("lineEdit_phsy_id", bench->part()), "");
    QCOMPARE(bench->notPressed(), kNothing);
    QCOMPARE(watch.boxes(), kNothing);
}

void TestBenchVirtualEveryButton::imageDialog()
{
    const auto bench = EveryButtonBench::on<Form_Idcard>("二代证");
    auto *const dialog = bench->window.findChild<Dialog_idc_image_display *>();
    bench->press("pushButton_idc_info_min_size", dialog);
    QVERIFY(!dialog->isVisible());
    QCOMPARE(bench->pressed("pushButton_read_idc"), bench->lines({"vek_idcr_getinfo return[0] (assert 0)"}));
    QVERIFY(dialog->isVisible());
    const QPoint docked = dialog->pos();
    bench->press("checkBox_idc_disp_follow_main_wnd", dialog);
    bench->window.move(bench->window.pos() + QPoint(20, 10));
    QCOMPARE(dialog->pos(), docked);
    QCOMPARE(dialog->findChildren<QAbstractButton *>().size(), 2);
}

void TestBenchVirtualEveryButton::cpuCardPage()
{
    const auto bench = EveryButtonBench::on<Form_CPU_Iccard>("IC卡");
    const auto status = [&](const char *code) {
        return bench->lines({QString("vek_icc_status return[%1]").arg(code)});
    };
    QCOMPARE(bench->pressed("pushButton_cpucard_status"), status("0x1"));
    QCOMPARE(bench->pressed("pushButton_cpucard_poweron"),
             bench->lines(
                 {"vek_icc_poweron return[0x0] (assert 0)", "ATR = [" + bench->cardText(Slot::Contact, "/atr") + "]"}));
    QCOMPARE(bench->pressed("pushButton_cpucard_status"), status("0x2"));
    QCOMPARE(
        bench->pressed("pushButton_cpucard_apdu"),
        bench->lines({"send APDU=[00A4040008A000000333010101]", "vek_icc_apdu return[0x0] (assert 0)",
                      "recv RPDU=[6F2C8408A000000333010101A520500A50424F432044454249548701015F2D027A689F38099F66049F"
                      "02069F1A029000]"}));
    QCOMPARE(bench->pressed("pushButton_cpucard_poweroff"), bench->lines({"vek_icc_poweroff return[0x0] (assert 0)"}));
    QCOMPARE(bench->pressed("pushButton_rf_probe"),
             bench->lines({"vek_probe_rf return[0x0] (assert 0)", "RF Card [进场] , type=[08]"}));

    const QString read = "vek_pboc_get_card_info return[0x0] (assert 0)";
    QCOMPARE(
        bench->pressed("pushButton_pboc_readinfo"),
        bench->lines({"taglist=[ABCDEFGHIJKLMNOPQ]", read,
                      "info=[A0196228000100001018885B009ZHANG SANC018110101199003072615D0336228000100001018885D31062"
                      "20000000E006310630F006210601G00200H0040220I0040240J00201K0040156L0040156M010PBOC DEBIT"
                      "N004023AO00203P012000000008800Q012000000100000]"}));
    QCOMPARE(bench->pressed("pushButton_pboc_taglist_common"), kNothing);
    QCOMPARE(bench->pressed("pushButton_pboc_readinfo"),
             bench->lines({"taglist=[ACDEIJ]", read,
                           "info=[A0196228000100001018885C018110101199003072615D0336228000100001018885D3106220000000"
                           "E006310630I0040241J00201]"}));
    QCOMPARE(bench->pressed("pushButton_pboc_taglist_whole"), kNothing);
    const QStringList signedLog = bench->pressed("pushButton_pboc_arqc");
    QCOMPARE(
        signedLog.mid(0, 3),
        bench->lines({"txdata=[P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024D7DBBACFB9F1C3"
                      "E6B2E2CAD4]",
                      "vek_pboc_get_arqc return[0x0] (assert 0)"}));
    // The cryptogram (A) and the terminal's number (E) are of each transaction alone.
    const QRegularExpression reply(
        R"(^\[IC卡\] ARQC=\[A016[0-9A-F]{16}B00280C0040242D016[0-9A-F]{16}E008[0-9A-F]{8}F010)");
    QVERIFY2(reply.match(signedLog.value(3)).hasMatch(), qPrintable(signedLog.join('\n')));
    QCOMPARE(bench->pressedAll({"pushButton_pboc_arpc", "pushButton_pboc_trans_detail", "pushButton_pboc_load_detail",
                                "radioButton", "radioButton_2", "radioButton_4", "radioButton_5", "radioButton_6",
                                "radioButton_7", "radioButton_3"}),
             kNothing);
    QCOMPARE(bench->notPressed(), kNothing);
}

void TestBenchVirtualEveryButton::mifarePage()
{
    const auto bench = EveryButtonBench::on<Form_Mifare_Card>("M1卡");
    const auto done = [&](const char *call, const QStringList &more = {}) {
        return bench->lines(QStringList{QString("vek_mifare_%1 return[0x0] (assert 0)").arg(call)} + more);
    };
    QCOMPARE(bench->pressed("pushButton_mifare_find"), done("request", {"TYPE[A] UID = [3A9F07C4]"}));
    for (const char *key : {"radioButton_mifare_password_b", "radioButton_mifare_password_a"})
        QCOMPARE(bench->pressed(key), kNothing);
    QCOMPARE(bench->pressed("pushButton_mifare_auth"), done("authentication"));
    QCOMPARE(bench->pressed("pushButton_mifare_read_block"),
             done("read_block", {"DATA = [8813000077ECFFFF8813000005FA05FA]"}));
    QCOMPARE(bench->pressed("pushButton_mifare_wallet_val"), done("read_value", {"余额 = [5000]"}));
    QCOMPARE(bench->pressed("pushButton_mifare_wallet_init"), done("init_value"));
    QCOMPARE(bench->pressed("pushButton_mifare_wallet_inc"), done("increase_value"));
    QCOMPARE(bench->pressed("pushButton_mifare_wallet_dec"), done("decrease_value"));
    QCOMPARE(bench->pressed("pushButton_mifare_wallet_val"), done("read_value", {"余额 = [210]"}));
    QCOMPARE(bench->pressed("pushButton_mifare_write_block"), done("write_block"));
    QCOMPARE(bench->pressed("pushButton_mifare_read_block"),
             done("read_block", {"DATA = [00112233445566778899AABBCCDDEEFF]"}));
    // The one field that starts empty.
    QCOMPARE(bench->pressed("checkBox_mifare_en_change_password"), kNothing);
    bench->type("lineEdit_mifare_password_new", "A1A2A3A4A5A6", bench->part());
    QCOMPARE(bench->pressed("pushButton_mifare_change_password"), done("change_key"));
    QCOMPARE(bench->notPressed(), kNothing);
}

void TestBenchVirtualEveryButton::socialSecurityPage()
{
    const auto bench = EveryButtonBench::on<Form_ssse>("社保卡");
    const QStringList issuer = bench->lines({"vek_ssse_get_issuer_info return[0x0] (assert 0)"});
    const QStringList holder = bench->lines({"vek_ssse_get_user_info return[0x0] (assert 0)"});
    QCOMPARE(bench->pressed("pushButton_gov_info"), issuer);
    QCOMPARE(bench->pressed("pushButton_user_info"), holder);
    QCOMPARE(bench->pressedAll({"pushButton_clear_ef05", "pushButton_clear_ef06", "radioButton_2"}), kNothing);
    for (const char *slot : {"radioButton", "radioButton_3"}) {
        QCOMPARE(bench->pressed(slot), kNothing);
        QCOMPARE(bench->pressedAll({"pushButton_gov_info", "pushButton_user_info"}), issuer + holder);
    }
    QCOMPARE(bench->notPressed(), kNothing);
}

QTEST_MAIN(TestBenchVirtualEveryButton)
#include "test_bench_virtual_every_button.moc"
