// How a line comes into the log pane.
#pragma once

#include <QString>

class QTextEdit;

/// Appends `line` as a new paragraph, as plain characters whatever it looks like: lines carry text from cards and
/// drivers. Goes to the document's end wherever the user's cursor stands, since the pane is no read-only one; a
/// selection stays as it is, and a cursor at the end stays at the end. The view follows the end if it stood there and
/// does not move otherwise.
void appendLogLine(QTextEdit &pane, const QString &line);
