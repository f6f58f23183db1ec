// The host's Mifare commands against the card as a PC/SC reader shows it: whatever is done, the host gives the code
// that the card's model stands for, and the two cards hold the same afterwards.
#include "drivers/core/applications/mifare.h"
#include "drivers/core/mifare/mifare_value.h"
#include "drivers/virtual/cards/storage_card.h"
#include "tests/virtual/mifare/mifare_test_card.h"

#include <QtTest>

#include <functional>

using namespace drivers;
using namespace drivers::cards;
using mifare_test::describe;
using mifare_test::imageWithAccess;
using mifare_test::kKeyA;
using mifare_test::kKeyB;

namespace {

class StorageChannel : public CardChannel {
public:
    explicit StorageChannel(StorageCard &card) : m_card(card) {}

    ReturnCode transmit(const Bytes &command, Bytes &reply) override
    {
        sent.push_back(QByteArray::fromStdString(toHex(command)));
        if (intercept && intercept(command, reply))
            return kSuccess;
        reply = m_card.transmit(command);
        return kSuccess;
    }

    QList<QByteArray> sent;
    /// Answers in the card's place if it returns true.
    std::function<bool(const Bytes &command, Bytes &reply)> intercept;

private:
    StorageCard &m_card;
};

int codeOf(MifareResult result)
{
    switch (result) {
    case MifareResult::ok:
        return kSuccess;
    case MifareResult::badArgument:
        return kBadArgument;
    case MifareResult::authenticationFailed:
    case MifareResult::notAuthenticated:
        return kAuthenticationFailed;
    case MifareResult::accessDenied:
        return kAccessDenied;
    default:
        return kCardError;
    }
}

constexpr int kSector = 1;
constexpr int kBlock = 5;
constexpr SectorKey kNewKey{1, 2, 3, 4, 5, 6};

// One card twice: behind its front with a host before it, and as the bare model.
struct Pair {
    explicit Pair(const nlohmann::json &description, ValueOperations operations = ValueOperations::kOneCommand)
        : front(description), channel(front), host(operations), model(description)
    {
    }

    void authenticate(char keyType)
    {
        const SectorKey &key = keyType == 'A' ? kKeyA : kKeyB;
        QCOMPARE(int(host.authenticate(channel, kSector, keyType, key)),
                 codeOf(model.authenticate(kSector, keyType, key)));
    }

    bool same() const { return front.description() == model.description(); }

    StorageCard front;
    StorageChannel channel;
    MifareSession host;
    MifareCard model;
};

nlohmann::json cardWithCondition(std::uint8_t data, std::uint8_t trailer)
{
    AccessConditions conditions;
    conditions.block = {data, data, data, trailer};
    MifareImage image = imageWithAccess(encodeAccess(conditions));
    image[kBlock] = encodeValueBlock({210, kBlock});
    return describe(image);
}

void addConditions()
{
    QTest::addColumn<int>("condition");
    QTest::addColumn<char>("keyType");
    for (int condition = 0; condition < 8; ++condition)
        for (const char keyType : {'A', 'B'})
            QTest::addRow("%d %c", condition, keyType) << condition << keyType;
}

} // namespace

class TestStorageCard : public QObject {
    Q_OBJECT

private slots:
    void answersAsThePcscPartSays();
    void dataBlocksUnderAllConditions_data() { addConditions(); }
    void dataBlocksUnderAllConditions();
    void keyChangesUnderAllTrailerConditions_data() { addConditions(); }
    void keyChangesUnderAllTrailerConditions();
    void keyChangeNeedsTheOtherKey();
    void walletByEveryFamily_data();
    void walletByEveryFamily();
    void fallsBackWhereTheReaderKnowsNoCommand();
    void loadsTheKeyIntoTheOtherMemory();
    void refusals();
    void failedCommandEndsTheAuthentication();
    void choosesByReaderName();
    void knowsTheCardByItsAtr();
};

void TestStorageCard::answersAsThePcscPartSays()
{
    StorageCard card(cardWithCondition(0, 1));
    const auto reply = [&](const char *command) {
        return QByteArray::fromStdString(toHex(card.transmit(*fromHex(command))));
    };
    const MifareCard model(cardWithCondition(0, 1));
    QCOMPARE(reply("FFCA000000"), QByteArray::fromStdString(model.uid() + "9000"));
    QCOMPARE(reply("FFCA010000"), QByteArray("6A81"));
    QCOMPARE(reply("FFB0000510"), QByteArray("6982"));
    QCOMPARE(reply("FF82000005A0A1A2A3A4"), QByteArray("6389"));
    QCOMPARE(reply("FF82200006A0A1A2A3A4A5"), QByteArray("6387"));
    QCOMPARE(reply("FF860000050100056000"), QByteArray("6988"));
    QCOMPARE(reply("FF82000006A0A1A2A3A4A5"), QByteArray("9000"));
    QCOMPARE(reply("FF860000050100056200"), QByteArray("6986"));
    QCOMPARE(reply("FF860000050100056000"), QByteArray("9000"));
    QCOMPARE(reply("FFB0000510"), QByteArray("D20000002DFFFFFFD200000005FA05FA9000"));
    QCOMPARE(reply("FFB0000504"), QByteArray("6C10"));
    QCOMPARE(reply("FFB1000504"), QByteArray("000000D29000"));
    QCOMPARE(reply("FFD70005050100000001"), QByteArray("9000"));
    QCOMPARE(reply("FFD400050401000000"), QByteArray("9000"));
    QCOMPARE(reply("FFD800050402000000"), QByteArray("9000"));
    QCOMPARE(reply("FFC200030BA009800105810405000000"), QByteArray("C0030090009000"));
    QCOMPARE(reply("FFB1000504"), QByteArray("000000D79000"));
    QCOMPARE(reply("FFD70005050000000064"), QByteArray("9000"));
    QCOMPARE(reply("FFB1000504"), QByteArray("000000649000"));
    QCOMPARE(reply("FFB0004010"), QByteArray("6A82"));
    QCOMPARE(reply("FFB0000510"), QByteArray("6982"));
    QCOMPARE(reply("FF990000"), QByteArray("6D00"));
    QCOMPARE(reply("00A40000"), QByteArray("6E00"));
    QCOMPARE(reply("FF"), QByteArray("6700"));
}

void TestStorageCard::dataBlocksUnderAllConditions()
{
    QFETCH(int, condition);
    QFETCH(char, keyType);
    const Block16 data{1, 2, 3};
    const QList<std::function<QPair<int, int>(Pair &)>> operations = {
        [&](Pair &pair) {
            Block16 a{};
            Block16 b{};
            const int host = pair.host.read(pair.channel, kBlock, a);
            const int model = codeOf(pair.model.read(kBlock, b));
            return qMakePair(host, a == b ? model : 1);
        },
        [&](Pair &pair) {
            return qMakePair(int(pair.host.write(pair.channel, kBlock, data)), codeOf(pair.model.write(kBlock, data)));
        },
        [&](Pair &pair) {
            return qMakePair(int(pair.host.initValue(pair.channel, kBlock, -7)),
                             codeOf(pair.model.initValue(kBlock, -7)));
        },
        [&](Pair &pair) {
            return qMakePair(int(pair.host.change(pair.channel, ValueChange::kIncrement, kBlock, 3)),
                             codeOf(pair.model.increment(kBlock, 3)));
        },
        [&](Pair &pair) {
            return qMakePair(int(pair.host.change(pair.channel, ValueChange::kDecrement, kBlock, 3)),
                             codeOf(pair.model.decrement(kBlock, 3)));
        },
        [&](Pair &pair) {
            std::int32_t a = 0;
            std::int32_t b = 0;
            const int host = pair.host.readValue(pair.channel, kBlock, a);
            const int model = codeOf(pair.model.readValue(kBlock, b));
            return qMakePair(host, a == b ? model : 1);
        },
    };
    // Trailer condition 3: key B is no data and may authenticate.
    const nlohmann::json card = cardWithCondition(static_cast<std::uint8_t>(condition), 3);
    for (const auto &operation : operations) {
        Pair pair(card);
        pair.authenticate(keyType);
        const QPair<int, int> codes = operation(pair);
        QCOMPARE(codes.first, codes.second);
        QVERIFY(pair.same());
    }
}

void TestStorageCard::keyChangesUnderAllTrailerConditions()
{
    QFETCH(int, condition);
    QFETCH(char, keyType);
    const nlohmann::json card = cardWithCondition(0, static_cast<std::uint8_t>(condition));
    for (const char changed : {'A', 'B'}) {
        Pair pair(card);
        // Both keys become known, where the card takes them; the last one is in force.
        pair.authenticate(keyType == 'A' ? 'B' : 'A');
        pair.authenticate(keyType);
        QCOMPARE(int(pair.host.changeKey(pair.channel, kSector, changed, kNewKey)),
                 codeOf(pair.model.changeKey(kSector, changed, kNewKey)));
        QVERIFY(pair.same());
    }
}

void TestStorageCard::keyChangeNeedsTheOtherKey()
{
    // Condition 3: key B writes both keys, and neither reads back.
    const nlohmann::json card = cardWithCondition(0, 3);
    Pair pair(card);
    pair.authenticate('B');
    QCOMPARE(int(pair.host.changeKey(pair.channel, kSector, 'B', kNewKey)), int(kAuthenticationFailed));
    QCOMPARE(pair.front.description(), card);
    pair.authenticate('A');
    pair.authenticate('B');
    QCOMPARE(int(pair.host.changeKey(pair.channel, kSector, 'B', kNewKey)), int(kSuccess));
    QCOMPARE(int(pair.host.authenticate(pair.channel, kSector, 'B', kNewKey)), int(kSuccess));
    QCOMPARE(int(pair.host.authenticate(pair.channel, kSector, 'A', kKeyA)), int(kSuccess));
    // What was known of the card is not known of the next one.
    pair.host.forget();
    pair.authenticate('A');
    QCOMPARE(int(pair.host.changeKey(pair.channel, kSector, 'A', kNewKey)), int(kAccessDenied));
}

void TestStorageCard::walletByEveryFamily_data()
{
    QTest::addColumn<int>("operations");
    QTest::addColumn<QByteArray>("increment");
    QTest::addColumn<bool>("atomic");
    QTest::newRow("D7") << int(ValueOperations::kOneCommand) << QByteArray("FFD7000505010000012C") << true;
    QTest::newRow("D4") << int(ValueOperations::kTwoCommands) << QByteArray("FFD40005042C010000") << true;
    QTest::newRow("C2") << int(ValueOperations::kAmendment) << QByteArray("FFC200030BA00980010581042C01000000") << true;
    QTest::newRow("write") << int(ValueOperations::kReadComputeWrite)
                           << QByteArray("FFD6000510900100006FFEFFFF9001000005FA05FA") << false;
}

void TestStorageCard::walletByEveryFamily()
{
    QFETCH(int, operations);
    QFETCH(QByteArray, increment);
    QFETCH(bool, atomic);
    Pair pair(cardWithCondition(0, 1), static_cast<ValueOperations>(operations));
    pair.authenticate('A');
    QCOMPARE(int(pair.host.initValue(pair.channel, kBlock, 100)), int(kSuccess));
    QCOMPARE(int(pair.host.change(pair.channel, ValueChange::kIncrement, kBlock, 300)), int(kSuccess));
    QCOMPARE(pair.channel.sent.last(), increment);
    QCOMPARE(pair.host.wasAtomic(), atomic);
    QCOMPARE(int(pair.host.change(pair.channel, ValueChange::kDecrement, kBlock, 190)), int(kSuccess));
    std::int32_t value = 0;
    QCOMPARE(int(pair.host.readValue(pair.channel, kBlock, value)), int(kSuccess));
    QCOMPARE(value, 210);
}

void TestStorageCard::fallsBackWhereTheReaderKnowsNoCommand()
{
    Pair pair(cardWithCondition(0, 1));
    pair.channel.intercept = [](const Bytes &command, Bytes &reply) {
        reply = {0x6D, 0x00};
        return command[1] == 0xD7;
    };
    pair.authenticate('A');
    QCOMPARE(int(pair.host.change(pair.channel, ValueChange::kDecrement, kBlock, 10)), int(kSuccess));
    QVERIFY(!pair.host.wasAtomic());
    std::int32_t value = 0;
    QCOMPARE(int(pair.host.readValue(pair.channel, kBlock, value)), int(kSuccess));
    QCOMPARE(value, 200);
}

void TestStorageCard::loadsTheKeyIntoTheOtherMemory()
{
    Pair pair(cardWithCondition(0, 1));
    pair.channel.intercept = [&](const Bytes &command, Bytes &reply) {
        if (command[1] != 0x82)
            return false;
        Bytes turned = command;
        turned[2] = 0x00;
        reply = command[2] == 0x20 ? pair.front.transmit(turned) : Bytes{0x63, 0x86};
        return true;
    };
    pair.authenticate('A');
    QCOMPARE(pair.channel.sent.mid(0, 2), (QList<QByteArray>{"FF82000006A0A1A2A3A4A5", "FF82200006A0A1A2A3A4A5"}));
}

void TestStorageCard::refusals()
{
    Pair pair(cardWithCondition(0, 1));
    const auto code = [&](int result) {
        pair.authenticate('A');
        return result;
    };
    pair.authenticate('A');
    std::int32_t value = 0;
    Block16 block{};
    QCOMPARE(code(pair.host.read(pair.channel, 64, block)), int(kBadArgument));
    QCOMPARE(code(pair.host.read(pair.channel, 8, block)), int(kAuthenticationFailed));
    QCOMPARE(code(pair.host.initValue(pair.channel, 7, 1)), int(kAccessDenied));
    QCOMPARE(code(pair.host.readValue(pair.channel, 7, value)), int(kAccessDenied));
    QCOMPARE(code(pair.host.readValue(pair.channel, 4, value)), int(kCardError));
    QCOMPARE(code(pair.host.change(pair.channel, ValueChange::kIncrement, 4, 1)), int(kCardError));
    QCOMPARE(code(pair.host.change(pair.channel, ValueChange::kIncrement, kBlock, -1)), int(kBadArgument));
    QCOMPARE(code(pair.host.change(pair.channel, ValueChange::kIncrement, kBlock, 0x7FFFFFFF)), int(kCardError));
    QCOMPARE(code(pair.host.changeKey(pair.channel, 16, 'A', kNewKey)), int(kBadArgument));
    QCOMPARE(code(pair.host.changeKey(pair.channel, kSector, 'C', kNewKey)), int(kBadArgument));
    QCOMPARE(code(pair.host.changeKey(pair.channel, 2, 'A', kNewKey)), int(kAuthenticationFailed));
    QCOMPARE(int(pair.host.authenticate(pair.channel, 16, 'A', kKeyA)), int(kBadArgument));
    QCOMPARE(int(pair.host.authenticate(pair.channel, kSector, 'A', kNewKey)), int(kAuthenticationFailed));
}

void TestStorageCard::failedCommandEndsTheAuthentication()
{
    Pair pair(cardWithCondition(0, 1));
    pair.authenticate('A');
    std::int32_t value = 0;
    QCOMPARE(int(pair.host.readValue(pair.channel, 4, value)), int(kCardError));
    const int sent = pair.channel.sent.size();
    QCOMPARE(int(pair.host.readValue(pair.channel, kBlock, value)), int(kAuthenticationFailed));
    QCOMPARE(pair.channel.sent.size(), sent);
}

void TestStorageCard::choosesByReaderName()
{
    qunsetenv(kMifareValueVariable);
    QCOMPARE(valueOperationsOf("Virtual PCD 00 00"), ValueOperations::kOneCommand);
    QCOMPARE(valueOperationsOf("Some reader 00 00"), ValueOperations::kReadComputeWrite);
    qputenv(kMifareValueVariable, "c2");
    QCOMPARE(valueOperationsOf("Some reader 00 00"), ValueOperations::kAmendment);
    qputenv(kMifareValueVariable, "write");
    QCOMPARE(valueOperationsOf("Virtual PCD 00 00"), ValueOperations::kReadComputeWrite);
    qputenv(kMifareValueVariable, "nonsense");
    QCOMPARE(valueOperationsOf("Virtual PCD 00 00"), ValueOperations::kOneCommand);
    qunsetenv(kMifareValueVariable);
}

void TestStorageCard::knowsTheCardByItsAtr()
{
    QCOMPARE(toHex(StorageCard::atr()), std::string("3B8F8001804F0CA000000306030001000000006A"));
    QVERIFY(isMifareClassic(StorageCard::atr()));
    QVERIFY(isMifareClassic(*fromHex("3B8F8001804F0CA0000003060300020000000069")));
    QVERIFY(!isMifareClassic(*fromHex("3B8F8001804F0CA0000003060300030000000068")));
    QVERIFY(!isMifareClassic(*fromHex("3B8F8001804F0CA00000030603")));
    QVERIFY(!isMifareClassic(*fromHex("3B021450")));
}

QTEST_APPLESS_MAIN(TestStorageCard)
#include "test_storage_card.moc"
