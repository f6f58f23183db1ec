// The sample deck's ID cards, Mifare cards and stripes, as they are shipped.
#include "drivers/virtual/cards/id_card.h"
#include "drivers/virtual/cards/id_number.h"
#include "drivers/virtual/cards/mifare_card.h"
#include "drivers/virtual/cards/stripe_card.h"

#include <QDir>
#include <QRegularExpression>
#include <QtTest>

#include <fstream>

using namespace drivers;
using namespace drivers::cards;

namespace {

constexpr SectorKey kFactoryKey{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
constexpr SectorKey kTestKeyA{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
constexpr SectorKey kTestKeyB{0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5};

nlohmann::json sample(const char *name)
{
    std::ifstream file(std::string(UNIFOLD_DECK "/") + name + ".json");
    return nlohmann::json::parse(file);
}

} // namespace

class TestSampleCards : public QObject {
    Q_OBJECT

private slots:
    void everyCardHasATitleInBothLanguages();
    void idCardsCoverEveryKind_data();
    void idCardsCoverEveryKind();
    void startValuesWorkOnBothMifareCards_data();
    void startValuesWorkOnBothMifareCards();
    void walletHoldsAValueFromTheStart();
    void walletHasEveryCondition();
    void blockedSectorIsBlocked();
    void stripesAreFullPartialAndEmpty();
};

void TestSampleCards::everyCardHasATitleInBothLanguages()
{
    const QStringList names = QDir(UNIFOLD_DECK).entryList({"*.json"});
    QCOMPARE(names.size(), 17);
    static const QRegularExpression han("\\p{Han}");
    for (const QString &name : names) {
        const auto title = sample(qPrintable(QFileInfo(name).completeBaseName())).at("title");
        const QString english = QString::fromStdString(title.at("en"));
        QVERIFY2(!english.isEmpty() && !han.match(english).hasMatch(), qPrintable(name));
        QVERIFY2(han.match(QString::fromStdString(title.at("zh"))).hasMatch(), qPrintable(name));
    }
}

void TestSampleCards::idCardsCoverEveryKind_data()
{
    QTest::addColumn<char>("letter");
    QTest::newRow("id-resident") << 'A';
    QTest::newRow("id-residence-permit") << 'J';
    QTest::newRow("id-permanent-2017") << 'I';
    QTest::newRow("id-permanent-2023") << 'Y';
    QTest::newRow("id-unknown-kind") << 'Z';
}

void TestSampleCards::idCardsCoverEveryKind()
{
    QFETCH(char, letter);
    const IdCard card(sample(QTest::currentDataTag()));
    QCOMPARE(card.letter(), letter);
    const std::string number = card.field("number");
    QVERIFY(letter == 'I' ? number.size() == 15 : isValidIdNumber(number));
    QVERIFY(letter != 'Y' || number.front() == '9');
    QVERIFY(!card.uid().empty() && !card.dn().empty() && !card.emid().empty());
    QCOMPARE(card.moduleReply(0x20, 0x01).statusWord, 0x9FU);
    QVERIFY(card.moduleReply(0x30, 0x01).data.size() > 1024);
}

void TestSampleCards::startValuesWorkOnBothMifareCards_data()
{
    QTest::addColumn<QString>("uid");
    QTest::newRow("mifare-blank") << "5C21D4E9";
    QTest::newRow("mifare-wallet") << "3A9F07C4";
}

void TestSampleCards::startValuesWorkOnBothMifareCards()
{
    QFETCH(QString, uid);
    MifareCard card(sample(QTest::currentDataTag()));
    QCOMPARE(QString::fromStdString(card.uid()), uid);
    QCOMPARE(card.authenticate(1, 'A', kFactoryKey), MifareResult::ok);
    Block16 data{};
    QCOMPARE(card.read(5, data), MifareResult::ok);
    data.fill(0x77);
    QCOMPARE(card.write(5, data), MifareResult::ok);
    QCOMPARE(card.initValue(5, 100), MifareResult::ok);
    QCOMPARE(card.increment(5, 170), MifareResult::ok);
    QCOMPARE(card.decrement(5, 60), MifareResult::ok);
    std::int32_t value = 0;
    QCOMPARE(card.readValue(5, value), MifareResult::ok);
    QCOMPARE(value, 210);
    QCOMPARE(card.changeKey(1, 'A', kTestKeyA), MifareResult::ok);
    QCOMPARE(card.authenticate(1, 'A', kTestKeyA), MifareResult::ok);
}

void TestSampleCards::walletHoldsAValueFromTheStart()
{
    MifareCard card(sample("mifare-wallet"));
    QCOMPARE(card.authenticate(1, 'A', kFactoryKey), MifareResult::ok);
    std::int32_t value = 0;
    QCOMPARE(card.readValue(5, value), MifareResult::ok);
    QCOMPARE(value, 5000);
    QCOMPARE(card.increment(5, 170), MifareResult::ok);
}

void TestSampleCards::walletHasEveryCondition()
{
    const MifareCard card(sample("mifare-wallet"));
    std::array<int, 8> data{};
    std::array<int, 8> trailers{};
    for (int sector = 0; sector < kMifareSectors; ++sector) {
        const Block16 &trailer = card.image().at(static_cast<std::size_t>(trailerOfSector(sector)));
        const auto conditions = decodeAccess({trailer[6], trailer[7], trailer[8]});
        if (!conditions)
            continue;
        for (std::size_t i = 0; i < 3; ++i)
            ++data.at(conditions->block.at(i));
        ++trailers.at(conditions->block.back());
    }
    for (std::size_t condition = 0; condition < 8; ++condition) {
        QVERIFY2(data.at(condition) > 0, qPrintable(QString::number(condition)));
        QVERIFY2(trailers.at(condition) > 0, qPrintable(QString::number(condition)));
    }
}

void TestSampleCards::blockedSectorIsBlocked()
{
    MifareCard card(sample("mifare-wallet"));
    QCOMPARE(card.authenticate(2, 'B', kTestKeyB), MifareResult::ok);
    QCOMPARE(card.increment(9, 1), MifareResult::ok);
    QCOMPARE(card.authenticate(9, 'A', kTestKeyA), MifareResult::authenticationFailed);
}

void TestSampleCards::stripesAreFullPartialAndEmpty()
{
    const StripeCard full(sample("stripe-three-tracks"));
    for (const std::string &track : full.tracks())
        QVERIFY(track.size() > 30);
    const StripeCard partial(sample("stripe-track-2"));
    QVERIFY(partial.tracks()[0].empty() && !partial.tracks()[1].empty() && partial.tracks()[2].empty());
    QVERIFY(StripeCard(sample("stripe-empty")).empty());
}

QTEST_APPLESS_MAIN(TestSampleCards)
#include "test_sample_cards.moc"
