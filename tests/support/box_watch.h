// The seam for message boxes, which block the code under test until someone answers.
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

#include <functional>

/// While it lives, presses OK in every message box that comes up and keeps what the box said. Compare the whole list at
/// the end: it tells an expected box that never came as well as an unexpected one.
class BoxWatch {
public:
    /// `answered`, if set, is told each box before it is answered.
    explicit BoxWatch(std::function<void(QString)> answered = {})
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this, answered] { answer(answered); });
        m_timer.start(5);
    }

    /// A warning in plain text with nothing but OK is "title: text"; anything else is told apart.
    QStringList boxes() const { return m_boxes; }

private:
    void answer(const std::function<void(QString)> &answered)
    {
        auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return;
        auto *const box = qobject_cast<QMessageBox *>(dialog);
        m_boxes << (box != nullptr ? said(*box) : QString("no message box"));
        if (answered)
            answered(m_boxes.last());
        dialog->done(QMessageBox::Ok);
    }

    static QString said(const QMessageBox &box)
    {
        const bool plainWarning = box.icon() == QMessageBox::Warning && box.textFormat() == Qt::PlainText &&
                                  box.standardButtons() == QMessageBox::Ok && box.buttons().size() == 1;
        return (plainWarning ? "" : "other: ") + box.windowTitle() + ": " + box.text();
    }

    QTimer m_timer;
    QStringList m_boxes;
};
