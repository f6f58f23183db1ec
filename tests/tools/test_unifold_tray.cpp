// The command line: what it does, prints and exits with.
#include "drivers/virtual/tray/tray.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <fstream>

using drivers::tray::Tray;

class TestUnifoldTray : public QObject {
    Q_OBJECT

private slots:
    void init();
    void helpsAndRefusesWrongUsage();
    void tellsInJsonWhatWasDone();
    void tellsWrongUsageInJson();
    void listsTheDeck();
    void putsAndTakes();
    void swipes();
    void showsAndSets();
    void addsAndRemoves();
    void takesOneTitleOrOneForEachLanguage_data();
    void takesOneTitleOrOneForEachLanguage();
    void carriesDumps_data();
    void carriesDumps();
    void refusesBadDumps();
    void refusesDumpsWithoutAUid();
    void takesThePower();
    void resets();
    void findsTheTrayOfTheEnvironment();
    void namesWhatIsBroken();
    void setsNoPlaceBeyondTheEnd();
    void writesThroughLinksAndIntoDevices();
    void failsWhenNothingGetsOut();
    void servingNeedsAReader();

private:
    /// Runs the tool on the test's tray and returns its exit code.
    int run(const QStringList &arguments, const QByteArray &input = {})
    {
        QProcess tool;
        tool.start(UNIFOLD_TRAY_TOOL, QStringList{"--tray", m_tray} + arguments);
        tool.write(input);
        tool.closeWriteChannel();
        if (!tool.waitForFinished() || tool.exitStatus() != QProcess::NormalExit)
            return -1;
        m_output = tool.readAllStandardOutput();
        m_errors = tool.readAllStandardError();
        return tool.exitCode();
    }
    QJsonObject object() const { return QJsonDocument::fromJson(m_output).object(); }
    QString cardIn(const char *slot)
    {
        return run({"--json", "status"}) == 0 ? object()["slots"].toObject()[slot].toObject()["card"].toString()
                                              : QString("?");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_tray;
    QByteArray m_output;
    QByteArray m_errors;
};

void TestUnifoldTray::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tray = m_folder->filePath("tray");
}

void TestUnifoldTray::helpsAndRefusesWrongUsage()
{
    QCOMPARE(run({"--help"}), 0);
    for (const char *command : {"status", "list", "put", "take", "swipe", "show", "set", "add", "remove", "import",
                                "export", "power", "reset", "fault", "serve"})
        QVERIFY2(m_output.contains(QByteArray("  ") + command), command);
    QCOMPARE(run({"put", "--help"}), 0);
    QVERIFY(m_output.contains("slot"));
    QCOMPARE(run({"--version"}), 0);
    QCOMPARE(run({}), 2);
    QCOMPARE(run({"juggle"}), 2);
    QCOMPARE(run({"take"}), 2);
    QCOMPARE(run({"export", "a", "b", "--format", "odd"}), 2);
    QVERIFY(!QFile::exists(m_tray));
}

void TestUnifoldTray::tellsInJsonWhatWasDone()
{
    struct Command {
        QStringList arguments;
        QByteArray done;
    };
    const QString file = m_folder->filePath("dump.eml");
    const Command commands[] = {
        {{"put", "id-permanent-2017"}, R"({"card":"id-permanent-2017","slot":"id"})"},
        {{"take", "psam2"}, R"({"card":"psam-2","slot":"psam2"})"},
        {{"swipe"}, R"({"card":"stripe-three-tracks"})"},
        {{"power"}, R"({"powerCycles":1})"},
        {{"set", "id-resident", "fields/name", "李四"},
         R"({"card":"id-resident","place":"/fields/name","value":"李四"})"},
        {{"add", "-", "--id", "mine"}, R"({"card":"mine"})"},
        {{"remove", "mine"}, R"({"card":"mine"})"},
        {{"export", "mifare-blank", file}, R"({"card":"mifare-blank","file":"FILE","format":"eml"})"},
        {{"import", "copy", file}, R"({"card":"copy","format":"eml"})"},
        {{"fault", "clear"}, R"({"cleared":0})"},
        {{"reset"}, R"({"tray":"TRAY"})"},
    };
    for (const Command &command : commands) {
        QCOMPARE(run(QStringList{"--json"} + command.arguments, R"({"kind": "stripe", "tracks": {"2": "1=2"}})"), 0);
        QByteArray done = command.done;
        done.replace("FILE", file.toUtf8()).replace("TRAY", m_tray.toUtf8());
        QCOMPARE(QJsonDocument::fromJson(m_output).toJson(QJsonDocument::Compact), done);
    }
    QCOMPARE(run({"put", "id-resident"}), 0);
    QVERIFY2(m_output.isEmpty(), m_output);
}

void TestUnifoldTray::tellsWrongUsageInJson()
{
    for (const QStringList &arguments : {QStringList{"put"}, QStringList{"juggle"}, QStringList{"status", "more"}}) {
        QCOMPARE(run(QStringList{"--json"} + arguments), 2);
        QVERIFY2(!object()["error"].toString().isEmpty(), m_output);
        QVERIFY(!m_errors.isEmpty());
    }
    QVERIFY(!QFile::exists(m_tray));
}

void TestUnifoldTray::listsTheDeck()
{
    QCOMPARE(run({"list"}), 0);
    const QByteArray table = m_output;
    QCOMPARE(run({"--json", "list"}), 0);
    const QJsonArray cards = QJsonDocument::fromJson(m_output).array();
    QVERIFY(cards.size() >= 8);
    for (const auto &card : cards) {
        QVERIFY(table.contains(card.toObject()["id"].toString().toUtf8()));
        QVERIFY(!card.toObject()["kind"].toString().isEmpty());
    }
}

void TestUnifoldTray::putsAndTakes()
{
    const QString card = cardIn("contact");
    QVERIFY(!card.isEmpty());
    QCOMPARE(run({"take", "contact"}), 0);
    QCOMPARE(cardIn("contact"), QString());
    QCOMPARE(run({"take", "contact"}), 1);
    QVERIFY(m_errors.contains("contact"));
    QCOMPARE(run({"put", card}), 0);
    QCOMPARE(cardIn("contact"), card);
    QCOMPARE(run({"put", card, "psam3"}), 0);
    QCOMPARE(cardIn("psam3"), card);
    QCOMPARE(run({"put", card, "stripe"}), 1);
    QCOMPARE(run({"put", card, "pocket"}), 1);
    QCOMPARE(run({"put", "no-such-card"}), 1);
    QVERIFY2(m_errors.contains("no-such-card"), m_errors);
    QCOMPARE(run({"--json", "put", "no-such-card"}), 1);
    QVERIFY(object()["error"].toString().contains("no-such-card"));
}

void TestUnifoldTray::swipes()
{
    QCOMPARE(run({"swipe"}), 0);
    const QString card = cardIn("stripe");
    QCOMPARE(run({"swipe", card}), 0);
    QCOMPARE(run({"--json", "status"}), 0);
    QCOMPARE(object()["swipes"].toInt(), 2);
    QCOMPARE(run({"swipe", cardIn("contact")}), 1);
    QCOMPARE(run({"take", "stripe"}), 0);
    QCOMPARE(run({"swipe"}), 1);
}

void TestUnifoldTray::showsAndSets()
{
    const QString card = cardIn("id");
    QCOMPARE(run({"set", card, "/fields/name", "李四"}), 0);
    QCOMPARE(run({"show", card}), 0);
    QCOMPARE(object()["fields"].toObject()["name"].toString(), QString("李四"));
    QCOMPARE(run({"set", card, "fields/name", "12"}), 0);
    QCOMPARE(run({"show", card}), 0);
    QCOMPARE(object()["fields"].toObject()["name"].toString(), QString("12"));
    QCOMPARE(run({"set", card, "/fields/nonsense", "x"}), 1);
    QVERIFY2(m_errors.contains("fields"), m_errors);
    QCOMPARE(run({"set", card, "/nowhere/name", "x"}), 1);
    QCOMPARE(run({"set", card, "/letter", "AB"}), 1);
    QCOMPARE(run({"show", "no-such-card"}), 1);
}

void TestUnifoldTray::addsAndRemoves()
{
    QCOMPARE(run({"show", cardIn("id")}), 0);
    const QByteArray card = m_output;
    QCOMPARE(run({"add", "-", "--id", "mine"}, card), 0);
    QCOMPARE(run({"put", "mine"}), 0);
    QCOMPARE(cardIn("id"), QString("mine"));
    QCOMPARE(run({"add", "-", "--id", "mine"}, card), 1);
    QVERIFY(m_errors.contains("--replace"));
    QCOMPARE(run({"add", "-", "--id", "mine", "--replace"}, card), 0);
    QCOMPARE(run({"add", "-", "--id", "../mine"}, card), 1);
    QCOMPARE(run({"add", "-", "--id", "other"}, "{"), 1);
    QVERIFY2(m_errors.contains("standard input: "), m_errors);
    QCOMPARE(run({"add", "-", "--id", "other"}, R"({"kind": "id"})"), 1);
    QCOMPARE(run({"add", m_folder->filePath("none.json")}), 1);
    QCOMPARE(run({"remove", "mine"}), 0);
    QCOMPARE(cardIn("id"), QString());
    QCOMPARE(run({"remove", "mine"}), 1);
}

void TestUnifoldTray::takesOneTitleOrOneForEachLanguage_data()
{
    QTest::addColumn<QByteArray>("title");
    QTest::addColumn<QString>("label"); // null: refused
    QTest::newRow("text") << QByteArray(R"("One")") << QString("One");
    QTest::newRow("each") << QByteArray(R"({"en": "One", "zh": "一"})") << QString("One");
    QTest::newRow("no Chinese") << QByteArray(R"({"en": "One"})") << QString();
    QTest::newRow("another language") << QByteArray(R"({"en": "One", "zh": "一", "de": "Eins"})") << QString();
    QTest::newRow("number") << QByteArray("1") << QString();
    QTest::newRow("number in a language") << QByteArray(R"({"en": 1, "zh": "一"})") << QString();
}

void TestUnifoldTray::takesOneTitleOrOneForEachLanguage()
{
    QFETCH(QByteArray, title);
    QFETCH(QString, label);
    // A card of each kind, since each has a schema of its own.
    for (const char *slot : {"contact", "antenna", "id", "stripe"}) {
        QCOMPARE(run({"show", cardIn(slot)}), 0);
        QJsonObject card = object();
        card["title"] = QJsonDocument::fromJson('[' + title + ']').array().first();
        const int added = run({"add", "-", "--id", "mine", "--replace"}, QJsonDocument(card).toJson());
        QCOMPARE(added, label.isNull() ? 1 : 0);
        if (label.isNull())
            QVERIFY2(m_errors.contains("title"), m_errors.constData());
        else
            QVERIFY(run({"list"}) == 0 && m_output.contains(label.toUtf8()));
    }
}

void TestUnifoldTray::carriesDumps_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("format");
    QTest::newRow("raw by ending") << "dump.mfd" << QStringList();
    QTest::newRow("eml by ending") << "dump.eml" << QStringList();
    QTest::newRow("json by ending") << "dump.json" << QStringList();
    QTest::newRow("eml by capitals") << "DUMP.EML" << QStringList();
    QTest::newRow("json by capitals") << "DUMP.JSON" << QStringList();
    QTest::newRow("eml asked for") << "dump" << QStringList{"--format", "eml"};
}

void TestUnifoldTray::carriesDumps()
{
    QFETCH(QString, name);
    QFETCH(QStringList, format);
    const QString card = cardIn("antenna");
    QCOMPARE(run({"set", card, "/blocks/5", "00112233445566778899AABBCCDDEEFF"}), 0);
    const QString file = m_folder->filePath(name);
    QCOMPARE(run(QStringList{"export", card, file} + format), 0);
    QFile dump(file);
    QVERIFY(dump.open(QIODevice::ReadOnly));
    const bool isRaw = name.endsWith(".mfd");
    QCOMPARE(dump.size() == 1024, isRaw);
    QCOMPARE(run(QStringList{"import", "copy", file} + format), 0);
    QCOMPARE(run({"show", card}), 0);
    const QJsonArray blocks = object()["blocks"].toArray();
    QCOMPARE(run({"show", "copy"}), 0);
    QCOMPARE(object()["blocks"].toArray(), blocks);
    QCOMPARE(run({"put", "copy"}), 0);
    QCOMPARE(run(QStringList{"export", "copy", "-"} + format), 0);
    if (format.isEmpty())
        QCOMPARE(m_output.size(), 1024);
    else
        QCOMPARE(m_output.count('\n'), 64);
}

void TestUnifoldTray::refusesBadDumps()
{
    const QString card = cardIn("antenna");
    QCOMPARE(run({"show", card}), 0);
    const QByteArray before = m_output;
    QCOMPARE(run({"import", card, "-"}, QByteArray(1023, '\0')), 1);
    QVERIFY2(m_errors.contains("1023"), m_errors);
    QVERIFY2(m_errors.contains("standard input: "), m_errors);
    QCOMPARE(run({"import", card, "-", "--format", "eml"}, "zz\n"), 1);
    QVERIFY2(m_errors.contains("standard input: line 1: "), m_errors);
    QCOMPARE(run({"import", card, "-", "--format", "json"}, "{}"), 1);
    QVERIFY2(m_errors.contains("standard input: /: \"blocks\" is missing"), m_errors);
    QCOMPARE(run({"import", card, "-", "--format", "json"}, "{"), 1);
    QVERIFY2(m_errors.contains("standard input: ") && m_errors.contains("line 1"), m_errors);
    QCOMPARE(run({"import", cardIn("id"), "-"}, QByteArray(1024, '\0')), 1);
    QCOMPARE(run({"export", cardIn("id"), "-"}), 1);
    QCOMPARE(run({"export", card, m_folder->filePath("no/where.mfd")}), 1);
    QCOMPARE(run({"show", card}), 0);
    QCOMPARE(m_output, before);
}

// A dump whose block 0 is no manufacturer's is refused under the dump's name, before a card of that id comes to be.
void TestUnifoldTray::refusesDumpsWithoutAUid()
{
    const QString file = m_folder->filePath("dump.mfd");
    QCOMPARE(run({"export", "mifare-blank", file}), 0);
    QFile dump(file);
    QVERIFY(dump.open(QIODevice::ReadWrite) && dump.seek(4) && dump.write("\x5A", 1) == 1);
    dump.close();
    QCOMPARE(run({"import", "copy", file}), 1);
    QVERIFY2(m_errors.contains(file.toUtf8() + ": /blocks/0: the fifth byte must be the check byte"), m_errors);
    QCOMPARE(run({"show", "copy"}), 1);
}

void TestUnifoldTray::takesThePower()
{
    Tray tray(m_tray.toStdString());
    tray.update([](drivers::tray::TrayState &state) { state.serial["VCOM1"].temporary = 115200; });
    QCOMPARE(run({"power"}), 0);
    QCOMPARE(run({"--json", "status"}), 0);
    QCOMPARE(object()["powerCycles"].toInt(), 1);
    QCOMPARE(object()["serial"].toObject()["VCOM1"].toObject()["inForce"].toInt(), 9600);
}

void TestUnifoldTray::resets()
{
    const QString card = cardIn("id");
    QCOMPARE(run({"set", card, "/fields/name", "李四"}), 0);
    QCOMPARE(run({"take", "id"}), 0);
    QCOMPARE(run({"reset"}), 0);
    QCOMPARE(cardIn("id"), card);
    QCOMPARE(run({"show", card}), 0);
    QVERIFY(object()["fields"].toObject()["name"].toString() != QString("李四"));
}

void TestUnifoldTray::findsTheTrayOfTheEnvironment()
{
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("UNIFOLD_TRAY", m_tray);
    tool.setProcessEnvironment(environment);
    tool.start(UNIFOLD_TRAY_TOOL, {"status"});
    QVERIFY(tool.waitForFinished());
    QCOMPARE(tool.exitCode(), 0);
    QVERIFY(tool.readAllStandardOutput().contains(m_tray.toUtf8()));
}

void TestUnifoldTray::namesWhatIsBroken()
{
    const QString card = cardIn("id");
    Tray tray(m_tray.toStdString());
    std::ofstream(tray.cardFile(card.toStdString()), std::ios::trunc) << "{\n\"kind\" \"id\"";
    QCOMPARE(run({"show", card}), 1);
    QVERIFY2(m_errors.contains(card.toUtf8() + ".json") && m_errors.contains("line 2"), m_errors);
    QCOMPARE(run({"list"}), 0);
    QVERIFY2(m_output.contains("line 2"), m_output);
    QCOMPARE(run({"status"}), 0);
    std::ofstream(tray.folder() / "tray.json", std::ios::trunc) << "[]";
    QCOMPARE(run({"status"}), 1);
    QVERIFY2(m_errors.contains("tray.json"), m_errors);
    QCOMPARE(run({"reset"}), 0);
    QCOMPARE(run({"status"}), 0);
}

void TestUnifoldTray::setsNoPlaceBeyondTheEnd()
{
    QCOMPARE(run({"show", "mifare-wallet"}), 0);
    const QByteArray before = m_output;
    for (const char *place : {"/blocks/4000000000", "/blocks/65", "/blocks/x", "/blocks/4/x", "/nowhere/x", ""}) {
        QCOMPARE(run({"set", "mifare-wallet", place, "00"}), 1);
        QVERIFY2(!m_errors.isEmpty(), place);
    }
    QCOMPARE(run({"set", "id-resident", "/fields/name", QString("[").repeated(50000) + QString("]").repeated(50000)}),
             1);
    QCOMPARE(run({"show", "mifare-wallet"}), 0);
    QCOMPARE(m_output, before);
}

void TestUnifoldTray::writesThroughLinksAndIntoDevices()
{
    const QString target = m_folder->filePath("target.bin");
    const QString link = m_folder->filePath("link.bin");
    QFile file(target);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("old");
    file.close();
    QVERIFY(QFile::link(target, link));
    QCOMPARE(run({"export", "mifare-wallet", link}), 0);
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(QFileInfo(target).size(), qint64{1024});
    // By another name, so that a failing test leaves the machine its device.
    const QString standard = m_folder->filePath("out");
    QVERIFY(QFile::link("/proc/self/fd/1", standard));
    QCOMPARE(run({"export", "mifare-wallet", standard}), 0);
    QCOMPARE(m_output.size(), 1024);
}

void TestUnifoldTray::failsWhenNothingGetsOut()
{
    for (const QStringList &arguments :
         {QStringList{"list"}, QStringList{"--json", "status"}, QStringList{"show", "mifare-wallet"},
          QStringList{"export", "mifare-wallet", "-"}, QStringList{"--help"}}) {
        QProcess tool;
        tool.setStandardOutputFile("/dev/full");
        tool.start(UNIFOLD_TRAY_TOOL, QStringList{"--tray", m_tray} + arguments);
        QVERIFY(tool.waitForFinished());
        QCOMPARE(tool.exitCode(), 1);
        QVERIFY2(tool.readAllStandardError().contains("standard output"), qPrintable(arguments.join(' ')));
    }
}

void TestUnifoldTray::servingNeedsAReader()
{
    QCOMPARE(run({"serve", cardIn("id")}), 1);
    QVERIFY2(m_errors.contains("CPU"), m_errors);
    QCOMPARE(run({"serve", cardIn("contact"), "--reader", "7"}), 2);
}

QTEST_GUILESS_MAIN(TestUnifoldTray)
#include "test_unifold_tray.moc"
