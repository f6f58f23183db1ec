// The Mifare page's work on the sample wallet card: find, authenticate, read, write, keys, wallet.
#include "tests/virtual/bench/mifare_bench.h"

class TestBenchVirtualMifare : public QObject {
    Q_OBJECT

private slots:
    void startValuesSucceed()
    {
        MifareBench bench;
        QCOMPARE(bench.find(), returned("request", kDone) << "[M1卡] TYPE[A] UID = [3A9F07C4]");
        QCOMPARE(bench.text("lineEdit_mifare_uid"), "3A9F07C4");
        QCOMPARE(bench.text("lineEdit_mifare_card_type"), "A");
        QCOMPARE(bench.authenticate(), returned("authentication", kDone));
        QCOMPARE(bench.read(), dataRead(bench.stored(5)));
        QCOMPARE(bench.text("lineEdit_mifare_block_data"), bench.stored(5));
        QCOMPARE(bench.pressed("pushButton_mifare_write_block"), returned("write_block", kDone));
        QCOMPARE(bench.stored(5), "00112233445566778899AABBCCDDEEFF");
        QCOMPARE(bench.read(), dataRead("00112233445566778899AABBCCDDEEFF"));
    }

    void walletStartValuesGive210()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QCOMPARE(bench.balance(), balanceRead(5000));
        QCOMPARE(bench.pressed("pushButton_mifare_wallet_init"), returned("init_value", kDone));
        QCOMPARE(bench.balance(), balanceRead(100));
        QCOMPARE(bench.pressed("pushButton_mifare_wallet_inc"), returned("increase_value", kDone));
        QCOMPARE(bench.balance(), balanceRead(270));
        QCOMPARE(bench.pressed("pushButton_mifare_wallet_dec"), returned("decrease_value", kDone));
        QCOMPARE(bench.balance(), balanceRead(210));
        QCOMPARE(bench.text("lineEdit_mifare_wallet_val"), "210");
        // 210 little endian, its complement, itself, and the block's number with its complement.
        QCOMPARE(bench.stored(5), "D20000002DFFFFFFD200000005FA05FA");
    }

    void authenticationWithoutFindingFirst()
    {
        MifareBench bench;
        QCOMPARE(bench.authenticate(), returned("authentication", kDone));
        QCOMPARE(bench.read(), dataRead(bench.stored(5)));
    }

    void bothKeysOpenTheirSector()
    {
        MifareBench bench;
        bench.find();
        bench.choose(2, 0);
        QCOMPARE(bench.authenticate('A', "A0A1A2A3A4A5"), returned("authentication", kDone));
        QCOMPARE(bench.read(), dataRead(bench.stored(8)));
        QCOMPARE(bench.authenticate('B', "B0B1B2B3B4B5"), returned("authentication", kDone));
        QCOMPARE(bench.read(), dataRead(bench.stored(8)));
        QCOMPARE(bench.authenticate('A', "b0b1b2b3b4b5"), returned("authentication", kWrongKey));
    }

    void keyAOfEverySector()
    {
        MifareBench bench;
        bench.find();
        for (int sector = 0; sector < 16; ++sector) {
            const bool own = sector >= 2 && sector <= 10;
            bench.choose(sector, 1);
            QCOMPARE(bench.text("lineEdit_mifare_block_number_abs"), QString::number(sector * 4 + 1));
            const QString key = own ? "A0A1A2A3A4A5" : "FFFFFFFFFFFF";
            // Sector 9's access bits disagree with their copies: it is blocked.
            QCOMPARE(bench.authenticate('A', key), returned("authentication", sector == 9 ? kWrongKey : kDone));
            // Sector 3's block is for key B alone.
            if (sector == 3)
                QCOMPARE(bench.read(), returned("read_block", kDenied));
            else if (sector != 9)
                QCOMPARE(bench.read(), dataRead(bench.stored(sector * 4 + 1)));
        }
    }

    void trailerHidesKeyA()
    {
        MifareBench bench;
        bench.find();
        bench.choose(1, 3);
        bench.authenticate();
        QCOMPARE(bench.read(), dataRead("000000000000FF078069FFFFFFFFFFFF"));
        QCOMPARE(bench.stored(7), "FFFFFFFFFFFFFF078069FFFFFFFFFFFF");
    }

    void keyIsChangedAndChangedBack()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        QCOMPARE(bench.changeKey("112233445566"), returned("change_key", kDone));
        QCOMPARE(bench.stored(7), "112233445566FF078069FFFFFFFFFFFF");
        QCOMPARE(bench.authenticate('A', "FFFFFFFFFFFF"), returned("authentication", kWrongKey));
        QCOMPARE(bench.authenticate('A', "112233445566"), returned("authentication", kDone));
        QCOMPARE(bench.changeKey("FFFFFFFFFFFF"), returned("change_key", kDone));
        QCOMPARE(bench.authenticate('A', "FFFFFFFFFFFF"), returned("authentication", kDone));
        QCOMPARE(bench.read(), dataRead(bench.stored(5)));
    }

    void otherBlockIsAnother()
    {
        MifareBench bench;
        bench.find();
        bench.choose(1, 2);
        bench.authenticate();
        QCOMPARE(bench.write("FFEEDDCCBBAA99887766554433221100"), returned("write_block", kDone));
        QCOMPARE(bench.stored(6), "FFEEDDCCBBAA99887766554433221100");
        QCOMPARE(bench.read(), dataRead("FFEEDDCCBBAA99887766554433221100"));
        bench.choose(1, 1);
        QCOMPARE(bench.balance(), balanceRead(5000));
        bench.choose(1, 0);
        QCOMPARE(bench.read(), dataRead("554E49464F4C442057414C4C45540000"));
    }

    void cardKeepsItsBalanceOverTheDay()
    {
        MifareBench bench;
        bench.find();
        bench.authenticate();
        bench.pressed("pushButton_mifare_wallet_init");
        bench.press("pushButton_close");
        bench.press("pushButton_unload_driver");
        bench.press("pushButton_select_driver");
        bench.press("pushButton_open_default");
        bench.find();
        bench.authenticate();
        QCOMPARE(bench.balance(), balanceRead(100));
    }

    void pcscReaderOnTheAntennaHasTheCardToo()
    {
        VirtualBench bench;
        bench.openDevice("radioButton_pcsc", "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01");
        QCOMPARE(bench.logOf("pushButton_mifare_find", bench.page<Form_Mifare_Card>()),
                 returned("request", kDone) << "[M1卡] TYPE[A] UID = [3A9F07C4]");
    }
};

QTEST_MAIN(TestBenchVirtualMifare)
#include "test_bench_virtual_mifare.moc"
