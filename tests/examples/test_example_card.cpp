// The example card: put into a tray and read through the bench as its guide says.
#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/examples/guide.h"
#include "tests/virtual/bench/virtual_bench.h"

using namespace guide_test;

namespace {

constexpr char kGuide[] = "docs/writing-a-card.md";
constexpr char kCardFile[] = "examples/card/locker-card.json";

/// Runs the guide's commands on the test's own tray; 0 if all went well.
int putCardIn()
{
    QProcess shell;
    shell.setWorkingDirectory(UNIFOLD_SOURCE);
    shell.setProcessChannelMode(QProcess::ForwardedChannels);
    QString commands = blocksIn(kGuide, "sh").value(0);
    shell.start("bash", {"-ec", commands.replace("build/bin/unifold-tray", UNIFOLD_TRAY_TOOL)});
    return shell.waitForFinished() ? shell.exitCode() : -1;
}

/// The guide's table of APDUs: command and reply.
QList<QPair<QString, QString>> exchangesOfGuide()
{
    static const QRegularExpression row(R"(^\| `([0-9A-F]+)` \|[^|]*\| `([0-9A-F]+)`)",
                                        QRegularExpression::MultilineOption);
    QList<QPair<QString, QString>> exchanges;
    for (auto match = row.globalMatch(contentOf(kGuide)); match.hasNext();) {
        const auto found = match.next();
        exchanges << qMakePair(found.captured(1), found.captured(2));
    }
    return exchanges;
}

} // namespace

class TestExampleCard : public QObject {
    Q_OBJECT

private slots:
    void keepsItsSchema();
    void answersAsTheGuideSays();
    void mistakeIsToldAsTheGuideSays();
};

void TestExampleCard::keepsItsSchema()
{
    const auto card = nlohmann::json::parse(contentOf(kCardFile).toStdString());
    drivers::reader::checkModel(card, kCardFile); // throws what is wrong
    QCOMPARE(card.at("kind").get<std::string>(), std::string("cpu"));
}

void TestExampleCard::answersAsTheGuideSays()
{
    VirtualBench bench;
    QCOMPARE(putCardIn(), 0);
    QCOMPARE(bench.world().cardIn(VirtualBench::Slot::Contact), std::string("locker-card"));
    bench.openDevice();
    auto *const page = bench.page<Form_CPU_Iccard>();
    bench.press("radioButton", page);
    QCOMPARE(bench.logOf("pushButton_cpucard_poweron", page).last(),
             "[IC卡] ATR = [" + bench.cardText(VirtualBench::Slot::Contact, "/atr") + "]");
    const auto exchanges = exchangesOfGuide();
    QCOMPARE(exchanges.size(), 7);
    for (const auto &[command, reply] : exchanges) {
        bench.type("lineEdit_apdu", command, page);
        QCOMPARE(bench.logOf("pushButton_cpucard_apdu", page).last(), "[IC卡] recv RPDU=[" + reply + "]");
    }
    QCOMPARE(bench.cardText(VirtualBench::Slot::Contact, "/applications/0/files/1/content"), QString("123456"));
}

void TestExampleCard::mistakeIsToldAsTheGuideSays()
{
    const virtual_test::TrayWorld world;
    const QTemporaryDir folder;
    QFile file(folder.filePath("locker-card.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contentOf(kCardFile).replace("3B87014C4F434B45522DB7", "3B874C4F434B45522D").toUtf8());
    file.close();
    QProcess tool;
    tool.setWorkingDirectory(folder.path());
    tool.start(UNIFOLD_TRAY_TOOL, {"add", "locker-card.json"});
    QVERIFY(tool.waitForFinished());
    QCOMPARE(tool.exitCode(), 1);
    QCOMPARE(QString::fromUtf8(tool.readAllStandardError()), blocksIn(kGuide, "text").value(0));
}

QTEST_MAIN(TestExampleCard)
#include "test_example_card.moc"
