#include "pages/idcard/form_idc_info_display.h"

#include "ui_form_idc_info_display.h"

Form_Idc_info_display::Form_Idc_info_display(QWidget *parent) : QWidget(parent), ui(new Ui_Form_Idc_info_display)
{
    ui->setupUi(this);
}

Form_Idc_info_display::~Form_Idc_info_display()
{
    delete ui;
}
