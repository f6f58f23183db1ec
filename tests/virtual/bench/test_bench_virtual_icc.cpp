// The IC card page's slots, power and APDUs over the virtual reader.
#include "pages/cpucard/form_cpu_iccard.h"
#include "tests/virtual/bench/virtual_bench.h"

namespace {

using Slot = VirtualBench::Slot;

const QString kSeparator = BenchWindow::separator("IC卡");
constexpr char kSelectByFid[] = "00A4000002DF01";

QStringList lines(const char *line)
{
    return {kSeparator, QString("[IC卡] ") + line};
}

class IccBench : public VirtualBench {
public:
    IccBench() { openDevice(); }

    QStringList status() { return logOf("pushButton_cpucard_status", form()); }
    QStringList powerOn() { return logOf("pushButton_cpucard_poweron", form()); }
    QStringList powerOff() { return logOf("pushButton_cpucard_poweroff", form()); }
    QStringList probe() { return logOf("pushButton_rf_probe", form()); }
    QStringList send() { return logOf("pushButton_cpucard_apdu", form()); }
    QStringList send(const QString &apdu)
    {
        type("lineEdit_apdu", apdu, form());
        return send();
    }
    void choose(const char *cardType) { press(cardType, form()); }

    QStringList poweredOn(Slot slot)
    {
        return lines("vek_icc_poweron return[0x0] (assert 0)") << "[IC卡] ATR = [" + cardText(slot, "/atr") + "]";
    }

private:
    Form_CPU_Iccard *form() { return page<Form_CPU_Iccard>(); }
};

QStringList answered(const QString &apdu, const QString &reply)
{
    return {kSeparator, "[IC卡] send APDU=[" + apdu + "]", "[IC卡] vek_icc_apdu return[0x0] (assert 0)",
            "[IC卡] recv RPDU=[" + reply + "]"};
}

QStringList refused(const QString &apdu, const QString &code)
{
    return {kSeparator, "[IC卡] send APDU=[" + apdu + "]", "[IC卡] vek_icc_apdu return[" + code + "] (assert 0)"};
}

} // namespace

class TestBenchVirtualIcc : public QObject {
    Q_OBJECT

private slots:
    void startValuesSucceed()
    {
        IccBench bench;
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x1]"));
        QCOMPARE(bench.powerOn(), bench.poweredOn(Slot::Contact));
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x2]"));
        const QStringList selected = bench.send();
        // The application's name and label, as the card's file has them: 84 AID, 50 "PBOC DEBIT".
        QVERIFY2(selected.last().contains("8408A000000333010101") && selected.last().endsWith("9000]"),
                 qPrintable(selected.last()));
        QVERIFY2(selected.last().contains("500A50424F43204445424954"), qPrintable(selected.last()));
        QCOMPARE(selected.mid(0, 3), answered("00A4040008A000000333010101", "").mid(0, 3));
        QCOMPARE(bench.powerOff(), lines("vek_icc_poweroff return[0x0] (assert 0)"));
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x1]"));
        QCOMPARE(bench.probe(), lines("vek_probe_rf return[0x0] (assert 0)") << "[IC卡] RF Card [进场] , type=[08]");
    }

    void everySlotButtonReachesItsCard_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("slot");
        const auto row = [](const char *button, Slot slot) {
            QTest::newRow(button) << QString(button) << static_cast<int>(slot);
        };
        row("radioButton", Slot::Contact);
        row("radioButton_3", Slot::Contact);
        row("radioButton_4", Slot::Psam1);
        row("radioButton_5", Slot::Psam2);
        row("radioButton_6", Slot::Psam3);
        row("radioButton_7", Slot::Psam4);
    }

    void everySlotButtonReachesItsCard()
    {
        QFETCH(QString, button);
        QFETCH(int, slot);
        IccBench bench;
        bench.choose(button.toLatin1().constData());
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x1]"));
        QCOMPARE(bench.powerOn(), bench.poweredOn(static_cast<Slot>(slot)));
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x2]"));
        const QString challenge = bench.send("0084000008").last();
        QVERIFY2(QRegularExpression(R"(^\[IC卡\] recv RPDU=\[[0-9A-F]{16}9000\]$)").match(challenge).hasMatch(),
                 qPrintable(challenge));
        QCOMPARE(bench.powerOff(), lines("vek_icc_poweroff return[0x0] (assert 0)"));
    }

    void contactlessCardAnswersOnTheAntenna()
    {
        IccBench bench;
        QVERIFY(runTrayTool({"put", "contactless-bank-card", "antenna"}));
        bench.choose("radioButton_2");
        QCOMPARE(bench.powerOn(), bench.poweredOn(Slot::Antenna));
        const QString selected = bench.send("00A4040008A000000333010101").last();
        QVERIFY2(selected.endsWith("9000]"), qPrintable(selected));
        QCOMPARE(bench.powerOff(), lines("vek_icc_poweroff return[0x0] (assert 0)"));
    }

    void mifareCardHasNoAnswerToReset()
    {
        IccBench bench;
        bench.choose("radioButton_2");
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x1]"));
        QCOMPARE(bench.powerOn(), lines("vek_icc_poweron return[0xFFFFFFF2] (assert 0)"));
    }

    void automaticFallsToTheAntennaWhenContactIsEmpty()
    {
        IccBench bench;
        QVERIFY(runTrayTool({"take", "contact"}));
        QVERIFY(runTrayTool({"put", "contactless-bank-card", "antenna"}));
        QCOMPARE(bench.powerOn(), bench.poweredOn(Slot::Antenna));
    }

    void securityModuleFilesAndKeyAnswer()
    {
        IccBench bench;
        bench.choose("radioButton_4");
        bench.powerOn();
        const nlohmann::json files = bench.cardIn(Slot::Psam1).at("masterFile").at("files");
        const QString number = QString::fromStdString(files.at(0).at("content"));
        QCOMPARE(bench.send("00B0950000"), answered("00B0950000", number + "9000"));
        QVERIFY(bench.send(kSelectByFid).last().endsWith("9000]"));
        // INTERNAL AUTHENTICATE with key 1, 16 bytes of 11: the challenge of zeros under 3DES.
        const QString reply = bench.send("00880001080000000000000000").last();
        QCOMPARE(reply, "[IC卡] recv RPDU=[82E13665B4624DF59000]");
    }

    void apduIsCleanedBeforeItIsSent()
    {
        IccBench bench;
        bench.powerOn();
        QCOMPARE(bench.send("00 a4 00 00 02 77 77"), answered("00A40000027777", "6A82"));
        QCOMPARE(bench.send("00FE0000"), answered("00FE0000", "6D00"));
        QCOMPARE(bench.send("00A4040"), refused("00A4040", "0xFFFFFFFE"));
        QCOMPARE(bench.send("00XY0000"), refused("00XY0000", "0xFFFFFFFE"));
    }

    void commandsNeedAPoweredCard()
    {
        IccBench bench;
        QCOMPARE(bench.send("0084000008"), refused("0084000008", "0xFFFFFFF5"));
        QVERIFY(runTrayTool({"take", "contact"}));
        bench.choose("radioButton");
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x0]"));
        QCOMPARE(bench.send("0084000008"), refused("0084000008", "0xFFFFFFFD"));
        bench.setTimeout("1");
        QCOMPARE(bench.powerOn(), lines("vek_icc_poweron return[0xFFFFFFFB] (assert 0)"));
    }

    void cardPulledOutMidwayIsToldOnce()
    {
        IccBench bench;
        bench.choose("radioButton");
        bench.powerOn();
        QVERIFY(runTrayTool({"take", "contact"}));
        QCOMPARE(bench.send("0084000008"), refused("0084000008", "0xFFFFFFFC"));
        QCOMPARE(bench.send("0084000008"), refused("0084000008", "0xFFFFFFFD"));
        QVERIFY(runTrayTool({"put", "social-security-and-bank-card", "contact"}));
        QCOMPARE(bench.send("0084000008"), refused("0084000008", "0xFFFFFFF5"));
        QCOMPARE(bench.powerOn(), bench.poweredOn(Slot::Contact));
    }

    void poweringOnWaitsForTheCard()
    {
        IccBench bench;
        bench.world().take(Slot::Contact);
        bench.choose("radioButton");
        QStringList log;
        {
            const Meanwhile hand([] { runTrayTool({"put", "file-card", "contact"}); });
            log = bench.powerOn();
        }
        QCOMPARE(log, bench.poweredOn(Slot::Contact));
    }

    void powerCutUnpowersTheCard()
    {
        IccBench bench;
        bench.powerOn();
        QVERIFY(runTrayTool({"power"}));
        QCOMPARE(bench.status(), lines("vek_icc_status return[0x1]"));
        QCOMPARE(bench.send("0084000008"), refused("0084000008", "0xFFFFFFF5"));
    }

    void probeTellsComingStayingAndLeaving()
    {
        IccBench bench;
        const QStringList returned = lines("vek_probe_rf return[0x0] (assert 0)");
        QCOMPARE(bench.probe(), QStringList(returned) << "[IC卡] RF Card [进场] , type=[08]");
        QCOMPARE(bench.probe(), QStringList(returned) << "[IC卡] RF Card [保持] , type=[08]");
        QVERIFY(runTrayTool({"take", "antenna"}));
        QCOMPARE(bench.probe(), QStringList(returned) << "[IC卡] RF Card [出场] , type=[00]");
        QCOMPARE(bench.probe(), QStringList(returned) << "[IC卡] RF Card [保持] , type=[00]");
        QVERIFY(runTrayTool({"put", "contactless-bank-card", "antenna"}));
        QCOMPARE(bench.probe(), QStringList(returned) << "[IC卡] RF Card [进场] , type=[20]");
    }
};

QTEST_MAIN(TestBenchVirtualIcc)
#include "test_bench_virtual_icc.moc"
