#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"
#include "tests/support/widget_table.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>

#include <cstring>

namespace {

const QString kSeparator = Bench::separator("IC卡");
const QString kNotOpen = "[IC卡] 设备未打开！";
const QString kTransaction =
    "P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024D7DBBACFB9F1C3E6B2E2CAD4";

} // namespace

class TestFormCpuIccard : public QObject {
    Q_OBJECT

private slots:
    void metaObjectListsSignalAndSlotsInOrder()
    {
        QCOMPARE(ownMethods(Form_CPU_Iccard::staticMetaObject),
                 QStringList({"addLog(QString)",
                              "on_pushButton_cpucard_status_clicked()",
                              "on_radioButton_clicked()",
                              "on_radioButton_2_clicked()",
                              "on_radioButton_3_clicked()",
                              "on_radioButton_4_clicked()",
                              "on_radioButton_5_clicked()",
                              "on_radioButton_6_clicked()",
                              "on_radioButton_7_clicked()",
                              "on_pushButton_cpucard_poweron_clicked()",
                              "on_pushButton_cpucard_apdu_clicked()",
                              "on_pushButton_cpucard_poweroff_clicked()",
                              "on_pushButton_pboc_taglist_common_clicked()",
                              "on_pushButton_pboc_taglist_whole_clicked()",
                              "on_pushButton_pboc_readinfo_clicked()",
                              "on_pushButton_pboc_arqc_clicked()",
                              "on_pushButton_pboc_arpc_clicked()",
                              "on_pushButton_pboc_trans_detail_clicked()",
                              "on_pushButton_pboc_load_detail_clicked()",
                              "on_pushButton_rf_probe_clicked()"}));
        QCOMPARE(Form_CPU_Iccard::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        addWidgetRows({
            {"groupBox", "QGroupBox", "卡类型选择"},
            {"radioButton", "QRadioButton", "接触"},
            {"radioButton_2", "QRadioButton", "非接触"},
            {"radioButton_3", "QRadioButton", "自动（接触/非接触）"},
            {"radioButton_4", "QRadioButton", "PSAM1"},
            {"radioButton_5", "QRadioButton", "PSAM2"},
            {"radioButton_6", "QRadioButton", "PSAM3"},
            {"radioButton_7", "QRadioButton", "PSAM4"},
            {"groupBox_4", "QGroupBox", "射频寻卡接口"},
            {"pushButton_rf_probe", "QPushButton", "探测射频卡"},
            {"groupBox_2", "QGroupBox", "CPU卡底层接口测试"},
            {"pushButton_cpucard_status", "QPushButton", "状态"},
            {"pushButton_cpucard_poweron", "QPushButton", "上电"},
            {"label", "QLabel", "APDU"},
            {"lineEdit_apdu", "QLineEdit", "00A4040008A000000333010101"},
            {"pushButton_cpucard_apdu", "QPushButton", "发送"},
            {"pushButton_cpucard_poweroff", "QPushButton", "下电"},
            {"groupBox_3", "QGroupBox", "PBOC接口测试"},
            {"label_2", "QLabel", "AID"},
            {"lineEdit_pboc_aid", "QLineEdit", "A000000333"},
            {"label_3", "QLabel", "标签列表"},
            {"lineEdit_pboc_taglist", "QLineEdit", "ABCDEFGHIJKLMNOPQ"},
            {"pushButton_pboc_taglist_common", "QPushButton", "常用"},
            {"pushButton_pboc_taglist_whole", "QPushButton", "全部"},
            {"pushButton_pboc_readinfo", "QPushButton", "读卡信息"},
            {"lineEdit_pboc_arqc", "QLineEdit",
             "P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024D7DBBACFB9F1C3E6B2E2CAD4"},
            {"pushButton_pboc_arqc", "QPushButton", "ARQC"},
            {"lineEdit_pboc_arpc", "QLineEdit",
             "114910A45ED95EE07D345F13030722B9F180400000001861004DA9F770A0000001000005A3714FE00861004DA9F780A0000000200"
             "0"
             "1A98548B500"},
            {"pushButton_pboc_arpc", "QPushButton", "ARPC"},
            {"pushButton_pboc_trans_detail", "QPushButton", "交易明细"},
            {"pushButton_pboc_load_detail", "QPushButton", "圈存明细"},
        });
    }

    void widgetsAreThereWithTheirTexts()
    {
        Bench bench;
        compareWidget(bench.page<Form_CPU_Iccard>());
    }

    void automaticIsCheckedAndTheGroupHasItsIds()
    {
        Bench bench;
        auto *page = bench.page<Form_CPU_Iccard>();
        QVERIFY(bench.widget<QRadioButton>("radioButton_3", page)->isChecked());
        const QList<int> ids{0, 1, 2, 16, 17, 18, 19};
        auto *group = bench.widget<QRadioButton>("radioButton", page)->group();
        QCOMPARE(group->parent(), page);
        QCOMPARE(group->buttons().size(), 7);
        for (int i = 0; i < 7; ++i) {
            const QString name = i == 0 ? "radioButton" : QString("radioButton_%1").arg(i + 1);
            QCOMPARE(group->id(bench.widget<QRadioButton>(name.toUtf8().constData(), page)), ids[i]);
        }
        QCOMPARE(page->windowTitle(), "Form");
    }

    void eachCardTypeButtonPassesItsSlotCode_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("code");
        QTest::newRow("contact") << "radioButton"
                                 << "0x00";
        QTest::newRow("contactless is 0xFF, not its group id 1") << "radioButton_2"
                                                                 << "0xFF";
        QTest::newRow("automatic") << "radioButton_3"
                                   << "0x02";
        QTest::newRow("PSAM1") << "radioButton_4"
                               << "0x10";
        QTest::newRow("PSAM2") << "radioButton_5"
                               << "0x11";
        QTest::newRow("PSAM3") << "radioButton_6"
                               << "0x12";
        QTest::newRow("PSAM4") << "radioButton_7"
                               << "0x13";
    }

    void eachCardTypeButtonPassesItsSlotCode()
    {
        QFETCH(QString, button);
        QFETCH(QString, code);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        bench.press(button.toUtf8().constData(), page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        bench.press("pushButton_cpucard_status", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_icc_status(1A2B, " + code + ")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] vek_icc_status return[0x0]"}));
    }

    void slotCodeOutlivesCloseAndReopen()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        bench.press("radioButton_5", page);
        bench.press("pushButton_close");
        bench.press("pushButton_open_default");
        bench.forget();
        bench.press("pushButton_cpucard_status", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_icc_status(1A2B, 0x11)"}));
    }

    void statusLineHasNoSuffix()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_icc_status = [](auto, auto) { return -1; };
        bench.press("pushButton_cpucard_status", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_icc_status(1A2B, 0x02)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] vek_icc_status return[0xFFFFFFFF]"}));
    }

    void powerOnShowsTheAtr()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_icc_poweron = [](auto, auto, auto, char *atr, std::uint32_t *length) {
            std::strcpy(atr, "3B00");
            *length = 4;
            return 0;
        };
        bench.press("pushButton_cpucard_poweron", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_icc_poweron(1A2B, 0x02, 5000, char[256], &0)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[IC卡] vek_icc_poweron return[0x0] (assert 0)", "[IC卡] ATR = [3B00]"}));
    }

    void powerOnFailureShowsOnlyTheReturnLine()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_icc_poweron = [](auto, auto, auto, char *atr, auto) {
            std::strcpy(atr, "3B00");
            return 0x1F;
        };
        bench.press("pushButton_cpucard_poweron", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] vek_icc_poweron return[0x1F] (assert 0)"}));
    }

    void powerOffPassesSlotAndTimeout()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        bench.press("pushButton_cpucard_poweroff", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_icc_poweroff(1A2B, 0x02, 5000)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] vek_icc_poweroff return[0x0] (assert 0)"}));
    }

    void apduTextGoesToTheDriverCleaned_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("sent");
        QTest::addColumn<int>("length");
        QTest::newRow("start value") << "00A4040008A000000333010101"
                                     << "00A4040008A000000333010101" << 26;
        QTest::newRow("lower case with blanks and a tab") << "00a4 0400 08 a00000\t0333010101"
                                                          << "00A4040008A000000333010101" << 26;
        QTest::newRow("three characters") << "00A"
                                          << "00A" << 3;
        QTest::newRow("empty") << ""
                               << "" << 0;
        QTest::newRow("no hexadecimal") << "xyz!"
                                        << "XYZ!" << 4;
    }

    void apduTextGoesToTheDriverCleaned()
    {
        QFETCH(QString, typed);
        QFETCH(QString, sent);
        QFETCH(int, length);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        auto *edit = bench.widget<QLineEdit>("lineEdit_apdu", page);
        edit->setText(typed);
        recorder().vek_icc_apdu = [](auto, auto, auto, auto, char *reply, auto) {
            std::strcpy(reply, "9000");
            return 0;
        };
        bench.press("pushButton_cpucard_apdu", page);
        QCOMPARE(Bench::calls(),
                 QStringList({QString("vek_icc_apdu(1A2B, 0x02, \"%1\", %2, char[1024], &0)").arg(sent).arg(length)}));
        QCOMPARE(bench.log(), QStringList({kSeparator, QString("[IC卡] send APDU=[%1]").arg(sent),
                                           "[IC卡] vek_icc_apdu return[0x0] (assert 0)", "[IC卡] recv RPDU=[9000]"}));
        QCOMPARE(edit->text(), typed);
    }

    void apduFailureShowsNoReply()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_icc_apdu = [](auto, auto, auto, auto, char *reply, auto) {
            std::strcpy(reply, "9000");
            return -3;
        };
        bench.press("pushButton_cpucard_apdu", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] send APDU=[00A4040008A000000333010101]",
                                           "[IC卡] vek_icc_apdu return[0xFFFFFFFD] (assert 0)"}));
    }

    void replyWithoutNulEndsAtTheBuffersEnd()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_icc_apdu = [](auto, auto, auto, auto, char *reply, auto) {
            std::memset(reply, 'F', sdk::kApduReplySize);
            return 0;
        };
        bench.press("pushButton_cpucard_apdu", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] send APDU=[00A4040008A000000333010101]",
                                           "[IC卡] vek_icc_apdu return[0x0] (assert 0)",
                                           "[IC卡] recv RPDU=[" + QString(1024, 'F') + "]"}));
    }

    void probeNamesTheFieldState_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("word");
        QTest::newRow("3") << 3 << "进场";
        QTest::newRow("2") << 2 << "出场";
        QTest::newRow("1") << 1 << "保持";
        QTest::newRow("0") << 0 << "保持";
        QTest::newRow("255") << 255 << "保持";
    }

    void probeNamesTheFieldState()
    {
        QFETCH(int, state);
        QFETCH(QString, word);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_probe_rf = [state](auto, std::uint8_t *out, std::uint8_t *type) {
            *out = static_cast<std::uint8_t>(state);
            *type = 0x0A;
            return 0;
        };
        bench.press("pushButton_rf_probe", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_probe_rf(1A2B, &0, &0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] vek_probe_rf return[0x0] (assert 0)",
                                           QString("[IC卡] RF Card [%1] , type=[0A]").arg(word)}));
    }

    void probeFailureShowsOnlyTheReturnLine()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_probe_rf = [](auto, auto, auto) { return 1; };
        bench.press("pushButton_rf_probe", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] vek_probe_rf return[0x1] (assert 0)"}));
    }

    void withoutDeviceEveryButtonLogsTwoLinesAndCallsNothing_data()
    {
        QTest::addColumn<QString>("button");
        for (const char *button :
             {"pushButton_cpucard_status", "pushButton_cpucard_poweron", "pushButton_cpucard_apdu",
              "pushButton_cpucard_poweroff", "pushButton_rf_probe", "pushButton_pboc_readinfo", "pushButton_pboc_arqc"})
            QTest::newRow(button) << button;
    }

    void withoutDeviceEveryButtonLogsTwoLinesAndCallsNothing()
    {
        QFETCH(QString, button);
        Bench bench;
        bench.loadDriver();
        bench.press(button.toUtf8().constData(), bench.page<Form_CPU_Iccard>());
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void cardInformationTakesTheTagListAsTyped()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        bench.type("lineEdit_pboc_taglist", " a b", page);
        bench.type("lineEdit_pboc_aid", "a0 00", page);
        recorder().vek_pboc_get_card_info = [](auto, auto, auto, auto, auto, auto, char *result, auto, auto) {
            std::strcpy(result, "A003123");
            return 0;
        };
        bench.press("pushButton_pboc_readinfo", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_pboc_get_card_info(1A2B, 0x02, 5000, \"a0 00\", \" a b\", &0, "
                                              "char[1024], &0, 0x01)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[IC卡] taglist=[ a b]",
                              "[IC卡] vek_pboc_get_card_info return[0x0] (assert 0)", "[IC卡] info=[A003123]"}));
    }

    void commonTagsAreSent()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        bench.press("pushButton_pboc_taglist_common", page);
        QVERIFY(bench.log().isEmpty());
        bench.press("pushButton_pboc_readinfo", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_pboc_get_card_info(1A2B, 0x02, 5000, \"A000000333\", \"ACDEIJ\", "
                                              "&0, char[1024], &0, 0x01)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] taglist=[ACDEIJ]",
                                           "[IC卡] vek_pboc_get_card_info return[0x0] (assert 0)", "[IC卡] info=[]"}));
        bench.forget();
        bench.press("pushButton_pboc_taglist_whole", page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_pboc_taglist", page)->text(), "ABCDEFGHIJKLMNOPQ");
    }

    void defaultTransactionDataIsPassedWithItsLength()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        QCOMPARE(kTransaction.size(), 94);
        recorder().vek_pboc_get_arqc = [](auto, auto, auto, auto, auto, auto, auto, char *result, auto, auto) {
            std::strcpy(result, "A00412AB");
            return 0;
        };
        bench.press("pushButton_pboc_arqc", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_pboc_get_arqc(1A2B, 0x02, 5000, \"A000000333\", 10, \"" +
                                              kTransaction + "\", 94, char[1024], &0, 0x00)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[IC卡] txdata=[" + kTransaction + "]",
                              "[IC卡] vek_pboc_get_arqc return[0x0] (assert 0)", "[IC卡] ARQC=[A00412AB]"}));
    }

    void pbocFailureShowsNoResult()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        recorder().vek_pboc_get_card_info = [](auto, auto, auto, auto, auto, auto, auto, auto, auto) { return 2; };
        recorder().vek_pboc_get_arqc = [](auto, auto, auto, auto, auto, auto, auto, auto, auto, auto) { return 3; };
        bench.press("pushButton_pboc_readinfo", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] taglist=[ABCDEFGHIJKLMNOPQ]",
                                           "[IC卡] vek_pboc_get_card_info return[0x2] (assert 0)"}));
        bench.forget();
        bench.press("pushButton_pboc_arqc", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[IC卡] txdata=[" + kTransaction + "]",
                                           "[IC卡] vek_pboc_get_arqc return[0x3] (assert 0)"}));
    }

    void timeoutOf70SecondsWrapsForPbocOnly()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_CPU_Iccard>();
        bench.type("lineEdit_timeout", "70");
        bench.press("pushButton_pboc_arqc", page);
        bench.press("pushButton_pboc_readinfo", page);
        bench.press("pushButton_cpucard_poweron", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_pboc_get_arqc(1A2B, 0x02, 4464, \"A000000333\", 10, \"" + kTransaction +
                                  "\", 94, char[1024], &0, 0x00)",
                              "vek_pboc_get_card_info(1A2B, 0x02, 4464, \"A000000333\", \"ABCDEFGHIJKLMNOPQ\", &0, "
                              "char[1024], &0, 0x01)",
                              "vek_icc_poweron(1A2B, 0x02, 70000, char[256], &0)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[IC卡] txdata=[" + kTransaction + "]",
                              "[IC卡] vek_pboc_get_arqc return[0x0] (assert 0)", "[IC卡] ARQC=[]", kSeparator,
                              "[IC卡] taglist=[ABCDEFGHIJKLMNOPQ]",
                              "[IC卡] vek_pboc_get_card_info return[0x0] (assert 0)", "[IC卡] info=[]", kSeparator,
                              "[IC卡] vek_icc_poweron return[0x0] (assert 0)", "[IC卡] ATR = []"}));
    }

    void threeButtonsAreInert_data()
    {
        QTest::addColumn<bool>("open");
        QTest::newRow("with a device") << true;
        QTest::newRow("without") << false;
    }

    void threeButtonsAreInert()
    {
        QFETCH(bool, open);
        Bench bench;
        if (open)
            bench.openDevice();
        else
            bench.loadDriver();
        auto *page = bench.page<Form_CPU_Iccard>();
        for (const char *button :
             {"pushButton_pboc_arpc", "pushButton_pboc_trans_detail", "pushButton_pboc_load_detail"})
            bench.press(button, page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
    }
};

QTEST_MAIN(TestFormCpuIccard)
#include "test_form_cpu_iccard.moc"
