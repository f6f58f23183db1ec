// PC/SC's codes in our terms, whichever way the 32 bits were widened.
#include "drivers/pcsc/scard_codes.h"

#include <QtTest>

using namespace drivers;

class TestScardCodes : public QObject {
    Q_OBJECT

private slots:
    void translates_data();
    void translates();
    void knowsALostService();
};

void TestScardCodes::translates_data()
{
    QTest::addColumn<qint64>("scard");
    QTest::addColumn<int>("code");
    const auto row = [](const char *name, LONG scard, ReturnCode code) {
        QTest::newRow(name) << qint64(scard) << int(code);
    };
    row("success", SCARD_S_SUCCESS, kSuccess);
    row("parameter", SCARD_E_INVALID_PARAMETER, kBadArgument);
    row("no card", SCARD_E_NO_SMARTCARD, kNoCard);
    row("removed", SCARD_W_REMOVED_CARD, kCardRemoved);
    row("time-out", SCARD_E_TIMEOUT, kTimeout);
    row("unknown reader", SCARD_E_UNKNOWN_READER, kReaderGone);
    row("reader unavailable", SCARD_E_READER_UNAVAILABLE, kReaderGone);
    row("no readers", SCARD_E_NO_READERS_AVAILABLE, kReaderGone);
    row("no service", SCARD_E_NO_SERVICE, kReaderGone);
    row("service stopped", SCARD_E_SERVICE_STOPPED, kReaderGone);
    row("shutdown", SCARD_P_SHUTDOWN, kReaderGone);
    row("dead handle", SCARD_E_INVALID_HANDLE, kReaderGone);
    row("buffer", SCARD_E_INSUFFICIENT_BUFFER, kBufferTooSmall);
    row("sharing", SCARD_E_SHARING_VIOLATION, kCardBusy);
    row("reset", SCARD_W_RESET_CARD, kNotPowered);
    row("unpowered", SCARD_W_UNPOWERED_CARD, kNotPowered);
    row("unresponsive", SCARD_W_UNRESPONSIVE_CARD, kTransportFailure);
    row("not transacted", SCARD_E_NOT_TRANSACTED, kTransportFailure);
    row("communication", SCARD_F_COMM_ERROR, kTransportFailure);
    row("unexpected", SCARD_E_UNEXPECTED, kTransportFailure);
    row("not a PC/SC code", 12345, kTransportFailure);
}

void TestScardCodes::translates()
{
    QFETCH(qint64, scard);
    QFETCH(int, code);
    QCOMPARE(int(returnCodeOf(static_cast<LONG>(scard))), code);
    QCOMPARE(int(returnCodeOf(static_cast<std::int32_t>(scard))), code);
    QCOMPARE(int(returnCodeOf(static_cast<LONG>(static_cast<std::uint32_t>(scard)))), code);
}

void TestScardCodes::knowsALostService()
{
    for (const LONG lost : {SCARD_E_NO_SERVICE, SCARD_E_SERVICE_STOPPED, SCARD_E_INVALID_HANDLE, SCARD_F_COMM_ERROR}) {
        QVERIFY(isServiceLost(lost));
        QVERIFY(isServiceLost(static_cast<std::int32_t>(lost)));
    }
    for (const LONG other : {SCARD_S_SUCCESS, SCARD_E_TIMEOUT, SCARD_E_UNKNOWN_READER, SCARD_W_REMOVED_CARD})
        QVERIFY(!isServiceLost(other));
}

QTEST_APPLESS_MAIN(TestScardCodes)
#include "test_scard_codes.moc"
