// unifold-tray fault.
#include "drivers/virtual/tray/tray.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr char kNoCount[] = "calls are counted from 1 to 9223372036854775807";

} // namespace

class TestFaultCommands : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void addsListsAndClears()
    {
        QCOMPARE(run({"fault", "add", "code", "vek_beep", "--code", "-5", "--from", "2", "--times", "3"}), 0);
        QCOMPARE(m_output, QByteArray("fault 1: vek_beep returns -5\n"));
        QCOMPARE(run({"fault", "add", "delay", "vek_icc_apdu", "--ms", "250"}), 0);
        QCOMPARE(run({"fault", "add", "removed", "--slot", "contact", "--after", "4"}), 0);
        QCOMPARE(run({"fault", "add", "short", "vek_icc_apdu", "--keep", "1"}), 0);
        QCOMPARE(run({"fault", "add", "flipped", "vek_idcr_read_uid", "--offset", "3", "--mask", "01"}), 0);
        QCOMPARE(run({"fault", "add", "unplugged", "--from", "9"}), 0);
        QCOMPARE(run({"fault", "list"}), 0);
        const QList<QByteArray> rows = m_output.split('\n');
        QCOMPARE(rows.size(), 8);
        const QList<QByteArray> expected = {"ID KIND FAULT WHEN SEEN STATE",
                                            "1 code vek_beep returns -5 from 2, 3 times 0 armed",
                                            "2 delay vek_icc_apdu takes 250 ms longer from 1 0 armed",
                                            "3 removed the card in contact goes from 5, 1 time 0 armed",
                                            "4 short vek_icc_apdu replies with 1 bytes at most from 1 0 armed",
                                            "5 flipped vek_idcr_read_uid replies with byte 3 XOR 01 from 1 0 armed",
                                            "6 unplugged the reader is unplugged from 9 0 armed",
                                            ""};
        for (int i = 0; i < rows.size(); ++i)
            QCOMPARE(rows.at(i).simplified(), expected.at(i));
        QCOMPARE(run({"fault", "clear", "3"}), 0);
        QCOMPARE(ids(), (QList<int>{1, 2, 4, 5, 6}));
        QCOMPARE(run({"--json", "fault", "clear"}), 0);
        QCOMPARE(QJsonDocument::fromJson(m_output).object()["cleared"].toInt(), 5);
        QCOMPARE(ids(), QList<int>());
    }

    void printsJson()
    {
        QCOMPARE(run({"--json", "fault", "add", "flipped", "vek_icc_apdu", "--times", "2"}), 0);
        const QJsonObject expected = {{"id", 1},     {"kind", "flipped"}, {"call", "vek_icc_apdu"},
                                      {"from", 1},   {"times", 2},        {"seen", 0},
                                      {"offset", 0}, {"mask", 255}};
        QCOMPARE(QJsonDocument::fromJson(m_output).object(), expected);
        QCOMPARE(run({"fault", "list", "--json"}), 0);
        QCOMPARE(QJsonDocument::fromJson(m_output).array(), QJsonArray{expected});
    }

    void refuses_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("kind") << QStringList{"add", "fire", "vek_beep"}
                              << "there is no fault of the kind fire (code, delay, removed, short, flipped, unplugged)";
        QTest::newRow("call") << QStringList{"add", "code", "vek_juggle", "--code", "-1"}
                              << "there is no call vek_juggle";
        QTest::newRow("missing") << QStringList{"add", "code", "vek_beep"} << "a fault of the kind code needs --code";
        QTest::newRow("idle option") << QStringList{"add", "delay", "vek_beep", "--ms", "5", "--keep", "1"}
                                     << "--keep does not go with a fault of the kind delay";
        QTest::newRow("mask") << QStringList{"add", "flipped", "vek_icc_apdu", "--mask", "XY"}
                              << "a mask is two hexadecimal digits, not XY";
        QTest::newRow("slot") << QStringList{"add", "removed", "--slot", "psam9", "--after", "1"}
                              << "there is no slot psam9";
        QTest::newRow("from 0") << QStringList{"add", "unplugged", "--from", "0"} << kNoCount;
        // What the tray could not read back would make it useless.
        QTest::newRow("from -1") << QStringList{"add", "unplugged", "--from", "-1"} << kNoCount;
        QTest::newRow("times -1") << QStringList{"add", "unplugged", "--times", "-1"} << kNoCount;
        QTest::newRow("too many") << QStringList{"add", "code",   "vek_beep",           "--code",
                                                 "-5",  "--from", "9223372036854775808"}
                                  << kNoCount;
        QTest::newRow("too late") << QStringList{"add",     "removed", "--slot",
                                                 "contact", "--after", "9223372036854775807"}
                                  << kNoCount;
        QTest::newRow("too long") << QStringList{"add", "delay", "vek_beep", "--ms", "2147483648"}
                                  << "the longest delay is 2147483647 ms";
        QTest::newRow("unknown id") << QStringList{"clear", "7"} << "there is no fault 7";
    }

    void refuses()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        QCOMPARE(run(QStringList{"--json", "fault"} + arguments), 1);
        QCOMPARE(QString::fromUtf8(m_errors), "unifold-tray: " + reason + '\n');
        QCOMPARE(QJsonDocument::fromJson(m_output).object()["error"].toString(), reason);
        QCOMPARE(ids(), QList<int>());
    }

    void refusesWhatIsNoNumberOfAFault()
    {
        for (const char *id : {"0", "-1", "x"}) {
            QCOMPARE(run({"fault", "clear", id}), 2);
            QVERIFY2(m_errors.contains("1 to 9223372036854775807"), m_errors.constData());
        }
    }

private:
    int run(const QStringList &arguments)
    {
        QProcess tool;
        tool.start(UNIFOLD_TRAY_TOOL, QStringList{"--tray", m_folder->filePath("tray")} + arguments);
        if (!tool.waitForFinished() || tool.exitStatus() != QProcess::NormalExit)
            return -1;
        m_output = tool.readAllStandardOutput();
        m_errors = tool.readAllStandardError();
        return tool.exitCode();
    }

    QList<int> ids()
    {
        QList<int> list;
        if (run({"--json", "fault", "list"}) != 0)
            return {-1};
        const QJsonArray faults = QJsonDocument::fromJson(m_output).array();
        for (const auto &fault : faults)
            list << fault.toObject()["id"].toInt();
        return list;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_output;
    QByteArray m_errors;
};

QTEST_GUILESS_MAIN(TestFaultCommands)
#include "test_fault_commands.moc"
