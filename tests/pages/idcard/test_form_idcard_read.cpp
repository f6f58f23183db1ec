#include "tests/pages/idcard/card_reading.h"

namespace {

/// The call of a read with the options that the page starts with.
QString readCall()
{
    return QString("vek_idcr_getinfo(1A2B, 0x1E, 5000, 1, char[512], char[2048], \"%1\", \"%2\", \"%3\")")
        .arg(imagePath("photo.jpg"), imagePath("front.jpg"), imagePath("back.jpg"));
}

} // namespace

class TestFormIdcardRead : public QObject {
    Q_OBJECT

private slots:
    void readShowsTextPhotoAndBothSides()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.press("checkBox_composite", page);
        bench.press("checkBox_composite", page);
        answerCard(kCard, soundPictures());
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(Bench::calls(), QStringList({readCall()}));
        QCOMPARE(events.list,
                 QStringList({kSeparator, kReturned, "photo 102x126", "show 1", "front 404x257", "back 405x258"}));
        QCOMPARE(infoText(bench), kCardText);
        QCOMPARE(shownPhoto(bench), QSize(102, 126));
        QCOMPARE(bench.log(), QStringList({kSeparator, kReturned}));
    }

    void withoutDeviceTheOldCardIsClearedAndNothingCalled()
    {
        Bench bench;
        auto *page = pageWithCard(bench);
        bench.press("pushButton_close");
        bench.forget();
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(events.list, QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(infoText(bench), "");
        QCOMPARE(shownPhoto(bench), QSize(0, 0));
    }

    void failedReadClearsTheOldCardAndShowsOnlyTheReturnLine()
    {
        Bench bench;
        auto *page = pageWithCard(bench);
        recorder().vek_idcr_getinfo = [](auto, auto, auto, auto, char *info, auto, auto, auto, auto) {
            qstrcpy(info, kCard);
            return -2;
        };
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(events.list, QStringList({kSeparator, "[二代证] vek_idcr_getinfo return[-2] (assert 0)"}));
        QCOMPARE(infoText(bench), "");
        QCOMPARE(shownPhoto(bench), QSize(0, 0));
    }

    void cardIsClearedBeforeTheCall()
    {
        Bench bench;
        auto *page = pageWithCard(bench);
        QString textDuringCall = "unseen";
        recorder().vek_idcr_getinfo = [&](auto, auto, auto, auto, auto, auto, auto, auto, auto) {
            textDuringCall = infoText(bench);
            return -1;
        };
        bench.press("pushButton_read_idc", page);
        QCOMPARE(textDuringCall, "");
    }

    void textIsShownEvenWithTheTextOptionOff()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.press("checkBox_text", page);
        answerCard(kCard, soundPictures());
        bench.press("pushButton_read_idc", page);
        QCOMPARE(infoText(bench), kCardText);
    }

    void textIsNeverMarkup()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        answerCard("A|<b>张</b>&amp;|<br>", soundPictures());
        bench.press("pushButton_read_idc", page);
        QVERIFY(infoText(bench).startsWith("类别：居民身份证\n\n姓名: <b>张</b>&amp;\n性别: <br>   民族:    出生日期: "
                                           "\n住址: \n公民身份号码: \n签发机关: 国家移民管理局\n"));
    }

    void lineBreaksShowOnce()
    {
        Bench bench;
        auto *page = pageWithCard(bench);
        auto *edit = bench.widget<QTextEdit>("textEdit_idc_info", page);
        QCOMPARE(edit->document()->blockCount(), kCardText.count('\n') + 1);
    }

    void infoWithoutNulEndsAtTheBuffersEnd()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        answerCard("A|" + QByteArray(510, 'x'), soundPictures());
        bench.press("pushButton_read_idc", page);
        QVERIFY(infoText(bench).startsWith("类别：居民身份证\n\n姓名: " + QString(510, 'x') + "\n性别: "));
    }

    void cutUtf8ShowsAReplacementCharacter()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        answerCard("Z|\xE5\xBC|x", soundPictures());
        bench.press("pushButton_read_idc", page);
        QVERIFY(infoText(bench).startsWith(QString("\n姓名: ") + QChar(0xFFFD)));
    }

    void textWithoutBarsIsAllKind()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        answerCard("Y张三", soundPictures());
        bench.press("pushButton_read_idc", page);
        QCOMPARE(infoText(bench),
                 "类别：2023新版永居证\n\n姓名: \n性别:    换证次数:    出生日期: \n英文姓名: \n公民身份号码: "
                 "\n签发机关: 国家移民管理局\n起始日期:     结束日期: \n有效期限:    国籍: \n既往版本:    "
                 "旧证件号码: \n");
        QCOMPARE(Bench::calls(), QStringList({readCall()}));
        QCOMPARE(bench.log(), QStringList({kSeparator, kReturned}));
    }

    void emptyAuthorityIsShownAsTheNationalOne()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        answerCard(QByteArray(kCard).replace("某局", ""), soundPictures());
        bench.press("pushButton_read_idc", page);
        QCOMPARE(infoText(bench), QString(kCardText).replace("某局", "国家移民管理局"));
        QCOMPARE(Bench::calls(), QStringList({readCall()}));
        QCOMPARE(bench.log(), QStringList({kSeparator, kReturned}));
    }

    void anotherSeparatorLeavesEverythingInFieldZero()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QLineEdit>("lineEdit_separation", page)->setText("#");
        bench.press("pushButton_info_separator", page);
        answerCard(QByteArray(kCard).replace('|', '#'), soundPictures());
        bench.press("pushButton_read_idc", page);
        QCOMPARE(infoText(bench),
                 "类别：居民身份证\n\n姓名: \n性别:    民族:    出生日期: \n住址: \n公民身份号码: \n签发机关: "
                 "国家移民管理局\n起始日期:     结束日期: \n有效期限: \n");
        QCOMPARE(Bench::calls(), QStringList({"vek_idcr_set_separation(0x23)", readCall()}));
        QCOMPARE(bench.log(), QStringList({"[二代证] 设置分隔符为 # 成功", kSeparator, kReturned}));
    }

    void timeoutIsTheContexts()
    {
        Bench bench;
        bench.openDevice();
        bench.type("lineEdit_timeout", "70");
        auto *page = bench.page<Form_Idcard>();
        recorder().vek_idcr_getinfo = [](auto, auto, auto, auto, auto, auto, auto, auto, auto) { return -1; };
        bench.widget<QLineEdit>("lineEdit_3", page)->setText("1");
        bench.press("pushButton_read_idc", page);
        QVERIFY(Bench::calls().at(0).startsWith("vek_idcr_getinfo(1A2B, 0x1E, 70000, 1, "));
    }
};

QTEST_MAIN(TestFormIdcardRead)
#include "test_form_idcard_read.moc"
