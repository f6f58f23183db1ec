// Social security card page: reads the issuer's and the holder's record and shows each in its text box.
#pragma once

#include <QString>
#include <QWidget>

#include <cstdint>

struct DeviceContext;
class Ui_Form_ssse;

class Form_ssse : public QWidget {
    Q_OBJECT

public:
    Form_ssse(DeviceContext *device, QWidget *parent);
    ~Form_ssse() override;

signals:
    void addLog(QString text);

private slots:
    void on_pushButton_gov_info_clicked();
    void on_pushButton_user_info_clicked();
    void on_pushButton_clear_ef05_clicked();
    void on_pushButton_clear_ef06_clicked();
    void on_radioButton_clicked();
    void on_radioButton_2_clicked();
    void on_radioButton_3_clicked();

private:
    Ui_Form_ssse *ui;
    DeviceContext *m_device;
    QString m_text;
    std::uint8_t m_slot;
};
