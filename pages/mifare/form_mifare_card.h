#pragma once

#include <QString>
#include <QWidget>

struct DeviceContext;
class Ui_Form_Mifare_Card;

class Form_Mifare_Card : public QWidget {
    Q_OBJECT

public:
    Form_Mifare_Card(DeviceContext *device, QWidget *parent);
    ~Form_Mifare_Card() override;

signals:
    void addLog(QString text);

private:
    Ui_Form_Mifare_Card *ui;
    DeviceContext *m_device;
};
