// The tray's folder: laid out once, changed as a whole or not at all, by any number of programs.
#include "drivers/virtual/tray/embedded_files.h"
#include "drivers/virtual/tray/schema_check.h"
#include "tests/virtual/support/tray_world.h"

#include <QTest>

#include <array>
#include <csignal>
#include <fstream>
#include <sys/stat.h>
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
    void keepsCardsWhenTheStateIsLost();
    void leavesAFolderOfOtherThingsAlone();
    void resetForgetsTheRest();
    void tellsWhereAFileIsBroken();
    void takesTheLongestTexts();
    void refusesHostileFiles_data();
    void refusesHostileFiles();
    void refusesFilesThatAreNone();
    void refusesWhatIsNoCardId();
    void refusesACardThatDoesNotFitItsSlot();
    void cardLiesInOneSlotOnly();
    void seesEveryChangeOfAnother();
    void countsNoFurtherThanItCanRead();
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

void TestTray::keepsCardsWhenTheStateIsLost()
{
    TrayWorld world;
    const fs::path folder = world.tray().folder();
    const std::string id = world.cardIn(Slot::Antenna);
    json card = world.tray().card(id);
    card["title"] = "mine";
    world.tray().saveCard(world.tray().lock(), id, card);
    fs::remove(folder / "tray.json");
    Tray again(folder);
    QVERIFY(again.card(id) == card);
    QCOMPARE(again.state()->at(Slot::Antenna).card, id);
}

void TestTray::leavesAFolderOfOtherThingsAlone()
{
    const QTemporaryDir other;
    const fs::path folder = other.path().toStdString();
    const auto everyone = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec;
    fs::permissions(folder, everyone);
    overwrite(folder / "letter.txt", "dear");
    const std::string error = errorOf([&] { const Tray tray(folder); });
    QVERIFY2(contains(error, folder.string()) && contains(error, "letter.txt"), error.c_str());
    QCOMPARE(fs::status(folder).permissions(), everyone);
    QCOMPARE(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), std::ptrdiff_t{1});
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
    QVERIFY2(contains(error, stateFile.string()) && contains(error, ": /slots/contact/card: "), error.c_str());
    tray.reset();

    const std::string id = world.cardIn(Slot::Antenna);
    const json card = tray.card(id);
    overwrite(tray.cardFile(id), card.dump().substr(0, 100));
    error = errorOf([&] { tray.card(id); });
    QVERIFY2(contains(error, tray.cardFile(id).string()) && contains(error, "line 1"), error.c_str());

    json wrong = card;
    wrong["blocks"][5] = "no block";
    error = errorOf([&] { tray.saveCard(tray.lock(), id, wrong); });
    QVERIFY2(contains(error, ": /blocks/5: "), error.c_str());
    wrong = card;
    wrong["kind"] = "spoon";
    error = errorOf([&] { tray.saveCard(tray.lock(), id, wrong); });
    QVERIFY2(contains(error, ": /kind: ") && contains(error, "spoon"), error.c_str());
    wrong.erase("kind");
    error = errorOf([&] { tray.saveCard(tray.lock(), id, wrong); });
    QVERIFY2(contains(error, ": /kind: "), error.c_str());
    wrong = card;
    wrong.erase("blocks");
    error = errorOf([&] { tray.saveCard(tray.lock(), id, wrong); });
    QVERIFY2(contains(error, ": /: ") && contains(error, "blocks"), error.c_str());
}

void TestTray::takesTheLongestTexts()
{
    // The longest file that a card can have, and half a kilobyte with blanks between the bytes.
    json card = {{"kind", "cpu"},
                 {"atr", "3B00"},
                 {"applications", {{{"type", "files"}, {"files", {{{"id", "0001"}, {"content", ""}}}}}}}};
    json &content = card["applications"][0]["files"][0]["content"];
    content = std::string(std::size_t{2} * 32768, 'A');
    checkCard(card, "card");
    std::string blanks;
    for (int i = 0; i < 512; ++i)
        blanks += "A5 ";
    content = blanks;
    checkCard(card, "card");
}

void TestTray::refusesHostileFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("reason");
    const auto repeated = [](const char *part, int times) { return QByteArray(part).repeated(times); };
    const QByteArray longText = repeated("A", 1000000);
    const QByteArray cpu = R"({"kind":"cpu","atr":"3B00","applications":[)";
    QTest::newRow("directories of directories")
        << cpu + R"({"type":"files","directories":[)" + repeated(R"({"id":"DF01","directories":[)", 20000) +
               repeated("]}", 20000) + "]}]}"
        << QByteArray("levels deep");
    QTest::newRow("lists of lists") << repeated("[", 200000) + repeated("]", 200000) << QByteArray("kind");
    QTest::newRow("lists without end") << repeated("[", 200000) << QByteArray("line 1, column 200001");
    QTest::newRow("file content") << cpu + R"({"type":"files","files":[{"id":"0001","content":"Z)" + longText +
                                         R"("}]}]})"
                                  << QByteArray(": /applications/0");
    QTest::newRow("answer to reset") << R"({"kind":"cpu","applications":[],"atr":"3B)" + longText + R"(Z"})"
                                     << QByteArray(": /atr: ");
    QTest::newRow("key of blanks") << cpu + R"({"type":"psam","keys":[{"index":1,"key":"00)" + repeated(" ", 1000000) +
                                          R"("}]}]})"
                                   << QByteArray(": /applications/0");
    for (const char *track : {"1", "2", "3"}) {
        QTest::newRow(track) << R"({"kind":"stripe","tracks":{")" + QByteArray(track) + R"(":"1)" +
                                    repeated("0", 1000000) + R"("}})"
                             << ": /tracks/" + QByteArray(track) + ": ";
    }
    QTest::newRow("fingerprint") << R"({"kind":"id","letter":"A","fields":{},"fingerprint":"Z)" + longText + R"("})"
                                 << QByteArray(": /fingerprint: ");
}

void TestTray::refusesHostileFiles()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, reason);
    TrayWorld world;
    const fs::path file = world.tray().cardFile("hostile");
    overwrite(file, text.toStdString());
    const std::string error = errorOf([&] { world.tray().card("hostile"); });
    QVERIFY2(contains(error, file.string()) && contains(error, reason.toStdString()), error.substr(0, 1000).c_str());
}

void TestTray::refusesFilesThatAreNone()
{
    TrayWorld world;
    const fs::path file = world.tray().cardFile("odd");
    const auto error = [&] { return errorOf([&] { world.tray().card("odd"); }); };
    QCOMPARE(::mkfifo(file.c_str(), 0600), 0); // nobody writes into it
    QVERIFY2(contains(error(), file.string()), error().c_str());
    fs::remove(file);
    fs::create_directory(file);
    QVERIFY2(contains(error(), file.string() + ": Is a directory"), error().c_str());
    fs::remove(file);
    fs::create_symlink("/dev/zero", file);
    QVERIFY2(contains(error(), file.string()), error().c_str());
    fs::remove(file);
    overwrite(file, "{}");
    fs::resize_file(file, std::uintmax_t{1} << 32U);
    QVERIFY2(contains(error(), file.string() + ": File too large"), error().c_str());
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

void TestTray::countsNoFurtherThanItCanRead()
{
    constexpr std::uint64_t kMost = 0x7FFFFFFFFFFFFFFF;
    TrayWorld world;
    world.tray().update([](TrayState &state) {
        state.insertions = state.powerCycles = state.beeps = state.beepMs = state.swipeCount = kMost;
        state.faults.push_back({1, FaultKind::Code, "vek_beep", "", kMost, 1, kMost - 1});
    });
    world.tray().update([](TrayState &state) {
        state.put(Slot::Contact, "file-card");
        state.cyclePower();
        state.beepMs += 50;
        ++state.beeps;
        state.swipe("stripe-empty", {});
        for (int i = 0; i < 3; ++i)
            state.faults.front().strike();
    });
    const auto state = world.tray().state();
    QCOMPARE(state->at(Slot::Contact).inserted, kMost);
    QCOMPARE(state->swipes.back().number, kMost);
    QCOMPARE(state->faults.front().seen, kMost);
    for (const std::uint64_t count :
         {state->insertions, state->powerCycles, state->beeps, state->beepMs, state->swipeCount})
        QCOMPARE(count, kMost);
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
