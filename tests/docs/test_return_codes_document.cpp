// docs/return-codes.md tells every code of drivers/core/return_codes.h, in both languages, and no other.
#include "drivers/core/return_codes.h"
#include "sdk/contracts.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

namespace {

QString contentOf(const char *name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", name);
    return QString::fromUtf8(file.readAll());
}

/// The numbers behind "= " in the header's list of return codes, in its order.
QList<int> codesOfHeader()
{
    const QString text = contentOf(UNIFOLD_RETURN_CODES_HEADER);
    const QString list =
        text.mid(text.indexOf("enum ReturnCode"), text.indexOf("};") - text.indexOf("enum ReturnCode"));
    QList<int> codes;
    static const QRegularExpression number("k\\w+ = (-?\\d+),");
    for (auto match = number.globalMatch(list); match.hasNext();)
        codes << match.next().captured(1).toInt();
    return codes;
}

/// The cells of the document's rows, without the table's head.
QList<QStringList> rowsOfDocument()
{
    QList<QStringList> rows;
    for (const QString &line : contentOf(UNIFOLD_RETURN_CODES_DOCUMENT).split('\n')) {
        if (!line.startsWith("| ") || line.startsWith("| code "))
            continue;
        QStringList cells;
        for (const QString &cell : line.split('|').mid(1, 4))
            cells << cell.trimmed();
        rows << cells;
    }
    return rows;
}

bool hasChinese(const QString &text)
{
    static const QRegularExpression han("\\p{Han}");
    return han.match(text).hasMatch();
}

} // namespace

class TestReturnCodesDocument : public QObject {
    Q_OBJECT

private slots:
    void tellsEveryCodeOnceInOrder();
    void showsEachCodeAsThePagesDo();
    void explainsEachCodeInBothLanguages();
    void tellsWhatElseIsAnswered();
};

void TestReturnCodesDocument::tellsEveryCodeOnceInOrder()
{
    const QList<int> codes = codesOfHeader();
    QVERIFY(codes.contains(drivers::kSuccess) && codes.contains(drivers::kCardError));
    QList<int> told;
    for (const QStringList &row : rowsOfDocument())
        told << row[0].toInt();
    QCOMPARE(told, codes);
}

void TestReturnCodesDocument::showsEachCodeAsThePagesDo()
{
    for (const QStringList &row : rowsOfDocument())
        QCOMPARE(row[1], QString::asprintf("0x%X", static_cast<unsigned>(row[0].toInt())));
}

void TestReturnCodesDocument::explainsEachCodeInBothLanguages()
{
    for (const QStringList &row : rowsOfDocument()) {
        QVERIFY2(!row[2].isEmpty() && !hasChinese(row[2]), qPrintable(row.join(" | ")));
        QVERIFY2(hasChinese(row[3]), qPrintable(row.join(" | ")));
    }
}

void TestReturnCodesDocument::tellsWhatElseIsAnswered()
{
    const QString text = contentOf(UNIFOLD_RETURN_CODES_DOCUMENT).simplified();
    QVERIFY(text.contains(QString("%1 absent, %2 present, %3 powered")
                              .arg(drivers::kCardAbsent)
                              .arg(drivers::kCardPresent)
                              .arg(drivers::kCardPowered)));
    QVERIFY(text.contains(QString("0 none yet, %1 swiped, %2 swiped a stripe without data")
                              .arg(sdk::kMsrSwiped)
                              .arg(sdk::kMsrSwipedNoData)));
}

QTEST_GUILESS_MAIN(TestReturnCodesDocument)
#include "test_return_codes_document.moc"
