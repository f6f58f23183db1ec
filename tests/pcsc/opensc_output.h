// What opensc-tool and opensc-explorer print.
#pragma once

#include "drivers/core/bytes.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QRegularExpression>
#include <QString>

#include <algorithm>

namespace testsupport {

/// A dump in lines of 16 bytes, the last one filled up to the width of the others; `addressed` lines begin with the
/// place of their first byte.
inline QByteArray openscDump(const QByteArray &bytes, bool addressed)
{
    QByteArray dump;
    for (int at = 0; at < bytes.size(); at += 16) {
        const QByteArray line = bytes.mid(at, 16);
        if (addressed)
            dump += QByteArray::number(at, 16).toUpper().rightJustified(8, '0') + ": ";
        dump += line.toHex(' ').toUpper() + ' ' + QByteArray(3 * (std::min(bytes.size(), 16) - line.size()), ' ');
        for (const char c : line)
            dump += c >= 0x20 && c <= 0x7E ? c : '.';
        dump += '\n';
    }
    return dump;
}

/// A reply to an APDU, data and SW1 SW2 in hexadecimal, as both programs show it.
inline QByteArray openscReply(const QByteArray &reply)
{
    const QByteArray bytes = QByteArray::fromHex(reply);
    const QByteArray words = reply.right(4).toUpper();
    const QByteArray received = "Received (SW1=0x" + words.left(2) + ", SW2=0x" + words.mid(2) + ")";
    return received + (bytes.size() > 2 ? ":\n" : "\n") + openscDump(bytes.chopped(2), false);
}

/// What opensc-explorer printed for each command after its prompt and the echo of the command.
inline QByteArrayList explorerSections(const QByteArray &output)
{
    static const QRegularExpression prompt(R"(OpenSC \[[^\]\n]*\]> )");
    QStringList parts = QString::fromLatin1(output).split(prompt);
    QByteArrayList sections;
    for (int i = 1; i < parts.size(); ++i) {
        const int echoEnd = parts.at(i).indexOf('\n');
        sections << (echoEnd < 0 ? QByteArray() : parts.at(i).mid(echoEnd + 1).toLatin1());
    }
    return sections;
}

/// The value of a line "Name:   value" of opensc-explorer's info.
inline QByteArray infoValue(const QByteArray &section, const char *name)
{
    for (const QByteArray &line : section.split('\n')) {
        if (line.startsWith(QByteArray(name) + ':'))
            return line.mid(static_cast<int>(qstrlen(name)) + 1).trimmed();
    }
    return {};
}

} // namespace testsupport
