// Libraries with known faults: each is caught by the checks that are for it, and by no other.
#include "tests/tools/check/check_run.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

using check_test::CheckRun;
using check_test::runCheck;

namespace {

QString badDriver(const QString &fault)
{
    return QString(UNIFOLD_BAD_DRIVERS "/lib%1.so").arg(fault);
}

} // namespace

class TestDriverCheck : public QObject {
    Q_OBJECT

private slots:
    void usage();
    void listsTheChecks();
    void soundLibraryPasses();
    void faultsAreCaught_data();
    void faultsAreCaught();
    void crashesAreToldWithTheCall();
    void hangsAreEnded();
    void missingNamesAreListed();
    void libraryThatDoesNotLoad();
    void codesOfOthersAreTheirOwn();
    void notSupportedIsToldByTheirCode();
    void tableAndSummary();
    void outputThatCannotBeWritten();
    void worksWithoutStandardStreams();
    void leavesNothingBehindWhenItIsEnded_data();
    void leavesNothingBehindWhenItIsEnded();
};

void TestDriverCheck::usage()
{
    QCOMPARE(runCheck({"--help"}).exitCode, 0);
    QCOMPARE(runCheck({"--version"}).exitCode, 0);
    QCOMPARE(runCheck({}).exitCode, 2);
    QCOMPARE(runCheck({"--juggle", badDriver("None")}).exitCode, 2);
    QCOMPARE(runCheck({"--transport", "5", badDriver("None")}).exitCode, 2);
    QCOMPARE(runCheck({"--slot", "256", badDriver("None")}).exitCode, 2);
    const CheckRun nothing = runCheck({"--only", "no.such.check", badDriver("None")});
    QCOMPARE(nothing.exitCode, 2);
    QVERIFY(nothing.errors.contains("--list"));
}

void TestDriverCheck::listsTheChecks()
{
    const CheckRun table = runCheck({"--list"});
    QCOMPARE(table.exitCode, 0);
    const CheckRun json = runCheck({"--list", "--json"});
    const QJsonArray checks = QJsonDocument::fromJson(json.output).array();
    QCOMPARE(checks.size(), table.output.count('\n'));
    for (const auto &check : checks) {
        QVERIFY(table.output.contains(check.toObject()["check"].toString().toUtf8()));
        QVERIFY(!check.toObject()["what"].toString().isEmpty());
    }
    const CheckRun some = runCheck({"--list", "--only", "library.*", "--only", "device.reopen"});
    QCOMPARE(some.output.count('\n'), 5);
}

void TestDriverCheck::soundLibraryPasses()
{
    const CheckRun run = runCheck({"--json", "--our-codes", "--only", "[!l]*", badDriver("None")});
    QVERIFY2(run.exitCode == 0, qPrintable(run.failures()));
    QCOMPARE(run.verdicts["call.vek_firm_version"], QString("pass"));
    QCOMPARE(run.verdicts["timeout.vek_icc_poweron"], QString("pass"));
    QCOMPARE(run.verdicts["call.vek_mifare_request"], QString("not supported"));
    QCOMPARE(run.verdicts["call.vek_set_baud"], QString("not applicable"));
    QCOMPARE(run.verdicts["handle.made_up.vek_beep"], QString("pass"));
}

void TestDriverCheck::faultsAreCaught_data()
{
    QTest::addColumn<QString>("only");
    QTest::addColumn<QStringList>("caught");
    QTest::addColumn<QString>("reason");
    const QString call = "call.*";
    const QStringList version = {"call.vek_firm_version"};
    const QStringList beep = {"call.vek_beep"};
    QTest::newRow("WritesPastBuffer") << call << version
                                      << "touched memory past the 256 bytes of the buffer \"version\" of "
                                         "vek_firm_version";
    QTest::newRow("WritesBeforeBuffer") << call << version << "wrote before a buffer of vek_firm_version";
    QTest::newRow("LeavesOutNul") << call << version << "no NUL within the 256 bytes of \"version\"";
    QTest::newRow("GivesHugeLength") << call << version << "length is 4294967295";
    QTest::newRow("GivesNoUtf8") << call << version << "\"version\" is not UTF-8";
    QTest::newRow("HasOwnCodes") << call << version << "returned -100, which our table of codes does not have";
    QTest::newRow("Crashes") << call << beep << "crashed with SIGSEGV in vek_beep";
    QTest::newRow("Aborts") << call << beep << "crashed with SIGABRT in vek_beep";
    QTest::newRow("Hangs") << call << beep << "hung in vek_beep, ended after 2000 ms";
    QTest::newRow("HangsInOurGroup") << call << beep << "hung in vek_beep, ended after 2000 ms";
    QTest::newRow("Exits") << call << beep << "ended the program with exit code 3 in vek_beep";
    QTest::newRow("AcceptsClosedHandles")
        << "handle.*.vek_beep" << QStringList{"handle.closed.vek_beep"} << "handle 18193 was not refused: returned 0";
    QTest::newRow("AcceptsMadeUpHandles")
        << "handle.*.vek_beep"
        << QStringList{"handle.closed.vek_beep", "handle.made_up.vek_beep", "handle.zero.vek_beep"}
        << "handle 18193 was not refused: returned 0";
    QTest::newRow("IgnoresTimeout") << "timeout.vek_icc_poweron" << QStringList{"timeout.vek_icc_poweron"}
                                    << "took 3000 ms of 0";
    QTest::newRow("KeepsLists") << "device.*" << QStringList{"device.list_memory"} << "enumerations left";
    QTest::newRow("MiscountsDevices") << "device.*" << QStringList{"device.list.usb"}
                                      << "the list has 1 names, the result is 2";
    QTest::newRow("OpensAnything") << "device.*" << QStringList{"device.open_unknown"}
                                   << "opened a device by a name that no device has";
    QTest::newRow("ReadsPastArgument") << call << QStringList{"call.vek_mifare_authentication"}
                                       << "touched memory past the 13 bytes of the argument \"key\" of "
                                          "vek_mifare_authentication";
}

void TestDriverCheck::faultsAreCaught()
{
    QFETCH(QString, only);
    QFETCH(QStringList, caught);
    QFETCH(QString, reason);
    const QString fault = QTest::currentDataTag();
    const QStringList options = {"--json", "--our-codes", "--watchdog", fault.startsWith("Hangs") ? "2000" : "15000"};
    const CheckRun sound = runCheck(options + QStringList{"--only", only, badDriver("None")});
    QVERIFY2(sound.exitCode == 0, qPrintable(sound.failures()));
    const CheckRun run = runCheck(options + QStringList{"--only", only, badDriver(fault)});
    QCOMPARE(run.exitCode, 1);
    if (fault == "ReadsPastArgument") // the calls that authenticate first stumble over it too
        QVERIFY(run.with("fail").contains(caught.first()));
    else
        QCOMPARE(run.with("fail"), caught);
    // How late a call came back is not exact to the millisecond.
    const QString told = run.reasons[caught.first()];
    QVERIFY2(fault == "IgnoresTimeout" ? told.startsWith("took 3") : told.contains(reason), qPrintable(told));
}

void TestDriverCheck::crashesAreToldWithTheCall()
{
    const CheckRun run = runCheck({"--only", "call.vek_beep", badDriver("Crashes")});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.output.contains("fail            crashed with SIGSEGV in vek_beep"), run.output);
}

void TestDriverCheck::hangsAreEnded()
{
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(runCheck({"--only", "call.vek_beep", "--watchdog", "300", badDriver("Hangs")}).exitCode, 1);
    QVERIFY(clock.elapsed() >= 300);
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
}

void TestDriverCheck::missingNamesAreListed()
{
    const CheckRun none = runCheck({"--json", UNIFOLD_NAMELESS_DRIVER});
    QCOMPARE(none.exitCode, 1);
    QCOMPARE(none.with("fail"), QStringList{"library.names"});
    QVERIFY(none.reasons["library.names"].startsWith("85 of 85 names are missing: vek_enumerate, vek_enum_devices, "));
    const CheckRun some = runCheck({"--json", "--only", "library.names", UNIFOLD_PARTIAL_DRIVER});
    QCOMPARE(some.exitCode, 1);
    QVERIFY(some.reasons["library.names"].startsWith("82 of 85 names are missing: "));
    QVERIFY(!some.reasons["library.names"].contains("vek_open,"));
}

void TestDriverCheck::libraryThatDoesNotLoad()
{
    const CheckRun run = runCheck({"--json", "/no/such/library.so"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.with("fail"), QStringList{"library.load"});
    QVERIFY(run.reasons["library.load"].contains("/no/such/library.so"));
    QCOMPARE(run.with("not applicable").size(), run.verdicts.size() - 1);
    // Nor is it fine for who asks for something else.
    const CheckRun names = runCheck({"--json", "--only", "library.names", "/no/such/library.so"});
    QCOMPARE(names.exitCode, 1);
    QCOMPARE(names.verdicts.keys(), (QStringList{"library.load", "library.names"}));
    QCOMPARE(names.with("fail"), QStringList{"library.load"});
}

void TestDriverCheck::codesOfOthersAreTheirOwn()
{
    const CheckRun run = runCheck({"--json", "--only", "call.vek_firm_version", badDriver("HasOwnCodes")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.verdicts["call.vek_firm_version"], QString("not applicable"));
    QCOMPARE(run.reasons["call.vek_firm_version"], QString("returned -100"));
}

void TestDriverCheck::notSupportedIsToldByTheirCode()
{
    const CheckRun run =
        runCheck({"--json", "--not-supported", "-100", "--only", "call.vek_firm_version", badDriver("HasOwnCodes")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.verdicts["call.vek_firm_version"], QString("not supported"));
}

void TestDriverCheck::tableAndSummary()
{
    const CheckRun run = runCheck({"--only", "device.*", badDriver("MiscountsDevices")});
    QVERIFY(run.output.contains("device.reopen        pass            10 rounds\n"));
    QVERIFY2(run.output.endsWith("\n9 checks: 8 pass, 1 fail, 0 not supported, 0 not applicable\n"), run.output);
}

void TestDriverCheck::outputThatCannotBeWritten()
{
    for (const QStringList &options : {QStringList{}, QStringList{"--json"}, QStringList{"--list"}}) {
        QProcess tool;
        tool.setStandardOutputFile("/dev/full");
        tool.start(UNIFOLD_CHECK_TOOL, options + QStringList{"--only", "library.load", badDriver("None")});
        QVERIFY(tool.waitForFinished());
        QCOMPARE(tool.exitCode(), 2);
        QCOMPARE(tool.readAllStandardError(), QByteArray("unifold-driver-check: standard output cannot be written\n"));
    }
}

void TestDriverCheck::worksWithoutStandardStreams()
{
    // The pipe to a check must not get the number of a stream that was closed.
    const QString command = QString(UNIFOLD_CHECK_TOOL) + " --only library.load " + badDriver("None");
    QCOMPARE(QProcess::execute("sh", {"-c", "exec " + command + " <&- >&- 2>&-"}), 0);
}

void TestDriverCheck::leavesNothingBehindWhenItIsEnded_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("INT") << SIGINT;
    QTest::newRow("TERM") << SIGTERM;
    QTest::newRow("HUP") << SIGHUP;
}

void TestDriverCheck::leavesNothingBehindWhenItIsEnded()
{
    QFETCH(int, signal);
    const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", folder.path());
    QProcess tool;
    tool.setProcessEnvironment(environment);
    tool.start(UNIFOLD_CHECK_TOOL, {"--only", "call.vek_beep", badDriver("Hangs")});
    // The folder for pictures is made before the first check begins.
    QTRY_VERIFY(!QDir(folder.path()).isEmpty());
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(::kill(static_cast<pid_t>(tool.processId()), signal), 0);
    QVERIFY(tool.waitForFinished());
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(tool.exitStatus(), QProcess::CrashExit);
    QVERIFY(QDir(folder.path()).isEmpty());
}

QTEST_GUILESS_MAIN(TestDriverCheck)
#include "test_driver_check.moc"
