// The example driver library: built and checked as its guide says, and used by the bench.
#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/examples/guide.h"
#include "tests/support/bench_window.h"

#include <QComboBox>
#include <QProcess>
#include <QTemporaryDir>

using namespace guide_test;

namespace {

constexpr char kGuide[] = "docs/writing-a-driver.md";

/// The guide's commands, but for the last, which opens the bench for a person.
QString commandsFor(const QString &folder)
{
    QStringList lines = blocksIn(kGuide, "sh").value(0).split('\n', Qt::SkipEmptyParts);
    if (!lines.takeLast().endsWith("./run"))
        qFatal("the guide's commands do not end with ./run");
    return lines.join('\n')
        .replace("build/example", folder)
        .replace("build/bin/unifold-driver-check", UNIFOLD_CHECK_TOOL);
}

} // namespace

class TestExampleDriver : public QObject {
    Q_OBJECT

private slots:
    void isBuiltAndPassesTheCheckAsTheGuideSays();
    void passesTheCheckWithWritesToo();
    void answersTheBenchAsTheGuideSays();
    void isListedByTheBench();
};

void TestExampleDriver::isBuiltAndPassesTheCheckAsTheGuideSays()
{
    const QTemporaryDir folder;
    QProcess shell;
    shell.setWorkingDirectory(UNIFOLD_SOURCE);
    shell.start("bash", {"-ec", commandsFor(folder.path())});
    QVERIFY(shell.waitForFinished(120000));
    const QByteArray errors = shell.readAllStandardError();
    QVERIFY2(shell.exitCode() == 0, errors.constData());
    const QString lastLine = QString::fromUtf8(shell.readAllStandardOutput()).trimmed().section('\n', -1);
    QCOMPARE(lastLine + '\n', blocksIn(kGuide, "text").value(0));
}

void TestExampleDriver::passesTheCheckWithWritesToo()
{
    QCOMPARE(QProcess::execute(UNIFOLD_CHECK_TOOL, {"--not-supported", "-4", "--allow-writes", UNIFOLD_EXAMPLE_DRIVER}),
             0);
}

void TestExampleDriver::answersTheBenchAsTheGuideSays()
{
    BenchWindow bench;
    bench.loadLibrary();
    bench.press("pushButton_open_default");
    auto *const page = bench.page<Form_CPU_Iccard>();
    bench.press("pushButton_cpucard_poweron", page);
    bench.press("pushButton_cpucard_apdu", page);
    for (const QString &line : blocksIn(kGuide, "text").value(1).split('\n', Qt::SkipEmptyParts))
        QVERIFY2(bench.log().contains("[IC卡] " + line), qPrintable(line + " in:\n" + bench.log().join('\n')));
    bench.clearLog();
    bench.press("pushButton_close");
    QCOMPARE(bench.log().last(), QString("[主界面] vek_close return[0]."));
}

void TestExampleDriver::isListedByTheBench()
{
    BenchWindow bench;
    bench.loadLibrary();
    bench.press("pushButton_enum_select");
    QCOMPARE(bench.widget<QComboBox>("comboBox_select_device")->currentText(), QString("EXAMPLE1"));
}

QTEST_MAIN(TestExampleDriver)
#include "test_example_driver.moc"
