#include "pages/idcard/dialog_idc_image_display.h"

#include "ui_dialog_idc_image_display.h"

#include <QKeyEvent>

namespace {

void showImage(QLabel &label, const QImage *image)
{
    if (image != nullptr)
        label.setPixmap(QPixmap::fromImage(*image));
    else
        label.clear();
}

} // namespace

Dialog_idc_image_display::Dialog_idc_image_display(QWidget *parent)
    : QDialog(parent), ui(new Ui_Dialog_idc_image_display), m_follows(true), m_dockingPosition(0, 0)
{
    ui->setupUi(this);
    setWindowTitle("身份证正反面合成图像");
    // No close button: the dialog is hidden by its own button only.
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
    ui->checkBox_idc_disp_follow_main_wnd->setChecked(true);
}

Dialog_idc_image_display::~Dialog_idc_image_display()
{
    delete ui;
}

void Dialog_idc_image_display::on_checkBox_idc_disp_follow_main_wnd_stateChanged(int arg1)
{
    m_follows = arg1 != 0;
    if (m_follows)
        move(m_dockingPosition);
}

void Dialog_idc_image_display::on_pushButton_idc_info_min_size_clicked()
{
    hide();
}

void Dialog_idc_image_display::onUpdateFrontImage(QImage *path)
{
    showImage(*ui->label_image_front, path);
}

void Dialog_idc_image_display::onUpdateBackImage(QImage *path)
{
    showImage(*ui->label_image_back, path);
}

void Dialog_idc_image_display::onUpdatePhotoImage(QImage * /*path*/) {}

void Dialog_idc_image_display::onDlgShowHide(int show)
{
    setVisible(show != 0);
}

void Dialog_idc_image_display::onFollowWindow(QPoint *pos)
{
    if (!m_follows || pos == nullptr)
        return;
    m_dockingPosition = *pos;
    move(m_dockingPosition);
}

void Dialog_idc_image_display::keyPressEvent(QKeyEvent *event)
{
    (void)event->modifiers();
}
