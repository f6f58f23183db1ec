// Cards of the virtual reader's tray, lent to pcscd by "unifold-tray serve": programs that nobody here wrote see the
// same replies as the driver, and the bench logs the same lines over PC/SC as on the virtual reader.
#include "drivers/virtual/tray/tray.h"
#include "pages/cpucard/form_cpu_iccard.h"
#include "pages/mifare/form_mifare_card.h"
#include "pages/ssse/form_ssse.h"
#include "tests/pcsc/driver_session.h"
#include "tests/pcsc/foreign_tools.h"
#include "tests/pcsc/served_card.h"
#include "tests/support/bench.h"

#include <QComboBox>
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
constexpr char kOurs[] = "libtarvozent.so";
constexpr char kVirtual[] = "libtarvovek.so";

QString fresh(const QTemporaryDir &folder)
{
    QString path = folder.filePath("tray");
    const drivers::tray::Tray laidOut(path.toStdString());
    return path;
}

// The bench with one of our libraries, chosen and loaded as a person does it, and a PC/SC reader opened from its list.
class OpenBench : public Bench {
public:
    OpenBench(const char *library, const QString &reader)
    {
        window.show();
        widget<QComboBox>("comboBox_select_driver")->setCurrentText(library);
        press("pushButton_select_driver");
        press("radioButton_pcsc");
        press("pushButton_enum_select");
        auto *const devices = widget<QComboBox>("comboBox_select_device");
        devices->setCurrentIndex(devices->findText(reader, Qt::MatchContains));
        press("pushButton_open_select");
        widget<QTextEdit>("textEdit_log")->clear();
    }
};

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
    for (const char *button : {"pushButton_cpucard_status", "pushButton_cpucard_poweron", "pushButton_cpucard_status",
                               "pushButton_cpucard_apdu", "pushButton_pboc_taglist_whole", "pushButton_pboc_readinfo",
                               "pushButton_pboc_arqc", "pushButton_cpucard_poweroff", "pushButton_pboc_readinfo",
                               "pushButton_pboc_arqc", "pushButton_cpucard_status", "pushButton_cpucard_apdu"})
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
    return bench.log();
}

} // namespace

class TestServedCard : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void benchLogsTheSameOfACpuCard();
    void benchLogsTheSameOfAMifareCard();
    void foreignToolsSeeTheSame();
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

// A fresh tray for each library: the card counts its transactions.
void TestServedCard::benchLogsTheSameOfACpuCard()
{
    const QTemporaryDir lent;
    const QTemporaryDir own;
    QStringList overPcsc;
    {
        ServedCard card(UNIFOLD_TRAY_TOOL, fresh(lent), kCpuCard);
        QVERIFY2(card.problem().isEmpty(), card.problem());
        OpenBench bench(kOurs, kReader0);
        overPcsc = workOnCpuCard(bench);
    }
    qputenv(drivers::tray::kTrayVariable, fresh(own).toUtf8());
    OpenBench bench(kVirtual, "[Contact]");
    const QStringList onVirtualReader = workOnCpuCard(bench);
    QCOMPARE(overPcsc, onVirtualReader);
    const QString all = overPcsc.join('\n');
    for (const char *line : {"ATR = [3B6D0000554E49464F4C44205353534531]", "vek_icc_apdu return[0x0]",
                             "vek_pboc_get_card_info return[0x0]", "vek_pboc_get_arqc return[0x0]",
                             "ARQC=[A016..B00280C0040241", "ARQC=[A016..B00280C0040243",
                             "vek_ssse_get_issuer_info return[0x0]", "vek_ssse_get_user_info return[0x0]", "张三"})
        QVERIFY2(all.contains(line), line);
}

void TestServedCard::benchLogsTheSameOfAMifareCard()
{
    const QTemporaryDir lent;
    const QTemporaryDir own;
    QStringList overPcsc;
    {
        ServedCard card(UNIFOLD_TRAY_TOOL, fresh(lent), kMifareCard);
        QVERIFY2(card.problem().isEmpty(), card.problem());
        OpenBench bench(kOurs, kReader0);
        overPcsc = workOnMifareCard(bench);
    }
    qputenv(drivers::tray::kTrayVariable, fresh(own).toUtf8());
    OpenBench bench(kVirtual, "[Contactless]");
    QCOMPARE(overPcsc, workOnMifareCard(bench));
    const QString all = overPcsc.join('\n');
    for (const char *line : {"UID = [3A9F07C4]", "vek_mifare_authentication return[0x0]",
                             "vek_mifare_write_block return[0x0]", "余额 = [210]"})
        QVERIFY2(all.contains(line), line);
    // Both cards hold the same on disk.
    QCOMPARE(drivers::tray::Tray(lent.filePath("tray").toStdString()).card(kMifareCard),
             drivers::tray::Tray(own.filePath("tray").toStdString()).card(kMifareCard));
}

void TestServedCard::foreignToolsSeeTheSame()
{
    const QTemporaryDir lent;
    ServedCard card(UNIFOLD_TRAY_TOOL, fresh(lent), kCpuCard);
    QVERIFY2(card.problem().isEmpty(), card.problem());
    DriverApi api(kOurs);
    // Social security: application, EF05, an item; bank: application, first record; a file that is missing.
    const QList<QByteArray> commands = {"00A404000F7378312E73682EC9E7BBE1B1A3D5CF",
                                        "00A4000002EF05",
                                        "00B2010012",
                                        "00A4040007A0000003330101",
                                        "00B2011400",
                                        "00A4000002DEAD"};
    QList<QByteArray> ours;
    {
        DriverSession session(api, kReader0);
        const Answer atr = session.powerOn();
        QCOMPARE(atr.code, int(kSuccess));
        const QByteArray tool = outputOf("opensc-tool", {"--reader", kReader0, "-a"});
        QCOMPARE(digits(tool.trimmed().split('\n').last()), atr.text);
        for (const QByteArray &command : commands)
            ours << session.apdu(command).text;
        QCOMPARE(session.powerOff(), int(kSuccess));
    }
    QCOMPARE(ours.at(2), QByteArray("011000112233445566778899AABBCCDDEEFF9000"));
    QVERIFY(ours.at(3).endsWith("9000"));
    QCOMPARE(ours.last(), QByteArray("6A82"));

    // opensc-explorer completes T=0 replies as the driver does, and prints "Received (SW1=0x90, SW2=0x00):" and a dump.
    QByteArray script;
    for (const QByteArray &command : commands)
        script += "apdu " + command + "\n";
    const QByteArray explored = outputOf("opensc-explorer", {"-c", "default", "-r", kReader0}, script + "quit\n");
    QList<QByteArray> words;
    for (const QByteArray &line : explored.split('\n')) {
        const int at = line.indexOf("SW1=0x");
        if (at >= 0)
            words << line.mid(at + 6, 2) + line.mid(at + 16, 2);
    }
    QList<QByteArray> expected;
    for (const QByteArray &reply : ours)
        expected << reply.right(4);
    QVERIFY2(words == expected, explored);

    const QList<QByteArray> scripted =
        scriptorReplies(outputOf("scriptor", {"-r", kReader0}, commands.join('\n') + '\n'));
    QCOMPARE(scripted.size(), commands.size());
    for (int i = 0; i < scripted.size(); ++i) {
        // scriptor shows 61xx as it comes; what then waits is what the driver fetches.
        const QByteArray waiting = QByteArray::number(ours.at(i).size() / 2 - 2, 16).rightJustified(2, '0').toUpper();
        QVERIFY2(scripted.at(i) == ours.at(i) || scripted.at(i) == "61" + waiting || scripted.at(i).startsWith("6C"),
                 scripted.at(i) + " against " + ours.at(i));
    }
}

void TestServedCard::killedProgramTakesTheCardOut()
{
    const QTemporaryDir lent;
    ServedCard card(UNIFOLD_TRAY_TOOL, fresh(lent), kCpuCard);
    QVERIFY2(card.problem().isEmpty(), card.problem());
    DriverApi api(kOurs);
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
    ServedCard card(UNIFOLD_TRAY_TOOL, fresh(lent), kCpuCard);
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
