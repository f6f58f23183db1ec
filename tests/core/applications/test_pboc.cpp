#include "drivers/core/applications/pboc.h"

#include <QtTest>
#include <map>
#include <random>

#include "drivers/core/applications/pboc_text.h"
#include "tests/core/applications/scripted_channel.h"

using namespace drivers;
using tests::hex;
using tests::ScriptedChannel;

namespace {

constexpr const char *kAid = "A000000333";
constexpr const char *kTransaction = "P012000000000100Q012000000000000R0040156S006140426T00201U006143837"
                                     "V024D7DBBACFB9F1C3E6B2E2CAD4";

/// A card by its replies, keyed by instruction and P1 P2; unknown commands give 6A82.
struct Replies {
    std::map<std::string, std::string> byHeader;

    ScriptedChannel::Answer answer() const
    {
        return [this](const Bytes &command) {
            const std::string header = toHex(command).substr(2, 6);
            const auto found = byHeader.find(header);
            return hex(found == byHeader.end() ? "6A82" : found->second);
        };
    }
};

/// A small card that answers in the second reply format, tags named.
Replies smallCard()
{
    return {{
        {"A40400", "6F0F8407A0000003330101A50450024142"
                   "9000"},
        {"A80000", "770A82021C0094040801010090"
                   "00"},
        {"B2010C", "70125A0462280F"
                   "FF8C0A9F0206"
                   "9C019F37049A03"
                   "9000"},
        {"CA9F36", "9F360201029000"},
        {"AE8000", "77189F2701809F360200059F26081122334455667788"
                   "9F1001AA"
                   "9000"},
    }};
}

ReturnCode info(const Replies &replies, std::string_view tags, std::string &result)
{
    ScriptedChannel channel(replies.answer());
    return readCardInfo(channel, kAid, tags, result);
}

} // namespace

class PbocTest : public QObject {
    Q_OBJECT

private slots:
    void parsesTransactionData();
    void rejectsMalformedTransactionData_data();
    void rejectsMalformedTransactionData();
    void rejectsBadArgumentsWithoutTouchingTheCard();
    void answersInTheOrderAskedFor();
    void fillsTheListsTheCardAsksFor();
    void readsBothReplyFormats();
    void reportsARefusal_data();
    void reportsARefusal();
    void boundsTheNumberOfCommands();
    void survivesHostileCards();
};

void PbocTest::parsesTransactionData()
{
    const auto elements = pboc::parseTransaction(kTransaction);
    QVERIFY(elements.has_value());
    QCOMPARE(elements->at(0x9F02), hex("000000000100"));
    QCOMPARE(elements->at(0x9F03), hex("000000000000"));
    QCOMPARE(elements->at(0x9F1A), hex("0156"));
    QCOMPARE(elements->at(0x5F2A), hex("0156"));
    QCOMPARE(elements->at(0x9A), hex("140426"));
    QCOMPARE(elements->at(0x9C), hex("01"));
    QCOMPARE(elements->at(0x9F21), hex("143837"));
    QCOMPARE(elements->at(0x9F4E), hex("D7DBBACFB9F1C3E6B2E2CAD4"));
}

void PbocTest::rejectsMalformedTransactionData_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("unknown letter") << QByteArray("A00201");
    QTest::newRow("small letter") << QByteArray("t00201");
    QTest::newRow("letter alone") << QByteArray("T");
    QTest::newRow("two digits of length") << QByteArray("T02");
    QTest::newRow("length not a number") << QByteArray("T0x201");
    QTest::newRow("length past the end") << QByteArray("T00301");
    QTest::newRow("rest after the value") << QByteArray("T002011");
    QTest::newRow("wrong length for the letter") << QByteArray("R0030156");
    QTest::newRow("not decimal") << QByteArray("R00401A6");
    QTest::newRow("not hexadecimal") << QByteArray("V004D7XX");
    QTest::newRow("odd") << QByteArray("V003D7D");
    QTest::newRow("name too long") << QByteArray("V042") + QByteArray(42, 'A');
    QTest::newRow("twice the same letter") << QByteArray("T00201T00201");
    QTest::newRow("blank") << QByteArray("T00201 ");
}

void PbocTest::rejectsMalformedTransactionData()
{
    QFETCH(QByteArray, text);
    ScriptedChannel channel([](const Bytes &) { return hex("9000"); });
    std::string result;
    QCOMPARE(makeArqc(channel, kAid, text.toStdString(), result), kBadArgument);
    QVERIFY(channel.sent.empty());
}

void PbocTest::rejectsBadArgumentsWithoutTouchingTheCard()
{
    ScriptedChannel channel([](const Bytes &) { return hex("9000"); });
    std::string result = "old";
    for (const char *aid : {"", "A0", "A00000033", "A00000033G", "A000000333010101A000000333010101A0"})
        QCOMPARE(readCardInfo(channel, aid, "A", result), kBadArgument);
    for (const char *tags : {"", "a", "AR", "A B"})
        QCOMPARE(readCardInfo(channel, kAid, tags, result), kBadArgument);
    QVERIFY(channel.sent.empty());
    QVERIFY(result.empty());
}

void PbocTest::answersInTheOrderAskedFor()
{
    std::string result;
    QCOMPARE(info(smallCard(), "IAMBA", result), kSuccess);
    QCOMPARE(result, std::string("I0040102A00562280M002ABB000A00562280"));
}

void PbocTest::fillsTheListsTheCardAsksFor()
{
    const Replies replies = smallCard();
    ScriptedChannel channel(replies.answer());
    std::string result;
    QCOMPARE(makeArqc(channel, kAid, kTransaction, result), kSuccess);
    const std::string sent = toHex(channel.sent.back());
    QCOMPARE(sent.substr(0, 10), std::string("80AE80000E"));
    QCOMPARE(sent.substr(10, 14), std::string("00000000010001"));
    QCOMPARE(sent.substr(32), std::string("14042600"));
    const std::string number = sent.substr(24, 8);
    QVERIFY(result.find("E008" + number) != std::string::npos);
    QVERIFY(result.rfind("A0161122334455667788B00280C0040005D002AAE008", 0) == 0);
}

void PbocTest::readsBothReplyFormats()
{
    Replies replies = smallCard();
    replies.byHeader["A80000"] = "80061C00080101009000";
    replies.byHeader["AE8000"] = "800C8000051122334455667788BB9000";
    ScriptedChannel channel(replies.answer());
    std::string result;
    QCOMPARE(makeArqc(channel, kAid, kTransaction, result), kSuccess);
    QVERIFY(result.rfind("A0161122334455667788B00280C0040005D002BBE008", 0) == 0);
}

void PbocTest::reportsARefusal_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("no application") << QByteArray("A40400") << QByteArray("6A82");
    QTest::newRow("application blocked") << QByteArray("A40400") << QByteArray("6283");
    QTest::newRow("no template") << QByteArray("A40400") << QByteArray("9000");
    QTest::newRow("template cut off") << QByteArray("A40400") << QByteArray("6F0F84079000");
    QTest::newRow("options refused") << QByteArray("A80000") << QByteArray("6985");
    QTest::newRow("options too short") << QByteArray("A80000") << QByteArray("80011C9000");
    QTest::newRow("locator of three bytes") << QByteArray("A80000") << QByteArray("80051C000801019000");
    QTest::newRow("locator of file 0") << QByteArray("A80000") << QByteArray("80061C00000101009000");
    QTest::newRow("locator backwards") << QByteArray("A80000") << QByteArray("80061C00080201009000");
    QTest::newRow("record missing") << QByteArray("B2010C") << QByteArray("6A83");
    QTest::newRow("record not a template") << QByteArray("B2010C") << QByteArray("5A01119000");
    QTest::newRow("no list for the cryptogram") << QByteArray("B2010C") << QByteArray("70035A01119000");
    QTest::newRow("list longer than a command") << QByteArray("B2010C") << QByteArray("70058C039F02FF9000");
    QTest::newRow("cryptogram refused") << QByteArray("AE8000") << QByteArray("6985");
    QTest::newRow("declined") << QByteArray("AE8000") << QByteArray("800C0000051122334455667788BB9000");
    QTest::newRow("cryptogram too short") << QByteArray("AE8000")
                                          << QByteArray("80058000051122"
                                                        "9000");
    QTest::newRow("cryptogram empty") << QByteArray("AE8000") << QByteArray("9000");
}

void PbocTest::reportsARefusal()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, reply);
    Replies replies = smallCard();
    replies.byHeader[header.toStdString()] = reply.toStdString();
    ScriptedChannel channel(replies.answer());
    std::string result = "old";
    QCOMPARE(makeArqc(channel, kAid, kTransaction, result), kCardError);
    QVERIFY(result.empty());
}

void PbocTest::boundsTheNumberOfCommands()
{
    Replies replies = smallCard();
    replies.byHeader["A80000"] = "800A1C000801FF001001FF009000";
    ScriptedChannel channel(
        [&](const Bytes &command) { return command[1] == 0xB2 ? hex("70009000") : replies.answer()(command); });
    std::string result;
    QCOMPARE(readCardInfo(channel, kAid, "A", result), kCardError);
    QVERIFY(channel.sent.size() < 100);
}

void PbocTest::survivesHostileCards()
{
    std::mt19937 noise(333);
    const Replies replies = smallCard();
    int successes = 0;
    for (int round = 0; round < 5000; ++round) {
        // A true reply with a few bytes spoiled gets further into the code than noise does.
        ScriptedChannel channel([&](const Bytes &command) {
            Bytes reply = replies.answer()(command);
            for (auto i = noise() % 3; i > 0 && reply.size() > 2; --i)
                reply[noise() % (reply.size() - 2)] = static_cast<std::uint8_t>(noise());
            if (noise() % 16 == 0)
                reply.resize(noise() % (reply.size() + 1));
            return reply;
        });
        std::string result;
        const ReturnCode code = round % 2 == 0 ? readCardInfo(channel, kAid, "ABCDEFGHIJKLMNOPQ", result)
                                               : makeArqc(channel, kAid, kTransaction, result);
        QVERIFY(code == kSuccess || code == kCardError);
        QCOMPARE(code == kSuccess, !result.empty());
        QVERIFY(channel.sent.size() < 100);
        successes += code == kSuccess ? 1 : 0;
    }
    QVERIFY(successes > 0);
    QVERIFY(successes < 5000);
}

QTEST_GUILESS_MAIN(PbocTest)
#include "test_pboc.moc"
