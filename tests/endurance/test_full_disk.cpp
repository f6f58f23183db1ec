// The disk with the tray is full: what would change something fails with a code and changes nothing, what only looks
// works on, and everything works again when there is space.
#include "drivers/core/return_codes.h"
#include "drivers/virtual/cards/stripe_card.h"
#include "drivers/virtual/tray/embedded_files.h"
#include "tests/endurance/card_work.h"
#include "tests/endurance/disk_world.h"
#include "tests/endurance/own_mounts.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <cstring>
#include <functional>
#include <thread>

using namespace endurance;
using drivers::tray::Slot;
using drivers::tray::Tray;

namespace {

namespace fs = std::filesystem;

constexpr char kNewBlock[] = "0123456789ABCDEF0123456789ABCDEF";
/// That of a serial device nobody has set.
constexpr int kBaud = 9600;
constexpr int kFailed = drivers::kTransportFailure;

/// A call with what it needs.
struct Change {
    std::function<void(Tray &)> prepare;
    std::function<int(const DriverApi &, sdk::DeviceHandle)> call;
    const char *device = nullptr;
};

int updateFile(const DriverApi &driver, sdk::DeviceHandle device)
{
    std::array<char, sdk::kApduReplySize> reply{};
    std::uint32_t length = 0;
    for (const std::string command : {"00A4040009F0554E49464F4C4401", "00D6840004AABBCCDD"}) {
        const int result = driver.vek_icc_apdu(device, sdk::kSlotContact, command.c_str(),
                                               static_cast<std::uint32_t>(command.size()), reply.data(), &length);
        if (result != 0)
            return result;
    }
    return std::string(reply.data()) == "9000" ? 0 : 1;
}

int makeCryptogram(const DriverApi &driver, sdk::DeviceHandle device)
{
    constexpr char kTransaction[] = "P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024"
                                    "D7DBBACFB9F1C3E6B2E2CAD4";
    std::array<char, sdk::kPbocResultSize> result{};
    std::uint16_t length = 0;
    return driver.vek_pboc_get_arqc(device, sdk::kSlotContact, 1000, "A000000333", 10, kTransaction,
                                    static_cast<int>(std::strlen(kTransaction)), result.data(), &length, 0);
}

const std::map<std::string, Change> &changes()
{
    static const auto none = [](Tray &) {};
    static const auto fileCard = [](Tray &tray) { tray.put(Slot::Contact, "file-card"); };
    static const std::map<std::string, Change> all = {
        {"write block", {none, [](auto &d, auto h) { return d.vek_mifare_write_block(h, 4, kNewBlock); }}},
        {"init value", {none, [](auto &d, auto h) { return d.vek_mifare_init_value(h, 6, 7); }}},
        {"increase", {none, [](auto &d, auto h) { return d.vek_mifare_increase_value(h, 5, 1); }}},
        {"decrease", {none, [](auto &d, auto h) { return d.vek_mifare_decrease_value(h, 5, 1); }}},
        {"change key", {none, [](auto &d, auto h) { return d.vek_mifare_change_key(h, 1, 'B', "0123456789AB"); }}},
        {"beep", {none, [](auto &d, auto h) { return d.vek_beep(h, 1, 1, 1); }}},
        {"stripe mode", {none, [](auto &d, auto h) { return d.vek_msr_mode_switch(h, 0); }}},
        {"baud", {none, [](auto &d, auto h) { return d.vek_set_baud(h, 19200, 1); }, "VCOM1"}},
        {"update file", {fileCard, updateFile}},
        {"cryptogram", {none, makeCryptogram}},
    };
    return all;
}

} // namespace

class TestFullDisk : public QObject {
    Q_OBJECT

public:
    explicit TestFullDisk(std::string problem) : m_problem(std::move(problem)) {}

private slots:
    void initTestCase()
    {
        // A right that only whoever runs the container can give.
        if (!m_problem.empty())
            QTest::qSkip(m_problem.c_str(), __FILE__, __LINE__); // QSKIP is no ISO C++17
    }

    void writesFailAndChangeNothing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("files");
        for (const auto &[name, change] : changes()) {
            QTest::addRow("%s: no space", name.c_str()) << QString::fromStdString(name) << false;
            QTest::addRow("%s: no more files", name.c_str()) << QString::fromStdString(name) << true;
        }
    }

    void writesFailAndChangeNothing()
    {
        QFETCH(const QString, name);
        QFETCH(const bool, files);
        const Change &change = changes().at(name.toStdString());
        DiskWorld world;
        change.prepare(world.tray());
        const DriverApi driver("libtarvovek.so");
        const sdk::DeviceHandle device = opened(driver, change.device);
        const auto before = world.files();
        if (files)
            world.disk().fillWithFiles();
        else
            world.disk().fill();
        QCOMPARE(change.call(driver, device), kFailed);
        QVERIFY(world.files() == before);
        QCOMPARE(change.call(driver, device), kFailed);
        world.disk().empty();
        QCOMPARE(change.call(driver, device), 0);
        QVERIFY(world.files() != before);
        QCOMPARE(world.files().size(), before.size());
        driver.vek_close(device, 0);
    }

    void stripeFailsAndChangesNothing()
    {
        DiskWorld world;
        const DriverApi driver("libtarvovek.so");
        const sdk::DeviceHandle device = opened(driver);
        Operation operation{Operation::Kind::WriteStripe};
        operation.selection = 2;
        operation.tracks[1] = "1234567890";
        QCOMPARE(performWithSwipe(world, driver, device, operation, true), kFailed);
        QCOMPARE(world.tray().card(kStripeCard), m_stripe);
        world.disk().empty();
        QCOMPARE(performWithSwipe(world, driver, device, operation, false), 0);
        QCOMPARE(world.tray().card(kStripeCard)["tracks"]["2"], "1234567890");
        driver.vek_close(device, 0);
    }

    /// The new file may fit in part.
    void anyAmountOfSpaceGivesAllOrNothing()
    {
        DiskWorld world;
        const DriverApi driver("libtarvovek.so");
        enlarge(world.tray());
        const sdk::DeviceHandle device = opened(driver);
        int failed = 0;
        int done = 0;
        for (int pages = 0; pages < 8; ++pages) {
            const Operation operation{Operation::Kind::InitValue, 6, pages + 1};
            const Cards before{world.tray().card(kMifareCard), {}};
            world.disk().fill(pages);
            const int result = perform(driver, device, operation);
            world.disk().empty();
            const Cards after{world.tray().card(kMifareCard), {}};
            QVERIFY(result == 0 || result == kFailed);
            QVERIFY(after == (result == 0 ? before.after(operation) : before));
            ++(result == 0 ? done : failed);
        }
        // The card fills more than one page.
        QVERIFY(failed > 1);
        QVERIFY(done > 1);
        driver.vek_close(device, 0);
    }

    void readingGoesOn()
    {
        DiskWorld world;
        const DriverApi driver("libtarvovek.so");
        world.disk().fill();
        const sdk::DeviceHandle device = opened(driver);
        std::array<char, sdk::kMifareBlockSize> block{};
        QCOMPARE(driver.vek_mifare_read_block(device, 4, block.data()), 0);
        std::array<char, sdk::kAtrSize> atr{};
        std::uint32_t length = 0;
        QCOMPARE(driver.vek_icc_poweron(device, sdk::kSlotContact, 0, atr.data(), &length), 0);
        QCOMPARE(readIdCard(driver, device, 2, ""), 0);
        QCOMPARE(driver.vek_msr_qm_start(device), 0);
        QCOMPARE(driver.vek_close(device, 0), 0);
    }

    void trayIsLaidOutWhenThereIsSpace()
    {
        DiskWorld world;
        const DriverApi driver("libtarvovek.so");
        const fs::path folder = world.disk().folder() / "another";
        qputenv(drivers::tray::kTrayVariable, folder.c_str());
        for (int pages = 0; pages < 12; pages += 3) {
            world.disk().fill(pages);
            QCOMPARE(driver.vek_open(nullptr, 0, 0), std::intptr_t{0});
            QVERIFY(!fs::exists(folder / "tray.json"));
        }
        world.disk().empty();
        const sdk::DeviceHandle device = opened(driver);
        QCOMPARE(Tray(folder).cardIds().size(), drivers::tray::embeddedDeck().size());
        driver.vek_close(device, 0);
    }

    void picturesAreWholeOrMissing()
    {
        DiskWorld world;
        const DriverApi driver("libtarvovek.so");
        const sdk::DeviceHandle device = opened(driver);
        const fs::path picture = world.disk().folder() / "photo.jpg";
        for (int pages = 0; pages < 2; ++pages) {
            world.disk().fill(pages);
            const auto names = filesOf(world.disk().folder());
            QCOMPARE(readIdCard(driver, device, 4, picture), kFailed);
            QCOMPARE(filesOf(world.disk().folder()), names);
        }
        world.disk().empty();
        QCOMPARE(readIdCard(driver, device, 4, picture), 0);
        QVERIFY(fs::file_size(picture) > 4096);
        driver.vek_close(device, 0);
    }

    /// At most the line that did not fit is damaged.
    void traceGoesOn()
    {
        DiskWorld world;
        const fs::path trace = world.disk().folder() / "trace.jsonl";
        qputenv("UNIFOLD_TRACE", trace.c_str());
        {
            const DriverApi driver("libtarvovek.so");
            const sdk::DeviceHandle device = opened(driver);
            qunsetenv("UNIFOLD_TRACE");
            world.disk().fill();
            for (int i = 0; i < 30; ++i)
                QCOMPARE(driver.vek_icc_status(device, sdk::kSlotContact), 2);
            world.disk().empty();
            QCOMPARE(driver.vek_beep(device, 1, 1, 1), 0);
            QCOMPARE(driver.vek_close(device, 0), 0);
        }
        QFile file(QString::fromStdString(trace));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArrayList damaged;
        QStringList calls;
        for (const QByteArray &line : file.readAll().split('\n')) {
            const QJsonObject event = QJsonDocument::fromJson(line).object();
            if (event.isEmpty() && !line.isEmpty())
                damaged << line;
            if (event["event"] == "call")
                calls << event["call"].toString();
        }
        QVERIFY2(damaged.size() <= 1, damaged.join('\n').constData());
        QCOMPARE(calls.mid(calls.size() - 2), QStringList({"vek_beep", "vek_close"}));
        QVERIFY(calls.count("vek_icc_status") < 30);
    }

private:
    /// A device with the sector of the value blocks open and the contact card powered.
    static sdk::DeviceHandle opened(const DriverApi &driver, const char *name = nullptr)
    {
        const sdk::DeviceHandle device = driver.vek_open(name, 0, kBaud);
        std::array<char, sdk::kAtrSize> atr{};
        std::uint32_t length = 0;
        if (device == 0 || openSector(driver, device, 4) != 0 ||
            driver.vek_icc_poweron(device, sdk::kSlotContact, 0, atr.data(), &length) != 0)
            qFatal("the device does not work");
        return device;
    }

    /// The disk is full from the moment between the swipe and the write.
    int performWithSwipe(DiskWorld &world, const DriverApi &driver, sdk::DeviceHandle device,
                         const Operation &operation, bool full)
    {
        m_stripe = world.tray().card(kStripeCard);
        int result = 1;
        std::thread caller([&] { result = perform(driver, device, operation); });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        {
            const auto held = world.tray().lock();
            const drivers::cards::StripeCard card(m_stripe);
            world.tray().update(held, [&](auto &state) { state.swipe(kStripeCard, card.tracks()); });
            if (full)
                world.disk().fill();
        }
        caller.join();
        return result;
    }

    static int readIdCard(const DriverApi &driver, sdk::DeviceHandle device, std::uint32_t flags, const fs::path &photo)
    {
        std::array<char, sdk::kIdInfoSize> info{};
        std::array<char, sdk::kIdExtraSize> extra{};
        return driver.vek_idcr_getinfo(device, flags, 0, 1, info.data(), extra.data(), photo.c_str(), "", "");
    }

    static QStringList filesOf(const fs::path &folder)
    {
        return QDir(QString::fromStdString(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    /// Makes the Mifare card's file a few pages long.
    static void enlarge(Tray &tray)
    {
        nlohmann::json card = tray.card(kMifareCard);
        card["title"] = std::string(10000, 'x');
        tray.saveCard(tray.lock(), kMifareCard, card);
    }

    std::string m_problem;
    nlohmann::json m_stripe;
};

int main(int argc, char **argv)
{
    return runOnOwnMounts<TestFullDisk>(argc, argv);
}
#include "test_full_disk.moc"
