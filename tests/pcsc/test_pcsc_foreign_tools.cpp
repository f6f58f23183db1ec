// Programs that nobody here wrote see the same card as the driver: its answer to reset and its replies.
#include "tests/pcsc/driver_session.h"
#include "tests/pcsc/foreign_tools.h"
#include "tests/pcsc/pcsc_daemon.h"
#include "tests/support/vpcd_card.h"

#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace testsupport;
using namespace drivers;

class TestPcscForeignTools : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void toolsAreInstalled_data();
    void toolsAreInstalled();
    void openscToolSeesTheSameAtr_data();
    void openscToolSeesTheSameAtr();
    void scriptorSeesTheSameReplies();
    void scriptedCardProgramServesThemToo();

private:
    std::unique_ptr<PcscDaemon> m_daemon;
    std::unique_ptr<DriverApi> m_api;
};

void TestPcscForeignTools::initTestCase()
{
    m_daemon = std::make_unique<PcscDaemon>();
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
    m_api = std::make_unique<DriverApi>("libtarvozent.so");
}

void TestPcscForeignTools::toolsAreInstalled_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("opensc") << "opensc-tool";
    QTest::newRow("pcsc-tools") << "scriptor";
}

void TestPcscForeignTools::toolsAreInstalled()
{
    QFETCH(QString, program);
    QVERIFY2(!QStandardPaths::findExecutable(program).isEmpty(),
             qPrintable(program + " is missing; install the package " + QTest::currentDataTag()));
}

void TestPcscForeignTools::openscToolSeesTheSameAtr_data()
{
    QTest::addColumn<QByteArray>("atr");
    QTest::newRow("T=1") << QByteArray("3B951381018073FF01000B");
    QTest::newRow("T=0") << QByteArray("3B021450");
    QTest::newRow("storage card") << QByteArray("3B8F8001804F0CA000000306030001000000006A");
}

void TestPcscForeignTools::openscToolSeesTheSameAtr()
{
    QFETCH(QByteArray, atr);
    VpcdCard card(*fromHex(atr.toStdString()), ScriptedReplies());
    DriverSession session(*m_api, kReader0);
    const Answer ours = session.powerOn();
    QCOMPARE(ours.code, int(kSuccess));
    QCOMPARE(ours.text, atr);
    const QByteArray theirs = outputOf("opensc-tool", {"--reader", kReader0, "-a"});
    QVERIFY2(theirs.contains(':'), theirs.constData());
    QCOMPARE(digits(theirs.split('\n').last().isEmpty() ? theirs.trimmed().split('\n').last() : theirs), ours.text);
}

void TestPcscForeignTools::scriptorSeesTheSameReplies()
{
    ScriptedReplies script;
    script.add("00A4040008A000000333010101", "6F0A8408A0000003330101019000");
    script.add("00B0000020", toHex(Bytes(32, 0x5A)) + "9000");
    script.add("00CA9F36*", "6A88");
    VpcdCard card({0x3B, 0x95, 0x13, 0x81, 0x01, 0x80, 0x73, 0xFF, 0x01, 0x00, 0x0B}, script);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    const QList<QByteArray> commands = {"00A4040008A000000333010101", "00B0000020", "00CA9F3600", "00FF0000"};
    QList<QByteArray> ours;
    for (const QByteArray &command : commands)
        ours << session.apdu(command).text;

    const QByteArray output = outputOf("scriptor", {"-r", kReader0}, commands.join('\n') + '\n');
    QCOMPARE(scriptorReplies(output), ours);
    QCOMPARE(ours.last(), QByteArray("6D00"));
}

void TestPcscForeignTools::scriptedCardProgramServesThemToo()
{
    QProcess card;
    card.start(QStringLiteral(VPCD_CARD_PROGRAM), {"--slot", "1", "3B021450", "00A4*=6F009000"});
    QVERIFY(card.waitForReadyRead(10000));
    QCOMPARE(card.readAll(), QByteArray("card inserted\n"));
    DriverSession session(*m_api, kReader1);
    QCOMPARE(session.powerOn().text, QByteArray("3B021450"));
    QCOMPARE(session.apdu("00A40000").text, QByteArray("6F009000"));
    QCOMPARE(session.apdu("00B00000").text, QByteArray("6D00"));
    const QByteArray theirs = outputOf("opensc-tool", {"--reader", kReader1, "-s", "00A4000000"});
    QVERIFY2(theirs.contains("SW1=0x90, SW2=0x00"), theirs.constData());
    card.terminate();
    QVERIFY(card.waitForFinished());
}

QTEST_GUILESS_MAIN(TestPcscForeignTools)
#include "test_pcsc_foreign_tools.moc"
