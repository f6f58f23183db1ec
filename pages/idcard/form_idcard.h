// ID card page: reads a card with its photo and its front and back pictures; the commands of the ID module.
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

#include <array>
#include <cstdint>
#include <memory>

struct DeviceContext;
class QLineEdit;
class Ui_Form_Idcard;

class Form_Idcard : public QWidget {
    Q_OBJECT

public:
    /// Makes the picture folder "vek_idcard_images" in the user's home, readable by its owner alone. `device` is read
    /// on every action and must outlive the page.
    Form_Idcard(DeviceContext *device, QWidget *parent);

    /// Removes the picture folder with all that is in it.
    ~Form_Idcard() override;

signals:
    void addLog(QString text);
    // The pictures stay the page's own: copy or draw them at once. A photo that did not load is a null picture.
    void updateFrontImage(QImage *path);
    void updateBackImage(QImage *path);
    void updatePhotoImage(QImage *path);
    /// 0 hides the dialog of the pictures, anything else shows it.
    void showHideImageDlg(int show);

private slots:
    void on_pushButton_read_idc_clicked();
    void on_pushButton_read_sam_id_clicked();
    void on_pushButton_command_aa_clicked();
    void on_pushButton_read_phsy_id_clicked();
    void on_pushButton_read_dn_clicked();
    void on_pushButton_read_emid_clicked();
    void on_pushButton_idc_clear_info_clicked();
    void on_checkBox_text_stateChanged(int arg1);
    void on_checkBox_photo_stateChanged(int arg1);
    void on_checkBox_finger_stateChanged(int arg1);
    void on_checkBox_compatible_stateChanged(int arg1);
    void on_checkBox_reread_stateChanged(int arg1);
    void on_checkBox_composite_stateChanged(int arg1);
    void on_checkBox_stop_on_error_stateChanged(int arg1);
    void on_pushButton_info_separator_clicked();

private:
    /// A file's path in UTF-8.
    using Path = std::array<char, 256>;

    void clearCard();
    void buildPaths();
    void showText(QByteArray info);
    void showPhoto();
    void showComposite();
    void setOption(std::uint32_t option, int checkState);

    Ui_Form_Idcard *ui;
    DeviceContext *m_device;
    QString m_text;
    std::uint32_t m_options;
    Path m_photoPath;
    Path m_frontPath;
    Path m_backPath;
    std::unique_ptr<QImage> m_photo;
    std::unique_ptr<QImage> m_front;
    std::unique_ptr<QImage> m_back;
    QString m_imageDirectory;
};
