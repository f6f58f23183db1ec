#pragma once

#include <QString>
#include <QWidget>

struct DeviceContext;
class Ui_Form_Info_Status_Indicator;

class Form_Info_Status_Indicator : public QWidget {
    Q_OBJECT

public:
    Form_Info_Status_Indicator(DeviceContext *device, QWidget *parent);
    ~Form_Info_Status_Indicator() override;

signals:
    void addLog(QString text);
    void changeBaudIndex(int index);

private:
    Ui_Form_Info_Status_Indicator *ui;
    DeviceContext *m_device;
};
