#include "drivers/virtual/cards/mifare_dump.h"
#include "mifare_test_card.h"

#include <stdexcept>

using namespace drivers;
using namespace drivers::cards;
using namespace mifare_test;

namespace {

/// Every byte differs from its neighbours, so that a block or byte out of place is seen.
MifareImage variedImage()
{
    MifareImage image{};
    for (std::size_t i = 0; i < kMifareBytes; ++i)
        image.at(i / 16).at(i % 16) = static_cast<std::uint8_t>(i * 7 + i / 256);
    return image;
}

QString rejection(const std::function<void()> &import)
{
    try {
        import();
    } catch (const std::runtime_error &error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("accepted");
}

QString emlRejection(const std::string &content)
{
    return rejection([&] { importEmlDump(content); });
}

QString jsonRejection(const nlohmann::json &dump)
{
    return rejection([&] { importJsonDump(dump); });
}

} // namespace

class TestMifareDump : public QObject {
    Q_OBJECT

private slots:
    void everyFormatReturnsTheSameCard();
    void rawIsTheMemory();
    void rawOfAnotherSizeIsRefused();
    void emlIsLinesOfDigits();
    void emlTakesOtherLineEnds();
    void emlNamesTheLineAtFault();
    void jsonHasItsThreeParts();
    void sectorKeysCompleteTrailersReadFromACard();
    void jsonNamesThePlaceAtFault();
};

void TestMifareDump::everyFormatReturnsTheSameCard()
{
    const MifareImage image = variedImage();
    QVERIFY(importRawDump(exportRawDump(image)) == image);
    QVERIFY(importEmlDump(exportEmlDump(image)) == image);
    QVERIFY(importJsonDump(exportJsonDump(image)) == image);
    QVERIFY(importJsonDump(nlohmann::json::parse(exportJsonDump(image).dump())) == image);
}

void TestMifareDump::rawIsTheMemory()
{
    const std::string content = exportRawDump(variedImage());
    QCOMPARE(content.size(), std::size_t{1024});
    QCOMPARE(static_cast<int>(static_cast<std::uint8_t>(content[17])), 17 * 7);
}

void TestMifareDump::rawOfAnotherSizeIsRefused()
{
    QCOMPARE(rejection([] { importRawDump(std::string(1023, 'x')); }),
             QStringLiteral("a raw dump must be 1024 bytes, not 1023"));
    QCOMPARE(rejection([] { importRawDump(""); }), QStringLiteral("a raw dump must be 1024 bytes, not 0"));
    QCOMPARE(rejection([] { importRawDump(std::string(4096, 'x')); }),
             QStringLiteral("a raw dump must be 1024 bytes, not 4096"));
}

void TestMifareDump::emlIsLinesOfDigits()
{
    const QStringList lines = QString::fromStdString(exportEmlDump(imageWithAccess(kTransportAccess))).split('\n');
    QCOMPARE(lines.size(), 65);
    QCOMPARE(lines.at(0), QStringLiteral("12345678080804000000000000000000"));
    QCOMPARE(lines.at(63), QStringLiteral("A0A1A2A3A4A5FF078069B0B1B2B3B4B5"));
    QVERIFY(lines.at(64).isEmpty());
}

void TestMifareDump::emlTakesOtherLineEnds()
{
    const MifareImage image = variedImage();
    QString text = QString::fromStdString(exportEmlDump(image)).toLower();
    QVERIFY(importEmlDump(text.toStdString() + "\n \n") == image);
    QVERIFY(importEmlDump(text.trimmed().toStdString()) == image);
    text.replace("\n", " \r\n");
    QVERIFY(importEmlDump(text.toStdString()) == image);
}

void TestMifareDump::emlNamesTheLineAtFault()
{
    QStringList lines = QString::fromStdString(exportEmlDump(variedImage())).trimmed().split('\n');
    QCOMPARE(emlRejection(""), QStringLiteral("line 1: only 0 of 64 blocks"));
    QCOMPARE(emlRejection(lines.mid(0, 63).join('\n').toStdString()), QStringLiteral("line 64: only 63 of 64 blocks"));
    QCOMPARE(emlRejection((lines + lines).join('\n').toStdString()), QStringLiteral("line 65: more than 64 blocks"));
    lines[9] = "--------------------------------";
    QCOMPARE(emlRejection(lines.join('\n').toStdString()), QStringLiteral("line 10: must be 32 hexadecimal digits"));
    lines[9] = "00";
    QCOMPARE(emlRejection(lines.join('\n').toStdString()), QStringLiteral("line 10: must be 32 hexadecimal digits"));
}

void TestMifareDump::jsonHasItsThreeParts()
{
    const nlohmann::json dump = exportJsonDump(imageWithAccess(kTransportAccess));
    QVERIFY(dump["Card"]["UID"] == "12345678");
    QVERIFY(dump["blocks"].size() == 64);
    QVERIFY(dump["blocks"]["7"] == "A0A1A2A3A4A5FF078069B0B1B2B3B4B5");
    QVERIFY(dump["SectorKeys"].size() == 16);
    const nlohmann::json keys{{"KeyA", "A0A1A2A3A4A5"}, {"AccessConditions", "FF078069"}, {"KeyB", "B0B1B2B3B4B5"}};
    QVERIFY(dump["SectorKeys"]["1"] == keys);
}

void TestMifareDump::sectorKeysCompleteTrailersReadFromACard()
{
    nlohmann::json dump = exportJsonDump(imageWithAccess(kTransportAccess));
    dump["blocks"]["7"] = "000000000000FF078069000000000000";
    QVERIFY(importJsonDump(dump) == imageWithAccess(kTransportAccess));
    dump["SectorKeys"]["1"].erase("KeyB");
    QCOMPARE(static_cast<int>(importJsonDump(dump).at(7)[10]), 0);
    dump.erase("SectorKeys");
    dump.erase("Card");
    QCOMPARE(static_cast<int>(importJsonDump(dump).at(7)[0]), 0);
    QCOMPARE(static_cast<int>(importJsonDump(dump).at(11)[0]), 0xA0);
    dump["Card"] = "what other programs say of the card";
    QCOMPARE(static_cast<int>(importJsonDump(dump).at(11)[0]), 0xA0);
}

void TestMifareDump::jsonNamesThePlaceAtFault()
{
    const nlohmann::json good = exportJsonDump(variedImage());
    QCOMPARE(jsonRejection(good), QStringLiteral("accepted"));
    QCOMPARE(jsonRejection(nlohmann::json(5)), QStringLiteral("/: must be an object"));
    QCOMPARE(jsonRejection(nlohmann::json::object()), QStringLiteral("/: \"blocks\" is missing"));
    nlohmann::json bad = good;
    bad["blocks"] = nlohmann::json::array();
    QCOMPARE(jsonRejection(bad), QStringLiteral("/blocks: must be an object"));
    bad = good;
    bad["blocks"].erase("17");
    QCOMPARE(jsonRejection(bad), QStringLiteral("/blocks: \"17\" is missing"));
    bad = good;
    bad["blocks"]["64"] = bad["blocks"]["63"];
    QCOMPARE(jsonRejection(bad), QStringLiteral("/blocks: must hold the blocks 0 to 63 and nothing else"));
    bad = good;
    bad["SectorKeys"]["3"]["KeyA"] = "FF";
    QCOMPARE(jsonRejection(bad), QStringLiteral("/SectorKeys/3/KeyA: must be 6 bytes in hexadecimal"));
    bad = good;
    bad["SectorKeys"]["3"] = "FF";
    QCOMPARE(jsonRejection(bad), QStringLiteral("/SectorKeys/3: must be an object"));
    bad["SectorKeys"] = 1;
    QCOMPARE(jsonRejection(bad), QStringLiteral("/SectorKeys: must be an object"));
    bad = good;
    bad["Card"]["UID"] = "01020304";
    QCOMPARE(jsonRejection(bad), QStringLiteral("/Card/UID: is not the UID of block 0, 00070E15"));
}

QTEST_APPLESS_MAIN(TestMifareDump)
#include "test_mifare_dump.moc"
