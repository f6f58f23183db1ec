// What can happen to a reader and its card while the driver uses them, each for real: the code it gives, how soon, and
// that the next call works once the cause is gone.
#include "tests/pcsc/driver_session.h"
#include "tests/pcsc/pcsc_daemon.h"
#include "tests/support/vpcd_card.h"

#include <QtTest>

#include <functional>

#include <winscard.h>

using namespace testsupport;
using namespace drivers;

namespace {

const Bytes kAtr = {0x3B, 0x95, 0x13, 0x81, 0x01, 0x80, 0x73, 0xFF, 0x01, 0x00, 0x0B};
const Bytes kOtherAtr = {0x3B, 0x02, 0x14, 0x50};

Bytes answerAll(const Bytes &)
{
    return {0x90, 0x00};
}

std::unique_ptr<VpcdCard> insertCard(const Bytes &atr = kAtr)
{
    return std::make_unique<VpcdCard>(atr, answerAll);
}

// Another program with the card, through PC/SC itself.
class OtherProgram {
public:
    explicit OtherProgram(DWORD share)
    {
        DWORD protocol = 0;
        if (SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context) == SCARD_S_SUCCESS)
            connected =
                SCardConnect(m_context, kReader0, share, SCARD_PROTOCOL_ANY, &card, &protocol) == SCARD_S_SUCCESS;
    }
    ~OtherProgram()
    {
        SCardDisconnect(card, SCARD_LEAVE_CARD);
        SCardReleaseContext(m_context);
    }
    OtherProgram(const OtherProgram &) = delete;
    OtherProgram &operator=(const OtherProgram &) = delete;

    bool connected = false;
    SCARDHANDLE card = 0;

private:
    SCARDCONTEXT m_context = 0;
};

} // namespace

class TestPcscFaults : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cardPulledOut();
    void cardPulledOutDuringACommand();
    void cardExchangedInAMoment();
    void cardThatStaysSilent();
    void cardHeldExclusively();
    void cardInAnothersTransaction();
    void powerInAnothersTransaction();
    void shortTransactionIsWaitedFor();
    void cardResetByAnother();
    void daemonStoppedAndRestarted();
    void daemonRestartedUnnoticed();
    void readerGone();
    void daemonStoppedDuringAWait();
    void daemonStoppedDuringACommand();
    void closedDuringAWait();
    void unloadedWithAnOpenDevice();

private:
    bool mayStopDaemon() const;

    std::unique_ptr<PcscDaemon> m_daemon;
    std::unique_ptr<DriverApi> m_api;
};

void TestPcscFaults::initTestCase()
{
    m_daemon = std::make_unique<PcscDaemon>();
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
    m_api = std::make_unique<DriverApi>("libtarvozent.so");
}

// Skips the running test if not.
bool TestPcscFaults::mayStopDaemon() const
{
    if (!m_daemon->isOurs())
        QTest::qSkip("the running pcscd was not started by this test, which therefore may not stop it", __FILE__,
                     __LINE__);
    return m_daemon->isOurs();
}

void TestPcscFaults::init()
{
    DriverSession session(*m_api, kReader0);
    QTRY_COMPARE(session.status(), int(kCardAbsent));
    // pcscd takes a slot for empty as soon as it fails to power a card, but sees the next card come only if it has
    // looked at the empty slot in between, which it does every 400 ms.
    QTest::qWait(600);
}

void TestPcscFaults::cardPulledOut()
{
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    card.reset();
    QElapsedTimer timer;
    timer.start();
    const Answer answer = session.apdu("00A40000");
    QCOMPARE(answer.code, int(kCardRemoved));
    QVERIFY(answer.untouched);
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(session.apdu("00A40000").code, int(kNoCard));
    QCOMPARE(session.status(), int(kCardAbsent));

    card = insertCard(kOtherAtr);
    QCOMPARE(session.powerOn().text, QByteArray("3B021450"));
    QCOMPARE(session.apdu("00A40000").text, QByteArray("9000"));
}

void TestPcscFaults::cardPulledOutDuringACommand()
{
    std::atomic<bool> asked{false};
    std::atomic<bool> pulled{false};
    const auto respond = [&](const Bytes &) {
        asked = true;
        while (!pulled)
            std::this_thread::yield();
        return Bytes{0x90, 0x00};
    };
    auto card = std::make_unique<VpcdCard>(kAtr, respond);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    std::thread hand([&] {
        while (!asked)
            std::this_thread::yield();
        std::thread release([&] {
            QThread::msleep(100);
            pulled = true;
        });
        card.reset();
        release.join();
    });
    const Answer answer = session.apdu("00A40000");
    hand.join();
    QCOMPARE(answer.code, int(kCardRemoved));
    card = insertCard();
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

void TestPcscFaults::cardExchangedInAMoment()
{
    auto card = insertCard();
    {
        DriverSession before(*m_api, kReader0);
        QCOMPARE(before.powerOn().code, int(kSuccess));
    }
    card.reset();
    card = insertCard(kOtherAtr);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().text, QByteArray("3B021450"));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

void TestPcscFaults::cardThatStaysSilent()
{
    // No answer to reset that could be understood.
    auto card = insertCard({0x00, 0x00});
    DriverSession session(*m_api, kReader0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(session.powerOn(4000).code, int(kTransportFailure));
    QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
    card.reset();
    card = insertCard();
    QCOMPARE(session.powerOn().code, int(kSuccess));
}

void TestPcscFaults::cardHeldExclusively()
{
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QTRY_COMPARE(session.status(), int(kCardPresent));
    {
        OtherProgram other(SCARD_SHARE_EXCLUSIVE);
        QVERIFY(other.connected);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(session.powerOn(2000).code, int(kCardBusy));
        QVERIFY(timer.elapsed() < 2000);
        QCOMPARE(session.status(), int(kCardPresent));
        QCOMPARE(session.apdu("00A40000").code, int(kNotPowered));
    }
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

void TestPcscFaults::cardInAnothersTransaction()
{
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    {
        OtherProgram other(SCARD_SHARE_SHARED);
        QVERIFY(other.connected);
        QCOMPARE(SCardBeginTransaction(other.card), LONG{SCARD_S_SUCCESS});
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(session.apdu("00A40000").code, int(kCardBusy));
        QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(SCardEndTransaction(other.card, SCARD_LEAVE_CARD), LONG{SCARD_S_SUCCESS});
        QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
    }
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

// The driver may not cut the power then, but neither may it lose its hold of the card.
void TestPcscFaults::powerInAnothersTransaction()
{
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    {
        OtherProgram other(SCARD_SHARE_SHARED);
        QVERIFY(other.connected);
        QCOMPARE(SCardBeginTransaction(other.card), LONG{SCARD_S_SUCCESS});
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(session.powerOff(), int(kCardBusy));
        QCOMPARE(session.status(), int(kCardPowered));
        QCOMPARE(session.powerOn(500).code, int(kCardBusy));
        QCOMPARE(session.status(), int(kCardPowered));
        QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(SCardEndTransaction(other.card, SCARD_LEAVE_CARD), LONG{SCARD_S_SUCCESS});
        QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
        QCOMPARE(session.powerOff(), int(kSuccess));
    }
    // Nothing of the driver's is left that holds the card.
    const OtherProgram other(SCARD_SHARE_EXCLUSIVE);
    QVERIFY(other.connected);
}

void TestPcscFaults::shortTransactionIsWaitedFor()
{
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QTRY_COMPARE(session.status(), int(kCardPresent));
    OtherProgram other(SCARD_SHARE_SHARED);
    QVERIFY(other.connected);
    const auto during = [&](const std::function<int()> &call) {
        if (SCardBeginTransaction(other.card) != SCARD_S_SUCCESS)
            return int(kTransportFailure);
        std::thread end([&] {
            QThread::msleep(200);
            SCardEndTransaction(other.card, SCARD_LEAVE_CARD);
        });
        const int code = call();
        end.join();
        return code;
    };
    QCOMPARE(during([&] { return session.powerOn().code; }), int(kSuccess));
    QCOMPARE(during([&] { return session.apdu("00A40000").code; }), int(kSuccess));
    QCOMPARE(during([&] { return session.powerOff(); }), int(kSuccess));
    QCOMPARE(session.status(), int(kCardPresent));
}

void TestPcscFaults::cardResetByAnother()
{
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    {
        OtherProgram other(SCARD_SHARE_SHARED);
        QVERIFY(other.connected);
        DWORD protocol = 0;
        QCOMPARE(SCardReconnect(other.card, SCARD_SHARE_SHARED, SCARD_PROTOCOL_ANY, SCARD_RESET_CARD, &protocol),
                 LONG{SCARD_S_SUCCESS});
        QCOMPARE(session.apdu("00A40000").code, int(kNotPowered));
        QCOMPARE(session.status(), int(kCardPresent));
    }
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

void TestPcscFaults::daemonStoppedAndRestarted()
{
    if (!mayStopDaemon())
        return;
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    m_daemon->stop();

    QElapsedTimer timer;
    timer.start();
    QCOMPARE(session.apdu("00A40000").code, int(kReaderGone));
    QCOMPARE(session.apdu("00A40000").code, int(kReaderGone));
    QCOMPARE(session.status(), int(kReaderGone));
    QCOMPARE(session.powerOn(1000).code, int(kReaderGone));
    QCOMPARE(session.powerOff(), int(kReaderGone));
    std::uint8_t state = 0;
    std::uint8_t type = 0;
    QCOMPARE(m_api->vek_probe_rf(session.handle, &state, &type), int(kReaderGone));
    char *list = nullptr;
    QCOMPARE(m_api->vek_enum_devices(sdk::kTransportPcsc, &list), 0);
    QVERIFY(list == nullptr);
    QCOMPARE(m_api->vek_open(kReader0, 0, 0), std::intptr_t(0));
    QCOMPARE(m_api->vek_open(nullptr, 0, 0), std::intptr_t(0));
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));

    QVERIFY2(m_daemon->start(), qPrintable(m_daemon->problem()));
    QCOMPARE(session.status(), int(kCardAbsent));
    card.reset();
    card = insertCard();
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

void TestPcscFaults::daemonRestartedUnnoticed()
{
    if (!mayStopDaemon())
        return;
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    DriverSession idle(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(idle.powerOn().code, int(kSuccess));
    m_daemon->stop();
    QVERIFY2(m_daemon->start(), qPrintable(m_daemon->problem()));
    card.reset();
    card = insertCard();
    QTRY_COMPARE(idle.status(), int(kCardPresent));
    QCOMPARE(session.apdu("00A40000").code, int(kReaderGone));
    QCOMPARE(session.apdu("00A40000").code, int(kNotPowered));
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(idle.powerOn().code, int(kSuccess));
    QCOMPARE(idle.apdu("00A40000").code, int(kSuccess));
}

// The daemon runs and knows another reader, but this one no more.
void TestPcscFaults::readerGone()
{
    if (!mayStopDaemon())
        return;
    auto card = insertCard();
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    m_daemon->stop();
    QVERIFY2(m_daemon->startWithOtherReader(), qPrintable(m_daemon->problem()));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(session.apdu("00A40000").code, int(kReaderGone));
    QCOMPARE(session.apdu("00A40000").code, int(kReaderGone));
    QCOMPARE(session.status(), int(kReaderGone));
    QCOMPARE(session.powerOn(1000).code, int(kReaderGone));
    QCOMPARE(session.powerOff(), int(kReaderGone));
    std::uint8_t state = 9;
    std::uint8_t type = 9;
    QCOMPARE(m_api->vek_probe_rf(session.handle, &state, &type), int(kReaderGone));
    QCOMPARE(int(state), 9);
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_api->vek_open(kReader0, 0, 0), std::intptr_t(0));
    const DriverSession other(*m_api, nullptr);
    QCOMPARE(other.status(), int(kCardAbsent));
    char *list = nullptr;
    QCOMPARE(m_api->vek_enum_devices(sdk::kTransportPcsc, &list), 2);
    QCOMPARE(QByteArray(list), QByteArray("Other PCD 00 00|Other PCD 00 01|"));
    m_api->vek_free_list(list);

    m_daemon->stop();
    QVERIFY2(m_daemon->start(), qPrintable(m_daemon->problem()));
    card = insertCard();
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
    QCOMPARE(other.status(), int(kReaderGone));
}

void TestPcscFaults::daemonStoppedDuringAWait()
{
    if (!mayStopDaemon())
        return;
    std::unique_ptr<VpcdCard> card;
    DriverSession session(*m_api, kReader0);
    Answer answer;
    qint64 elapsed = 0;
    std::thread waiting([&] {
        QElapsedTimer timer;
        timer.start();
        answer = session.powerOn(20000);
        elapsed = timer.elapsed();
    });
    QThread::msleep(500);
    m_daemon->stop();
    waiting.join();
    QCOMPARE(answer.code, int(kReaderGone));
    QVERIFY2(elapsed >= 450 && elapsed < 8000, qPrintable(QString::number(elapsed)));
    QVERIFY2(m_daemon->start(), qPrintable(m_daemon->problem()));
    card = insertCard();
    QCOMPARE(session.powerOn().code, int(kSuccess));
}

void TestPcscFaults::daemonStoppedDuringACommand()
{
    if (!mayStopDaemon())
        return;
    std::atomic<bool> asked{false};
    std::atomic<bool> stopped{false};
    const auto respond = [&](const Bytes &) {
        asked = true;
        while (!stopped)
            std::this_thread::yield();
        return Bytes{0x90, 0x00};
    };
    auto card = std::make_unique<VpcdCard>(kAtr, respond);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    Answer answer;
    std::thread waiting([&] { answer = session.apdu("00A40000"); });
    QTRY_VERIFY(asked);
    m_daemon->stop();
    stopped = true;
    waiting.join();
    QCOMPARE(answer.code, int(kReaderGone));
    QVERIFY2(m_daemon->start(), qPrintable(m_daemon->problem()));
    card.reset();
    card = insertCard();
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
}

void TestPcscFaults::closedDuringAWait()
{
    const std::intptr_t handle = m_api->vek_open(kReader0, 0, 0);
    QVERIFY(handle != 0);
    int code = 0;
    std::thread waiting([&] {
        char atr[sdk::kAtrSize] = {};
        std::uint32_t length = 0;
        code = m_api->vek_icc_poweron(handle, sdk::kSlotContact, 20000, atr, &length);
    });
    QThread::msleep(300);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(m_api->vek_close(handle, 0), int(kSuccess));
    QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_api->vek_icc_status(handle, sdk::kSlotContact), int(kBadHandle));
    waiting.join();
    QCOMPARE(code, int(kBadHandle));
}

void TestPcscFaults::unloadedWithAnOpenDevice()
{
    const auto card = insertCard();
    auto api = std::make_unique<DriverApi>("libtarvozent.so");
    const std::intptr_t handle = api->vek_open(kReader0, 0, 0);
    char atr[sdk::kAtrSize] = {};
    std::uint32_t length = 0;
    QCOMPARE(api->vek_icc_poweron(handle, sdk::kSlotContact, 4000, atr, &length), int(kSuccess));
    // Both references go, so that the library does.
    api.reset();
    m_api.reset();
    QVERIFY2(dlopen("libtarvozent.so", RTLD_NOW | RTLD_NOLOAD) == nullptr, "the library stays in memory");

    m_api = std::make_unique<DriverApi>("libtarvozent.so");
    QCOMPARE(m_api->vek_icc_status(handle, sdk::kSlotContact), int(kBadHandle));
    QCOMPARE(m_api->vek_close(handle, 0), int(kBadHandle));
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
}

QTEST_GUILESS_MAIN(TestPcscFaults)
#include "test_pcsc_faults.moc"
