#include "drivers/core/trace_mask.h"

#include "drivers/core/call_shapes.h"
#include "sdk/entry_point_table.h"

#include <QtTest>

using drivers::masked;
using drivers::maskedAnswer;
using drivers::Secret;

class TestTraceMask : public QObject {
    Q_OBJECT

private slots:
    void masks_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("secret");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char *name, const char *text, Secret secret, const char *shown) {
            QTest::newRow(name) << text << int(secret) << shown;
        };
        row("no secret", "FFFFFFFFFFFF", Secret::None, "FFFFFFFFFFFF");
        row("a key", "FFFFFFFFFFFF", Secret::All, "************");
        row("SELECT", "00A4040002DF01", Secret::Command, "00A4040002DF01");
        row("VERIFY", "0020008003123456", Secret::Command, "0020008003******");
        row("VERIFY of another class", "8C20008003123456", Secret::Command, "8C20008003******");
        row("VERIFY without data", "00200080", Secret::Command, "00200080");
        row("VERIFY, extended", "00200080000003123456", Secret::Command, "0020008000**********");
        row("CHANGE REFERENCE DATA", "0024000104AABBCCDD", Secret::Command, "0024000104********");
        row("RESET RETRY COUNTER", "002C000104AABBCCDD", Secret::Command, "002C000104********");
        row("ENVELOPE", "00C2000002AABB", Secret::Command, "00C2000002****");
        row("key of a storage card", "FF82000006A0A1A2A3A4A5", Secret::Command, "FF82000006************");
        row("the same, non-volatile", "ff82200006A0A1A2A3A4A5", Secret::Command, "ff82200006************");
        row("EXTERNAL AUTHENTICATE", "0082000004AABBCCDD", Secret::Command, "0082000004AABBCCDD");
        row("block of a storage card", "FFD6000402AABB", Secret::Command, "FFD6000402AABB");
        row("its sector trailer", "FFD6000702AABB", Secret::Command, "FFD6000702****");
        row("value of a storage card", "FFD700040501000000C8", Secret::Command, "FFD700040501000000C8");
        row("authentication by the key's number", "FF860000050100076000", Secret::Command, "FF860000050100076000");
        row("command for the reader's chip", "FF0000000FD44001600700112233445566778899", Secret::Command,
            "FF0000000F******************************");
        row("PUT KEY", "80D801810401AABBCC", Secret::Command, "80D8018104********");
        row("WRITE KEY", "80D4010304AABBCCDD", Secret::Command, "80D4010304********");
        row("UPDATE RECORD with track 2", "00DC010C0B7009570412345D205A0112", Secret::Command,
            "00DC010C0B70095704********5A0112");
        row("the same, extended", "00DC010C000006570412345D20", Secret::Command, "00DC010C0000065704********");
        row("a piece of it, chained", "10DC010C0457061234", Secret::Command, "10DC010C0457******");
        row("the same with a wrong length", "00DC010C09570412345D20", Secret::Command, "00DC010C0957**********");
        row("UPDATE RECORD, odd", "00DC010C0657041234", Secret::Command, "00DC010C0657******");
        row("SELECT, odd", "00A40400021", Secret::Command, "00A40400021");
        row("VERIFY, odd", "002000800312345", Secret::Command, "0020008003*****");
        row("SELECT with a slip", "00A4GG0002DF01", Secret::Command, "**************");
        row("PUT DATA without tracks", "00DA01020570035A0112", Secret::Command, "00DA01020570035A0112");
        row("UPDATE BINARY of a file", "00D6000702AABB", Secret::Command, "00D6000702AABB");
        row("no hexadecimal", "0g20", Secret::Command, "****");
        row("track 2 in a record",
            "7009570412345D205A0112"
            "9000",
            Secret::Answer, "70095704********5A01129000");
        row("track 2 in a record cut short", "70205A0112570412345D9000", Secret::Answer, "70205A011257************");
        row("two tracks", "70085702345D570299AA5A01129000", Secret::Answer, "70085702****5702****5A01129000");
        row("the same one at another place", "5A02345D5702345D9000", Secret::Answer, "5A02****5702****9000");
        row("no elements", "11223344559000", Secret::Answer, "11223344559000");
        row("no track", "70035A01129000", Secret::Answer, "70035A01129000");
        row("a status alone", "9000", Secret::Answer, "9000");
        row("track 2 among letters", "A0041234D0061D2345E00499AB", Secret::Letters, "A0041234D006******E00499AB");
        row("letters cut off", "D0991234", Secret::Letters, "D099****");
        row("no letters", "text", Secret::Letters, "text");
    }

    void masks()
    {
        QFETCH(QString, text);
        QFETCH(int, secret);
        QFETCH(QString, shown);
        QCOMPARE(QString::fromStdString(masked(text.toStdString(), static_cast<Secret>(secret))), shown);
    }

    void answersAreMaskedAsTheirCommandsAsk()
    {
        QCOMPARE(maskedAnswer("FFB0000710", "AABBCCDD9000"), std::string("********9000"));
        QCOMPARE(maskedAnswer("ffb0000710", "6982"), std::string("6982"));
        QCOMPARE(maskedAnswer("FFB0000410", "AABBCCDD9000"), std::string("AABBCCDD9000"));
        QCOMPARE(maskedAnswer("00B0000710", "AABBCCDD9000"), std::string("AABBCCDD9000"));
        QCOMPARE(maskedAnswer("00B2010C00", "5702345D9000"), std::string("5702****9000"));
        QCOMPARE(maskedAnswer("", "5702345D9000"), std::string("5702****9000"));
    }

    void blocksThatReachATrailerAreMasked()
    {
        const std::string two(64, 'A');
        const std::string stars(64, '*');
        QCOMPARE(masked("FFD6000520" + two, Secret::Command), "FFD6000520" + two);
        QCOMPARE(masked("FFD6000620" + two, Secret::Command), "FFD6000620" + stars);
        QCOMPARE(maskedAnswer("FFB0000520", two + "9000"), two + "9000");
        QCOMPARE(maskedAnswer("FFB0000620", two + "9000"), stars + "9000");
        // A reader's chip may have been told to read anything.
        QCOMPARE(maskedAnswer("FF00000005", "D541009000"), std::string("******9000"));
        QCOMPARE(maskedAnswer("FFCA000000", "3A9F07C49000"), std::string("3A9F07C49000"));
    }

    void onlyTrailersAreSecretBlocks()
    {
        QCOMPARE(masked("0011", Secret::Block, 5), std::string("0011"));
        QCOMPARE(masked("0011", Secret::Block, 7), std::string("****"));
    }

    void everyCalledEntryPointHasAShape()
    {
        // A called one names as many parameters as its contract has.
#define UNIFOLD_CHECK_CALLED(name, Contract)                                                                           \
    QVERIFY2(drivers::findCallShape(#name) != nullptr, #name);                                                         \
    QCOMPARE(parameters(*drivers::findCallShape(#name)), arity(static_cast<sdk::Contract *>(nullptr)));
#define UNIFOLD_CHECK_UNCALLED(name)                                                                                   \
    QVERIFY2(drivers::findCallShape(#name) == nullptr, #name);                                                         \
    QVERIFY2(drivers::isEntryPoint(#name), #name);
        UNIFOLD_ENTRY_POINTS(UNIFOLD_CHECK_CALLED, UNIFOLD_CHECK_UNCALLED)
#undef UNIFOLD_CHECK_CALLED
#undef UNIFOLD_CHECK_UNCALLED
        QVERIFY(!drivers::isEntryPoint("vek_juggle"));
        QVERIFY(!drivers::isEntryPoint(""));
    }

private:
    template <class Result, class... Arguments>
    static std::size_t arity(Result (*)(Arguments...))
    {
        return sizeof...(Arguments);
    }
    static std::size_t parameters(const drivers::CallShape &shape)
    {
        std::size_t count = 0;
        while (count < shape.parameters.size() && shape.parameters.at(count).name != nullptr)
            ++count;
        return count;
    }
};

QTEST_GUILESS_MAIN(TestTraceMask)
#include "test_trace_mask.moc"
