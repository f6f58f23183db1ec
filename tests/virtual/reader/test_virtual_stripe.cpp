// The magnetic stripe through the C interface.
#include "drivers/core/return_codes.h"
#include "drivers/virtual/reader/card_models.h"
#include "tests/virtual/support/tray_world.h"

#include <QElapsedTimer>
#include <QtTest>

#include <array>
#include <thread>

using namespace drivers;
using tray::Slot;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

class TestVirtualStripe : public QObject {
    Q_OBJECT

private slots:
    void sessionSeesTheSwipe();
    void sessionSeesOnlyWhatCameAfterItsStart();
    void everyProgramSeesTheSwipe();
    void emptyStripeIsNine();
    void keyboardModeHidesSwipes();
    void writeWaitsForTheSwipe();
    void writeRefusesWhatAStripeCannotHold();
    void getKeepsToItsBuffers();

private:
    int session(const char *name, sdk::DeviceHandle device) { return m_library.entry<sdk::MsrSession>(name)(device); }
    int start(sdk::DeviceHandle device) { return session("vek_msr_qm_start", device); }
    int status(sdk::DeviceHandle device) { return session("vek_msr_qm_status", device); }
    int stop(sdk::DeviceHandle device) { return session("vek_msr_qm_stop", device); }
    int mode(sdk::DeviceHandle device, int value)
    {
        return m_library.entry<sdk::MsrModeSwitch>("vek_msr_mode_switch")(device, value);
    }
    int get(sdk::DeviceHandle device)
    {
        std::array<std::array<char, sdk::kTrackSize>, 3> tracks{};
        const int result =
            m_library.entry<sdk::MsrGet>("vek_msr_qm_get")(device, tracks[0].data(), tracks[1].data(), tracks[2].data(),
                                                           m_lengths.data(), &m_lengths[1], &m_lengths[2]);
        m_tracks = {tracks[0].data(), tracks[1].data(), tracks[2].data()};
        return result;
    }
    int write(sdk::DeviceHandle device, int selection, const char *one, const char *two, const char *three,
              int timeoutMs)
    {
        return m_library.entry<sdk::MsrWrite>("vek_msr_write")(device, selection, 0, one, two, three, timeoutMs);
    }
    static void swipe(TrayWorld &world) { reader::swipe(world.tray(), world.cardIn(Slot::Stripe)); }
    static void blank(TrayWorld &world)
    {
        const std::string id = world.cardIn(Slot::Stripe);
        nlohmann::json card = world.tray().card(id);
        card["tracks"] = nlohmann::json::object();
        world.tray().saveCard(world.tray().lock(), id, card);
    }

    DriverLibrary m_library;
    std::array<std::string, 3> m_tracks;
    std::array<int, 3> m_lengths{};
};

void TestVirtualStripe::sessionSeesTheSwipe()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(start(device), 0);
    QCOMPARE(status(device), 0);
    QCOMPARE(get(device), static_cast<int>(kNoCard));
    swipe(world);
    QCOMPARE(status(device), 1);
    QCOMPARE(get(device), 0);
    const nlohmann::json tracks = world.tray().card(world.cardIn(Slot::Stripe)).at("tracks");
    for (std::size_t i = 0; i < 3; ++i) {
        QCOMPARE(m_tracks.at(i), tracks.value(std::to_string(i + 1), std::string()));
        QCOMPARE(static_cast<std::size_t>(m_lengths.at(i)), m_tracks.at(i).size());
    }
    QVERIFY(!m_tracks[1].empty());
    QCOMPARE(stop(device), 0);
    QCOMPARE(status(device), 0);
    QCOMPARE(stop(device), 0);
}

void TestVirtualStripe::sessionSeesOnlyWhatCameAfterItsStart()
{
    TrayWorld world;
    OpenDevice device(m_library);
    swipe(world);
    QCOMPARE(status(device), 0);
    QCOMPARE(start(device), 0);
    QCOMPARE(status(device), 0);
    world.tray().reset();
    QCOMPARE(status(device), 0);
    swipe(world);
    QCOMPARE(status(device), 1);
    QCOMPARE(start(device), 0);
    QCOMPARE(status(device), 0);
}

void TestVirtualStripe::everyProgramSeesTheSwipe()
{
    TrayWorld world;
    OpenDevice device(m_library);
    OpenDevice other(m_library, "VCOM1", 9600);
    QCOMPARE(start(device), 0);
    QCOMPARE(start(other), 0);
    swipe(world);
    for (int i = 0; i < 5; ++i)
        swipe(world);
    QCOMPARE(status(device), 1);
    QCOMPARE(status(other), 1);
}

void TestVirtualStripe::emptyStripeIsNine()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const nlohmann::json card = world.tray().card(world.cardIn(Slot::Stripe));
    blank(world);
    QCOMPARE(start(device), 0);
    swipe(world);
    QCOMPARE(status(device), 9);
    QCOMPARE(status(device), 9);
    QCOMPARE(get(device), 0);
    QCOMPARE(m_lengths, (std::array<int, 3>{}));
    world.tray().saveCard(world.tray().lock(), world.cardIn(Slot::Stripe), card);
    swipe(world);
    QCOMPARE(status(device), 1);
}

void TestVirtualStripe::keyboardModeHidesSwipes()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(mode(device, 0), 0);
    QCOMPARE(start(device), 0);
    swipe(world);
    QCOMPARE(status(device), 0);
    QCOMPARE(mode(device, 1), 0);
    QCOMPARE(status(device), 0);
    swipe(world);
    QCOMPARE(status(device), 1);
    QCOMPARE(mode(device, 2), static_cast<int>(kBadArgument));
}

void TestVirtualStripe::writeWaitsForTheSwipe()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(write(device, 2, "", "1234=5678", "", 200), static_cast<int>(kTimeout));
    QVERIFY(timer.elapsed() >= 200 && timer.elapsed() < 3000);

    const nlohmann::json before = world.tray().card(world.cardIn(Slot::Stripe)).at("tracks");
    std::thread person([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        swipe(world);
    });
    const int result = write(device, 23, "", "1234=5678", "99=00", 5000);
    person.join();
    QCOMPARE(result, 0);
    const nlohmann::json after = world.tray().card(world.cardIn(Slot::Stripe)).at("tracks");
    QCOMPARE(after.at("2").get<std::string>(), std::string("1234=5678"));
    QCOMPARE(after.at("3").get<std::string>(), std::string("99=00"));
    QCOMPARE(after.value("1", std::string()), before.value("1", std::string()));
}

void TestVirtualStripe::writeRefusesWhatAStripeCannotHold()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QElapsedTimer timer;
    timer.start();
    for (const int selection : {0, 4, 21, 11, 124, -1, 1234})
        QCOMPARE(write(device, selection, "A", "1", "1", 5000), static_cast<int>(kBadArgument));
    QCOMPARE(write(device, 2, "", "letters", "", 5000), static_cast<int>(kBadArgument));
    QCOMPARE(write(device, 2, "", "", "", 5000), static_cast<int>(kBadArgument));
    QCOMPARE(write(device, 2, "", nullptr, "", 5000), static_cast<int>(kBadArgument));
    QCOMPARE(write(device, 1, "lower", "", "", 5000), static_cast<int>(kBadArgument));
    QCOMPARE(write(device, 2, "", std::string(300, '1').c_str(), "", 5000), static_cast<int>(kBadArgument));
    QVERIFY(timer.elapsed() < 2000);
}

void TestVirtualStripe::getKeepsToItsBuffers()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(start(device), 0);
    swipe(world);
    int length = 0;
    std::array<char, sdk::kTrackSize> track{};
    const auto call = m_library.entry<sdk::MsrGet>("vek_msr_qm_get");
    QCOMPARE(call(device, track.data(), nullptr, track.data(), &length, &length, &length),
             static_cast<int>(kBadArgument));
    QCOMPARE(call(device, track.data(), track.data(), track.data(), &length, &length, nullptr),
             static_cast<int>(kBadArgument));
}

QTEST_GUILESS_MAIN(TestVirtualStripe)
#include "test_virtual_stripe.moc"
