// The PC/SC driver keeps the contracts, with a card, without one, and without the daemon.
#include "tests/pcsc/pcsc_daemon.h"
#include "tests/support/vpcd_card.h"
#include "tests/tools/check/check_run.h"

#include <QtTest>

using namespace testsupport;
using check_test::CheckRun;
using check_test::runCheck;

class TestPcscDriverChecked : public QObject {
    Q_OBJECT

private slots:
    void withACard();
    void withoutACard();
    void withoutTheDaemon();

private:
    static CheckRun checkDriver(const QStringList &options)
    {
        return runCheck(QStringList{"--json", "--our-codes", "libtarvozent.so"} + options);
    }
    std::unique_ptr<PcscDaemon> m_daemon = std::make_unique<PcscDaemon>();
};

void TestPcscDriverChecked::withACard()
{
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
    ScriptedReplies replies;
    replies.add("00A40000023F00", "9000");
    const VpcdCard card({0x3B, 0x80, 0x80, 0x01, 0x01}, replies);
    const CheckRun run = checkDriver({"--allow-writes", "--timeout", "3000", "--device", kReader0, "--slot", "2"});
    QVERIFY2(run.exitCode == 0, qPrintable(run.failures()));
    QCOMPARE(run.verdicts["call.vek_icc_apdu"], QString("pass"));
    QCOMPARE(run.verdicts["handle.closed.vek_icc_apdu"], QString("pass"));
}

void TestPcscDriverChecked::withoutACard()
{
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
    const CheckRun run = checkDriver({"--device", kReader1});
    QVERIFY2(run.exitCode == 0, qPrintable(run.failures()));
    QCOMPARE(run.verdicts["timeout.vek_icc_poweron"], QString("pass"));
    QCOMPARE(run.verdicts["device.list.pcsc"], QString("pass"));
    QCOMPARE(run.reasons["device.list.pcsc"], QString("2 devices"));
}

void TestPcscDriverChecked::withoutTheDaemon()
{
    if (m_daemon->isOurs())
        m_daemon->stop();
    else
        qputenv("PCSCLITE_CSOCK_NAME", "/nonexistent/pcscd.comm");
    const CheckRun run = checkDriver({});
    QVERIFY2(run.exitCode == 0, qPrintable(run.failures()));
    QCOMPARE(run.verdicts["call.vek_icc_poweron"], QString("not applicable"));
    QCOMPARE(run.reasons["device.list.pcsc"], QString("no device"));
}

QTEST_GUILESS_MAIN(TestPcscDriverChecked)
#include "test_pcsc_driver_checked.moc"
