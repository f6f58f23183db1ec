// Three programs with nine threads each work in one tray through one driver library. No change of any is lost, no
// result is one that the call cannot have, and the trace that all of them write is whole. Built with the preset tsan
// the thread sanitizer looks on.
//
//   UNIFOLD_TOGETHER_SECONDS=60  for that long (without it 3)
#include "tests/endurance/child.h"
#include "tests/endurance/together_work.h"
#include "tests/virtual/support/tray_world.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

using namespace endurance;

namespace {

constexpr int kDefaultSeconds = 3;

int seconds()
{
    bool given = false;
    const int value = qEnvironmentVariableIntValue("UNIFOLD_TOGETHER_SECONDS", &given);
    return given ? value : kDefaultSeconds;
}

} // namespace

class TestWorkTogether : public QObject {
    Q_OBJECT

public:
    /// Qt Test ends a function after five minutes unless told otherwise.
    static void initMain() { qputenv("QTEST_FUNCTION_TIMEOUT", "86400000"); }

private slots:
    void programsAndThreadsShareATray()
    {
        QTemporaryDir folder;
        QVERIFY(QDir::setCurrent(folder.path())); // for the pictures of ID cards
        virtual_test::TrayWorld world;
        const std::string trace = folder.filePath("trace.jsonl").toStdString();
        qputenv("UNIFOLD_TRACE", trace.c_str());
        const int before = countedValue(world);
        const int time = seconds() * 1000;

        Child second({UNIFOLD_TOGETHER_PROGRAM, std::to_string(time), "1000"});
        Child third({UNIFOLD_TOGETHER_PROGRAM, std::to_string(time), "2000"});
        Sums all;
        {
            const DriverApi driver("libtarvovek.so");
            all = workTogether(driver, std::chrono::milliseconds(time), 0);
        }
        QVERIFY(everyoneWorked(all));
        for (Child *const child : {&second, &third}) {
            Sums sums;
            QVERIFY(child->read(sums));
            QCOMPARE(child->wait(), 0);
            QVERIFY(everyoneWorked(sums));
            all += sums;
        }
        qunsetenv("UNIFOLD_TRACE");
        qInfo("%lld increments, %lld beeps, %lld swipes, %lld stripes written, %lld other calls, %lld devices closed "
              "under them",
              static_cast<long long>(all.increments), static_cast<long long>(all.beeps),
              static_cast<long long>(all.swipes), static_cast<long long>(all.stripeWrites),
              static_cast<long long>(all.otherCalls), static_cast<long long>(all.reopened));
        QCOMPARE(all.wrongCodes, std::int64_t{0});
        QCOMPARE(countedValue(world), before + all.increments);
        QCOMPARE(static_cast<std::int64_t>(world.tray().state()->beeps), all.beeps);
        QCOMPARE(static_cast<std::int64_t>(world.tray().state()->swipeCount), all.swipes);
        traceIsWhole(folder.filePath("trace.jsonl"));
    }

private:
    static int countedValue(virtual_test::TrayWorld &world)
    {
        const auto block = world.tray().card("mifare-wallet").at("blocks").at(kCountedBlock).get<std::string>();
        const QByteArray bytes = QByteArray::fromHex(QByteArray::fromStdString(block.substr(0, 8)));
        return qFromLittleEndian<qint32>(bytes.constData());
    }

    static bool everyoneWorked(const Sums &sums)
    {
        return sums.increments > 0 && sums.beeps > 0 && sums.swipes > 0 && sums.stripeWrites > 0 &&
               sums.otherCalls > 0 && sums.reopened > 0;
    }

    /// Every line is an event of its own, and every call has returned.
    static void traceIsWhole(const QString &name)
    {
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QSet<QString> open;
        qint64 calls = 0;
        while (!file.atEnd()) {
            const QByteArray line = file.readLine();
            const QJsonObject event = QJsonDocument::fromJson(line).object();
            const QString id = QString::number(event["process"].toDouble()) + ' ' +
                               QString::number(event["number"].toDouble(), 'f', 0);
            QVERIFY2(!event.isEmpty(), line.constData());
            if (event["event"] == "call") {
                QVERIFY2(!open.contains(id), line.constData());
                open.insert(id);
                ++calls;
            } else if (event["event"] == "return") {
                QVERIFY2(open.remove(id), line.constData());
            }
        }
        QVERIFY(calls > 0);
        QVERIFY(open.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestWorkTogether)
#include "test_work_together.moc"
