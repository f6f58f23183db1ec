// The social security page over the virtual reader.
#include "pages/cpucard/form_cpu_iccard.h"
#include "pages/ssse/form_ssse.h"
#include "tests/virtual/bench/virtual_bench.h"

namespace {

using Slot = VirtualBench::Slot;

const QString kSeparator = BenchWindow::separator("社保卡");

const QString kIssuer = "卡的识别码: 00112233445566778899AABBCCDDEEFF\n卡的类别: 3\n规范版本: 2.00\n"
                        "初始化机构编号: 110100000000000000000000\n发卡日期: 20210601\n卡有效期: 20310601\n"
                        "卡号: A00000018\n";
const QString kHolder = "社会保障卡号码: 110101199003072615\n姓名: 张三\n姓名扩展: \n性别: 男\n民族: 汉族\n"
                        "出生地: 110101\n出生日期: 19900307\n";

QStringList issuerReturned(const char *code)
{
    return {kSeparator, QString("[社保卡] vek_ssse_get_issuer_info return[%1] (assert 0)").arg(code)};
}

QStringList holderReturned(const char *code)
{
    return {kSeparator, QString("[社保卡] vek_ssse_get_user_info return[%1] (assert 0)").arg(code)};
}

class SsseBench : public VirtualBench {
public:
    SsseBench() { openDevice(); }

    Form_ssse *form() { return page<Form_ssse>(); }
    QStringList readIssuer() { return logOf("pushButton_gov_info", form()); }
    QStringList readHolder() { return logOf("pushButton_user_info", form()); }
    QString shown(const char *box) { return widget<QTextEdit>(box, form())->toPlainText(); }
};

} // namespace

class TestBenchVirtualSsse : public QObject {
    Q_OBJECT

private slots:
    void issuerAndHolderAtStart()
    {
        SsseBench bench;
        QCOMPARE(bench.readIssuer(), issuerReturned("0x0"));
        QCOMPARE(bench.shown("textEdit_ef05"), kIssuer);
        QCOMPARE(bench.readHolder(), holderReturned("0x0"));
        QCOMPARE(bench.shown("textEdit_ef06"), kHolder);
        bench.press("pushButton_clear_ef05", bench.form());
        QCOMPARE(bench.shown("textEdit_ef05"), "");
        QCOMPARE(bench.shown("textEdit_ef06"), kHolder);
        bench.press("pushButton_clear_ef06", bench.form());
        QCOMPARE(bench.shown("textEdit_ef06"), "");
    }

    void contactIsTheSameCard()
    {
        SsseBench bench;
        bench.press("radioButton", bench.form());
        QCOMPARE(bench.readIssuer(), issuerReturned("0x0"));
        QCOMPARE(bench.shown("textEdit_ef05"), kIssuer);
        QCOMPARE(bench.readHolder(), holderReturned("0x0"));
        QCOMPARE(bench.shown("textEdit_ef06"), kHolder);
    }

    void contactlessReadsTheCardOnTheAntenna()
    {
        SsseBench bench;
        bench.press("radioButton_2", bench.form());
        // The Mifare card there has no applications.
        QCOMPARE(bench.readIssuer(), issuerReturned("0xFFFFFFF2"));
        QVERIFY(runTrayTool({"put", "social-security-and-bank-card", "antenna"}));
        QCOMPARE(bench.readIssuer(), issuerReturned("0x0"));
        QCOMPARE(bench.shown("textEdit_ef05"), kIssuer);
    }

    void changedHolderIsRead()
    {
        SsseBench bench;
        bench.changeCard(Slot::Contact, [](nlohmann::json &card) {
            nlohmann::json &holder = card["applications"][0]["holder"];
            holder["name"] = "欧阳娜依";
            holder["sex"] = "2";
            holder["ethnicGroup"] = "05";
            holder["nameExtension"] = "古丽";
        });
        QCOMPARE(bench.readHolder(), holderReturned("0x0"));
        QCOMPARE(bench.shown("textEdit_ef06"),
                 "社会保障卡号码: 110101199003072615\n姓名: 欧阳娜依\n姓名扩展: 古丽\n性别: 女\n民族: 维吾尔族\n"
                 "出生地: 110101\n出生日期: 19900307\n");
    }

    void cardWithoutTheApplicationIsACardError()
    {
        SsseBench bench;
        QVERIFY(runTrayTool({"put", "file-card", "contact"}));
        QCOMPARE(bench.readIssuer(), issuerReturned("0xFFFFFFF2"));
        QCOMPARE(bench.readHolder(), holderReturned("0xFFFFFFF2"));
        QCOMPARE(bench.shown("textEdit_ef05"), "");
    }

    void emptySlotTimesOutAndClearsTheText()
    {
        SsseBench bench;
        bench.readIssuer();
        bench.readHolder();
        bench.world().take(Slot::Contact);
        bench.world().take(Slot::Antenna);
        bench.setTimeout("1");
        QCOMPARE(bench.readIssuer(), issuerReturned("0xFFFFFFFB"));
        QCOMPARE(bench.readHolder(), holderReturned("0xFFFFFFFB"));
        QCOMPARE(bench.shown("textEdit_ef05"), "");
        QCOMPARE(bench.shown("textEdit_ef06"), "");
    }

    void poweredCardStaysPowered()
    {
        SsseBench bench;
        auto *const icc = bench.page<Form_CPU_Iccard>();
        bench.press("pushButton_cpucard_poweron", icc);
        QCOMPARE(bench.readHolder(), holderReturned("0x0"));
        QCOMPARE(bench.logOf("pushButton_cpucard_status", bench.page<Form_CPU_Iccard>()).last(),
                 "[IC卡] vek_icc_status return[0x2]");
    }

    void pcscReaderReadsItToo()
    {
        VirtualBench bench;
        bench.openDevice("radioButton_pcsc", "Unifold Virtual Reader [Contact] (TRAY0001) 00 00");
        auto *const page = bench.page<Form_ssse>();
        QCOMPARE(bench.logOf("pushButton_user_info", page), holderReturned("0x0"));
        QCOMPARE(bench.widget<QTextEdit>("textEdit_ef06", page)->toPlainText(), kHolder);
    }
};

QTEST_MAIN(TestBenchVirtualSsse)
#include "test_bench_virtual_ssse.moc"
