// A program that writes to cards is killed at random moments. A card then holds what it held before the write or after
// it, what was acknowledged is on disk, and the tray works on.
//
//   UNIFOLD_KILL_ROUNDS=1000  that many kills (without it 100, or fewer if they take too long)
//   UNIFOLD_KILL_SEED=17      other work and other moments
#include "drivers/virtual/tray/embedded_files.h"
#include "tests/endurance/card_work.h"
#include "tests/endurance/child.h"
#include "tests/endurance/writer_record.h"
#include "tests/virtual/support/tray_world.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <optional>
#include <random>
#include <thread>

using namespace endurance;
using drivers::tray::Tray;
using nlohmann::json;

namespace {

namespace fs = std::filesystem;

constexpr int kDefaultRounds = 100;
constexpr int kLeastRounds = 20;
constexpr int kPatienceMs = 4000;

/// Longer than a program takes to load the driver, open the device and begin.
constexpr int kStartMicroseconds = 120000;
constexpr int kWorkMicroseconds = 25000;
constexpr int kLayoutMicroseconds = 20000;

/// What a killed program had told.
struct Told {
    bool ready = false;
    std::vector<std::uint32_t> done;
    std::optional<std::uint32_t> pending;
    std::uint64_t swipes = 0;
    bool swipePending = false;
    QString failure;

    void add(const WriterRecord &record)
    {
        switch (record.kind) {
        case WriterRecord::kReady:
            ready = true;
            break;
        case WriterRecord::kBegin:
            pending = record.number;
            break;
        case WriterRecord::kEnd:
            pending.reset();
            done.push_back(record.number);
            break;
        case WriterRecord::kSwipeBegin:
            swipePending = true;
            break;
        case WriterRecord::kSwipeEnd:
            swipePending = false;
            ++swipes;
            break;
        default:
            break;
        }
        if (record.code != 0)
            failure =
                QStringLiteral("operation %1: kind %2, code %3").arg(record.number).arg(record.kind).arg(record.code);
    }
};

Cards readCards(const Tray &tray)
{
    return {tray.card(kMifareCard), tray.card(kStripeCard)};
}

std::string blockHex(const DriverApi &driver, sdk::DeviceHandle device, std::uint8_t block)
{
    std::array<char, sdk::kMifareBlockSize> data{};
    return driver.vek_mifare_read_block(device, block, data.data()) == 0 ? data.data() : "";
}

} // namespace

class TestKilledWriter : public QObject {
    Q_OBJECT

public:
    /// Qt Test ends a function after five minutes unless told otherwise.
    static void initMain() { qputenv("QTEST_FUNCTION_TIMEOUT", "86400000"); }

private slots:
    void init()
    {
        m_seed = static_cast<std::uint32_t>(qEnvironmentVariableIntValue("UNIFOLD_KILL_SEED"));
        m_random.seed(m_seed);
        m_clock.start();
    }

    void cardsAreWholeAndKeepWhatWasAcknowledged()
    {
        virtual_test::TrayWorld world;
        const DriverApi driver("libtarvovek.so");
        Cards known = readCards(world.tray());
        std::uint64_t swipes = world.tray().state()->swipeCount;
        std::uint32_t number = 1;
        int round = 0;
        for (; goesOn(round); ++round) {
            const Told told = tellUntilKilled(number, round % 4 == 0);
            QVERIFY2(told.failure.isEmpty(), qPrintable(told.failure));
            for (const std::uint32_t done : told.done)
                known = known.after(operationOf(m_seed, done));
            number += static_cast<std::uint32_t>(told.done.size()) + (told.pending ? 1 : 0);
            m_sum.acknowledged += told.done.size();
            settle(readCards(world.tray()), told, known);
            if (QTest::currentTestFailed())
                return;
            readsTheSame(driver, known);
            const std::uint64_t counted = world.tray().state()->swipeCount;
            QVERIFY(counted >= swipes + told.swipes);
            QVERIFY(counted <= swipes + told.swipes + (told.swipePending ? 1 : 0));
            swipes = counted;
        }
        qInfo("%d kills: %d amid a write, of which %d had reached the disk; %zu writes acknowledged", round,
              m_sum.amidWrite, m_sum.written, m_sum.acknowledged);
        QVERIFY(m_sum.amidWrite > 0);
        QVERIFY(m_sum.acknowledged > 0);
        leavesNothingBehind(world.tray(), driver);
    }

    void trayIsLaidOutWholeOrNotAtAll()
    {
        QTemporaryDir folder;
        int laidOut = 0;
        int begun = 0;
        int round = 0;
        for (; goesOn(round * 5); ++round) {
            const fs::path tray = folder.filePath(QString::number(round)).toStdString();
            qputenv(drivers::tray::kTrayVariable, tray.c_str());
            killAmidLayout(tray);
            begun += fs::exists(tray) ? 1 : 0;
            laidOut += fs::exists(tray / "tray.json") ? 1 : 0;
            const DriverApi driver("libtarvovek.so");
            const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
            QVERIFY(device != 0);
            QCOMPARE(Tray(tray).cardIds().size(), drivers::tray::embeddedDeck().size());
            QCOMPARE(openSector(driver, device, 4), 0);
            driver.vek_close(device, 0);
            fs::remove_all(tray);
        }
        qunsetenv(drivers::tray::kTrayVariable);
        qInfo("%d kills: the tray was begun in %d, and complete in %d", round, begun, laidOut);
        QCOMPARE(begun, round);
        QVERIFY(laidOut < round);
    }

private:
    struct Sum {
        int amidWrite = 0;
        int written = 0;
        std::size_t acknowledged = 0;
    };

    bool goesOn(int round) const
    {
        if (qEnvironmentVariableIsSet("UNIFOLD_KILL_ROUNDS"))
            return round < qEnvironmentVariableIntValue("UNIFOLD_KILL_ROUNDS");
        return round < kDefaultRounds && (round < kLeastRounds || m_clock.elapsed() < kPatienceMs);
    }

    /// Kills the program some time after its start or, if it is to work first, after it began to work.
    Told tellUntilKilled(std::uint32_t number, bool fromStart)
    {
        Child child({UNIFOLD_KILLED_WRITER, std::to_string(m_seed), std::to_string(number)});
        Told told;
        WriterRecord record{};
        if (!fromStart && child.read(record))
            told.add(record);
        const auto most = static_cast<std::uint32_t>(fromStart ? kStartMicroseconds : kWorkMicroseconds);
        std::this_thread::sleep_for(std::chrono::microseconds(m_random() % most));
        const int status = child.kill();
        if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL)
            told.failure = QStringLiteral("the program ended by itself: status %1").arg(status);
        while (child.read(record))
            told.add(record);
        return told;
    }

    /// Kills a program that lays out a tray once it has begun to.
    void killAmidLayout(const fs::path &tray)
    {
        Child child({UNIFOLD_KILLED_WRITER, "0", "1"});
        const QDeadlineTimer deadline(20000);
        while (!fs::exists(tray) && !deadline.hasExpired())
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::microseconds(m_random() % kLayoutMicroseconds));
        child.kill();
    }

    /// The cards are as known or one write further.
    void settle(const Cards &found, const Told &told, Cards &known)
    {
        if (!told.pending) {
            QVERIFY(found == known);
            return;
        }
        ++m_sum.amidWrite;
        const Cards further = known.after(operationOf(m_seed, *told.pending));
        QVERIFY(found == known || found == further);
        m_sum.written += found == further ? 1 : 0;
        known = found;
    }

    /// A program that reads through its driver sees what the files hold, with no lock left by the dead.
    static void readsTheSame(const DriverApi &driver, const Cards &known)
    {
        const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
        for (const std::uint8_t block : std::array<std::uint8_t, 5>{1, 2, 4, 5, 6}) {
            QCOMPARE(openSector(driver, device, block), 0);
            QCOMPARE(blockHex(driver, device, block), known.mifare["blocks"][block].get<std::string>());
        }
        QCOMPARE(driver.vek_close(device, 0), 0);
    }

    /// The next write uses up what the killed ones left.
    static void leavesNothingBehind(Tray &tray, const DriverApi &driver)
    {
        const sdk::DeviceHandle device = driver.vek_open(nullptr, 0, 0);
        QCOMPARE(openSector(driver, device, 4), 0);
        QCOMPARE(driver.vek_mifare_write_block(device, 4, "00112233445566778899AABBCCDDEEFF"), 0);
        QCOMPARE(driver.vek_beep(device, 1, 1, 1), 0);
        driver.vek_close(device, 0);
        tray.saveCard(tray.lock(), kStripeCard, tray.card(kStripeCard));
        std::size_t files = 0;
        for (const fs::directory_entry &entry : fs::directory_iterator(tray.folder() / "cards"))
            files += entry.is_regular_file() ? 1 : 0;
        QCOMPARE(files, tray.cardIds().size());
        QVERIFY(!fs::exists(tray.folder() / ".tray.json.new"));
    }

    std::uint32_t m_seed = 0;
    std::mt19937 m_random;
    QElapsedTimer m_clock;
    Sum m_sum;
};

QTEST_GUILESS_MAIN(TestKilledWriter)
#include "test_killed_writer.moc"
