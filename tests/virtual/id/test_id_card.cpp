#include "drivers/virtual/cards/id_number.h"
#include "id_test_card.h"

#include <QtTest>

#include <stdexcept>

using namespace drivers::cards;
using namespace id_test;

namespace {

QString infoOf(const nlohmann::json &description, char separator = '|')
{
    return QString::fromStdString(IdCard(description).info(kIdOptionText, separator));
}

QString rejection(const nlohmann::json &description)
{
    try {
        const IdCard card(description);
    } catch (const std::runtime_error &error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("accepted");
}

QString rejectionWith(const char *member, const nlohmann::json &value)
{
    nlohmann::json description = residentCard();
    description[member] = value;
    return rejection(description);
}

} // namespace

class TestIdCard : public QObject {
    Q_OBJECT

private slots:
    void checkCharacters_data();
    void checkCharacters();
    void onlyRightNumbersAreValid();
    void residentCardsText();
    void fieldsFollowTheLettersOrder_data();
    void fieldsFollowTheLettersOrder();
    void missingFieldsAreEmpty();
    void separatorIsHonoured();
    void optionsAreHonoured();
    void codesComeFromTheDescription();
    void moduleAnswersItsCommands();
    void textFillsTheBufferAndNoMore();
    void nonsenseIsRejectedWithItsPlace();
};

void TestIdCard::checkCharacters_data()
{
    QTest::addColumn<QByteArray>("digits");
    QTest::addColumn<char>("check");
    QTest::newRow("the standard's own example") << QByteArray("11010519491231002") << 'X';
    QTest::newRow("another published one") << QByteArray("44052418800101001") << '4';
    QTest::newRow("zeros") << QByteArray("00000000000000000") << '1';
}

void TestIdCard::checkCharacters()
{
    QFETCH(QByteArray, digits);
    QFETCH(char, check);
    QCOMPARE(idNumberCheckCharacter(digits.toStdString()).value_or('?'), check);
    for (const char other : QByteArray("0123456789X"))
        QCOMPARE(isValidIdNumber(digits.toStdString() + other), other == check);
}

void TestIdCard::onlyRightNumbersAreValid()
{
    for (const char *number : {"", "11010519491231002", "11010519491231002x", "1101051949123100 X",
                               "11010519491231002X0", "A1010519491231002X"})
        QVERIFY2(!isValidIdNumber(number), number);
    QVERIFY(!idNumberCheckCharacter("1101051949123100A").has_value());
    const QByteArray valid = "11010519491231002X";
    for (int i = 0; i < 17; ++i) {
        QByteArray mistyped = valid;
        mistyped[i] = static_cast<char>('0' + (valid.at(i) - '0' + 1) % 10);
        QVERIFY(!isValidIdNumber(mistyped.toStdString()));
    }
}

void TestIdCard::residentCardsText()
{
    QCOMPARE(infoOf(residentCard()),
             QStringLiteral("A|林晓岚|女|汉|19900307|云杉市临江区梧桐路88号青禾花园6幢2单元1203室|990101199003070023|"
                            "云杉市公安局临江分局|20180612|20380612|20年"));
}

void TestIdCard::fieldsFollowTheLettersOrder_data()
{
    QTest::addColumn<QString>("letter");
    QTest::addColumn<QString>("order");
    const QString resident = "name|sex|ethnicity|birth|address|number|authority|from|until|term";
    QTest::newRow("A") << "A" << resident;
    QTest::newRow("J") << "J" << resident + "|permitNumber|version";
    QTest::newRow("I") << "I"
                       << "englishName|sex|nationality|birth|reserved|number|authority|from|until|term|chineseName|"
                          "version";
    QTest::newRow("Y") << "Y"
                       << "name|sex|renewals|birth|englishName|number|authority|from|until|term|nationality|"
                          "formerVersion|formerNumber";
    QTest::newRow("Z") << "Z" << resident;
    QTest::newRow("digit") << "7" << resident;
}

void TestIdCard::fieldsFollowTheLettersOrder()
{
    QFETCH(QString, letter);
    QFETCH(QString, order);
    std::vector<std::string> names;
    for (const QString &name : order.split('|'))
        names.push_back(name.toStdString());
    const nlohmann::json description = selfNamedCard(letter.toStdString(), names);
    QCOMPARE(infoOf(description), letter + "|" + order);
    const IdCard card(description);
    QCOMPARE(QString(card.letter()), letter);
    for (const std::string &name : names)
        QCOMPARE(card.field(name), name);
    QVERIFY(card.field("nothing").empty());
    QVERIFY(card.description() == description);
    QVERIFY(!card.changed());
}

void TestIdCard::missingFieldsAreEmpty()
{
    QCOMPARE(infoOf(selfNamedCard("A", {"authority"})), QStringLiteral("A|||||||authority|||"));
}

void TestIdCard::separatorIsHonoured()
{
    const QString usual = infoOf(residentCard());
    QCOMPARE(infoOf(residentCard(), '#'), QString(usual).replace('|', '#'));
    QCOMPARE(infoOf(residentCard(), '^').count('^'), 10);
}

void TestIdCard::optionsAreHonoured()
{
    nlohmann::json description = residentCard();
    description["fingerprint"] = {"0102", "FE"};
    const IdCard card(description);
    QCOMPARE(card.extra(kIdOptionFingerprint | kIdOptionText), std::string("0102FE"));
    QVERIFY(card.extra(kIdOptionText).empty());
    QVERIFY(card.info(kIdOptionPhoto | kIdOptionComposite | kIdOptionFingerprint, '|').empty());
    QVERIFY(!card.info(0x1E, '|').empty());
    QVERIFY(IdCard(residentCard()).extra(kIdOptionFingerprint).empty());
}

void TestIdCard::codesComeFromTheDescription()
{
    nlohmann::json description = residentCard();
    description["uid"] = "0A1B";
    description["dn"] = "D";
    description["emid"] = std::string(63, 'E');
    description["portrait"] = {{"seed", 4294967295U}, {"glasses", true}};
    const IdCard card(description);
    QCOMPARE(card.uid(), std::string("0A1B"));
    QCOMPARE(card.dn(), std::string("D"));
    QCOMPARE(card.emid(), std::string(63, 'E'));
    QCOMPARE(card.portrait().seed, 4294967295U);
    QVERIFY(card.portrait().glasses && !card.portrait().longHair);
    QVERIFY(IdCard(residentCard()).uid().empty());
}

void TestIdCard::moduleAnswersItsCommands()
{
    nlohmann::json description = residentCard();
    const nlohmann::json longData(40, std::string(64, 'A'));
    description["module"] = {{"2001", {{"sw", "0000009F"}, {"data", "00010203"}}},
                             {"20fe", {{"sw", "89ABCDEF"}}},
                             {"3001", {{"sw", "00000090"}, {"data", longData}}}};
    const IdCard card(description);
    QCOMPARE(card.moduleReply(0x20, 0x01).statusWord, 0x9FU);
    QCOMPARE(card.moduleReply(0x20, 0x01).data, (drivers::Bytes{0, 1, 2, 3}));
    QCOMPARE(card.moduleReply(0x20, 0xFE).statusWord, 0x89ABCDEFU);
    QVERIFY(card.moduleReply(0x20, 0xFE).data.empty());
    QCOMPARE(card.moduleReply(0x30, 0x01).data.size(), std::size_t{1280});
    QCOMPARE(card.moduleReply(0x01, 0x20).statusWord, kModuleWrongCommand);
    QVERIFY(card.moduleReply(0x01, 0x20).data.empty());
}

void TestIdCard::textFillsTheBufferAndNoMore()
{
    nlohmann::json description = selfNamedCard("A", {});
    // A letter and ten separators stand around the fields.
    description["fields"]["address"] = std::string(500, 'x');
    QCOMPARE(IdCard(description).info(kIdOptionText, '|').size(), std::size_t{511});
    description["fields"]["name"] = "y";
    QCOMPARE(rejection(description), QStringLiteral("/fields: make a text of 512 bytes, at most 511 fit"));
}

void TestIdCard::nonsenseIsRejectedWithItsPlace()
{
    QCOMPARE(rejection(5), QStringLiteral("/: must be an object"));
    QCOMPARE(rejectionWith("kind", "cpu"), QStringLiteral("/kind: must be \"id\""));
    QCOMPARE(rejectionWith("letter", "AB"),
             QStringLiteral("/letter: must be one printable ASCII character other than |"));
    QCOMPARE(rejectionWith("letter", "|"),
             QStringLiteral("/letter: must be one printable ASCII character other than |"));
    QCOMPARE(rejectionWith("letter", "证"),
             QStringLiteral("/letter: must be one printable ASCII character other than |"));
    QCOMPARE(rejectionWith("nmae", "x"), QStringLiteral("/nmae: is not known here"));
    QCOMPARE(rejectionWith("fields", nlohmann::json::array()), QStringLiteral("/fields: must be an object"));
    QCOMPARE(rejectionWith("fields", {{"renewals", "1"}}),
             QStringLiteral("/fields/renewals: is not a field of kind A"));
    QCOMPARE(rejectionWith("fields", {{"name", 1}}), QStringLiteral("/fields/name: must be text"));
    for (const char *text : {"a|b", "a\nb", "a\x7F"})
        QCOMPARE(rejectionWith("fields", {{"name", text}}),
                 QStringLiteral("/fields/name: must not contain control characters or |"));
    QCOMPARE(rejectionWith("uid", std::string(32, 'A')), QStringLiteral("/uid: must be at most 31 bytes"));
    QCOMPARE(rejectionWith("dn", std::string(256, 'A')), QStringLiteral("/dn: must be at most 255 bytes"));
    QCOMPARE(rejectionWith("emid", std::string(64, 'A')), QStringLiteral("/emid: must be at most 63 bytes"));
    QCOMPARE(rejectionWith("fingerprint", std::string(2048, 'A')),
             QStringLiteral("/fingerprint: must be at most 1023 bytes"));
    QCOMPARE(rejectionWith("fingerprint", {"00", "0"}),
             QStringLiteral("/fingerprint/1: must be an even number of hexadecimal digits"));
    QVERIFY(rejectionWith("portrait", {{"seed", -1}}).startsWith("/portrait/seed: "));
    QVERIFY(rejectionWith("portrait", {{"seed", 4294967296U}}).startsWith("/portrait/seed: "));
    QVERIFY(rejectionWith("portrait", {{"glasses", 1}}).startsWith("/portrait/glasses: "));
    QVERIFY(rejectionWith("portrait", {{"beard", true}}).startsWith("/portrait/beard: "));
    QVERIFY(rejectionWith("module", {{"20", nlohmann::json::object()}}).startsWith("/module/20: "));
    QCOMPARE(rejectionWith("module", {{"2001", nlohmann::json::object()}}),
             QStringLiteral("/module/2001: \"sw\" is missing"));
    QCOMPARE(rejectionWith("module", {{"2001", {{"sw", "90"}}}}),
             QStringLiteral("/module/2001/sw: must be 4 bytes in hexadecimal"));
    QCOMPARE(rejectionWith("module", {{"2001", {{"sw", "00000090"}, {"data", 1}}}}),
             QStringLiteral("/module/2001/data: must be text"));
}

QTEST_APPLESS_MAIN(TestIdCard)
#include "test_id_card.moc"
