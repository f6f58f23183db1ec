#include "pages/status/form_info_status_indicator.h"

#include "app/device_context.h"
#include "ui_form_info_status_indicator.h"

Form_Info_Status_Indicator::Form_Info_Status_Indicator(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Info_Status_Indicator), m_device(device)
{
    ui->setupUi(this);
}

Form_Info_Status_Indicator::~Form_Info_Status_Indicator()
{
    delete ui;
}
