#include "pages/mifare/form_mifare_card.h"

#include "app/log_line.h"
#include "app/text_codec.h"
#include "sdk/entry_points.h"
#include "ui_form_mifare_card.h"

#include <array>

namespace {

constexpr char kTag[] = "M1卡";

// A 1K card.
constexpr int kSectors = 16;
constexpr int kBlocksPerSector = 4;

} // namespace

Form_Mifare_Card::Form_Mifare_Card(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Mifare_Card), m_device(device), m_keyB(false), m_block(0)
{
    ui->setupUi(this);
    // The combo slots are connected by now and run while the combos fill: the stored block passes through -1 and
    // settles at 5 with the last line.
    for (int sector = 0; sector < kSectors; ++sector)
        ui->comboBox_mifare_sector_number->addItem(QString::number(sector));
    for (int blockInSector = 0; blockInSector < kBlocksPerSector; ++blockInSector)
        ui->comboBox_mifare_block_number->addItem(QString::number(blockInSector));
    ui->comboBox_mifare_block_number->setCurrentIndex(1);
    ui->comboBox_mifare_sector_number->setCurrentIndex(1);
    ui->radioButton_mifare_password_a->setChecked(true);
}

Form_Mifare_Card::~Form_Mifare_Card()
{
    delete ui;
}

void Form_Mifare_Card::setBlock(int sector, int blockInSector)
{
    m_block = blockInSector + sector * kBlocksPerSector;
    ui->lineEdit_mifare_block_number_abs->setText(QString::number(m_block));
}

/// The absolute block as the SDK takes it.
std::uint8_t Form_Mifare_Card::block() const
{
    return static_cast<std::uint8_t>(m_block);
}

/// Authentication and key change: the chosen sector and key type with the key in a field.
int Form_Mifare_Card::callWithKey(sdk::MifareKey *function, const QLineEdit &key) const
{
    const auto sector = static_cast<std::uint8_t>(ui->comboBox_mifare_sector_number->currentIndex());
    return function(m_device->handle, sector, m_keyB ? 'B' : 'A', key.text().toUtf8().constData());
}

/// Initialise, top up and deduct up to their return line. Nothing comes back when no device is open.
std::optional<int> Form_Mifare_Card::changeValue(sdk::MifareValue *function, const QLineEdit &field)
{
    emit addLog(separatorLine(kTag));
    const int value = field.text().toInt();
    if (!deviceIsOpen(*this, *m_device, kTag))
        return std::nullopt;
    return function(m_device->handle, block(), value);
}

void Form_Mifare_Card::on_pushButton_mifare_find_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    std::array<char, sdk::kMifareTypeSize> type{};
    std::array<char, sdk::kMifareUidSize> uid{};
    const int result = sdk::call<vek_mifare_request>(m_device->handle, static_cast<int>(timeoutMs(*m_device)),
                                                     type.data(), uid.data());
    emit addLog(QString::asprintf("[%s] [%s] vek_mifare_request return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result != 0) {
        ui->lineEdit_mifare_uid->clear();
        ui->lineEdit_mifare_card_type->clear();
        return;
    }
    const QByteArray uidText = boundedText(uid);
    const QByteArray typeText = boundedText(type);
    ui->lineEdit_mifare_uid->setText(QString::fromUtf8(uidText));
    ui->lineEdit_mifare_card_type->setText(QString::fromUtf8(typeText));
    emit addLog(
        QString::asprintf("[%s] [%s] TYPE[%s] UID = [%s]", logTime(), kTag, typeText.constData(), uidText.constData()));
}

void Form_Mifare_Card::on_pushButton_mifare_auth_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const int result = callWithKey(sdk::contract<vek_mifare_authentication>(), *ui->lineEdit_mifare_password);
    emit addLog(
        QString::asprintf("[%s] [%s] vek_mifare_authentication return[0x%X] (assert 0)", logTime(), kTag, result));
}

void Form_Mifare_Card::on_pushButton_mifare_change_password_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const int result = callWithKey(sdk::contract<vek_mifare_change_key>(), *ui->lineEdit_mifare_password_new);
    emit addLog(QString::asprintf("[%s] [%s] vek_mifare_change_key return[0x%X] (assert 0)", logTime(), kTag, result));
}

void Form_Mifare_Card::on_pushButton_mifare_read_block_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    std::array<char, sdk::kMifareBlockSize> blockData{};
    const int result = sdk::call<vek_mifare_read_block>(m_device->handle, block(), blockData.data());
    emit addLog(QString::asprintf("[%s] [%s] vek_mifare_read_block return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result != 0) {
        ui->lineEdit_mifare_block_data->clear();
        return;
    }
    const QByteArray text = boundedText(blockData);
    emit addLog(QString::asprintf("[%s] [%s] DATA = [%s]", logTime(), kTag, text.constData()));
    ui->lineEdit_mifare_block_data->setText(QString::fromUtf8(text));
}

void Form_Mifare_Card::on_pushButton_mifare_write_block_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const QByteArray newData = ui->lineEdit__mifare_block_data_new->text().toUtf8();
    const int result = sdk::call<vek_mifare_write_block>(m_device->handle, block(), newData.constData());
    emit addLog(QString::asprintf("[%s] [%s] vek_mifare_write_block return[0x%X] (assert 0)", logTime(), kTag, result));
}

void Form_Mifare_Card::on_pushButton_mifare_wallet_init_clicked()
{
    if (const auto result = changeValue(sdk::contract<vek_mifare_init_value>(), *ui->lineEdit_mifare_wallet_init))
        emit addLog(
            QString::asprintf("[%s] [%s] vek_mifare_init_value return[0x%X] (assert 0)", logTime(), kTag, *result));
}

void Form_Mifare_Card::on_pushButton_mifare_wallet_inc_clicked()
{
    if (const auto result = changeValue(sdk::contract<vek_mifare_increase_value>(), *ui->lineEdit_mifare_wallet_inc))
        emit addLog(
            QString::asprintf("[%s] [%s] vek_mifare_increase_value return[0x%X] (assert 0)", logTime(), kTag, *result));
}

void Form_Mifare_Card::on_pushButton_mifare_wallet_dec_clicked()
{
    if (const auto result = changeValue(sdk::contract<vek_mifare_decrease_value>(), *ui->lineEdit_mifare_wallet_dec))
        emit addLog(
            QString::asprintf("[%s] [%s] vek_mifare_decrease_value return[0x%X] (assert 0)", logTime(), kTag, *result));
}

void Form_Mifare_Card::on_pushButton_mifare_wallet_val_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    int value = 0;
    const int result = sdk::call<vek_mifare_read_value>(m_device->handle, block(), &value);
    emit addLog(QString::asprintf("[%s] [%s] vek_mifare_read_value return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result != 0) {
        ui->lineEdit_mifare_wallet_val->clear();
        return;
    }
    emit addLog(QString::asprintf("[%s] [%s] 余额 = [%d]", logTime(), kTag, value));
    ui->lineEdit_mifare_wallet_val->setText(QString::number(value));
}

void Form_Mifare_Card::on_checkBox_mifare_en_change_password_stateChanged(int arg1)
{
    ui->pushButton_mifare_change_password->setEnabled(arg1 != 0);
}

void Form_Mifare_Card::on_comboBox_mifare_sector_number_currentIndexChanged(int index)
{
    setBlock(index, ui->comboBox_mifare_block_number->currentIndex());
}

void Form_Mifare_Card::on_comboBox_mifare_block_number_currentIndexChanged(int index)
{
    setBlock(ui->comboBox_mifare_sector_number->currentIndex(), index);
}

void Form_Mifare_Card::on_radioButton_mifare_password_a_clicked()
{
    if (ui->radioButton_mifare_password_a->isChecked())
        m_keyB = false;
}

void Form_Mifare_Card::on_radioButton_mifare_password_b_clicked()
{
    if (ui->radioButton_mifare_password_b->isChecked())
        m_keyB = true;
}
