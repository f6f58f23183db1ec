#pragma once

#include <QDialog>
#include <QImage>
#include <QPoint>

class Ui_Dialog_idc_image_display;

class Dialog_idc_image_display : public QDialog {
    Q_OBJECT

public:
    explicit Dialog_idc_image_display(QWidget *parent);

public slots:
    void onUpdateFrontImage(QImage *path);
    void onUpdateBackImage(QImage *path);
    void onUpdatePhotoImage(QImage *path);
    void onDlgShowHide(int show);
    void onFollowWindow(QPoint *pos);
};
