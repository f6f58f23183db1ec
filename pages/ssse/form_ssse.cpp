#include "pages/ssse/form_ssse.h"

#include "app/log_line.h"
#include "app/text_codec.h"
#include "pages/ssse/ssse_record.h"
#include "sdk/entry_points.h"
#include "ui_form_ssse.h"

#include <QButtonGroup>

#include <array>

namespace {

constexpr char kTag[] = "社保卡";

constexpr int kReadConstant = 1;

} // namespace

Form_ssse::Form_ssse(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_ssse), m_device(device), m_slot(sdk::kSlotAutomatic)
{
    ui->setupUi(this);
    // The ids are no slot codes: contactless has id 1 and code 0xFF. Each button's own slot sets the code.
    auto *cardTypes = new QButtonGroup(this);
    cardTypes->addButton(ui->radioButton, 0);
    cardTypes->addButton(ui->radioButton_2, 1);
    cardTypes->addButton(ui->radioButton_3, 2);
    ui->radioButton_3->setChecked(true);
}

Form_ssse::~Form_ssse()
{
    delete ui;
}

void Form_ssse::on_pushButton_gov_info_clicked()
{
    ui->textEdit_ef05->clear();
    if (!beginAction(*this, *m_device, kTag))
        return;
    std::array<char, sdk::kSsseRecordSize> record{};
    const int result = sdk::call<vek_ssse_get_issuer_info>(m_device->handle, m_slot, timeoutMs(*m_device),
                                                           record.data(), kReadConstant);
    emit addLog(
        QString::asprintf("[%s] [%s] vek_ssse_get_issuer_info return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        ui->textEdit_ef05->setPlainText(issuerText(boundedText(record)));
}

void Form_ssse::on_pushButton_user_info_clicked()
{
    ui->textEdit_ef06->clear();
    if (!beginAction(*this, *m_device, kTag))
        return;
    std::array<char, sdk::kSsseRecordSize> record{};
    const int result =
        sdk::call<vek_ssse_get_user_info>(m_device->handle, m_slot, timeoutMs(*m_device), record.data(), kReadConstant);
    emit addLog(QString::asprintf("[%s] [%s] vek_ssse_get_user_info return[0x%X] (assert 0)", logTime(), kTag, result));
    if (result == 0)
        ui->textEdit_ef06->setPlainText(holderText(boundedText(record)));
}

void Form_ssse::on_pushButton_clear_ef05_clicked()
{
    ui->textEdit_ef05->clear();
}

void Form_ssse::on_pushButton_clear_ef06_clicked()
{
    ui->textEdit_ef06->clear();
}

void Form_ssse::on_radioButton_clicked()
{
    m_slot = sdk::kSlotContact;
}

void Form_ssse::on_radioButton_2_clicked()
{
    m_slot = sdk::kSlotContactless;
}

void Form_ssse::on_radioButton_3_clicked()
{
    m_slot = sdk::kSlotAutomatic;
}
