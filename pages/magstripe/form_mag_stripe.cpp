#include "pages/magstripe/form_mag_stripe.h"

#include "app/device_context.h"
#include "ui_form_mag_stripe.h"

Form_Mag_Stripe::Form_Mag_Stripe(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Mag_Stripe), m_device(device)
{
    ui->setupUi(this);
}

Form_Mag_Stripe::~Form_Mag_Stripe()
{
    delete ui;
}
