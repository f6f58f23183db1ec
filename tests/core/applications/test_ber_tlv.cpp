#include "drivers/core/ber_tlv.h"

#include <QtTest>
#include <random>

#include "tests/core/applications/scripted_channel.h"

using namespace drivers;
using tests::hex;

class BerTlvTest : public QObject {
    Q_OBJECT

private slots:
    void readsTagsAndLengthsOfAllForms();
    void skipsPadding();
    void rejectsWhatIsCutOff_data();
    void rejectsWhatIsCutOff();
    void collectsAllLevels();
    void refusesEndlessNesting();
    void writesWhatItReads();
    void readsDataObjectLists();
    void survivesNoise();
};

void BerTlvTest::readsTagsAndLengthsOfAllForms()
{
    const auto elements = parseTlv(hex("5A0212349F360102BF0C008A8101FF"));
    QVERIFY(elements.has_value());
    QCOMPARE(elements->size(), std::size_t{4});
    QCOMPARE(elements->at(0).tag, 0x5AU);
    QCOMPARE(elements->at(0).value, hex("1234"));
    QCOMPARE(elements->at(1).tag, 0x9F36U);
    QCOMPARE(elements->at(2).tag, 0xBF0CU);
    QVERIFY(elements->at(2).value.empty());
    QCOMPARE(elements->at(3).value, hex("FF"));
}

void BerTlvTest::skipsPadding()
{
    const auto elements = parseTlv(hex("00005A011100"));
    QVERIFY(elements.has_value());
    QCOMPARE(elements->size(), std::size_t{1});
}

void BerTlvTest::rejectsWhatIsCutOff_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("no length") << QByteArray("5A");
    QTest::newRow("half a tag") << QByteArray("9F");
    QTest::newRow("tag without end") << QByteArray("9F808080");
    QTest::newRow("value short by one") << QByteArray("5A03AABB");
    QTest::newRow("length bytes missing") << QByteArray("5A82FF");
    QTest::newRow("indefinite length") << QByteArray("7080AA0000");
    QTest::newRow("length of four bytes") << QByteArray("5A84FFFFFFFF");
}

void BerTlvTest::rejectsWhatIsCutOff()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseTlv(hex(text.toStdString())).has_value());
}

void BerTlvTest::collectsAllLevels()
{
    TlvMap elements;
    QVERIFY(!collectPrimitives(hex("6F0A8401AAA505500142500143"), elements));
    elements.clear();
    QVERIFY(collectPrimitives(hex("6F0B8401AAA506500142500143"), elements));
    QCOMPARE(elements.size(), std::size_t{2});
    QCOMPARE(elements[0x84], hex("AA"));
    QCOMPARE(elements[0x50], hex("42")); // the first of two
}

void BerTlvTest::refusesEndlessNesting()
{
    Bytes data;
    for (int depth = 0; depth < 100; ++depth)
        data = encodeTlv(0x70, data);
    TlvMap elements;
    QVERIFY(!collectPrimitives(data, elements));
}

void BerTlvTest::writesWhatItReads()
{
    for (const std::size_t size : {0U, 1U, 127U, 128U, 255U, 256U, 65535U}) {
        const Bytes value(size, 0x5C);
        for (const std::uint32_t tag : {0x50U, 0x9F36U, 0xDF8101U}) {
            const auto back = parseTlv(encodeTlv(tag, value));
            QVERIFY(back.has_value());
            QCOMPARE(back->size(), std::size_t{1});
            QCOMPARE(back->front().tag, tag);
            QCOMPARE(back->front().value, value);
        }
    }
}

void BerTlvTest::readsDataObjectLists()
{
    const auto entries = parseDol(hex("9F02069A03"));
    QVERIFY(entries.has_value());
    QCOMPARE(entries->size(), std::size_t{2});
    QCOMPARE(entries->at(0).tag, 0x9F02U);
    QCOMPARE(entries->at(1).length, std::size_t{3});
    QVERIFY(!parseDol(hex("9F02069A")).has_value());
}

void BerTlvTest::survivesNoise()
{
    std::mt19937 noise(20211121);
    for (int round = 0; round < 20000; ++round) {
        Bytes data(noise() % 64);
        for (auto &byte : data)
            byte = static_cast<std::uint8_t>(noise());
        TlvMap elements;
        const bool whole = collectPrimitives(data, elements);
        std::size_t total = 0;
        for (const auto &[tag, value] : elements)
            total += value.size();
        QVERIFY2(total <= data.size(), toHex(data).c_str());
        if (!parseTlv(data))
            QVERIFY(!whole);
    }
}

QTEST_GUILESS_MAIN(BerTlvTest)
#include "test_ber_tlv.moc"
