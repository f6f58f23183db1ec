// The one window: driver row, communication group, pages, log pane. It wires them together and alone writes the device
// context; the pages know nothing of it.
#pragma once

#include "app/device_context.h"

#include <QMainWindow>
#include <QPoint>
#include <QString>

class Dialog_idc_image_display;
class Form_CPU_Iccard;
class Form_Idcard;
class Form_Info_Status_Indicator;
class Form_Mag_Stripe;
class Form_Mifare_Card;
class Form_ssse;
class Ui_MainWindow;

/// The index of comboBox_select_driver that fits the system: the first Windows library where `productType` (of
/// QSysInfo) is "windows" or "winrt", else the first entry.
int defaultDriverIndex(const QString &productType);

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

signals:
    void addLog(QString text);
    /// Where the image dialog is to stand. The pointer is valid only during the emission.
    void updateWindowPos(QPoint *position);

private slots:
    void on_pushButton_enum_select_clicked();
    void on_pushButton_enum_all_clicked();
    void on_pushButton_clear_log_clicked();
    void on_pushButton_open_select_clicked();
    void on_radioButton_usb_clicked();
    void on_radioButton_serial_clicked();
    void on_lineEdit_timeout_textChanged(const QString &arg1);
    void onAddLog(QString text);
    void onChangeBaudIndex(int index);
    void on_pushButton_open_default_clicked();
    void on_pushButton_close_clicked();
    void on_pushButton_select_driver_clicked();
    void on_pushButton_unload_driver_clicked();
    void on_radioButton_pcsc_clicked();
    void on_radioButton_sdt_clicked();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void moveEvent(QMoveEvent *event) override;

private:
    void addPages();
    void connectPages();
    void setDriverLoaded(bool loaded);
    void setTransport(int transport);
    int addDevices(char *list, int firstNumber);
    void showOpenResult(std::int64_t handle);
    void setDeviceOpen(bool open);
    void publishFollowPoint(const QPoint &position);

    Ui_MainWindow *ui;
    DeviceContext m_device;
    QString m_text; ///< stays empty
    Form_Info_Status_Indicator *m_statusPage;
    Form_Idcard *m_idcardPage;
    Dialog_idc_image_display *m_imageDialog;
    Form_CPU_Iccard *m_iccardPage;
    Form_Mag_Stripe *m_stripePage;
    Form_Mifare_Card *m_mifarePage;
    Form_ssse *m_sssePage;
    bool m_dragging;
    int m_pressX;
    int m_pressY;
    int m_originX; ///< of the window inside its frame, at the press
    int m_originY;
    QPoint m_followPoint;
    int m_titleBarHeight; ///< of the style; kept and not used
};
