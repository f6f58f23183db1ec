#include "pages/idcard/dialog_idc_image_display.h"

Dialog_idc_image_display::Dialog_idc_image_display(QWidget *parent) : QDialog(parent) {}
void Dialog_idc_image_display::onUpdateFrontImage(QImage * /*path*/) {}
void Dialog_idc_image_display::onUpdateBackImage(QImage * /*path*/) {}
void Dialog_idc_image_display::onUpdatePhotoImage(QImage * /*path*/) {}
void Dialog_idc_image_display::onDlgShowHide(int /*show*/) {}
void Dialog_idc_image_display::onFollowWindow(QPoint * /*pos*/) {}
