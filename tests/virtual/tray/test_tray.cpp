// The tray's folder: laid out once, changed as a whole or not at all, by any number of programs.
#include "drivers/virtual/tray/embedded_files.h"
#include "drivers/virtual/tray/schema_check.h"
#include "tests/virtual/support/tray_world.h"

#include <QTest>

#include <array>
#include <csignal>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace drivers::tray;
using nlohmann::json;
using virtual_test::TrayWorld;
namespace fs = std::filesystem;

namespace {

void overwrite(const fs::path &file, const std::string &text)
{
    std::ofstream(file, std::ios::trunc) << text;
}

/// The text of the TrayError that an action throws; empty if it throws none.
template <typename Action>
std::string errorOf(Action action)
{
    try {
        action();
    } catch (const TrayError &error) {
        return error.what();
    }
    return {};
}

bool contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

/// Runs `work` in a process of its own. It never returns there.
template <typename Work>
pid_t inChild(Work work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        int code = 1;
        try {
            work();
            code = 0;
        } catch (...) {
            code = 1;
        }
        ::_exit(code);
    }
    return child;
}

} // namespace

class TestTray : public QObject {
    Q_OBJECT

private slots:
    void isLaidOutAtFirstUse();
    void findsItsFolder();
    void keepsWhatWasThere();
    void resetForgetsTheRest();
    void tellsWhereAFileIsBroken();
    void refusesWhatIsNoCardId();
    void refusesACardThatDoesNotFitItsSlot();
    void cardLiesInOneSlotOnly();
    void seesEveryChangeOfAnother();
    void losesNoChangeOfSeveralPrograms();
    void writesCardsWholeUnderKill();
};

void TestTray::isLaidOutAtFirstUse()
{
    TrayWorld world;
    for (const fs::path &folder : {world.tray().folder(), world.tray().folder() / "cards"})
        QCOMPARE(fs::status(folder).permissions(), fs::perms::owner_all);
    const auto owner = fs::perms::owner_read | fs::perms::owner_write;
    QCOMPARE(fs::status(world.tray().folder() / "tray.json").permissions(), owner);
    QCOMPARE(world.tray().cardIds().size(), embeddedDeck().size());
    for (const std::string &id : world.tray().cardIds()) {
        QCOMPARE(fs::status(world.tray().cardFile(id)).permissions(), owner);
        QVERIFY(world.tray().card(id).is_object());
    }
    for (const Slot slot : kAllSlots) {
        const std::string card = world.cardIn(slot);
        QVERIFY2(!card.empty(), std::string(slotName(slot)).c_str());
        QVERIFY(slotTakesKind(slot, world.tray().card(card).at("kind").get<std::string>()));
    }
}

void TestTray::findsItsFolder()
{
    const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    qputenv("UNIFOLD_TRAY", "/some/where");
    QCOMPARE(trayFolder(), fs::path("/some/where"));
    qunsetenv("UNIFOLD_TRAY");
    qputenv("XDG_DATA_HOME", "/data");
    QCOMPARE(trayFolder(), fs::path("/data/unifold-bench/tray"));
    qputenv("XDG_DATA_HOME", "relative");
    QCOMPARE(trayFolder(), fs::path(qgetenv("HOME").toStdString()) / ".local/share/unifold-bench/tray");
    qputenv("XDG_DATA_HOME", dataHome);
}

void TestTray::keepsWhatWasThere()
{
    TrayWorld world;
    world.tray().update([](TrayState &state) {
        state.take(Slot::Antenna);
        state.beeps = 7;
        state.serial["VCOM1"] = {19200, 57600};
        state.faults.push_back(Fault{3, FaultKind::Code, "vek_open", {}, 2, 5, 1, 0, 0xFF});
    });
    Tray again(world.tray().folder());
    const auto state = again.state();
    QVERIFY(state->at(Slot::Antenna).card.empty());
    QCOMPARE(state->beeps, std::uint64_t{7});
    QCOMPARE(state->serial.at("VCOM1").inForce(), 57600);
    QCOMPARE(state->serial.at("VCOM1").stored, 19200);
    QCOMPARE(state->faults.size(), std::size_t{1});
    QCOMPARE(state->faults.front().call, std::string("vek_open"));
    QCOMPARE(state->faults.front().seen, std::uint64_t{1});
}

void TestTray::resetForgetsTheRest()
{
    TrayWorld world;
    Tray &tray = world.tray();
    const json first = toJson(*tray.state());
    const std::string sample = world.cardIn(Slot::Stripe);
    const json untouched = tray.card(sample);
    {
        const FolderLock held = tray.lock();
        tray.saveCard(held, "another", tray.card(world.cardIn(Slot::Antenna)));
        json changed = untouched;
        changed["title"] = "changed";
        tray.saveCard(held, sample, changed);
    }
    tray.put(Slot::Antenna, "another");
    overwrite(tray.folder() / "tray.json", "broken");
    tray.reset();
    QCOMPARE(tray.cardIds().size(), embeddedDeck().size());
    QVERIFY(tray.card(sample) == untouched);
    QCOMPARE(world.cardIn(Slot::Antenna), first.at("slots").at("antenna").at("card").get<std::string>());
}

void TestTray::tellsWhereAFileIsBroken()
{
    TrayWorld world;
    Tray &tray = world.tray();
    const fs::path stateFile = tray.folder() / "tray.json";
    std::string error;

    overwrite(stateFile, "{\n  \"slots\": oops\n}");
    error = errorOf([&] { tray.state(); });
    QVERIFY2(contains(error, stateFile.string()) && contains(error, "line 2"), error.c_str());
    error = errorOf([&] { tray.state(); });
    QVERIFY2(contains(error, "line 2"), "refused again by the next look");

    overwrite(stateFile, R"({"slots": {"contact": {"card": "../x", "inserted": 1}}})");
    error = errorOf([&] { tray.state(); });
    QVERIFY2(contains(error, stateFile.string()) && contains(error, "[contact][card]"), error.c_str());
    tray.reset();

    const std::string id = world.cardIn(Slot::Antenna);
    const json card = tray.card(id);
    overwrite(tray.cardFile(id), card.dump().substr(0, 100));
    error = errorOf([&] { tray.card(id); });
    QVERIFY2(contains(error, tray.cardFile(id).string()) && contains(error, "line 1"), error.c_str());

    json wrong = card;
    wrong["blocks"][5] = "no block";
    error = errorOf([&] { tray.saveCard(tray.lock(), id, wrong); });
    QVERIFY2(contains(error, "[blocks][5]"), error.c_str());
    wrong = card;
    wrong["kind"] = "spoon";
    error = errorOf([&] { tray.saveCard(tray.lock(), id, wrong); });
    QVERIFY2(contains(error, "spoon"), error.c_str());
}

void TestTray::refusesWhatIsNoCardId()
{
    TrayWorld world;
    for (const char *id : {"", "../tray", "a/b", ".hidden", "Upper", "a b", "\xE5\x8D\xA1"}) {
        QVERIFY2(!isCardId(id), id);
        QVERIFY2(!errorOf([&] { world.tray().card(id); }).empty(), id);
    }
    QVERIFY(isCardId("id-card_a.2"));
    QVERIFY(!isCardId(std::string(65, 'a')));
}

void TestTray::refusesACardThatDoesNotFitItsSlot()
{
    TrayWorld world;
    const std::string stripe = world.cardIn(Slot::Stripe);
    const std::string error = errorOf([&] { world.tray().put(Slot::Contact, stripe); });
    QVERIFY2(contains(error, stripe) && contains(error, "contact"), error.c_str());
    QCOMPARE(world.cardIn(Slot::Stripe), stripe);
}

void TestTray::cardLiesInOneSlotOnly()
{
    TrayWorld world;
    const std::string card = world.cardIn(Slot::Contact);
    world.tray().put(Slot::Psam1, card);
    QCOMPARE(world.cardIn(Slot::Psam1), card);
    QVERIFY(world.cardIn(Slot::Contact).empty());
    world.tray().removeCard(card);
    QVERIFY(world.cardIn(Slot::Psam1).empty());
    QVERIFY(!fs::exists(world.tray().cardFile(card)));
}

void TestTray::seesEveryChangeOfAnother()
{
    TrayWorld world;
    Tray other(world.tray().folder());
    // Two changes between two looks give the old file's inode number back within one tick of the file system's clock.
    for (std::uint64_t count = 1; count < 200; ++count) {
        for (int twice = 0; twice < 2; ++twice)
            other.update([count, twice](TrayState &state) { state.beeps = 2 * count + (twice != 0 ? 1U : 0U); });
        QCOMPARE(world.tray().state()->beeps, 2 * count + 1);
    }
}

void TestTray::losesNoChangeOfSeveralPrograms()
{
    TrayWorld world;
    constexpr std::uint64_t kRounds = 100;
    const auto count = [folder = world.tray().folder()] {
        Tray tray(folder);
        for (std::uint64_t i = 0; i < kRounds; ++i)
            tray.update([](TrayState &state) { ++state.beeps; });
    };
    const std::array<pid_t, 2> children{inChild(count), inChild(count)};
    std::array<std::thread, 2> threads{std::thread(count), std::thread(count)};
    for (std::thread &thread : threads)
        thread.join();
    for (const pid_t child : children) {
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    }
    QCOMPARE(world.tray().state()->beeps, 4 * kRounds);
}

void TestTray::writesCardsWholeUnderKill()
{
    TrayWorld world;
    Tray &tray = world.tray();
    const std::string id = world.cardIn(Slot::Antenna);
    json before = tray.card(id);
    json after = before;
    after["blocks"][4] = std::string(32, 'A');
    for (int round = 0; round < 60; ++round) {
        const pid_t child = inChild([&] {
            Tray own(tray.folder());
            for (;;) {
                own.saveCard(own.lock(), id, after);
                own.saveCard(own.lock(), id, before);
            }
        });
        std::this_thread::sleep_for(std::chrono::microseconds(500 + 371 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const json found = tray.card(id);
        QVERIFY(found == before || found == after);
    }
    // What killed programs leave behind is no card, and does not pile up.
    QCOMPARE(tray.cardIds().size(), embeddedDeck().size());
    const auto entries = std::distance(fs::directory_iterator(tray.folder() / "cards"), fs::directory_iterator());
    QVERIFY(static_cast<std::size_t>(entries) <= embeddedDeck().size() + 1);
}

QTEST_GUILESS_MAIN(TestTray)
#include "test_tray.moc"
