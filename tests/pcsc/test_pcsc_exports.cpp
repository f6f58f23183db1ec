// The PC/SC driver as a library: its 85 entry points, handles that were never given out, and leaving memory. No daemon
// is needed.
#include "drivers/core/return_codes.h"
#include "tests/support/driver_api.h"

#include <QDir>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <memory>

using namespace testsupport;
using namespace drivers;

namespace {

QList<QByteArray> loadedLibraries()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) ? maps.readAll().split('\n') : QList<QByteArray>();
}

bool isLoaded(const QByteArray &library)
{
    for (const QByteArray &line : loadedLibraries()) {
        if (line.contains(library))
            return true;
    }
    return false;
}

int threadCount()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

} // namespace

class TestPcscExports : public QObject {
    Q_OBJECT

private slots:
    void init() { m_api = std::make_unique<DriverApi>("libtarvozent.so"); }
    void cleanup() { m_api.reset(); }
    void exportsAllEntryPoints();
    void uncalledEntryPointsAreNotSupported();
    void handlesNeverGivenOut_data();
    void handlesNeverGivenOut();
    void leavesMemoryAndNoThread();

private:
    std::unique_ptr<DriverApi> m_api;
};

void TestPcscExports::exportsAllEntryPoints()
{
    int found = 0;
#define COUNT_CALLED(name, Contract) found += m_api->symbol(#name) != nullptr ? 1 : 0;
#define COUNT_UNCALLED(name) found += m_api->symbol(#name) != nullptr ? 1 : 0;
    UNIFOLD_ENTRY_POINTS(COUNT_CALLED, COUNT_UNCALLED)
    QCOMPARE(found, 85);
}

void TestPcscExports::uncalledEntryPointsAreNotSupported()
{
    int asked = 0;
#define SKIP_CALLED(name, Contract)
#define ASK_UNCALLED(name)                                                                                             \
    QCOMPARE(reinterpret_cast<int (*)()>(m_api->symbol(#name))(), int(kNotSupported));                                 \
    ++asked;
    UNIFOLD_ENTRY_POINTS(SKIP_CALLED, ASK_UNCALLED)
    QCOMPARE(asked, 47);
}

void TestPcscExports::handlesNeverGivenOut_data()
{
    QTest::addColumn<qint64>("handle");
    QTest::newRow("0") << qint64(0);
    QTest::newRow("1") << qint64(1);
    QTest::newRow("-1") << qint64(-1);
    QTest::newRow("an address") << qint64(reinterpret_cast<std::intptr_t>(m_api.get()));
    QTest::newRow("greatest") << std::numeric_limits<qint64>::max();
    QTest::newRow("least") << std::numeric_limits<qint64>::min();
}

void TestPcscExports::handlesNeverGivenOut()
{
    QFETCH(qint64, handle);
    const sdk::DeviceHandle h = handle;
    const int bad = kBadHandle;
    char text[16384] = {};
    std::uint8_t byte = 0;
    std::uint16_t length16 = 0;
    std::uint32_t length32 = 0;
    int number = 0;
    QCOMPARE(m_api->vek_close(h, 0), bad);
    QCOMPARE(m_api->vek_set_baud(h, 9600, 0), bad);
    QCOMPARE(m_api->vek_firm_version(h, text, &length32), bad);
    QCOMPARE(m_api->vek_beep(h, 1, 1, 3), bad);
    QCOMPARE(m_api->vek_msr_mode_switch(h, 1), bad);
    QCOMPARE(m_api->vek_msr_qm_start(h), bad);
    QCOMPARE(m_api->vek_msr_qm_status(h), bad);
    QCOMPARE(m_api->vek_msr_qm_get(h, text, text, text, &number, &number, &number), bad);
    QCOMPARE(m_api->vek_msr_qm_stop(h), bad);
    QCOMPARE(m_api->vek_msr_write(h, 123, 0, "1", "2", "3", 0), bad);
    QCOMPARE(m_api->vek_icc_poweron(h, 0, 0, text, &length32), bad);
    QCOMPARE(m_api->vek_icc_poweroff(h, 0, 0), bad);
    QCOMPARE(m_api->vek_icc_status(h, 0), bad);
    QCOMPARE(m_api->vek_icc_apdu(h, 0, "00A40000", 8, text, &length32), bad);
    QCOMPARE(m_api->vek_probe_rf(h, &byte, &byte), bad);
    QCOMPARE(m_api->vek_pboc_get_card_info(h, 0, 0, "", "A", &byte, text, &length16, 1), bad);
    QCOMPARE(m_api->vek_pboc_get_arqc(h, 0, 0, "", 10, "", 0, text, &length16, 0), bad);
    QCOMPARE(m_api->vek_idcr_getinfo(h, 0, 0, 1, text, text, "", "", ""), bad);
    QCOMPARE(m_api->vek_idcr_read_samid(h, 0, text), bad);
    QCOMPARE(m_api->vek_idcr_read_uid(h, 0, text), bad);
    QCOMPARE(m_api->vek_idcr_read_dn(h, 0, text), bad);
    QCOMPARE(m_api->vek_idcr_read_emid(h, 0, text), bad);
    QCOMPARE(m_api->vek_idcr_set_separation('|'), int(kNotSupported));
    QCOMPARE(m_api->vek_idcr_transive(h, 0, 0, 0, &length32, reinterpret_cast<std::uint8_t *>(text), 8192, &number),
             bad);
    QCOMPARE(m_api->vek_mifare_request(h, 0, text, text), bad);
    QCOMPARE(m_api->vek_mifare_authentication(h, 0, 'A', "FFFFFFFFFFFF"), bad);
    QCOMPARE(m_api->vek_mifare_read_block(h, 0, text), bad);
    QCOMPARE(m_api->vek_mifare_write_block(h, 0, text), bad);
    QCOMPARE(m_api->vek_mifare_init_value(h, 0, 0), bad);
    QCOMPARE(m_api->vek_mifare_read_value(h, 0, &number), bad);
    QCOMPARE(m_api->vek_mifare_increase_value(h, 0, 0), bad);
    QCOMPARE(m_api->vek_mifare_decrease_value(h, 0, 0), bad);
    QCOMPARE(m_api->vek_mifare_change_key(h, 0, 'A', "FFFFFFFFFFFF"), bad);
    QCOMPARE(m_api->vek_ssse_get_issuer_info(h, 0, 0, text, 1), bad);
    QCOMPARE(m_api->vek_ssse_get_user_info(h, 0, 0, text, 1), bad);
    QVERIFY(std::all_of(std::begin(text), std::end(text), [](char c) { return c == 0; }));
}

void TestPcscExports::leavesMemoryAndNoThread()
{
    m_api.reset();
    const int threadsBefore = threadCount();
    m_api = std::make_unique<DriverApi>("libtarvozent.so");
    char *list = nullptr;
    m_api->vek_enum_devices(sdk::kTransportPcsc, &list);
    m_api->vek_open(nullptr, 0, 0);
    QVERIFY(isLoaded("libtarvozent.so"));
    m_api.reset();
    QVERIFY(!isLoaded("libtarvozent.so"));
    QCOMPARE(threadCount(), threadsBefore);
}

QTEST_APPLESS_MAIN(TestPcscExports)
#include "test_pcsc_exports.moc"
