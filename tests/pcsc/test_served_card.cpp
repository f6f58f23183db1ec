// Cards of the virtual reader's tray, lent to pcscd by "unifold-tray serve": the bench logs the same lines over PC/SC
// as on the virtual reader.
#include "pages/mifare/form_mifare_card.h"
#include "pages/ssse/form_ssse.h"
#include "tests/pcsc/driver_session.h"
#include "tests/pcsc/served_bench.h"
#include "tests/pcsc/served_card.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QtTest>

#include <algorithm>
#include <filesystem>
#include <memory>

using namespace testsupport;
using namespace drivers;

namespace {

constexpr char kCpuCard[] = "social-security-and-bank-card";
constexpr char kMifareCard[] = "mifare-wallet";

// The driver draws an unpredictable number (E) for each cryptogram (A), so these two differ from one to the next. Both
// must be there, and are taken out.
QString withoutChance(const QString &line)
{
    static const QRegularExpression chance("ARQC=\\[A016[0-9A-F]{16}(.*)E008[0-9A-F]{8}F010");
    return QString(line).replace(chance, "ARQC=[A016..\\1E008..F010");
}

// What the CPU card and social security pages log and show.
QStringList workOnCpuCard(OpenBench &bench)
{
    auto *const cpu = bench.page<Form_CPU_Iccard>();
    for (const char *button :
         {"pushButton_cpucard_status", "pushButton_cpucard_poweron", "pushButton_cpucard_status",
          "pushButton_cpucard_apdu", "pushButton_pboc_taglist_whole", "pushButton_pboc_readinfo",
          "pushButton_pboc_arqc", "pushButton_cpucard_poweroff", "pushButton_pboc_taglist_common",
          "pushButton_pboc_readinfo", "pushButton_pboc_arqc", "pushButton_cpucard_status", "pushButton_cpucard_apdu"})
        bench.press(button, cpu);
    auto *const ssse = bench.page<Form_ssse>();
    bench.press("pushButton_gov_info", ssse);
    bench.press("pushButton_user_info", ssse);
    QStringList lines = bench.log();
    std::transform(lines.begin(), lines.end(), lines.begin(), withoutChance);
    return lines << bench.widget<QTextEdit>("textEdit_ef05", ssse)->toPlainText()
                 << bench.widget<QTextEdit>("textEdit_ef06", ssse)->toPlainText();
}

QStringList workOnMifareCard(OpenBench &bench)
{
    auto *const page = bench.page<Form_Mifare_Card>();
    for (const char *button :
         {"pushButton_mifare_read_block", "pushButton_mifare_find", "pushButton_mifare_auth",
          "pushButton_mifare_read_block", "pushButton_mifare_write_block", "pushButton_mifare_read_block",
          "pushButton_mifare_wallet_init", "pushButton_mifare_wallet_inc", "pushButton_mifare_wallet_dec",
          "pushButton_mifare_wallet_val"})
        bench.press(button, page);
    bench.type("lineEdit_mifare_password", "000000000000", page);
    bench.press("pushButton_mifare_auth", page);
    bench.press("pushButton_mifare_wallet_val", page);
    bench.type("lineEdit_mifare_password", "FFFFFFFFFFFF", page);
    bench.press("pushButton_mifare_auth", page);
    bench.press("checkBox_mifare_en_change_password", page);
    bench.type("lineEdit_mifare_password_new", "A1A2A3A4A5A6", page);
    for (const char *button :
         {"pushButton_mifare_change_password", "pushButton_mifare_auth", "pushButton_mifare_read_block"})
        bench.press(button, page);
    // A sector in which each key has rights of its own.
    bench.widget<QComboBox>("comboBox_mifare_sector_number", page)->setCurrentIndex(2);
    bench.type("lineEdit_mifare_password", "B0B1B2B3B4B5", page);
    bench.press("radioButton_mifare_password_b", page);
    for (const char *button : {"pushButton_mifare_auth", "pushButton_mifare_wallet_inc", "pushButton_mifare_wallet_val",
                               "pushButton_mifare_wallet_init"})
        bench.press(button, page);
    bench.type("lineEdit_mifare_password", "A0A1A2A3A4A5", page);
    bench.press("radioButton_mifare_password_a", page);
    for (const char *button : {"pushButton_mifare_auth", "pushButton_mifare_wallet_dec", "pushButton_mifare_wallet_val",
                               "pushButton_mifare_wallet_inc", "pushButton_mifare_wallet_val"})
        bench.press(button, page);
    return bench.log();
}

} // namespace

class TestServedCard : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void benchLogsTheSameOfACpuCard_data();
    void benchLogsTheSameOfACpuCard();
    void benchLogsTheSameOfAMifareCard();
    void killedProgramTakesTheCardOut();
    void connectsToLoopbackOnly();

private:
    std::unique_ptr<PcscDaemon> m_daemon;
};

void TestServedCard::initTestCase()
{
    m_daemon = std::make_unique<PcscDaemon>();
    QVERIFY2(m_daemon->problem().isEmpty(), qPrintable(m_daemon->problem()));
}

void TestServedCard::benchLogsTheSameOfACpuCard_data()
{
    QTest::addColumn<QString>("card");
    QTest::addColumn<QString>("reader");
    QTest::addColumn<QStringList>("logged");
    const QStringList always = {"vek_icc_apdu return[0x0]", "vek_pboc_get_card_info return[0x0]",
                                "vek_pboc_get_arqc return[0x0]"};
    QTest::newRow("social security and bank, T=0")
        << kCpuCard << "[Contact]" << always + QStringList{"ATR = [3B6D0000554E49464F4C44205353534531]",
                                                           "ARQC=[A016..B00280C0040241",
                                                           "ARQC=[A016..B00280C0040243",
                                                           "vek_ssse_get_issuer_info return[0x0]",
                                                           "vek_ssse_get_user_info return[0x0]",
                                                           "张三"};
    QTest::newRow("contactless bank card, T=1") << "contactless-bank-card"
                                                << "[Contactless]"
                                                << always + QStringList{"vek_ssse_get_issuer_info return[0xFFFFFFF2]",
                                                                        "vek_ssse_get_user_info return[0xFFFFFFF2]"};
}

// A fresh tray for each library: the card counts its transactions.
void TestServedCard::benchLogsTheSameOfACpuCard()
{
    QFETCH(QString, card);
    QFETCH(QString, reader);
    QFETCH(QStringList, logged);
    const QTemporaryDir lent;
    const QTemporaryDir own;
    QStringList overPcsc;
    {
        ServedCard served(UNIFOLD_TRAY_TOOL, freshTray(lent), card.toUtf8().constData());
        QVERIFY2(served.problem().isEmpty(), served.problem());
        OpenBench bench(kPcscLibrary, kReader0);
        overPcsc = workOnCpuCard(bench);
    }
    const QString tray = freshTray(own);
    if (reader == "[Contactless]")
        drivers::tray::Tray(tray.toStdString()).put(drivers::tray::Slot::Antenna, card.toStdString());
    qputenv(drivers::tray::kTrayVariable, tray.toUtf8());
    OpenBench bench(kVirtualLibrary, reader);
    const QStringList onVirtualReader = workOnCpuCard(bench);
    QCOMPARE(overPcsc, onVirtualReader);
    const QString all = overPcsc.join('\n');
    for (const QString &line : logged)
        QVERIFY2(all.contains(line), qPrintable(line));
}

void TestServedCard::benchLogsTheSameOfAMifareCard()
{
    const QTemporaryDir lent;
    const QTemporaryDir own;
    QStringList overPcsc;
    {
        ServedCard card(UNIFOLD_TRAY_TOOL, freshTray(lent), kMifareCard);
        QVERIFY2(card.problem().isEmpty(), card.problem());
        OpenBench bench(kPcscLibrary, kReader0);
        overPcsc = workOnMifareCard(bench);
    }
    qputenv(drivers::tray::kTrayVariable, freshTray(own).toUtf8());
    OpenBench bench(kVirtualLibrary, "[Contactless]");
    QCOMPARE(overPcsc, workOnMifareCard(bench));
    const QString all = overPcsc.join('\n');
    for (const char *line :
         {"UID = [3A9F07C4]", "vek_mifare_authentication return[0x0]", "vek_mifare_write_block return[0x0]",
          "余额 = [210]", "vek_mifare_change_key return[0x0]", "vek_mifare_increase_value return[0xFFFFFFF3]"})
        QVERIFY2(all.contains(line), line);
    // Both cards hold the same on disk.
    QCOMPARE(drivers::tray::Tray(lent.filePath("tray").toStdString()).card(kMifareCard),
             drivers::tray::Tray(own.filePath("tray").toStdString()).card(kMifareCard));
}

void TestServedCard::killedProgramTakesTheCardOut()
{
    const QTemporaryDir lent;
    ServedCard card(UNIFOLD_TRAY_TOOL, freshTray(lent), kCpuCard);
    QVERIFY2(card.problem().isEmpty(), card.problem());
    DriverApi api(kPcscLibrary);
    DriverSession session(api, kReader0);
    QCOMPARE(session.powerOn().code, int(kSuccess));
    card.kill();
    QCOMPARE(session.apdu("0084000008").code, int(kCardRemoved));
    QCOMPARE(session.status(), int(kCardAbsent));
}

// Every internet socket of the serving program ends at 127.0.0.1 on both sides, and none listens.
void TestServedCard::connectsToLoopbackOnly()
{
    const QTemporaryDir lent;
    ServedCard card(UNIFOLD_TRAY_TOOL, freshTray(lent), kCpuCard);
    QVERIFY2(card.problem().isEmpty(), card.problem());
    QStringList inodes;
    const QString process = QString("/proc/%1").arg(card.processId());
    for (const QFileInfo &entry :
         QDir(process + "/fd").entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        const QString target =
            QString::fromLocal8Bit(QByteArray(std::filesystem::read_symlink(entry.filePath().toStdString()).c_str()));
        if (target.startsWith("socket:["))
            inodes << target.mid(8).chopped(1);
    }
    int found = 0;
    for (const char *table : {"/net/tcp", "/net/tcp6", "/net/udp", "/net/udp6"}) {
        QFile file(process + table);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : file.readAll().split('\n')) {
            const QList<QByteArray> columns = line.simplified().split(' ');
            if (columns.size() < 10 || !inodes.contains(QString::fromLatin1(columns.at(9))))
                continue;
            ++found;
            QVERIFY2(columns.at(1).startsWith("0100007F:"), line);
            QVERIFY2(columns.at(2).startsWith("0100007F:"), line);
        }
    }
    QCOMPARE(found, 1);
}

QTEST_MAIN(TestServedCard)
#include "test_served_card.moc"
