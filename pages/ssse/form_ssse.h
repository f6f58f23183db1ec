#pragma once

#include <QString>
#include <QWidget>

struct DeviceContext;
class Ui_Form_ssse;

class Form_ssse : public QWidget {
    Q_OBJECT

public:
    Form_ssse(DeviceContext *device, QWidget *parent);
    ~Form_ssse() override;

signals:
    void addLog(QString text);

private:
    Ui_Form_ssse *ui;
    DeviceContext *m_device;
};
