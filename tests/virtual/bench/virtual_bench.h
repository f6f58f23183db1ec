// The bench over the virtual reader, with a tray of the test's own as it is first laid out.
#pragma once

#include "drivers/virtual/reader/card_models.h"
#include "tests/support/bench_window.h"
#include "tests/virtual/support/tray_world.h"

#include <QComboBox>
#include <QProcess>

#include <atomic>
#include <functional>
#include <thread>

/// Before the window: the driver's devices go with the library, and both want the tray until then.
class WithTray {
protected:
    virtual_test::TrayWorld m_world;
};

class VirtualBench : private WithTray, public BenchWindow {
public:
    using Slot = drivers::tray::Slot;

    virtual_test::TrayWorld &world() { return m_world; }

    /// Loads the library and opens the default device. The log is empty afterwards.
    void openDevice()
    {
        loadLibrary();
        press("pushButton_open_default");
        QVERIFY(!widget<QLineEdit>("lineEdit_handle")->text().isEmpty());
        clearLog();
    }

    /// Lists the devices of a transport's radio button and opens one by its name. The log is empty afterwards.
    void openDevice(const char *transport, const QString &name)
    {
        loadLibrary();
        press(transport);
        press("pushButton_enum_select");
        openNamed(name);
    }

    /// Opens a device that stands in the list.
    void openNamed(const QString &name)
    {
        widget<QComboBox>("comboBox_select_device")->setCurrentText(name);
        press("pushButton_open_select");
        QVERIFY(!widget<QLineEdit>("lineEdit_handle")->text().isEmpty());
        clearLog();
    }

    /// What a press writes into the log.
    QStringList logOf(const char *button, QWidget *page = nullptr)
    {
        clearLog();
        press(button, page);
        return log();
    }

    QString text(const char *edit, QWidget *page = nullptr) { return widget<QLineEdit>(edit, page)->text(); }

    /// The global time-out.
    void setTimeout(const QString &seconds) { type("lineEdit_timeout", seconds); }

    nlohmann::json cardIn(Slot slot) { return m_world.tray().card(m_world.cardIn(slot)); }

    /// A text member of the card in a slot.
    QString cardText(Slot slot, const char *place)
    {
        return QString::fromStdString(cardIn(slot).at(nlohmann::json::json_pointer(place)));
    }

    /// Changes the card in a slot as an editor of its file would.
    template <class Change>
    void changeCard(Slot slot, const Change &change)
    {
        const std::string id = m_world.cardIn(slot);
        nlohmann::json card = m_world.tray().card(id);
        change(card);
        m_world.tray().saveCard(m_world.tray().lock(), id, card);
    }
};

/// Another program beside the bench: runs unifold-tray with the arguments.
inline bool runTrayTool(const QStringList &arguments)
{
    return QProcess::execute(UNIFOLD_TRAY_TOOL, arguments) == 0;
}

/// Does something again and again from another thread, until it is destroyed: it meets a call that waits, however late
/// the call begins.
class Meanwhile {
public:
    explicit Meanwhile(const std::function<void()> &action)
        : m_thread([this, action] {
              while (!m_ended) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(100));
                  action();
              }
          })
    {
    }
    ~Meanwhile()
    {
        m_ended = true;
        m_thread.join();
    }
    Meanwhile(const Meanwhile &) = delete;
    Meanwhile &operator=(const Meanwhile &) = delete;

private:
    std::atomic<bool> m_ended = false;
    std::thread m_thread;
};
