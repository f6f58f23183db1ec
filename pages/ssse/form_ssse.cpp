#include "pages/ssse/form_ssse.h"

#include "app/device_context.h"
#include "ui_form_ssse.h"

Form_ssse::Form_ssse(DeviceContext *device, QWidget *parent) : QWidget(parent), ui(new Ui_Form_ssse), m_device(device)
{
    ui->setupUi(this);
}

Form_ssse::~Form_ssse()
{
    delete ui;
}
