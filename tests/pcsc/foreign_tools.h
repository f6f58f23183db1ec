// Programs of other makers that speak to a PC/SC reader, and what they print.
#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QStringList>

#include <cctype>

namespace testsupport {

// What a program prints on both its outputs, given `input`.
inline QByteArray outputOf(const QString &program, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000))
        return "did not finish: " + process.errorString().toUtf8();
    return process.readAll();
}

// Hexadecimal digits alone.
inline QByteArray digits(QByteArray text)
{
    text = text.toUpper();
    QByteArray kept;
    for (const char c : text) {
        if (isxdigit(static_cast<unsigned char>(c)) != 0)
            kept += c;
    }
    return kept;
}

// The replies that scriptor prints, each as "< 90 00 : Normal processing.", with long ones folded.
inline QList<QByteArray> scriptorReplies(const QByteArray &output)
{
    QList<QByteArray> replies;
    bool inReply = false;
    for (const QByteArray &line : output.split('\n')) {
        if (line.startsWith("< "))
            replies << QByteArray();
        else if (!inReply)
            continue;
        const int colon = line.indexOf(" : ");
        replies.last() += digits(colon < 0 ? line : line.left(colon));
        inReply = colon < 0;
    }
    return replies;
}

} // namespace testsupport
