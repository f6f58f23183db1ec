// Device information and status page: firmware version, beeper, baud rate of a serial reader.
#pragma once

#include <QString>
#include <QWidget>

#include <cstdint>

struct DeviceContext;
class Ui_Form_Info_Status_Indicator;

class Form_Info_Status_Indicator : public QWidget {
    Q_OBJECT

public:
    Form_Info_Status_Indicator(DeviceContext *device, QWidget *parent);
    ~Form_Info_Status_Indicator() override;

signals:
    void addLog(QString text);
    /// The reader now uses another baud rate: its index in the list of supported rates, of which the window's own
    /// combo offers only the first five.
    void changeBaudIndex(int index);

private slots:
    void on_pushButton_firm_version_clicked();
    void on_pushButton_beep_clicked();
    void on_pushButton_set_baud_clicked();
    void on_radioButton_baud_temp_clicked();
    void on_radioButton_baud_default_clicked();

private:
    Ui_Form_Info_Status_Indicator *ui;
    DeviceContext *m_device;
    QString m_text;
    std::uint8_t m_baudMode;
};
