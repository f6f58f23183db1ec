// Cards of the sample deck, lent to pcscd: programs that nobody here wrote see the files that the deck describes and
// the replies that the bench logs.
#include "tests/pcsc/foreign_tools.h"
#include "tests/pcsc/opensc_output.h"
#include "tests/pcsc/served_bench.h"
#include "tests/pcsc/served_card.h"

#include <nlohmann/json.hpp>

#include <QtTest>

#include <memory>

using namespace testsupport;

namespace {

constexpr char kFileCard[] = "file-card";
constexpr char kSocialCard[] = "social-security-and-bank-card";

QByteArrayList explore(const QByteArrayList &commands)
{
    return explorerSections(
        outputOf("opensc-explorer", {"-c", "default", "-r", kReader0}, commands.join('\n') + "\nquit\n"));
}

// The bytes of a file of a card description.
QByteArray contentOf(const nlohmann::json &file)
{
    if (file.contains("text"))
        return QByteArray::fromStdString(file.at("text"));
    return QByteArray::fromHex(QByteArray::fromStdString(file.at("content")));
}

QByteArray hexReply(const QByteArray &data)
{
    return data.toHex().toUpper() + "9000";
}

QByteArray recordsDump(const QList<QByteArray> &records, int first = 1)
{
    QByteArray dump;
    for (int i = 0; i < records.size(); ++i)
        dump += "Record " + QByteArray::number(first + i) + ":\n" + openscDump(records.at(i), true);
    return dump;
}

// What opensc-tool sends, each command with what it received.
QByteArrayList toolReplies(const QByteArrayList &commands)
{
    QStringList arguments = {"-c", "default", "-r", kReader0};
    for (const QByteArray &command : commands)
        arguments << "-s" << QString::fromLatin1(command);
    QStringList exchanges = QString::fromLatin1(outputOf("opensc-tool", arguments)).split("Sending: ");
    exchanges.removeFirst();
    QByteArrayList replies;
    for (const QString &exchange : exchanges)
        replies << exchange.mid(exchange.indexOf('\n') + 1).toLatin1();
    return replies;
}

// Whether a short command says how long a reply it wants. What comes all the same opensc-tool does not show.
bool wantsReply(const QByteArray &command)
{
    const int size = command.size() / 2;
    return size == 5 || (size > 5 && size == 6 + command.mid(8, 2).toInt(nullptr, 16));
}

// What passes between a reader and a card under T=0, where a command alone and its completed reply are known.
struct Dialogue {
    QByteArrayList commands;
    QByteArrayList replies;

    void add(const QByteArray &command, const QByteArray &reply)
    {
        const QByteArray size = QByteArray::number(reply.size() / 2 - 2, 16).rightJustified(2, '0').toUpper();
        const bool asks = command.size() == 10;
        const bool given = size == "00" || (asks && command.right(2) == size);
        commands << command;
        replies << (given ? reply : (asks ? "6C" : "61") + size);
        if (given)
            return;
        commands << (asks ? command.left(8) + size : command.left(2) + "C00000" + size);
        replies << reply;
    }
};

} // namespace

class TestServedForeignTools : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void explorerShowsTheFilesOfTheDeck();
    void explorerWritesWhatTheBenchReads();
    void explorerShowsTheSocialSecurityCard();
    void explorerShowsTheBankApplication();
    void toolsSeeTheSameReplies_data();
    void toolsSeeTheSameReplies();

private:
    nlohmann::json card(const char *id) const
    {
        return drivers::tray::Tray(m_folder->filePath("tray").toStdString()).card(id);
    }

    std::unique_ptr<PcscDaemon> m_daemon;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_tray;
};

void TestServedForeignTools::initTestCase()
{
    m_daemon = std::make_unique<PcscDaemon>();
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
}

void TestServedForeignTools::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tray = freshTray(*m_folder);
}

void TestServedForeignTools::explorerShowsTheFilesOfTheDeck()
{
    const ServedCard served(UNIFOLD_TRAY_TOOL, m_tray, kFileCard);
    QVERIFY2(served.problem().isEmpty(), served.problem());
    const nlohmann::json description = card(kFileCard);
    const nlohmann::json &application = description.at("applications").at(0);
    const nlohmann::json &files = application.at("files");
    const QByteArray greeting = contentOf(description.at("masterFile").at("files").at(0));
    const QByteArray open = contentOf(files.at(0));
    const QByteArray guarded = contentOf(files.at(1));
    const QByteArray blank = contentOf(files.at(3));
    const QByteArray note = contentOf(application.at("directories").at(0).at("files").at(0));
    QList<QByteArray> records;
    for (const nlohmann::json &record : files.at(2).at("records"))
        records << QByteArray::fromHex(QByteArray::fromStdString(record));
    QCOMPARE(records.size(), 3);

    // The bench reads them by selecting and reading.
    OpenBench bench(kPcscLibrary, kReader0);
    const QByteArrayList read =
        bench.readCard({"00A4000C022F01", "00B0000024", "00A4040C09F0554E49464F4C4401", "00B0810018", "00B0820020",
                        "00B2011C00", "00B2021C00", "00B2031C00", "0020000104" + QByteArray("1234").toHex(),
                        "00B0820020", "00B0840010", "00A4000C025001", "00B081001D"});
    const QByteArrayList expected = {QByteArray::fromStdString(description.at("atr")),
                                     "9000",
                                     hexReply(greeting),
                                     "9000",
                                     hexReply(open),
                                     "6982",
                                     hexReply(records.at(0)),
                                     hexReply(records.at(1)),
                                     hexReply(records.at(2)),
                                     "9000",
                                     hexReply(guarded),
                                     hexReply(blank),
                                     "9000",
                                     hexReply(note)};
    QCOMPARE(read, expected);

    const QByteArrayList seen = explore({"cat 2F01", "cd 5000", "find 0001 0005", "cat 0001", "cat 0003", "cat 0003 2",
                                         "verify CHV1 31:32:33:34", "cat 0002", "cat 0004", "cd 5001", "cat 0001"});
    QCOMPARE(seen.size(), 12);
    QCOMPARE(seen.at(0), openscDump(greeting, true));
    QCOMPARE(seen.at(2), QByteArray("FileID\tType  Size\n"
                                    "(0001)\r 0001 \t wEF    24\n(0002)\r 0002 \t wEF    32\n"
                                    "(0003)\r 0003 \t wEF    37\n(0004)\r 0004 \t wEF    16\n(0005)\r"));
    QCOMPARE(seen.at(3), openscDump(open, true));
    QCOMPARE(seen.at(4), recordsDump(records));
    QCOMPARE(seen.at(5), recordsDump({records.at(1)}, 2));
    QCOMPARE(seen.at(6), QByteArray("Code correct.\n"));
    QCOMPARE(seen.at(7), openscDump(guarded, true));
    QCOMPARE(seen.at(8), openscDump(blank, true));
    QCOMPARE(seen.at(10), openscDump(note, true));

    const QByteArrayList told = explore({"info", "info 2F01", "cd 5000", "info", "info 0003"});
    QCOMPARE(told.size(), 6);
    QVERIFY2(told.at(0).contains("Dedicated File  ID 3F00\n"), told.at(0));
    QVERIFY2(told.at(1).contains("Working Elementary File  ID 2F01"), told.at(1));
    QCOMPARE(infoValue(told.at(1), "File size"), QByteArray::number(greeting.size()) + " bytes");
    QCOMPARE(infoValue(told.at(1), "EF structure"), QByteArray("Transparent"));
    QVERIFY2(told.at(3).contains("Dedicated File  ID 5000\n"), told.at(3));
    QCOMPARE(infoValue(told.at(3), "DF name"), QByteArray("\\xF0UNIFOLD\\x01"));
    QCOMPARE(infoValue(told.at(4), "EF structure"), QByteArray("Linear variable"));
    QCOMPARE(infoValue(told.at(4), "Number of records"), QByteArray("3"));
    QCOMPARE(infoValue(told.at(4), "Max. record size"), QByteArray("13 bytes"));
    QCOMPARE(infoValue(told.at(4), "File size"), QByteArray("37 bytes"));
}

void TestServedForeignTools::explorerWritesWhatTheBenchReads()
{
    const ServedCard served(UNIFOLD_TRAY_TOOL, m_tray, kFileCard);
    QVERIFY2(served.problem().isEmpty(), served.problem());
    const QByteArrayList written = explore({"cd 5000", "update_binary 0004 2 112233", "cat 0004"});
    QCOMPARE(written.value(1), QByteArray("Total of 3 bytes written to 0004 at offset 2.\n"));
    const QByteArray now = QByteArray::fromHex("FFFF112233FFFFFFFFFFFFFFFFFFFFFF");
    QCOMPARE(written.value(2), openscDump(now, true));
    OpenBench bench(kPcscLibrary, kReader0);
    QCOMPARE(bench.readCard({"00A4040C09F0554E49464F4C4401", "00B0840010"}).last(), hexReply(now));
    const QString kept =
        QString::fromStdString(card(kFileCard).at("applications").at(0).at("files").at(3).at("content"));
    QCOMPARE(kept, QString::fromLatin1(now.toHex().toUpper()));
}

void TestServedForeignTools::explorerShowsTheSocialSecurityCard()
{
    const ServedCard served(UNIFOLD_TRAY_TOOL, m_tray, kSocialCard);
    QVERIFY2(served.problem().isEmpty(), served.problem());
    // The items of EF05 and EF06 as the deck gives them: identifier, length, value.
    const QByteArrayList issuer = {"011000112233445566778899AABBCCDDEEFF",
                                   "020133",
                                   "0304322E3030",
                                   "040C110100000000000000000000",
                                   "050420210601",
                                   "060420310601",
                                   "0709413030303030303138"};
    const QByteArrayList holder = {"0812" + QByteArray("110101199003072615").toHex(),
                                   "091ED5C5C8FD" + QByteArray("00").repeated(26),
                                   "4E14" + QByteArray("00").repeated(20),
                                   "0A0131",
                                   "0B0101",
                                   "0C03110101",
                                   "0D0419900307"};
    const QByteArray application = "7378312E73682EC9E7BBE1B1A3D5CF";
    QByteArrayList commands = {"00A404000F" + application, "00A4000002EF05"};
    QByteArrayList exploring = {"cd aid:" + application, "info EF05", "info EF06", "cat EF05"};
    for (const QByteArray &item : issuer)
        commands << "00B2" + item.left(2) + "0000";
    commands << "00A4000002EF06";
    for (const QByteArray &item : holder) {
        commands << "00B2" + item.left(2) + "0000";
        // opensc-explorer counts records in decimal digits.
        exploring << "cat EF06 " + QByteArray::number(item.left(2).toInt(nullptr, 16));
    }

    OpenBench bench(kPcscLibrary, kReader0);
    const QByteArrayList read = bench.readCard(commands);
    QCOMPARE(read.value(0), QByteArray::fromStdString(card(kSocialCard).at("atr")));
    const QByteArrayList seen = explore(exploring);
    QCOMPARE(seen.size(), exploring.size() + 1);
    QCOMPARE(infoValue(seen.at(1), "Number of records"), QByteArray::number(issuer.size()));
    QCOMPARE(infoValue(seen.at(2), "Number of records"), QByteArray::number(holder.size()));
    QList<QByteArray> items;
    for (int i = 0; i < issuer.size(); ++i) {
        QCOMPARE(read.value(3 + i), issuer.at(i).toUpper() + "9000");
        items << QByteArray::fromHex(issuer.at(i));
    }
    QCOMPARE(seen.at(3), recordsDump(items));
    for (int i = 0; i < holder.size(); ++i) {
        QCOMPARE(read.value(4 + issuer.size() + i), holder.at(i).toUpper() + "9000");
        const QByteArray item = QByteArray::fromHex(holder.at(i));
        QCOMPARE(seen.at(4 + i), recordsDump({item}, item.at(0)));
    }
}

void TestServedForeignTools::explorerShowsTheBankApplication()
{
    const ServedCard served(UNIFOLD_TRAY_TOOL, m_tray, kSocialCard);
    QVERIFY2(served.problem().isEmpty(), served.problem());
    OpenBench bench(kPcscLibrary, kReader0);
    const QByteArrayList read = bench.readCard({"00A4040008A000000333010101", "00B2010C00", "00B2011400"});
    QVERIFY2(read.value(1).startsWith("6F"), read.value(1));
    const QByteArrayList seen =
        explore({"cd aid:A000000333010101", "info", "cat sfi:1 1", "cat sfi:2 1", "apdu 00B2011400"});
    QCOMPARE(seen.size(), 6);
    QCOMPARE(infoValue(seen.at(1), "DF name"), QByteArray("\\xA0\\x00\\x00\\x033\\x01\\x01\\x01"));
    for (const int record : {0, 1}) {
        const QByteArray reply = read.value(2 + record);
        QVERIFY2(reply.startsWith("70") && reply.endsWith("9000"), reply);
        QCOMPARE(seen.at(2 + record), recordsDump({QByteArray::fromHex(reply.chopped(4))}));
    }
    QCOMPARE(seen.at(4), "Sending: 00 B2 01 14 00\n" + openscReply(read.value(3)) + "Success!\n");
}

void TestServedForeignTools::toolsSeeTheSameReplies_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<bool>("t0");
    QTest::addColumn<QByteArrayList>("commands");
    QTest::newRow("T=0") << QByteArray(kSocialCard) << true
                         << QByteArrayList{"00A404000F7378312E73682EC9E7BBE1B1A3D5CF",
                                           "00A4000002EF05",
                                           "00B2010012",
                                           "00B2010000",
                                           "00B2FF0000",
                                           "00A4040007A0000003330101",
                                           "00A4040007A000000333010100",
                                           "80A80000028300",
                                           "80A8000002830000",
                                           "00B2011400",
                                           "80CA9F3600",
                                           "80CA9F7900",
                                           "00A4000002DEAD",
                                           "00FE000000",
                                           "90CA9F3600"};
    // The last one ends what the PIN gave: programs leave the card powered for the next.
    QTest::newRow("T=1") << QByteArray(kFileCard) << false
                         << QByteArrayList{"00A4040009F0554E49464F4C440100",
                                           "00CA010100",
                                           "00A4000002000100",
                                           "00B0000000",
                                           "00B0000005",
                                           "00B2021C00",
                                           "00B0820020",
                                           "002000010431323334",
                                           "00B0820020",
                                           "00A4000002DEAD00",
                                           "00FE0000",
                                           "00A4000C023F00"};
}

void TestServedForeignTools::toolsSeeTheSameReplies()
{
    QFETCH(QByteArray, id);
    QFETCH(bool, t0);
    QFETCH(QByteArrayList, commands);
    const ServedCard served(UNIFOLD_TRAY_TOOL, m_tray, id.constData());
    QVERIFY2(served.problem().isEmpty(), served.problem());
    QByteArrayList replies;
    QByteArray atr;
    {
        OpenBench bench(kPcscLibrary, kReader0);
        replies = bench.readCard(commands);
        atr = replies.takeFirst();
    }
    QVERIFY2(!replies.contains(QByteArray()), replies.join(' '));
    QCOMPARE(atr, QByteArray::fromStdString(card(id.constData()).at("atr")));
    QCOMPARE(outputOf("opensc-tool", {"--reader", kReader0, "-a"}), QByteArray::fromHex(atr).toHex(':') + '\n');

    const QByteArrayList shown = toolReplies(commands);
    QCOMPARE(shown.size(), commands.size());
    for (int i = 0; i < commands.size(); ++i)
        QCOMPARE(shown.at(i), openscReply(wantsReply(commands.at(i)) ? replies.at(i) : replies.at(i).right(4)));

    Dialogue dialogue;
    for (int i = 0; i < commands.size(); ++i) {
        if (t0) {
            dialogue.add(commands.at(i), replies.at(i));
        } else {
            dialogue.commands << commands.at(i);
            dialogue.replies << replies.at(i);
        }
    }
    QCOMPARE(
        QByteArrayList(scriptorReplies(outputOf("scriptor", {"-r", kReader0}, dialogue.commands.join('\n') + '\n'))),
        dialogue.replies);
}

QTEST_MAIN(TestServedForeignTools)
#include "test_served_foreign_tools.moc"
