#include "tests/pages/hostile/hostile_session.h"

#include "tests/support/hostility.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTextEdit>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

/// Buttons that are pressed by name: they take the driver away, or block for seconds.
bool isPressedByName(const QString &name)
{
    return name == "pushButton_select_driver" || name == "pushButton_unload_driver" ||
           name == "pushButton_msr_sync_read";
}

/// The loader prints a line for each entry point at each load; a run of this test loads hundreds of times.
class QuietOutput {
public:
    QuietOutput() : m_saved(dup(STDOUT_FILENO))
    {
        const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
        std::fflush(stdout);
        dup2(sink, STDOUT_FILENO);
        close(sink);
    }
    ~QuietOutput()
    {
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
    }
    QuietOutput(const QuietOutput &) = delete;
    QuietOutput &operator=(const QuietOutput &) = delete;

private:
    int m_saved;
};

/// What a document makes of a text: every kind of line break is one, and a no-break space is a space. Breaks are left
/// out, since a carriage return before a line feed goes and one alone stays.
QString comparable(QString text)
{
    static const QRegularExpression breaks("[\r\n\\x{2028}\\x{2029}\\x{fdd0}\\x{fdd1}]");
    return text.remove(breaks).replace(QChar::Nbsp, ' ');
}

} // namespace

HostileSession::HostileSession(std::uint32_t seed)
    : m_tabs(m_window.findChild<QTabWidget *>("tabWidget")), m_seed(seed), m_random(seed)
{
    connect(&m_window, SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    for (int i = 0; i < m_tabs->count(); ++i)
        connect(m_tabs->widget(i), SIGNAL(addLog(QString)), this, SLOT(onAddLog(QString)));
    connect(button("pushButton_clear_log"), &QAbstractButton::clicked, this, [this] { m_lines.clear(); });
    connect(&m_boxTimer, &QTimer::timeout, this, &HostileSession::answerMessageBox);
    m_boxTimer.start(1);
    m_window.show();
}

QAbstractButton *HostileSession::button(const char *name) const
{
    return m_window.findChild<QAbstractButton *>(name);
}

void HostileSession::loadDriver()
{
    const QuietOutput quiet;
    press(button("pushButton_select_driver"));
    hostility().reseed(m_seed);
}

void HostileSession::press(QAbstractButton *button)
{
    if (button == nullptr || !button->isEnabled())
        return;
    button->click();
    ++m_presses;
}

void HostileSession::pressAll(QWidget *root)
{
    QList<QPointer<QAbstractButton>> buttons;
    for (QAbstractButton *found : root->findChildren<QAbstractButton *>())
        if (!isPressedByName(found->objectName()))
            buttons << found;
    std::shuffle(buttons.begin(), buttons.end(), m_random);
    for (const QPointer<QAbstractButton> &found : buttons) {
        press(found);
        QCoreApplication::processEvents();
    }
}

void HostileSession::typeInto(QWidget *page)
{
    static const std::array<QString, 14> texts{"",
                                               "0",
                                               "1",
                                               "-1",
                                               "abc",
                                               "12abc",
                                               " 7",
                                               "99999999999",
                                               "<b>typed</b>",
                                               "|",
                                               "2001",
                                               "中文",
                                               "%s%n",
                                               QString(3000, 'F')};
    for (QLineEdit *edit : page->findChildren<QLineEdit *>())
        if (!edit->isReadOnly() && edit->isEnabled() && below(2) == 0)
            edit->setText(texts.at(below(static_cast<int>(texts.size()))));
    for (QComboBox *box : page->findChildren<QComboBox *>())
        if (box->isEnabled() && box->count() > 0)
            box->setCurrentIndex(static_cast<int>(below(box->count())));
}

void HostileSession::pressEverything()
{
    loadDriver();
    press(button(below(2) == 0 ? "pushButton_enum_select" : "pushButton_enum_all"));
    QVector<int> order(m_tabs->count());
    for (int i = 0; i < order.size(); ++i)
        order[i] = i;
    std::shuffle(order.begin(), order.end(), m_random);
    for (const int index : order) {
        m_tabs->setCurrentIndex(index);
        // A refused open is tried again, so that most pages get a device, and a page now and then has none.
        press(button(below(2) == 0 ? "pushButton_open_default" : "pushButton_open_select"));
        typeInto(m_tabs->widget(index));
        pressAll(m_tabs->widget(index));
    }
    pressAll(m_window.findChild<QWidget *>("groupBox_config"));
    for (auto *dialog : m_window.findChildren<QDialog *>())
        pressAll(dialog);
}

void HostileSession::readStripe()
{
    if (button("pushButton_msr_sync_read") == nullptr)
        return;
    m_window.findChild<QLineEdit *>("lineEdit_msr_timeout")->setText("1");
    press(button("pushButton_open_default"));
    press(button("pushButton_msr_sync_read"));
}

void HostileSession::reloadDriver()
{
    press(button("pushButton_unload_driver"));
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    loadDriver();
}

void HostileSession::answerMessageBox()
{
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (box == nullptr)
        return;
    m_boxTexts << box->text() << box->windowTitle();
    box->accept();
}

QStringList HostileSession::shownTexts() const
{
    QStringList texts;
    for (const auto *edit : m_window.findChildren<QLineEdit *>())
        texts << edit->text();
    for (const auto *edit : m_window.findChildren<QTextEdit *>())
        texts << edit->toPlainText();
    for (const auto *box : m_window.findChildren<QComboBox *>())
        for (int i = 0; i < box->count(); ++i)
            texts << box->itemText(i);
    return texts;
}

QString HostileSession::complaint()
{
    static const QRegularExpression stripped("(?<!<b>)m\\d+;");
    static const QRegularExpression marker("<b>m\\d+;");
    m_markersShown = 0;
    for (const QString &text : shownTexts()) {
        m_markersShown += text.count(marker);
        const auto found = stripped.match(text);
        if (found.hasMatch())
            return "taken for markup: " + found.captured();
    }
    // A label guesses its format from the text, and a message box shows its text in one.
    for (const auto *label : m_window.findChildren<QLabel *>())
        if (label->text().contains(marker) && label->textFormat() != Qt::PlainText)
            return "a label shows a driver's text as markup: " + label->objectName();
    for (const QString &text : m_boxTexts)
        if (text.contains(marker))
            return "a message box shows a driver's text";

    const QString pane = comparable(m_window.findChild<QTextEdit *>("textEdit_log")->toPlainText());
    const QString posted = comparable(m_lines.join('\n'));
    if (pane != posted) {
        const auto ends = std::mismatch(pane.begin(), pane.end(), posted.begin(), posted.end());
        const int at = static_cast<int>(ends.first - pane.begin());
        return QString("the pane differs from the posted lines at %1: shown \"%2\", posted \"%3\"")
            .arg(at)
            .arg(pane.mid(at, 60), posted.mid(at, 60));
    }
    return QString();
}

bool HostileSession::isUsable()
{
    press(button("pushButton_clear_log"));
    auto *pane = m_window.findChild<QTextEdit *>("textEdit_log");
    if (!pane->toPlainText().isEmpty() || !m_tabs->isEnabled())
        return false;
    press(button("pushButton_close"));
    const std::uint32_t before = hostility().calls["vek_open"];
    press(button("pushButton_open_default"));
    return hostility().calls["vek_open"] == before + 1 && !pane->toPlainText().isEmpty();
}
