#include "tools/panel/panel_window.h"

#include "tools/panel/slot_tile.h"
#include "tools/panel/texts.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tray_panel {

using drivers::tray::Slot;

namespace {

constexpr int kWidth = 600; ///< what a 1920 pixels wide screen has left beside the bench and its image dialog
constexpr int kColumns = 2;
constexpr int kMostReasons = 2; ///< why something cannot be read; a text of several lines each

QLabel *makeLabel(const char *objectName, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace

PanelWindow::PanelWindow(std::filesystem::path folder, QWidget *parent) : QWidget(parent), m_watch(std::move(folder))
{
    setWindowTitle(tr("虚拟读卡器"));
    m_message = makeLabel("label_message", this);
    m_message->setWordWrap(true);
    m_message->setStyleSheet("color: #b00020");
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_message->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *place = makeLabel("label_folder", this);
    place->setText(QString::fromStdString(m_watch.folder().string()));
    place->setTextInteractionFlags(Qt::TextSelectableByMouse);
    place->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto *rows = new QVBoxLayout(this);
    rows->addWidget(makeReader(), 1);
    rows->addWidget(makeCounters());
    rows->addWidget(makeFaults());
    rows->addWidget(m_message);
    rows->addWidget(place);
    resize(kWidth, minimumSizeHint().height());

    connect(&m_watch, &TrayWatch::changed, this, &PanelWindow::showView);
    connect(&m_watch, &TrayWatch::done, this, [this](const QString &failure) {
        m_failure = failure;
        showMessage();
    });
    showView();
}

QWidget *PanelWindow::makeReader()
{
    m_reader = new QWidget(this);
    auto *grid = new QGridLayout(m_reader);
    grid->setContentsMargins(0, 0, 0, 0);
    for (const Slot slot : drivers::tray::kAllSlots) {
        const int index = static_cast<int>(m_tiles.size());
        //: A slot's name and its key
        const QString name = tr("%1(&%2)").arg(slotLabel(slot)).arg(index + 1);
        auto *tile = new SlotTile(slot, name, m_watch, m_reader);
        tile->setFrameShape(QFrame::StyledPanel);
        grid->addWidget(tile, index / kColumns, index % kColumns);
        m_tiles.push_back(tile);
    }
    for (int column = 0; column < kColumns; ++column)
        grid->setColumnStretch(column, 1);
    m_swipe = new QPushButton(tr("刷卡(&S)"), m_tiles.back());
    m_swipe->setObjectName("pushButton_swipe");
    m_tiles.back()->addButton(m_swipe);
    connect(m_swipe, &QPushButton::clicked, &m_watch, &TrayWatch::swipe);
    return m_reader;
}

QWidget *PanelWindow::makeCounters()
{
    auto *box = new QWidget(this);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    m_beeps = makeLabel("label_beeps", box);
    m_swipes = makeLabel("label_swipes", box);
    m_mode = makeLabel("label_mode", box);
    for (QLabel *label : {m_beeps, m_swipes, m_mode})
        row->addWidget(label, 1);
    return box;
}

QWidget *PanelWindow::makeFaults()
{
    auto *box = new QGroupBox(tr("生效中的故障"), this);
    auto *row = new QHBoxLayout(box);
    m_faults = new QListWidget(box);
    m_faults->setObjectName("listWidget_faults");
    m_faults->setAccessibleName(box->title());
    m_faults->setFixedHeight(3 * m_faults->fontMetrics().height() + 2 * m_faults->frameWidth() + 6);
    m_clearFaults = new QPushButton(tr("清除故障(&C)"), box);
    m_clearFaults->setObjectName("pushButton_clear_faults");
    row->addWidget(m_faults, 1);
    row->addWidget(m_clearFaults, 0, Qt::AlignTop);
    connect(m_clearFaults, &QPushButton::clicked, &m_watch, &TrayWatch::clearFaults);
    return box;
}

void PanelWindow::showView()
{
    const TrayView &view = m_watch.view();
    for (SlotTile *tile : m_tiles)
        tile->showContent();
    m_reader->setEnabled(view.error.isEmpty());
    m_swipe->setEnabled(!view.at(Slot::Stripe).card.empty());
    m_beeps->setText(tr("蜂鸣：%1 次（%2 ms）").arg(view.beeps).arg(view.beepMs));
    m_swipes->setText(tr("刷卡：%1 次").arg(view.swipes));
    m_mode->setText(view.keyboardMode ? tr("磁条：键盘模式") : tr("磁条：命令模式"));
    m_faults->clear();
    m_faults->addItems(view.faults);
    m_clearFaults->setEnabled(view.error.isEmpty() && !view.faults.isEmpty());
    showMessage();
}

void PanelWindow::showMessage()
{
    const TrayView &view = m_watch.view();
    QStringList lines = {view.error.isEmpty() ? m_failure : view.error};
    for (const SlotView &content : view.contents) {
        if (content.broken)
            lines << content.title;
    }
    lines.removeAll(QString());
    lines.removeDuplicates();
    const int more = lines.size() - kMostReasons;
    if (more > 0) {
        lines = lines.mid(0, kMostReasons);
        lines << tr("另有 %1 项").arg(more);
    }
    m_message->setText(lines.join('\n'));
    m_message->setVisible(!lines.isEmpty());
    makeRoom();
}

/// A wrapped text is no part of a window's minimum size: it would take its room from the tiles.
void PanelWindow::makeRoom()
{
    const int needed = layout()->totalHeightForWidth(width());
    if (height() < needed)
        resize(width(), needed);
}

} // namespace tray_panel
