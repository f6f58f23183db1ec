#include "drivers/virtual/cards/stripe_card.h"

#include <QtTest>

#include <stdexcept>

using namespace drivers::cards;

namespace {

nlohmann::json describe(const nlohmann::json &tracks)
{
    return {{"kind", "stripe"}, {"tracks", tracks}};
}

QString rejection(const nlohmann::json &description)
{
    try {
        const StripeCard card(description);
    } catch (const std::runtime_error &error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("accepted");
}

QString alphabetOf(int track)
{
    QString alphabet;
    for (int code = 0; code < 256; ++code)
        if (trackHolds(track, static_cast<char>(code)))
            alphabet += QChar(code);
    return alphabet;
}

std::string digits(std::size_t count)
{
    return std::string(count, '7');
}

} // namespace

class TestStripeCard : public QObject {
    Q_OBJECT

private slots:
    void alphabetsAreTheStandards();
    void tracksHoldTheirLengthAndNoMore_data();
    void tracksHoldTheirLengthAndNoMore();
    void sentinelsMayStandAroundTheText();
    void selectionsNameTheirTracks();
    void descriptionComesBack();
    void blankStripeIsEmpty();
    void writingChangesTheSelectedTracks();
    void refusedWriteChangesNothing();
    void nonsenseIsRejectedWithItsPlace();
};

void TestStripeCard::alphabetsAreTheStandards()
{
    QCOMPARE(alphabetOf(1), QStringLiteral(" #$()-./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^"));
    QCOMPARE(alphabetOf(2), QStringLiteral("0123456789="));
    QCOMPARE(alphabetOf(3), QStringLiteral("0123456789="));
}

void TestStripeCard::tracksHoldTheirLengthAndNoMore_data()
{
    QTest::addColumn<int>("track");
    QTest::addColumn<int>("standardLength");
    QTest::newRow("track 1") << 1 << 79;
    QTest::newRow("track 2") << 2 << 40;
    QTest::newRow("track 3") << 3 << 107;
}

void TestStripeCard::tracksHoldTheirLengthAndNoMore()
{
    QFETCH(int, track);
    QFETCH(int, standardLength);
    const auto capacity = static_cast<std::size_t>(standardLength - 3);
    QCOMPARE(trackCapacity(track), capacity);
    std::string reason;
    QCOMPARE(trackData(track, digits(capacity), reason).value_or(""), digits(capacity));
    QVERIFY(!trackData(track, digits(capacity + 1), reason).has_value());
    QCOMPARE(QString::fromStdString(reason),
             QString("track %1 holds %2 characters, not %3").arg(track).arg(capacity).arg(capacity + 1));
}

void TestStripeCard::sentinelsMayStandAroundTheText()
{
    std::string reason;
    QCOMPARE(trackData(1, "%B12^DOE/JO?", reason).value_or(""), std::string("B12^DOE/JO"));
    QCOMPARE(trackData(2, ";12=34?", reason).value_or(""), std::string("12=34"));
    QCOMPARE(trackData(3, ";12=34?", reason).value_or(""), std::string("12=34"));
    QCOMPARE(trackData(2, ";" + digits(37) + "?", reason).value_or(""), digits(37));
    QCOMPARE(trackData(2, ";?", reason).value_or("x"), std::string());
    for (const char *text : {";12", "12?", "?", ";", "%12?", ";1?2?", "1;2"}) {
        reason.clear();
        QVERIFY2(!trackData(2, text, reason).has_value(), text);
        QVERIFY(!reason.empty());
    }
    QVERIFY(!trackData(1, ";12?", reason).has_value());
}

void TestStripeCard::selectionsNameTheirTracks()
{
    using List = std::vector<int>;
    QCOMPARE(tracksOfSelection(1), List{1});
    QCOMPARE(tracksOfSelection(2), List{2});
    QCOMPARE(tracksOfSelection(3), List{3});
    QCOMPARE(tracksOfSelection(12), (List{1, 2}));
    QCOMPARE(tracksOfSelection(13), (List{1, 3}));
    QCOMPARE(tracksOfSelection(23), (List{2, 3}));
    QCOMPARE(tracksOfSelection(123), (List{1, 2, 3}));
    for (const int selection : {0, -1, -12, 4, 11, 21, 31, 32, 121, 321, 1123, 1234})
        QVERIFY(tracksOfSelection(selection).empty());
}

void TestStripeCard::descriptionComesBack()
{
    const nlohmann::json description = describe({{"1", "B12^DOE/JO"}, {"3", "12=34"}});
    const StripeCard card(description);
    QVERIFY(card.description() == description);
    QVERIFY(!card.changed());
    QVERIFY(card.tracks() == (StripeCard::Tracks{"B12^DOE/JO", "", "12=34"}));
    QVERIFY(!card.empty());
}

void TestStripeCard::blankStripeIsEmpty()
{
    StripeCard card(describe(nlohmann::json::object()));
    QVERIFY(card.empty());
    QVERIFY(StripeCard(describe({{"2", ""}})).empty());
    QCOMPARE(card.write(2, {"", "1", ""}), StripeResult::ok);
    QVERIFY(!card.empty());
}

void TestStripeCard::writingChangesTheSelectedTracks()
{
    StripeCard card(describe({{"1", "ONE"}, {"2", "2"}, {"3", "3"}}));
    QCOMPARE(card.write(13, {"NEW", "9", "33=33"}), StripeResult::ok);
    QVERIFY(card.tracks() == (StripeCard::Tracks{"NEW", "2", "33=33"}));
    QVERIFY(card.changed());
    QCOMPARE(card.write(123, {"%A?", ";1?", ";2?"}), StripeResult::ok);
    QVERIFY(card.tracks() == (StripeCard::Tracks{"A", "1", "2"}));
    const StripeCard again(card.description());
    QVERIFY(again.tracks() == card.tracks());
    QVERIFY(!again.changed());
}

void TestStripeCard::refusedWriteChangesNothing()
{
    StripeCard card(describe({{"1", "ONE"}, {"2", "2"}, {"3", "3"}}));
    QCOMPARE(card.write(0, {"A", "1", "1"}), StripeResult::badSelection);
    QCOMPARE(card.write(21, {"A", "1", "1"}), StripeResult::badSelection);
    QCOMPARE(card.write(1, {"lower", "", ""}), StripeResult::badTrack);
    QCOMPARE(card.write(1, {"姓名", "", ""}), StripeResult::badTrack);
    QCOMPARE(card.write(12, {"NEW", "A", ""}), StripeResult::badTrack);
    QCOMPARE(card.write(12, {"NEW", "", ""}), StripeResult::badTrack);
    QCOMPARE(card.write(123, {"NEW", "1", digits(105)}), StripeResult::badTrack);
    QVERIFY(card.tracks() == (StripeCard::Tracks{"ONE", "2", "3"}));
    QVERIFY(!card.changed());
}

void TestStripeCard::nonsenseIsRejectedWithItsPlace()
{
    QCOMPARE(rejection(describe({{"2", "12A"}})),
             QStringLiteral("/tracks/2: character 3 is not in the alphabet of track 2"));
    QCOMPARE(rejection(describe({{"2", 12}})), QStringLiteral("/tracks/2: must be text"));
    QCOMPARE(rejection(describe({{"4", "12"}})), QStringLiteral("/tracks/4: is not known here"));
    QCOMPARE(rejection(describe("12")), QStringLiteral("/tracks: must be an object"));
    QCOMPARE(rejection({{"kind", "stripe"}}), QStringLiteral("/: \"tracks\" is missing"));
    QCOMPARE(rejection({{"kind", "id"}}), QStringLiteral("/kind: must be \"stripe\""));
    QCOMPARE(rejection(describe({{"1", std::string("A\0B", 3)}})),
             QStringLiteral("/tracks/1: must not contain a NUL character"));
}

QTEST_APPLESS_MAIN(TestStripeCard)
#include "test_stripe_card.moc"
