// Reading ID cards over the virtual reader: every kind, the pictures, the option boxes, the separator.
#include "pages/idcard/dialog_idc_image_display.h"
#include "pages/idcard/form_idcard.h"
#include "tests/support/box_watch.h"
#include "tests/virtual/bench/virtual_bench.h"

#include <QDir>
#include <QLabel>

namespace {

using Slot = VirtualBench::Slot;

const QStringList kRead{BenchWindow::separator("二代证"), "[二代证] vek_idcr_getinfo return[0] (assert 0)"};

class IdBench : public VirtualBench {
public:
    IdBench() { openDevice(); }

    Form_Idcard *form() { return page<Form_Idcard>(); }
    Dialog_idc_image_display *dialog() { return window.findChild<Dialog_idc_image_display *>(); }
    QStringList read() { return logOf("pushButton_read_idc", form()); }
    QString shown() { return widget<QTextEdit>("textEdit_idc_info", form())->toPlainText(); }

    static QSize sizeOf(const QLabel *label) { return label->pixmap(Qt::ReturnByValue).size(); }
    QSize photo() { return sizeOf(widget<QLabel>("label_image_photo", form())); }
    QSize front() { return sizeOf(widget<QLabel>("label_image_front", dialog())); }
    QSize back() { return sizeOf(widget<QLabel>("label_image_back", dialog())); }
    QImage frontImage() { return widget<QLabel>("label_image_front", dialog())->pixmap(Qt::ReturnByValue).toImage(); }

    QString field(const char *name) { return cardText(Slot::IdPlate, (std::string("/fields/") + name).c_str()); }
};

const QSize kPhotoSize(102, 126);
const QSize kSideSize(404, 257);

/// The lines that kinds J, A and the unknown ones share.
QString plainTail(IdBench &bench)
{
    return "\n公民身份号码: " + bench.field("number") + "\n签发机关: " + bench.field("authority") +
           "\n起始日期: " + bench.field("from") + "    结束日期: " + bench.field("until") +
           "\n有效期限: " + bench.field("term");
}

QString plainHead(IdBench &bench)
{
    return "\n姓名: " + bench.field("name") + "\n性别: " + bench.field("sex") + "   出生日期: " + bench.field("birth") +
           "\n住址: " + bench.field("address");
}

QString residentText(IdBench &bench)
{
    return "类别：居民身份证\n\n姓名: " + bench.field("name") + "\n性别: " + bench.field("sex") +
           "   民族: " + bench.field("ethnicity") + "   出生日期: " + bench.field("birth") +
           "\n住址: " + bench.field("address") + plainTail(bench) + "\n";
}

QString permitText(IdBench &bench)
{
    return "类别：港澳台居民居住证\n" + plainHead(bench) + plainTail(bench) +
           "\n证件版本号: " + bench.field("version") + "\n";
}

QString unknownText(IdBench &bench)
{
    return plainHead(bench) + plainTail(bench) + "\n";
}

QString permanent2017Text(IdBench &bench)
{
    return "类别：2017版外国人永久居住证\n\n英文姓名: " + bench.field("englishName") +
           "   性别: " + bench.field("sex") + "\n国籍或地区代号: " + bench.field("nationality") +
           "   出生日期: " + bench.field("birth") + "\n永久居住证号码: " + bench.field("number") +
           "\n签发机关: " + bench.field("authority") + "\n起始日期: " + bench.field("from") +
           "    结束日期: " + bench.field("until") + "\n有效期限: " + bench.field("term") +
           "\n中文姓名: " + bench.field("chineseName") + "\n证件版本号: " + bench.field("version");
}

QString permanent2023Text(IdBench &bench)
{
    return "类别：2023新版永居证\n\n姓名: " + bench.field("name") + "\n性别: " + bench.field("sex") +
           "   换证次数: " + bench.field("renewals") + "   出生日期: " + bench.field("birth") +
           "\n英文姓名: " + bench.field("englishName") + "\n公民身份号码: " + bench.field("number") +
           "\n签发机关: 国家移民管理局\n起始日期: " + bench.field("from") + "    结束日期: " + bench.field("until") +
           "\n有效期限: " + bench.field("term") + "   国籍: " + bench.field("nationality") +
           "\n既往版本: " + bench.field("formerVersion") + "   旧证件号码: " + bench.field("formerNumber") + "\n";
}

using Text = QString (*)(IdBench &);

} // namespace

Q_DECLARE_METATYPE(Text)

class TestBenchVirtualIdcard : public QObject {
    Q_OBJECT

private slots:
    void everyKindIsShownWithItsPictures_data()
    {
        QTest::addColumn<QString>("card");
        QTest::addColumn<Text>("text");
        QTest::newRow("resident") << "id-resident" << &residentText;
        QTest::newRow("permanent residence, 2017") << "id-permanent-2017" << &permanent2017Text;
        QTest::newRow("residence permit") << "id-residence-permit" << &permitText;
        QTest::newRow("permanent residence, 2023") << "id-permanent-2023" << &permanent2023Text;
        QTest::newRow("unknown letter") << "id-unknown-kind" << &unknownText;
    }

    void everyKindIsShownWithItsPictures()
    {
        QFETCH(QString, card);
        QFETCH(Text, text);
        IdBench bench;
        QVERIFY(runTrayTool({"put", card}));
        const BoxWatch watch;
        QCOMPARE(bench.read(), kRead);
        QCOMPARE(bench.shown(), text(bench));
        QCOMPARE(bench.photo(), kPhotoSize);
        QCOMPARE(bench.front(), kSideSize);
        QCOMPARE(bench.back(), kSideSize);
        QVERIFY(bench.dialog()->isVisible());
        QCOMPARE(watch.boxes(), QStringList());
        QVERIFY(bench.logOf("pushButton_idc_clear_info", bench.form()).isEmpty());
        QCOMPARE(bench.shown(), "");
        QVERIFY(bench.photo().isEmpty());
    }

    void withoutThePhotoBoxThereIsNoPhoto()
    {
        IdBench bench;
        bench.press("checkBox_photo", bench.form());
        QCOMPARE(bench.read(), kRead);
        QCOMPARE(bench.shown(), residentText(bench));
        QVERIFY(bench.photo().isEmpty());
        QVERIFY(!QFile::exists(QDir::homePath() + "/vek_idcard_images/photo.jpg"));
        QCOMPARE(bench.front(), kSideSize);
    }

    void withoutTheCompositeBoxThereAreNoSides()
    {
        IdBench bench;
        bench.press("checkBox_composite", bench.form());
        QCOMPARE(bench.read(), kRead);
        QCOMPARE(bench.photo(), kPhotoSize);
        QVERIFY(bench.front().isEmpty());
        QVERIFY(bench.back().isEmpty());
        QVERIFY(!bench.dialog()->isVisible());
        QVERIFY(!QFile::exists(QDir::homePath() + "/vek_idcard_images/front.jpg"));
    }

    void withoutTheTextBoxThereAreOnlyLabels()
    {
        IdBench bench;
        bench.press("checkBox_text", bench.form());
        QCOMPARE(bench.read(), kRead);
        QVERIFY2(!bench.shown().contains(bench.field("name")), qPrintable(bench.shown()));
        QCOMPARE(bench.photo(), kPhotoSize);
    }

    void theOtherBoxesReadAsWell()
    {
        IdBench bench;
        for (const char *box : {"checkBox_finger", "checkBox_compatible", "checkBox_stop_on_error"})
            bench.press(box, bench.form());
        QCOMPARE(bench.read(), kRead);
        QCOMPARE(bench.shown(), residentText(bench));
    }

    void changedNameChangesTextAndPicture()
    {
        IdBench bench;
        bench.read();
        const QImage before = bench.frontImage();
        QVERIFY(runTrayTool({"set", "id-resident", "/fields/name", "欧阳青"}));
        QCOMPARE(bench.read(), kRead);
        QVERIFY(bench.shown().contains("姓名: 欧阳青\n"));
        QVERIFY(bench.frontImage() != before);
    }

    void withoutRereadTheLastReadingIsShown()
    {
        IdBench bench;
        bench.read();
        const QString before = bench.shown();
        QVERIFY(runTrayTool({"set", "id-resident", "/fields/name", "欧阳青"}));
        bench.press("checkBox_reread", bench.form());
        QCOMPARE(bench.read(), kRead);
        QCOMPARE(bench.shown(), before);
    }

    void otherSeparatorsStayUnsplit()
    {
        IdBench bench;
        bench.type("lineEdit_separation", "#", bench.form());
        QCOMPARE(bench.logOf("pushButton_info_separator", bench.form()), QStringList({"[二代证] 设置分隔符为 # 成功"}));
        QCOMPARE(bench.read(), kRead);
        // The page splits at "|": the whole text stands in the first field, whose letter still tells the kind.
        QVERIFY2(bench.shown().startsWith("类别：居民身份证\n\n姓名: \n"), qPrintable(bench.shown()));
        QVERIFY(!bench.shown().contains(bench.field("name")));
        bench.type("lineEdit_separation", "|", bench.form());
        QCOMPARE(bench.logOf("pushButton_info_separator", bench.form()), QStringList({"[二代证] 设置分隔符为 | 成功"}));
        QCOMPARE(bench.read(), kRead);
        QCOMPARE(bench.shown(), residentText(bench));
    }

    void emptyPlateTimesOutAndCardIsWaitedFor()
    {
        IdBench bench;
        QVERIFY(runTrayTool({"take", "id"}));
        bench.setTimeout("1");
        QCOMPARE(bench.read(), QStringList({kRead[0], "[二代证] vek_idcr_getinfo return[-5] (assert 0)"}));
        QCOMPARE(bench.shown(), "");
        bench.setTimeout("20");
        QStringList log;
        {
            const Meanwhile hand([] { runTrayTool({"put", "id-residence-permit"}); });
            log = bench.read();
        }
        QCOMPARE(log, kRead);
        QCOMPARE(bench.shown(), permitText(bench));
    }

    void sdtPortReadsTheCardFace()
    {
        VirtualBench bench;
        bench.openDevice("radioButton_sdt", "SDT1001");
        auto *const page = bench.page<Form_Idcard>();
        QCOMPARE(bench.logOf("pushButton_read_idc", page), kRead);
    }
};

QTEST_MAIN(TestBenchVirtualIdcard)
#include "test_bench_virtual_idcard.moc"
