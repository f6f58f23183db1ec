// The PC/SC driver library through its C interface, with a card in the virtual reader of the real daemon.
#include "tests/pcsc/driver_session.h"
#include "tests/pcsc/pcsc_daemon.h"
#include "tests/support/vpcd_card.h"

#include <QtTest>

#include <mutex>

using namespace testsupport;
using namespace drivers;

namespace {

// T=1 with historical bytes, and T=0.
const Bytes kAtrT1 = {0x3B, 0x95, 0x13, 0x81, 0x01, 0x80, 0x73, 0xFF, 0x01, 0x00, 0x0B};
const Bytes kAtrT0 = {0x3B, 0x02, 0x14, 0x50};
// The one that a reader makes up for a contactless storage card of 1 KiB.
const Bytes kAtrStorage = {0x3B, 0x8F, 0x80, 0x01, 0x80, 0x4F, 0x0C, 0xA0, 0x00, 0x00,
                           0x03, 0x06, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x6A};

// A card that keeps what it was sent and answers as the test says.
class RecordingCard {
public:
    explicit RecordingCard(VpcdCard::Respond respond) : m_respond(std::move(respond)) {}

    Bytes operator()(const Bytes &command)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_commands << QByteArray::fromStdString(toHex(command));
        return m_respond(command);
    }

    QList<QByteArray> takeCommands()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_commands, {});
    }

private:
    std::mutex m_mutex;
    VpcdCard::Respond m_respond;
    QList<QByteArray> m_commands;
};

Bytes answerAll(const Bytes &)
{
    return {0x6F, 0x00, 0x90, 0x00};
}

// `size` counting bytes and 9000.
Bytes countingReply(std::size_t size)
{
    Bytes reply;
    for (std::size_t i = 0; i < size; ++i)
        reply.push_back(static_cast<std::uint8_t>(i));
    reply.insert(reply.end(), {0x90, 0x00});
    return reply;
}

} // namespace

class TestPcscDriver : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void listsReadersOfItsTransportOnly();
    void opensByNameAndRefusesOthers();
    void opensTheReaderWithACardByDefault();
    void powersOnAndGivesTheAtr();
    void powerOnWaitsForACard();
    void powerOnTimesOut();
    void statusFollowsTheCard();
    void everySlotCodeAddressesTheReader();
    void exchangesEveryCase_data();
    void exchangesEveryCase();
    void completesT0_data();
    void completesT0();
    void mergesALongT0Reply();
    void passesT1StatusThrough();
    void repliesUpToTheBuffer();
    void refusesBadCommands();
    void apduNeedsAPoweredCard();
    void probeTellsComingStayingLeaving();
    void probeKnowsStorageCards();
    void tellsVersions();
    void twoReadersAtOnce();

private:
    std::unique_ptr<PcscDaemon> m_daemon;
    std::unique_ptr<DriverApi> m_api;
};

void TestPcscDriver::initTestCase()
{
    m_daemon = std::make_unique<PcscDaemon>();
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
    m_api = std::make_unique<DriverApi>("libtarvozent.so");
}

// The card of the test before is pulled, but pcscd has not noticed yet.
void TestPcscDriver::init()
{
    for (const char *reader : {kReader0, kReader1}) {
        DriverSession session(*m_api, reader);
        QTRY_COMPARE(session.status(), int(kCardAbsent));
    }
}

void TestPcscDriver::listsReadersOfItsTransportOnly()
{
    char *list = nullptr;
    const int count = m_api->vek_enum_devices(sdk::kTransportPcsc, &list);
    const QByteArray text(list);
    m_api->vek_free_list(list);
    QVERIFY(count >= 2);
    QCOMPARE(text.count('|'), count);
    QVERIFY(text.endsWith('|'));
    QVERIFY(text.split('|').contains(kReader0));
    QVERIFY(text.split('|').contains(kReader1));

    for (const int transport : {sdk::kTransportUsb, sdk::kTransportSerial, sdk::kTransportSdt, 0, -1, 99}) {
        char *other = nullptr;
        QCOMPARE(m_api->vek_enum_devices(transport, &other), 0);
        QVERIFY(other == nullptr);
    }
    QCOMPARE(m_api->vek_enum_devices(sdk::kTransportPcsc, nullptr), 0);
    m_api->vek_free_list(nullptr);
}

void TestPcscDriver::opensByNameAndRefusesOthers()
{
    for (const char *unknown : {"", "Virtual PCD", "virtual pcd 00 00", "Virtual PCD 00 00|", "COM1"})
        QCOMPARE(m_api->vek_open(unknown, 0, 9600), std::intptr_t(0));
    const std::intptr_t first = m_api->vek_open(kReader0, 0, 9600);
    const std::intptr_t second = m_api->vek_open(kReader0, 0, 0);
    QVERIFY(first != 0);
    QVERIFY(second != 0);
    QVERIFY(first != second);
    QCOMPARE(m_api->vek_close(first, 0), int(kSuccess));
    QCOMPARE(m_api->vek_icc_status(second, sdk::kSlotContact), int(kCardAbsent));
    QCOMPARE(m_api->vek_close(second, 0), int(kSuccess));
    QCOMPARE(m_api->vek_close(second, 0), int(kBadHandle));
}

void TestPcscDriver::opensTheReaderWithACardByDefault()
{
    {
        DriverSession session(*m_api, nullptr);
        QVERIFY(session.handle != 0);
    }
    VpcdCard card(kAtrT1, answerAll, kVpcdPort1);
    {
        DriverSession waiting(*m_api, kReader1);
        QTRY_COMPARE(waiting.status(), int(kCardPresent));
    }
    DriverSession session(*m_api, nullptr);
    QCOMPARE(session.status(), int(kCardPresent));
    QCOMPARE(session.powerOn().text, QByteArray("3B951381018073FF01000B"));
}

void TestPcscDriver::powersOnAndGivesTheAtr()
{
    VpcdCard card(kAtrT1, answerAll);
    DriverSession session(*m_api, kReader0);
    const Answer first = session.powerOn();
    QCOMPARE(first.code, int(kSuccess));
    QCOMPARE(first.text, QByteArray("3B951381018073FF01000B"));
    QCOMPARE(first.length, 22U);
    QVERIFY(!first.overrun);

    const int resets = card.resets();
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QVERIFY2(card.resets() > resets, "a second power-on resets the card");
}

void TestPcscDriver::powerOnWaitsForACard()
{
    DriverSession session(*m_api, kReader0);
    std::unique_ptr<VpcdCard> card;
    std::thread hand([&] {
        QThread::msleep(700);
        card = std::make_unique<VpcdCard>(kAtrT0, answerAll);
    });
    QElapsedTimer timer;
    timer.start();
    const Answer answer = session.powerOn(10000);
    const qint64 elapsed = timer.elapsed();
    hand.join();
    QCOMPARE(answer.code, int(kSuccess));
    QCOMPARE(answer.text, QByteArray("3B021450"));
    QVERIFY2(elapsed >= 650 && elapsed < 5000, qPrintable(QString::number(elapsed)));
}

void TestPcscDriver::powerOnTimesOut()
{
    DriverSession session(*m_api, kReader0);
    QElapsedTimer timer;
    timer.start();
    const Answer answer = session.powerOn(800);
    QVERIFY2(timer.elapsed() >= 790 && timer.elapsed() < 2500, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(answer.code, int(kTimeout));
    QVERIFY(answer.untouched);
    timer.restart();
    QCOMPARE(session.powerOn(0).code, int(kTimeout));
    QVERIFY(timer.elapsed() < 2000);
}

void TestPcscDriver::statusFollowsTheCard()
{
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOff(), int(kNoCard));
    {
        VpcdCard card(kAtrT1, answerAll);
        QTRY_COMPARE(session.status(), int(kCardPresent));
        QCOMPARE(session.powerOff(), int(kSuccess));
        QCOMPARE(session.powerOn().code, int(kSuccess));
        QCOMPARE(session.status(), int(kCardPowered));
        const int powerOffs = card.powerOffs();
        QCOMPARE(session.powerOff(), int(kSuccess));
        QTRY_VERIFY(card.powerOffs() > powerOffs);
        QCOMPARE(session.status(), int(kCardPresent));
    }
    QTRY_COMPARE(session.status(), int(kCardAbsent));
}

void TestPcscDriver::everySlotCodeAddressesTheReader()
{
    VpcdCard card(kAtrT1, answerAll);
    DriverSession session(*m_api, kReader0);
    for (const int slot : {0x00, 0x02, 0x10, 0x11, 0x12, 0x13, 0xFF}) {
        const auto code = static_cast<std::uint8_t>(slot);
        QCOMPARE(session.powerOn(4000, code).code, int(kSuccess));
        QCOMPARE(session.apdu("00A40000", code).text, QByteArray("6F009000"));
        QCOMPARE(m_api->vek_icc_status(session.handle, code), int(kCardPowered));
    }
    QCOMPARE(session.powerOn(0, 0x03).code, int(kBadArgument));
    QCOMPARE(session.apdu("00A40000", 0x14).code, int(kBadArgument));
    QCOMPARE(m_api->vek_icc_status(session.handle, 0x01), int(kBadArgument));
    QCOMPARE(m_api->vek_icc_poweroff(session.handle, 0x7F, 0), int(kBadArgument));
}

void TestPcscDriver::exchangesEveryCase_data()
{
    QTest::addColumn<bool>("t0");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("seen");
    const QByteArray data300 = QByteArray("5A").repeated(300);
    const QByteArray extended3 = "00DB0000" + QByteArray("00012C") + data300;

    QTest::newRow("T=1 case 1") << false << QByteArray("00A40000") << QByteArray("00A40000");
    QTest::newRow("T=1 case 2S") << false << QByteArray("00B0000010") << QByteArray("00B0000010");
    QTest::newRow("T=1 case 3S") << false << QByteArray("00a4040002abcd") << QByteArray("00A4040002ABCD");
    QTest::newRow("T=1 case 4S") << false << QByteArray("00A4040002ABCD00") << QByteArray("00A4040002ABCD00");
    QTest::newRow("T=1 case 2E") << false << QByteArray("00B00000000200") << QByteArray("00B00000000200");
    QTest::newRow("T=1 case 3E") << false << extended3 << extended3;
    QTest::newRow("T=1 case 4E") << false << extended3 + "0000" << extended3 + "0000";
    QTest::newRow("T=1 no known case") << false << QByteArray("00A4040005AB") << QByteArray("00A4040005AB");
    QTest::newRow("T=0 case 1") << true << QByteArray("00A40000") << QByteArray("00A4000000");
    QTest::newRow("T=0 case 2S") << true << QByteArray("00B0000010") << QByteArray("00B0000010");
    QTest::newRow("T=0 case 3S") << true << QByteArray("00A4040002ABCD") << QByteArray("00A4040002ABCD");
    QTest::newRow("T=0 case 4S") << true << QByteArray("00A4040002ABCD00") << QByteArray("00A4040002ABCD");
    QTest::newRow("T=0 case 2E") << true << QByteArray("00B00000000010") << QByteArray("00B0000010");
    QTest::newRow("T=0 case 4E") << true << QByteArray("00A40400000002ABCD0000") << QByteArray("00A4040002ABCD");
}

void TestPcscDriver::exchangesEveryCase()
{
    QFETCH(bool, t0);
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, seen);
    RecordingCard recorder(answerAll);
    VpcdCard card(t0 ? kAtrT0 : kAtrT1, std::ref(recorder));
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    recorder.takeCommands();
    const Answer answer = session.apdu(command);
    QCOMPARE(answer.code, int(kSuccess));
    QCOMPARE(answer.text, QByteArray("6F009000"));
    QCOMPARE(answer.length, 8U);
    QCOMPARE(recorder.takeCommands(), QList<QByteArray>{seen});
}

void TestPcscDriver::completesT0_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QList<QByteArray>>("seen");
    QTest::newRow("61 after case 4, own class") << QByteArray("80A4040001AA00") << QByteArray("010203049000")
                                                << QList<QByteArray>{"80A4040001AA", "80C0000004"};
    QTest::newRow("61 after case 3") << QByteArray("80A4040001AA") << QByteArray("010203049000")
                                     << QList<QByteArray>{"80A4040001AA", "80C0000004"};
    QTest::newRow("6C") << QByteArray("00B0000000") << QByteArray("0A0B0C9000")
                        << QList<QByteArray>{"00B0000000", "00B0000003"};
    QTest::newRow("plain status") << QByteArray("00FF0000") << QByteArray("6D00") << QList<QByteArray>{"00FF000000"};
}

void TestPcscDriver::completesT0()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, reply);
    QFETCH(QList<QByteArray>, seen);
    ScriptedReplies script;
    script.add("80A4040001AA", "6104");
    script.add("80C0000004", "010203049000");
    script.add("00B0000000", "6C03");
    script.add("00B0000003", "0A0B0C9000");
    RecordingCard recorder(script);
    VpcdCard card(kAtrT0, std::ref(recorder));
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    recorder.takeCommands();
    const Answer answer = session.apdu(command);
    QCOMPARE(answer.code, int(kSuccess));
    QCOMPARE(answer.text, reply);
    QCOMPARE(recorder.takeCommands(), seen);
}

void TestPcscDriver::mergesALongT0Reply()
{
    // 400 bytes: 256, told as 6100, and 144, told as 6190.
    const Bytes whole = countingReply(400);
    ScriptedReplies script;
    script.add("00A4040001AA", "6100");
    script.add("00C0000000", toHex(Bytes(whole.begin(), whole.begin() + 256)) + "6190");
    script.add("00C0000090", toHex(Bytes(whole.begin() + 256, whole.end())));
    VpcdCard card(kAtrT0, script);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    const Answer answer = session.apdu("00A4040001AA00");
    QCOMPARE(answer.code, int(kSuccess));
    QCOMPARE(answer.text, QByteArray::fromStdString(toHex(whole)));
    QCOMPARE(answer.length, 804U);
    QVERIFY(!answer.overrun);
}

void TestPcscDriver::passesT1StatusThrough()
{
    ScriptedReplies script;
    script.add("00A4*", "6104");
    script.add("00B0*", "6C03");
    VpcdCard card(kAtrT1, script);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A4040001AA00").text, QByteArray("6104"));
    QCOMPARE(session.apdu("00B0000000").text, QByteArray("6C03"));
}

void TestPcscDriver::repliesUpToTheBuffer()
{
    // P1 P2 is the number of data bytes.
    const auto respond = [](const Bytes &command) { return countingReply(std::size_t{command[2]} * 256 + command[3]); };
    VpcdCard card(kAtrT1, respond);
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));

    const Answer fits = session.apdu("00B001FD0000000000");
    QCOMPARE(fits.code, int(kSuccess));
    QCOMPARE(fits.length, 1022U);
    QCOMPARE(fits.text, QByteArray::fromStdString(toHex(countingReply(509))));
    QVERIFY(!fits.overrun);

    for (const char *command : {"00B001FE0000000000", "00B020000000000000"}) {
        const Answer tooLong = session.apdu(command);
        QCOMPARE(tooLong.code, int(kBufferTooSmall));
        QVERIFY(tooLong.untouched);
        QCOMPARE(tooLong.length, 0U);
    }
    QCOMPARE(session.apdu("00B00000").text, QByteArray("9000"));
}

void TestPcscDriver::refusesBadCommands()
{
    RecordingCard recorder(answerAll);
    VpcdCard card(kAtrT1, std::ref(recorder));
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    recorder.takeCommands();
    for (const char *bad : {"", "0", "00", "00A404", "00A4000", "00A4 000", "00A4000G", "0x00A400"}) {
        const Answer answer = session.apdu(bad);
        QVERIFY2(answer.code == kBadArgument, bad);
        QVERIFY(answer.untouched);
    }
    GuardedBuffer<sdk::kApduReplySize> reply;
    std::uint32_t length = 0;
    // A length that runs past the text's end, and a text longer than the length.
    QCOMPARE(m_api->vek_icc_apdu(session.handle, 0, "00A40000", 0xFFFFFFFFU, reply.data(), &length), int(kBadArgument));
    QCOMPARE(m_api->vek_icc_apdu(session.handle, 0, nullptr, 8, reply.data(), &length), int(kBadArgument));
    QCOMPARE(m_api->vek_icc_apdu(session.handle, 0, "00A40000", 8, nullptr, &length), int(kBadArgument));
    QCOMPARE(m_api->vek_icc_apdu(session.handle, 0, "00A40000", 8, reply.data(), nullptr), int(kBadArgument));
    QVERIFY(reply.untouched());
    QVERIFY(recorder.takeCommands().isEmpty());
    QCOMPARE(m_api->vek_icc_apdu(session.handle, 0, "00A40000zz", 8, reply.data(), &length), int(kSuccess));
    QCOMPARE(recorder.takeCommands(), QList<QByteArray>{"00A40000"});

    char atr[sdk::kAtrSize] = {};
    QCOMPARE(m_api->vek_icc_poweron(session.handle, 0, 0, nullptr, &length), int(kBadArgument));
    QCOMPARE(m_api->vek_icc_poweron(session.handle, 0, 0, atr, nullptr), int(kBadArgument));
    std::uint8_t byte = 0;
    QCOMPARE(m_api->vek_probe_rf(session.handle, nullptr, &byte), int(kBadArgument));
    QCOMPARE(m_api->vek_probe_rf(session.handle, &byte, nullptr), int(kBadArgument));
}

void TestPcscDriver::apduNeedsAPoweredCard()
{
    DriverSession session(*m_api, kReader0);
    QCOMPARE(session.apdu("00A40000").code, int(kNoCard));
    VpcdCard card(kAtrT1, answerAll);
    QTRY_COMPARE(session.status(), int(kCardPresent));
    QCOMPARE(session.apdu("00A40000").code, int(kNotPowered));
    QCOMPARE(session.powerOn().code, int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kSuccess));
    QCOMPARE(session.powerOff(), int(kSuccess));
    QCOMPARE(session.apdu("00A40000").code, int(kNotPowered));
}

void TestPcscDriver::probeTellsComingStayingLeaving()
{
    DriverSession session(*m_api, kReader0);
    std::uint8_t state = 9;
    std::uint8_t type = 9;
    const auto probe = [&] {
        const int code = m_api->vek_probe_rf(session.handle, &state, &type);
        return code == kSuccess ? int(state) : code;
    };
    QCOMPARE(probe(), 0);
    QCOMPARE(int(type), 0);
    {
        VpcdCard card(kAtrT1, answerAll);
        QTRY_COMPARE(session.status(), int(kCardPresent));
        QCOMPARE(probe(), 3);
        QCOMPARE(int(type), 1);
        QCOMPARE(probe(), 1);
        QCOMPARE(session.powerOn().code, int(kSuccess));
        QCOMPARE(probe(), 1);
    }
    QTRY_COMPARE(session.status(), int(kCardAbsent));
    QCOMPARE(probe(), 2);
    QCOMPARE(int(type), 0);
    QCOMPARE(probe(), 0);

    // Exchanged between two calls.
    auto card = std::make_unique<VpcdCard>(kAtrT1, answerAll);
    QTRY_COMPARE(session.status(), int(kCardPresent));
    QCOMPARE(probe(), 3);
    card.reset();
    QTRY_COMPARE(session.status(), int(kCardAbsent));
    card = std::make_unique<VpcdCard>(kAtrT0, answerAll);
    QTRY_COMPARE(session.status(), int(kCardPresent));
    QCOMPARE(probe(), 3);
}

void TestPcscDriver::probeKnowsStorageCards()
{
    VpcdCard card(kAtrStorage, answerAll);
    DriverSession session(*m_api, kReader0);
    QTRY_COMPARE(session.status(), int(kCardPresent));
    QCOMPARE(session.powerOn().code, int(kSuccess));
    std::uint8_t state = 0;
    std::uint8_t type = 0;
    QCOMPARE(m_api->vek_probe_rf(session.handle, &state, &type), int(kSuccess));
    QCOMPARE(int(state), 3);
    QCOMPARE(int(type), 2);
}

void TestPcscDriver::tellsVersions()
{
    DriverSession session(*m_api, kReader0);
    GuardedBuffer<sdk::kFirmVersionSize> version;
    std::uint32_t length = 0;
    QCOMPARE(m_api->vek_firm_version(session.handle, version.data(), &length), int(kSuccess));
    const QRegularExpression form(QStringLiteral("^pcsc-lite \\d+\\.\\d+\\.\\d+, tarvozent \\d+(\\.\\d+)+$"));
    QVERIFY2(form.match(QString::fromUtf8(version.text())).hasMatch(), version.text().constData());
    QCOMPARE(int(length), version.text().size());
    QVERIFY(!version.overrun());
    QCOMPARE(m_api->vek_firm_version(session.handle, nullptr, &length), int(kBadArgument));
    QCOMPARE(m_api->vek_firm_version(session.handle, version.data(), nullptr), int(kBadArgument));

    QCOMPARE(m_api->vek_set_baud(session.handle, 115200, 0), int(kSuccess));
    QCOMPARE(m_api->vek_set_baud(session.handle, 9600, 1), int(kSuccess));
    QCOMPARE(m_api->vek_set_baud(session.handle, 0, 0), int(kBadArgument));
    QCOMPARE(m_api->vek_set_baud(session.handle, 9600, 2), int(kBadArgument));
    QCOMPARE(m_api->vek_beep(session.handle, 1, 1, 3), int(kNotSupported));
}

void TestPcscDriver::twoReadersAtOnce()
{
    const auto named = [](std::uint8_t name) { return [name](const Bytes &) { return Bytes{name, 0x90, 0x00}; }; };
    VpcdCard left(kAtrT1, named(0xAA), kVpcdPort0);
    VpcdCard right(kAtrT0, named(0xBB), kVpcdPort1);
    DriverSession first(*m_api, kReader0);
    DriverSession second(*m_api, kReader1);
    QCOMPARE(first.powerOn().text, QByteArray("3B951381018073FF01000B"));
    QCOMPARE(second.powerOn().text, QByteArray("3B021450"));
    std::atomic<int> wrong{0};
    const auto hammer = [&](DriverSession &session, const QByteArray &expected) {
        for (int i = 0; i < 200; ++i)
            wrong += session.apdu("00B0000001").text == expected ? 0 : 1;
    };
    std::thread thread([&] { hammer(second, "BB9000"); });
    std::thread sameReader([&] { hammer(first, "AA9000"); });
    hammer(first, "AA9000");
    thread.join();
    sameReader.join();
    QCOMPARE(wrong.load(), 0);
}

QTEST_GUILESS_MAIN(TestPcscDriver)
#include "test_pcsc_driver.moc"
