#include "pages/mifare/form_mifare_card.h"
#include "tests/support/bench.h"

#include <QComboBox>

#include <map>

namespace {

const QString kSeparator = Bench::separator("M1卡");
const QString kNotOpen = "[M1卡] 设备未打开！";

/// A value block for each block number, as a driver would keep them.
void keepValues(std::map<int, int> &values)
{
    recorder().vek_mifare_init_value = [&values](auto, std::uint8_t block, int value) {
        values[block] = value;
        return 0;
    };
    recorder().vek_mifare_increase_value = [&values](auto, std::uint8_t block, int value) {
        values[block] += value;
        return 0;
    };
    recorder().vek_mifare_decrease_value = [&values](auto, std::uint8_t block, int value) {
        values[block] -= value;
        return 0;
    };
    recorder().vek_mifare_read_value = [&values](auto, std::uint8_t block, int *value) {
        *value = values[block];
        return 0;
    };
}

} // namespace

class TestMifareWallet : public QObject {
    Q_OBJECT

private slots:
    void startValuesGiveABalanceOf210()
    {
        std::map<int, int> values;
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        keepValues(values);
        for (const char *button : {"pushButton_mifare_wallet_init", "pushButton_mifare_wallet_inc",
                                   "pushButton_mifare_wallet_dec", "pushButton_mifare_wallet_val"})
            bench.press(button, page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_mifare_init_value(1A2B, 5, 100)", "vek_mifare_increase_value(1A2B, 5, 170)",
                              "vek_mifare_decrease_value(1A2B, 5, 60)", "vek_mifare_read_value(1A2B, 5, &0)"}));
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[M1卡] vek_mifare_init_value return[0x0] (assert 0)", kSeparator,
                              "[M1卡] vek_mifare_increase_value return[0x0] (assert 0)", kSeparator,
                              "[M1卡] vek_mifare_decrease_value return[0x0] (assert 0)", kSeparator,
                              "[M1卡] vek_mifare_read_value return[0x0] (assert 0)", "[M1卡] 余额 = [210]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_wallet_val", page)->text(), "210");
    }

    void valuesAreReadAsDecimalNumbers_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("passed");
        const char *const buttons[][3] = {
            {"pushButton_mifare_wallet_init", "lineEdit_mifare_wallet_init", "vek_mifare_init_value"},
            {"pushButton_mifare_wallet_inc", "lineEdit_mifare_wallet_inc", "vek_mifare_increase_value"},
            {"pushButton_mifare_wallet_dec", "lineEdit_mifare_wallet_dec", "vek_mifare_decrease_value"},
        };
        const char *const numbers[][2] = {
            {"abc", "0"},
            {"", "0"},
            {"12abc", "0"},
            {" 7", "7"},
            {"-5", "-5"},
            {"2147483647", "2147483647"},
            {"010", "10"},
            {"99999999999", "0"},
            {"-2147483648", "-2147483648"},
        };
        for (const auto &button : buttons)
            for (const auto &number : numbers)
                QTest::addRow("%s \"%s\"", button[2], number[0])
                    << button[0] << button[1] << button[2] << number[0] << number[1];
    }

    void valuesAreReadAsDecimalNumbers()
    {
        QFETCH(QString, button);
        QFETCH(QString, field);
        QFETCH(QString, function);
        QFETCH(QString, typed);
        QFETCH(QString, passed);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.widget<QLineEdit>(field.toUtf8().constData(), page)->setText(typed);
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(Bench::calls(), QStringList({function + "(1A2B, 5, " + passed + ")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] " + function + " return[0x0] (assert 0)"}));
    }

    void failuresShowOnlyTheReturnLine()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        auto *balance = bench.widget<QLineEdit>("lineEdit_mifare_wallet_val", page);
        balance->setText("210");
        recorder().vek_mifare_init_value = [](auto, auto, auto) { return 1; };
        recorder().vek_mifare_increase_value = [](auto, auto, auto) { return -1; };
        recorder().vek_mifare_decrease_value = [](auto, auto, auto) { return 0xAB; };
        bench.press("pushButton_mifare_wallet_init", page);
        bench.press("pushButton_mifare_wallet_inc", page);
        bench.press("pushButton_mifare_wallet_dec", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_init_value return[0x1] (assert 0)",
                                           kSeparator, "[M1卡] vek_mifare_increase_value return[0xFFFFFFFF] (assert 0)",
                                           kSeparator, "[M1卡] vek_mifare_decrease_value return[0xAB] (assert 0)"}));
        QCOMPARE(balance->text(), "210");
    }

    void failedBalanceEmptiesTheField()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        auto *balance = bench.widget<QLineEdit>("lineEdit_mifare_wallet_val", page);
        balance->setText("210");
        recorder().vek_mifare_read_value = [](auto, auto, int *value) {
            *value = 7;
            return 5;
        };
        bench.press("pushButton_mifare_wallet_val", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_read_value return[0x5] (assert 0)"}));
        QCOMPARE(balance->text(), "");
    }

    void negativeBalanceIsShownInDecimal()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        recorder().vek_mifare_read_value = [](auto, auto, int *value) {
            *value = -60;
            return 0;
        };
        bench.press("pushButton_mifare_wallet_val", page);
        QCOMPARE(bench.log().last(), "[M1卡] 余额 = [-60]");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_wallet_val", page)->text(), "-60");
    }

    void walletMovesWithTheCombos()
    {
        std::map<int, int> values;
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        keepValues(values);
        bench.press("pushButton_mifare_wallet_init", page);
        bench.widget<QComboBox>("comboBox_mifare_sector_number", page)->setCurrentIndex(15);
        bench.press("pushButton_mifare_wallet_inc", page);
        bench.widget<QComboBox>("comboBox_mifare_block_number", page)->setCurrentIndex(2);
        bench.press("pushButton_mifare_wallet_dec", page);
        bench.press("pushButton_mifare_wallet_val", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_mifare_init_value(1A2B, 5, 100)", "vek_mifare_increase_value(1A2B, 61, 170)",
                              "vek_mifare_decrease_value(1A2B, 62, 60)", "vek_mifare_read_value(1A2B, 62, &0)"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_block_number_abs", page)->text(), "62");
        QCOMPARE(bench.log(),
                 QStringList({kSeparator, "[M1卡] vek_mifare_init_value return[0x0] (assert 0)", kSeparator,
                              "[M1卡] vek_mifare_increase_value return[0x0] (assert 0)", kSeparator,
                              "[M1卡] vek_mifare_decrease_value return[0x0] (assert 0)", kSeparator,
                              "[M1卡] vek_mifare_read_value return[0x0] (assert 0)", "[M1卡] 余额 = [-60]"}));
    }

    void withoutDeviceEveryButtonLogsTwoLinesAndCallsNothing_data()
    {
        QTest::addColumn<QString>("button");
        for (const char *button : {"pushButton_mifare_wallet_init", "pushButton_mifare_wallet_inc",
                                   "pushButton_mifare_wallet_dec", "pushButton_mifare_wallet_val"})
            QTest::newRow(button) << button;
    }

    void withoutDeviceEveryButtonLogsTwoLinesAndCallsNothing()
    {
        QFETCH(QString, button);
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.widget<QLineEdit>("lineEdit_mifare_wallet_val", page)->setText("210");
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_wallet_val", page)->text(), "210");
    }
};

QTEST_MAIN(TestMifareWallet)
#include "test_mifare_wallet.moc"
