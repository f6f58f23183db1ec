#include "pages/idcard/form_idcard.h"

#include "app/log_line.h"
#include "app/text_codec.h"
#include "pages/idcard/idc_fields.h"
#include "pages/idcard/idc_page_tag.h"
#include "sdk/entry_points.h"
#include "ui_form_idcard.h"

#include <QDir>
#include <QMessageBox>

namespace {

// The options of vek_idcr_getinfo.
constexpr std::uint32_t kOptionFinger = 0x01;
constexpr std::uint32_t kOptionText = 0x02;
constexpr std::uint32_t kOptionPhoto = 0x04;
constexpr std::uint32_t kOptionComposite = 0x08;
constexpr std::uint32_t kOptionReread = 0x10;
constexpr std::uint32_t kOptionCompatible = 0x800;
constexpr std::uint32_t kOptionStopOnError = 0x1000;

/// The pictures are personal data. A folder left over from a crash may be open to others: it is closed too.
void makePrivateDirectory(const QString &path)
{
    QDir().mkpath(path);
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

void warn(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

} // namespace

Form_Idcard::Form_Idcard(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Idcard), m_device(device),
      m_options(0), m_photoPath{}, m_frontPath{}, m_backPath{}, m_photo(std::make_unique<QImage>()),
      m_front(std::make_unique<QImage>()), m_back(std::make_unique<QImage>()),
      m_imageDirectory(QDir::homePath() + "/vek_idcard_images")
{
    ui->setupUi(this);
    makePrivateDirectory(m_imageDirectory);
    ui->lineEdit_temp_dir->setText(m_imageDirectory);
    ui->lineEdit_temp_dir->setCursorPosition(0);
    // Their slots set the options.
    ui->checkBox_text->setChecked(true);
    ui->checkBox_photo->setChecked(true);
    ui->checkBox_reread->setChecked(true);
    ui->checkBox_composite->setChecked(true);
}

Form_Idcard::~Form_Idcard()
{
    delete ui;
    QDir(m_imageDirectory).removeRecursively();
}

void Form_Idcard::on_pushButton_read_idc_clicked()
{
    clearCard();
    buildPaths();
    if (!beginAction(*this, *m_device, kIdcPageTag))
        return;
    std::array<char, sdk::kIdInfoSize> info{};
    std::array<char, sdk::kIdExtraSize> extra{};
    constexpr int kConstant = 1;
    const int result =
        sdk::call<vek_idcr_getinfo>(m_device->handle, m_options, timeoutMs(*m_device), kConstant, info.data(),
                                    extra.data(), m_photoPath.data(), m_frontPath.data(), m_backPath.data());
    emit addLog(QString::asprintf("[%s] [%s] vek_idcr_getinfo return[%d] (assert 0)", logTime(), kIdcPageTag, result));
    if (result != 0)
        return;

    showText(boundedText(info));
    if ((m_options & kOptionPhoto) != 0)
        showPhoto();
    if ((m_options & kOptionComposite) != 0)
        showComposite();
}

void Form_Idcard::on_pushButton_idc_clear_info_clicked()
{
    clearCard();
    ui->lineEdit_sam_id->clear();
    ui->lineEdit_phsy_id->clear();
}

void Form_Idcard::on_checkBox_text_stateChanged(int arg1)
{
    setOption(kOptionText, arg1);
}

void Form_Idcard::on_checkBox_photo_stateChanged(int arg1)
{
    setOption(kOptionPhoto, arg1);
}

void Form_Idcard::on_checkBox_finger_stateChanged(int arg1)
{
    setOption(kOptionFinger, arg1);
}

void Form_Idcard::on_checkBox_compatible_stateChanged(int arg1)
{
    setOption(kOptionCompatible, arg1);
}

void Form_Idcard::on_checkBox_reread_stateChanged(int arg1)
{
    setOption(kOptionReread, arg1);
}

void Form_Idcard::on_checkBox_composite_stateChanged(int arg1)
{
    setOption(kOptionComposite, arg1);
    emit showHideImageDlg(arg1);
}

// The only working control of the stress-test group: its bit travels to the driver with the others.
void Form_Idcard::on_checkBox_stop_on_error_stateChanged(int arg1)
{
    setOption(kOptionStopOnError, arg1);
}

void Form_Idcard::clearCard()
{
    ui->label_image_photo->clear();
    ui->textEdit_idc_info->clear();
}

void Form_Idcard::buildPaths()
{
    const QByteArray directory = m_imageDirectory.toUtf8();
    const auto build = [&directory](Path &path, const char *file) {
        path.fill('\0');
        appendOrAbort(path, directory.constData());
        appendOrAbort(path, file);
    };
    build(m_photoPath, "/photo.jpg");
    build(m_frontPath, "/front.jpg");
    build(m_backPath, "/back.jpg");
}

void Form_Idcard::showText(QByteArray info)
{
    const IdcFields fields = splitIdcFields(info.data());
    ui->textEdit_idc_info->setPlainText(QString::fromUtf8(renderIdcFields(fields)));
}

void Form_Idcard::showPhoto()
{
    const QString path = QString::fromUtf8(m_photoPath.data());
    if (m_photo->load(path))
        ui->label_image_photo->setPixmap(QPixmap::fromImage(*m_photo));
    else if (m_photo->isNull())
        warn(this, "img_photo->isNull", path);
    emit updatePhotoImage(m_photo.get());
}

void Form_Idcard::showComposite()
{
    emit showHideImageDlg(1);
    const QString front = QString::fromUtf8(m_frontPath.data());
    if (m_front->load(front))
        emit updateFrontImage(m_front.get());
    else
        warn(this, "载入正面合成图像失败", front);

    const QString back = QString::fromUtf8(m_backPath.data());
    if (m_back->load(back))
        emit updateBackImage(m_back.get());
    else
        warn(this, "载入反面合成图像失败", back);
}

void Form_Idcard::setOption(std::uint32_t option, int checkState)
{
    if (checkState != 0)
        m_options |= option;
    else
        m_options &= ~option;
}
