#include "pages/idcard/dialog_idc_image_display.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const char kFollow[] = "checkBox_idc_disp_follow_main_wnd";
const char kHide[] = "pushButton_idc_info_min_size";

QImage filled(int width, int height, const QColor &colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

} // namespace

class TestDialogIdcImageDisplay : public QObject {
    Q_OBJECT

private:
    static Dialog_idc_image_display *dialogOf(Bench &bench)
    {
        return bench.window.findChild<Dialog_idc_image_display *>();
    }

private slots:
    /// The sizes count in the desktop's font; the offscreen platform's own is larger.
    void initTestCase() { QApplication::setFont(QFont("Sans Serif", 9)); }

    void metaObjectListsSlotsInOrder()
    {
        QCOMPARE(ownMethods(Dialog_idc_image_display::staticMetaObject),
                 QStringList({"on_checkBox_idc_disp_follow_main_wnd_stateChanged(int)",
                              "on_pushButton_idc_info_min_size_clicked()", "onUpdateFrontImage(QImage*)",
                              "onUpdateBackImage(QImage*)", "onUpdatePhotoImage(QImage*)", "onDlgShowHide(int)",
                              "onFollowWindow(QPoint*)"}));
        QCOMPARE(Dialog_idc_image_display::staticMetaObject.superClass(), &QDialog::staticMetaObject);
    }

    void widgetsStandInOrderWithTheirTexts()
    {
        const Dialog_idc_image_display dialog(nullptr);
        QStringList widgets;
        for (const auto *child : dialog.findChildren<QWidget *>())
            widgets << QString("%1 %2=%3")
                           .arg(child->metaObject()->className(), child->objectName(),
                                child->property("text").toString());
        QCOMPARE(widgets, QStringList({"QCheckBox checkBox_idc_disp_follow_main_wnd=吸附到主窗口",
                                       "QPushButton pushButton_idc_info_min_size=隐藏窗口",
                                       "QLabel label=在身份证测试界面，选中“正反面”对勾，即可显示本窗口",
                                       "QFrame line_2=", "QLabel label_image_front=正面图像",
                                       "QFrame line=", "QLabel label_image_back=反面图像"}));
        for (const char *name : {"label_image_front", "label_image_back"}) {
            const auto *label = dialog.findChild<QLabel *>(name);
            QCOMPARE(label->minimumSize(), QSize(404, 257));
            QCOMPARE(label->maximumSize(), QSize(404, 257));
        }
        for (const char *name : {"line", "line_2"}) {
            const auto *line = dialog.findChild<QFrame *>(name);
            QCOMPARE(line->frameShape(), QFrame::HLine);
            QCOMPARE(line->frameShadow(), QFrame::Sunken);
        }
    }

    void titleFlagsAndSize()
    {
        Dialog_idc_image_display dialog(nullptr);
        QCOMPARE(dialog.windowTitle(), "身份证正反面合成图像");
        QCOMPARE(dialog.windowFlags(), Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
        QCOMPARE(dialog.size(), QSize(422, 606));
        dialog.show();
        QCOMPARE(dialog.size(), QSize(422, 606));
    }

    void startsFollowingAtTheOrigin()
    {
        const Dialog_idc_image_display dialog(nullptr);
        QVERIFY(dialog.findChild<QCheckBox *>(kFollow)->isChecked());
        QCOMPARE(dialog.pos(), QPoint(0, 0));
    }

    void isShownWithTheWindowAndHiddenByItsButton()
    {
        Bench bench;
        auto *dialog = dialogOf(bench);
        QVERIFY(dialog->isVisible());
        bench.press(kHide, dialog);
        QVERIFY(!dialog->isVisible());
        dialog->onDlgShowHide(1);
        QVERIFY(dialog->isVisible());
    }

    void showHideTakesAnyNonZeroStateAsShow()
    {
        Dialog_idc_image_display dialog(nullptr);
        for (const int show : {1, 0, 2, 0, -1}) {
            dialog.onDlgShowHide(show);
            QCOMPARE(dialog.isVisible(), show != 0);
        }
    }

    void picturesAreShownInTheirOwnSize_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("fits") << QSize(404, 257);
        QTest::newRow("smaller") << QSize(10, 20);
        QTest::newRow("larger") << QSize(1200, 900);
    }

    void picturesAreShownInTheirOwnSize()
    {
        QFETCH(QSize, size);
        Dialog_idc_image_display dialog(nullptr);
        dialog.show();
        QImage image = filled(size.width(), size.height(), Qt::blue);
        // Were the picture scaled down, the red corner would shrink with it.
        for (int x = 0; x < size.width() / 2; ++x)
            for (int y = 0; y < size.height() / 2; ++y)
                image.setPixelColor(x, y, Qt::red);
        dialog.onUpdateFrontImage(&image);
        dialog.onUpdateBackImage(&image);
        for (const char *name : {"label_image_front", "label_image_back"}) {
            auto *label = dialog.findChild<QLabel *>(name);
            QCOMPARE(label->pixmap(Qt::ReturnByValue).size(), size);
            QCOMPARE(label->size(), QSize(404, 257));
            const QImage seen = label->grab().toImage().convertToFormat(QImage::Format_RGB32);
            const QSize shown = size.boundedTo(label->size());
            QCOMPARE(seen.copy(QRect(QPoint(0, 0), shown)), image.copy(QRect(QPoint(0, 0), shown)));
        }
        QCOMPARE(dialog.size(), QSize(422, 606));
    }

    void eachPictureGoesToItsOwnLabel()
    {
        Dialog_idc_image_display dialog(nullptr);
        QImage image = filled(3, 4, Qt::red);
        dialog.onUpdateFrontImage(&image);
        QCOMPARE(dialog.findChild<QLabel *>("label_image_back")->text(), "反面图像");
        dialog.onUpdateFrontImage(nullptr);
        dialog.onUpdateBackImage(&image);
        QVERIFY(dialog.findChild<QLabel *>("label_image_front")->pixmap(Qt::ReturnByValue).isNull());
        QCOMPARE(dialog.findChild<QLabel *>("label_image_back")->pixmap(Qt::ReturnByValue).size(), QSize(3, 4));
    }

    void pictureIsCopiedAtOnce()
    {
        Dialog_idc_image_display dialog(nullptr);
        {
            QImage image = filled(3, 4, Qt::red);
            dialog.onUpdateFrontImage(&image);
        }
        const QPixmap shown = dialog.findChild<QLabel *>("label_image_front")->pixmap(Qt::ReturnByValue);
        QCOMPARE(shown.toImage().pixelColor(2, 3), QColor(Qt::red));
    }

    void nullPictureClearsTheLabel()
    {
        Dialog_idc_image_display dialog(nullptr);
        QImage image = filled(3, 4, Qt::red);
        for (QImage *before : {static_cast<QImage *>(nullptr), &image}) {
            dialog.onUpdateFrontImage(before);
            dialog.onUpdateBackImage(before);
            dialog.onUpdateFrontImage(nullptr);
            dialog.onUpdateBackImage(nullptr);
            for (const char *name : {"label_image_front", "label_image_back"}) {
                const auto *label = dialog.findChild<QLabel *>(name);
                QVERIFY(label->pixmap(Qt::ReturnByValue).isNull());
                QCOMPARE(label->text(), "");
            }
        }
    }

    void photoIsNotItsBusiness()
    {
        Dialog_idc_image_display dialog(nullptr);
        QImage image = filled(3, 4, Qt::red);
        dialog.onUpdatePhotoImage(&image);
        dialog.onUpdatePhotoImage(nullptr);
        QCOMPARE(dialog.findChild<QLabel *>("label_image_front")->text(), "正面图像");
        QCOMPARE(dialog.findChild<QLabel *>("label_image_back")->text(), "反面图像");
    }

    void followsTheWindowsRightEdge()
    {
        Bench bench;
        bench.window.show();
        auto *dialog = dialogOf(bench);
        bench.window.move(130, 70);
        QTRY_COMPARE(dialog->pos(), QPoint(bench.window.pos().x() + bench.window.width(), bench.window.pos().y()));
    }

    void movesAreDroppedWhileItDoesNotFollow()
    {
        Dialog_idc_image_display dialog(nullptr);
        dialog.show();
        QPoint first(40, 50);
        dialog.onFollowWindow(&first);
        QCOMPARE(dialog.pos(), first);
        auto *follow = dialog.findChild<QCheckBox *>(kFollow);
        follow->click();
        QPoint dropped(300, 200);
        dialog.onFollowWindow(&dropped);
        QCOMPARE(dialog.pos(), first);
        dialog.move(7, 8);
        follow->click();
        QCOMPARE(dialog.pos(), first);
        dialog.onFollowWindow(&dropped);
        QCOMPARE(dialog.pos(), dropped);
    }

    void dockingPointIsCopied()
    {
        Dialog_idc_image_display dialog(nullptr);
        QPoint point(40, 50);
        dialog.onFollowWindow(&point);
        point = QPoint(1, 1);
        auto *follow = dialog.findChild<QCheckBox *>(kFollow);
        follow->click();
        dialog.move(7, 8);
        follow->click();
        QCOMPARE(dialog.pos(), QPoint(40, 50));
    }

    void nullDockingPointIsIgnored()
    {
        Dialog_idc_image_display dialog(nullptr);
        QPoint point(40, 50);
        dialog.onFollowWindow(&point);
        dialog.onFollowWindow(nullptr);
        QCOMPARE(dialog.pos(), point);
    }

    void everyKeyIsSwallowed_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << int(Qt::Key_Escape);
        QTest::newRow("Return") << int(Qt::Key_Return);
        QTest::newRow("F1") << int(Qt::Key_F1);
        QTest::newRow("letter") << int(Qt::Key_A);
    }

    void everyKeyIsSwallowed()
    {
        QFETCH(int, key);
        Bench bench;
        bench.window.show();
        auto *dialog = dialogOf(bench);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(dialog, &press);
        QVERIFY(press.isAccepted());
        QVERIFY(dialog->isVisible());
        QTest::keyClick(bench.widget<QCheckBox>(kFollow, dialog), Qt::Key_Escape);
        QVERIFY(dialog->isVisible());
    }
};

QTEST_MAIN(TestDialogIdcImageDisplay)
#include "test_dialog_idc_image_display.moc"
