#include <QtTest>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include "drivers/virtual/cards/atr.h"
#include "tests/virtual/cpu_cards/card_helpers.h"

using drivers::cards::CpuCard;
using drivers::cards::Protocol;
using drivers::cards::protocolOfAtr;
using nlohmann::json;
using tests::deckCard;
using tests::hex;

namespace {

constexpr const char *kDeck[] = {
    "social-security-and-bank-card", "contactless-bank-card", "file-card", "psam-1", "psam-2", "psam-3", "psam-4"};

bool fitsSchema(const json &card)
{
    std::ifstream file(UNIFOLD_CPU_SCHEMA);
    const json text = json::parse(file);
    valijson::Schema schema;
    valijson::SchemaParser().populateSchema(valijson::adapters::NlohmannJsonAdapter(text), schema);
    return valijson::Validator().validate(schema, valijson::adapters::NlohmannJsonAdapter(card), nullptr);
}

/// The reason why a card is refused; empty when it is not.
std::string refusal(const json &card)
{
    try {
        CpuCard made(card);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

} // namespace

/// Descriptions that are edited by hand: what the model and the schema make of them.
class CardDescriptionTest : public QObject {
    Q_OBJECT

private slots:
    void theDeckIsSound_data();
    void theDeckIsSound();
    void errorsNameThePlace_data();
    void errorsNameThePlace();
    void answersToReset_data();
    void answersToReset();
};

void CardDescriptionTest::theDeckIsSound_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : kDeck)
        QTest::newRow(name) << QByteArray(name);
}

void CardDescriptionTest::theDeckIsSound()
{
    QFETCH(QByteArray, name);
    const json description = deckCard(name.toStdString());
    QVERIFY(fitsSchema(description));
    CpuCard card(description);
    QVERIFY(!card.changed());
    QCOMPARE(card.description(), description);
    QCOMPARE(drivers::toHex(card.atr()), description["atr"].get<std::string>());
}

void CardDescriptionTest::errorsNameThePlace_data()
{
    QTest::addColumn<QByteArray>("card");
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("value"); // JSON; empty: the member is taken away
    QTest::addColumn<QByteArray>("error");
    QTest::addColumn<bool>("schemaSees");
    const auto row = [](const char *name, const char *card, const char *place, const char *value, const char *error,
                        bool schemaSees = true) {
        QTest::newRow(name) << QByteArray(card) << QByteArray(place) << QByteArray(value) << QByteArray(error)
                            << schemaSees;
    };
    constexpr const char *kBank = "contactless-bank-card";
    constexpr const char *kSocial = "social-security-and-bank-card";
    row("no answer to reset", kBank, "/atr", "", "/: \"atr\" is missing");
    row("answer to reset not hexadecimal", kBank, "/atr", "\"3B0\"", "/atr: must be 2 to 33 bytes in hexadecimal");
    row("answer to reset cut off", kBank, "/atr", "\"3B8C80\"", "/atr: the answer to reset is cut off", false);
    row("check byte", kBank, "/atr", "\"3B80800102\"", "/atr: the answer to reset has a wrong check byte", false);
    row("no applications", kBank, "/applications", "", "/: \"applications\" is missing");
    row("applications not a list", kBank, "/applications", "{}", "/applications: must be an array");
    row("unknown application", kBank, "/applications/0/type", "\"loyalty\"",
        "/applications/0/type: must be \"pboc\", \"ssse\", \"psam\" or \"files\"");
    row("account number", kBank, "/applications/0/pan", "\"62280001x\"",
        "/applications/0/pan: must be 12 to 19 decimal digits");
    row("account number as a number", kBank, "/applications/0/pan", "6228000100002029998",
        "/applications/0/pan: must be text");
    row("algorithm", kBank, "/applications/0/algorithm", "\"AES\"",
        "/applications/0/algorithm: must be \"3DES\" or \"SM4\"");
    row("key too short", kBank, "/applications/0/masterKey", "\"00112233\"",
        "/applications/0/masterKey: must be 16 bytes in hexadecimal");
    row("counter too high", kBank, "/applications/0/transactionCounter", "65536",
        "/applications/0/transactionCounter: must be a whole number from 0 to 65535");
    row("no date", kBank, "/applications/0/expiry", "\"2031-13-01\"",
        "/applications/0/expiry: must be a date YYYY-MM-DD");
    row("PIN of letters", kBank, "/applications/0/pin/value", "\"abcd\"",
        "/applications/0/pin/value: must be 4 to 12 decimal digits");
    row("more tries left than there are", kBank, "/applications/0/pin/left", "4",
        "/applications/0/pin/left: must be a whole number from 0 to 3", false);
    row("name too long in GBK", kSocial, "/applications/0/holder/name", "\"一二三四五六七八九十一二三四五六\"",
        "/applications/0/holder/name: must be at most 30 bytes of GBK text", false);
    row("name not in GBK", kSocial, "/applications/0/holder/name", "\"\xF0\x9F\x98\x80\"",
        "/applications/0/holder/name: must be at most 30 bytes of GBK text", false);
    row("identification code", kSocial, "/applications/0/issuer/identificationCode", "\"00\"",
        "/applications/0/issuer/identificationCode: must be 16 bytes in hexadecimal", false);
    row("file identifier", "file-card", "/applications/0/files/1/id", "\"EF\"",
        "/applications/0/files/1/id: must be 2 bytes in hexadecimal");
    row("same identifier twice", "file-card", "/applications/0/files/1/id", "\"0001\"",
        "/applications/0/files/1: another file of the directory has the same identifier", false);
    row("access", "file-card", "/applications/0/files/1/read", "\"sometimes\"",
        "/applications/0/files/1/read: must be \"always\", \"pin\" or \"never\"");
    row("file without content", "file-card", "/applications/0/files/3/content", "",
        "/applications/0/files/3: \"content\" is missing");
    row("data object", "file-card", "/applications/0/dataObjects/01", "\"AA\"",
        "/applications/0/dataObjects/01: a data object is named by P1 P2, four hexadecimal digits");
    row("directory below", "file-card", "/applications/0/directories/0/id", "",
        "/applications/0/directories/0: \"id\" is missing");
    row("key index twice", "psam-1", "/applications/0/keys/1/index", "1",
        "/applications/0/keys/1: another key has the same index", false);
}

void CardDescriptionTest::errorsNameThePlace()
{
    QFETCH(QByteArray, card);
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, error);
    QFETCH(bool, schemaSees);
    json description = deckCard(card.toStdString());
    const json::json_pointer pointer(place.toStdString());
    if (value.isEmpty())
        description[pointer.parent_pointer()].erase(pointer.back());
    else
        description[pointer] = json::parse(value.toStdString());
    QCOMPARE(QByteArray::fromStdString(refusal(description)), error);
    QCOMPARE(!fitsSchema(description), schemaSees);
}

void CardDescriptionTest::answersToReset_data()
{
    QTest::addColumn<QByteArray>("atr");
    QTest::addColumn<int>("protocol"); // -1: refused
    QTest::newRow("T=0 is what is meant when nothing is said") << QByteArray("3B02554E") << 0;
    QTest::newRow("inverse convention") << QByteArray("3F02554E") << 0;
    QTest::newRow("T=0 with parameters") << QByteArray("3B6200001122") << 0;
    QTest::newRow("T=1") << QByteArray("3B800181") << 1;
    QTest::newRow("contactless, both offered") << QByteArray("3B80800101") << 1;
    QTest::newRow("storage card") << QByteArray("3B8F8001804F0CA000000306030001000000006A") << 1;
    QTest::newRow("empty") << QByteArray("") << -1;
    QTest::newRow("other first byte") << QByteArray("3C00") << -1;
    QTest::newRow("too short") << QByteArray("3B0255") << -1;
    QTest::newRow("too long") << QByteArray("3B02554E00") << -1;
    QTest::newRow("interface bytes missing") << QByteArray("3BF0") << -1;
    QTest::newRow("check byte wrong") << QByteArray("3B800180") << -1;
    QTest::newRow("check byte missing") << QByteArray("3B8001") << -1;
    QTest::newRow("chain without end") << QByteArray("3B80") + QByteArray("80").repeated(60) << -1;
}

void CardDescriptionTest::answersToReset()
{
    QFETCH(QByteArray, atr);
    QFETCH(int, protocol);
    const drivers::Bytes bytes = hex(atr.toStdString());
    if (protocol < 0)
        QVERIFY_EXCEPTION_THROWN(protocolOfAtr(bytes), std::runtime_error);
    else
        QCOMPARE(protocolOfAtr(bytes), protocol == 1 ? Protocol::kT1 : Protocol::kT0);
}

QTEST_GUILESS_MAIN(CardDescriptionTest)
#include "test_card_description.moc"
