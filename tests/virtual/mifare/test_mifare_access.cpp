#include "drivers/core/mifare/mifare_access.h"
#include "drivers/core/mifare/mifare_layout.h"
#include "drivers/core/mifare/mifare_value.h"

#include <QtTest>

#include <limits>

using namespace drivers;

class TestMifareAccess : public QObject {
    Q_OBJECT

private slots:
    void transportBytesMeanTransportConfiguration();
    void knownBytesDecode_data();
    void knownBytesDecode();
    void everyConditionSurvivesTheBytes();
    void everyFlippedBitIsNoticed();
    void blocksAndSectorsAreNumbered();
    void valueBlockIsLaidOutAsPublished();
    void everyFlippedBitOfAValueBlockIsNoticed();
    void valuesStayWithin32Bits();
};

void TestMifareAccess::transportBytesMeanTransportConfiguration()
{
    const auto conditions = decodeAccess({0xFF, 0x07, 0x80});
    QVERIFY(conditions.has_value());
    QCOMPARE(conditions->block, (std::array<std::uint8_t, 4>{0, 0, 0, 1}));
}

void TestMifareAccess::knownBytesDecode_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::addColumn<int>("third");
    QTest::addColumn<QVector<int>>("conditions");
    QTest::newRow("data 100, trailer 011") << 0x78 << 0x77 << 0x88 << QVector<int>{4, 4, 4, 3};
    QTest::newRow("data 000, trailer 011") << 0x7F << 0x07 << 0x88 << QVector<int>{0, 0, 0, 3};
    QTest::newRow("all 000") << 0xFF << 0x0F << 0x00 << QVector<int>{0, 0, 0, 0};
    QTest::newRow("all 111") << 0x00 << 0xF0 << 0xFF << QVector<int>{7, 7, 7, 7};
    QTest::newRow("data 110, trailer 011") << 0x08 << 0x77 << 0x8F << QVector<int>{6, 6, 6, 3};
}

void TestMifareAccess::knownBytesDecode()
{
    QFETCH(int, first);
    QFETCH(int, second);
    QFETCH(int, third);
    QFETCH(QVector<int>, conditions);
    const AccessBytes bytes{static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second),
                            static_cast<std::uint8_t>(third)};
    const auto decoded = decodeAccess(bytes);
    QVERIFY(decoded.has_value());
    for (std::size_t i = 0; i < 4; ++i)
        QCOMPARE(static_cast<int>(decoded->block.at(i)), conditions.at(static_cast<int>(i)));
    QCOMPARE(encodeAccess(*decoded), bytes);
}

void TestMifareAccess::everyConditionSurvivesTheBytes()
{
    for (unsigned packed = 0; packed < 4096; ++packed) {
        AccessConditions conditions;
        for (unsigned i = 0; i < 4; ++i)
            conditions.block.at(i) = static_cast<std::uint8_t>((packed >> (3 * i)) & 7U);
        const auto decoded = decodeAccess(encodeAccess(conditions));
        QVERIFY(decoded.has_value());
        QCOMPARE(decoded->block, conditions.block);
    }
}

void TestMifareAccess::everyFlippedBitIsNoticed()
{
    for (unsigned packed = 0; packed < 4096; ++packed) {
        AccessConditions conditions;
        for (unsigned i = 0; i < 4; ++i)
            conditions.block.at(i) = static_cast<std::uint8_t>((packed >> (3 * i)) & 7U);
        for (unsigned bit = 0; bit < 24; ++bit) {
            AccessBytes bytes = encodeAccess(conditions);
            bytes.at(bit / 8) = static_cast<std::uint8_t>(bytes.at(bit / 8) ^ (1U << (bit % 8)));
            QVERIFY(!decodeAccess(bytes).has_value());
        }
    }
}

void TestMifareAccess::blocksAndSectorsAreNumbered()
{
    int trailers = 0;
    for (int sector = 0; sector < 16; ++sector) {
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(sectorOfBlock(sector * 4 + i), sector);
            QCOMPARE(blockInSector(sector * 4 + i), i);
            trailers += isTrailerBlock(sector * 4 + i) ? 1 : 0;
        }
        QVERIFY(isTrailerBlock(trailerOfSector(sector)));
    }
    QCOMPARE(trailers, 16);
    QCOMPARE(trailerOfSector(15), 63);
    QVERIFY(isMifareBlock(0) && isMifareBlock(63) && !isMifareBlock(-1) && !isMifareBlock(64));
    QVERIFY(isMifareSector(0) && isMifareSector(15) && !isMifareSector(-1) && !isMifareSector(16));
}

void TestMifareAccess::valueBlockIsLaidOutAsPublished()
{
    const Block16 positive{0x64, 0x00, 0x00, 0x00, 0x9B, 0xFF, 0xFF, 0xFF,
                           0x64, 0x00, 0x00, 0x00, 0x05, 0xFA, 0x05, 0xFA};
    QCOMPARE(encodeValueBlock({100, 5}), positive);
    const Block16 negative{0xFE, 0xFF, 0xFF, 0xFF, 0x01, 0x00, 0x00, 0x00,
                           0xFE, 0xFF, 0xFF, 0xFF, 0x3E, 0xC1, 0x3E, 0xC1};
    QCOMPARE(encodeValueBlock({-2, 62}), negative);
    for (const std::int32_t value :
         {0, 1, -1, 1234567890, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
        const auto decoded = decodeValueBlock(encodeValueBlock({value, 17}));
        QVERIFY(decoded.has_value());
        QCOMPARE(decoded->value, value);
        QCOMPARE(static_cast<int>(decoded->address), 17);
    }
    QVERIFY(!decodeValueBlock(Block16{}).has_value());
}

void TestMifareAccess::everyFlippedBitOfAValueBlockIsNoticed()
{
    for (std::size_t bit = 0; bit < 128; ++bit) {
        Block16 block = encodeValueBlock({-123456, 9});
        block.at(bit / 8) = static_cast<std::uint8_t>(block.at(bit / 8) ^ (1U << (bit % 8)));
        QVERIFY(!decodeValueBlock(block).has_value());
    }
}

void TestMifareAccess::valuesStayWithin32Bits()
{
    constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
    constexpr auto kMin = std::numeric_limits<std::int32_t>::min();
    QCOMPARE(addToValue(100, 170).value_or(0), 270);
    QCOMPARE(addToValue(kMax - 1, 1).value_or(0), kMax);
    QVERIFY(!addToValue(kMax, 1).has_value());
    QCOMPARE(addToValue(kMin + 1, -1).value_or(0), kMin);
    QVERIFY(!addToValue(kMin, -1).has_value());
    QCOMPARE(addToValue(kMin, kMax).value_or(0), -1);
    QVERIFY(!addToValue(-2, -std::int64_t{kMax}).has_value());
}

QTEST_APPLESS_MAIN(TestMifareAccess)
#include "test_mifare_access.moc"
