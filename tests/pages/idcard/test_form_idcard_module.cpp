#include "pages/idcard/form_idcard.h"
#include "tests/support/bench.h"

#include <QSignalSpy>

#include <cstring>

namespace {

const QString kSeparator = Bench::separator("二代证");
const QString kNotOpen = "[二代证] 设备未打开！";

/// One of the four commands that read a text.
struct Command {
    const char *button;
    const char *call;
    int size;
    const char *field;
    const char *named; ///< in the return line
    const char *result;
};

// The SAM ID's return line names the UID call.
const Command kCommands[] = {
    {"pushButton_read_sam_id", "vek_idcr_read_samid", 40, "lineEdit_sam_id", "vek_idcr_read_uid", "SAM ID"},
    {"pushButton_read_phsy_id", "vek_idcr_read_uid", 32, "lineEdit_phsy_id", "vek_idcr_read_uid", "物理ID"},
    {"pushButton_read_dn", "vek_idcr_read_dn", 256, nullptr, "vek_idcr_read_dn", "身份证DN"},
    {"pushButton_read_emid", "vek_idcr_read_emid", 64, nullptr, "vek_idcr_read_emid", "EMID"},
};

/// What all four calls do.
void answerTexts(const std::function<sdk::IdcrReadText> &script)
{
    recorder().vek_idcr_read_samid = script;
    recorder().vek_idcr_read_uid = script;
    recorder().vek_idcr_read_dn = script;
    recorder().vek_idcr_read_emid = script;
}

QString callOf(const Command &command)
{
    return QString("%1(1A2B, 5000, char[%2])").arg(command.call).arg(command.size);
}

QString returnLine(const Command &command, const char *code)
{
    return QString("[二代证] %1 return[%2] (assert 0)").arg(command.named, code);
}

} // namespace

class TestFormIdcardModule : public QObject {
    Q_OBJECT

private:
    static void addCommandRows()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < 4; ++i)
            QTest::newRow(kCommands[i].button) << i;
    }

    /// The page, with something left in both ID fields from before.
    static Form_Idcard *pageWithOldIds(Bench &bench)
    {
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QLineEdit>("lineEdit_sam_id", page)->setText("old");
        bench.widget<QLineEdit>("lineEdit_phsy_id", page)->setText("old");
        return page;
    }

    /// What the two ID fields hold: `text` in the command's own, the old text in the other.
    static void compareIds(Bench &bench, const Command &command, const QString &text)
    {
        for (const char *field : {"lineEdit_sam_id", "lineEdit_phsy_id"}) {
            const bool own = command.field != nullptr && std::strcmp(field, command.field) == 0;
            QCOMPARE(bench.widget<QLineEdit>(field)->text(), own ? text : "old");
        }
    }

private slots:
    void readCommandsShowTheirText_data() { addCommandRows(); }

    void readCommandsShowTheirText()
    {
        QFETCH(int, index);
        const Command &command = kCommands[index];
        Bench bench;
        bench.openDevice();
        auto *page = pageWithOldIds(bench);
        answerTexts([](auto, auto, char *out) {
            qstrcpy(out, "<b>号 1</b>");
            return 0;
        });
        bench.press(command.button, page);
        QCOMPARE(Bench::calls(), QStringList({callOf(command)}));
        QCOMPARE(bench.log(), QStringList({kSeparator, returnLine(command, "0"),
                                           QString("[二代证] %1 = [<b>号 1</b>]").arg(command.result)}));
        compareIds(bench, command, "<b>号 1</b>");
    }

    void failedReadCommandsShowOnlyTheReturnLine_data() { addCommandRows(); }

    void failedReadCommandsShowOnlyTheReturnLine()
    {
        QFETCH(int, index);
        const Command &command = kCommands[index];
        Bench bench;
        bench.openDevice();
        auto *page = pageWithOldIds(bench);
        answerTexts([](auto, auto, char *out) {
            qstrcpy(out, "not to be shown");
            return -17;
        });
        bench.press(command.button, page);
        QCOMPARE(Bench::calls(), QStringList({callOf(command)}));
        QCOMPARE(bench.log(), QStringList({kSeparator, returnLine(command, "-17")}));
        compareIds(bench, command, "");
    }

    void withoutDeviceTheFieldIsClearedAndNothingCalled_data() { addCommandRows(); }

    void withoutDeviceTheFieldIsClearedAndNothingCalled()
    {
        QFETCH(int, index);
        Bench bench;
        bench.loadDriver();
        auto *page = pageWithOldIds(bench);
        bench.press(kCommands[index].button, page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        compareIds(bench, kCommands[index], "");
    }

    void textWithoutNulEndsAtTheBuffersEnd_data() { addCommandRows(); }

    void textWithoutNulEndsAtTheBuffersEnd()
    {
        QFETCH(int, index);
        const Command &command = kCommands[index];
        Bench bench;
        bench.openDevice();
        auto *page = pageWithOldIds(bench);
        const auto size = static_cast<std::size_t>(command.size);
        answerTexts([size](auto, auto, char *out) {
            std::memset(out, 'F', size);
            return 0;
        });
        bench.press(command.button, page);
        QCOMPARE(bench.log().last(), QString("[二代证] %1 = [%2]").arg(command.result, QString(command.size, 'F')));
        compareIds(bench, command, QString(command.size, 'F'));
    }

    void passThroughDigitsBecomeTwoBytes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("bytes");
        const char *const rows[][2] = {
            {"2001", "0x20, 0x01"}, {"9999", "0x99, 0x99"}, {"20A1", "0x20, 0x01"},  {"ABCD", "0x00, 0x00"},
            {"f0 7", "0x00, 0x07"}, {"-1+2", "0x01, 0x02"}, {"证2 3", "0x02, 0x03"},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << row[0] << row[1];
    }

    void passThroughDigitsBecomeTwoBytes()
    {
        QFETCH(QString, typed);
        QFETCH(QString, bytes);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QLineEdit>("lineEdit_command_aa", page)->setText(typed);
        bench.press("pushButton_command_aa", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_idcr_transive(1A2B, 5000, " + bytes + ", &0, byte[8192], 8192, &0)"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[二代证] vek_idcr_transive return[0] (assert 0)",
                                           "[二代证] SW=[00000000], length=[0].", "Data={", "}"}));
    }

    void passThroughOfAnotherLengthIsRefused_data()
    {
        QTest::addColumn<QString>("typed");
        for (const char *typed : {"", "200", "20010", " 2001"})
            QTest::newRow(typed) << typed;
    }

    void passThroughOfAnotherLengthIsRefused()
    {
        QFETCH(QString, typed);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QLineEdit>("lineEdit_command_aa", page)->setText(typed);
        bench.press("pushButton_command_aa", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[二代证] AA指令格式错误, 应为4位！"}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void passThroughWithoutDeviceStopsBeforeTheFormatCheck()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QLineEdit>("lineEdit_command_aa", page)->setText("bad");
        bench.press("pushButton_command_aa", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
    }

    void passThroughFailureShowsOnlyTheReturnLine()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        recorder().vek_idcr_transive = [](auto, auto, auto, auto, auto, auto, auto, auto *length) {
            *length = 4;
            return 5;
        };
        bench.press("pushButton_command_aa", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[二代证] vek_idcr_transive return[5] (assert 0)"}));
    }

    void passThroughDumpsInLinesOf1024Bytes_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<QList<int>>("lines");
        QTest::newRow("none") << 0 << QList<int>();
        QTest::newRow("1") << 1 << QList<int>({1});
        QTest::newRow("1024") << 1024 << QList<int>({1024});
        QTest::newRow("1025") << 1025 << QList<int>({1024, 1});
        QTest::newRow("1500") << 1500 << QList<int>({1024, 476});
        const QList<int> all{1024, 1024, 1024, 1024, 1024, 1024, 1024, 1024};
        QTest::newRow("8192, the whole buffer") << 8192 << all;
        QTest::newRow("past the buffer") << 8193 << all;
        QTest::newRow("far past the buffer") << 2147483647 << all;
        QTest::newRow("negative") << -1 << QList<int>();
        QTest::newRow("most negative") << -2147483647 - 1 << QList<int>();
    }

    void passThroughDumpsInLinesOf1024Bytes()
    {
        QFETCH(int, length);
        QFETCH(QList<int>, lines);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        const QSignalSpy log(page, &Form_Idcard::addLog);
        recorder().vek_idcr_transive = [length](auto, auto, auto, auto, auto *statusWord, auto *data, auto capacity,
                                                auto *lengthOut) {
            for (int i = 0; i < capacity; ++i)
                data[i] = static_cast<std::uint8_t>(i % 251);
            *statusWord = 0x9000;
            *lengthOut = length;
            return 0;
        };
        bench.press("pushButton_command_aa", page);

        QStringList expected{kSeparator, "[二代证] vek_idcr_transive return[0] (assert 0)",
                             QString("[二代证] SW=[00009000], length=[%1].\r\nData={").arg(length)};
        int next = 0;
        for (const int bytes : lines) {
            QString line;
            for (int i = 0; i < bytes; ++i)
                line += QString::asprintf("%02X", static_cast<unsigned>(next++ % 251));
            expected << line;
        }
        expected << "}";
        QStringList posted;
        static const QRegularExpression stamp(R"(^\[\d{4}/\d\d/\d\d \d{6}-\d{3}\] )");
        for (const QVariantList &arguments : log)
            posted << arguments.first().toString().remove(stamp);
        QCOMPARE(posted, expected);
        QCOMPARE(Bench::calls(), QStringList({"vek_idcr_transive(1A2B, 5000, 0x20, 0x01, &0, byte[8192], 8192, &0)"}));
    }

    void passThroughInTheLogPane()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        recorder().vek_idcr_transive = [](auto, auto, auto, auto, auto *statusWord, auto *data, auto, auto *length) {
            *statusWord = 0xFFFFFFFF;
            data[0] = 0x0A;
            data[1] = 0xFF;
            *length = 2;
            return 0;
        };
        bench.press("pushButton_command_aa", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[二代证] vek_idcr_transive return[0] (assert 0)",
                                           "[二代证] SW=[FFFFFFFF], length=[2].", "Data={", "0AFF", "}"}));
    }

    void separatorIsPassedWithoutDeviceNorSeparatorLine_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("byte");
        QTest::addColumn<QString>("shown");
        QTest::newRow("start value") << "|"
                                     << "0x7C"
                                     << "|";
        QTest::newRow("hash") << "#"
                              << "0x23"
                              << "#";
        QTest::newRow("percent") << "%"
                                 << "0x25"
                                 << "%";
        QTest::newRow("Chinese: the first byte of its UTF-8") << "中"
                                                              << "0xE4" << QString(QChar(0xE4));
    }

    void separatorIsPassedWithoutDeviceNorSeparatorLine()
    {
        QFETCH(QString, typed);
        QFETCH(QString, byte);
        QFETCH(QString, shown);
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Idcard>();
        // Its result is ignored.
        recorder().vek_idcr_set_separation = [](auto) { return -1; };
        bench.widget<QLineEdit>("lineEdit_separation", page)->setText(typed);
        bench.press("pushButton_info_separator", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_idcr_set_separation(" + byte + ")"}));
        QCOMPARE(bench.log(), QStringList({"[二代证] 设置分隔符为 " + shown + " 成功"}));
    }

    void separatorOfAnotherLengthIsRefused_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("empty") << "";
        QTest::newRow("two characters") << "||";
        QTest::newRow("a character outside the basic plane") << QString::fromUcs4(U"\U00020000", 1);
    }

    void separatorOfAnotherLengthIsRefused()
    {
        QFETCH(QString, typed);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QLineEdit>("lineEdit_separation", page)->setText(typed);
        bench.press("pushButton_info_separator", page);
        QCOMPARE(bench.log(), QStringList({"[二代证] 分隔符格式错误！正确的格式是单个字符，如：|、^、#、@ 等"}));
        QVERIFY(Bench::calls().isEmpty());
    }
};

QTEST_MAIN(TestFormIdcardModule)
#include "test_form_idcard_module.moc"
