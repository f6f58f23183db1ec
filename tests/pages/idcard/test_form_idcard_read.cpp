#include "pages/idcard/form_idcard.h"
#include "tests/support/bench.h"
#include "tests/support/box_watch.h"

#include <QDir>
#include <QLabel>

#include <cstring>

namespace {

const QString kSeparator = Bench::separator("二代证");
const QString kNotOpen = "[二代证] 设备未打开！";
const QString kReturned = "[二代证] vek_idcr_getinfo return[0] (assert 0)";

const char kCard[] = "A|张三|男|汉|19880808|某路1号|420381198808080013|某局|20160808|20360808|20年";
const QString kCardText = "类别：居民身份证\n\n姓名: 张三\n性别: 男   民族: 汉   出生日期: 19880808\n住址: "
                          "某路1号\n公民身份号码: 420381198808080013\n签发机关: 某局\n起始日期: 20160808    结束日期: "
                          "20360808\n有效期限: 20年\n";

QString imagePath(const char *file)
{
    return QDir::homePath() + "/vek_idcard_images/" + file;
}

/// The pictures that the driver writes; a null one is not written.
struct Pictures {
    QImage photo;
    QImage front;
    QImage back;
};

QImage picture(int width, int height, const QColor &colour = Qt::gray)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

Pictures soundPictures()
{
    return {picture(102, 126), picture(404, 257), picture(405, 258)};
}

void writePicture(const QImage &image, const char *path)
{
    QFile::remove(path);
    if (!image.isNull() && !image.save(path, "JPG"))
        qFatal("cannot write %s", path);
}

void answerCard(const QByteArray &info, const Pictures &pictures)
{
    recorder().vek_idcr_getinfo = [info, pictures](auto, auto, auto, auto, char *out, auto, const char *photo,
                                                   const char *front, const char *back) {
        std::memcpy(out, info.constData(), std::min<std::size_t>(sdk::kIdInfoSize, info.size() + 1U));
        writePicture(pictures.photo, photo);
        writePicture(pictures.front, front);
        writePicture(pictures.back, back);
        return 0;
    };
}

QString sizeText(const QImage *image)
{
    return image->isNull() ? "null" : QString("%1x%2").arg(image->width()).arg(image->height());
}

/// Everything that leaves the page, in order: log lines without their stamps, signals, boxes.
class Events {
public:
    QStringList list;

    explicit Events(Form_Idcard *page) : m_watch([this](const QString &box) { list << "box " + box; })
    {
        QObject::connect(page, &Form_Idcard::addLog, [this](const QString &line) { list << line.mid(24); });
        QObject::connect(page, &Form_Idcard::updateFrontImage,
                         [this](const QImage *image) { list << "front " + sizeText(image); });
        QObject::connect(page, &Form_Idcard::updateBackImage,
                         [this](const QImage *image) { list << "back " + sizeText(image); });
        QObject::connect(page, &Form_Idcard::updatePhotoImage,
                         [this](const QImage *image) { list << "photo " + sizeText(image); });
        QObject::connect(page, &Form_Idcard::showHideImageDlg,
                         [this](int show) { list << QString("show %1").arg(show); });
    }

private:
    BoxWatch m_watch;
};

const QString kPhotoBox = "box img_photo->isNull: ";
const QString kFrontBox = "box 载入正面合成图像失败: ";
const QString kBackBox = "box 载入反面合成图像失败: ";

} // namespace

class TestFormIdcardRead : public QObject {
    Q_OBJECT

private:
    static QString infoText(Bench &bench) { return bench.widget<QTextEdit>("textEdit_idc_info")->toPlainText(); }

    /// 0 x 0 when the label is empty.
    static QSize shownPhoto(Bench &bench)
    {
        const auto *label = bench.widget<QLabel>("label_image_photo");
        if (!label->text().isEmpty())
            qFatal("the photo's label shows a text");
        return label->pixmap(Qt::ReturnByValue).size();
    }

    /// A page that shows a card read before.
    static Form_Idcard *pageWithCard(Bench &bench)
    {
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        answerCard(kCard, soundPictures());
        bench.press("pushButton_read_idc", page);
        bench.forget();
        return page;
    }

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
        QCOMPARE(Bench::calls(),
                 QStringList({QString("vek_idcr_getinfo(1A2B, 0x1E, 5000, 1, char[512], char[2048], "
                                      "\"%1\", \"%2\", \"%3\")")
                                  .arg(imagePath("photo.jpg"), imagePath("front.jpg"), imagePath("back.jpg"))}));
        QCOMPARE(events.list,
                 QStringList({kSeparator, kReturned, "photo 102x126", "show 1", "front 404x257", "back 405x258"}));
        QCOMPARE(infoText(bench), kCardText);
        QCOMPARE(shownPhoto(bench), QSize(102, 126));
        QCOMPARE(bench.log(), QStringList({kSeparator, kReturned}));
    }

    void dialogShowsTheSidesAndComesBackWhenHidden()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        auto *dialog = bench.widget<QDialog>("Dialog_idc_image_display");
        bench.press("pushButton_idc_info_min_size", dialog);
        answerCard(kCard, soundPictures());
        bench.press("pushButton_read_idc", page);
        QVERIFY(dialog->isVisible());
        QCOMPARE(bench.widget<QLabel>("label_image_front", dialog)->pixmap(Qt::ReturnByValue).size(), QSize(404, 257));
        QCOMPARE(bench.widget<QLabel>("label_image_back", dialog)->pixmap(Qt::ReturnByValue).size(), QSize(405, 258));
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
            std::strcpy(info, kCard);
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

    void withoutThePhotoOptionThePhotoStaysEmpty()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.press("checkBox_photo", page);
        answerCard(kCard, soundPictures());
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(events.list, QStringList({kSeparator, kReturned, "show 1", "front 404x257", "back 405x258"}));
        QCOMPARE(shownPhoto(bench), QSize(0, 0));
    }

    void withoutTheCompositeOptionTheDialogIsLeftAlone()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.press("checkBox_composite", page);
        answerCard(kCard, soundPictures());
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(events.list, QStringList({kSeparator, kReturned, "photo 102x126"}));
        QVERIFY(!bench.widget<QDialog>("Dialog_idc_image_display")->isVisible());
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

    void eachPictureThatCannotBeLoadedHasItsBox_data()
    {
        QTest::addColumn<bool>("photo");
        QTest::addColumn<bool>("front");
        QTest::addColumn<bool>("back");
        for (int missing = 0; missing < 8; ++missing)
            QTest::newRow(qPrintable(QString("missing %1").arg(missing, 3, 2, QChar('0'))))
                << ((missing & 4) == 0) << ((missing & 2) == 0) << ((missing & 1) == 0);
    }

    void eachPictureThatCannotBeLoadedHasItsBox()
    {
        QFETCH(bool, photo);
        QFETCH(bool, front);
        QFETCH(bool, back);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        Pictures pictures = soundPictures();
        if (!photo)
            pictures.photo = QImage();
        if (!front)
            pictures.front = QImage();
        if (!back)
            pictures.back = QImage();
        answerCard(kCard, pictures);
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QStringList expected{kSeparator, kReturned};
        if (!photo)
            expected << kPhotoBox + imagePath("photo.jpg");
        expected << (photo ? "photo 102x126" : "photo null") << "show 1"
                 << (front ? "front 404x257" : kFrontBox + imagePath("front.jpg"))
                 << (back ? "back 405x258" : kBackBox + imagePath("back.jpg"));
        QCOMPARE(events.list, expected);
        QCOMPARE(infoText(bench), kCardText);
        QCOMPARE(shownPhoto(bench), photo ? QSize(102, 126) : QSize(0, 0));
    }

    void brokenFilesCountAsNotLoaded_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("zero bytes") << QByteArray();
        QTest::newRow("no picture") << QByteArray("<img src='x'>");
        QTest::newRow("a bare JPEG marker") << QByteArray("\xFF\xD8\xFF\xE0", 4);
    }

    void brokenFilesCountAsNotLoaded()
    {
        QFETCH(QByteArray, content);
        Bench bench;
        // The pictures of the card before must not stand in for the broken ones.
        auto *page = pageWithCard(bench);
        recorder().vek_idcr_getinfo = [content](auto, auto, auto, auto, char *info, auto, auto... paths) {
            std::strcpy(info, kCard);
            for (const char *path : {paths...}) {
                QFile file(path);
                if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
                    qFatal("cannot write %s", path);
            }
            return 0;
        };
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(events.list,
                 QStringList({kSeparator, kReturned, kPhotoBox + imagePath("photo.jpg"), "photo null", "show 1",
                              kFrontBox + imagePath("front.jpg"), kBackBox + imagePath("back.jpg")}));
        QCOMPARE(shownPhoto(bench), QSize(0, 0));
    }

    void hugePhotoIsCroppedAndNotScaled()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        const QSize window = bench.window.size();
        QImage huge = picture(4000, 3000, Qt::blue);
        for (int x = 0; x < 500; ++x)
            for (int y = 0; y < 500; ++y)
                huge.setPixelColor(x, y, Qt::red);
        answerCard(kCard, {huge, huge, huge});
        Events events(page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(events.list, QStringList({kSeparator, kReturned, "photo 4000x3000", "show 1", "front 4000x3000",
                                           "back 4000x3000"}));
        auto *label = bench.widget<QLabel>("label_image_photo", page);
        QCOMPARE(shownPhoto(bench), QSize(4000, 3000));
        QCOMPARE(label->size(), QSize(102, 126));
        const QImage seen = label->grab().toImage();
        for (const QPoint corner : {QPoint(1, 1), QPoint(100, 1), QPoint(1, 124), QPoint(100, 124)})
            QVERIFY(seen.pixelColor(corner).red() > 200 && seen.pixelColor(corner).blue() < 60);
        QCOMPARE(bench.window.size(), window);
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
        QVERIFY(infoText(bench).startsWith("类别：2023新版永居证\n\n姓名: \n性别:    换证次数: "));
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
        QVERIFY(infoText(bench).startsWith("类别：居民身份证\n\n姓名: \n性别: "));
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

    void picturesAreRemovedWithThePage()
    {
        {
            Bench bench;
            pageWithCard(bench);
            QVERIFY(QFile::exists(imagePath("photo.jpg")));
        }
        QVERIFY(!QFile::exists(QDir::homePath() + "/vek_idcard_images"));
    }
};

QTEST_MAIN(TestFormIdcardRead)
#include "test_form_idcard_read.moc"
