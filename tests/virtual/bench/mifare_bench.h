// The Mifare page over the virtual reader, for its two tests.
#pragma once

#include "pages/mifare/form_mifare_card.h"
#include "tests/virtual/bench/virtual_bench.h"

inline const QString kSeparator = BenchWindow::separator("M1卡");

inline constexpr char kDone[] = "0x0";
inline constexpr char kNoCardHere[] = "0xFFFFFFFD";
inline constexpr char kCardWent[] = "0xFFFFFFFC";
inline constexpr char kTimedOut[] = "0xFFFFFFFB";
inline constexpr char kWrongKey[] = "0xFFFFFFF4";
inline constexpr char kDenied[] = "0xFFFFFFF3";
inline constexpr char kNoValue[] = "0xFFFFFFF2";

/// The log of an action whose only line is the result of its call, "vek_mifare_" and `call`.
inline QStringList returned(const char *call, const char *code)
{
    return {kSeparator, QString("[M1卡] vek_mifare_%1 return[%2] (assert 0)").arg(call, code)};
}

class MifareBench : public VirtualBench {
public:
    MifareBench() { openDevice(); }

    Form_Mifare_Card *form() { return page<Form_Mifare_Card>(); }
    QStringList pressed(const char *button) { return logOf(button, form()); }

    /// Chooses the sector and the block in it.
    void choose(int sector, int block)
    {
        form();
        widget<QComboBox>("comboBox_mifare_sector_number")->setCurrentIndex(sector);
        widget<QComboBox>("comboBox_mifare_block_number")->setCurrentIndex(block);
    }

    QStringList find() { return pressed("pushButton_mifare_find"); }
    QStringList authenticate() { return pressed("pushButton_mifare_auth"); }
    QStringList authenticate(char type, const QString &key)
    {
        press(type == 'A' ? "radioButton_mifare_password_a" : "radioButton_mifare_password_b", form());
        this->type("lineEdit_mifare_password", key, form());
        return authenticate();
    }
    QStringList read() { return pressed("pushButton_mifare_read_block"); }
    QStringList write(const QString &data)
    {
        type("lineEdit__mifare_block_data_new", data, form());
        return pressed("pushButton_mifare_write_block");
    }
    QStringList changeKey(const QString &key)
    {
        auto *const allowed = widget<QAbstractButton>("checkBox_mifare_en_change_password", form());
        if (!allowed->isChecked())
            press("checkBox_mifare_en_change_password", form());
        type("lineEdit_mifare_password_new", key, form());
        return pressed("pushButton_mifare_change_password");
    }
    QStringList value(const char *which, const QString &amount)
    {
        const QByteArray name = QByteArray("mifare_wallet_") + which;
        type(("lineEdit_" + name).constData(), amount, form());
        return pressed(("pushButton_" + name).constData());
    }
    QStringList balance() { return pressed("pushButton_mifare_wallet_val"); }

    /// An absolute block as the card's file has it.
    QString stored(int block)
    {
        return QString::fromStdString(cardIn(Slot::Antenna).at("blocks").at(static_cast<std::size_t>(block)));
    }
};

inline QStringList dataRead(const QString &data)
{
    return returned("read_block", kDone) << "[M1卡] DATA = [" + data + "]";
}

inline QStringList balanceRead(int amount)
{
    return returned("read_value", kDone) << QString("[M1卡] 余额 = [%1]").arg(amount);
}
