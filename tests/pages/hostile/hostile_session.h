// One life of the bench with the hostile driver: a user who presses everything, all of it following from one seed.
#pragma once

#include "app/main_window.h"

#include <QStringList>
#include <QTimer>

#include <random>

class QAbstractButton;
class QTabWidget;

class HostileSession : public QObject {
    Q_OBJECT

public:
    explicit HostileSession(std::uint32_t seed);

    /// Loads the driver, opens a device and presses every button of every page, in an order and with typed texts that
    /// follow from the seed.
    void pressEverything();

    /// Waits out the blocking stripe read with a time-out of one second, if the page is there.
    void readStripe();

    /// Takes the driver away whatever is going on, lets timers tick without it, and loads it again.
    void reloadDriver();

    /// What is wrong with what the window shows; empty if nothing is. Fields, boxes and the pane must have every text
    /// as characters, and the pane every line that was posted.
    QString complaint();

    /// Whether a press still reaches the driver and the pane can be cleared.
    bool isUsable();

    int presses() const { return m_presses; }

    /// How many pieces of markup the window showed as characters when complaint() last looked.
    int markersShown() const { return m_markersShown; }

private slots:
    void onAddLog(const QString &line) { m_lines << line; }

private:
    void loadDriver();
    void typeInto(QWidget *page);
    void pressAll(QWidget *root);
    void press(QAbstractButton *button);
    void answerMessageBox();
    QStringList shownTexts() const;
    QAbstractButton *button(const char *name) const;
    std::uint32_t below(int limit) { return static_cast<std::uint32_t>(m_random()) % static_cast<unsigned>(limit); }

    MainWindow m_window;
    QTabWidget *m_tabs;
    std::uint32_t m_seed;
    std::mt19937 m_random;
    QTimer m_boxTimer;
    QStringList m_boxTexts;
    QStringList m_lines;
    int m_presses = 0;
    int m_markersShown = 0;
};
