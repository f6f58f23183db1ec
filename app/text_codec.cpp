#include "app/text_codec.h"

#include <QTextCodec>

#include <cstdio>
#include <cstdlib>

namespace {

/// Decodes up to the first NUL with one codec, encodes with the other and reads the outcome as UTF-8.
QString recode(const QByteArray &bytes, const char *from, const char *to)
{
    const QString text = QTextCodec::codecForName(from)->toUnicode(bytes.constData());
    const QByteArray encoded = QTextCodec::codecForName(to)->fromUnicode(text);
    return QString::fromUtf8(encoded.constData());
}

} // namespace

QString gbkToText(const QByteArray &gbk)
{
    return recode(gbk, "gbk", "UTF-8");
}

QString utf8ToGbkText(const QByteArray &utf8)
{
    return recode(utf8, "UTF-8", "gbk");
}

void appendOrAbort(char *buffer, std::size_t size, const char *text)
{
    const std::size_t used = strnlen(buffer, size);
    const std::size_t length = std::strlen(text);
    if (used + length >= size) {
        std::fputs("text does not fit its buffer\n", stderr);
        std::abort();
    }
    std::memcpy(buffer + used, text, length + 1);
}
