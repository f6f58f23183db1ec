// The lower half of the stripe page: the single steps of a swipe session, the timer that chains them, the reader's
// mode.
#include "pages/magstripe/form_mag_stripe.h"

#include "app/log_line.h"
#include "pages/magstripe/stripe_tracks.h"
#include "sdk/entry_points.h"
#include "ui_form_mag_stripe.h"

#include <QTimer>

void Form_Mag_Stripe::on_pushButton_async_start_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    on_pushButton_msr_clear_data_clicked();
    const int result = sdk::call<vek_msr_qm_start>(m_device->handle);
    emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_start return[%d] (assert 0)", logTime(), kTag, result));
}

void Form_Mag_Stripe::on_pushButton_async_get_status_clicked()
{
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    const int status = sdk::call<vek_msr_qm_status>(m_device->handle);
    emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_status return[%d][%s] (assert 1)", logTime(), kTag, status,
                                  status == sdk::kMsrSwiped ? "检测到刷卡" : "未刷卡"));
}

void Form_Mag_Stripe::on_pushButton_async_get_data_clicked()
{
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    fetchTracks();
}

void Form_Mag_Stripe::on_pushButton_stop_clicked()
{
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    stopSession();
}

/// Ends the driver's swipe session and posts the result.
void Form_Mag_Stripe::stopSession()
{
    const int result = sdk::call<vek_msr_qm_stop>(m_device->handle);
    emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_stop return[%d] (assert 0)", logTime(), kTag, result));
}

void Form_Mag_Stripe::on_pushButton_async_thread_start_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    m_sessionStarted = false;
    on_pushButton_msr_clear_data_clicked();
    ui->lineEdit_async_thread_interval_time->setEnabled(false);
    ui->pushButton_async_thread_start->setEnabled(false);
    ui->pushButton_async_thread_stop->setEnabled(true);
    m_pollingTimer->start(pollingIntervalMs());
}

void Form_Mag_Stripe::on_pushButton_async_thread_stop_clicked()
{
    m_pollingTimer->stop();
    ui->lineEdit_async_thread_interval_time->setEnabled(true);
    ui->pushButton_async_thread_start->setEnabled(true);
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    m_sessionStarted = false;
    ui->pushButton_async_thread_stop->setEnabled(false);
    stopSession();
}

/// As typed: text that is no number gives 0, that is, a tick on every pass of the event loop. QTimer never fires for a
/// negative interval, so the loop then stands still until the user ends it.
int Form_Mag_Stripe::pollingIntervalMs() const
{
    return ui->lineEdit_async_thread_interval_time->text().toInt();
}

void Form_Mag_Stripe::on_timer_msr_query_timeout()
{
    // Stopped for the time of the calls, so that slow ones cannot stack ticks.
    m_pollingTimer->stop();
    const int intervalMs = pollingIntervalMs();
    // The page is disabled while no driver is loaded; the table's pointers then lead into the unloaded library.
    if (isEnabled())
        pollOnce();
    m_pollingTimer->start(intervalMs);
}

void Form_Mag_Stripe::pollOnce()
{
    if (!m_sessionStarted) {
        m_sessionStarted = true;
        const int result = sdk::call<vek_msr_qm_start>(m_device->handle);
        if (result != 0)
            emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_start return[%d] (assert 0)", logTime(), kTag, result));
    }

    const int status = sdk::call<vek_msr_qm_status>(m_device->handle);
    if (status == sdk::kMsrSwiped)
        takeSwipe();
    else if (status == sdk::kMsrSwipedNoData)
        emit addLog(QString::asprintf("[%s] [%s] 检测到刷卡，但磁条无信息！return[%d]", logTime(), kTag, status));
}

/// Shows the tracks of a swipe, or why there are none, and ends the session: the next tick starts a fresh one.
void Form_Mag_Stripe::takeSwipe()
{
    StripeTracks tracks;
    const int result = tracks.fetch(m_device->handle);
    if (result == 0) {
        showCheckedTracks(tracks);
        emit addLog(separatorLine(kTag));
        emit addLog(QString::asprintf("[%s] [%s] track1[%s]", logTime(), kTag, qUtf8Printable(tracks.text(0))));
        emit addLog(QString::asprintf("[%s] [%s] track2[%s]", logTime(), kTag, qUtf8Printable(tracks.text(1))));
        emit addLog(QString::asprintf("[%s] [%s] track3[%s]", logTime(), kTag, qUtf8Printable(tracks.text(2))));
    } else {
        emit addLog(QString::asprintf("[%s] [%s] 取回磁条数据失败！return[%d]", logTime(), kTag, result));
    }
    m_sessionStarted = false;
    sdk::call<vek_msr_qm_stop>(m_device->handle);
}

void Form_Mag_Stripe::on_timer_msr_raw_query_timeout()
{
    // Listed among the slots; nothing is connected to it.
}

void Form_Mag_Stripe::on_pushButton_msr_switch_mode_command_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    on_pushButton_msr_clear_data_clicked();
    const int result = sdk::call<vek_msr_mode_switch>(m_device->handle, sdk::kMsrModeCommand);
    emit addLog(QString::asprintf("[%s] [%s] 磁条设置为指令交互方式 return[%d] (assert 0)", logTime(), kTag, result));
}

void Form_Mag_Stripe::on_pushButton_msr_switch_mode_keyboard_clicked()
{
    if (!beginAction(*this, *m_device, kTag))
        return;
    on_pushButton_msr_clear_data_clicked();
    const int result = sdk::call<vek_msr_mode_switch>(m_device->handle, sdk::kMsrModeKeyboard);
    emit addLog(QString::asprintf("[%s] [%s] 磁条设置为USB键盘方式 return[%d] (assert 0)", logTime(), kTag, result));
}
