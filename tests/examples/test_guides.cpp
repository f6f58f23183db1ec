// What the guides show of the examples is what stands in the files that they name.
#include "tests/examples/guide.h"

#include <QtTest>

using namespace guide_test;

class TestGuides : public QObject {
    Q_OBJECT

private slots:
    void showTheFilesAsTheyAre_data();
    void showTheFilesAsTheyAre();
    void linkWhatIsThere_data();
    void linkWhatIsThere();
};

void TestGuides::showTheFilesAsTheyAre_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("docs/writing-a-driver.md") << 8;
    QTest::newRow("docs/writing-a-card.md") << 1;
}

void TestGuides::showTheFilesAsTheyAre()
{
    QFETCH(int, count);
    int shown = 0;
    for (const CodeBlock &block : blocksOf(QTest::currentDataTag())) {
        if (block.language != "cpp" && block.language != "json")
            continue;
        QVERIFY2(contentOf(block.source).contains(block.text), qPrintable(block.source + ":\n" + block.text));
        ++shown;
    }
    QCOMPARE(shown, count);
}

void TestGuides::linkWhatIsThere_data()
{
    QTest::addColumn<QString>("guide");
    for (const char *guide : {"user-guide.md", "user-guide.zh-CN.md", "writing-a-driver.md", "writing-a-card.md",
                              "return-codes.md", "virtual-reader.md", "virtual-reader.zh-CN.md"})
        QTest::newRow(guide) << QString("docs/") + guide;
}

void TestGuides::linkWhatIsThere()
{
    QFETCH(QString, guide);
    static const QRegularExpression link(R"(\]\(([^)#:]+)\))");
    for (auto match = link.globalMatch(contentOf(guide)); match.hasNext();) {
        const QString target = match.next().captured(1);
        QVERIFY2(QFile::exists(QString(UNIFOLD_SOURCE "/docs/") + target), qPrintable(target));
    }
}

QTEST_GUILESS_MAIN(TestGuides)
#include "test_guides.moc"
