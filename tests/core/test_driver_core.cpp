// What every driver's C boundary is made of: handles, texts, exceptions.
#include "drivers/core/boundary.h"
#include "drivers/core/text_arguments.h"
#include "drivers/core/wait_time.h"

#include <QtTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <set>
#include <stdexcept>
#include <thread>

using namespace drivers;

namespace {

struct Device {
    int number = 0;
};

// Answers every command with the same bytes and remembers the command.
class CannedCard : public CardChannel {
public:
    explicit CannedCard(Bytes reply, ReturnCode result = kSuccess) : m_reply(std::move(reply)), m_result(result) {}

    ReturnCode transmit(const Bytes &command, Bytes &reply) override
    {
        lastCommand = command;
        if (m_result == kSuccess)
            reply = m_reply;
        return m_result;
    }

    Bytes lastCommand;

private:
    Bytes m_reply;
    ReturnCode m_result;
};

RunOnCard on(CannedCard &card)
{
    return [&card](const CardJob &job) { return job(card); };
}

// The caller's reply buffer between two guards, filled so that every write shows.
struct GuardedReply {
    GuardedReply() { bytes.fill('#'); }
    char *text() { return bytes.data() + kGuard; }
    bool guardsIntact() const
    {
        return std::all_of(bytes.begin(), bytes.begin() + kGuard, [](char c) { return c == '#'; }) &&
               std::all_of(bytes.end() - kGuard, bytes.end(), [](char c) { return c == '#'; });
    }
    bool untouched() const
    {
        return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == '#'; });
    }

    static constexpr std::size_t kGuard = 16;
    std::array<char, kGuard + sdk::kApduReplySize + kGuard> bytes{};
};

} // namespace

class TestDriverCore : public QObject {
    Q_OBJECT

private slots:
    void handlesOpenAndClose();
    void handlesNeverGivenOutAreRefused();
    void handlesAreNotReused();
    void deviceOutlivesItsHandleDuringACall();
    void handleTableTakesManyThreads();
    void exceptionsBecomeCodes();
    void copyTextStopsAtTheBuffersEnd();
    void hexArgumentNeedsTextAndLengthToAgree();
    void apduTextFillsTheReply();
    void apduTextRefusesWhatDoesNotFit();
    void apduTextRefusesBadArguments();
    void apduTextPassesTheCardsFailure();
    void slotCodes();
    void negativeTimeoutsAreNoWait();
    void lentTextsAreTakenBackOnce();
};

void TestDriverCore::handlesOpenAndClose()
{
    HandleTable<Device> table;
    const auto handle = table.add(std::make_shared<Device>(Device{7}));
    QVERIFY(handle > 0);
    QVERIFY(handle <= 0x7FFFFFFF);
    QCOMPARE(table.find(handle)->number, 7);
    QCOMPARE(table.remove(handle)->number, 7);
    QVERIFY(!table.find(handle));
    QVERIFY(!table.remove(handle));
}

void TestDriverCore::handlesNeverGivenOutAreRefused()
{
    HandleTable<Device> table;
    const auto handle = table.add(std::make_shared<Device>());
    for (const sdk::DeviceHandle madeUp :
         {sdk::DeviceHandle{0}, handle + 1, handle - 1, -handle, handle + (sdk::DeviceHandle{1} << 32U),
          std::numeric_limits<sdk::DeviceHandle>::min(), std::numeric_limits<sdk::DeviceHandle>::max()}) {
        QVERIFY(!table.find(madeUp));
        QVERIFY(!table.remove(madeUp));
    }
    QVERIFY(table.find(handle));
}

void TestDriverCore::handlesAreNotReused()
{
    HandleTable<Device> table;
    std::set<sdk::DeviceHandle> seen;
    for (int i = 0; i < 10000; ++i) {
        const auto handle = table.add(std::make_shared<Device>());
        QVERIFY(seen.insert(handle).second);
        table.remove(handle);
    }
}

void TestDriverCore::deviceOutlivesItsHandleDuringACall()
{
    HandleTable<Device> table;
    std::weak_ptr<Device> watched;
    const auto handle = table.add(std::make_shared<Device>(Device{3}));
    watched = table.find(handle);
    const int result = withDevice(table, handle, [&](Device &device) {
        table.remove(handle);
        return watched.expired() ? -99 : device.number;
    });
    QCOMPARE(result, 3);
    QVERIFY(watched.expired());
}

void TestDriverCore::handleTableTakesManyThreads()
{
    HandleTable<Device> table;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                const auto handle = table.add(std::make_shared<Device>(Device{i}));
                const auto found = table.find(handle);
                if (!found || found->number != i || !table.remove(handle) || table.find(handle))
                    ++failures;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(failures.load(), 0);
}

void TestDriverCore::exceptionsBecomeCodes()
{
    HandleTable<Device> table;
    const auto handle = table.add(std::make_shared<Device>());
    QCOMPARE(withDevice(table, handle, [](Device &) -> int { throw std::bad_alloc(); }), int(kTransportFailure));
    QCOMPARE(withDevice(table, handle, [](Device &) -> int { throw 5; }), int(kTransportFailure));
    QCOMPARE(withDevice(table, 0, [](Device &) -> int { throw 5; }), int(kBadHandle));
    QCOMPARE(guardedOr<std::intptr_t>(0, []() -> std::intptr_t { throw std::runtime_error("x"); }), std::intptr_t(0));
    QCOMPARE(notSupported(table, handle), int(kNotSupported));
    QCOMPARE(notSupported(table, handle + 1), int(kBadHandle));
}

void TestDriverCore::copyTextStopsAtTheBuffersEnd()
{
    char buffer[6] = "-----";
    QCOMPARE(copyText(buffer, 4, "abcd"), kBufferTooSmall);
    QCOMPARE(QByteArray(buffer), QByteArray("-----"));
    QCOMPARE(copyText(buffer, 4, "abc"), kSuccess);
    QCOMPARE(QByteArray(buffer, 6), QByteArray("abc\0-\0", 6));
    QCOMPARE(copyText(buffer, 0, ""), kBufferTooSmall);
    QCOMPARE(buffer[0], 'a');
    QCOMPARE(copyText(nullptr, 4, "abc"), kBadArgument);
}

void TestDriverCore::hexArgumentNeedsTextAndLengthToAgree()
{
    QCOMPARE(*hexArgument("00a4", 4), (Bytes{0x00, 0xA4}));
    QCOMPARE(*hexArgument("00A4ZZ", 4), (Bytes{0x00, 0xA4}));
    QCOMPARE(hexArgument("", 0)->size(), std::size_t(0));
    QVERIFY(!hexArgument("00A4", 6));
    QVERIFY(!hexArgument("00A", 3));
    QVERIFY(!hexArgument("00 A", 4));
    QVERIFY(!hexArgument("00G4", 4));
    QVERIFY(!hexArgument(nullptr, 0));
    QVERIFY(!hexArgument("00A4", 0xFFFFFFFFU));

    // Without a NUL: reading past it is the sanitizer's finding.
    const auto exact = std::make_unique<char[]>(4);
    memcpy(exact.get(), "12EF", 4);
    QCOMPARE(*hexArgument(exact.get(), 4), (Bytes{0x12, 0xEF}));
}

void TestDriverCore::apduTextFillsTheReply()
{
    CannedCard card(Bytes(511, 0xA5));
    GuardedReply reply;
    std::uint32_t length = 0;
    QCOMPARE(exchangeApduText(on(card), "00b0000000", 10, reply.text(), &length), kSuccess);
    QCOMPARE(card.lastCommand, (Bytes{0x00, 0xB0, 0x00, 0x00, 0x00}));
    QCOMPARE(length, 1022U);
    QCOMPARE(QByteArray(reply.text()), QByteArray("A5").repeated(511));
    QVERIFY(reply.guardsIntact());
}

void TestDriverCore::apduTextRefusesWhatDoesNotFit()
{
    CannedCard card(Bytes(512, 0xA5));
    GuardedReply reply;
    std::uint32_t length = 77;
    QCOMPARE(exchangeApduText(on(card), "00B0000000", 10, reply.text(), &length), kBufferTooSmall);
    QVERIFY(reply.untouched());
    QCOMPARE(length, 77U);
}

void TestDriverCore::apduTextRefusesBadArguments()
{
    CannedCard card({0x90, 0x00});
    GuardedReply reply;
    std::uint32_t length = 0;
    QCOMPARE(exchangeApduText(on(card), "00B000000", 9, reply.text(), &length), kBadArgument);
    QCOMPARE(exchangeApduText(on(card), "00B0 00000", 10, reply.text(), &length), kBadArgument);
    for (const char *noApdu : {"", "00", "00A404"})
        QCOMPARE(exchangeApduText(on(card), noApdu, static_cast<std::uint32_t>(strlen(noApdu)), reply.text(), &length),
                 kBadArgument);
    const QByteArray tooLong = QByteArray("00").repeated(65545);
    QCOMPARE(exchangeApduText(on(card), tooLong, static_cast<std::uint32_t>(tooLong.size()), reply.text(), &length),
             kBadArgument);
    QCOMPARE(exchangeApduText(on(card), nullptr, 10, reply.text(), &length), kBadArgument);
    QCOMPARE(exchangeApduText(on(card), "00B0000000", 10, nullptr, &length), kBadArgument);
    QCOMPARE(exchangeApduText(on(card), "00B0000000", 10, reply.text(), nullptr), kBadArgument);
    QVERIFY(card.lastCommand.empty());
    QVERIFY(reply.untouched());
}

void TestDriverCore::apduTextPassesTheCardsFailure()
{
    CannedCard card({}, kCardRemoved);
    GuardedReply reply;
    std::uint32_t length = 0;
    QCOMPARE(exchangeApduText(on(card), "00B0000000", 10, reply.text(), &length), kCardRemoved);
    QVERIFY(reply.untouched());
}

void TestDriverCore::slotCodes()
{
    const std::set<int> known = {0x00, 0x02, 0x10, 0x11, 0x12, 0x13, 0xFF};
    for (int slot = 0; slot < 256; ++slot)
        QCOMPARE(isSlotCode(static_cast<std::uint8_t>(slot)), known.count(slot) == 1);
}

void TestDriverCore::negativeTimeoutsAreNoWait()
{
    QCOMPARE(waitTime(5000U).count(), 5000);
    QCOMPARE(waitTime(0).count(), 0);
    QCOMPARE(waitTime(-1).count(), 0);
    QCOMPARE(waitTime(4294966296U).count(), 0);
    QCOMPARE(waitTime(2147483647U).count(), 2147483647);
    QCOMPARE(waitTime(std::uint16_t{65535}).count(), 65535);
}

void TestDriverCore::lentTextsAreTakenBackOnce()
{
    LentTexts texts;
    const char own[] = "own";
    char *first = texts.lend(joinNames(std::vector<std::string>{"A 00 00", "B 00 01"}));
    char *second = texts.lend("");
    QCOMPARE(QByteArray(first), QByteArray("A 00 00|B 00 01|"));
    QCOMPARE(QByteArray(second), QByteArray());
    texts.takeBack(own);
    texts.takeBack(nullptr);
    texts.takeBack(first);
    texts.takeBack(first);
    QCOMPARE(QByteArray(second), QByteArray());
    texts.takeBack(second);
}

QTEST_APPLESS_MAIN(TestDriverCore)
#include "test_driver_core.moc"
