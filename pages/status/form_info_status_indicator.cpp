#include "pages/status/form_info_status_indicator.h"

#include "app/log_line.h"
#include "app/text_codec.h"
#include "sdk/entry_points.h"
#include "ui_form_info_status_indicator.h"

#include <QButtonGroup>

#include <algorithm>
#include <array>

namespace {

constexpr char kTag[] = "状态指示";

constexpr std::array<int, 8> kBaudRates{9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};

constexpr int kStartBaudIndex = 4;

// Baud modes of vek_set_baud.
constexpr std::uint8_t kBaudTemporary = 0;
constexpr std::uint8_t kBaudDefault = 1;

} // namespace

Form_Info_Status_Indicator::Form_Info_Status_Indicator(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Info_Status_Indicator), m_device(device), m_baudMode(kBaudTemporary)
{
    ui->setupUi(this);
    ui->comboBox_set_baud->setCurrentIndex(kStartBaudIndex);
    ui->lineEdit_on_time->setText("1");
    ui->lineEdit_off_time->setText("1");
    ui->lineEdit_beep_times->setText("3");

    auto *baudModes = new QButtonGroup(this);
    baudModes->addButton(ui->radioButton_baud_temp, 0);
    baudModes->addButton(ui->radioButton_baud_default, 1);
    ui->radioButton_baud_temp->setChecked(true);
}

Form_Info_Status_Indicator::~Form_Info_Status_Indicator()
{
    delete ui;
}

void Form_Info_Status_Indicator::on_pushButton_firm_version_clicked()
{
    emit addLog(separatorLine(kTag));
    ui->lineEdit_frim_version->clear();
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    std::array<char, sdk::kFirmVersionSize> version{};
    std::uint32_t length = 0;
    const int result = sdk::call<vek_firm_version>(m_device->handle, version.data(), &length);
    emit addLog(QString::asprintf("[%s] [%s] vek_firm_version return[%d] (assert 0)", logTime(), kTag, result));
    if (result != 0)
        return;
    const QByteArray text = boundedText(version);
    ui->lineEdit_frim_version->setText(QString::fromUtf8(text));
    ui->lineEdit_frim_version->setCursorPosition(0); // a long text is shown from its beginning
    emit addLog(QString::asprintf("[%s] [%s] firm_version [%s]", logTime(), kTag, text.constData()));
}

void Form_Info_Status_Indicator::on_pushButton_beep_clicked()
{
    emit addLog(separatorLine(kTag));
    const int times = ui->lineEdit_beep_times->text().toInt();
    const int onTime = ui->lineEdit_on_time->text().toInt();
    const int offTime = ui->lineEdit_off_time->text().toInt();
    if (times == 0 || onTime == 0 || offTime == 0) {
        emit addLog(QString::asprintf("[%s] [%s] 输入参数不正确！", logTime(), kTag));
        return;
    }
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    const int result = sdk::call<vek_beep>(m_device->handle, onTime, offTime, times);
    emit addLog(QString::asprintf("[%s] [%s] vek_beep return[%d] (assert 0)", logTime(), kTag, result));
}

void Form_Info_Status_Indicator::on_pushButton_set_baud_clicked()
{
    emit addLog(separatorLine(kTag));
    const int baud = ui->comboBox_set_baud->currentText().toInt();
    const auto *const rate = std::find(kBaudRates.begin(), kBaudRates.end(), baud);
    if (rate == kBaudRates.end()) {
        emit addLog(QString::asprintf("[%s] [%s] 未执行，不支持的波特率！", logTime(), kTag));
        return;
    }
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    const int result = sdk::call<vek_set_baud>(m_device->handle, baud, m_baudMode);
    if (result != 0) {
        emit addLog(QString::asprintf("[%s] [%s] vek_set_baud return[%d] (assert 0)", logTime(), kTag, result));
        return;
    }
    emit changeBaudIndex(static_cast<int>(rate - kBaudRates.begin()));
    emit addLog(
        QString::asprintf("[%s] [%s] vek_set_baud return[%d] (assert 0), \r\n更新波特率成功, 不需要重新打开设备",
                          logTime(), kTag, result));
}

void Form_Info_Status_Indicator::on_radioButton_baud_temp_clicked()
{
    m_baudMode = kBaudTemporary;
}

void Form_Info_Status_Indicator::on_radioButton_baud_default_clicked()
{
    m_baudMode = kBaudDefault;
}
