// The page's widgets and the sector access; the wallet has its own test.
#include "pages/mifare/form_mifare_card.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"
#include "tests/support/widget_table.h"

#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>

#include <cstring>

namespace {

const QString kSeparator = Bench::separator("M1卡");
const QString kNotOpen = "[M1卡] 设备未打开！";

} // namespace

class TestFormMifareCard : public QObject {
    Q_OBJECT

private slots:
    void metaObjectListsSignalAndSlotsInOrder()
    {
        QCOMPARE(ownMethods(Form_Mifare_Card::staticMetaObject),
                 QStringList(
                     {"addLog(QString)", "on_pushButton_mifare_find_clicked()", "on_pushButton_mifare_auth_clicked()",
                      "on_pushButton_mifare_read_block_clicked()", "on_pushButton_mifare_write_block_clicked()",
                      "on_pushButton_mifare_wallet_init_clicked()", "on_pushButton_mifare_wallet_inc_clicked()",
                      "on_pushButton_mifare_wallet_dec_clicked()", "on_pushButton_mifare_wallet_val_clicked()",
                      "on_checkBox_mifare_en_change_password_stateChanged(int)",
                      "on_comboBox_mifare_sector_number_currentIndexChanged(int)",
                      "on_comboBox_mifare_block_number_currentIndexChanged(int)",
                      "on_radioButton_mifare_password_a_clicked()", "on_radioButton_mifare_password_b_clicked()",
                      "on_pushButton_mifare_change_password_clicked()"}));
        QCOMPARE(Form_Mifare_Card::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        addWidgetRows({
            {"groupBox", "QGroupBox", "1、Mifare寻卡"},
            {"lineEdit_mifare_uid", "QLineEdit", ""},
            {"label_2", "QLabel", "卡类型"},
            {"lineEdit_mifare_card_type", "QLineEdit", ""},
            {"pushButton_mifare_find", "QPushButton", "寻卡"},
            {"groupBox_2", "QGroupBox", "2、选择扇区"},
            {"label_3", "QLabel", "扇区号"},
            {"comboBox_mifare_sector_number", "QComboBox", "1"},
            {"groupBox_3", "QGroupBox", "3、认证扇区"},
            {"radioButton_mifare_password_a", "QRadioButton", "密码A"},
            {"radioButton_mifare_password_b", "QRadioButton", "密码B"},
            {"checkBox_mifare_en_change_password", "QCheckBox", "允许改密码"},
            {"label_4", "QLabel", "原密码"},
            {"lineEdit_mifare_password", "QLineEdit", "FFFFFFFFFFFF"},
            {"pushButton_mifare_auth", "QPushButton", "认证扇区密码"},
            {"label_5", "QLabel", "新密码"},
            {"lineEdit_mifare_password_new", "QLineEdit", ""},
            {"pushButton_mifare_change_password", "QPushButton", " 改扇区密码 "},
            {"groupBox_4", "QGroupBox", "4、读写数据"},
            {"label_6", "QLabel", "扇区块号"},
            {"comboBox_mifare_block_number", "QComboBox", "1"},
            {"label_7", "QLabel", "绝对块号"},
            {"lineEdit_mifare_block_number_abs", "QLineEdit", "5"},
            {"groupBox_6", "QGroupBox", "读写块数据"},
            {"lineEdit_mifare_block_data", "QLineEdit", ""},
            {"pushButton_mifare_read_block", "QPushButton", "读块"},
            {"lineEdit__mifare_block_data_new", "QLineEdit", "00112233445566778899AABBCCDDEEFF"},
            {"pushButton_mifare_write_block", "QPushButton", "写块"},
            {"groupBox_5", "QGroupBox", "钱包功能"},
            {"lineEdit_mifare_wallet_init", "QLineEdit", "100"},
            {"pushButton_mifare_wallet_init", "QPushButton", "初始化"},
            {"lineEdit_mifare_wallet_inc", "QLineEdit", "170"},
            {"pushButton_mifare_wallet_inc", "QPushButton", "充值"},
            {"lineEdit_mifare_wallet_dec", "QLineEdit", "60"},
            {"pushButton_mifare_wallet_dec", "QPushButton", "扣款"},
            {"lineEdit_mifare_wallet_val", "QLineEdit", ""},
            {"pushButton_mifare_wallet_val", "QPushButton", "余额"},
        });
    }

    void widgetsAreThereWithTheirTexts()
    {
        Bench bench;
        compareWidget(bench.page<Form_Mifare_Card>());
    }

    void readOnlyFieldsAndWidths_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<int>("maximumWidth");
        QTest::newRow("uid") << "lineEdit_mifare_uid" << true << 110;
        QTest::newRow("type") << "lineEdit_mifare_card_type" << true << 60;
        QTest::newRow("absolute block") << "lineEdit_mifare_block_number_abs" << true << 60;
        for (const char *name :
             {"lineEdit_mifare_password", "lineEdit_mifare_password_new", "lineEdit_mifare_block_data",
              "lineEdit__mifare_block_data_new", "lineEdit_mifare_wallet_init", "lineEdit_mifare_wallet_inc",
              "lineEdit_mifare_wallet_dec", "lineEdit_mifare_wallet_val"})
            QTest::newRow(name) << name << false << QWIDGETSIZE_MAX;
    }

    void readOnlyFieldsAndWidths()
    {
        QFETCH(QString, name);
        QFETCH(bool, readOnly);
        QFETCH(int, maximumWidth);
        Bench bench;
        auto *edit = bench.widget<QLineEdit>(name.toUtf8().constData(), bench.page<Form_Mifare_Card>());
        QCOMPARE(edit->isReadOnly(), readOnly);
        QCOMPARE(edit->maximumWidth(), maximumWidth);
    }

    void combosAndChecksAtStart()
    {
        Bench bench;
        auto *page = bench.page<Form_Mifare_Card>();
        auto *sectors = bench.widget<QComboBox>("comboBox_mifare_sector_number", page);
        auto *blocks = bench.widget<QComboBox>("comboBox_mifare_block_number", page);
        QCOMPARE(sectors->count(), 16);
        for (int i = 0; i < 16; ++i)
            QCOMPARE(sectors->itemText(i), QString::number(i));
        QCOMPARE(blocks->count(), 4);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(blocks->itemText(i), QString::number(i));
        QCOMPARE(blocks->maximumWidth(), 69);
        QVERIFY(bench.widget<QRadioButton>("radioButton_mifare_password_a", page)->isChecked());
        QVERIFY(!bench.widget<QCheckBox>("checkBox_mifare_en_change_password", page)->isChecked());
        QVERIFY(!bench.widget<QAbstractButton>("pushButton_mifare_change_password", page)->isEnabled());
        QCOMPARE(page->windowTitle(), "Form");
    }

    void withoutDeviceEveryButtonLogsTwoLinesAndCallsNothing_data()
    {
        QTest::addColumn<QString>("button");
        for (const char *button :
             {"pushButton_mifare_find", "pushButton_mifare_auth", "pushButton_mifare_change_password",
              "pushButton_mifare_read_block", "pushButton_mifare_write_block"})
            QTest::newRow(button) << button;
    }

    void withoutDeviceEveryButtonLogsTwoLinesAndCallsNothing()
    {
        QFETCH(QString, button);
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.press("checkBox_mifare_en_change_password", page);
        auto *uid = bench.widget<QLineEdit>("lineEdit_mifare_uid", page);
        auto *data = bench.widget<QLineEdit>("lineEdit_mifare_block_data", page);
        uid->setText("kept");
        data->setText("kept");
        bench.press(button.toUtf8().constData(), page);
        QCOMPARE(bench.log(), QStringList({kSeparator, kNotOpen}));
        QVERIFY(Bench::calls().isEmpty());
        QCOMPARE(uid->text(), "kept");
        QCOMPARE(data->text(), "kept");
    }

    void findShowsTypeAndUid()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        recorder().vek_mifare_request = [](auto, auto, char *type, char *uid) {
            std::strcpy(type, "2");
            std::strcpy(uid, "04A1B2C3");
            return 0;
        };
        bench.type("lineEdit_timeout", "7");
        bench.press("pushButton_mifare_find", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_mifare_request(1A2B, 7000, char[2], char[16])"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_request return[0x0] (assert 0)",
                                           "[M1卡] TYPE[2] UID = [04A1B2C3]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_uid", page)->text(), "04A1B2C3");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_card_type", page)->text(), "2");
    }

    void failedFindEmptiesBothFields()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        auto *uid = bench.widget<QLineEdit>("lineEdit_mifare_uid", page);
        auto *type = bench.widget<QLineEdit>("lineEdit_mifare_card_type", page);
        uid->setText("old");
        type->setText("old");
        recorder().vek_mifare_request = [](auto, auto, char *cardType, char *cardUid) {
            std::strcpy(cardType, "2");
            std::strcpy(cardUid, "04A1B2C3");
            return -1;
        };
        bench.press("pushButton_mifare_find", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_request return[0xFFFFFFFF] (assert 0)"}));
        QCOMPARE(uid->text(), "");
        QCOMPARE(type->text(), "");
    }

    void typeAndUidWithoutNulEndAtTheirBuffersEnd()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        recorder().vek_mifare_request = [](auto, auto, char *type, char *uid) {
            std::memset(type, 'T', sdk::kMifareTypeSize);
            std::memset(uid, 'U', sdk::kMifareUidSize);
            return 0;
        };
        bench.press("pushButton_mifare_find", page);
        QCOMPARE(bench.log().last(), "[M1卡] TYPE[TT] UID = [UUUUUUUUUUUUUUUU]");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_uid", page)->text(), QString(16, 'U'));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_card_type", page)->text(), "TT");
    }

    void authenticationPassesSectorKeyTypeAndKey()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.press("pushButton_mifare_auth", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_mifare_authentication(1A2B, 1, 'A', \"FFFFFFFFFFFF\")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_authentication return[0x0] (assert 0)"}));
    }

    void keyBIsPassedUntilKeyAIsChosenAgain()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.press("radioButton_mifare_password_b", page);
        QVERIFY(!bench.widget<QRadioButton>("radioButton_mifare_password_a", page)->isChecked());
        QVERIFY(bench.log().isEmpty());
        bench.press("pushButton_mifare_auth", page);
        bench.press("radioButton_mifare_password_a", page);
        bench.press("pushButton_mifare_auth", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_mifare_authentication(1A2B, 1, 'B', \"FFFFFFFFFFFF\")",
                                              "vek_mifare_authentication(1A2B, 1, 'A', \"FFFFFFFFFFFF\")"}));
        const QString returned = "[M1卡] vek_mifare_authentication return[0x0] (assert 0)";
        QCOMPARE(bench.log(), QStringList({kSeparator, returned, kSeparator, returned}));
    }

    void keyChangePassesTheNewKeyOnly()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.press("checkBox_mifare_en_change_password", page);
        bench.press("radioButton_mifare_password_b", page);
        bench.widget<QComboBox>("comboBox_mifare_sector_number", page)->setCurrentIndex(15);
        bench.widget<QLineEdit>("lineEdit_mifare_password_new", page)->setText("a0a1a2 密");
        recorder().vek_mifare_change_key = [](auto, auto, auto, auto) { return 0x2B; };
        bench.press("pushButton_mifare_change_password", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_mifare_change_key(1A2B, 15, 'B', \"a0a1a2 密\")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_change_key return[0x2B] (assert 0)"}));
    }

    void changeKeyButtonFollowsItsCheckBox()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        auto *button = bench.widget<QAbstractButton>("pushButton_mifare_change_password", page);
        QVERIFY(!button->isEnabled());
        bench.press("checkBox_mifare_en_change_password", page);
        QVERIFY(button->isEnabled());
        bench.press("checkBox_mifare_en_change_password", page);
        QVERIFY(!button->isEnabled());
        bench.widget<QCheckBox>("checkBox_mifare_en_change_password", page)->setCheckState(Qt::PartiallyChecked);
        QVERIFY(button->isEnabled());
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
    }

    void emptyFieldsArePassedAsEmptyTexts()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.press("checkBox_mifare_en_change_password", page);
        bench.widget<QLineEdit>("lineEdit_mifare_password", page)->clear();
        bench.widget<QLineEdit>("lineEdit__mifare_block_data_new", page)->clear();
        bench.press("pushButton_mifare_auth", page);
        bench.press("pushButton_mifare_change_password", page);
        bench.press("pushButton_mifare_write_block", page);
        QCOMPARE(Bench::calls(),
                 QStringList({"vek_mifare_authentication(1A2B, 1, 'A', \"\")",
                              "vek_mifare_change_key(1A2B, 1, 'A', \"\")", "vek_mifare_write_block(1A2B, 5, \"\")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_authentication return[0x0] (assert 0)",
                                           kSeparator, "[M1卡] vek_mifare_change_key return[0x0] (assert 0)",
                                           kSeparator, "[M1卡] vek_mifare_write_block return[0x0] (assert 0)"}));
    }

    void everySectorAndBlockHasItsAbsoluteNumber()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        auto *sectors = bench.widget<QComboBox>("comboBox_mifare_sector_number", page);
        auto *blocks = bench.widget<QComboBox>("comboBox_mifare_block_number", page);
        auto *absolute = bench.widget<QLineEdit>("lineEdit_mifare_block_number_abs", page);
        QStringList expected;
        QStringList lines;
        for (int sector = 0; sector < 16; ++sector)
            for (int block = 0; block < 4; ++block) {
                sectors->setCurrentIndex(sector);
                blocks->setCurrentIndex(block);
                const QString number = QString::number(sector * 4 + block);
                QCOMPARE(absolute->text(), number);
                bench.press("pushButton_mifare_read_block", page);
                expected << "vek_mifare_read_block(1A2B, " + number + ", char[40])";
                lines << kSeparator << "[M1卡] vek_mifare_read_block return[0x0] (assert 0)"
                      << "[M1卡] DATA = []";
            }
        QCOMPARE(Bench::calls(), expected);
        QCOMPARE(bench.log(), lines);
        QVERIFY(expected.last().contains(", 63, "));
    }

    void numberFollowsTheSectorWhenTheBlockStays()
    {
        Bench bench;
        auto *page = bench.page<Form_Mifare_Card>();
        auto *absolute = bench.widget<QLineEdit>("lineEdit_mifare_block_number_abs", page);
        bench.widget<QComboBox>("comboBox_mifare_sector_number", page)->setCurrentIndex(15);
        QCOMPARE(absolute->text(), "61");
        bench.widget<QComboBox>("comboBox_mifare_block_number", page)->setCurrentIndex(3);
        QCOMPARE(absolute->text(), "63");
        bench.widget<QComboBox>("comboBox_mifare_sector_number", page)->setCurrentIndex(0);
        QCOMPARE(absolute->text(), "3");
        bench.widget<QComboBox>("comboBox_mifare_block_number", page)->setCurrentIndex(0);
        QCOMPARE(absolute->text(), "0");
        // An emptied combo has index -1, as each has while the page is being built.
        bench.widget<QComboBox>("comboBox_mifare_block_number", page)->clear();
        QCOMPARE(absolute->text(), "-1");
    }

    void readShowsTheBlock()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        recorder().vek_mifare_read_block = [](auto, auto, char *data) {
            std::strcpy(data, "000102030405060708090A0B0C0D0E0F");
            return 0;
        };
        bench.press("pushButton_mifare_read_block", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_mifare_read_block(1A2B, 5, char[40])"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_read_block return[0x0] (assert 0)",
                                           "[M1卡] DATA = [000102030405060708090A0B0C0D0E0F]"}));
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_block_data", page)->text(),
                 "000102030405060708090A0B0C0D0E0F");
    }

    void failedReadEmptiesTheField()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        auto *field = bench.widget<QLineEdit>("lineEdit_mifare_block_data", page);
        field->setText("old");
        recorder().vek_mifare_read_block = [](auto, auto, char *data) {
            std::strcpy(data, "00");
            return 1;
        };
        bench.press("pushButton_mifare_read_block", page);
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_read_block return[0x1] (assert 0)"}));
        QCOMPARE(field->text(), "");
    }

    void blockWithoutNulEndsAtTheBuffersEnd()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        recorder().vek_mifare_read_block = [](auto, auto, char *data) {
            std::memset(data, 'D', sdk::kMifareBlockSize);
            return 0;
        };
        bench.press("pushButton_mifare_read_block", page);
        QCOMPARE(bench.log().last(), "[M1卡] DATA = [" + QString(40, 'D') + "]");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_mifare_block_data", page)->text(), QString(40, 'D'));
    }

    void writePassesTheDataAsTyped()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Mifare_Card>();
        bench.press("pushButton_mifare_write_block", page);
        bench.widget<QComboBox>("comboBox_mifare_block_number", page)->setCurrentIndex(3);
        bench.widget<QLineEdit>("lineEdit__mifare_block_data_new", page)->setText("no hex, 数据");
        recorder().vek_mifare_write_block = [](auto, auto, auto) { return 0x10; };
        bench.press("pushButton_mifare_write_block", page);
        QCOMPARE(Bench::calls(), QStringList({"vek_mifare_write_block(1A2B, 5, \"00112233445566778899AABBCCDDEEFF\")",
                                              "vek_mifare_write_block(1A2B, 7, \"no hex, 数据\")"}));
        QCOMPARE(bench.log(), QStringList({kSeparator, "[M1卡] vek_mifare_write_block return[0x0] (assert 0)",
                                           kSeparator, "[M1卡] vek_mifare_write_block return[0x10] (assert 0)"}));
    }
};

QTEST_MAIN(TestFormMifareCard)
#include "test_form_mifare_card.moc"
