// The bench over the virtual reader, keeping account of the buttons pressed.
#pragma once

#include "tests/virtual/bench/virtual_bench.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>

inline bool isButtonOfAForm(const QAbstractButton *button)
{
    return qobject_cast<const QPushButton *>(button) != nullptr || qobject_cast<const QCheckBox *>(button) != nullptr ||
           qobject_cast<const QRadioButton *>(button) != nullptr;
}

/// The bench with a part of its window whose buttons are meant, and the tag of that part's log lines.
class EveryButtonBench : public VirtualBench {
public:
    template <class Page>
    static std::unique_ptr<EveryButtonBench> on(const char *tag)
    {
        auto bench = std::make_unique<EveryButtonBench>();
        bench->openDevice();
        bench->m_tag = tag;
        bench->m_part = bench->page<Page>();
        return bench;
    }

    QWidget *part() { return m_part; }

    QStringList pressed(const char *button)
    {
        m_pressed << widget<QAbstractButton>(button, m_part);
        return logOf(button, m_part);
    }

    /// The same while another program swipes the stripe that lies ready.
    QStringList pressedAndSwiped(const char *button)
    {
        const Meanwhile hand([] { runTrayTool({"swipe"}); });
        return pressed(button);
    }

    /// The lines of several presses together.
    QStringList pressedAll(const QList<const char *> &buttons)
    {
        QStringList log;
        for (const char *button : buttons)
            log << pressed(button);
        return log;
    }

    QString line(const QString &text) const { return QString("[%1] %2").arg(m_tag, text); }

    /// A separator line and these.
    QStringList lines(const QStringList &texts) const
    {
        QStringList all{separator(m_tag)};
        for (const QString &text : texts)
            all << line(text);
        return all;
    }

    /// The buttons of the part that were not pressed. The pages are no part of the window here.
    QStringList notPressed()
    {
        const auto *const pages = m_part == &window ? widget<QTabWidget>("tabWidget") : nullptr;
        QStringList names;
        for (const QAbstractButton *button : m_part->findChildren<QAbstractButton *>()) {
            const bool elsewhere = button->window() != &window || (pages != nullptr && pages->isAncestorOf(button));
            if (isButtonOfAForm(button) && !elsewhere && !m_pressed.contains(button))
                names << button->objectName();
        }
        return names;
    }

private:
    const char *m_tag = "主界面";
    QWidget *m_part = &window;
    QList<const QAbstractButton *> m_pressed;
};
