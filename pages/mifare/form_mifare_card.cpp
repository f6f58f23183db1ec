#include "pages/mifare/form_mifare_card.h"

#include "app/device_context.h"
#include "ui_form_mifare_card.h"

Form_Mifare_Card::Form_Mifare_Card(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Mifare_Card), m_device(device)
{
    ui->setupUi(this);
}

Form_Mifare_Card::~Form_Mifare_Card()
{
    delete ui;
}
