// One card, twice: served to pcscd and read by the PC/SC driver, and lying in the virtual reader. Whatever is sent to
// it, both drivers give the same code and the same reply.
#include "drivers/virtual/tray/tray.h"
#include "tests/pcsc/driver_session.h"
#include "tests/pcsc/served_card.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace testsupport;
using namespace drivers;

namespace {

constexpr char kVirtualReader[] = "Unifold Virtual Reader [Contact] (TRAY0001) 00 00";

// A tray as it is first laid out, with `card` in the contact slot.
QString trayWith(const QTemporaryDir &folder, const char *card)
{
    QString path = folder.filePath("tray");
    tray::Tray(path.toStdString()).put(tray::Slot::Contact, card);
    return path;
}

QByteArrayList answersOf(const DriverSession &session, const QByteArrayList &commands)
{
    QByteArrayList answers;
    for (const QByteArray &command : commands) {
        const Answer answer = session.apdu(command);
        const bool kept =
            answer.code == kSuccess ? int(answer.length) == answer.text.size() : answer.untouched && answer.length == 0;
        answers << command.left(40) + " -> " + QByteArray::number(answer.code) + ' ' + answer.text +
                       (kept && !answer.overrun ? "" : " (wrong length or buffer)");
    }
    return answers;
}

} // namespace

class TestServedExchange : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void bothDriversAnswerAlike_data();
    void bothDriversAnswerAlike();

private:
    std::unique_ptr<PcscDaemon> m_daemon;
    std::unique_ptr<DriverApi> m_pcsc;
    std::unique_ptr<DriverApi> m_virtual;
};

void TestServedExchange::initTestCase()
{
    m_daemon = std::make_unique<PcscDaemon>();
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
    m_pcsc = std::make_unique<DriverApi>("libtarvozent.so");
    m_virtual = std::make_unique<DriverApi>("libtarvovek.so");
}

void TestServedExchange::bothDriversAnswerAlike_data()
{
    QTest::addColumn<QByteArray>("card");
    QTest::addColumn<QByteArrayList>("commands");
    // What no card gets to see, and what is no case of an APDU.
    const QByteArrayList refused = {"",
                                    "0",
                                    "00",
                                    "00A404",
                                    "00A4000",
                                    "00A4000G",
                                    "00A4 00000",
                                    QByteArray("00").repeated(70000),
                                    "00A4040005AB",
                                    "00A404000000",
                                    "00A40400000005AB"};
    // A DF, an EF of 24 bytes and one of records; wrong classes, instructions, lengths and files.
    const QByteArrayList files = {"00A4040009F0554E49464F4C4401",
                                  "00A4040009F0554E49464F4C440100",
                                  "00A40400000009F0554E49464F4C44010000",
                                  "00A40000025000",
                                  "00A4000C025000",
                                  "00A40000020001",
                                  "00A4000002000100",
                                  "00A4000002000105",
                                  "00B00000",
                                  "00B0000000",
                                  "00B0000005",
                                  "00B0000018",
                                  "00B0000019",
                                  "00B0000A00",
                                  "00B00000000000",
                                  "00B00000000018",
                                  "00B07FFF01",
                                  "00B2011C",
                                  "00B2011C00",
                                  "00B2011C0C",
                                  "00B2051C00",
                                  "00CA010100",
                                  "00CA01010F",
                                  "00CA0101",
                                  "00D60000020000",
                                  "0020000102FFFF",
                                  "00200001",
                                  "0020000104313233340000",
                                  "00200001043132333400",
                                  "00C0000010",
                                  "00C00000",
                                  "00FF0000",
                                  "00FF000000",
                                  "01B0000000",
                                  "80B0000000",
                                  "00A4040001DE",
                                  "00A400000411112222",
                                  "00D60000000100" + QByteArray("5A").repeated(256)};
    const QByteArrayList cards = {"00A404000F7378312E73682EC9E7BBE1B1A3D5CF",
                                  "00A404000F7378312E73682EC9E7BBE1B1A3D5CF00",
                                  "00A4000002EF05",
                                  "00B2010012",
                                  "00B2010000",
                                  "00B20100",
                                  "00B20100000000",
                                  "00B2010412",
                                  "00A404000E315041592E5359532E4444463031",
                                  "00A4040007A000000333010100",
                                  "80A80000028300",
                                  "80A8000002830000",
                                  "80A80000000002830000FF",
                                  "80CA9F3600",
                                  "80CA9F36",
                                  "80CA9F3605",
                                  "00B2011400",
                                  "00B20114",
                                  "00B2011410"};
    QTest::newRow("social security, T=0") << QByteArray("social-security-and-bank-card") << refused + cards + files;
    QTest::newRow("file card, T=1") << QByteArray("file-card") << refused + files + cards;
    QTest::newRow("bank card, T=1") << QByteArray("contactless-bank-card") << refused + cards;
    QTest::newRow("PSAM") << QByteArray("psam-1") << refused + files;
}

void TestServedExchange::bothDriversAnswerAlike()
{
    QFETCH(QByteArray, card);
    QFETCH(QByteArrayList, commands);
    const QTemporaryDir lent;
    const QTemporaryDir own;
    qputenv(tray::kTrayVariable, trayWith(own, card.constData()).toUtf8());
    DriverSession overPcsc(*m_pcsc, kReader0);
    DriverSession onVirtualReader(*m_virtual, kVirtualReader);
    ServedCard served(UNIFOLD_TRAY_TOOL, trayWith(lent, card.constData()), card.constData());
    QVERIFY2(served.problem().isEmpty(), served.problem());

    const QByteArrayList unpowered = {"00A40000", "", "00A4000", "00A404"};
    QCOMPARE(answersOf(overPcsc, unpowered), answersOf(onVirtualReader, unpowered));
    const Answer atr = overPcsc.powerOn();
    QCOMPARE(atr.code, int(kSuccess));
    QCOMPARE(atr.text, onVirtualReader.powerOn().text);
    const QByteArrayList replies = answersOf(overPcsc, commands);
    const QByteArrayList expected = answersOf(onVirtualReader, commands);
    for (int i = 0; i < commands.size(); ++i)
        QCOMPARE(replies.at(i), expected.at(i));
    QCOMPARE(overPcsc.powerOff(), onVirtualReader.powerOff());
    QCOMPARE(answersOf(overPcsc, unpowered), answersOf(onVirtualReader, unpowered));

    served.kill();
    tray::Tray(own.filePath("tray").toStdString()).update([](tray::TrayState &state) {
        state.take(tray::Slot::Contact);
    });
    QCOMPARE(overPcsc.status(), onVirtualReader.status());
    QCOMPARE(overPcsc.powerOff(), onVirtualReader.powerOff());
    QCOMPARE(overPcsc.powerOn(0).code, onVirtualReader.powerOn(0).code);
    QCOMPARE(answersOf(overPcsc, unpowered), answersOf(onVirtualReader, unpowered));
}

QTEST_GUILESS_MAIN(TestServedExchange)
#include "test_served_exchange.moc"
