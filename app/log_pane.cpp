#include "app/log_pane.h"

#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>

void appendLogLine(QTextEdit &pane, const QString &line)
{
    QScrollBar *const bar = pane.verticalScrollBar();
    const bool atEnd = bar->value() >= bar->maximum();
    const int position = bar->value();
    // Inserting at the user's cursor would push it, and the end of a selection, to the new end.
    const QTextCursor users = pane.textCursor();
    const int usersAnchor = users.anchor();
    const int usersPosition = users.position();

    QTextCursor end(pane.document());
    end.movePosition(QTextCursor::End);
    end.beginEditBlock();
    if (!pane.document()->isEmpty())
        end.insertBlock(QTextBlockFormat(), QTextCharFormat());
    end.insertText(line, QTextCharFormat());
    end.endEditBlock();

    if (users.hasSelection()) {
        QTextCursor restored(pane.document());
        restored.setPosition(usersAnchor);
        restored.setPosition(usersPosition, QTextCursor::KeepAnchor);
        pane.setTextCursor(restored);
    }
    bar->setValue(atEnd ? bar->maximum() : position);
}
