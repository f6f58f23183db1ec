// The window of the ID card's front and back pictures. By default it stands at the main window's right edge and goes
// with it.
#pragma once

#include <QDialog>
#include <QImage>
#include <QPoint>

class Ui_Dialog_idc_image_display;

class Dialog_idc_image_display : public QDialog {
    Q_OBJECT

public:
    explicit Dialog_idc_image_display(QWidget *parent);
    ~Dialog_idc_image_display() override;

public slots:
    void on_checkBox_idc_disp_follow_main_wnd_stateChanged(int arg1);
    void on_pushButton_idc_info_min_size_clicked();
    // A picture is shown in its own size, cropped by its label; a null pointer clears the label.
    void onUpdateFrontImage(QImage *path);
    void onUpdateBackImage(QImage *path);
    /// Does nothing: the ID card page itself shows the photo.
    void onUpdatePhotoImage(QImage *path);
    void onDlgShowHide(int show);
    /// Moves to the point, or drops it while the dialog does not follow.
    void onFollowWindow(QPoint *pos);

protected:
    /// Swallows every key, so that Escape does not close the dialog.
    void keyPressEvent(QKeyEvent *event) override;

private:
    Ui_Dialog_idc_image_display *ui;
    bool m_follows;
    QPoint m_dockingPosition;
};
