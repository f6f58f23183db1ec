// unifold-tray on a full disk: it names the file and the reason, changes nothing, and works again when there is space.
#include "tests/endurance/card_work.h"
#include "tests/endurance/disk_world.h"
#include "tests/endurance/own_mounts.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

using namespace endurance;

namespace {

constexpr char kNewBlock[] = "0123456789ABCDEF0123456789ABCDEF";

} // namespace

class TestFullDiskTool : public QObject {
    Q_OBJECT

public:
    explicit TestFullDiskTool(std::string problem) : m_problem(std::move(problem)) {}

private slots:
    void initTestCase()
    {
        // A right that only whoever runs the container can give.
        if (!m_problem.empty())
            QTest::qSkip(m_problem.c_str(), __FILE__, __LINE__); // QSKIP is no ISO C++17
    }

    void trayToolTellsTheReason_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QString>("file");
        const auto row = [](const QStringList &command, const char *file) {
            QTest::newRow(qPrintable(command.join(' '))) << command << file;
        };
        row({"put", "file-card", "contact"}, "tray.json");
        row({"take", "contact"}, "tray.json");
        row({"swipe", kStripeCard}, "tray.json");
        row({"power"}, "tray.json");
        row({"set", kMifareCard, "/blocks/4", kNewBlock}, "mifare-wallet.json");
        row({"remove", "psam-1"}, "tray.json");
        row({"fault", "add", "code", "vek_beep", "--code", "-5"}, "tray.json");
        row({"reset"}, "json");
    }

    void trayToolTellsTheReason()
    {
        QFETCH(const QStringList, command);
        QFETCH(const QString, file);
        DiskWorld world;
        world.disk().fill();
        const auto before = world.files();
        QCOMPARE(runTool(command), 1);
        QVERIFY2(m_errors.contains("No space left on device"), m_errors.constData());
        QVERIFY2(m_errors.startsWith("unifold-tray: ") && m_errors.contains(file.toUtf8()), m_errors.constData());
        QCOMPARE(m_errors.count('\n'), 1);
        QVERIFY(world.files() == before);
        QCOMPARE(runTool(QStringList("--json") + command), 1);
        const QString error = QJsonDocument::fromJson(m_output).object()["error"].toString();
        QVERIFY2(error.contains("No space left on device"), m_output.constData());
        QCOMPARE(runTool({"status"}), 0);
        world.disk().empty();
        QCOMPARE(runTool(command), 0);
        QVERIFY(world.files() != before || command == QStringList("reset"));
    }

    void resetCanBeRepeated()
    {
        DiskWorld world;
        QCOMPARE(runTool({"set", kMifareCard, "/blocks/4", kNewBlock}), 0);
        world.disk().fill();
        QCOMPARE(runTool({"reset"}), 1);
        QCOMPARE(runTool({"list"}), 0);
        world.disk().empty();
        QCOMPARE(runTool({"reset"}), 0);
        QVERIFY(world.tray().card(kMifareCard)["blocks"][4] != kNewBlock);
    }

private:
    int runTool(const QStringList &arguments)
    {
        QProcess tool;
        tool.start(UNIFOLD_TRAY_TOOL, arguments);
        if (!tool.waitForFinished() || tool.exitStatus() != QProcess::NormalExit)
            return -1;
        m_output = tool.readAllStandardOutput();
        m_errors = tool.readAllStandardError();
        return tool.exitCode();
    }

    std::string m_problem;
    QByteArray m_output;
    QByteArray m_errors;
};

int main(int argc, char **argv)
{
    return runOnOwnMounts<TestFullDiskTool>(argc, argv);
}
#include "test_full_disk_tool.moc"
