// Every condition, key and operation of a sector, against the published rules as they are written there: for each
// right "-" (never), "A", "B" or "AB".
#include "mifare_test_card.h"

using namespace drivers;
using namespace drivers::cards;
using namespace mifare_test;

namespace {

struct DataRule {
    const char *c1c2c3;
    const char *read;
    const char *write;
    const char *increment;
    const char *decrement; // transfer and restore too
};

constexpr DataRule kDataRules[] = {
    {"000", "AB", "AB", "AB", "AB"}, {"010", "AB", "-", "-", "-"},  {"100", "AB", "B", "-", "-"},
    {"110", "AB", "B", "B", "AB"},   {"001", "AB", "-", "-", "AB"}, {"011", "B", "B", "-", "-"},
    {"101", "B", "-", "-", "-"},     {"111", "-", "-", "-", "-"},
};

struct TrailerRule {
    const char *c1c2c3;
    const char *writeKeyA;
    const char *readAccess;
    const char *writeAccess;
    const char *readKeyB;
    const char *writeKeyB;
};

constexpr TrailerRule kTrailerRules[] = {
    {"000", "A", "A", "-", "A", "A"},  {"010", "-", "A", "-", "A", "-"},  {"100", "B", "AB", "-", "-", "B"},
    {"110", "-", "AB", "-", "-", "-"}, {"001", "A", "A", "A", "A", "A"},  {"011", "B", "AB", "B", "-", "B"},
    {"101", "-", "AB", "B", "-", "-"}, {"111", "-", "AB", "-", "-", "-"},
};

std::uint8_t conditionOf(const char *c1c2c3)
{
    return static_cast<std::uint8_t>(QByteArray(c1c2c3).toUInt(nullptr, 2));
}

bool grants(const char *keys, char keyType)
{
    return QByteArray(keys).contains(keyType);
}

const SectorKey &keyOf(char keyType)
{
    return keyType == 'A' ? kKeyA : kKeyB;
}

MifareCard cardWith(std::uint8_t dataCondition, std::uint8_t trailerCondition, bool values)
{
    AccessConditions conditions;
    conditions.block = {dataCondition, dataCondition, dataCondition, trailerCondition};
    MifareImage image = imageWithAccess(encodeAccess(conditions));
    for (std::size_t i = 1; values && i < image.size(); ++i) {
        if (!isTrailerBlock(static_cast<int>(i)))
            image.at(i) = encodeValueBlock({1000, static_cast<std::uint8_t>(i)});
    }
    return MifareCard(describe(image));
}

using Operation = std::function<MifareResult(MifareCard &)>;

/// Runs one operation on a fresh authenticated card: it must be done or refused as told, a refusal must end the
/// authentication and leave the memory alone.
void check(MifareCard card, char keyType, bool allowed, const Operation &operation)
{
    const MifareImage before = card.image();
    QCOMPARE(card.authenticate(kSector, keyType, keyOf(keyType)), MifareResult::ok);
    QCOMPARE(operation(card), allowed ? MifareResult::ok : MifareResult::accessDenied);
    Block16 out{};
    if (!allowed) {
        QVERIFY(card.image() == before);
        QCOMPARE(card.read(kTrailer, out), MifareResult::notAuthenticated);
    } else {
        QCOMPARE(card.read(kTrailer, out), MifareResult::ok);
    }
}

} // namespace

class TestMifareConditions : public QObject {
    Q_OBJECT

private slots:
    void dataBlocks_data();
    void dataBlocks();
    void trailers_data();
    void trailers();
    void keyBThatCanBeReadCannotAuthenticate_data() { trailers_data(); }
    void keyBThatCanBeReadCannotAuthenticate();
    void trailerReadsBackWhatItMay_data() { trailers_data(); }
    void trailerReadsBackWhatItMay();
    void partsOfATrailerChangeOneByOne_data() { trailers_data(); }
    void partsOfATrailerChangeOneByOne();
};

void TestMifareConditions::dataBlocks_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("trailer");
    QTest::addColumn<char>("key");
    // Key B takes part under the trailer conditions that hide it, key A under all.
    for (int row = 0; row < 8; ++row)
        for (const TrailerRule &rule : kTrailerRules)
            for (const char key : {'A', 'B'})
                if (key == 'A' || QByteArray(rule.readKeyB) == "-")
                    QTest::addRow("%s, trailer %s, key %c", kDataRules[row].c1c2c3, rule.c1c2c3, key)
                        << row << static_cast<int>(conditionOf(rule.c1c2c3)) << key;
}

void TestMifareConditions::dataBlocks()
{
    QFETCH(int, row);
    QFETCH(int, trailer);
    QFETCH(char, key);
    const DataRule &rule = kDataRules[row];
    const auto card = [&](bool values) {
        return cardWith(conditionOf(rule.c1c2c3), static_cast<std::uint8_t>(trailer), values);
    };
    Block16 data{};
    data.fill(0x5A);
    for (int block = kFirstBlock; block < kTrailer; ++block) {
        check(card(false), key, grants(rule.read, key), [&](MifareCard &c) {
            Block16 out{};
            return c.read(block, out);
        });
        check(card(true), key, grants(rule.read, key), [&](MifareCard &c) {
            std::int32_t value = 0;
            return c.readValue(block, value);
        });
        check(card(false), key, grants(rule.write, key), [&](MifareCard &c) { return c.write(block, data); });
        check(card(false), key, grants(rule.write, key), [&](MifareCard &c) { return c.initValue(block, 7); });
        check(card(true), key, grants(rule.increment, key), [&](MifareCard &c) { return c.increment(block, 5); });
        check(card(true), key, grants(rule.decrement, key), [&](MifareCard &c) { return c.decrement(block, 5); });
        check(card(true), key, grants(rule.decrement, key), [&](MifareCard &c) { return c.restore(block); });
        check(card(true), key, grants(rule.decrement, key), [&](MifareCard &c) {
            const MifareResult restored = c.restore(block);
            return restored == MifareResult::ok ? c.transfer(block) : restored;
        });
    }
}

void TestMifareConditions::trailers_data()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < 8; ++row)
        QTest::newRow(kTrailerRules[row].c1c2c3) << row;
}

void TestMifareConditions::trailers()
{
    QFETCH(int, row);
    const TrailerRule &rule = kTrailerRules[row];
    const auto card = [&] { return cardWith(0, conditionOf(rule.c1c2c3), false); };
    constexpr SectorKey kNewKey{1, 2, 3, 4, 5, 6};
    const Block16 newTrailer = trailerBlock(kTransportAccess);
    for (const char key : {'A', 'B'}) {
        if (key == 'B' && grants(rule.readKeyB, 'A'))
            continue;
        const bool any = grants(rule.writeKeyA, key) || grants(rule.writeAccess, key) || grants(rule.writeKeyB, key);
        check(card(), key, grants(rule.writeKeyA, key),
              [&](MifareCard &c) { return c.changeKey(kSector, 'A', kNewKey); });
        check(card(), key, grants(rule.writeKeyB, key),
              [&](MifareCard &c) { return c.changeKey(kSector, 'B', kNewKey); });
        check(card(), key, any, [&](MifareCard &c) { return c.write(kTrailer, newTrailer); });
        check(card(), key, grants(rule.readAccess, key), [&](MifareCard &c) {
            Block16 out{};
            return c.read(kTrailer, out);
        });
        check(card(), key, false, [&](MifareCard &c) { return c.initValue(kTrailer, 1); });
        check(card(), key, false, [&](MifareCard &c) { return c.increment(kTrailer, 1); });
        check(card(), key, false, [&](MifareCard &c) { return c.decrement(kTrailer, 1); });
        check(card(), key, false, [&](MifareCard &c) { return c.restore(kTrailer); });
        check(card(), key, false, [&](MifareCard &c) { return c.transfer(kTrailer); });
    }
}

void TestMifareConditions::keyBThatCanBeReadCannotAuthenticate()
{
    QFETCH(int, row);
    const TrailerRule &rule = kTrailerRules[row];
    MifareCard card = cardWith(0, conditionOf(rule.c1c2c3), false);
    QCOMPARE(card.authenticate(kSector, 'B', kKeyB),
             grants(rule.readKeyB, 'A') ? MifareResult::authenticationFailed : MifareResult::ok);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::ok);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyB), MifareResult::authenticationFailed);
    QCOMPARE(card.authenticate(kSector, 'B', kKeyA), MifareResult::authenticationFailed);
}

void TestMifareConditions::trailerReadsBackWhatItMay()
{
    QFETCH(int, row);
    const TrailerRule &rule = kTrailerRules[row];
    MifareCard card = cardWith(0, conditionOf(rule.c1c2c3), false);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::ok);
    Block16 out{};
    QCOMPARE(card.read(kTrailer, out), MifareResult::ok);
    Block16 expected = card.image().at(kTrailer);
    std::fill(expected.begin(), expected.begin() + 6, std::uint8_t{0});
    if (!grants(rule.readKeyB, 'A'))
        std::fill(expected.begin() + 10, expected.end(), std::uint8_t{0});
    QCOMPARE(out, expected);
}

void TestMifareConditions::partsOfATrailerChangeOneByOne()
{
    QFETCH(int, row);
    const TrailerRule &rule = kTrailerRules[row];
    Block16 data = trailerBlock({0x7F, 0x07, 0x88});
    std::fill(data.begin(), data.begin() + 6, std::uint8_t{0x11});
    std::fill(data.begin() + 10, data.end(), std::uint8_t{0x22});
    data[9] = 0x77;
    for (const char key : {'A', 'B'}) {
        MifareCard card = cardWith(0, conditionOf(rule.c1c2c3), false);
        if (card.authenticate(kSector, key, keyOf(key)) != MifareResult::ok)
            continue;
        Block16 expected = card.image().at(kTrailer);
        if (grants(rule.writeKeyA, key))
            std::copy(data.begin(), data.begin() + 6, expected.begin());
        if (grants(rule.writeAccess, key))
            std::copy(data.begin() + 6, data.begin() + 10, expected.begin() + 6);
        if (grants(rule.writeKeyB, key))
            std::copy(data.begin() + 10, data.end(), expected.begin() + 10);
        const bool any = grants(rule.writeKeyA, key) || grants(rule.writeAccess, key) || grants(rule.writeKeyB, key);
        QCOMPARE(card.write(kTrailer, data), any ? MifareResult::ok : MifareResult::accessDenied);
        QCOMPARE(card.image().at(kTrailer), expected);
    }
}

QTEST_APPLESS_MAIN(TestMifareConditions)
#include "test_mifare_conditions.moc"
