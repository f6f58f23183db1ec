#include "drivers/core/applications/ssse.h"

#include <QtTest>
#include <map>
#include <random>

#include "tests/core/applications/scripted_channel.h"

using namespace drivers;
using tests::hex;
using tests::ScriptedChannel;

namespace {

/// A card that has its application, its files, and these items (by identifier, with status word).
ScriptedChannel cardWith(const std::map<int, std::string> &items)
{
    return ScriptedChannel([items](const Bytes &command) {
        if (command[1] == 0xA4)
            return hex("9000");
        const auto found = items.find(command[2]);
        return hex(found == items.end() ? "6A83" : found->second);
    });
}

} // namespace

class SsseTest : public QObject {
    Q_OBJECT

private slots:
    void asksForTheItemsOneByOne();
    void readsTheIssuersItems();
    void readsTheHoldersItems();
    void readsCardNumbersOfDigits();
    void leavesMissingItemsEmpty();
    void keepsBlanks();
    void keepsSeparatorsOutOfFields_data();
    void keepsSeparatorsOutOfFields();
    void reportsARefusal();
    void rejectsWhatIsNoItem_data();
    void rejectsWhatIsNoItem();
    void survivesNoise();
};

void SsseTest::asksForTheItemsOneByOne()
{
    ScriptedChannel card = cardWith({});
    std::string record;
    QCOMPARE(readHolderInfo(card, record), kSuccess);
    std::vector<std::string> sent;
    for (const Bytes &command : card.sent)
        sent.push_back(toHex(command));
    const std::vector<std::string> expected{"00A404000F7378312E73682EC9E7BBE1B1A3D5CF00",
                                            "00A4000002EF0600",
                                            "00B2080014",
                                            "00B2090020",
                                            "00B24E0016",
                                            "00B20A0003",
                                            "00B20B0003",
                                            "00B20C0005",
                                            "00B20D0006"};
    QCOMPARE(sent, expected);
}

void SsseTest::readsTheIssuersItems()
{
    ScriptedChannel card = cardWith({{0x01, "011000112233445566778899AABBCCDDEEFF9000"},
                                     {0x02, "0201339000"},
                                     {0x03, "0304322E30309000"},
                                     {0x04, "040C1101000000000000000000009000"},
                                     {0x05, "0504202106019000"},
                                     {0x06, "0604203106019000"},
                                     {0x07, "07094131323334353637FF9000"}});
    std::string record;
    QCOMPARE(readIssuerInfo(card, record), kSuccess);
    QCOMPARE(record, std::string("00112233445566778899AABBCCDDEEFF|3|2.00|110100000000000000000000|20210601|"
                                 "20310601|A1234567"));
}

void SsseTest::readsTheHoldersItems()
{
    ScriptedChannel card = cardWith({{0x08, "0812"
                                            "313130313031313939303033303732363135"
                                            "9000"},
                                     {0x09, "0906"
                                            "D5C5C8FD0000"
                                            "9000"},
                                     {0x4E, "4E020000"
                                            "9000"},
                                     {0x0A, "0A0131"
                                            "9000"},
                                     {0x0B, "0B0101"
                                            "9000"},
                                     {0x0C, "0C03110101"
                                            "9000"},
                                     {0x0D, "0D0419900307"
                                            "9000"}});
    std::string record;
    QCOMPARE(readHolderInfo(card, record), kSuccess);
    QCOMPARE(record, std::string("110101199003072615|\xD5\xC5\xC8\xFD||1|01|110101|19900307"));
}

void SsseTest::readsCardNumbersOfDigits()
{
    ScriptedChannel card = cardWith({{0x07, "0709123456789012FFFFFF9000"}});
    std::string record;
    QCOMPARE(readIssuerInfo(card, record), kSuccess);
    QCOMPARE(record, std::string("||||||123456789012"));
}

void SsseTest::leavesMissingItemsEmpty()
{
    ScriptedChannel card = cardWith({{0x0A, "0A01329000"}});
    std::string record;
    QCOMPARE(readHolderInfo(card, record), kSuccess);
    QCOMPARE(record, std::string("|||2|||"));
}

void SsseTest::keepsBlanks()
{
    ScriptedChannel card = cardWith({{0x08, "0804203120209000"}});
    std::string record;
    QCOMPARE(readHolderInfo(card, record), kSuccess);
    QCOMPARE(record, std::string(" 1  ||||||"));
}

void SsseTest::keepsSeparatorsOutOfFields_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("separator") << QByteArray("0903417C42") << QByteArray("A?B");
    QTest::newRow("second byte is a separator") << QByteArray("0904817CD5C5") << QByteArray("?\xD5\xC5");
    QTest::newRow("line end") << QByteArray("0903410A42") << QByteArray("A?B");
    QTest::newRow("line end as second byte") << QByteArray("0903D50A42") << QByteArray("?B");
    QTest::newRow("first byte alone") << QByteArray("090241D5") << QByteArray("A\xD5");
}

void SsseTest::keepsSeparatorsOutOfFields()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, name);
    ScriptedChannel card = cardWith({{0x09, item.toStdString() + "9000"}});
    std::string record;
    QCOMPARE(readHolderInfo(card, record), kSuccess);
    QCOMPARE(record, "|" + name.toStdString() + "|||||");
}

void SsseTest::reportsARefusal()
{
    for (const char *refusal : {"6A82", "6283", "6E00"}) {
        ScriptedChannel card([&](const Bytes &) { return hex(refusal); });
        std::string record = "old";
        QCOMPARE(readIssuerInfo(card, record), kCardError);
        QVERIFY(record.empty());
        QCOMPARE(card.sent.size(), std::size_t{1});
    }
}

void SsseTest::rejectsWhatIsNoItem_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("another identifier") << QByteArray("0101339000");
    QTest::newRow("nothing") << QByteArray("9000");
    QTest::newRow("no length") << QByteArray("029000");
    QTest::newRow("longer than it is") << QByteArray("0202339000");
    QTest::newRow("security not satisfied") << QByteArray("6982");
    QTest::newRow("no status") << QByteArray("");
}

void SsseTest::rejectsWhatIsNoItem()
{
    QFETCH(QByteArray, reply);
    ScriptedChannel card = cardWith({{0x02, reply.toStdString()}});
    std::string record;
    QCOMPARE(readIssuerInfo(card, record), kCardError);
    QVERIFY(record.empty());
}

void SsseTest::survivesNoise()
{
    std::mt19937 noise(78);
    for (int round = 0; round < 5000; ++round) {
        ScriptedChannel card([&](const Bytes &command) {
            if (command[1] == 0xA4)
                return hex("9000");
            Bytes reply(2 + noise() % 40);
            for (auto &byte : reply)
                byte = static_cast<std::uint8_t>(noise());
            reply[0] = command[2];
            reply[1] = static_cast<std::uint8_t>(noise() % 48);
            const Bytes status = hex("9000");
            reply.insert(reply.end(), status.begin(), status.end());
            return reply;
        });
        std::string record;
        const ReturnCode code = round % 2 == 0 ? readIssuerInfo(card, record) : readHolderInfo(card, record);
        QVERIFY(code == kSuccess || code == kCardError);
        if (code == kSuccess)
            QCOMPARE(std::count(record.begin(), record.end(), '|'), 6);
        QVERIFY(record.find('\0') == std::string::npos);
    }
}

QTEST_GUILESS_MAIN(SsseTest)
#include "test_ssse.moc"
