// A guide under docs/, taken apart: its code blocks and its tables.
#pragma once

#include <QFile>
#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace guide_test {

inline QString contentOf(const QString &name)
{
    QFile file(QString(UNIFOLD_SOURCE "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", qPrintable(name));
    return QString::fromUtf8(file.readAll());
}

struct CodeBlock {
    QString language;
    QString text;
    QString source; ///< the file below examples/ that was linked last before it
};

inline QList<CodeBlock> blocksOf(const QString &guide)
{
    static const QRegularExpression part(R"(\]\(\.\./(examples/[^)]+)\)|^```(\w+)\n(.*?)^```$)",
                                         QRegularExpression::MultilineOption |
                                             QRegularExpression::DotMatchesEverythingOption);
    QList<CodeBlock> blocks;
    QString source;
    for (auto match = part.globalMatch(contentOf(guide)); match.hasNext();) {
        const auto found = match.next();
        if (found.captured(2).isEmpty())
            source = found.captured(1);
        else
            blocks << CodeBlock{found.captured(2), found.captured(3), source};
    }
    return blocks;
}

/// The texts of the blocks in one language, in their order.
inline QStringList blocksIn(const QString &guide, const QString &language)
{
    QStringList texts;
    for (const CodeBlock &block : blocksOf(guide)) {
        if (block.language == language)
            texts << block.text;
    }
    return texts;
}

} // namespace guide_test
