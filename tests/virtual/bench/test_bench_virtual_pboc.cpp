// The IC card page's PBOC group over the virtual reader, the cryptogram computed anew from the card's master key.
#include "drivers/virtual/cards/cryptogram.h"
#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/virtual/bench/virtual_bench.h"

#include <map>

namespace {

using namespace drivers;
using Slot = VirtualBench::Slot;

const QString kSeparator = BenchWindow::separator("IC卡");
const QString kTransaction =
    "P012000000000000Q012000000000000R0040156S006140426T00201U006143837V024D7DBBACFB9F1C3E6B2E2CAD4";

/// "letter, three digits, value" as docs/pboc-letters.md has it.
QString field(char letter, const QString &value)
{
    return letter + QString("%1").arg(value.length(), 3, 10, QChar('0')) + value;
}

std::map<char, std::string> splitFields(const QString &line, const QString &head)
{
    std::map<char, std::string> fields;
    const QString text = line.mid(head.size(), line.size() - head.size() - 1);
    for (int at = 0; at + 4 <= text.size();) {
        const int length = text.mid(at + 1, 3).toInt();
        fields[text[at].toLatin1()] = text.mid(at + 4, length).toStdString();
        at += 4 + length;
    }
    return fields;
}

class PbocBench : public VirtualBench {
public:
    PbocBench() { openDevice(); }

    Form_CPU_Iccard *form() { return page<Form_CPU_Iccard>(); }
    QStringList readInfo() { return logOf("pushButton_pboc_readinfo", form()); }
    QStringList readInfo(const QString &tags)
    {
        type("lineEdit_pboc_taglist", tags, form());
        return readInfo();
    }
    QStringList sign() { return logOf("pushButton_pboc_arqc", form()); }

    /// The PBOC application of the card in a slot.
    nlohmann::json application(Slot slot)
    {
        const nlohmann::json card = cardIn(slot);
        for (const nlohmann::json &application : card.at("applications"))
            if (application.at("type") == "pboc")
                return application;
        return {};
    }
};

QStringList info(const QString &tags, const QString &reply)
{
    return {kSeparator, "[IC卡] taglist=[" + tags + "]", "[IC卡] vek_pboc_get_card_info return[0x0] (assert 0)",
            "[IC卡] info=[" + reply + "]"};
}

QStringList infoRefused(const QString &tags, const char *code)
{
    return {kSeparator, "[IC卡] taglist=[" + tags + "]",
            QString("[IC卡] vek_pboc_get_card_info return[%1] (assert 0)").arg(code)};
}

QStringList notSigned(const QString &transaction, const char *code)
{
    return {kSeparator, "[IC卡] txdata=[" + transaction + "]",
            QString("[IC卡] vek_pboc_get_arqc return[%1] (assert 0)").arg(code)};
}

/// The cryptogram that the reply's fields must carry, by the application's master key.
std::string expectedCryptogram(const nlohmann::json &application, std::map<char, std::string> fields)
{
    using namespace drivers::cards;
    const Algorithm algorithm = application.at("algorithm") == "SM4" ? Algorithm::kSm4 : Algorithm::kTripleDes;
    const Bytes master = fromHex(application.at("masterKey").get<std::string>()).value();
    const Bytes factor =
        cardFactor(application.at("pan").get<std::string>(), application.at("panSequence").get<std::string>());
    const auto counter = static_cast<std::uint16_t>(std::stoul(fields['C'], nullptr, 16));
    // Bytes 4 to 7 of the issuer application data are the card's verification results.
    const std::string results = fields['D'].substr(6, 8);
    const std::string data = fields['H'] + fields['I'] + fields['J'] + fields['F'] + fields['K'] + fields['L'] +
                             fields['M'] + fields['E'] + fields['G'] + fields['C'] + results;
    return toHex(cryptogram(algorithm, sessionKey(algorithm, diversifyKey(algorithm, master, factor), counter),
                            fromHex(data).value()));
}

} // namespace

class TestBenchVirtualPboc : public QObject {
    Q_OBJECT

private slots:
    // The transaction counter is one more than the card's file says: reading begins a transaction.
    void allTagsAtStart()
    {
        PbocBench bench;
        const nlohmann::json card = bench.application(Slot::Contact);
        const QString pan = QString::fromStdString(card.at("pan"));
        QCOMPARE(bench.readInfo(),
                 info("ABCDEFGHIJKLMNOPQ",
                      field('A', pan) + field('B', "ZHANG SAN") + field('C', "110101199003072615") +
                          field('D', pan + "D3106220000000") + field('E', "310630") + field('F', "210601") +
                          field('G', "00") + field('H', "0220") + field('I', "0240") + field('J', "01") +
                          field('K', "0156") + field('L', "0156") + field('M', "PBOC DEBIT") + field('N', "023A") +
                          field('O', "03") + field('P', "000000008800") + field('Q', "000000100000")));
    }

    void commonTagsThenAllAgain()
    {
        PbocBench bench;
        const QString pan = QString::fromStdString(bench.application(Slot::Contact).at("pan"));
        QVERIFY(bench.logOf("pushButton_pboc_taglist_common", bench.form()).isEmpty());
        QCOMPARE(bench.readInfo(), info("ACDEIJ", field('A', pan) + field('C', "110101199003072615") +
                                                      field('D', pan + "D3106220000000") + field('E', "310630") +
                                                      field('I', "0240") + field('J', "01")));
        bench.press("pushButton_pboc_taglist_whole", bench.form());
        QCOMPARE(bench.text("lineEdit_pboc_taglist"), "ABCDEFGHIJKLMNOPQ");
    }

    void tagsComeInTheOrderAskedFor()
    {
        PbocBench bench;
        QCOMPARE(bench.readInfo("JEJ"), info("JEJ", field('J', "01") + field('E', "310630") + field('J', "01")));
    }

    void unknownAndMissingTagsAreRefused()
    {
        PbocBench bench;
        QCOMPARE(bench.readInfo("AZ"), infoRefused("AZ", "0xFFFFFFFE"));
        QCOMPARE(bench.readInfo(""), infoRefused("", "0xFFFFFFFE"));
    }

    void unknownApplicationIsACardError()
    {
        PbocBench bench;
        bench.type("lineEdit_pboc_aid", "A000000999", bench.form());
        QCOMPARE(bench.readInfo("A"), infoRefused("A", "0xFFFFFFF2"));
        QCOMPARE(bench.sign(), notSigned(kTransaction, "0xFFFFFFF2"));
    }

    void transactionAtStartIsSigned_data()
    {
        QTest::addColumn<QString>("card");
        QTest::newRow("3DES") << "social-security-and-bank-card";
        QTest::newRow("SM4") << "contactless-bank-card";
    }

    void transactionAtStartIsSigned()
    {
        QFETCH(QString, card);
        PbocBench bench;
        QVERIFY(runTrayTool({"put", card, "contact"}));
        const int counter = bench.application(Slot::Contact).at("transactionCounter");
        const QStringList log = bench.sign();
        QCOMPARE(log.mid(0, 3), notSigned(kTransaction, "0x0"));
        QCOMPARE(log.size(), 4);
        const QString head = "[IC卡] ARQC=[";
        QVERIFY2(log[3].startsWith(head) && log[3].endsWith(']'), qPrintable(log[3]));
        auto fields = splitFields(log[3], head);
        QCOMPARE(std::stoi(fields['C'], nullptr, 16), counter + 1);
        QCOMPARE(fields['B'], std::string("80"));
        QCOMPARE(fields['H'], std::string("000000000000"));
        QCOMPARE(fields['J'], std::string("0156"));
        QCOMPARE(fields['L'], std::string("140426"));
        QCOMPARE(fields['M'], std::string("01"));
        QCOMPARE(fields['N'], std::string("143837"));
        const nlohmann::json application = bench.application(Slot::Contact);
        QCOMPARE(fields['P'], application.at("pan").get<std::string>());
        QCOMPARE(fields['A'], expectedCryptogram(application, fields));
        // The card counted the transaction, and keeps the count.
        QCOMPARE(application.at("transactionCounter").get<int>(), counter + 1);
    }

    void malformedTransactionTouchesNoCard_data()
    {
        QTest::addColumn<QString>("transaction");
        QTest::newRow("empty") << "";
        QTest::newRow("unknown letter") << "Z0011";
        QTest::newRow("length past the end") << "P0120000";
        QTest::newRow("length of another size") << "P0020000";
        QTest::newRow("letter twice") << "T00201T00201";
    }

    void malformedTransactionTouchesNoCard()
    {
        QFETCH(QString, transaction);
        PbocBench bench;
        const nlohmann::json before = bench.cardIn(Slot::Contact);
        bench.type("lineEdit_pboc_arqc", transaction, bench.form());
        QCOMPARE(bench.sign(), notSigned(transaction, "0xFFFFFFFE"));
        QVERIFY(bench.cardIn(Slot::Contact) == before);
    }

    void noCardTimesOut()
    {
        PbocBench bench;
        bench.world().take(Slot::Contact);
        bench.world().take(Slot::Antenna);
        bench.setTimeout("1");
        QCOMPARE(bench.readInfo("A"), infoRefused("A", "0xFFFFFFFB"));
        QCOMPARE(bench.sign(), notSigned(kTransaction, "0xFFFFFFFB"));
    }

    void cardPulledOutUnderPowerIsWaitedForAnew()
    {
        PbocBench bench;
        bench.press("radioButton", bench.form());
        bench.press("pushButton_cpucard_poweron", bench.form());
        QVERIFY(runTrayTool({"take", "contact"}));
        bench.setTimeout("1");
        QCOMPARE(bench.readInfo("J"), infoRefused("J", "0xFFFFFFFB"));
        bench.setTimeout("20");
        QStringList log;
        {
            const Meanwhile hand([] { runTrayTool({"put", "contactless-bank-card", "contact"}); });
            log = bench.readInfo("J");
        }
        QCOMPARE(log, info("J", field('J', "00")));
    }

    void buttonsWithoutACallLogNothing()
    {
        PbocBench bench;
        for (const char *button :
             {"pushButton_pboc_arpc", "pushButton_pboc_trans_detail", "pushButton_pboc_load_detail"})
            QVERIFY(bench.logOf(button, bench.form()).isEmpty());
    }
};

QTEST_MAIN(TestBenchVirtualPboc)
#include "test_bench_virtual_pboc.moc"
