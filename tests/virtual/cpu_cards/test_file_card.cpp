#include <QtTest>

#include "tests/virtual/cpu_cards/card_helpers.h"

using drivers::cards::CpuCard;
using tests::ask;
using tests::askWhole;
using tests::deckCard;

namespace {

constexpr const char *kSelectApplication = "00A4040C09F0554E49464F4C4401";
constexpr const char *kRightPin = "002000010431323334";
constexpr const char *kWrongPin = "002000010439393939";

std::string hexOf(const std::string &text)
{
    return drivers::toHex({text.begin(), text.end()});
}

/// The card with its application selected, under T=1.
class Selected {
public:
    Selected() : Selected(deckCard("file-card")) {}
    explicit Selected(const nlohmann::json &description) : card(description) { ask(card, kSelectApplication); }

    std::string operator()(std::string_view command) { return ask(card, command); }

    CpuCard card;
};

} // namespace

class FileCardTest : public QObject {
    Q_OBJECT

private slots:
    void statusWords_data();
    void statusWords();
    void selectsByNameIdentifierAndPath();
    void selectsByPartOfANameAndGoesOn();
    void describesFiles();
    void readsAndUpdatesBinaries();
    void readsAndUpdatesRecords();
    void guardsFilesByPin();
    void losesThePinsRightsOutsideItsDirectory();
    void blocksThePinForGood();
    void keepsWhatChanged();
    void givesChallenges();
    void answersInFullUnderT1();
    void answersInPiecesUnderT0();
    void survivesNoise();
};

void FileCardTest::statusWords_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("nothing") << QByteArray("") << QByteArray("6700");
    QTest::newRow("three bytes") << QByteArray("00A404") << QByteArray("6700");
    QTest::newRow("length byte disagrees") << QByteArray("00A4040005AABB") << QByteArray("6700");
    QTest::newRow("long form") << QByteArray("00B00000000100") << QByteArray("6700");
    QTest::newRow("class of another industry") << QByteArray("A0B0000000") << QByteArray("6E00");
    QTest::newRow("secure messaging") << QByteArray("04B0000000") << QByteArray("6E00");
    QTest::newRow("class of another instruction") << QByteArray("80B0000000") << QByteArray("6E00");
    QTest::newRow("unknown instruction") << QByteArray("00FE000000") << QByteArray("6D00");
    QTest::newRow("select an unknown name") << QByteArray("00A4040005A000000333") << QByteArray("6A82");
    QTest::newRow("select without a name") << QByteArray("00A40400") << QByteArray("6700");
    QTest::newRow("select an unknown identifier") << QByteArray("00A4000002FFFF") << QByteArray("6A82");
    QTest::newRow("select half an identifier") << QByteArray("00A4000001FF") << QByteArray("6700");
    QTest::newRow("select by an unknown way") << QByteArray("00A4050002FFFF") << QByteArray("6A86");
    QTest::newRow("select an unknown description") << QByteArray("00A4000802FFFF") << QByteArray("6A86");
    QTest::newRow("select an unknown path") << QByteArray("00A408000450000009") << QByteArray("6A82");
    QTest::newRow("select an odd path") << QByteArray("00A4080003500000") << QByteArray("6700");
    QTest::newRow("read, no current file") << QByteArray("00B0000000") << QByteArray("6986");
    QTest::newRow("read an unknown short identifier") << QByteArray("00B09E0000") << QByteArray("6A82");
    QTest::newRow("read with reserved bits") << QByteArray("00B0E10000") << QByteArray("6A86");
    QTest::newRow("read behind the end") << QByteArray("00B081FF00") << QByteArray("6B00");
    QTest::newRow("read without a length") << QByteArray("00B08100") << QByteArray("6700");
    QTest::newRow("read records as a binary") << QByteArray("00B0830000") << QByteArray("6981");
    QTest::newRow("read a guarded file") << QByteArray("00B0820000") << QByteArray("6982");
    QTest::newRow("read a binary as records") << QByteArray("00B2010C00") << QByteArray("6981");
    QTest::newRow("read record 0") << QByteArray("00B2001C00") << QByteArray("6A86");
    QTest::newRow("read record 9") << QByteArray("00B2091C00") << QByteArray("6A83");
    QTest::newRow("read all records") << QByteArray("00B2011D00") << QByteArray("6A86");
    QTest::newRow("update a file never to be updated") << QByteArray("00D6810001AA") << QByteArray("6982");
    QTest::newRow("update a guarded file") << QByteArray("00D6820001AA") << QByteArray("6982");
    QTest::newRow("update without data") << QByteArray("00D68400") << QByteArray("6700");
    QTest::newRow("update behind the end") << QByteArray("00D6841101AA") << QByteArray("6B00");
    QTest::newRow("update over the end") << QByteArray("00D6840F02AAAA") << QByteArray("6A84");
    QTest::newRow("update a guarded record") << QByteArray("00DC011C01AA") << QByteArray("6982");
    QTest::newRow("unknown data object") << QByteArray("00CA010200") << QByteArray("6A88");
    QTest::newRow("challenge with parameters") << QByteArray("0084010008") << QByteArray("6A86");
    QTest::newRow("verify another PIN") << QByteArray("002000020431323334") << QByteArray("6A88");
    QTest::newRow("verify with parameters") << QByteArray("002001010431323334") << QByteArray("6A86");
    QTest::newRow("how many tries") << QByteArray("00200001") << QByteArray("63C3");
    QTest::newRow("no response waiting") << QByteArray("00C0000000") << QByteArray("6985");
}

void FileCardTest::statusWords()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, status);
    Selected card;
    QCOMPARE(card(command.toStdString()), status.toStdString());
    QVERIFY(!card.card.changed());
}

void FileCardTest::selectsByNameIdentifierAndPath()
{
    Selected card;
    const std::string everyone = hexOf("Everyone may read this.\n") + "9000";
    const std::string note = hexOf("A note in a directory below.\n") + "9000";
    const std::string greeting = hexOf("This is the master file's greeting.\n") + "9000";

    QCOMPARE(card("00A4000C020001"), std::string("9000"));
    QCOMPARE(card("00B0000000"), everyone);
    QCOMPARE(card("00A4000C025001"), std::string("9000"));
    QCOMPARE(card("00B0000000"), std::string("6986"));
    QCOMPARE(card("00A4020C020001"), std::string("9000"));
    QCOMPARE(card("00B0000000"), note);
    QCOMPARE(card("00A4030C"), std::string("9000")); // the directory above
    QCOMPARE(card("00B0810000"), everyone);
    QCOMPARE(card("00A4090C0450010001"), std::string("9000")); // a path from here
    QCOMPARE(card("00B0000000"), note);
    QCOMPARE(card("00A4080C0450000001"), std::string("9000")); // a path from the master file
    QCOMPARE(card("00B0000000"), everyone);
    QCOMPARE(card("00A4080C063F0050000001"), std::string("9000"));
    QCOMPARE(card("00B0000000"), everyone);
    QCOMPARE(card("00A4000C023F00"), std::string("9000"));
    QCOMPARE(card("00B0810000"), greeting);
    QCOMPARE(card("00A4000C020001"), std::string("6A82")); // not a file of the master file
    QCOMPARE(card("00A4040C056E6F746573"), std::string("9000"));
    QCOMPARE(card("00B0810000"), note);
    card.card.reset();
    QCOMPARE(card("00B0810000"), greeting);
}

void FileCardTest::selectsByPartOfANameAndGoesOn()
{
    nlohmann::json description = deckCard("file-card");
    nlohmann::json second = description["applications"][0];
    second["id"] = "5100";
    second["aid"] = "F0554E49464F4C4402";
    second["files"] = nlohmann::json::array();
    description["applications"].push_back(second);
    CpuCard card(description);
    const auto identifier = [](const std::string &reply) { return reply.substr(reply.find("8302") + 4, 4); };
    const std::string part = "04F0554E49";
    QCOMPARE(identifier(ask(card, "00A40400" + part)), std::string("5000"));
    QCOMPARE(identifier(ask(card, "00A40402" + part)), std::string("5100"));
    QCOMPARE(ask(card, "00A40402" + part), std::string("6A82"));
    QCOMPARE(identifier(ask(card, "00A40403" + part)), std::string("5000"));
    QCOMPARE(ask(card, "00A40403" + part), std::string("6A82"));
    QCOMPARE(identifier(ask(card, "00A40401" + part)), std::string("5100"));
}

void FileCardTest::describesFiles()
{
    Selected card;
    QCOMPARE(card("00A4040009F0554E49464F4C4401"), std::string("6F128201388302500084"
                                                               "09F0554E49464F4C44019000"));
    QCOMPARE(card("00A4000002000100"), std::string("6F0E80020018820101830200018801089000"));
    QCOMPARE(card("00A4000402000300"), std::string("62128002002582050421000D03830200038801189000"));
    QCOMPARE(card("00A4000002"
                  "3F00"),
             std::string("6F078201388302"
                         "3F009000"));
}

void FileCardTest::readsAndUpdatesBinaries()
{
    Selected card;
    QCOMPARE(card("00B0840004"), std::string("FFFFFFFF9000"));
    QCOMPARE(card("00D6840E02ABCD"), std::string("9000"));
    QCOMPARE(card("00B0840D03"), std::string("FFABCD9000"));
    QCOMPARE(card("00B0000E00"), std::string("ABCD9000")); // the file stays current
    QVERIFY(card.card.changed());
}

void FileCardTest::readsAndUpdatesRecords()
{
    Selected card;
    QCOMPARE(card("00B2021C00"), hexOf("second record") + "9000");
    QCOMPARE(card("00B2030400"), hexOf("third record") + "9000"); // of the current file
    QCOMPARE(card("00B2020400"), hexOf("second record") + "9000");
    QCOMPARE(card("00B202040C"), std::string("6C0D"));
    QCOMPARE(card(kRightPin), std::string("9000"));
    QCOMPARE(card("00DC02040D" + hexOf("SECOND RECORD")), std::string("9000"));
    QCOMPARE(card("00DC020401AA"), std::string("6700"));
    QCOMPARE(card("00DC040401AA"), std::string("6A83"));
    QCOMPARE(card("00B2021C00"), hexOf("SECOND RECORD") + "9000");
}

void FileCardTest::guardsFilesByPin()
{
    Selected card;
    QCOMPARE(card("00B0820002"), std::string("6982"));
    QCOMPARE(card(kWrongPin), std::string("63C2"));
    QCOMPARE(card("00B0820002"), std::string("6982"));
    QCOMPARE(card(kRightPin), std::string("9000"));
    QCOMPARE(card("00200001"), std::string("9000"));
    QCOMPARE(card("00B0820002"), std::string("00009000"));
    QCOMPARE(card(kWrongPin), std::string("63C2")); // the count began anew, and the right is lost
    QCOMPARE(card("00B0820002"), std::string("6982"));
}

void FileCardTest::losesThePinsRightsOutsideItsDirectory()
{
    Selected card;
    card(kRightPin);
    QCOMPARE(card("00A4000C025001"), std::string("9000"));
    QCOMPARE(card("00A4000C025000"), std::string("9000"));
    QCOMPARE(card("00B0820002"), std::string("00009000"));
    QCOMPARE(card("00A4000C023F00"), std::string("9000"));
    card(kSelectApplication);
    QCOMPARE(card("00B0820002"), std::string("6982"));
    card(kRightPin);
    card.card.reset();
    card(kSelectApplication);
    QCOMPARE(card("00B0820002"), std::string("6982"));
}

void FileCardTest::blocksThePinForGood()
{
    Selected card;
    for (const char *status : {"63C2", "63C1", "63C0", "6983"})
        QCOMPARE(card(kWrongPin), std::string(status));
    QCOMPARE(card(kRightPin), std::string("6983"));
    Selected nextDay(card.card.description());
    QVERIFY(!nextDay.card.changed());
    QCOMPARE(nextDay(kRightPin), std::string("6983"));
    QCOMPARE(nextDay("00200001"), std::string("6983"));
}

void FileCardTest::keepsWhatChanged()
{
    const nlohmann::json before = deckCard("file-card");
    Selected card;
    QCOMPARE(card.card.description(), before);
    QCOMPARE(card(kWrongPin), std::string("63C2"));
    const unsigned long revision = card.card.revision();
    QVERIFY(revision > 0);
    QCOMPARE(Selected(card.card.description())("00200001"), std::string("63C2"));
    card(kRightPin);
    card("00D68200021234");
    card("00DC011C0C" + hexOf("FIRST RECORD"));
    QVERIFY(card.card.revision() > revision);

    const nlohmann::json after = card.card.description();
    QCOMPARE(after["applications"][0]["pin"].value("left", 3), 3);
    QCOMPARE(after["applications"][0]["files"][0], before["applications"][0]["files"][0]);
    Selected nextDay(after);
    QCOMPARE(nextDay("00B0820002"), std::string("6982"));
    nextDay(kRightPin);
    QCOMPARE(nextDay("00B0820003"), std::string("1234009000"));
    QCOMPARE(nextDay("00B2011C00"), hexOf("FIRST RECORD") + "9000");
}

void FileCardTest::givesChallenges()
{
    Selected card;
    const std::string first = card("0084000008");
    QCOMPARE(first.size(), std::size_t{20});
    QVERIFY(first != card("0084000008"));
    QCOMPARE(card("0084000004").size(), std::size_t{12});
    QCOMPARE(card("0084000000").size(), std::size_t{20});
    QCOMPARE(card("00840000"), std::string("6700"));
}

void FileCardTest::answersInFullUnderT1()
{
    Selected card;
    QCOMPARE(card("00CA010100"), hexOf("data object one") + "9000");
    QCOMPARE(card("00CA0101FF"), hexOf("data object one") + "9000");
    QCOMPARE(card("00CA010105"), std::string("6C0F"));
    const std::string whole = card("00A4040009F0554E49464F4C440100");
    QVERIFY(whole.rfind("6F12", 0) == 0);
    QCOMPARE(card("00A4040009F0554E49464F4C440105"), std::string("6114"));
    QCOMPARE(card("00C0000014"), whole);
}

void FileCardTest::answersInPiecesUnderT0()
{
    nlohmann::json description = deckCard("file-card");
    description["atr"] = "3B02554E";
    CpuCard card(description);
    QCOMPARE(ask(card, "00A4040009F0554E49464F4C4401"), std::string("6114"));
    QCOMPARE(ask(card, "00C0000004"), std::string("6F1282016110"));
    QCOMPARE(ask(card, "00C0000000"), std::string("6C10"));
    const std::string rest = ask(card, "00C0000010");
    QCOMPARE(rest.size(), std::size_t{36});
    QCOMPARE(ask(card, "00C0000010"), std::string("6985"));
    ask(card, "00A4040009F0554E49464F4C4401");
    ask(card, "0084000008"); // another command: the waiting data is gone
    QCOMPARE(ask(card, "00C0000014"), std::string("6985"));
    QCOMPARE(ask(card, "00CA010100"), std::string("6C0F"));
    QCOMPARE(ask(card, "00CA01010F"), hexOf("data object one") + "9000");
    QCOMPARE(ask(card, "00B0810000"), std::string("6C18"));
    QCOMPARE(ask(card, "00B0810005"), hexOf("Every") + "9000");
    QCOMPARE(askWhole(card, "00B0810000"), hexOf("Everyone may read this.\n") + "9000");
    QCOMPARE(askWhole(card, "00A4040009F0554E49464F4C440100").substr(0, 4), std::string("6F12"));
}

void FileCardTest::survivesNoise()
{
    for (const char *name : {"file-card", "social-security-and-bank-card", "psam-1"}) {
        CpuCard card(deckCard(name));
        quint32 state = 1;
        const auto next = [&] { return static_cast<std::uint8_t>((state = state * 1664525U + 1013904223U) >> 24U); };
        constexpr std::uint8_t kInstructions[] = {0x20, 0x82, 0x84, 0x88, 0xA4, 0xA8, 0xAE,
                                                  0xB0, 0xB2, 0xC0, 0xCA, 0xD6, 0xDC};
        for (int round = 0; round < 20000; ++round) {
            drivers::Bytes command(next() % 24U);
            for (auto &byte : command)
                byte = static_cast<std::uint8_t>(next() % 4 == 0 ? 0 : next());
            if (command.size() > 4) {
                command[0] = static_cast<std::uint8_t>(next() % 2 * 0x80);
                command[1] = kInstructions[next() % sizeof kInstructions];
                command[4] = static_cast<std::uint8_t>(command.size() - 5);
            }
            const drivers::Bytes reply = card.transmit(command);
            QVERIFY(reply.size() >= 2 && reply.size() <= 258);
        }
        CpuCard again(card.description());
        QVERIFY(!again.changed());
    }
}

QTEST_GUILESS_MAIN(FileCardTest)
#include "test_file_card.moc"
