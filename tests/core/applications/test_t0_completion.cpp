#include "drivers/core/t0_completion.h"

#include <QtTest>

#include "tests/core/applications/scripted_channel.h"

using namespace drivers;
using tests::hex;

namespace {

/// Answers in turn, the last one for ever, and keeps what was sent.
struct Turns {
    std::vector<std::string> answers;
    std::vector<std::string> sent;

    RawExchange exchange()
    {
        return [this](const Bytes &command, Bytes &reply) {
            reply = hex(answers[std::min(sent.size(), answers.size() - 1)]);
            sent.push_back(toHex(command));
            return kSuccess;
        };
    }
};

} // namespace

class T0CompletionTest : public QObject {
    Q_OBJECT

private slots:
    void passesACompleteReplyOn();
    void fetchesWaitingDataWithTheCardsClass();
    void asksAgainWithTheRightLength_data();
    void asksAgainWithTheRightLength();
    void givesUpOnACardThatPromisesForEver();
    void givesUpOnARepeatedWrongLength();
    void rejectsAReplyWithoutStatus();
    void passesFailuresOn();
};

void T0CompletionTest::passesACompleteReplyOn()
{
    Turns card{{"AABB9000"}, {}};
    Bytes reply;
    CompletingChannel channel(card.exchange());
    QCOMPARE(channel.transmit(hex("00B0000002"), reply), kSuccess);
    QCOMPARE(reply, hex("AABB9000"));
    QCOMPARE(card.sent.size(), std::size_t{1});
}

void T0CompletionTest::fetchesWaitingDataWithTheCardsClass()
{
    Turns card{{"6103", "AA6102", "BBCC9000"}, {}};
    Bytes reply;
    QCOMPARE(completeExchange(card.exchange(), hex("80AE80000100"), reply), kSuccess);
    QCOMPARE(reply, hex("AABBCC9000"));
    const std::vector<std::string> expected{"80AE80000100", "80C0000003", "80C0000002"};
    QCOMPARE(card.sent, expected);
}

void T0CompletionTest::asksAgainWithTheRightLength_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("corrected");
    QTest::newRow("header alone") << QByteArray("00B20104") << QByteArray("00B2010405");
    QTest::newRow("expected length") << QByteArray("00B2010400") << QByteArray("00B2010405");
    QTest::newRow("data") << QByteArray("00A4000002EF05") << QByteArray("00A4000002EF0505");
    QTest::newRow("data and expected length") << QByteArray("00A4000002EF0500") << QByteArray("00A4000002EF0505");
}

void T0CompletionTest::asksAgainWithTheRightLength()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, corrected);
    Turns card{{"6C05", "01020304059000"}, {}};
    Bytes reply;
    QCOMPARE(completeExchange(card.exchange(), hex(command.toStdString()), reply), kSuccess);
    QCOMPARE(reply, hex("01020304059000"));
    QCOMPARE(card.sent.back(), corrected.toStdString());
}

void T0CompletionTest::givesUpOnACardThatPromisesForEver()
{
    Turns empty{{"6100"}, {}};
    Bytes reply;
    QCOMPARE(completeExchange(empty.exchange(), hex("00A40000"), reply), kCardError);
    QVERIFY(reply.empty());
    QVERIFY(empty.sent.size() <= 300);
}

void T0CompletionTest::givesUpOnARepeatedWrongLength()
{
    Turns card{{"6C05", "6C06", "6C07"}, {}};
    Bytes reply;
    QCOMPARE(completeExchange(card.exchange(), hex("00B2010400"), reply), kSuccess);
    QCOMPARE(reply, hex("6C06")); // the caller's to judge
    QCOMPARE(card.sent.size(), std::size_t{2});
}

void T0CompletionTest::rejectsAReplyWithoutStatus()
{
    Turns card{{"90"}, {}};
    Bytes reply;
    QCOMPARE(completeExchange(card.exchange(), hex("00B2010400"), reply), kCardError);
    QVERIFY(reply.empty());
}

void T0CompletionTest::passesFailuresOn()
{
    Bytes reply{1, 2, 3};
    const auto gone = [](const Bytes &, Bytes &) { return kCardRemoved; };
    QCOMPARE(completeExchange(gone, hex("00B2010400"), reply), kCardRemoved);
    QVERIFY(reply.empty());
}

QTEST_GUILESS_MAIN(T0CompletionTest)
#include "test_t0_completion.moc"
