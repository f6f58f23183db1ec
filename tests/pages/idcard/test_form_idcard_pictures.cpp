#include "tests/pages/idcard/card_reading.h"

class TestFormIdcardPictures : public QObject {
    Q_OBJECT

private slots:
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
            qstrcpy(info, kCard);
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
        QCOMPARE(Bench::calls().size(), 1);
        QVERIFY(Bench::calls().first().startsWith("vek_idcr_getinfo(1A2B, 0x1A, 5000, 1, "));
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

QTEST_MAIN(TestFormIdcardPictures)
#include "test_form_idcard_pictures.moc"
