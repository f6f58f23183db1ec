// The bench's window under test, used as a person would: widgets by object name, presses, the log pane. Which driver
// library it meets is the business of the test's own class.
#pragma once

#include "app/main_window.h"
#include "sdk/loader.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QRegularExpression>
#include <QStringList>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>

class BenchWindow {
public:
    MainWindow window;

    /// Each bench starts with no library, so that it loads one of its own.
    BenchWindow() { sdk::unload(); }

    /// Text of the separator line behind the time stamp and the tag.
    static constexpr char kSeparator[] = "------------------------------------------";

    /// Shows the window and loads "libtarvovek.so" through the driver row.
    void loadLibrary()
    {
        window.show();
        press("pushButton_select_driver");
        QVERIFY2(widget<QTabWidget>("tabWidget")->isEnabled(), "the driver did not load");
    }

    /// Brings the page's tab to the front and returns the page.
    template <typename Page>
    Page *page()
    {
        auto *const found = window.findChild<Page *>();
        widget<QTabWidget>("tabWidget")->setCurrentWidget(found);
        return found;
    }

    /// A widget by its object name, in the window or in one page. A missing one ends the test program.
    template <typename Widget>
    Widget *widget(const char *name, QWidget *within = nullptr)
    {
        auto *const found = (within != nullptr ? within : &window)->findChild<Widget *>(name);
        if (found == nullptr)
            qFatal("no widget %s", name);
        return found;
    }

    /// Clicks with the mouse, as long as the button is visible and enabled; otherwise the test program ends.
    void press(const char *name, QWidget *within = nullptr)
    {
        auto *const button = widget<QAbstractButton>(name, within);
        if (!button->isVisible() || !button->isEnabled())
            qFatal("%s cannot be pressed", name);
        // Radio buttons and check boxes take a click only on their indicator and text, which stand at the left.
        QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, QPoint(8, button->height() / 2));
    }

    void type(const char *name, const QString &text, QWidget *within = nullptr)
    {
        auto *const edit = widget<QLineEdit>(name, within);
        edit->clear();
        QTest::keyClicks(edit, text);
    }

    /// The log pane, a line an entry, each "[tag] text": the time stamp is checked for its form and taken off. Lines
    /// without one (the tail of a message with a line break, a bare "}") come as they are.
    QStringList log()
    {
        static const QRegularExpression stamp(R"(^\[\d{4}/\d\d/\d\d \d{6}-\d{3}\] )");
        QStringList lines;
        const QString text = widget<QTextEdit>("textEdit_log")->toPlainText();
        if (!text.isEmpty())
            for (QString line : text.split('\n'))
                lines << line.remove(stamp);
        return lines;
    }

    static QString separator(const char *tag) { return QString("[%1] %2").arg(tag, kSeparator); }

    void clearLog() { widget<QTextEdit>("textEdit_log")->clear(); }
};
