// APDUs over T=0, against a card that a list of expected TPDUs and replies plays.
#include "drivers/core/t0_exchange.h"

#include <QtTest>

using namespace drivers;

namespace {

Bytes bytesOf(const QByteArray &hex)
{
    return *fromHex(hex.toStdString());
}

using Dialogue = QList<QPair<QByteArray, QByteArray>>;

// Answers in the order of `dialogue`; every TPDU must be the one expected there.
class DialogueCard {
public:
    explicit DialogueCard(Dialogue dialogue) : m_dialogue(std::move(dialogue)) {}

    ReturnCode operator()(const Bytes &tpdu, Bytes &reply)
    {
        const QByteArray text = QByteArray::fromStdString(toHex(tpdu));
        if (m_dialogue.isEmpty() || m_dialogue.first().first != text)
            return kTransportFailure;
        reply = bytesOf(m_dialogue.takeFirst().second);
        return kSuccess;
    }

    bool finished() const { return m_dialogue.isEmpty(); }

private:
    Dialogue m_dialogue;
};

} // namespace

class TestT0Exchange : public QObject {
    Q_OBJECT

private slots:
    void followsTheDialogue_data();
    void followsTheDialogue();
    void refusesPromisesWithoutEnd();
    void refusesRepliesWithoutStatus();
    void passesFailuresOfTheReader();
};

void TestT0Exchange::followsTheDialogue_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<Dialogue>("dialogue");
    QTest::addColumn<QByteArray>("reply");
    const QByteArray data256 = QByteArray("A5").repeated(256);
    const QByteArray command3E = "00DB0000000100" + data256;

    QTest::newRow("case 1 gets a length byte")
        << QByteArray("00A40000") << Dialogue{{"00A4000000", "9000"}} << QByteArray("9000");
    QTest::newRow("case 1 is not repeated")
        << QByteArray("00A40000") << Dialogue{{"00A4000000", "6C10"}} << QByteArray("6C10");
    QTest::newRow("case 2") << QByteArray("00B0000002") << Dialogue{{"00B0000002", "AABB9000"}}
                            << QByteArray("AABB9000");
    QTest::newRow("6C once") << QByteArray("00B0000009") << Dialogue{{"00B0000009", "6C02"}, {"00B0000002", "AABB9000"}}
                             << QByteArray("AABB9000");
    QTest::newRow("6C twice is the card's answer")
        << QByteArray("00B0000009") << Dialogue{{"00B0000009", "6C02"}, {"00B0000002", "6C03"}} << QByteArray("6C03");
    QTest::newRow("6C after data is the card's answer")
        << QByteArray("00A4000001AA") << Dialogue{{"00A4000001AA", "6C02"}} << QByteArray("6C02");
    QTest::newRow("case 4 loses Le, 61 in its class")
        << QByteArray("80A4000001AA00") << Dialogue{{"80A4000001AA", "6102"}, {"80C0000002", "AABB9000"}}
        << QByteArray("AABB9000");
    QTest::newRow("61 with data of case 2")
        << QByteArray("00B0000001") << Dialogue{{"00B0000001", "AA6101"}, {"00C0000001", "BB9000"}}
        << QByteArray("AABB9000");
    QTest::newRow("61 in several pieces")
        << QByteArray("00A4000001AA")
        << Dialogue{{"00A4000001AA", "6102"}, {"00C0000002", "AABB6101"}, {"00C0000001", "CC6283"}}
        << QByteArray("AABBCC6283");
    QTest::newRow("6C to GET RESPONSE") << QByteArray("00A4000001AA00")
                                        << Dialogue{{"00A4000001AA", "6100"},
                                                    {"00C0000000", "6C02"},
                                                    {"00C0000002", "AABB9000"}}
                                        << QByteArray("AABB9000");
    QTest::newRow("6C then 61") << QByteArray("00B0000000")
                                << Dialogue{{"00B0000000", "6C01"}, {"00B0000001", "AA6101"}, {"00C0000001", "BB9000"}}
                                << QByteArray("AABB9000");
    QTest::newRow("GET RESPONSE refused")
        << QByteArray("00A4000001AA") << Dialogue{{"00A4000001AA", "6102"}, {"00C0000002", "6D00"}}
        << QByteArray("6D00");
    QTest::newRow("2E made short") << QByteArray("00B00000000010") << Dialogue{{"00B0000010", "AA9000"}}
                                   << QByteArray("AA9000");
    QTest::newRow("2E longer than short")
        << QByteArray("00B00000000101") << Dialogue{{"00B0000000", data256 + "6101"}, {"00C0000001", "BB9000"}}
        << data256 + "BB9000";
    QTest::newRow("4E made short") << QByteArray("00A40000000001AA0000")
                                   << Dialogue{{"00A4000001AA", "6101"}, {"00C0000001", "BB9000"}}
                                   << QByteArray("BB9000");
    QTest::newRow("3E in envelopes") << command3E
                                     << Dialogue{{"00C20000FF" + command3E.left(510), "9000"},
                                                 {"00C2000008" + command3E.mid(510), "6101"},
                                                 {"00C0000001", "BB9000"}}
                                     << QByteArray("BB9000");
    QTest::newRow("envelope refused") << command3E << Dialogue{{"00C20000FF" + command3E.left(510), "6D00"}}
                                      << QByteArray("6D00");
    QTest::newRow("no known case") << QByteArray("00A4000005AA") << Dialogue{{"00A4000005AA", "6700"}}
                                   << QByteArray("6700");
}

void TestT0Exchange::followsTheDialogue()
{
    QFETCH(QByteArray, command);
    QFETCH(Dialogue, dialogue);
    QFETCH(QByteArray, reply);
    DialogueCard card(dialogue);
    Bytes answer;
    QCOMPARE(exchangeT0(std::ref(card), bytesOf(command), answer), kSuccess);
    QCOMPARE(QByteArray::fromStdString(toHex(answer)), reply);
    QVERIFY(card.finished());
}

void TestT0Exchange::refusesPromisesWithoutEnd()
{
    int asked = 0;
    const auto empty = [&](const Bytes &, Bytes &reply) {
        ++asked;
        reply = {0x61, 0x10};
        return kSuccess;
    };
    Bytes answer;
    QCOMPARE(exchangeT0(empty, {0x00, 0xA4, 0x00, 0x00}, answer), kCardError);
    QVERIFY(answer.empty());
    QVERIFY(asked < 5);

    const auto endless = [](const Bytes &, Bytes &reply) {
        reply = Bytes(256, 0x55);
        reply.insert(reply.end(), {0x61, 0x00});
        return kSuccess;
    };
    QCOMPARE(exchangeT0(endless, {0x00, 0xB0, 0x00, 0x00, 0x00}, answer), kCardError);
    QVERIFY(answer.empty());
}

void TestT0Exchange::refusesRepliesWithoutStatus()
{
    for (const Bytes &broken : {Bytes{}, Bytes{0x90}}) {
        const auto card = [&](const Bytes &, Bytes &reply) {
            reply = broken;
            return kSuccess;
        };
        Bytes answer;
        QCOMPARE(exchangeT0(card, {0x00, 0xB0, 0x00, 0x00, 0x00}, answer), kCardError);
        QVERIFY(answer.empty());
    }
}

void TestT0Exchange::passesFailuresOfTheReader()
{
    bool first = true;
    const auto pulledAfterFirst = [&](const Bytes &, Bytes &reply) {
        reply = {0xAA, 0x61, 0x01};
        return std::exchange(first, false) ? kSuccess : kCardRemoved;
    };
    Bytes answer;
    QCOMPARE(exchangeT0(pulledAfterFirst, {0x00, 0xB0, 0x00, 0x00, 0x01}, answer), kCardRemoved);
    QVERIFY(answer.empty());
}

QTEST_APPLESS_MAIN(TestT0Exchange)
#include "test_t0_exchange.moc"
