#pragma once

#include <QString>
#include <QWidget>

struct DeviceContext;
class Ui_Form_Mag_Stripe;

class Form_Mag_Stripe : public QWidget {
    Q_OBJECT

public:
    Form_Mag_Stripe(DeviceContext *device, QWidget *parent);
    ~Form_Mag_Stripe() override;

signals:
    void addLog(QString text);

private:
    Ui_Form_Mag_Stripe *ui;
    DeviceContext *m_device;
};
