// The widgets of the picture dialog as a plain panel without behaviour, for embedding. Nothing in the program makes
// one.
#pragma once

#include <QWidget>

class Ui_Form_Idc_info_display;

class Form_Idc_info_display : public QWidget {
    Q_OBJECT

public:
    explicit Form_Idc_info_display(QWidget *parent);
    ~Form_Idc_info_display() override;

private:
    Ui_Form_Idc_info_display *ui;
};
