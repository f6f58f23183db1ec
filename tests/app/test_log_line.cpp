#include "app/log_line.h"

#include <QDate>
#include <QDateTime>
#include <QRegularExpression>
#include <QTest>

#include <array>
#include <cstring>

namespace {

constexpr qint64 kUtcPlus8 = 28800;

/// The stamp of a wall clock time in UTC+8.
QString stamp(const QDate &date, const QTime &time = QTime(0, 0))
{
    const qint64 milliseconds = QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch() - kUtcPlus8 * 1000;
    writeLogTime(milliseconds / 1000, milliseconds % 1000 * 1000);
    return saveTime;
}

/// The date part as the log's calendar has it, by looking up in a table of where its months begin.
QString expectedDate(const QDate &date)
{
    const int february = date.daysInYear() - 337;
    // Day of the year, from 0, on which the log's months 2 to 12 begin.
    std::array<int, 11> begins{};
    const std::array<int, 10> march_to_december{31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    begins[0] = february;
    for (std::size_t i = 0; i < march_to_december.size(); ++i)
        begins[i + 1] = begins[i] + march_to_december[i];

    const int day = date.dayOfYear() - 1;
    if (day == 365)
        return QString::asprintf("%04d/01/00", date.year() + 1);
    int month = 12;
    while (month > 1 && begins[static_cast<std::size_t>(month - 2)] > day)
        --month;
    const int start = month == 1 ? 0 : begins[static_cast<std::size_t>(month - 2)];
    return QString::asprintf("%04d/%02d/%02d", date.year(), month, day - start);
}

} // namespace

class TestLogLine : public QObject {
    Q_OBJECT

private slots:
    void stampOfAKnownMoment()
    {
        QCOMPARE(stamp(QDate(2026, 11, 15), QTime(12, 34, 56, 789)), "2026/11/15 123456-789");
    }

    void literalExamples_data()
    {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("shown");
        QTest::newRow("1 January") << QDate(2026, 1, 1) << "2026/01/00";
        QTest::newRow("31 January") << QDate(2026, 1, 31) << "2026/02/02";
        QTest::newRow("1 February") << QDate(2026, 2, 1) << "2026/02/03";
        QTest::newRow("28 February") << QDate(2026, 2, 28) << "2026/02/30";
        QTest::newRow("1 March") << QDate(2026, 3, 1) << "2026/03/00";
        QTest::newRow("31 March") << QDate(2026, 3, 31) << "2026/04/00";
        QTest::newRow("1 April") << QDate(2026, 4, 1) << "2026/04/01";
        QTest::newRow("1 May") << QDate(2026, 5, 1) << "2026/05/00";
        QTest::newRow("31 May") << QDate(2026, 5, 31) << "2026/06/00";
        QTest::newRow("30 November") << QDate(2026, 11, 30) << "2026/11/30";
        QTest::newRow("1 December") << QDate(2026, 12, 1) << "2026/12/00";
        QTest::newRow("31 December") << QDate(2026, 12, 31) << "2026/12/30";
        QTest::newRow("31 December of a leap year") << QDate(2028, 12, 31) << "2029/01/00";
    }

    void literalExamples()
    {
        QFETCH(QDate, date);
        QFETCH(QString, shown);
        QCOMPARE(stamp(date).left(10), shown);
    }

    void everyDayFrom2001To2099()
    {
        int days = 0;
        for (QDate date(2001, 1, 1); date.year() < 2100; date = date.addDays(1), ++days)
            QCOMPARE(stamp(date).left(10), expectedDate(date));
        QCOMPARE(days, 36159);
    }

    void everyDayOfTheYearLastsFromMidnightToMidnight()
    {
        QCOMPARE(stamp(QDate(2026, 6, 15), QTime(0, 0, 0, 0)), "2026/06/15 000000-000");
        QCOMPARE(stamp(QDate(2026, 6, 15), QTime(23, 59, 59, 999)), "2026/06/15 235959-999");
    }

    void momentsBefore2001DoNotFault()
    {
        writeLogTime(0, 0);
        QVERIFY(std::strlen(saveTime) < sizeof saveTime);
        QVERIFY(QString(saveTime).endsWith(" 080000-000"));
    }

    void theSystemsTimeZoneDoesNotCount()
    {
        const QByteArray zone = qgetenv("TZ");
        qputenv("TZ", "America/New_York");
        tzset();
        const QString before = QDateTime::currentDateTimeUtc().addSecs(kUtcPlus8).toString("HHmmss");
        const QString there = QString(logTime()).mid(11, 6);
        const QString after = QDateTime::currentDateTimeUtc().addSecs(kUtcPlus8).toString("HHmmss");
        qputenv("TZ", zone);
        tzset();
        // A second may begin between the clocks.
        QVERIFY2(there == before || there == after, qPrintable(there + " not " + before));
    }

    void eachCallRewritesTheOneBuffer()
    {
        QCOMPARE(static_cast<const void *>(logTime()), static_cast<const void *>(saveTime));
        QCOMPARE(sizeof saveTime, std::size_t{127});
    }

    void separatorIsStampTagAnd42Hyphens()
    {
        const QString line = separatorLine("主界面");
        QVERIFY(QRegularExpression(R"(^\[\d{4}/\d\d/\d\d \d{6}-\d{3}\] \[主界面\] -{42}$)").match(line).hasMatch());
    }

    void guardLine() { QVERIFY(deviceNotOpenLine("IC卡").endsWith("] [IC卡] 设备未打开！")); }

    void timeoutsAreComputedWideAndNarrowed()
    {
        DeviceContext device{};
        device.timeoutSeconds = 70;
        QCOMPARE(timeoutMs(device), 70000U);
        device.timeoutSeconds = -1;
        QCOMPARE(timeoutMs(device), 0xFFFFFC18U);
        device.timeoutSeconds = 2147483647;
        QCOMPARE(timeoutMs(device), 0xFFFFFC18U);
    }
};

QTEST_APPLESS_MAIN(TestLogLine)
#include "test_log_line.moc"
