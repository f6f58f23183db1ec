// The virtual reader keeps the contracts, and the check leaves its cards alone unless it may write.
#include "drivers/virtual/tray/tray.h"
#include "tests/tools/check/check_run.h"
#include "tests/virtual/support/tray_world.h"

#include <QtTest>

using check_test::CheckRun;
using check_test::runCheck;
using drivers::tray::Slot;
using virtual_test::TrayWorld;

namespace {

constexpr char kLibrary[] = "libtarvovek.so";

QMap<std::string, std::string> cardsOf(const drivers::tray::Tray &tray)
{
    QMap<std::string, std::string> cards;
    for (const std::string &id : tray.cardIds())
        cards[id] = tray.card(id).dump();
    return cards;
}

} // namespace

class TestOurDriversChecked : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_world.reset(); // takes its environment variable with it
        m_world = std::make_unique<TrayWorld>();
    }
    void freshTrayPasses_data();
    void freshTrayPasses();
    void changesNoCardUnlessAllowed();
    void keepsTimeoutsOnAnEmptyTray();

private:
    std::unique_ptr<TrayWorld> m_world;
};

void TestOurDriversChecked::freshTrayPasses_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("default device") << QStringList{};
    QTest::newRow("with writes") << QStringList{"--allow-writes"};
    QTest::newRow("serial") << QStringList{"--transport", "2"};
    QTest::newRow("PC/SC") << QStringList{"--transport", "3"};
    QTest::newRow("SDT") << QStringList{"--transport", "4"};
}

void TestOurDriversChecked::freshTrayPasses()
{
    QFETCH(QStringList, options);
    const CheckRun run = runCheck(QStringList{"--json", "--our-codes", kLibrary} + options);
    QVERIFY2(run.exitCode == 0, qPrintable(run.failures()));
    QCOMPARE(run.verdicts["library.names"], QString("pass"));
    QCOMPARE(run.verdicts["handle.closed.vek_icc_apdu"], QString("pass"));
    if (!options.contains("--transport")) {
        for (const char *call : {"vek_icc_apdu", "vek_ssse_get_user_info", "vek_idcr_getinfo", "vek_mifare_read_block"})
            QCOMPARE(run.verdicts[QString("call.") + call], QString("pass"));
    }
    if (options.contains("--allow-writes")) {
        for (const char *call :
             {"vek_mifare_decrease_value", "vek_mifare_change_key", "vek_pboc_get_card_info", "vek_pboc_get_arqc"})
            QCOMPARE(run.verdicts[QString("call.") + call], QString("pass"));
    }
}

void TestOurDriversChecked::changesNoCardUnlessAllowed()
{
    const auto before = cardsOf(m_world->tray());
    const bool keyboard = m_world->tray().state()->keyboardMode;
    QCOMPARE(runCheck({kLibrary}).exitCode, 0);
    QVERIFY(cardsOf(m_world->tray()) == before);
    QCOMPARE(m_world->tray().state()->keyboardMode, keyboard);
    QCOMPARE(runCheck({"--allow-writes", "--only", "call.*", kLibrary}).exitCode, 0);
    QVERIFY(cardsOf(m_world->tray()) != before);
}

void TestOurDriversChecked::keepsTimeoutsOnAnEmptyTray()
{
    for (const Slot slot : {Slot::Contact, Slot::Antenna, Slot::Psam4, Slot::IdPlate, Slot::Stripe})
        m_world->take(slot);
    const CheckRun run = runCheck({"--json", "--our-codes", "--allow-writes", "--only", "timeout.*", kLibrary});
    QVERIFY2(run.exitCode == 0, qPrintable(run.failures()));
    // The module's own number needs no card.
    QCOMPARE(run.with("not applicable"), QStringList{"timeout.vek_idcr_read_samid"});
    QCOMPARE(run.with("pass").size(), run.verdicts.size() - 1);
}

QTEST_GUILESS_MAIN(TestOurDriversChecked)
#include "test_our_drivers_checked.moc"
