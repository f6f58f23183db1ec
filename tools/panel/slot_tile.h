// One slot of the reader: a picture of what lies there, its name, and the menu that changes it.
#pragma once

#include "tools/panel/tray_watch.h"

#include <QFrame>

class QLabel;
class QMenu;
class QToolButton;

namespace tray_panel {

class SlotTile : public QFrame {
    Q_OBJECT

public:
    /// `name` is the slot's name for people, with its shortcut letter marked by "&". The tile acts on `watch`, which
    /// must outlive it. Its widgets are named after the slot: toolButton_contact, label_title_contact,
    /// label_card_contact, menu_contact.
    SlotTile(drivers::tray::Slot slot, const QString &name, TrayWatch &watch, QWidget *parent);

    /// Shows what the watch sees.
    void showContent();

    /// Adds a button below the texts.
    void addButton(QWidget *button);

private:
    void openMenu();
    void takeOut();

    drivers::tray::Slot m_slot;
    QString m_name; ///< without the mark
    TrayWatch &m_watch;
    QToolButton *m_button;
    QLabel *m_title;
    QLabel *m_card;
    QMenu *m_menu;
};

} // namespace tray_panel
