// IC card page: slot choice, status, power, APDU, RF probe, and the PBOC group.
#pragma once

#include <QString>
#include <QWidget>

#include <cstdint>

struct DeviceContext;
class Ui_Form_CPU_Iccard;

class Form_CPU_Iccard : public QWidget {
    Q_OBJECT

public:
    Form_CPU_Iccard(DeviceContext *device, QWidget *parent);
    ~Form_CPU_Iccard() override;

signals:
    void addLog(QString text);

private slots:
    void on_pushButton_cpucard_status_clicked();
    void on_radioButton_clicked();
    void on_radioButton_2_clicked();
    void on_radioButton_3_clicked();
    void on_radioButton_4_clicked();
    void on_radioButton_5_clicked();
    void on_radioButton_6_clicked();
    void on_radioButton_7_clicked();
    void on_pushButton_cpucard_poweron_clicked();
    void on_pushButton_cpucard_apdu_clicked();
    void on_pushButton_cpucard_poweroff_clicked();
    void on_pushButton_pboc_taglist_common_clicked();
    void on_pushButton_pboc_taglist_whole_clicked();
    void on_pushButton_pboc_readinfo_clicked();
    void on_pushButton_pboc_arqc_clicked();
    void on_pushButton_pboc_arpc_clicked();
    void on_pushButton_pboc_trans_detail_clicked();
    void on_pushButton_pboc_load_detail_clicked();
    void on_pushButton_rf_probe_clicked();

private:
    Ui_Form_CPU_Iccard *ui;
    DeviceContext *m_device;
    QString m_text; ///< stays empty
    std::uint8_t m_slot;
};
