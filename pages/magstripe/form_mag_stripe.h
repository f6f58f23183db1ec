// Stripe page: the three tracks, blocking read and write, the single steps of a swipe session, the polling loop, and
// the reader's mode.
#pragma once

#include <QString>
#include <QWidget>

#include <array>
#include <cstdint>

struct DeviceContext;
struct StripeTracks;
class QCheckBox;
class QLineEdit;
class QTimer;
class Ui_Form_Mag_Stripe;

class Form_Mag_Stripe : public QWidget {
    Q_OBJECT

public:
    Form_Mag_Stripe(DeviceContext *device, QWidget *parent);
    ~Form_Mag_Stripe() override;

signals:
    void addLog(QString text);

private slots:
    void on_pushButton_msr_sync_read_clicked();
    void on_pushButton__msr_sync_write_clicked();
    void on_pushButton_sync_rand_write_clicked();
    void on_pushButton_msr_clear_data_clicked();
    void on_pushButton_async_start_clicked();
    void on_pushButton_async_get_status_clicked();
    void on_pushButton_async_get_data_clicked();
    void on_pushButton_stop_clicked();
    void on_pushButton_async_thread_start_clicked();
    void on_pushButton_async_thread_stop_clicked();
    void on_pushButton_clear_1_clicked();
    void on_pushButton_clear_2_clicked();
    void on_pushButton_clear_3_clicked();
    void on_timer_msr_query_timeout();
    void on_timer_msr_raw_query_timeout();
    void on_pushButton_msr_switch_mode_command_clicked();
    void on_pushButton_msr_switch_mode_keyboard_clicked();

private:
    static constexpr char kTag[] = "磁条卡";

    struct TrackRow {
        QCheckBox *chosen;
        QLineEdit *text;
    };

    std::array<TrackRow, 3> trackRows() const;
    void showCheckedTracks(const StripeTracks &tracks);
    void fetchTracks();
    std::int64_t chosenTimeoutMs();
    void stopSession();
    int pollingIntervalMs() const;
    void pollOnce();
    void takeSwipe();

    Ui_Form_Mag_Stripe *ui;
    DeviceContext *m_device;
    bool m_sessionStarted;
    QTimer *m_pollingTimer;
};
