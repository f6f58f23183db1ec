#include "pages/idcard/form_idcard.h"

#include "app/device_context.h"
#include "ui_form_idcard.h"

Form_Idcard::Form_Idcard(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Idcard), m_device(device)
{
    ui->setupUi(this);
}

Form_Idcard::~Form_Idcard()
{
    delete ui;
}
