#include "pages/cpucard/form_cpu_iccard.h"

#include "app/log_line.h"
#include "app/text_codec.h"
#include "sdk/entry_points.h"
#include "ui_form_cpu_iccard.h"

#include <QButtonGroup>

#include <array>

namespace {

constexpr char kTag[] = "IC卡";

constexpr std::uint8_t kCardCame = 3;
constexpr std::uint8_t kCardLeft = 2;

const char *fieldStateWord(std::uint8_t state)
{
    switch (state) {
    case kCardCame:
        return "进场";
    case kCardLeft:
        return "出场";
    default:
        return "保持";
    }
}

/// The command as the driver gets it: upper case, no blanks, line breaks or tabs. Whether it is hexadecimal is the
/// driver's business.
QString cleanedApdu(const QString &typed)
{
    return typed.toUpper().remove(' ').remove('\r').remove('\n').remove('\t');
}

/// The PBOC calls take 16 bits of time-out: above 65 seconds it wraps.
std::uint16_t pbocTimeoutMs(const DeviceContext &device)
{
    return static_cast<std::uint16_t>(timeoutMs(device));
}

} // namespace

Form_CPU_Iccard::Form_CPU_Iccard(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_CPU_Iccard), m_device(device), m_slot(sdk::kSlotAutomatic)
{
    ui->setupUi(this);
    // The ids are no slot codes: contactless has id 1 and code 0xFF. Each button's own slot sets the code.
    auto *cardTypes = new QButtonGroup(this);
    cardTypes->addButton(ui->radioButton, 0);
    cardTypes->addButton(ui->radioButton_2, 1);
    cardTypes->addButton(ui->radioButton_3, 2);
    cardTypes->addButton(ui->radioButton_4, 16);
    cardTypes->addButton(ui->radioButton_5, 17);
    cardTypes->addButton(ui->radioButton_6, 18);
    cardTypes->addButton(ui->radioButton_7, 19);
    ui->radioButton_3->setChecked(true);
}

Form_CPU_Iccard::~Form_CPU_Iccard()
{
    delete ui;
}

void Form_CPU_Iccard::on_pushButton_cpucard_status_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const int result = sdk::call<vek_icc_status>(m_device->handle, m_slot);
    emit addLog(QString::asprintf("[%s] [%s] vek_icc_status return[0x%X]", logTime(), kTag, result));
}

void Form_CPU_Iccard::on_radioButton_clicked()
{
    m_slot = sdk::kSlotContact;
}

void Form_CPU_Iccard::on_radioButton_2_clicked()
{
    m_slot = sdk::kSlotContactless;
}

void Form_CPU_Iccard::on_radioButton_3_clicked()
{
    m_slot = sdk::kSlotAutomatic;
}

void Form_CPU_Iccard::on_radioButton_4_clicked()
{
    m_slot = sdk::kSlotPsam1;
}

void Form_CPU_Iccard::on_radioButton_5_clicked()
{
    m_slot = sdk::kSlotPsam2;
}

void Form_CPU_Iccard::on_radioButton_6_clicked()
{
    m_slot = sdk::kSlotPsam3;
}

void Form_CPU_Iccard::on_radioButton_7_clicked()
{
    m_slot = sdk::kSlotPsam4;
}

void Form_CPU_Iccard::on_pushButton_cpucard_poweron_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    std::array<char, sdk::kAtrSize> atr{};
    std::uint32_t length = 0;
    const int result = sdk::call<vek_icc_poweron>(m_device->handle, m_slot, timeoutMs(*m_device), atr.data(), &length);
    emit addLog(QString::asprintf("[%s] [%s] vek_icc_poweron return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        emit addLog(QString::asprintf("[%s] [%s] ATR = [%s]", logTime(), kTag, boundedText(atr).constData()));
}

void Form_CPU_Iccard::on_pushButton_cpucard_apdu_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const QString text = cleanedApdu(ui->lineEdit_apdu->text());
    const QByteArray command = text.toUtf8();
    emit addLog(QString::asprintf("[%s] [%s] send APDU=[%s]", logTime(), kTag, command.constData()));

    std::array<char, sdk::kApduReplySize> reply{};
    std::uint32_t length = 0;
    const int result = sdk::call<vek_icc_apdu>(m_device->handle, m_slot, command.constData(),
                                               static_cast<std::uint32_t>(text.length()), reply.data(), &length);
    emit addLog(QString::asprintf("[%s] [%s] vek_icc_apdu return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        emit addLog(QString::asprintf("[%s] [%s] recv RPDU=[%s]", logTime(), kTag, boundedText(reply).constData()));
}

void Form_CPU_Iccard::on_pushButton_cpucard_poweroff_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const int result = sdk::call<vek_icc_poweroff>(m_device->handle, m_slot, timeoutMs(*m_device));
    emit addLog(QString::asprintf("[%s] [%s] vek_icc_poweroff return[0x%X] (assert 0)", logTime(), kTag, result));
}

void Form_CPU_Iccard::on_pushButton_pboc_taglist_common_clicked()
{
    ui->lineEdit_pboc_taglist->setText("ACDEIJ");
}

void Form_CPU_Iccard::on_pushButton_pboc_taglist_whole_clicked()
{
    ui->lineEdit_pboc_taglist->setText("ABCDEFGHIJKLMNOPQ");
}

void Form_CPU_Iccard::on_pushButton_pboc_readinfo_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const QByteArray tags = ui->lineEdit_pboc_taglist->text().toUtf8();
    emit addLog(QString::asprintf("[%s] [%s] taglist=[%s]", logTime(), kTag, tags.constData()));

    const QByteArray aid = ui->lineEdit_pboc_aid->text().toUtf8();
    std::uint8_t interfaceUsed = 0;
    std::array<char, sdk::kPbocResultSize> info{};
    std::uint16_t length = 0;
    constexpr std::uint8_t kFlag = 1;
    const int result =
        sdk::call<vek_pboc_get_card_info>(m_device->handle, m_slot, pbocTimeoutMs(*m_device), aid.constData(),
                                          tags.constData(), &interfaceUsed, info.data(), &length, kFlag);
    emit addLog(QString::asprintf("[%s] [%s] vek_pboc_get_card_info return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        emit addLog(QString::asprintf("[%s] [%s] info=[%s]", logTime(), kTag, boundedText(info).constData()));
}

void Form_CPU_Iccard::on_pushButton_pboc_arqc_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    const QString text = ui->lineEdit_pboc_arqc->text();
    const QByteArray transaction = text.toUtf8();
    emit addLog(QString::asprintf("[%s] [%s] txdata=[%s]", logTime(), kTag, transaction.constData()));

    const QByteArray aid = ui->lineEdit_pboc_aid->text().toUtf8();
    std::array<char, sdk::kPbocResultSize> arqc{};
    std::uint16_t length = 0;
    constexpr int kConstant = 10;
    constexpr std::uint8_t kFlag = 0;
    const int result =
        sdk::call<vek_pboc_get_arqc>(m_device->handle, m_slot, pbocTimeoutMs(*m_device), aid.constData(), kConstant,
                                     transaction.constData(), text.length(), arqc.data(), &length, kFlag);
    emit addLog(QString::asprintf("[%s] [%s] vek_pboc_get_arqc return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        emit addLog(QString::asprintf("[%s] [%s] ARQC=[%s]", logTime(), kTag, boundedText(arqc).constData()));
}

// The next three buttons are laid out and do nothing.

void Form_CPU_Iccard::on_pushButton_pboc_arpc_clicked() {}

void Form_CPU_Iccard::on_pushButton_pboc_trans_detail_clicked() {}

void Form_CPU_Iccard::on_pushButton_pboc_load_detail_clicked() {}

void Form_CPU_Iccard::on_pushButton_rf_probe_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    std::uint8_t state = 0;
    std::uint8_t type = 0;
    const int result = sdk::call<vek_probe_rf>(m_device->handle, &state, &type);
    emit addLog(QString::asprintf("[%s] [%s] vek_probe_rf return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        emit addLog(
            QString::asprintf("[%s] [%s] RF Card [%s] , type=[%02X]", logTime(), kTag, fieldStateWord(state), type));
}
