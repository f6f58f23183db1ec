#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

struct DeviceContext;
class Ui_Form_Idcard;

class Form_Idcard : public QWidget {
    Q_OBJECT

public:
    Form_Idcard(DeviceContext *device, QWidget *parent);
    ~Form_Idcard() override;

signals:
    void addLog(QString text);
    void updateFrontImage(QImage *path);
    void updateBackImage(QImage *path);
    void updatePhotoImage(QImage *path);
    void showHideImageDlg(int show);

private:
    Ui_Form_Idcard *ui;
    DeviceContext *m_device;
};
