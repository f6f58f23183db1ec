// What the tests of the ID card page's reading share: a driver's answer, and a record of all that the page does.
#pragma once

#include "pages/idcard/form_idcard.h"
#include "tests/support/bench.h"
#include "tests/support/box_watch.h"

#include <QDir>
#include <QLabel>

#include <cstring>

inline const QString kSeparator = Bench::separator("二代证");
inline const QString kNotOpen = "[二代证] 设备未打开！";
inline const QString kReturned = "[二代证] vek_idcr_getinfo return[0] (assert 0)";

inline constexpr char kCard[] = "A|张三|男|汉|19880808|某路1号|420381198808080013|某局|20160808|20360808|20年";
inline const QString kCardText =
    "类别：居民身份证\n\n姓名: 张三\n性别: 男   民族: 汉   出生日期: 19880808\n住址: "
    "某路1号\n公民身份号码: 420381198808080013\n签发机关: 某局\n起始日期: 20160808    结束日期: "
    "20360808\n有效期限: 20年\n";

inline QString imagePath(const char *file)
{
    return QDir::homePath() + "/vek_idcard_images/" + file;
}

/// The pictures that the driver writes; a null one is not written.
struct Pictures {
    QImage photo;
    QImage front;
    QImage back;
};

inline QImage picture(int width, int height, const QColor &colour = Qt::gray)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

inline Pictures soundPictures()
{
    return {picture(102, 126), picture(404, 257), picture(405, 258)};
}

inline void writePicture(const QImage &image, const char *path)
{
    QFile::remove(path);
    if (!image.isNull() && !image.save(path, "JPG"))
        qFatal("cannot write %s", path);
}

inline void answerCard(const QByteArray &info, const Pictures &pictures)
{
    recorder().vek_idcr_getinfo = [info, pictures](auto, auto, auto, auto, char *out, auto, const char *photo,
                                                   const char *front, const char *back) {
        std::memcpy(out, info.constData(), std::min(sdk::kIdInfoSize, static_cast<std::size_t>(info.size()) + 1));
        writePicture(pictures.photo, photo);
        writePicture(pictures.front, front);
        writePicture(pictures.back, back);
        return 0;
    };
}

inline QString sizeText(const QImage *image)
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

inline const QString kPhotoBox = "box img_photo->isNull: ";
inline const QString kFrontBox = "box 载入正面合成图像失败: ";
inline const QString kBackBox = "box 载入反面合成图像失败: ";

inline QString infoText(Bench &bench)
{
    return bench.widget<QTextEdit>("textEdit_idc_info")->toPlainText();
}

/// 0 x 0 when the label is empty.
inline QSize shownPhoto(Bench &bench)
{
    const auto *label = bench.widget<QLabel>("label_image_photo");
    if (!label->text().isEmpty())
        qFatal("the photo's label shows a text");
    return label->pixmap(Qt::ReturnByValue).size();
}

/// A page that shows a card read before.
inline Form_Idcard *pageWithCard(Bench &bench)
{
    bench.openDevice();
    auto *page = bench.page<Form_Idcard>();
    answerCard(kCard, soundPictures());
    bench.press("pushButton_read_idc", page);
    bench.forget();
    return page;
}
