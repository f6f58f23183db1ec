// Text on its way between the SDK's buffers and Qt.
#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstring>

/// The text of an output buffer: up to its first NUL, or the whole buffer when a driver filled it without one.
template <std::size_t size>
QByteArray boundedText(const std::array<char, size> &buffer)
{
    return QByteArray(buffer.data(), static_cast<int>(strnlen(buffer.data(), size)));
}

/// GBK bytes as text, cut at the first NUL.
QString gbkToText(const QByteArray &gbk);

/// The same steps with the codecs swapped: the GBK bytes of a UTF-8 text, read as UTF-8. Kept for symmetry.
QString utf8ToGbkText(const QByteArray &utf8);

/// Appends `text` to the NUL-terminated text in `buffer`. Appending past the buffer's end ends the program: a cut path
/// would name some other file.
void appendOrAbort(char *buffer, std::size_t size, const char *text);

template <std::size_t size>
void appendOrAbort(std::array<char, size> &buffer, const char *text)
{
    appendOrAbort(buffer.data(), size, text);
}
