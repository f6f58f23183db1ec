#include "app/text_codec.h"
#include "tests/support/death.h"

#include <QTest>

class TestTextCodec : public QObject {
    Q_OBJECT

private slots:
    void gbkBytesBecomeText() { QCOMPARE(gbkToText(QByteArray::fromHex("D5C5C8FD")), "张三"); }

    void gbkTextIsCutAtAnEmbeddedNul() { QCOMPARE(gbkToText(QByteArray::fromHex("D5C500C8FD")), "张"); }

    void gbkCutInsideACharacterDoesNotFault() { QVERIFY(gbkToText(QByteArray::fromHex("D5C5C8")).startsWith("张")); }

    void theReverseStepsGiveGbkBytesReadAsUtf8()
    {
        QCOMPARE(utf8ToGbkText("abc"), "abc");
        QCOMPARE(utf8ToGbkText("张"), QString::fromUtf8(QByteArray::fromHex("D5C5")));
    }

    void boundedTextEndsAtTheFirstNul()
    {
        const std::array<char, 5> buffer{'a', 'b', '\0', 'c', '\0'};
        QCOMPARE(boundedText(buffer), QByteArray("ab"));
    }

    void boundedTextEndsAtTheBuffersEnd()
    {
        const std::array<char, 3> buffer{'a', 'b', 'c'};
        QCOMPARE(boundedText(buffer), QByteArray("abc"));
    }

    void appendFillsTheBufferButNeverPastIt()
    {
        std::array<char, 6> buffer{};
        appendOrAbort(buffer, "abc");
        appendOrAbort(buffer, "de");
        QCOMPARE(boundedText(buffer), QByteArray("abcde"));

        QVERIFY(aborts([&buffer] { appendOrAbort(buffer, "f"); }));
    }
};

QTEST_APPLESS_MAIN(TestTextCodec)
#include "test_text_codec.moc"
