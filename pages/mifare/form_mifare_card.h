// Mifare card page: find a card, authenticate a sector, change its key, read and write blocks, and the value wallet.
#pragma once

#include "sdk/contracts.h"

#include <QWidget>

#include <optional>

struct DeviceContext;
class QLineEdit;
class Ui_Form_Mifare_Card;

class Form_Mifare_Card : public QWidget {
    Q_OBJECT

public:
    Form_Mifare_Card(DeviceContext *device, QWidget *parent);
    ~Form_Mifare_Card() override;

signals:
    void addLog(QString text);

private slots:
    void on_pushButton_mifare_find_clicked();
    void on_pushButton_mifare_auth_clicked();
    void on_pushButton_mifare_read_block_clicked();
    void on_pushButton_mifare_write_block_clicked();
    void on_pushButton_mifare_wallet_init_clicked();
    void on_pushButton_mifare_wallet_inc_clicked();
    void on_pushButton_mifare_wallet_dec_clicked();
    void on_pushButton_mifare_wallet_val_clicked();
    void on_checkBox_mifare_en_change_password_stateChanged(int arg1);
    void on_comboBox_mifare_sector_number_currentIndexChanged(int index);
    void on_comboBox_mifare_block_number_currentIndexChanged(int index);
    void on_radioButton_mifare_password_a_clicked();
    void on_radioButton_mifare_password_b_clicked();
    void on_pushButton_mifare_change_password_clicked();

private:
    void setBlock(int sector, int blockInSector);
    std::uint8_t block() const;
    int callWithKey(sdk::MifareKey *function, const QLineEdit &key) const;
    std::optional<int> changeValue(sdk::MifareValue *function, const QLineEdit &field);

    Ui_Form_Mifare_Card *ui;
    DeviceContext *m_device;
    bool m_keyB;
    int m_block;
};
