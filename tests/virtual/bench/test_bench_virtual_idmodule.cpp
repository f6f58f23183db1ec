// The commands of the ID card module over the virtual reader.
#include "pages/idcard/form_idcard.h"
#include "tests/virtual/bench/virtual_bench.h"

namespace {

using Slot = VirtualBench::Slot;

const QString kSeparator = BenchWindow::separator("二代证");

class ModuleBench : public VirtualBench {
public:
    ModuleBench() { openDevice(); }

    Form_Idcard *form() { return page<Form_Idcard>(); }
    QStringList pressed(const char *button) { return logOf(button, form()); }
    QStringList passThrough(const QString &command)
    {
        type("lineEdit_command_aa", command, form());
        return pressed("pushButton_command_aa");
    }
    QString card(const char *place) { return cardText(Slot::IdPlate, place); }

    /// What the card's file says a module command is answered with: the status word and the data.
    QString statusWord(const char *command) { return card((std::string("/module/") + command + "/sw").c_str()); }
    QString data(const char *command)
    {
        const auto found = cardIn(Slot::IdPlate).at("module").at(command).at("data");
        QString digits;
        if (found.is_string())
            return QString::fromStdString(found);
        for (const auto &line : found)
            digits += QString::fromStdString(line);
        return digits;
    }
};

QStringList text(const char *call, const QString &line)
{
    return {kSeparator, QString("[二代证] %1 return[0] (assert 0)").arg(call), line};
}

QStringList failed(const char *call, int code)
{
    return {kSeparator, QString("[二代证] %1 return[%2] (assert 0)").arg(call).arg(code)};
}

} // namespace

class TestBenchVirtualIdmodule : public QObject {
    Q_OBJECT

private slots:
    void textsOfTheCard()
    {
        ModuleBench bench;
        QCOMPARE(bench.pressed("pushButton_read_phsy_id"),
                 text("vek_idcr_read_uid", "[二代证] 物理ID = [" + bench.card("/uid") + "]"));
        QCOMPARE(bench.text("lineEdit_phsy_id"), bench.card("/uid"));
        QCOMPARE(bench.pressed("pushButton_read_dn"),
                 text("vek_idcr_read_dn", "[二代证] 身份证DN = [" + bench.card("/dn") + "]"));
        QCOMPARE(bench.pressed("pushButton_read_emid"),
                 text("vek_idcr_read_emid", "[二代证] EMID = [" + bench.card("/emid") + "]"));
    }

    void numberOfTheModuleNeedsNoCard()
    {
        ModuleBench bench;
        QVERIFY(runTrayTool({"take", "id"}));
        QCOMPARE(bench.pressed("pushButton_read_sam_id"),
                 text("vek_idcr_read_uid", "[二代证] SAM ID = [05.01-20260101-0000012345-0000067890]"));
        QCOMPARE(bench.text("lineEdit_sam_id"), "05.01-20260101-0000012345-0000067890");
    }

    void passThroughAtStart()
    {
        ModuleBench bench;
        QCOMPARE(bench.pressed("pushButton_command_aa"),
                 QStringList({kSeparator, "[二代证] vek_idcr_transive return[0] (assert 0)",
                              "[二代证] SW=[" + bench.statusWord("2001") + "], length=[" +
                                  QString::number(bench.data("2001").size() / 2) + "].",
                              "Data={", bench.data("2001"), "}"}));
    }

    void replyOfMoreThan1024BytesIsDumpedInLines()
    {
        ModuleBench bench;
        const QString data = bench.data("3001");
        QVERIFY2(data.size() / 2 > 1024, qPrintable(QString::number(data.size() / 2)));
        QCOMPARE(bench.passThrough("3001"), QStringList({kSeparator, "[二代证] vek_idcr_transive return[0] (assert 0)",
                                                         "[二代证] SW=[" + bench.statusWord("3001") + "], length=[" +
                                                             QString::number(data.size() / 2) + "].",
                                                         "Data={", data.left(2048), data.mid(2048), "}"}));
    }

    void commandOfAnotherLengthIsRefusedByThePage()
    {
        ModuleBench bench;
        QCOMPARE(bench.passThrough("200"), QStringList({kSeparator, "[二代证] AA指令格式错误, 应为4位！"}));
    }

    void unknownCommandHasAStatusWordAndNoData()
    {
        ModuleBench bench;
        const QStringList log = bench.passThrough("7799");
        QCOMPARE(log.size(), 5);
        QCOMPARE(log[1], "[二代证] vek_idcr_transive return[0] (assert 0)");
        QVERIFY2(QRegularExpression(R"(^\[二代证\] SW=\[[0-9A-F]{8}\], length=\[0\]\.$)").match(log[2]).hasMatch(),
                 qPrintable(log[2]));
        QCOMPARE(log.mid(3), QStringList({"Data={", "}"}));
    }

    void emptyPlateTimesOut()
    {
        ModuleBench bench;
        bench.world().take(Slot::IdPlate);
        bench.setTimeout("1");
        QCOMPARE(bench.pressed("pushButton_read_phsy_id"), failed("vek_idcr_read_uid", -5));
        QCOMPARE(bench.text("lineEdit_phsy_id"), "");
        QCOMPARE(bench.pressed("pushButton_read_dn"), failed("vek_idcr_read_dn", -5));
        QCOMPARE(bench.pressed("pushButton_read_emid"), failed("vek_idcr_read_emid", -5));
        QCOMPARE(bench.pressed("pushButton_command_aa"), failed("vek_idcr_transive", -5));
    }

    void sdtPortKnowsTheModuleAlone()
    {
        VirtualBench bench;
        bench.openDevice("radioButton_sdt", "SDT0001");
        auto *const page = bench.page<Form_Idcard>();
        QCOMPARE(bench.logOf("pushButton_read_sam_id", page),
                 text("vek_idcr_read_uid", "[二代证] SAM ID = [05.01-20260101-0000012345-0000067890]"));
        QCOMPARE(bench.logOf("pushButton_read_phsy_id", page), failed("vek_idcr_read_uid", -8));
        QCOMPARE(bench.logOf("pushButton_command_aa", page), failed("vek_idcr_transive", -8));
    }
};

QTEST_MAIN(TestBenchVirtualIdmodule)
#include "test_bench_virtual_idmodule.moc"
