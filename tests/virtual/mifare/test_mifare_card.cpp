#include "mifare_test_card.h"

#include <limits>
#include <stdexcept>

using namespace drivers;
using namespace drivers::cards;
using namespace mifare_test;

namespace {

constexpr int kBlock = 5;

MifareCard authenticatedCard()
{
    MifareCard card = transportCard();
    card.authenticate(kSector, 'A', kKeyA);
    return card;
}

QString rejection(const nlohmann::json &description)
{
    try {
        const MifareCard card(description);
        return QStringLiteral("accepted: ") + QString::fromStdString(card.uid());
    } catch (const std::runtime_error &error) {
        return QString::fromUtf8(error.what());
    }
}

} // namespace

class TestMifareCard : public QObject {
    Q_OBJECT

private slots:
    void uidAndTypeComeFromTheDescription();
    void descriptionFollowsTheMemory();
    void walletWorks();
    void valuesRefuseWhatDoesNotFit();
    void negativeAmountsAreRefused();
    void plainDataIsNoValueBlock();
    void restoreCopiesAValueWithItsAddress();
    void everyFailureEndsTheAuthentication();
    void selectionEndsTheAuthentication();
    void oneSectorAtATime();
    void manufacturerBlockCannotBeWritten();
    void changedKeyCountsFromThenOn();
    void brokenAccessBitsBlockTheSectorForGood();
    void nonsenseIsRejectedWithItsPlace();
};

void TestMifareCard::uidAndTypeComeFromTheDescription()
{
    QCOMPARE(transportCard().uid(), std::string("12345678"));
    QCOMPARE(transportCard().type(), 'A');
    nlohmann::json description = describe(imageWithAccess(kTransportAccess));
    description["type"] = "8";
    description["title"] = "Canteen";
    const MifareCard card(description);
    QCOMPARE(card.type(), '8');
    QVERIFY(card.description() == description);
}

void TestMifareCard::descriptionFollowsTheMemory()
{
    MifareCard card = authenticatedCard();
    QVERIFY(!card.changed());
    Block16 data{};
    QCOMPARE(card.write(kBlock, data), MifareResult::ok);
    QVERIFY(!card.changed());
    data.fill(0xC3);
    QCOMPARE(card.write(kBlock, data), MifareResult::ok);
    QVERIFY(card.changed());
    const MifareCard again(card.description());
    QVERIFY(again.image() == card.image());
    QVERIFY(!again.changed());
    data.fill(0);
    QCOMPARE(card.write(kBlock, data), MifareResult::ok);
    QVERIFY(card.changed());
}

void TestMifareCard::walletWorks()
{
    MifareCard card = authenticatedCard();
    QCOMPARE(card.initValue(kBlock, 100), MifareResult::ok);
    QCOMPARE(card.increment(kBlock, 170), MifareResult::ok);
    QCOMPARE(card.decrement(kBlock, 60), MifareResult::ok);
    std::int32_t value = 0;
    QCOMPARE(card.readValue(kBlock, value), MifareResult::ok);
    QCOMPARE(value, 210);
    Block16 out{};
    QCOMPARE(card.read(kBlock, out), MifareResult::ok);
    QCOMPARE(out, encodeValueBlock({210, kBlock}));
    QCOMPARE(card.decrement(kBlock, 211), MifareResult::ok);
    QCOMPARE(card.readValue(kBlock, value), MifareResult::ok);
    QCOMPARE(value, -1);
}

void TestMifareCard::valuesRefuseWhatDoesNotFit()
{
    constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
    constexpr auto kMin = std::numeric_limits<std::int32_t>::min();
    MifareCard card = authenticatedCard();
    QCOMPARE(card.initValue(kBlock, kMax - 1), MifareResult::ok);
    QCOMPARE(card.increment(kBlock, 1), MifareResult::ok);
    const MifareImage full = card.image();
    QCOMPARE(card.increment(kBlock, 1), MifareResult::overflow);
    QVERIFY(card.image() == full);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::ok);
    QCOMPARE(card.initValue(kBlock, kMin), MifareResult::ok);
    QCOMPARE(card.decrement(kBlock, 1), MifareResult::overflow);
    QCOMPARE(decodeValueBlock(card.image().at(kBlock))->value, kMin);
}

void TestMifareCard::negativeAmountsAreRefused()
{
    MifareCard card = authenticatedCard();
    QCOMPARE(card.initValue(kBlock, -5), MifareResult::ok);
    const MifareImage before = card.image();
    QCOMPARE(card.increment(kBlock, -1), MifareResult::badArgument);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::ok);
    QCOMPARE(card.decrement(kBlock, std::numeric_limits<std::int32_t>::min()), MifareResult::badArgument);
    QVERIFY(card.image() == before);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::ok);
    QCOMPARE(card.increment(kBlock, 0), MifareResult::ok);
    QVERIFY(card.image() == before);
}

void TestMifareCard::plainDataIsNoValueBlock()
{
    for (int operation = 0; operation < 5; ++operation) {
        MifareCard card = authenticatedCard();
        std::int32_t value = 99;
        const MifareResult results[] = {
            operation == 0 ? card.increment(kBlock, 1) : MifareResult::notAValueBlock,
            operation == 1 ? card.decrement(kBlock, 1) : MifareResult::notAValueBlock,
            operation == 2 ? card.restore(kBlock) : MifareResult::notAValueBlock,
            operation == 3 ? card.transfer(kBlock) : MifareResult::notAValueBlock,
            operation == 4 ? card.readValue(kBlock, value) : MifareResult::notAValueBlock,
        };
        for (const MifareResult result : results)
            QCOMPARE(result, MifareResult::notAValueBlock);
        QCOMPARE(value, operation == 4 ? 0 : 99);
        QCOMPARE(card.initValue(kBlock, 1), MifareResult::notAuthenticated);
    }
}

void TestMifareCard::restoreCopiesAValueWithItsAddress()
{
    MifareCard card = authenticatedCard();
    QCOMPARE(card.initValue(4, 777), MifareResult::ok);
    QCOMPARE(card.restore(4), MifareResult::ok);
    QCOMPARE(card.transfer(6), MifareResult::ok);
    QCOMPARE(card.image().at(6), encodeValueBlock({777, 4}));
    QCOMPARE(card.restore(4), MifareResult::ok);
    QCOMPARE(card.authenticate(2, 'A', kKeyA), MifareResult::ok);
    QCOMPARE(card.transfer(8), MifareResult::notAValueBlock);
}

void TestMifareCard::everyFailureEndsTheAuthentication()
{
    using Operation = std::function<MifareResult(MifareCard &)>;
    Block16 out{};
    std::int32_t value = 0;
    const Operation failing[] = {
        [&](MifareCard &c) { return c.read(8, out); },
        [&](MifareCard &c) { return c.read(64, out); },
        [&](MifareCard &c) { return c.read(-1, out); },
        [&](MifareCard &c) { return c.write(8, out); },
        [&](MifareCard &c) { return c.write(64, out); },
        [&](MifareCard &c) { return c.readValue(kBlock, value); },
        [&](MifareCard &c) { return c.changeKey(2, 'A', kKeyB); },
        [&](MifareCard &c) { return c.changeKey(16, 'A', kKeyB); },
        [&](MifareCard &c) { return c.changeKey(kSector, 'C', kKeyB); },
        [&](MifareCard &c) { return c.initValue(kTrailer, 1); },
        [&](MifareCard &c) { return c.authenticate(kSector, 'A', kKeyB); },
        [&](MifareCard &c) { return c.authenticate(kSector, 'a', kKeyA); },
        [&](MifareCard &c) { return c.authenticate(16, 'A', kKeyA); },
        [&](MifareCard &c) { return c.authenticate(-1, 'A', kKeyA); },
    };
    for (const Operation &operation : failing) {
        MifareCard card = authenticatedCard();
        QCOMPARE(card.read(kBlock, out), MifareResult::ok);
        QVERIFY(operation(card) != MifareResult::ok);
        QCOMPARE(card.read(kBlock, out), MifareResult::notAuthenticated);
        QVERIFY(!card.changed());
    }
}

void TestMifareCard::selectionEndsTheAuthentication()
{
    MifareCard card = authenticatedCard();
    Block16 out{};
    QCOMPARE(card.read(kBlock, out), MifareResult::ok);
    card.select();
    QCOMPARE(card.read(kBlock, out), MifareResult::notAuthenticated);
}

void TestMifareCard::oneSectorAtATime()
{
    MifareCard card = authenticatedCard();
    Block16 out{};
    QCOMPARE(card.authenticate(15, 'A', kKeyA), MifareResult::ok);
    QCOMPARE(card.read(63, out), MifareResult::ok);
    QCOMPARE(card.read(kBlock, out), MifareResult::notAuthenticated);
}

void TestMifareCard::manufacturerBlockCannotBeWritten()
{
    for (int operation = 0; operation < 3; ++operation) {
        MifareCard card = transportCard();
        QCOMPARE(card.authenticate(0, 'A', kKeyA), MifareResult::ok);
        Block16 out{};
        QCOMPARE(card.read(0, out), MifareResult::ok);
        QCOMPARE(static_cast<int>(out[0]), 0x12);
        QCOMPARE(operation == 0   ? card.write(0, out)
                 : operation == 1 ? card.initValue(0, 1)
                                  : card.increment(0, 1),
                 MifareResult::accessDenied);
        QVERIFY(!card.changed());
    }
}

void TestMifareCard::changedKeyCountsFromThenOn()
{
    constexpr SectorKey kNewKey{1, 2, 3, 4, 5, 6};
    MifareCard card = authenticatedCard();
    QCOMPARE(card.changeKey(kSector, 'A', kNewKey), MifareResult::ok);
    Block16 out{};
    QCOMPARE(card.read(kBlock, out), MifareResult::ok);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::authenticationFailed);
    QCOMPARE(card.authenticate(kSector, 'A', kNewKey), MifareResult::ok);
    QCOMPARE(card.changeKey(kSector, 'B', kNewKey), MifareResult::ok);
    QCOMPARE(card.read(kTrailer, out), MifareResult::ok);
    QCOMPARE(out, (Block16{0, 0, 0, 0, 0, 0, 0xFF, 0x07, 0x80, 0x69, 1, 2, 3, 4, 5, 6}));
    QCOMPARE(card.authenticate(2, 'A', kKeyA), MifareResult::ok);
}

void TestMifareCard::brokenAccessBitsBlockTheSectorForGood()
{
    MifareCard card = authenticatedCard();
    Block16 out{};
    QCOMPARE(card.write(kTrailer, trailerBlock({0xFF, 0x07, 0x81})), MifareResult::ok);
    QCOMPARE(card.read(kBlock, out), MifareResult::accessDenied);
    QCOMPARE(card.authenticate(kSector, 'A', kKeyA), MifareResult::authenticationFailed);
    QCOMPARE(card.authenticate(kSector, 'B', kKeyB), MifareResult::authenticationFailed);
    MifareCard tomorrow(card.description());
    QCOMPARE(tomorrow.authenticate(kSector, 'A', kKeyA), MifareResult::authenticationFailed);
    QCOMPARE(tomorrow.authenticate(2, 'A', kKeyA), MifareResult::ok);
}

void TestMifareCard::nonsenseIsRejectedWithItsPlace()
{
    const nlohmann::json good = describe(imageWithAccess(kTransportAccess));
    nlohmann::json bad = good;
    bad["kind"] = "stripe";
    QCOMPARE(rejection(bad), QStringLiteral("/kind: must be \"mifare\""));
    bad = good;
    bad["blocks"][7] = "FFF";
    QCOMPARE(rejection(bad), QStringLiteral("/blocks/7: must be 16 bytes in hexadecimal"));
    bad = good;
    bad["blocks"][7] = "FFFF";
    QCOMPARE(rejection(bad), QStringLiteral("/blocks/7: must be 16 bytes in hexadecimal"));
    bad["blocks"][7] = 5;
    QCOMPARE(rejection(bad), QStringLiteral("/blocks/7: must be text"));
    bad = good;
    bad["blocks"].erase(63);
    QCOMPARE(rejection(bad), QStringLiteral("/blocks: must be a list of 64 blocks"));
    bad = good;
    bad.erase("blocks");
    QCOMPARE(rejection(bad), QStringLiteral("/: \"blocks\" is missing"));
    bad = good;
    bad["blocks"][0] = "12345678FF0804000000000000000000";
    QVERIFY(rejection(bad).startsWith("/blocks/0: "));
    bad = good;
    bad["type"] = "S50";
    QVERIFY(rejection(bad).startsWith("/type: "));
    bad = good;
    bad["block"] = 1;
    QCOMPARE(rejection(bad), QStringLiteral("/block: is not known here"));
    QCOMPARE(rejection(nlohmann::json::array()), QStringLiteral("/: must be an object"));
}

QTEST_APPLESS_MAIN(TestMifareCard)
#include "test_mifare_card.moc"
