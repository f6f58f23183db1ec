// What a Mifare card refuses, seen on the page: keys, access conditions, values, the card taken away.
#include "tests/virtual/bench/mifare_bench.h"

using Slot = VirtualBench::Slot;

class TestBenchVirtualMifareEdges : public QObject {
    Q_OBJECT

private slots:
    void nothingWorksBeforeAuthentication()
    {
        MifareBench bench;
        bench.find();
        QCOMPARE(bench.read(), returned("read_block", kWrongKey));
        QCOMPARE(bench.text("lineEdit_mifare_block_data"), "");
        QCOMPARE(bench.write("00112233445566778899AABBCCDDEEFF"), returned("write_block", kWrongKey));
        QCOMPARE(bench.pressed("pushButton_mifare_wallet_init"), returned("init_value", kWrongKey));
        QCOMPARE(bench.pressed("pushButton_mifare_wallet_inc"), returned("increase_value", kWrongKey));
        QCOMPARE(bench.pressed("pushButton_mifare_wallet_dec"), returned("decrease_value", kWrongKey));
        QCOMPARE(bench.balance(), returned("read_value", kWrongKey));
        QCOMPARE(bench.changeKey("112233445566"), returned("change_key", kWrongKey));
    }

    void wrongKeyEndsTheAuthenticationBefore()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QCOMPARE(bench.authenticate('A', "000000000000"), returned("authentication", kWrongKey));
        QCOMPARE(bench.read(), returned("read_block", kWrongKey));
    }

    void keyOfOneSectorOpensNoOther()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        bench.choose(0, 1);
        QCOMPARE(bench.read(), returned("read_block", kWrongKey));
    }

    void malformedKeysAndBlocksAreBadArguments()
    {
        MifareBench bench;
        bench.find();
        for (const char *key : {"", "FFFFFFFFFFF", "FFFFFFFFFFFFFF", "GGGGGGGGGGGG"})
            QCOMPARE(bench.authenticate('A', key), returned("authentication", "0xFFFFFFFE"));
        bench.authenticate('A', "FFFFFFFFFFFF");
        QCOMPARE(bench.write("0011"), returned("write_block", "0xFFFFFFFE"));
        QCOMPARE(bench.stored(5), "8813000077ECFFFF8813000005FA05FA");
    }

    void deniedCommandEndsTheAuthentication()
    {
        MifareBench bench;
        bench.find();
        bench.choose(2, 0);
        const QString before = bench.stored(8);
        bench.authenticate('A', "A0A1A2A3A4A5");
        QCOMPARE(bench.write("00000000000000000000000000000000"), returned("write_block", kDenied));
        QCOMPARE(bench.stored(8), before);
        QCOMPARE(bench.read(), returned("read_block", kWrongKey));
        bench.authenticate('B', "B0B1B2B3B4B5");
        QCOMPARE(bench.write("00000000000000000000000000000000"), returned("write_block", kDone));
    }

    void walletThatKeyATakesFromAndKeyBFills()
    {
        MifareBench bench;
        bench.find();
        bench.choose(2, 1);
        bench.authenticate('A', "A0A1A2A3A4A5");
        QCOMPARE(bench.balance(), balanceRead(1000));
        QCOMPARE(bench.value("dec", "1"), returned("decrease_value", kDone));
        QCOMPARE(bench.value("inc", "1"), returned("increase_value", kDenied));
        bench.authenticate('A', "A0A1A2A3A4A5");
        QCOMPARE(bench.value("init", "1"), returned("init_value", kDenied));
        bench.authenticate('B', "B0B1B2B3B4B5");
        QCOMPARE(bench.value("inc", "501"), returned("increase_value", kDone));
        QCOMPARE(bench.balance(), balanceRead(1500));
    }

    void valueThatOnlyFalls()
    {
        MifareBench bench;
        bench.find();
        bench.choose(2, 2);
        bench.authenticate('B', "B0B1B2B3B4B5");
        QCOMPARE(bench.value("dec", "50"), returned("decrease_value", kDone));
        QCOMPARE(bench.balance(), balanceRead(250));
        QCOMPARE(bench.value("inc", "50"), returned("increase_value", kDenied));
    }

    void blocksClosedForGood()
    {
        MifareBench bench;
        bench.find();
        bench.choose(4, 0);
        for (const char *key : {"A0A1A2A3A4A5", "B0B1B2B3B4B5"}) {
            bench.authenticate(key[0], key);
            QCOMPARE(bench.read(), returned("read_block", kDenied));
        }
        bench.choose(3, 0);
        bench.authenticate('B', "B0B1B2B3B4B5");
        QCOMPARE(bench.read(), dataRead(bench.stored(12)));
        QCOMPARE(bench.write("00000000000000000000000000000000"), returned("write_block", kDenied));
    }

    void manufacturerBlockIsNeverWritten()
    {
        MifareBench bench;
        bench.find();
        bench.choose(0, 0);
        bench.authenticate();
        QCOMPARE(bench.read(), dataRead("3A9F07C4660804006263646566676869"));
        QCOMPARE(bench.write("00112233445566778899AABBCCDDEEFF"), returned("write_block", kDenied));
    }

    void valueOperationsNeedAValueBlock()
    {
        MifareBench bench;
        bench.find();
        bench.choose(1, 0);
        bench.authenticate();
        QCOMPARE(bench.balance(), returned("read_value", kNoValue));
        QCOMPARE(bench.text("lineEdit_mifare_wallet_val"), "");
        bench.authenticate();
        QCOMPARE(bench.value("inc", "1"), returned("increase_value", kNoValue));
        QCOMPARE(bench.stored(4), "554E49464F4C442057414C4C45540000");
    }

    void valuesStayWithin32Bits()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QCOMPARE(bench.value("init", "2147483647"), returned("init_value", kDone));
        QCOMPARE(bench.value("inc", "1"), returned("increase_value", kNoValue));
        bench.authenticate();
        QCOMPARE(bench.balance(), balanceRead(2147483647));
        QCOMPARE(bench.value("init", "-5"), returned("init_value", kDone));
        QCOMPARE(bench.balance(), balanceRead(-5));
        QCOMPARE(bench.value("dec", "-1"), returned("decrease_value", "0xFFFFFFFE"));
    }

    void cardTakenAwayIsToldOnce()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QVERIFY(runTrayTool({"take", "antenna"}));
        QCOMPARE(bench.read(), returned("read_block", kCardWent));
        QCOMPARE(bench.read(), returned("read_block", kNoCardHere));
        QCOMPARE(bench.authenticate(), returned("authentication", kNoCardHere));
        bench.setTimeout("1");
        QCOMPARE(bench.find(), returned("request", kTimedOut));
        QCOMPARE(bench.text("lineEdit_mifare_uid"), "");
        QVERIFY(runTrayTool({"put", "mifare-blank"}));
        QCOMPARE(bench.find(), returned("request", kDone) << "[M1卡] TYPE[A] UID = [5C21D4E9]");
        QCOMPARE(bench.read(), returned("read_block", kWrongKey));
    }

    void cardChangedBetweenTwoCommandsIsNoticed()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QVERIFY(runTrayTool({"put", "mifare-blank"}));
        QCOMPARE(bench.read(), returned("read_block", kCardWent));
    }

    void findingWaitsForTheCard()
    {
        MifareBench bench;
        bench.world().take(Slot::Antenna);
        QStringList log;
        {
            const Meanwhile hand([] { runTrayTool({"put", "mifare-wallet"}); });
            log = bench.find();
        }
        QCOMPARE(log, returned("request", kDone) << "[M1卡] TYPE[A] UID = [3A9F07C4]");
    }

    void powerCutEndsTheAuthentication()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QVERIFY(runTrayTool({"power"}));
        QCOMPARE(bench.read(), returned("read_block", kWrongKey));
        QCOMPARE(bench.find(), returned("request", kDone) << "[M1卡] TYPE[A] UID = [3A9F07C4]");
        QCOMPARE(bench.authenticate(), returned("authentication", kDone));
        QCOMPARE(bench.read(), dataRead(bench.stored(5)));
    }

    void anotherProgramsTopUpIsSeen()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        bench.changeCard(Slot::Antenna,
                         [](nlohmann::json &card) { card["blocks"][5] = "0A000000F5FFFFFF0A00000005FA05FA"; });
        QCOMPARE(bench.balance(), balanceRead(10));
    }

    void cpuCardOnTheAntennaIsNoMifareCard()
    {
        MifareBench bench;
        QVERIFY(runTrayTool({"put", "contactless-bank-card", "antenna"}));
        bench.setTimeout("1");
        QCOMPARE(bench.find(), returned("request", kTimedOut));
    }
};

QTEST_MAIN(TestBenchVirtualMifareEdges)
#include "test_bench_virtual_mifare_edges.moc"
