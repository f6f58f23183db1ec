// The trace as a user meets it: an environment variable, and a file with a line of JSON for each call.
#include "sdk/entry_point_table.h"
#include "tests/core/trace/traced_program.h"
#include "tests/virtual/support/tray_world.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class TestTrace : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_world = std::make_unique<virtual_test::TrayWorld>();
    }
    void cleanup()
    {
        m_world.reset();
        m_folder.reset();
    }

    void everyCallHasALineBeforeAndAfterIt()
    {
        QCOMPARE(run("all"), 0);
        QCOMPARE(m_errors, QByteArray());
        QStringList events;
        for (const QJsonObject &line : lines()) {
            if (line["event"] != "exchange")
                events << line["event"].toString() + ' ' + line["call"].toString();
        }
        QStringList expected;
        for (const char *call : {"vek_open", "vek_icc_poweron", "vek_icc_apdu", "vek_icc_apdu", "vek_icc_apdu",
                                 "vek_mifare_authentication", "vek_msr_write", "vek_enum_devices", "vek_free_list",
                                 "vek_beep", "vek_firm_version", "vek_close"})
            expected << QString("call ") + call << QString("return ") + call;
        QCOMPARE(events, expected);
    }

    void noExportIsLeftOut_data()
    {
        QTest::addColumn<QString>("part");
        QTest::addColumn<QString>("library");
        QTest::newRow("virtual reader") << "every"
                                        << "libtarvovek.so";
        QTest::newRow("PC/SC") << "pcsc every"
                               << "libtarvozent.so";
    }

    void noExportIsLeftOut()
    {
        QFETCH(QString, part);
        QFETCH(QString, library);
#define UNIFOLD_NAME_CALLED(name, Contract) #name,
#define UNIFOLD_NAME_UNCALLED(name) #name,
        const QStringList names = {UNIFOLD_ENTRY_POINTS(UNIFOLD_NAME_CALLED, UNIFOLD_NAME_UNCALLED)};
#undef UNIFOLD_NAME_CALLED
#undef UNIFOLD_NAME_UNCALLED
        QCOMPARE(run(part.toUtf8().constData()), 0);
        QStringList called;
        QStringList returned;
        for (const QJsonObject &line : lines()) {
            QCOMPARE(line["library"].toString(), library);
            (line["event"] == "call" ? called : returned) << line["call"].toString();
        }
        QCOMPARE(names.size(), 85);
        QCOMPARE(called, names);
        QCOMPARE(returned, names);
    }

    void linesTellTimeProcessAndLibrary()
    {
        QCOMPARE(run("all"), 0);
        double number = 0;
        for (const QJsonObject &line : lines()) {
            QVERIFY(QRegularExpression(R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z$)")
                        .match(line["time"].toString())
                        .hasMatch());
            QCOMPARE(line["library"].toString(), QString("libtarvovek.so"));
            QCOMPARE(line["process"].toDouble(), double(m_process));
            QVERIFY(line["thread"].toDouble() > 0);
            if (line["event"] == "call")
                QCOMPARE(line["number"].toDouble(), ++number);
            else
                QVERIFY(line["number"].toDouble() == number && line["microseconds"].toDouble() >= 0);
        }
    }

    void argumentsResultsAndOutputsAreThere()
    {
        QCOMPARE(run("all"), 0);
        const QJsonObject open = find("call", "vek_open")["arguments"].toObject();
        QCOMPARE(open, (QJsonObject{{"device", QJsonValue::Null}, {"reserved", 0}, {"baud", 0}}));
        const QJsonObject apdu = find("return", "vek_icc_apdu");
        QCOMPARE(apdu["result"].toInt(), 0);
        QVERIFY(apdu["outputs"].toObject()["reply"].toString().endsWith("9000"));
        QCOMPARE(apdu["outputs"].toObject()["replyLength"].toInt(),
                 apdu["outputs"].toObject()["reply"].toString().size());
        QCOMPARE(find("return", "vek_enum_devices")["outputs"].toObject()["list"].toString(),
                 QString("VUSB0001|VUSB0002|"));
        QCOMPARE(find("return", "vek_beep")["result"].toInt(), -1);
        // A call that failed has no outputs to show, and null pointers show as such.
        QVERIFY(!find("return", "vek_firm_version").contains("outputs"));
        QCOMPARE(find("call", "vek_firm_version")["arguments"].toObject()["version"], QJsonValue(QJsonValue::Null));
    }

    void rawExchangesStandBesideTheMergedReply()
    {
        QCOMPARE(run("all"), 0);
        QStringList exchanges;
        for (const QJsonObject &line : lines()) {
            if (line["event"] == "exchange" && line["number"] == find("call", "vek_icc_apdu")["number"])
                exchanges << line["command"].toString() + ' ' + line["reply"].toString();
        }
        QCOMPARE(exchanges.size(), 2);
        QCOMPARE(exchanges.first(), QString("00A4040008A000000333010101 612E"));
        QVERIFY(exchanges.last().startsWith("00C000002E 6F2C"));
    }

    void secretsAreMasked()
    {
        QCOMPARE(run("all"), 0);
        for (const char *secret : {"FFFFFFFFFFFF", "123456", "987654321", "D31062"})
            QVERIFY2(!text().contains(secret), secret);
        QCOMPARE(find("call", "vek_mifare_authentication")["arguments"].toObject()["key"].toString(), QString(12, '*'));
        QCOMPARE(find("call", "vek_msr_write")["arguments"].toObject()["track2"].toString(), QString(9, '*'));
        QVERIFY(text().contains("\"0020008003******\""));
    }

    void secretsAreShownWhenAskedFor()
    {
        QCOMPARE(run("all", {{"UNIFOLD_TRACE_SECRETS", "1"}}), 0);
        for (const char *secret : {"FFFFFFFFFFFF", "0020008003123456", "987654321", "D31062"})
            QVERIFY2(text().contains(secret), secret);
    }

    void theFileIsTheOwnersAlone()
    {
        QCOMPARE(run("all"), 0);
        const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QCOMPARE(QFileInfo(traceFile()).permissions(), owner);
        // One that was there is made so, and written on.
        const int before = lines().size();
        QVERIFY(QFile::setPermissions(traceFile(), owner | QFile::ReadOther));
        QCOMPARE(run("all"), 0);
        QCOMPARE(QFileInfo(traceFile()).permissions(), owner);
        QCOMPARE(lines().size(), 2 * before);
    }

    void aKilledProgramLeavesItsLastCall()
    {
        m_world->take(drivers::tray::Slot::Antenna);
        QCOMPARE(run("killed"), -1);
        const QList<QJsonObject> all = lines();
        QCOMPARE(all.size(), 3);
        QCOMPARE(all.last()["event"].toString(), QString("call"));
        QCOMPARE(all.last()["call"].toString(), QString("vek_mifare_request"));
        QVERIFY(text().endsWith('\n'));
    }

    void severalProgramsShareAFile()
    {
        std::array<QProcess, 3> programs;
        for (QProcess &program : programs)
            start(program, "many", {});
        QMap<double, int> linesOf;
        for (QProcess &program : programs) {
            linesOf[double(program.processId())] = 0;
            QVERIFY(program.waitForFinished(60000));
            QCOMPARE(program.exitCode(), 0);
        }
        for (const QJsonObject &line : lines())
            ++linesOf[line["process"].toDouble()];
        QCOMPARE(linesOf.values(), (QList<int>{600, 600, 600}));
    }

    void theOtherDriverWritesToo()
    {
        QCOMPARE(run("pcsc"), 0);
        QCOMPARE(lines().size(), 2);
        QCOMPARE(find("call", "vek_beep")["library"].toString(), QString("libtarvozent.so"));
        QCOMPARE(find("return", "vek_beep")["result"].toInt(), -1);
    }

    void aPipeIsRefused()
    {
        QCOMPARE(::mkfifo(QFile::encodeName(traceFile()).constData(), 0600), 0);
        QCOMPARE(run("all"), 0); // nobody reads it, and still nothing waits
        QVERIFY2(m_errors.startsWith("unifold trace: "), m_errors);
        const QByteArray name = QFile::encodeName(traceFile());
        const int reader = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); // NOLINT(*-vararg)
        QCOMPARE(run("all"), 0);
        QCOMPARE(QString::fromUtf8(m_errors), "unifold trace: " + traceFile() + ": is no regular file\n");
        ::close(reader);
    }

    void aLinkIsFollowedToAFileOfTheUsers()
    {
        const QString file = m_folder->filePath("elsewhere");
        QVERIFY(QFile::link(file, traceFile()));
        QCOMPARE(run("all"), 0);
        QVERIFY(!lines().isEmpty());
        QCOMPARE(QFileInfo(file).permissions() & 0x0FFF, QFile::Permissions(QFile::ReadUser | QFile::WriteUser));
    }

    void aFileOfAnotherUserIsRefused()
    {
        constexpr uid_t kOther = 1;
        QFile file(traceFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        if (::chown(QFile::encodeName(traceFile()).constData(), kOther, static_cast<gid_t>(-1)) != 0) {
            QTest::qSkip("only root can give a file away", __FILE__, __LINE__); // QSKIP is no ISO C++17
            return;
        }
        QCOMPARE(run("all"), 0);
        QCOMPARE(QString::fromUtf8(m_errors), "unifold trace: " + traceFile() + ": belongs to another user\n");
        QCOMPARE(file.size(), qint64(0));
    }

    void aFileThatCannotBeWrittenIsToldOnce_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no folder") << "/proc/nowhere/trace"
                                   << "No such file or directory";
        QTest::newRow("a folder") << "/tmp"
                                  << "Is a directory";
        QTest::newRow("a device") << "/dev/full"
                                  << "is no regular file";
    }

    void aFileThatCannotBeWrittenIsToldOnce()
    {
        QFETCH(QString, file);
        QFETCH(QString, reason);
        QCOMPARE(run("all", {{"UNIFOLD_TRACE", file}}), 0);
        QCOMPARE(QString::fromUtf8(m_errors), "unifold trace: " + file + ": " + reason + '\n');
    }

    void nothingIsWrittenUnlessAskedFor()
    {
        QCOMPARE(run("all", {{"UNIFOLD_TRACE", ""}}), 0);
        QCOMPARE(m_errors, QByteArray());
        QVERIFY(!QFile::exists(traceFile()));
    }

private:
    QString traceFile() const
    {
        return m_folder->filePath("trace.jsonl");
    }

    void start(QProcess &program, const char *part, const QMap<QString, QString> &variables)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("UNIFOLD_TRACE", traceFile());
        for (auto variable = variables.begin(); variable != variables.end(); ++variable)
            environment.insert(variable.key(), variable.value());
        program.setProcessEnvironment(environment);
        program.start(QCoreApplication::applicationFilePath(), {"--traced", part});
        QVERIFY(program.waitForStarted());
    }

    /// The exit code, or -1 for a process that a signal ended.
    int run(const char *part, const QMap<QString, QString> &variables = {})
    {
        QProcess program;
        start(program, part, variables);
        m_process = program.processId();
        if (!program.waitForFinished(60000))
            return -2;
        m_errors = program.readAllStandardError();
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }

    QByteArray text() const
    {
        QFile file(traceFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QList<QJsonObject> lines() const
    {
        QList<QJsonObject> list;
        const QList<QByteArray> rows = text().split('\n');
        for (int i = 0; i + 1 < rows.size(); ++i) {
            QJsonParseError error{};
            list << QJsonDocument::fromJson(rows.at(i), &error).object();
            if (error.error != QJsonParseError::NoError)
                qFatal("no JSON: %s", rows.at(i).constData());
        }
        return list;
    }

    /// The first line of a call.
    QJsonObject find(const char *event, const char *call) const
    {
        for (const QJsonObject &line : lines()) {
            if (line["event"] == event && line["call"] == call)
                return line;
        }
        return {};
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<virtual_test::TrayWorld> m_world;
    QByteArray m_errors;
    qint64 m_process = 0;
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--traced") == 0)
        return runTracedPart(argv[2]);
    QCoreApplication application(argc, argv);
    TestTrace test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_trace.moc"
