#include "pages/magstripe/form_mag_stripe.h"

#include "app/log_line.h"
#include "pages/magstripe/stripe_tracks.h"
#include "sdk/entry_points.h"
#include "ui_form_mag_stripe.h"

#include <QTimer>

#include <unistd.h>

namespace {

constexpr int kMaxTimeoutSeconds = 256;
constexpr int kPollMs = 200;

/// Asks for a swipe every 200 ms until it came (true) or the budget is used up (false). The program sleeps meanwhile.
bool waitForSwipe(sdk::DeviceHandle device, std::int64_t budgetMs)
{
    while (budgetMs >= 1) {
        if (sdk::call<vek_msr_qm_status>(device) == sdk::kMsrSwiped)
            return true;
        budgetMs -= kPollMs;
        usleep(kPollMs * 1000);
    }
    return false;
}

} // namespace

Form_Mag_Stripe::Form_Mag_Stripe(DeviceContext *device, QWidget *parent)
    : QWidget(parent), ui(new Ui_Form_Mag_Stripe), m_device(device), m_sessionStarted(false), m_pollingTimer(nullptr)
{
    ui->setupUi(this);
    ui->checkBox_2->setChecked(true);
    ui->checkBox_3->setChecked(true);
    m_pollingTimer = new QTimer(this);
    connect(m_pollingTimer, SIGNAL(timeout()), this, SLOT(on_timer_msr_query_timeout()));
}

Form_Mag_Stripe::~Form_Mag_Stripe()
{
    delete ui;
}

std::array<Form_Mag_Stripe::TrackRow, 3> Form_Mag_Stripe::trackRows() const
{
    return {{{ui->checkBox_1, ui->lineEdit_msr_track_1},
             {ui->checkBox_2, ui->lineEdit_msr_track_2},
             {ui->checkBox_3, ui->lineEdit_msr_track_3}}};
}

void Form_Mag_Stripe::showCheckedTracks(const StripeTracks &tracks)
{
    std::size_t index = 0;
    for (const TrackRow &row : trackRows()) {
        if (row.chosen->isChecked()) {
            row.text->setText(tracks.text(index));
            row.text->setCursorPosition(0); // a long track is shown from its beginning
        }
        ++index;
    }
}

void Form_Mag_Stripe::fetchTracks()
{
    StripeTracks tracks;
    const int result = tracks.fetch(m_device->handle);
    emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_get return[%d] (assert 0)", logTime(), kTag, result));
    if (result != 0)
        return;
    showCheckedTracks(tracks);
    emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_get tracklen: [%d] [%d] [%d]", logTime(), kTag,
                                  tracks.lengths[0], tracks.lengths[1], tracks.lengths[2]));
}

/// The page's own time-out if it is sensible, else the global one, which may be anything: hence the wide type.
std::int64_t Form_Mag_Stripe::chosenTimeoutMs()
{
    std::int64_t seconds = ui->lineEdit_msr_timeout->text().toInt();
    if (seconds < 1 || seconds > kMaxTimeoutSeconds) {
        seconds = m_device->timeoutSeconds;
        emit addLog(QString::asprintf("[%s] [%s] 超时时间设置不合理！将使用全局超时设定 %d秒", logTime(), kTag,
                                      m_device->timeoutSeconds));
    }
    return seconds * 1000;
}

void Form_Mag_Stripe::on_pushButton_msr_sync_read_clicked()
{
    emit addLog(separatorLine(kTag));
    const std::int64_t budgetMs = chosenTimeoutMs();
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;
    on_pushButton_msr_clear_data_clicked();
    const int result = sdk::call<vek_msr_qm_start>(m_device->handle);
    if (result != 0) {
        emit addLog(QString::asprintf("[%s] [%s] vek_msr_qm_start return[%d] (assert 0)", logTime(), kTag, result));
        return;
    }
    if (waitForSwipe(m_device->handle, budgetMs))
        fetchTracks();
    sdk::call<vek_msr_qm_stop>(m_device->handle);
}

void Form_Mag_Stripe::on_pushButton__msr_sync_write_clicked()
{
    emit addLog(separatorLine(kTag));
    const std::int64_t timeoutMs = chosenTimeoutMs();
    if (!deviceIsOpen(*this, *m_device, kTag))
        return;

    std::array<QByteArray, 3> tracks;
    int selection = 0;
    int number = 1;
    for (const TrackRow &row : trackRows()) {
        QByteArray &track = tracks.at(static_cast<std::size_t>(number - 1));
        if (row.chosen->isChecked())
            track = row.text->text().toUtf8();
        if (!track.isEmpty())
            selection = selection * 10 + number;
        ++number;
    }
    if (selection == 0) {
        emit addLog(QString::asprintf("[%s] [%s] 写卡数据为空，请填写写卡数据！", logTime(), kTag));
        return;
    }

    // Narrowed on purpose: a global time-out past the range wraps.
    const int result =
        sdk::call<vek_msr_write>(m_device->handle, selection, 0, tracks[0].constData(), tracks[1].constData(),
                                 tracks[2].constData(), static_cast<int>(timeoutMs));
    emit addLog(QString::asprintf("[%s] [%s] vek_msr_write return[%d] (assert 0)", logTime(), kTag, result));
}

void Form_Mag_Stripe::on_pushButton_sync_rand_write_clicked()
{
    // The button is laid out, disabled, and writes nothing.
}

void Form_Mag_Stripe::on_pushButton_msr_clear_data_clicked()
{
    on_pushButton_clear_1_clicked();
    on_pushButton_clear_2_clicked();
    on_pushButton_clear_3_clicked();
}

void Form_Mag_Stripe::on_pushButton_clear_1_clicked()
{
    ui->lineEdit_msr_track_1->setText(QString());
}

void Form_Mag_Stripe::on_pushButton_clear_2_clicked()
{
    ui->lineEdit_msr_track_2->setText(QString());
}

void Form_Mag_Stripe::on_pushButton_clear_3_clicked()
{
    ui->lineEdit_msr_track_3->setText(QString());
}
