// The window: the reader with its slots, the counters, the faults in force.
#pragma once

#include "tools/panel/tray_watch.h"

#include <QWidget>

#include <vector>

class QLabel;
class QListWidget;
class QPushButton;

namespace tray_panel {

class SlotTile;

class PanelWindow : public QWidget {
    Q_OBJECT

public:
    /// Shows and changes the tray in this folder. Beside the tiles' widgets (slot_tile.h) it has pushButton_swipe,
    /// label_beeps, label_swipes, label_mode, listWidget_faults, pushButton_clear_faults, label_message, label_folder.
    explicit PanelWindow(std::filesystem::path folder, QWidget *parent = nullptr);

private:
    QWidget *makeReader();
    QWidget *makeCounters();
    QWidget *makeFaults();
    void showView();
    void showMessage();
    void makeRoom();

    TrayWatch m_watch;
    QString m_failure; ///< why the last action did nothing
    std::vector<SlotTile *> m_tiles;
    QWidget *m_reader = nullptr;
    QPushButton *m_swipe = nullptr;
    QLabel *m_beeps = nullptr;
    QLabel *m_swipes = nullptr;
    QLabel *m_mode = nullptr;
    QListWidget *m_faults = nullptr;
    QPushButton *m_clearFaults = nullptr;
    QLabel *m_message = nullptr;
};

} // namespace tray_panel
