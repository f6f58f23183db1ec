// The commands of the ID module on the ID card page.
#include "app/log_line.h"
#include "app/text_codec.h"
#include "pages/idcard/form_idcard.h"
#include "pages/idcard/idc_page_tag.h"
#include "sdk/entry_points.h"
#include "ui_form_idcard.h"

#include <algorithm>

namespace {

constexpr int kDumpBytesPerLine = 1024;

/// The four commands that read a text of at most `size` bytes. `field`, if there is one, shows it. `returnLine` takes
/// time, tag and result, `resultLine` time, tag and the text.
template <std::size_t size>
void readText(Form_Idcard &page, const DeviceContext &device, sdk::IdcrReadText *read, QLineEdit *field,
              const char *returnLine, const char *resultLine)
{
    emit page.addLog(separatorLine(kIdcPageTag));
    if (field != nullptr)
        field->clear();
    if (!deviceIsOpen(page, device, kIdcPageTag))
        return;
    std::array<char, size> buffer{};
    const int result = read(device.handle, timeoutMs(device), buffer.data());
    emit page.addLog(QString::asprintf(returnLine, logTime(), kIdcPageTag, result));
    if (result != 0)
        return;
    const QByteArray text = boundedText(buffer);
    if (field != nullptr)
        field->setText(QString::fromUtf8(text));
    emit page.addLog(QString::asprintf(resultLine, logTime(), kIdcPageTag, text.constData()));
}

/// Two decimal digits as a byte in BCD. Anything else, A to F too, counts as 0.
std::uint8_t bcdByte(QChar high, QChar low)
{
    const int value = (QString(high).toInt() & 0x0F) * 16 | QString(low).toInt();
    return static_cast<std::uint8_t>(value);
}

} // namespace

void Form_Idcard::on_pushButton_read_sam_id_clicked()
{
    // The return line names the UID call: logs are compared line by line with those of other tools.
    readText<sdk::kSamIdSize>(*this, *m_device, sdk::contract<vek_idcr_read_samid>(), ui->lineEdit_sam_id,
                              "[%s] [%s] vek_idcr_read_uid return[%d] (assert 0)", "[%s] [%s] SAM ID = [%s]");
}

void Form_Idcard::on_pushButton_read_phsy_id_clicked()
{
    readText<sdk::kIdUidSize>(*this, *m_device, sdk::contract<vek_idcr_read_uid>(), ui->lineEdit_phsy_id,
                              "[%s] [%s] vek_idcr_read_uid return[%d] (assert 0)", "[%s] [%s] 物理ID = [%s]");
}

void Form_Idcard::on_pushButton_read_dn_clicked()
{
    readText<sdk::kIdDnSize>(*this, *m_device, sdk::contract<vek_idcr_read_dn>(), nullptr,
                             "[%s] [%s] vek_idcr_read_dn return[%d] (assert 0)", "[%s] [%s] 身份证DN = [%s]");
}

void Form_Idcard::on_pushButton_read_emid_clicked()
{
    readText<sdk::kIdEmidSize>(*this, *m_device, sdk::contract<vek_idcr_read_emid>(), nullptr,
                               "[%s] [%s] vek_idcr_read_emid return[%d] (assert 0)", "[%s] [%s] EMID = [%s]");
}

void Form_Idcard::on_pushButton_command_aa_clicked()
{
    if (!beginAction(*this, *m_device, kIdcPageTag))
        return;
    const QString command = ui->lineEdit_command_aa->text();
    if (command.length() != 4) {
        emit addLog(QString::asprintf("[%s] [%s] AA指令格式错误, 应为4位！", logTime(), kIdcPageTag));
        return;
    }

    std::uint32_t statusWord = 0;
    std::array<std::uint8_t, sdk::kTransiveDataSize> reply{};
    constexpr int kCapacity = sdk::kTransiveDataSize;
    std::int32_t length = 0;
    const int result =
        sdk::call<vek_idcr_transive>(m_device->handle, timeoutMs(*m_device), bcdByte(command[0], command[1]),
                                     bcdByte(command[2], command[3]), &statusWord, reply.data(), kCapacity, &length);
    emit addLog(QString::asprintf("[%s] [%s] vek_idcr_transive return[%d] (assert 0)", logTime(), kIdcPageTag, result));
    if (result != 0)
        return;
    emit addLog(
        QString::asprintf("[%s] [%s] SW=[%08X], length=[%d].\r\nData={", logTime(), kIdcPageTag, statusWord, length));
    // The length is the driver's word: the dump stops at the buffer's end.
    const QByteArray dumped(reinterpret_cast<const char *>(reply.data()), std::clamp(length, 0, kCapacity));
    for (int offset = 0; offset < dumped.size(); offset += kDumpBytesPerLine)
        emit addLog(QString::fromLatin1(dumped.mid(offset, kDumpBytesPerLine).toHex().toUpper()));
    emit addLog("}");
}

// The separator belongs to the library and not to a device: no device is needed, and the log shows no separator line.
// Cards read afterwards are still split at "|" (splitIdcFields).
void Form_Idcard::on_pushButton_info_separator_clicked()
{
    const QString text = ui->lineEdit_separation->text();
    if (text.length() != 1) {
        emit addLog(QString::asprintf("[%s] [%s] 分隔符格式错误！正确的格式是单个字符，如：|、^、#、@ 等", logTime(),
                                      kIdcPageTag));
        return;
    }
    const char separator = text.toUtf8().at(0);
    sdk::call<vek_idcr_set_separation>(separator);
    emit addLog(QString::asprintf("[%s] [%s] 设置分隔符为 %c 成功", logTime(), kIdcPageTag, separator));
}
