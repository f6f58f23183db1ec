#include "tools/panel/slot_tile.h"

#include "tools/panel/card_picture.h"

#include <QAction>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QPixmap>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

namespace tray_panel {

namespace {

constexpr QSize kPictureSize(140, 89);

/// As much of a title as a tile has room for.
constexpr int kTitleLength = 90;

QString shortened(const QString &text)
{
    const QString line = text.simplified();
    return line.size() <= kTitleLength ? line : line.left(kTitleLength - 1) + QChar(0x2026);
}

/// A menu takes "&" for the mark of a shortcut.
QString menuText(const DeckCard &card)
{
    const QString id = QString::fromStdString(card.id);
    QString text = card.title.isEmpty() ? id : shortened(card.title) + "  (" + id + ')';
    return text.replace('&', "&&");
}

/// A label for texts of unknown origin: never markup, and however long a word is, the tile stays as wide as it is.
QLabel *makeLabel(const QString &objectName, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

} // namespace

SlotTile::SlotTile(drivers::tray::Slot slot, const QString &name, TrayWatch &watch, QWidget *parent)
    : QFrame(parent), m_slot(slot), m_name(QString(name).remove('&')), m_watch(watch), m_button(new QToolButton(this)),
      m_menu(new QMenu(this))
{
    const QString suffix = QString::fromUtf8(slotName(slot).data(), static_cast<int>(slotName(slot).size()));
    setObjectName("tile_" + suffix);
    m_title = makeLabel("label_title_" + suffix, this);
    m_card = makeLabel("label_card_" + suffix, this);
    m_card->setStyleSheet("color: #5a646e"); // the id matters less than the title
    m_menu->setObjectName("menu_" + suffix);
    m_menu->setStyleSheet("QMenu { menu-scrollable: 1 }"); // else a full deck's columns run off the screen

    m_button->setObjectName("toolButton_" + suffix);
    m_button->setText(name);
    m_button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_button->setIconSize(kPictureSize);
    m_button->setFocusPolicy(Qt::StrongFocus);

    auto *texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(m_title, 1, Qt::AlignVCenter);
    texts->addWidget(m_card);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(4, 4, 4, 4);
    row->addWidget(m_button);
    row->addLayout(texts, 1);

    connect(m_button, &QToolButton::clicked, this, &SlotTile::openMenu);
    auto *remove = new QShortcut(Qt::Key_Delete, m_button, nullptr, nullptr, Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, &SlotTile::takeOut);
}

void SlotTile::addButton(QWidget *button)
{
    layout()->itemAt(1)->layout()->addWidget(button);
}

void SlotTile::showContent()
{
    const SlotView &content = m_watch.view().at(m_slot);
    const bool empty = content.card.empty();
    if (empty)
        m_title->setText(tr("（空）"));
    else
        m_title->setText(content.broken ? tr("（无法读取）") : shortened(content.title));
    m_card->setText(QString::fromStdString(content.card));
    m_button->setIcon(QIcon(QPixmap::fromImage(empty ? emptySlotPicture(m_slot) : content.picture)));
    m_button->setAccessibleName(m_name);
    m_button->setAccessibleDescription(m_title->text());
}

void SlotTile::openMenu()
{
    m_menu->clear();
    const std::string &present = m_watch.view().at(m_slot).card;
    for (const DeckCard &card : m_watch.fittingCards(m_slot)) {
        QAction *const action = m_menu->addAction(menuText(card));
        action->setObjectName("action_" + QString::fromStdString(card.id));
        action->setCheckable(true);
        action->setChecked(card.id == present);
        connect(action, &QAction::triggered, this, [this, id = card.id] { m_watch.put(m_slot, id); });
    }
    m_menu->addSeparator();
    QAction *const take = m_menu->addAction(tr("取出(&T)"));
    take->setObjectName("action_take");
    take->setEnabled(!present.empty());
    connect(take, &QAction::triggered, this, &SlotTile::takeOut);
    m_menu->popup(m_button->mapToGlobal(QPoint(0, m_button->height())));
}

void SlotTile::takeOut()
{
    if (!m_watch.view().at(m_slot).card.empty())
        m_watch.take(m_slot);
}

} // namespace tray_panel
