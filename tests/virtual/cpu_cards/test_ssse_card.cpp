#include <QtTest>

#include "drivers/core/applications/ssse.h"
#include "tests/virtual/cpu_cards/card_helpers.h"

using namespace drivers;
using drivers::cards::CpuCard;
using tests::ask;
using tests::askWhole;
using tests::CardInChannel;
using tests::deckCard;

namespace {

constexpr const char *kDeckCard = "social-security-and-bank-card";
constexpr const char *kSelect = "00A404000F7378312E73682EC9E7BBE1B1A3D5CF";

std::string holder(const nlohmann::json &description)
{
    CpuCard card(description);
    CardInChannel channel(card);
    std::string record;
    return readHolderInfo(channel, record) == kSuccess ? record : "failed";
}

} // namespace

class SsseCardTest : public QObject {
    Q_OBJECT

private slots:
    void holdsItemsAsRecords();
    void readsBothRecordsFromTheHost();
    void keepsNamesInGbk();
    void leavesOutWhatTheDescriptionLeavesOut();
    void isNotOnABankCard();
};

void SsseCardTest::holdsItemsAsRecords()
{
    CpuCard card(deckCard(kDeckCard));
    QVERIFY(ask(card, kSelect).rfind("61", 0) == 0);
    QCOMPARE(ask(card, "00B2010012"), std::string("6986"));
    QVERIFY(ask(card, "00A4000002EF05").rfind("61", 0) == 0);
    QCOMPARE(ask(card, "00B2010012"), std::string("011000112233445566778899AABBCCDDEEFF9000"));
    QCOMPARE(ask(card, "00B2010000"), std::string("6C12"));
    QCOMPARE(ask(card, "00B207000B"), std::string("0709413030303030303138"
                                                  "9000"));
    QCOMPARE(ask(card, "00B2080014"), std::string("6A83")); // an item of the other file
    QVERIFY(ask(card, "00A4000002EF06").rfind("61", 0) == 0);
    QCOMPARE(askWhole(card, "00B2090020"), "091ED5C5C8FD" + std::string(52, '0') + "9000");
    QCOMPARE(ask(card, "00DC0A0003"
                       "0A0132"),
             std::string("6982"));
}

void SsseCardTest::readsBothRecordsFromTheHost()
{
    CpuCard card(deckCard(kDeckCard));
    CardInChannel channel(card);
    std::string record;
    QCOMPARE(readIssuerInfo(channel, record), kSuccess);
    QCOMPARE(record, std::string("00112233445566778899AABBCCDDEEFF|3|2.00|110100000000000000000000|20210601|20310601|"
                                 "A00000018"));
    QCOMPARE(readHolderInfo(channel, record), kSuccess);
    QCOMPARE(record, std::string("110101199003072615|\xD5\xC5\xC8\xFD||1|01|110101|19900307"));
}

void SsseCardTest::keepsNamesInGbk()
{
    nlohmann::json description = deckCard(kDeckCard);
    auto &person = description["applications"][0]["holder"];
    person["name"] = "欧阳娜娜";
    person["nameExtension"] = "·赛·";
    QCOMPARE(holder(description),
             std::string(
                 "110101199003072615|\xC5\xB7\xD1\xF4\xC4\xC8\xC4\xC8|\xA1\xA4\xC8\xFC\xA1\xA4|1|01|110101|19900307"));
}

void SsseCardTest::leavesOutWhatTheDescriptionLeavesOut()
{
    nlohmann::json description = deckCard(kDeckCard);
    description["applications"][0]["holder"] = {{"name", "李四"}, {"sex", "2"}};
    QCOMPARE(holder(description), std::string("|\xC0\xEE\xCB\xC4||2|||"));
}

void SsseCardTest::isNotOnABankCard()
{
    CpuCard card(deckCard("contactless-bank-card"));
    CardInChannel channel(card);
    std::string record;
    QCOMPARE(readIssuerInfo(channel, record), kCardError);
}

QTEST_GUILESS_MAIN(SsseCardTest)
#include "test_ssse_card.moc"
