#include "drivers/virtual/cards/cryptogram.h"

#include <QtTest>
#include <stdexcept>

#include "tests/virtual/cpu_cards/card_helpers.h"

using namespace drivers;
using namespace drivers::cards;
using tests::hex;

/// The two published cases, step by step.
class CryptogramTest : public QObject {
    Q_OBJECT

private slots:
    void tripleDes();
    void sm4();
    void cardFactorTakesTheRightDigits();
    void refusesWrongSizes();
    void randomBytesDiffer();
};

void CryptogramTest::tripleDes()
{
    constexpr auto kDes = Algorithm::kTripleDes;
    const Bytes cardKey =
        diversifyKey(kDes, hex("F0C34A8124CEE0A91A0B034AA97D6EAC"), cardFactor("6228000100001", "01"));
    QCOMPARE(cardKey, hex("014D996FCC8F49157DC8B49E3BCDFD99"));
    const Bytes session = sessionKey(kDes, cardKey, 0x0240);
    QCOMPARE(session, hex("D4102725E6E5AD329E55AAB50BF23DA9"));
    const Bytes request =
        cryptogram(kDes, session, hex("000000000001000000000000015600800460000156140701001E78EEBC7D00024003A04002"));
    QCOMPARE(request, hex("5D016C91005E7CC2"));
    QCOMPARE(responseCryptogram(kDes, session, request, {'0', '1'}), hex("21415243527CE78F"));
}

void CryptogramTest::sm4()
{
    const Bytes factor = cardFactor("88660100000304", "00");
    QCOMPARE(factor, hex("8866010000030400"));
    const Bytes cardKey = diversifyKey(Algorithm::kSm4, hex("F23BF4AE92B554C116139D4F67322667"), factor);
    QCOMPARE(cardKey, hex("016F6E76BD8E6FB4A17C28C4B05E03A8"));
    const Bytes session = sessionKey(Algorithm::kSm4, cardKey, 0x0001);
    QCOMPARE(session, hex("9ECF9220F32AE56187D3C2444967FC0E"));
    const Bytes request = cryptogram(Algorithm::kSm4, session,
                                     hex("00000000000000000000000001560000000800015616051800412AB4B67D00000103A00000"));
    QCOMPARE(request, hex("179E0D01A7D1791D"));
}

void CryptogramTest::cardFactorTakesTheRightDigits()
{
    QCOMPARE(cardFactor("6228000100001", "01"), hex("0622800010000101"));
    QCOMPARE(cardFactor("6228000100001018885", "01"), hex("0010000101888501"));
    QVERIFY_EXCEPTION_THROWN(cardFactor("62x8000100001", "01"), std::runtime_error);
}

void CryptogramTest::refusesWrongSizes()
{
    QVERIFY_EXCEPTION_THROWN(cryptogram(Algorithm::kSm4, Bytes(15), Bytes(8)), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(encryptBlocks(Algorithm::kTripleDes, Bytes(16), Bytes(7)), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(encryptBlocks(Algorithm::kSm4, Bytes(16), Bytes(8)), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(diversifyKey(Algorithm::kSm4, Bytes(16), Bytes(16)), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(responseCryptogram(Algorithm::kSm4, Bytes(16), Bytes(8), Bytes(1)), std::runtime_error);
}

void CryptogramTest::randomBytesDiffer()
{
    QCOMPARE(randomBytes(16).size(), std::size_t{16});
    QVERIFY(randomBytes(16) != randomBytes(16));
}

QTEST_GUILESS_MAIN(CryptogramTest)
#include "test_cryptogram.moc"
