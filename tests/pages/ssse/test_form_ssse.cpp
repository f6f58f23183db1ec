#include "pages/ssse/form_ssse.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"
#include "tests/support/widget_table.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

#include <cstring>

namespace {

const QString kSeparator = Bench::separator("社保卡");
const QString kNotOpen = "[社保卡] 设备未打开！";

/// A script that answers with the record.
auto answering(const char *record)
{
    return [record](auto, auto, auto, char *out, auto) {
        std::strcpy(out, record);
        return 0;
    };
}

QString boxText(Bench &bench, const char *name)
{
    return bench.widget<QTextEdit>(name, bench.page<Form_ssse>())->toPlainText();
}

} // namespace

class TestFormSsse : public QObject {
    Q_OBJECT

private slots:
    void metaObjectListsSignalAndSlotsInOrder()
    {
        QCOMPARE(
            ownMethods(Form_ssse::staticMetaObject),
            QStringList({"addLog(QString)", "on_pushButton_gov_info_clicked()", "on_pushButton_user_info_clicked()",
                         "on_pushButton_clear_ef05_clicked()", "on_pushButton_clear_ef06_clicked()",
                         "on_radioButton_clicked()", "on_radioButton_2_clicked()", "on_radioButton_3_clicked()"}));
        QCOMPARE(Form_ssse::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        addWidgetRows({
            {"groupBox", "QGroupBox", "卡类型选择"},
            {"radioButton", "QRadioButton", "接触"},
            {"radioButton_2", "QRadioButton", "非接触"},
            {"radioButton_3", "QRadioButton", "自动（接触/非接触）"},
            {"pushButton_gov_info", "QPushButton", "读取发卡方信息"},
            {"textEdit_ef05", "QTextEdit", ""},
            {"pushButton_clear_ef05", "QPushButton", "清空"},
            {"pushButton_user_info", "QPushButton", "读取持卡人信息"},
            {"textEdit_ef06", "QTextEdit", ""},
            {"pushButton_clear_ef06", "QPushButton", "清空"},
        });
    }

    void widgetsAreThereWithTheirTexts()
    {
        Bench bench;
        auto *page = bench.page<Form_ssse>();
        compareWidget(page);
        QVERIFY(bench.widget<QWidget>(QTest::currentDataTag(), page)->isEnabledTo(page));
        QCOMPARE(page->windowTitle(), "Form");
    }

    void automaticIsCheckedAndTheGroupHasItsIds()
    {
        Bench bench;
        auto *page = bench.page<Form_ssse>();
        QVERIFY(bench.widget<QRadioButton>("radioButton_3", page)->isChecked());
        auto *group = bench.widget<QRadioButton>("radioButton", page)->group();
        QCOMPARE(group->parent(), page);
        QCOMPARE(group->buttons().size(), 3);
        QCOMPARE(group->id(bench.widget<QRadioButton>("radioButton", page)), 0);
        QCOMPARE(group->id(bench.widget<QRadioButton>("radioButton_2", page)), 1);
        QCOMPARE(group->id(bench.widget<QRadioButton>("radioButton_3", page)), 2);
    }

    void eachCardTypeButtonPassesItsSlotCode_data()
    {
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QString>("code");
        QTest::newRow("at start") << QStringList() << "0x02";
        QTest::newRow("contact") << QStringList({"radioButton"}) << "0x00";
        QTest::newRow("contactless is 0xFF, not its group id 1") << QStringList({"radioButton_2"}) << "0xFF";
        QTest::newRow("automatic again") << QStringList({"radioButton", "radioButton_3"}) << "0x02";
    }

    void eachCardTypeButtonPassesItsSlotCode()
    {
        QFETCH(QStringList, buttons);
        QFETCH(QString, code);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        for (const QString &button : buttons)
            bench.press(button.toUtf8().constData(), page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        bench.press("pushButton_gov_info", page);
        bench.press("pushButton_user_info", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_ssse_get_issuer_info(1A2B, " + code + ", 5000, char[1024], 1)",
                                              "vek_ssse_get_user_info(1A2B, " + code + ", 5000, char[1024], 1)"}));
    }

    void issuerRecordIsShownWithItsLabels()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        recorder().vek_ssse_get_issuer_info = answering("110000D15600|3|2.00|91560000021100|20200102|20300102| A1 23");
        bench.press("pushButton_gov_info", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_ssse_get_issuer_info(1A2B, 0x02, 5000, char[1024], 1)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[社保卡] vek_ssse_get_issuer_info return[0x0] (assert 0)"}));
        QCOMPARE(boxText(bench, "textEdit_ef05"), "卡的识别码: 110000D15600\n卡的类别: 3\n规范版本: 2.00\n"
                                                  "初始化机构编号: 91560000021100\n发卡日期: 20200102\n"
                                                  "卡有效期: 20300102\n卡号:  A1 23\n");
        QCOMPARE(boxText(bench, "textEdit_ef06"), "");
    }

    void holderRecordIsShownDecoded()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        recorder().vek_ssse_get_user_info = answering("11010119900101001X|\xD5\xC5\xC8\xFD||1|01|110101|19900101");
        bench.press("pushButton_user_info", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_ssse_get_user_info(1A2B, 0x02, 5000, char[1024], 1)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[社保卡] vek_ssse_get_user_info return[0x0] (assert 0)"}));
        QCOMPARE(boxText(bench, "textEdit_ef06"),
                 "社会保障卡号码: 11010119900101001X\n姓名: 张三\n姓名扩展: \n性别: 男\n民族: 汉族\n"
                 "出生地: 110101\n出生日期: 19900101\n");
        QCOMPARE(boxText(bench, "textEdit_ef05"), "");
    }

    void failureShowsTheReturnLineAndLeavesTheBoxEmpty_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("call");
        QTest::newRow("issuer") << "pushButton_gov_info"
                                << "textEdit_ef05"
                                << "vek_ssse_get_issuer_info";
        QTest::newRow("holder") << "pushButton_user_info"
                                << "textEdit_ef06"
                                << "vek_ssse_get_user_info";
    }

    void failureShowsTheReturnLineAndLeavesTheBoxEmpty()
    {
        QFETCH(QString, button);
        QFETCH(QString, box);
        QFETCH(QString, call);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        auto *edit = bench.widget<QTextEdit>(box.toUtf8().constData(), page);
        edit->setPlainText("the last card");
        const auto failing = [](auto, auto, auto, char *out, auto) {
            std::strcpy(out, "a|b|c|d|e|f|g");
            return -2;
        };
        recorder().vek_ssse_get_issuer_info = failing;
        recorder().vek_ssse_get_user_info = failing;
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(Bench::calls(), QStringList({call + "(1A2B, 0x02, 5000, char[1024], 1)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, QString("[社保卡] %1 return[0xFFFFFFFE] (assert 0)").arg(call)}));
        QCOMPARE(edit->toPlainText(), "");
    }

    void withoutDeviceTheBoxIsClearedAndTwoLinesAreLogged_data()
    {
        failureShowsTheReturnLineAndLeavesTheBoxEmpty_data();
    }

    void withoutDeviceTheBoxIsClearedAndTwoLinesAreLogged()
    {
        QFETCH(QString, button);
        QFETCH(QString, box);
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_ssse>();
        auto *edit = bench.widget<QTextEdit>(box.toUtf8().constData(), page);
        edit->setPlainText("the last card");
        // The box is empty before the first line comes.
        QStringList textAtLine;
        connect(page, &Form_ssse::addLog, edit, [&] { textAtLine << edit->toPlainText(); });
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(textAtLine, QStringList({"", ""}));
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(edit->toPlainText(), "");
    }

    void clearButtonsEmptyTheirBoxAndLogNothing()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_ssse>();
        bench.widget<QTextEdit>("textEdit_ef05", page)->setPlainText("issuer");
        bench.widget<QTextEdit>("textEdit_ef06", page)->setPlainText("holder");
        bench.press("pushButton_clear_ef05", page);
        QCOMPARE(boxText(bench, "textEdit_ef05"), "");
        QCOMPARE(boxText(bench, "textEdit_ef06"), "holder");
        bench.press("pushButton_clear_ef06", page);
        QCOMPARE(boxText(bench, "textEdit_ef06"), "");
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
    }

    void timeoutIsTheGlobalOneInMilliseconds_data()
    {
        QTest::addColumn<QString>("seconds");
        QTest::addColumn<QString>("passed");
        QTest::newRow("70") << "70"
                            << "70000";
        QTest::newRow("negative wraps") << "-1"
                                        << "4294966296";
        QTest::newRow("past 32 bits wraps") << "2147483647"
                                            << "4294966296";
    }

    void timeoutIsTheGlobalOneInMilliseconds()
    {
        QFETCH(QString, seconds);
        QFETCH(QString, passed);
        Bench bench;
        bench.openDevice();
        bench.type("lineEdit_timeout", seconds);
        bench.press("pushButton_gov_info", bench.page<Form_ssse>());
        QCOMPARE(Bench::calls(),
                 QStringList({QString("vek_ssse_get_issuer_info(1A2B, 0x02, %1, char[1024], 1)").arg(passed)}));
    }

    void markupFromACardIsShownAsCharacters()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        recorder().vek_ssse_get_issuer_info = answering("<b>x</b>|<img src='x'>|&amp;||||");
        recorder().vek_ssse_get_user_info = answering("<b>x</b>|<i>y</i>|&lt;|||<table>|");
        bench.press("pushButton_gov_info", page);
        bench.press("pushButton_user_info", page);
        QVERIFY(boxText(bench, "textEdit_ef05")
                    .startsWith("卡的识别码: <b>x</b>\n卡的类别: <img src='x'>\n规范版本: &amp;\n"));
        QVERIFY(boxText(bench, "textEdit_ef06").contains("姓名: <i>y</i>\n姓名扩展: &lt;\n"));
        QVERIFY(boxText(bench, "textEdit_ef06").contains("出生地: <table>\n"));
    }

    void recordWithoutNulEndsAtTheBuffersEnd()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        recorder().vek_ssse_get_issuer_info = [](auto, auto, auto, char *out, auto) {
            std::memset(out, 'x', sdk::kSsseRecordSize);
            std::memset(out, '|', 6);
            return 0;
        };
        bench.press("pushButton_gov_info", page);
        const QString shown = boxText(bench, "textEdit_ef05");
        QVERIFY(shown.contains("卡有效期: \n卡号: xxx"));
        QVERIFY(shown.endsWith('x'));
    }

    void everyByteValueInARecordIsSurvived()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_ssse>();
        for (int filling = 1; filling < 256; ++filling) {
            const auto filled = [filling](auto, auto, auto, char *out, auto) {
                std::memset(out, filling, sdk::kSsseRecordSize);
                for (std::size_t bar = 9; bar < 60; bar += 10)
                    out[bar] = '|';
                return 0;
            };
            recorder().vek_ssse_get_issuer_info = filled;
            recorder().vek_ssse_get_user_info = filled;
            bench.press("pushButton_gov_info", page);
            bench.press("pushButton_user_info", page);
            QVERIFY(boxText(bench, "textEdit_ef05").startsWith("卡的识别码: "));
            QVERIFY(boxText(bench, "textEdit_ef06").startsWith("社会保障卡号码: "));
        }
    }
};

QTEST_MAIN(TestFormSsse)
#include "test_form_ssse.moc"
