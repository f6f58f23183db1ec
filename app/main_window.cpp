#include "app/main_window.h"

#include "app/log_pane.h"
#include "pages/cpucard/form_cpu_iccard.h"
#include "pages/idcard/dialog_idc_image_display.h"
#include "pages/idcard/form_idcard.h"
#include "pages/magstripe/form_mag_stripe.h"
#include "pages/mifare/form_mifare_card.h"
#include "pages/ssse/form_ssse.h"
#include "pages/status/form_info_status_indicator.h"
#include "sdk/contracts.h"
#include "ui_main_window.h"

#include <QButtonGroup>
#include <QDebug>
#include <QMouseEvent>
#include <QStyle>
#include <QSysInfo>

namespace {

/// How many rates comboBox_baud offers; the status page knows more.
constexpr unsigned kBaudCount = 5;

constexpr int kWindowsDriverIndex = 2;

/// The last widget that the window's Tab key visits.
QWidget *lastInTabOrder(const QWidget &window)
{
    QWidget *last = window.previousInFocusChain();
    while ((last->focusPolicy() & Qt::TabFocus) == 0)
        last = last->previousInFocusChain();
    return last;
}

} // namespace

int defaultDriverIndex(const QString &productType)
{
    return productType == "windows" || productType == "winrt" ? kWindowsDriverIndex : 0;
}

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), ui(new Ui_MainWindow), m_device{}, m_statusPage(nullptr), m_idcardPage(nullptr),
      m_imageDialog(nullptr), m_iccardPage(nullptr), m_stripePage(nullptr), m_mifarePage(nullptr), m_sssePage(nullptr),
      m_dragging(false), m_pressX(0), m_pressY(0), m_originX(0), m_originY(0), m_titleBarHeight(0)
{
    ui->setupUi(this);
    setWindowTitle("多功能读卡器演示程序");
    m_titleBarHeight = style()->pixelMetric(QStyle::PM_TitleBarHeight);

    auto *transports = new QButtonGroup(this);
    transports->addButton(ui->radioButton_usb, 0);
    transports->addButton(ui->radioButton_serial, 1);
    transports->addButton(ui->radioButton_pcsc, 2);
    transports->addButton(ui->radioButton_sdt, 3);
    ui->radioButton_usb->setChecked(true);
    m_device.transport = sdk::kTransportUsb;
    ui->pushButton_close->setEnabled(false);
    ui->lineEdit_timeout->setText("5");

    m_imageDialog = new Dialog_idc_image_display(this);
    m_imageDialog->show();

    ui->tabWidget->removeTab(0);
    ui->tabWidget->removeTab(0);
    addPages();
    connectPages();

    move(100, 100);
    ui->groupBox_config->setEnabled(false);
    ui->tabWidget->setEnabled(false);

    const QString productType = QSysInfo::productType();
    qDebug() << "System type: " << productType;
    ui->comboBox_select_driver->setCurrentIndex(defaultDriverIndex(productType));
}

MainWindow::~MainWindow()
{
    delete ui;
}

void MainWindow::addPages()
{
    m_statusPage = new Form_Info_Status_Indicator(&m_device, this);
    m_iccardPage = new Form_CPU_Iccard(&m_device, this);
    m_stripePage = new Form_Mag_Stripe(&m_device, this);
    m_idcardPage = new Form_Idcard(&m_device, this);
    m_mifarePage = new Form_Mifare_Card(&m_device, this);
    m_sssePage = new Form_ssse(&m_device, this);

    ui->tabWidget->addTab(m_statusPage, "设备信息与状态指示");
    ui->tabWidget->addTab(m_iccardPage, "IC卡/CPU卡");
    ui->tabWidget->addTab(m_stripePage, "磁条卡");
    ui->tabWidget->addTab(m_idcardPage, "二代证");
    ui->tabWidget->addTab(m_mifarePage, "M1卡");
    ui->tabWidget->addTab(m_sssePage, "社保卡");

    // The pages come after the form, but the log is read after a page is used.
    setTabOrder(lastInTabOrder(*this), ui->textEdit_log);
    setTabOrder(ui->textEdit_log, ui->pushButton_clear_log);
}

void MainWindow::connectPages()
{
    connect(this, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(m_statusPage, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(m_statusPage, SIGNAL(changeBaudIndex(int)), this, SLOT(onChangeBaudIndex(int)));
    connect(m_idcardPage, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(m_idcardPage, SIGNAL(updateFrontImage(QImage *)), m_imageDialog, SLOT(onUpdateFrontImage(QImage *)));
    connect(m_idcardPage, SIGNAL(updateBackImage(QImage *)), m_imageDialog, SLOT(onUpdateBackImage(QImage *)));
    connect(m_idcardPage, SIGNAL(updatePhotoImage(QImage *)), m_imageDialog, SLOT(onUpdatePhotoImage(QImage *)));
    connect(m_idcardPage, SIGNAL(showHideImageDlg(int)), m_imageDialog, SLOT(onDlgShowHide(int)));
    connect(this, SIGNAL(updateWindowPos(QPoint *)), m_imageDialog, SLOT(onFollowWindow(QPoint *)));
    connect(m_iccardPage, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(m_stripePage, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(m_mifarePage, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(m_sssePage, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
}

void MainWindow::onAddLog(QString text) // NOLINT(performance-unnecessary-value-param): the slot's signature is fixed
{
    appendLogLine(*ui->textEdit_log, text);
}

void MainWindow::on_pushButton_clear_log_clicked()
{
    ui->textEdit_log->clear();
}

void MainWindow::onChangeBaudIndex(int index)
{
    if (static_cast<unsigned>(index) < kBaudCount)
        ui->comboBox_baud->setCurrentIndex(index);
}

void MainWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_dragging = true;
    m_pressX = qRound(event->screenPos().x());
    m_pressY = qRound(event->screenPos().y());
    m_originX = geometry().x();
    m_originY = geometry().y();
}

void MainWindow::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_dragging = false;
    publishFollowPoint(pos());
}

void MainWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging)
        return;
    // move() takes the frame's place. The widget may have looked at the frame's widths before the window manager made
    // the frame, and may look again at any time: the frame's place at the press would then end in a jump by those
    // widths.
    const QPoint frame = geometry().topLeft() - frameGeometry().topLeft();
    move(m_originX - frame.x() + qRound(event->screenPos().x()) - m_pressX,
         m_originY - frame.y() + qRound(event->screenPos().y()) - m_pressY);
}

void MainWindow::moveEvent(QMoveEvent * /*event*/)
{
    publishFollowPoint(pos());
}

void MainWindow::publishFollowPoint(const QPoint &position)
{
    m_followPoint = QPoint(position.x() + width(), position.y());
    emit updateWindowPos(&m_followPoint);
}
