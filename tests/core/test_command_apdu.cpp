// The shapes of command APDUs.
#include "drivers/core/command_apdu.h"

#include <QtTest>

using namespace drivers;

namespace {

Bytes bytesOf(const QByteArray &hex)
{
    return *fromHex(hex.toStdString());
}

} // namespace

class TestCommandApdu : public QObject {
    Q_OBJECT

private slots:
    void knowsEveryCase_data();
    void knowsEveryCase();
    void refusesOtherShapes_data();
    void refusesOtherShapes();
};

void TestCommandApdu::knowsEveryCase_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("le");
    QTest::addColumn<bool>("extended");
    const QByteArray data255 = QByteArray("A5").repeated(255);
    const QByteArray data256 = QByteArray("A5").repeated(256);
    const QByteArray data65535 = QByteArray("A5").repeated(65535);
    QTest::newRow("1") << QByteArray("00A40102") << QByteArray() << -1 << false;
    QTest::newRow("2S") << QByteArray("00B0000005") << QByteArray() << 5 << false;
    QTest::newRow("2S 00") << QByteArray("00B0000000") << QByteArray() << 256 << false;
    QTest::newRow("3S") << QByteArray("00A4010201AA") << QByteArray("AA") << -1 << false;
    QTest::newRow("3S longest") << "00A40102FF" + data255 << data255 << -1 << false;
    QTest::newRow("4S") << QByteArray("00A4010201AA10") << QByteArray("AA") << 16 << false;
    QTest::newRow("4S 00") << QByteArray("00A4010202AABB00") << QByteArray("AABB") << 256 << false;
    QTest::newRow("2E") << QByteArray("00B00000000001") << QByteArray() << 1 << true;
    QTest::newRow("2E 0000") << QByteArray("00B00000000000") << QByteArray() << 65536 << true;
    QTest::newRow("3E short data") << QByteArray("00A40102000001AA") << QByteArray("AA") << -1 << true;
    QTest::newRow("3E") << "00A40102000100" + data256 << data256 << -1 << true;
    QTest::newRow("4E") << "00A40102000100" + data256 + "0102" << data256 << 258 << true;
    QTest::newRow("4E longest") << "00A4010200FFFF" + data65535 + "0000" << data65535 << 65536 << true;
}

void TestCommandApdu::knowsEveryCase()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, data);
    QFETCH(int, le);
    QFETCH(bool, extended);
    const auto parsed = parseCommandApdu(bytesOf(command));
    QVERIFY(parsed);
    QCOMPARE(Bytes(parsed->header.begin(), parsed->header.end()), bytesOf(command.left(8)));
    QCOMPARE(parsed->data, bytesOf(data));
    QCOMPARE(parsed->le ? int(*parsed->le) : -1, le);
    QCOMPARE(parsed->extended, extended);
}

void TestCommandApdu::refusesOtherShapes_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("half a header") << QByteArray("00A401");
    QTest::newRow("less data than Lc") << QByteArray("00A4010203AABB");
    QTest::newRow("more than an Le behind the data") << QByteArray("00A4010201AA0000");
    QTest::newRow("half an extended length") << QByteArray("00A401020001");
    QTest::newRow("extended Lc of 0") << QByteArray("00A401020000000000");
    QTest::newRow("less data than an extended Lc") << QByteArray("00A40102000003AABB");
    QTest::newRow("half an extended Le") << QByteArray("00A40102000001AA00");
    QTest::newRow("more than an extended Le") << QByteArray("00A40102000001AA000000");
}

void TestCommandApdu::refusesOtherShapes()
{
    QFETCH(QByteArray, command);
    QVERIFY(!parseCommandApdu(bytesOf(command)));
}

QTEST_APPLESS_MAIN(TestCommandApdu)
#include "test_command_apdu.moc"
