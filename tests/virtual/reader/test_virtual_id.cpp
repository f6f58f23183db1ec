// The resident ID card module through the C interface.
#include "drivers/core/return_codes.h"
#include "tests/virtual/support/tray_world.h"

#include <QElapsedTimer>
#include <QImage>
#include <QtTest>

#include <array>

using namespace drivers;
using tray::Slot;
using virtual_test::DriverLibrary;
using virtual_test::OpenDevice;
using virtual_test::TrayWorld;

namespace {

// The bench's options at start: text, photo, composite, read again.
constexpr std::uint32_t kStartOptions = 0x1E;

} // namespace

class TestVirtualId : public QObject {
    Q_OBJECT

private slots:
    void startValuesSucceed();
    void optionsAreHonoured();
    void everySampleCardIsRead();
    void separatorHoldsForTheLibrary();
    void readingGivesUpAtTheTimeout();
    void withoutReadAgainShowsTheLastReading();
    void moduleTexts();
    void passThrough();
    void refusesBadPaths();

private:
    int read(sdk::DeviceHandle device, std::uint32_t options, std::uint32_t timeoutMs = 1000)
    {
        std::array<char, sdk::kIdInfoSize> info{};
        std::array<char, sdk::kIdExtraSize> extra{};
        const int result = m_library.entry<sdk::IdcrGetInfo>("vek_idcr_getinfo")(
            device, options, timeoutMs, 1, info.data(), extra.data(), qPrintable(picture("photo")),
            qPrintable(picture("front")), qPrintable(picture("back")));
        m_info = info.data();
        m_extra = extra.data();
        return result;
    }
    template <std::size_t Size>
    int text(const char *name, sdk::DeviceHandle device, std::uint32_t timeoutMs = 200)
    {
        std::array<char, Size> out{};
        const int result = m_library.entry<sdk::IdcrReadText>(name)(device, timeoutMs, out.data());
        m_info = out.data();
        return result;
    }
    int separate(char separator)
    {
        return m_library.entry<sdk::IdcrSetSeparation>("vek_idcr_set_separation")(separator);
    }
    QString picture(const char *name) const { return m_pictures.filePath(QString(name) + ".jpg"); }
    void removePictures() const
    {
        for (const char *name : {"photo", "front", "back"})
            QFile::remove(picture(name));
    }

    DriverLibrary m_library;
    QTemporaryDir m_pictures;
    QByteArray m_info;
    QByteArray m_extra;
};

void TestVirtualId::startValuesSucceed()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(read(device, kStartOptions, 5000), 0);
    QVERIFY2(m_info.startsWith("A|"), m_info.constData());
    QVERIFY(m_extra.isEmpty());
    QCOMPARE(QImage(picture("photo")).size(), QSize(102, 126));
    QCOMPARE(QImage(picture("front")).size(), QSize(404, 257));
    QCOMPARE(QImage(picture("back")).size(), QSize(404, 257));
    QCOMPARE(QFile::permissions(picture("photo")) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    OpenDevice sdt(m_library, "SDT1001", 9600);
    QCOMPARE(read(sdt, kStartOptions), 0);
}

void TestVirtualId::optionsAreHonoured()
{
    TrayWorld world;
    OpenDevice device(m_library);
    removePictures();
    QCOMPARE(read(device, 0x02), 0);
    QVERIFY(!m_info.isEmpty());
    QVERIFY(!QFile::exists(picture("photo")) && !QFile::exists(picture("front")));
    QCOMPARE(read(device, 0x04), 0);
    QVERIFY(m_info.isEmpty());
    QVERIFY(QFile::exists(picture("photo")) && !QFile::exists(picture("front")));
    removePictures();
    QCOMPARE(read(device, 0x08), 0);
    QVERIFY(!QFile::exists(picture("photo")) && QFile::exists(picture("back")));
}

void TestVirtualId::everySampleCardIsRead()
{
    TrayWorld world;
    OpenDevice device(m_library);
    std::string letters;
    for (const std::string &id : world.tray().cardIds()) {
        if (world.tray().card(id).at("kind") != "id")
            continue;
        world.tray().put(Slot::IdPlate, id);
        QCOMPARE(read(device, kStartOptions | 0x01), 0);
        letters += m_info.at(0);
        QVERIFY2(m_info.count('|') >= 10 && m_info.count('|') < 20, m_info.constData());
    }
    for (const char letter : {'A', 'I', 'J', 'Y'})
        QVERIFY(letters.find(letter) != std::string::npos);
    QVERIFY(letters.size() >= 5);
}

void TestVirtualId::separatorHoldsForTheLibrary()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(separate('#'), 0);
    QCOMPARE(read(device, 0x02), 0);
    QVERIFY(m_info.startsWith("A#") && !m_info.contains('|'));
    OpenDevice other(m_library);
    QCOMPARE(read(other, 0x02), 0);
    QVERIFY(m_info.startsWith("A#"));
    for (const char refused : {'\0', '\n', '\xE5'})
        QCOMPARE(separate(refused), static_cast<int>(kBadArgument));
    QCOMPARE(separate('|'), 0);
    QCOMPARE(read(device, 0x02), 0);
    QVERIFY(m_info.startsWith("A|"));
}

void TestVirtualId::readingGivesUpAtTheTimeout()
{
    TrayWorld world;
    OpenDevice device(m_library);
    world.take(Slot::IdPlate);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(read(device, 0x12, 200), static_cast<int>(kTimeout));
    QVERIFY(timer.elapsed() >= 200);
}

void TestVirtualId::withoutReadAgainShowsTheLastReading()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(read(device, 0x02), 0);
    const QByteArray first = m_info;
    const std::string id = world.cardIn(Slot::IdPlate);
    nlohmann::json card = world.tray().card(id);
    card["fields"]["name"] = "\xE6\x9D\x8E\xE5\x9B\x9B\xE4\xBA\x94";
    world.tray().saveCard(world.tray().lock(), id, card);
    QCOMPARE(read(device, 0x02), 0);
    QCOMPARE(m_info, first);
    QCOMPARE(read(device, 0x12), 0);
    QVERIFY2(m_info.contains("\xE6\x9D\x8E\xE5\x9B\x9B\xE4\xBA\x94"), m_info.constData());
}

void TestVirtualId::moduleTexts()
{
    TrayWorld world;
    OpenDevice device(m_library);
    QCOMPARE(text<sdk::kIdUidSize>("vek_idcr_read_uid", device), 0);
    QVERIFY(!m_info.isEmpty());
    QCOMPARE(text<sdk::kIdDnSize>("vek_idcr_read_dn", device), 0);
    QVERIFY(!m_info.isEmpty());
    QCOMPARE(text<sdk::kIdEmidSize>("vek_idcr_read_emid", device), 0);
    QVERIFY(!m_info.isEmpty());
    world.take(Slot::IdPlate);
    QCOMPARE(text<sdk::kIdUidSize>("vek_idcr_read_uid", device), static_cast<int>(kTimeout));
    // The module has its number without a card.
    QCOMPARE(text<sdk::kSamIdSize>("vek_idcr_read_samid", device), 0);
    QVERIFY(!m_info.isEmpty());
    QCOMPARE(m_library.entry<sdk::IdcrReadText>("vek_idcr_read_samid")(device, 0, nullptr),
             static_cast<int>(kBadArgument));
}

void TestVirtualId::passThrough()
{
    TrayWorld world;
    OpenDevice device(m_library);
    const auto call = m_library.entry<sdk::IdcrTransive>("vek_idcr_transive");
    std::vector<std::uint8_t> data(sdk::kTransiveDataSize);
    std::uint32_t statusWord = 0;
    std::int32_t length = -1;
    QCOMPARE(call(device, 500, 0x20, 0x01, &statusWord, data.data(), 8192, &length), 0);
    QVERIFY(statusWord != 0 && length >= 0);

    std::int32_t longest = 0;
    const nlohmann::json card = world.tray().card(world.cardIn(Slot::IdPlate));
    for (const auto &[command, reply] : card.at("module").items()) {
        const auto number = static_cast<unsigned>(std::stoul(command, nullptr, 16));
        QCOMPARE(call(device, 500, static_cast<std::uint8_t>(number >> 8U), static_cast<std::uint8_t>(number),
                      &statusWord, data.data(), 8192, &length),
                 0);
        longest = std::max(longest, length);
        if (length > 0) {
            QCOMPARE(call(device, 500, static_cast<std::uint8_t>(number >> 8U), static_cast<std::uint8_t>(number),
                          &statusWord, data.data(), length - 1, &length),
                     static_cast<int>(kBufferTooSmall));
        }
    }
    QVERIFY2(longest > 1024, qPrintable(QString::number(longest)));
    QCOMPARE(call(device, 500, 0x20, 0x01, nullptr, data.data(), 8192, &length), static_cast<int>(kBadArgument));
    QCOMPARE(call(device, 500, 0x20, 0x01, &statusWord, nullptr, 8192, &length), static_cast<int>(kBadArgument));
    QCOMPARE(call(device, 500, 0x20, 0x01, &statusWord, data.data(), -1, &length), static_cast<int>(kBadArgument));
}

void TestVirtualId::refusesBadPaths()
{
    TrayWorld world;
    OpenDevice device(m_library);
    std::array<char, sdk::kIdInfoSize> info{};
    std::array<char, sdk::kIdExtraSize> extra{};
    const auto call = m_library.entry<sdk::IdcrGetInfo>("vek_idcr_getinfo");
    QCOMPARE(call(device, 0x06, 500, 1, info.data(), extra.data(), nullptr, nullptr, nullptr),
             static_cast<int>(kBadArgument));
    QCOMPARE(call(device, 0x06, 500, 1, info.data(), extra.data(), "/nowhere/photo.jpg", nullptr, nullptr),
             static_cast<int>(kTransportFailure));
    QCOMPARE(call(device, 0x02, 500, 1, info.data(), extra.data(), nullptr, nullptr, nullptr), 0);
    QCOMPARE(call(device, 0x02, 500, 1, nullptr, extra.data(), nullptr, nullptr, nullptr),
             static_cast<int>(kBadArgument));
}

QTEST_GUILESS_MAIN(TestVirtualId)
#include "test_virtual_id.moc"
