#include <QtTest>
#include <set>

#include "drivers/virtual/cards/cryptogram.h"
#include "tests/virtual/cpu_cards/card_helpers.h"

using namespace drivers;
using namespace drivers::cards;
using tests::ask;
using tests::askWhole;
using tests::deckCard;
using tests::hex;

namespace {

constexpr const char *kSelectApplication = "00A4000C02DF01";

} // namespace

class PsamCardTest : public QObject {
    Q_OBJECT

private slots:
    void authenticatesWithItsKeys();
    void knownAnswer();
    void statusWords();
    void holdsItsNumbers();
    void modulesDiffer();
};

void PsamCardTest::authenticatesWithItsKeys()
{
    const nlohmann::json description = deckCard("psam-1");
    const Bytes key = hex(description["applications"][0]["keys"][1]["key"].get<std::string>());
    CpuCard card(description);
    QCOMPARE(ask(card, kSelectApplication), std::string("9000"));
    const Bytes factor = hex("1122334455667788");
    const std::string challenge = ask(card, "0084000008").substr(0, 16);
    const Bytes diversified = diversifyKey(Algorithm::kTripleDes, key, factor);
    QCOMPARE(askWhole(card, "0088000210" + toHex(factor) + challenge + "00"),
             toHex(encryptBlocks(Algorithm::kTripleDes, diversified, hex(challenge))) + "9000");
    QCOMPARE(askWhole(card, "0088000208" + challenge + "00"),
             toHex(encryptBlocks(Algorithm::kTripleDes, key, hex(challenge))) + "9000");
    QCOMPARE(ask(card, "0088000208" + challenge), std::string("6108"));
}

/// Equal halves make the triple cipher the single one, whose answers are in the standard's own worked example.
void PsamCardTest::knownAnswer()
{
    nlohmann::json description = deckCard("psam-1");
    description["applications"][0]["keys"][0]["key"] = "133457799BBCDFF1133457799BBCDFF1";
    CpuCard card(description);
    ask(card, kSelectApplication);
    QCOMPARE(askWhole(card, "00880001080123456789ABCDEF00"), std::string("85E813540F0AB4059000"));
}

void PsamCardTest::statusWords()
{
    CpuCard card(deckCard("psam-2"));
    QCOMPARE(ask(card, "00880001080000000000000000"), std::string("6D00")); // not in the master file
    ask(card, kSelectApplication);
    QCOMPARE(ask(card, "00880009080000000000000000"), std::string("6A88"));
    QCOMPARE(ask(card, "00880101080000000000000000"), std::string("6A86"));
    QCOMPARE(ask(card, "008800010700000000000000"), std::string("6700"));
    QCOMPARE(ask(card, "80880001080000000000000000"), std::string("6E00"));
}

void PsamCardTest::holdsItsNumbers()
{
    CpuCard card(deckCard("psam-3"));
    QCOMPARE(askWhole(card, "00B0960000"), std::string("0000008800039000"));
    QCOMPARE(askWhole(card, "00B0950000"), std::string("00000000000000001000000000039000"));
}

void PsamCardTest::modulesDiffer()
{
    std::set<std::string> answers;
    std::set<std::string> resets;
    for (const char *name : {"psam-1", "psam-2", "psam-3", "psam-4"}) {
        CpuCard card(deckCard(name));
        resets.insert(toHex(card.atr()));
        ask(card, kSelectApplication);
        answers.insert(askWhole(card, "00880001080123456789ABCDEF00"));
        answers.insert(askWhole(card, "00880002080123456789ABCDEF00"));
    }
    QCOMPARE(resets.size(), std::size_t{4});
    QCOMPARE(answers.size(), std::size_t{8});
}

QTEST_GUILESS_MAIN(PsamCardTest)
#include "test_psam_card.moc"
