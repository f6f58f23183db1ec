// The driver row and the communication group: load a library, find readers, open one, close it.
#include "app/main_window.h"

#include "app/log_line.h"
#include "sdk/entry_points.h"
#include "sdk/loader.h"
#include "ui_main_window.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kTag[] = "主界面";

/// How "enumerate all" names the transports in its lines, by transport code - 1.
constexpr std::array<const char *, 4> kTransportNames{"HID", "串口", "PCSC", "SDT"};

constexpr int kSdtPorts = 16;

QString helpText(const char *text)
{
    return QStringLiteral(
               "<html><head/><body><p><span style=\" font-size:10pt; color:#0000ff;\">%1</span></p></body></html>")
        .arg(QString::fromUtf8(text));
}

/// By transport code - 1.
constexpr std::array<const char *, 4> kHelpTexts{
    "USB多功能读卡器,具体功能取决于硬件配置",
    "串口多功能读卡器, 具体功能取决于硬件配置",
    "PC/SC智能卡读卡器",
    "部标SDT设备, "
    "仅支持读取身份证卡面信息和读取模块码。端口SDT0001~0016是串口设备，对应于COM1~COM16；SDT1001~1016是USB设备",
};

QString sdtPortName(int number)
{
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "SDT%04d", number);
    return QString::fromLatin1(name.data());
}

} // namespace

void MainWindow::on_pushButton_select_driver_clicked()
{
    sdk::setLibraryName(ui->comboBox_select_driver->currentText().toUtf8().constData());
    sdk::load();
    setDriverLoaded(sdk::isInitialized() == 1);
}

void MainWindow::on_pushButton_unload_driver_clicked()
{
    sdk::unload();
    setDriverLoaded(false);
}

void MainWindow::setDriverLoaded(bool loaded)
{
    ui->comboBox_select_driver->setEnabled(!loaded);
    ui->pushButton_select_driver->setEnabled(!loaded);
    ui->pushButton_unload_driver->setEnabled(loaded);
    ui->groupBox_config->setEnabled(loaded);
    ui->tabWidget->setEnabled(loaded);
    ui->label_device_info->setEnabled(loaded);
    // The pressed button may be disabled now. Left to itself the focus would go on to the log, where keys write.
    (loaded ? ui->pushButton_unload_driver : ui->pushButton_select_driver)->setFocus();
}

void MainWindow::setTransport(int transport)
{
    m_device.transport = transport;
    ui->label_device_info->setText(helpText(kHelpTexts.at(static_cast<std::size_t>(transport - 1))));
}

void MainWindow::on_radioButton_usb_clicked()
{
    setTransport(sdk::kTransportUsb);
}

void MainWindow::on_radioButton_serial_clicked()
{
    setTransport(sdk::kTransportSerial);
}

void MainWindow::on_radioButton_pcsc_clicked()
{
    setTransport(sdk::kTransportPcsc);
}

void MainWindow::on_radioButton_sdt_clicked()
{
    setTransport(sdk::kTransportSdt);
    ui->comboBox_select_device->clear();
    for (int port = 1; port <= kSdtPorts; ++port) {
        ui->comboBox_select_device->addItem(sdtPortName(port + 1000));
        ui->comboBox_select_device->addItem(sdtPortName(port));
    }
    ui->comboBox_select_device->setCurrentIndex(0);
}

void MainWindow::on_lineEdit_timeout_textChanged(const QString &arg1)
{
    bool isNumber = false;
    const int seconds = arg1.toInt(&isNumber);
    if (isNumber)
        m_device.timeoutSeconds = seconds;
}

void MainWindow::on_pushButton_enum_select_clicked()
{
    emit addLog(separatorLine(kTag));
    ui->comboBox_select_device->clear();

    char *list = nullptr;
    const int count = sdk::call<vek_enum_devices>(m_device.transport, &list);
    emit addLog(QString::asprintf("[%s] [%s] vek_enum_devices 检索到%d个设备.", logTime(), kTag, count));
    if (count < 1)
        return;
    addDevices(list, 1);
}

void MainWindow::on_pushButton_enum_all_clicked()
{
    emit addLog(separatorLine(kTag));
    ui->comboBox_select_device->clear();

    int number = 1;
    for (const int transport : {sdk::kTransportUsb, sdk::kTransportSerial}) {
        char *list = nullptr;
        const int count = sdk::call<vek_enum_devices>(transport, &list);
        emit addLog(QString::asprintf("[%s] [%s] vek_enum_devices 检索到%d个%s设备.", logTime(), kTag, count,
                                      kTransportNames.at(static_cast<std::size_t>(transport - 1))));
        if (count < 1)
            continue;
        number = addDevices(list, number);
    }
}

/// Shows the devices of a list, each name ended by "|" or by the end of the text, and releases it. A driver may report
/// devices and still leave the list null. Returns the number that follows the last device's.
int MainWindow::addDevices(char *list, int firstNumber)
{
    ui->pushButton_open_default->setEnabled(true);
    emit addLog(QString::asprintf("[%s] [%s] 设备列表[%s].", logTime(), kTag, list != nullptr ? list : ""));

    int number = firstNumber;
    char *name = list;
    while (name != nullptr && *name != '\0') {
        char *const end = std::strchr(name, '|');
        if (end != nullptr)
            *end = '\0';
        ui->comboBox_select_device->addItem(QString::fromUtf8(name));
        emit addLog(QString::asprintf("[%s] [%s] 设备%d [%s].", logTime(), kTag, number, name));
        ++number;
        name = end != nullptr ? end + 1 : nullptr;
    }

    ui->comboBox_select_device->setCurrentIndex(0);
    sdk::call<vek_free_list>(list);
    return number;
}

void MainWindow::on_pushButton_open_select_clicked()
{
    emit addLog(separatorLine(kTag));
    const QByteArray name = ui->comboBox_select_device->currentText().toUtf8();
    if (name.isEmpty()) {
        emit addLog(QString::asprintf("[%s] [%s] 没有可以打开的设备！", logTime(), kTag));
        return;
    }
    const int baud = ui->comboBox_baud->currentText().toInt();
    showOpenResult(sdk::call<vek_open>(name.constData(), 0, baud));
}

void MainWindow::on_pushButton_open_default_clicked()
{
    emit addLog(separatorLine(kTag));
    showOpenResult(sdk::call<vek_open>(nullptr, 0, 0));
}

void MainWindow::showOpenResult(std::int64_t handle)
{
    m_device.handle = handle;
    if (handle == 0) {
        ui->lineEdit_handle->clear();
        emit addLog(QString::asprintf("[%s] [%s] vek_open 打开设备失败！return[%lXH]", logTime(), kTag, 0UL));
        return;
    }
    const auto shown = static_cast<unsigned long>(handle);
    emit addLog(QString::asprintf("[%s] [%s] vek_open 打开设备成功！return[%lXH]", logTime(), kTag, shown));
    setDeviceOpen(true);
    std::array<char, 256> text{};
    std::snprintf(text.data(), text.size(), "%lXH", shown);
    ui->lineEdit_handle->setText(QString::fromLatin1(text.data()));
}

void MainWindow::on_pushButton_close_clicked()
{
    emit addLog(separatorLine(kTag));
    const int result = sdk::call<vek_close>(m_device.handle, 0);
    setDeviceOpen(false);
    m_device.handle = 0;
    ui->lineEdit_handle->clear();
    emit addLog(QString::asprintf("[%s] [%s] vek_close return[%d].", logTime(), kTag, result));
}

void MainWindow::setDeviceOpen(bool open)
{
    ui->pushButton_open_select->setEnabled(!open);
    ui->pushButton_open_default->setEnabled(!open);
    ui->comboBox_baud->setEnabled(!open);
    ui->comboBox_select_device->setEnabled(!open);
    ui->pushButton_close->setEnabled(open);
}
