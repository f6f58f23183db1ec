// How a line comes into the log pane.
#pragma once

#include <QString>

class QTextEdit;

/// Appends `line` as a new paragraph, as plain characters whatever it looks like: lines carry text from cards and
/// drivers. Goes to the document's end and leaves the user's cursor and selection alone, since the pane is no
/// read-only one. The view follows the end if it stood there and does not move otherwise.
void appendLogLine(QTextEdit &pane, const QString &line);
