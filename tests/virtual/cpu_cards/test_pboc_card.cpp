#include <QtTest>

#include "drivers/core/applications/pboc.h"
#include "drivers/core/ber_tlv.h"
#include "drivers/virtual/cards/cryptogram.h"
#include "tests/virtual/cpu_cards/card_helpers.h"

using namespace drivers;
using namespace drivers::cards;
using tests::ask;
using tests::askWhole;
using tests::CardInChannel;
using tests::deckCard;
using tests::hex;

namespace {

constexpr const char *kSelect = "00A4040008A000000333010101";
constexpr const char *kOptions = "80A800000E830C"
                                 "26000080"
                                 "000000000100"
                                 "0156"
                                 "00";
constexpr const char *kDefaultTransaction = "P012000000000000Q012000000000000R0040156S006140426T00201U006143837"
                                            "V024D7DBBACFB9F1C3E6B2E2CAD4";

/// What the terminal gives for the first cryptogram, from the amount to the unpredictable number.
const std::string kAuthenticated = "000000000100"
                                   "000000000000"
                                   "0156"
                                   "8000000000"
                                   "0156"
                                   "140426"
                                   "01"
                                   "AABBCCDD";
const std::string kFirstData = kAuthenticated + "143837" + std::string(40, '0');

std::string generateFirst(CpuCard &card, const std::string &kind)
{
    return askWhole(card, "80AE" + kind + "0034" + kFirstData + "00");
}

std::string generateSecond(CpuCard &card, const std::string &kind)
{
    return askWhole(card, "80AE" + kind + "0022" + "3030" + kAuthenticated + "143837" + "00");
}

/// The bank card of the deck named, selected and with its options processed.
void startTransaction(CpuCard &card)
{
    QVERIFY(askWhole(card, kSelect).rfind("6F", 0) == 0);
    QCOMPARE(askWhole(card, kOptions), std::string("800A1C0008010100100101009000"));
}

/// The cryptogram of a reply to GENERATE AC.
std::string cryptogramOf(const std::string &reply)
{
    return reply.substr(10, 16);
}

/// A field of a reply text by its letter; "-" when it is not there.
std::string fieldOf(std::string_view text, char letter)
{
    while (text.size() >= 4) {
        const std::size_t length = static_cast<std::size_t>(std::stoi(std::string(text.substr(1, 3))));
        if (text.front() == letter)
            return std::string(text.substr(4, length));
        text.remove_prefix(4 + length);
    }
    return "-";
}

/// The issuer's own sum for a cryptogram, from its master key.
Bytes issuersSessionKey(const nlohmann::json &application, Algorithm algorithm, std::uint16_t counter)
{
    const Bytes factor =
        cardFactor(application["pan"].get<std::string>(), application["panSequence"].get<std::string>());
    const Bytes cardKey = diversifyKey(algorithm, hex(application["masterKey"].get<std::string>()), factor);
    return sessionKey(algorithm, cardKey, counter);
}

const nlohmann::json &pbocOf(const nlohmann::json &card)
{
    for (const auto &application : card["applications"]) {
        if (application["type"] == "pboc")
            return application;
    }
    throw std::runtime_error("no PBOC application");
}

} // namespace

class PbocCardTest : public QObject {
    Q_OBJECT

private slots:
    void listsItsApplications_data();
    void listsItsApplications();
    void listsMoreApplicationsThanOneReplyHolds_data() { listsItsApplications_data(); }
    void listsMoreApplicationsThanOneReplyHolds();
    void statusWords_data();
    void statusWords();
    void givesDataObjects();
    void reproducesThePublishedCase();
    void makesCryptogramsThatTheIssuerCanCheck_data();
    void makesCryptogramsThatTheIssuerCanCheck();
    void completesAnOnlineTransaction();
    void declinesWithoutTheIssuer();
    void keepsTheCounterAcrossPowerAndTime();
    void refusesWhenTheCounterIsUsedUp();
    void verifiesThePin();
    void readsCardInfoFromTheHost_data();
    void readsCardInfoFromTheHost();
    void makesArqcFromTheHost_data();
    void makesArqcFromTheHost();
};

void PbocCardTest::listsItsApplications_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("T=0") << "social-security-and-bank-card";
    QTest::newRow("T=1") << "contactless-bank-card";
}

void PbocCardTest::listsItsApplications()
{
    QFETCH(QString, name);
    CpuCard card(deckCard(name.toStdString()));
    const std::string entry = "61194F08A000000333010101500A50424F43204445424954870101";
    QCOMPARE(askWhole(card, "00A404000E315041592E5359532E444446303100"),
             std::string("6F1A840E315041592E5359532E4444463031A5088801015F2D027A689000"));
    QCOMPARE(askWhole(card, "00B2010C00"), "701B" + entry + "9000");
    QCOMPARE(askWhole(card, "00B2020C00"), std::string("6A83"));
    QCOMPARE(askWhole(card, "00A404000E325041592E5359532E444446303100"),
             "6F30840E325041592E5359532E4444463031A51EBF0C1B" + entry + "9000");
}

void PbocCardTest::listsMoreApplicationsThanOneReplyHolds()
{
    QFETCH(QString, name);
    nlohmann::json description = deckCard(name.toStdString());
    const nlohmann::json application = pbocOf(description);
    for (int i = 0; i < 19; ++i)
        description["applications"].push_back(application);
    CpuCard card(description);
    // 57 more than twice 256 bytes: the status word has no room for that.
    QCOMPARE(ask(card, "00A404000E325041592E5359532E444446303100"), std::string("6100"));
    std::string whole = ask(card, "00C0000000");
    QCOMPARE(whole.substr(512), std::string("6100"));
    whole = whole.substr(0, 512) + ask(card, "00C0000000");
    QCOMPARE(whole.substr(1024), std::string("6139"));
    QCOMPARE(ask(card, "00C0000040"), std::string("6C39"));
    whole = whole.substr(0, 1024) + ask(card, "00C0000039");
    QCOMPARE(whole.size(), std::size_t{569 * 2 + 4});
    QVERIFY(whole.rfind("6F820235840E", 0) == 0 && whole.substr(1138) == "9000");
    if (card.protocol() == Protocol::kT0)
        QCOMPARE(askWhole(card, "00A404000E325041592E5359532E4444463031"), whole);
}

void PbocCardTest::statusWords_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("options in the wrong class")
        << QByteArray("00A800000E830C") + QByteArray(24, '0') << QByteArray("6E00");
    QTest::newRow("options with parameters")
        << QByteArray("80A801000E830C") + QByteArray(24, '0') << QByteArray("6A86");
    QTest::newRow("options empty") << QByteArray("80A80000028300") << QByteArray("6700");
    QTest::newRow("options, wrong template")
        << QByteArray("80A800000E840C") + QByteArray(24, '0') << QByteArray("6A80");
    QTest::newRow("options, wrong length") << QByteArray("80A800000E830B") + QByteArray(24, '0') << QByteArray("6A80");
    QTest::newRow("cryptogram before options") << QByteArray("80AE800034") + QByteArray(104, '0') << QByteArray("6985");
    QTest::newRow("cryptogram of no kind") << QByteArray("80AEC00034") + QByteArray(104, '0') << QByteArray("6A86");
    QTest::newRow("combined with a signature") << QByteArray("80AE900034") + QByteArray(104, '0') << QByteArray("6A86");
    QTest::newRow("issuer before a cryptogram") << QByteArray("008200000A") + QByteArray(20, '0') << QByteArray("6985");
    QTest::newRow("unknown data") << QByteArray("80CA9F3500") << QByteArray("6A88");
    QTest::newRow("data in the wrong class") << QByteArray("00CA9F3600") << QByteArray("6A88");
    QTest::newRow("record never to be updated") << QByteArray("00DC010C01AA") << QByteArray("6982");
    QTest::newRow("no such record") << QByteArray("00B2020C00") << QByteArray("6A83");
}

void PbocCardTest::statusWords()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, status);
    CpuCard card(deckCard("contactless-bank-card"));
    ask(card, kSelect);
    QCOMPARE(ask(card, command.toStdString()), status.toStdString());
    QVERIFY(!card.changed());
}

void PbocCardTest::givesDataObjects()
{
    CpuCard card(deckCard("social-security-and-bank-card"));
    askWhole(card, kSelect);
    QCOMPARE(ask(card, "80CA9F3600"), std::string("6C05"));
    QCOMPARE(askWhole(card, "80CA9F3600"), std::string("9F3602023F9000"));
    QCOMPARE(askWhole(card, "80CA9F1300"), std::string("9F1302023A9000"));
    QCOMPARE(askWhole(card, "80CA9F1700"), std::string("9F1701039000"));
    QCOMPARE(askWhole(card, "80CA9F7900"), std::string("9F79060000000088009000"));
    QCOMPARE(askWhole(card, "80CA9F7700"), std::string("9F77060000001000009000"));
}

/// The published case's key and account number in a card: the session key must be the published one. The case's data
/// has another profile and other results than this card, so that the sum is compared, not the end.
void PbocCardTest::reproducesThePublishedCase()
{
    nlohmann::json description = deckCard("social-security-and-bank-card");
    auto &application = description["applications"][1];
    application["pan"] = "6228000100001";
    application["panSequence"] = "01";
    application["transactionCounter"] = 0x023F;
    CpuCard card(description);
    startTransaction(card);
    const std::string reply = generateFirst(card, "80");
    QCOMPARE(reply.substr(0, 10), std::string("8013800240"));
    const Bytes sum = cryptogram(Algorithm::kTripleDes, hex("D4102725E6E5AD329E55AAB50BF23DA9"),
                                 hex(kAuthenticated + "1C00"
                                                      "0240"
                                                      "03A00000"));
    QCOMPARE(cryptogramOf(reply), toHex(sum));
    QCOMPARE(reply.substr(26), std::string("07010103A00000019000"));
}

void PbocCardTest::makesCryptogramsThatTheIssuerCanCheck_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("sm4");
    QTest::addColumn<int>("counter");
    QTest::newRow("3DES") << "social-security-and-bank-card" << false << 576;
    QTest::newRow("SM4") << "contactless-bank-card" << true << 13;
}

void PbocCardTest::makesCryptogramsThatTheIssuerCanCheck()
{
    QFETCH(QString, name);
    QFETCH(bool, sm4);
    QFETCH(int, counter);
    const nlohmann::json description = deckCard(name.toStdString());
    const Algorithm algorithm = sm4 ? Algorithm::kSm4 : Algorithm::kTripleDes;
    const auto number = static_cast<std::uint16_t>(counter);
    const Bytes key = issuersSessionKey(pbocOf(description), algorithm, number);
    const std::string counterText =
        toHex({static_cast<std::uint8_t>(counter >> 8), static_cast<std::uint8_t>(counter)});
    CpuCard card(description);
    startTransaction(card);
    const std::string online = generateFirst(card, "40"); // approved offline? this card goes online
    QCOMPARE(online.substr(4, 6), "80" + counterText);
    QCOMPARE(cryptogramOf(online),
             toHex(cryptogram(algorithm, key, hex(kAuthenticated + "1C00" + counterText + "03A00000"))));

    const Bytes answer = responseCryptogram(algorithm, key, hex(cryptogramOf(online)), {'0', '0'});
    QCOMPARE(ask(card, "008200000A" + toHex(answer) + "3030"), std::string("9000"));
    const std::string approved = generateSecond(card, "40");
    QCOMPARE(approved.substr(4, 6), "40" + counterText);
    QCOMPARE(cryptogramOf(approved),
             toHex(cryptogram(algorithm, key, hex(kAuthenticated + "1C00" + counterText + "03600000"))));
}

void PbocCardTest::completesAnOnlineTransaction()
{
    const nlohmann::json description = deckCard("contactless-bank-card");
    CpuCard card(description);
    startTransaction(card);
    QCOMPARE(askWhole(card, kOptions), std::string("6985"));
    const std::string online = generateFirst(card, "80");
    const Bytes key = issuersSessionKey(pbocOf(description), Algorithm::kSm4, 13);
    const Bytes answer = responseCryptogram(Algorithm::kSm4, key, hex(cryptogramOf(online)), {'0', '0'});
    QCOMPARE(ask(card, "0082000008" + toHex(answer)), std::string("6700"));
    QCOMPARE(ask(card, "008200000A" + toHex(answer) + "3030"), std::string("9000"));
    QCOMPARE(ask(card, "008200000A" + toHex(answer) + "3030"), std::string("6985")); // one answer a transaction
    QCOMPARE(generateFirst(card, "40"), std::string("6700"));                        // the second list is shorter
    QCOMPARE(generateSecond(card, "80"), std::string("6985"));
    QCOMPARE(generateSecond(card, "40").substr(4, 2), std::string("40"));
    QCOMPARE(generateSecond(card, "40"), std::string("6985"));
    QCOMPARE(askWhole(card, "80CA9F1300"), std::string("9F1302000D9000"));
    QCOMPARE(pbocOf(card.description())["lastOnlineCounter"].get<int>(), 13);
}

void PbocCardTest::declinesWithoutTheIssuer()
{
    CpuCard card(deckCard("contactless-bank-card"));
    startTransaction(card);
    generateFirst(card, "80");
    QCOMPARE(ask(card, "008200000A00000000000000003030"), std::string("6300"));
    const std::string declined = generateSecond(card, "40");
    QCOMPARE(declined.substr(4, 2), std::string("00"));
    QCOMPARE(declined.substr(26), std::string("070101032800000"
                                              "49000"));
    QCOMPARE(askWhole(card, "80CA9F1300"), std::string("9F130200009000"));

    askWhole(card, kSelect);
    askWhole(card, kOptions);
    QCOMPARE(generateFirst(card, "00").substr(4, 2), std::string("00"));
    QCOMPARE(generateSecond(card, "40"), std::string("6985"));
}

void PbocCardTest::keepsTheCounterAcrossPowerAndTime()
{
    CpuCard card(deckCard("social-security-and-bank-card"));
    startTransaction(card);
    QVERIFY(card.changed());
    card.reset();
    startTransaction(card);
    QCOMPARE(askWhole(card, "80CA9F3600"), std::string("9F360202419000"));
    CpuCard nextDay(card.description());
    QVERIFY(!nextDay.changed());
    startTransaction(nextDay);
    QCOMPARE(askWhole(nextDay, "80CA9F3600"), std::string("9F360202429000"));
    QCOMPARE(pbocOf(nextDay.description())["transactionCounter"].get<int>(), 0x0242);
}

void PbocCardTest::refusesWhenTheCounterIsUsedUp()
{
    nlohmann::json description = deckCard("contactless-bank-card");
    description["applications"][0]["transactionCounter"] = 0xFFFE;
    CpuCard card(description);
    startTransaction(card);
    QCOMPARE(askWhole(card, "80CA9F3600"), std::string("9F3602FFFF9000"));
    askWhole(card, kSelect);
    QCOMPARE(askWhole(card, kOptions), std::string("6985"));
    QCOMPARE(generateFirst(card, "80"), std::string("6985"));
    QCOMPARE(askWhole(card, "80CA9F3600"), std::string("9F3602FFFF9000"));
}

void PbocCardTest::verifiesThePin()
{
    CpuCard card(deckCard("contactless-bank-card"));
    ask(card, kSelect);
    QCOMPARE(ask(card, "0020008008261234"
                       "56FFFFFFFF"),
             std::string("9000"));
    for (const char *status : {"63C2", "63C1", "63C0", "6983"})
        QCOMPARE(ask(card, "0020008008241234FFFFFFFFFF"), std::string(status));
    QCOMPARE(ask(card, "80CA9F1700"), std::string("9F1701009000"));
    ask(card, kOptions);
    // The results tell the issuer that the PIN is blocked.
    QCOMPARE(generateFirst(card, "80").substr(26), std::string("07010103A04000049000"));
    CpuCard nextDay(card.description());
    ask(nextDay, kSelect);
    QCOMPARE(ask(nextDay, "002000800826123456FFFFFFFF"), std::string("6983"));
}

void PbocCardTest::readsCardInfoFromTheHost_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("info");
    QTest::newRow("T=0")
        << "social-security-and-bank-card"
        << "A0196228000100001018885B009ZHANG SANC018110101199003072615D0336228000100001018885D3106220000000"
           "E006310630F006210601G00200H0040220I0040240J00201K0040156L0040156M010PBOC DEBITN004023AO00203"
           "P012000000008800Q012000000100000";
    QTest::newRow("T=1")
        << "contactless-bank-card"
        << "A0196228000100002029998B005LI SIC018310101198510120426D0336228000100002029998D3203220000000"
           "E006320331F006220301G00200H0040220I004000DJ00200K0040156L0040156M010PBOC DEBITN0040000O00203"
           "P012000000021000Q012000000100000";
}

void PbocCardTest::readsCardInfoFromTheHost()
{
    QFETCH(QString, name);
    QFETCH(QString, info);
    CpuCard card(deckCard(name.toStdString()));
    CardInChannel channel(card);
    std::string result;
    QCOMPARE(readCardInfo(channel, "A000000333", "ABCDEFGHIJKLMNOPQ", result), kSuccess);
    QCOMPARE(QString::fromStdString(result), info);
    QCOMPARE(readCardInfo(channel, "A000000333", "ACDEIJ", result), kSuccess);
    QCOMPARE(fieldOf(result, 'A'), info.mid(4, 19).toStdString());
    QCOMPARE(fieldOf(result, 'B'), std::string("-"));
    QCOMPARE(readCardInfo(channel, "A000000334", "A", result), kCardError);
}

void PbocCardTest::makesArqcFromTheHost_data()
{
    makesCryptogramsThatTheIssuerCanCheck_data();
}

void PbocCardTest::makesArqcFromTheHost()
{
    QFETCH(QString, name);
    QFETCH(bool, sm4);
    QFETCH(int, counter);
    const nlohmann::json description = deckCard(name.toStdString());
    CpuCard card(description);
    CardInChannel channel(card);
    std::string result;
    QCOMPARE(makeArqc(channel, "A000000333", kDefaultTransaction, result), kSuccess);
    QVERIFY(result.size() < 1024);
    const auto field = [&](char letter) { return fieldOf(result, letter); };
    QCOMPARE(field('B'), std::string("80"));
    QCOMPARE(field('C').size(), std::size_t{4});
    QCOMPARE(std::stoi(field('C'), nullptr, 16), counter);
    // The issuer, which sees nothing but the reply, comes to the same cryptogram.
    const std::string data = field('H') + field('I') + field('J') + field('F') + field('K') + field('L') + field('M') +
                             field('E') + field('G') + field('C') + field('D').substr(6, 8);
    const Algorithm algorithm = sm4 ? Algorithm::kSm4 : Algorithm::kTripleDes;
    const Bytes key = issuersSessionKey(pbocOf(description), algorithm, static_cast<std::uint16_t>(counter));
    QCOMPARE(field('A'), toHex(cryptogram(algorithm, key, hex(data))));
    QCOMPARE(field('P'), pbocOf(description)["pan"].get<std::string>());
    QCOMPARE(field('N'), std::string("143837"));
}

QTEST_GUILESS_MAIN(PbocCardTest)
#include "test_pboc_card.moc"
