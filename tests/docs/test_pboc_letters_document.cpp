// docs/pboc-letters.md tells every letter of drivers/core/applications/pboc_letters.h with its tags, and no other.
#include "drivers/core/applications/pboc_letters.h"

#include <QFile>
#include <QtTest>

namespace {

/// The rows of the table below a heading: the letter, and the tags as the document writes them.
QStringList rowsBelow(const QString &heading)
{
    QFile file(UNIFOLD_PBOC_LETTERS_DOCUMENT);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the document cannot be read");
    const QString text = QString::fromUtf8(file.readAll());
    const QString section = text.section("## " + heading, 1).section("\n## ", 0, 0);
    QStringList rows;
    for (const QString &line : section.split('\n')) {
        const QStringList cells = line.split('|');
        if (cells.size() > 3 && cells[1].trimmed().size() == 1)
            rows << cells[1].trimmed() + ' ' + cells[3].trimmed();
    }
    return rows;
}

QString row(char letter, std::uint32_t tag, std::uint32_t alsoTag = 0)
{
    const QString text = QString("%1 %2").arg(QChar(letter)).arg(QString::number(tag, 16).toUpper());
    return alsoTag == 0 ? text : text + ", " + QString::number(alsoTag, 16).toUpper();
}

} // namespace

class TestPbocLettersDocument : public QObject {
    Q_OBJECT

private slots:
    void tellsTheTagList()
    {
        QStringList expected;
        for (const auto &entry : drivers::pboc::kTagLetters)
            expected << row(entry.letter, entry.tag);
        QCOMPARE(rowsBelow("Tag list of `vek_pboc_get_card_info`"), expected);
    }

    void tellsTheTransactionData()
    {
        QStringList expected;
        for (const auto &entry : drivers::pboc::kTransactionLetters)
            expected << row(entry.letter, entry.tag, entry.alsoTag);
        QCOMPARE(rowsBelow("Transaction data of `vek_pboc_get_arqc`"), expected);
    }

    void tellsTheReply()
    {
        QStringList expected;
        for (const auto &entry : drivers::pboc::kCryptogramLetters)
            expected << row(entry.letter, entry.tag);
        QCOMPARE(rowsBelow("Reply of `vek_pboc_get_arqc`"), expected);
    }
};

QTEST_GUILESS_MAIN(TestPbocLettersDocument)
#include "test_pboc_letters_document.moc"
