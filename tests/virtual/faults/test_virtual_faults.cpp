// Every kind of fault through the driver library, as a program meets it.
#include "drivers/core/call_shapes.h"
#include "drivers/core/return_codes.h"
#include "drivers/virtual/reader/faults.h"
#include "sdk/entry_point_table.h"
#include "tests/virtual/support/tray_world.h"

#include <array>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using drivers::tray::Fault;
using drivers::tray::FaultKind;
using drivers::tray::Slot;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

namespace {

constexpr char kSelect[] = "00A4040008A000000333010101";
constexpr std::uint32_t kSelectLength = sizeof kSelect - 1;

Fault onCall(FaultKind kind, const char *call, std::int64_t value, std::uint64_t from = 1, std::uint64_t times = 0)
{
    Fault fault;
    fault.kind = kind;
    fault.call = call;
    fault.value = value;
    fault.from = from;
    fault.times = times;
    return fault;
}

} // namespace

class TestVirtualFaults : public QObject {
    Q_OBJECT

private slots:
    void aCodeFromTheNthCallSoManyTimes()
    {
        add(onCall(FaultKind::Code, "vek_idcr_read_samid", -9, 2, 2));
        const OpenDevice device(m_library);
        QList<int> results;
        for (int i = 0; i < 5; ++i)
            results << samId(device);
        QCOMPARE(results, (QList<int>{0, -9, -9, 0, 0}));
        QCOMPARE(fault().seen, std::uint64_t{3});
        QVERIFY(fault().spent());
    }

    void aCallThatIsStruckIsNotCarriedOut()
    {
        add(onCall(FaultKind::Code, "vek_beep", 0));
        const OpenDevice device(m_library);
        QCOMPARE(m_library.entry<sdk::Beep>("vek_beep")(device, 1, 1, 3), 0);
        QCOMPARE(m_world->tray().state()->beeps, std::uint64_t{0});
    }

    void everyEntryPointTakesACode()
    {
        const OpenDevice device(m_library);
#define UNIFOLD_CHECK_CALLED(name, Contract)                                                                           \
    if (std::string(#name) != "vek_free_list")                                                                         \
        checkCode(#name);
#define UNIFOLD_CHECK_UNCALLED(name) checkCode(#name);
        UNIFOLD_ENTRY_POINTS(UNIFOLD_CHECK_CALLED, UNIFOLD_CHECK_UNCALLED)
#undef UNIFOLD_CHECK_CALLED
#undef UNIFOLD_CHECK_UNCALLED
    }

    /// tray.json can be edited by hand, past the check of the command.
    void noFaultMakesDevicesOfNothing()
    {
        m_world->tray().update([](drivers::tray::TrayState &state) {
            state.faults = {onCall(FaultKind::Code, "vek_enum_devices", 5), onCall(FaultKind::Code, "vek_open", 7)};
            state.faults[0].id = 1;
            state.faults[1].id = 2;
        });
        char *list = nullptr;
        QCOMPARE(m_library.entry<sdk::EnumDevices>("vek_enum_devices")(sdk::kTransportUsb, &list), 0);
        QVERIFY(list == nullptr);
        QCOMPARE(m_library.entry<sdk::Open>("vek_open")(nullptr, 0, 0), std::intptr_t{0});
    }

    void noFaultAfterTheLastNumber()
    {
        m_world->tray().update([](drivers::tray::TrayState &state) {
            state.faults = {onCall(FaultKind::Code, "vek_beep", -5)};
            state.faults.front().id = 0x7FFFFFFFFFFFFFFF;
        });
        QVERIFY_EXCEPTION_THROWN(add(onCall(FaultKind::Code, "vek_beep", -6)), std::runtime_error);
        QCOMPARE(m_world->tray().state()->faults.size(), std::size_t{1});
    }

    void openingAndListingFail()
    {
        add(onCall(FaultKind::Code, "vek_open", 0, 1, 1));
        add(onCall(FaultKind::Code, "vek_enum_devices", -9, 1, 1));
        const auto open = m_library.entry<sdk::Open>("vek_open");
        QCOMPARE(open(nullptr, 0, 0), std::intptr_t{0});
        char *list = nullptr;
        QCOMPARE(m_library.entry<sdk::EnumDevices>("vek_enum_devices")(sdk::kTransportUsb, &list), -9);
        QVERIFY(list == nullptr);
        const OpenDevice second(m_library);
        QVERIFY(second != 0);
    }

    void closingFailsWithoutADevice()
    {
        add(onCall(FaultKind::Code, "vek_close", -9));
        QCOMPARE(m_library.entry<sdk::Close>("vek_close")(0, 0), -9);
    }

    void aDelayPassesBeforeTheCall()
    {
        add(onCall(FaultKind::Delay, "vek_idcr_read_samid", 120));
        const OpenDevice device(m_library);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(samId(device), 0);
        QVERIFY2(timer.elapsed() >= 120, qPrintable(QString::number(timer.elapsed())));
    }

    void closingEndsADelay()
    {
        add(onCall(FaultKind::Delay, "vek_idcr_read_samid", 20000));
        OpenDevice device(m_library);
        const sdk::DeviceHandle handle = device;
        QElapsedTimer timer;
        timer.start();
        int result = 0;
        std::thread caller([&] { result = samId(handle); });
        while (m_world->tray().state()->faults.front().seen == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        QCOMPARE(device.close(), 0);
        caller.join();
        QCOMPARE(result, int{drivers::kBadHandle});
        QVERIFY(timer.elapsed() < 10000);
    }

    void theCardGoesAfterSoManyApdus()
    {
        addRemoval("contact", 2);
        const OpenDevice device(m_library);
        QCOMPARE(powerOn(device), 0);
        // SELECT on this card is answered in two exchanges: the command, and GET RESPONSE.
        QCOMPARE(apdu(device), 0);
        QVERIFY(!m_world->cardIn(Slot::Contact).empty());
        QCOMPARE(apdu(device), int{drivers::kCardRemoved});
        QVERIFY(m_world->cardIn(Slot::Contact).empty());
        QCOMPARE(apdu(device), int{drivers::kNoCard});
        QVERIFY(fault().spent());
    }

    void theCardGoesInTheMiddleOfAnApplication()
    {
        addRemoval("contact", 3);
        const OpenDevice device(m_library);
        std::array<char, sdk::kPbocResultSize> result{};
        std::uint8_t used = 0;
        std::uint16_t length = 0;
        QCOMPARE(m_library.entry<sdk::PbocGetCardInfo>("vek_pboc_get_card_info")(
                     device, sdk::kSlotContact, 1000, "A000000333010101", "AD", &used, result.data(), &length, 1),
                 int{drivers::kCardRemoved});
        QVERIFY(m_world->cardIn(Slot::Contact).empty());
    }

    void aMifareCardGoesAfterSoManyCommands()
    {
        m_world->tray().put(Slot::Antenna, "mifare-wallet");
        addRemoval("antenna", 1);
        const OpenDevice device(m_library);
        const auto authenticate = m_library.entry<sdk::MifareKey>("vek_mifare_authentication");
        QCOMPARE(authenticate(device, 1, 'A', "FFFFFFFFFFFF"), 0);
        std::array<char, sdk::kMifareBlockSize> data{};
        QCOMPARE(m_library.entry<sdk::MifareReadBlock>("vek_mifare_read_block")(device, 5, data.data()),
                 int{drivers::kCardRemoved});
        QCOMPARE(data.front(), '\0');
        QCOMPARE(authenticate(device, 1, 'A', "FFFFFFFFFFFF"), int{drivers::kNoCard});
    }

    void aReplyIsCutShort()
    {
        const OpenDevice device(m_library);
        QCOMPARE(powerOn(device), 0);
        QCOMPARE(apdu(device), 0);
        const QByteArray whole = m_reply.data();
        add(onCall(FaultKind::Short, "vek_icc_apdu", 3));
        QCOMPARE(apdu(device), 0);
        QCOMPARE(QByteArray(m_reply.data()), whole.left(6));
        QCOMPARE(m_length, 6U);
    }

    void byteRepliesAndTextsAreCutToo()
    {
        const OpenDevice device(m_library);
        add(onCall(FaultKind::Short, "vek_idcr_read_samid", 5));
        QCOMPARE(samId(device), 0);
        QCOMPARE(QByteArray(m_text.data()), QByteArray("05.01"));
        add(onCall(FaultKind::Short, "vek_idcr_transive", 1));
        std::array<std::uint8_t, sdk::kTransiveDataSize> data{};
        std::uint32_t status = 0;
        std::int32_t length = 0;
        QCOMPARE(m_library.entry<sdk::IdcrTransive>("vek_idcr_transive")(device, 1000, 0x30, 0x01, &status, data.data(),
                                                                         int{sdk::kTransiveDataSize}, &length),
                 0);
        QVERIFY2(length <= 1, qPrintable(QString::number(length)));
    }

    void aByteIsFlipped()
    {
        const OpenDevice device(m_library);
        QCOMPARE(powerOn(device), 0);
        QCOMPARE(apdu(device), 0);
        QByteArray expected = m_reply.data();
        expected.replace(2, 2, QByteArray::number(expected.mid(2, 2).toInt(nullptr, 16) ^ 0x81, 16).toUpper());
        Fault flipped = onCall(FaultKind::Flipped, "vek_icc_apdu", 1, 1, 1);
        flipped.mask = 0x81;
        add(flipped);
        QCOMPARE(apdu(device), 0);
        QCOMPARE(QByteArray(m_reply.data()), expected);
        QCOMPARE(apdu(device), 0);
        QVERIFY(QByteArray(m_reply.data()) != expected);
    }

    void aFlipBehindTheReplyDoesNothing()
    {
        const OpenDevice device(m_library);
        QCOMPARE(samId(device), 0);
        const QByteArray whole = m_text.data();
        add(onCall(FaultKind::Flipped, "vek_idcr_read_samid", 39));
        QCOMPARE(samId(device), 0);
        QCOMPARE(QByteArray(m_text.data()), whole);
    }

    void anUnpluggedReaderIsGoneUntilCleared()
    {
        const OpenDevice device(m_library);
        QCOMPARE(powerOn(device), 0);
        Fault unplugged;
        unplugged.kind = FaultKind::Unplugged;
        unplugged.from = 2;
        add(unplugged);
        QCOMPARE(apdu(device), 0);
        QCOMPARE(apdu(device), int{drivers::kReaderGone});
        QCOMPARE(samId(device), int{drivers::kReaderGone});
        char *list = nullptr;
        QCOMPARE(m_library.entry<sdk::EnumDevices>("vek_enum_devices")(sdk::kTransportUsb, &list), 0);
        QCOMPARE(m_library.entry<sdk::Open>("vek_open")(nullptr, 0, 0), std::intptr_t{0});
        QCOMPARE(drivers::reader::clearFaults(m_world->tray()), std::size_t{1});
        QCOMPARE(samId(device), 0);
        QCOMPARE(apdu(device), int{drivers::kNotPowered});
    }

    void unpluggingEndsAWait()
    {
        m_world->take(Slot::IdPlate);
        const OpenDevice device(m_library);
        const sdk::DeviceHandle handle = device;
        int result = 0;
        QElapsedTimer timer;
        timer.start();
        std::thread caller([&] {
            std::array<char, sdk::kIdUidSize> text{};
            result = m_library.entry<sdk::IdcrReadText>("vek_idcr_read_uid")(handle, 20000, text.data());
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        Fault unplugged;
        unplugged.kind = FaultKind::Unplugged;
        add(unplugged);
        caller.join();
        QCOMPARE(result, int{drivers::kReaderGone});
        QVERIFY(timer.elapsed() < 10000);
    }

    void processesAndThreadsCountTogether()
    {
        constexpr int kProcesses = 3;
        constexpr int kCalls = 10;
        constexpr std::uint64_t kTimes = 17;
        add(onCall(FaultKind::Code, "vek_set_baud", -9, 1, kTimes));
        std::array<pid_t, kProcesses> children{};
        for (pid_t &child : children) {
            child = ::fork();
            if (child == 0)
                ::_exit(struckCalls(kCalls));
        }
        int struck = struckCalls(kCalls);
        for (const pid_t child : children) {
            int status = 0;
            QCOMPARE(::waitpid(child, &status, 0), child);
            QVERIFY(WIFEXITED(status));
            struck += WEXITSTATUS(status);
        }
        QCOMPARE(struck, int{kTimes});
        QCOMPARE(fault().seen, kTimes);
    }

    void whatCouldNeverStrikeIsRefused_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("call");
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char *name, FaultKind kind, const char *call, int value, const char *reason) {
            QTest::newRow(name) << int(kind) << call << value << reason;
        };
        row("no call", FaultKind::Code, "", -1, "a fault of the kind code needs a call");
        row("unknown call", FaultKind::Delay, "vek_juggle", 5, "there is no call vek_juggle");
        row("a handle", FaultKind::Code, "vek_open", -1,
            "vek_open returns a handle: the only code it can fail with is 0");
        row("a count", FaultKind::Code, "vek_enum_devices", 2,
            "vek_enum_devices returns how many devices there are: it can fail with 0 or less only");
        row("no result", FaultKind::Code, "vek_free_list", 1, "vek_free_list returns nothing");
        row("no reply", FaultKind::Short, "vek_beep", 1, "vek_beep gives no reply that could be damaged");
        row("no reply known", FaultKind::Flipped, "vek_enumerate", 1,
            "vek_enumerate gives no reply that could be damaged");
        row("negative delay", FaultKind::Delay, "vek_beep", -1,
            "less than 0 does not go with a fault of the kind delay");
        row("unplugged by a call", FaultKind::Unplugged, "vek_beep", 0,
            "an unplugged reader is so for all calls: name none");
        row("removed from nowhere", FaultKind::Removed, "", 0,
            "a card is removed from contact, antenna or psam1 to psam4, not from \"\"");
    }

    void whatCouldNeverStrikeIsRefused()
    {
        QFETCH(int, kind);
        QFETCH(QString, call);
        QFETCH(int, value);
        QFETCH(QString, reason);
        QString said;
        try {
            add(onCall(static_cast<FaultKind>(kind), call.toUtf8().constData(), value));
        } catch (const std::runtime_error &error) {
            said = error.what();
        }
        QCOMPARE(said, reason);
        QVERIFY(m_world->tray().state()->faults.empty());
    }

    void init()
    {
        m_world = std::make_unique<TrayWorld>();
    }
    void cleanup()
    {
        m_world.reset();
    }

private:
    void add(const Fault &fault)
    {
        drivers::reader::addFault(m_world->tray(), fault);
    }
    Fault fault()
    {
        return m_world->tray().state()->faults.front();
    }

    void addRemoval(const char *slot, std::uint64_t after)
    {
        Fault removed;
        removed.kind = FaultKind::Removed;
        removed.slot = slot;
        removed.from = after + 1;
        removed.times = 1;
        add(removed);
    }

    /// Calls an entry point by its bare symbol: a struck call looks at none of its arguments.
    void checkCode(const char *name)
    {
        const bool fixed = std::string(name) == "vek_open";
        drivers::reader::clearFaults(m_world->tray());
        add(onCall(FaultKind::Code, name, fixed ? 0 : -77));
        using Bare = int(sdk::DeviceHandle, std::int64_t, std::int64_t, std::int64_t, std::int64_t, std::int64_t,
                         std::int64_t, std::int64_t, std::int64_t, std::int64_t);
        QCOMPARE(m_library.entry<Bare>(name)(0, 0, 0, 0, 0, 0, 0, 0, 0, 0), fixed ? 0 : -77);
        QCOMPARE(fault().seen, std::uint64_t{1});
    }

    int samId(sdk::DeviceHandle device)
    {
        m_text.fill('\0');
        return m_library.entry<sdk::IdcrReadText>("vek_idcr_read_samid")(device, 1000, m_text.data());
    }

    int powerOn(sdk::DeviceHandle device)
    {
        std::array<char, sdk::kAtrSize> atr{};
        return m_library.entry<sdk::IccPowerOn>("vek_icc_poweron")(device, sdk::kSlotContact, 1000, atr.data(),
                                                                   &m_length);
    }

    int apdu(sdk::DeviceHandle device)
    {
        m_reply.fill('\0');
        m_length = 0;
        return m_library.entry<sdk::IccApdu>("vek_icc_apdu")(device, sdk::kSlotContact, kSelect, kSelectLength,
                                                             m_reply.data(), &m_length);
    }

    /// How many of so many calls, made from two threads, return the code.
    int struckCalls(int calls)
    {
        std::atomic<int> struck = 0;
        const auto work = [&] {
            for (int i = 0; i < calls / 2; ++i)
                struck += m_library.entry<sdk::SetBaud>("vek_set_baud")(0, 9600, 0) == -9 ? 1 : 0;
        };
        std::thread other(work);
        work();
        other.join();
        return struck;
    }

    DriverLibrary m_library;
    std::unique_ptr<TrayWorld> m_world;
    std::array<char, sdk::kApduReplySize> m_reply{};
    std::array<char, sdk::kSamIdSize> m_text{};
    std::uint32_t m_length = 0;
};

QTEST_GUILESS_MAIN(TestVirtualFaults)
#include "test_virtual_faults.moc"
