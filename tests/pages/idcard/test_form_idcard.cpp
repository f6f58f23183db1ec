#include "pages/idcard/form_idcard.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"
#include "tests/support/widget_table.h"

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QSignalSpy>

namespace {

/// Sees the signal that a page emits while it is still being made: connects as soon as the page gets its first child.
class ConstructionSpy : public QObject {
public:
    ConstructionSpy() { qApp->installEventFilter(this); }
    QList<int> shown;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *const page = qobject_cast<Form_Idcard *>(watched);
        if (page != nullptr && event->type() == QEvent::ChildAdded && !m_connected) {
            m_connected = true;
            connect(page, &Form_Idcard::showHideImageDlg, this, [this](int show) { shown << show; });
        }
        return false;
    }

private:
    bool m_connected = false;
};

} // namespace

class TestFormIdcard : public QObject {
    Q_OBJECT

private slots:
    /// The sizes count in the desktop's font; the offscreen platform's own is larger.
    void initTestCase() { QApplication::setFont(QFont("Sans Serif", 9)); }

    void metaObjectListsSignalsAndSlotsInOrder()
    {
        QCOMPARE(ownMethods(Form_Idcard::staticMetaObject), QStringList({"addLog(QString)",
                                                                         "updateFrontImage(QImage*)",
                                                                         "updateBackImage(QImage*)",
                                                                         "updatePhotoImage(QImage*)",
                                                                         "showHideImageDlg(int)",
                                                                         "on_pushButton_read_idc_clicked()",
                                                                         "on_pushButton_read_sam_id_clicked()",
                                                                         "on_pushButton_command_aa_clicked()",
                                                                         "on_pushButton_read_phsy_id_clicked()",
                                                                         "on_pushButton_read_dn_clicked()",
                                                                         "on_pushButton_read_emid_clicked()",
                                                                         "on_pushButton_idc_clear_info_clicked()",
                                                                         "on_checkBox_text_stateChanged(int)",
                                                                         "on_checkBox_photo_stateChanged(int)",
                                                                         "on_checkBox_finger_stateChanged(int)",
                                                                         "on_checkBox_compatible_stateChanged(int)",
                                                                         "on_checkBox_reread_stateChanged(int)",
                                                                         "on_checkBox_composite_stateChanged(int)",
                                                                         "on_checkBox_stop_on_error_stateChanged(int)",
                                                                         "on_pushButton_info_separator_clicked()"}));
        QCOMPARE(Form_Idcard::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void widgetsAreThereWithTheirTexts_data()
    {
        addWidgetRows({
            {"groupBox", "QGroupBox", "读身份证"},
            {"checkBox_text", "QCheckBox", "文字"},
            {"checkBox_photo", "QCheckBox", "头像"},
            {"checkBox_compatible", "QCheckBox", "兼容慢PC"},
            {"checkBox_composite", "QCheckBox", "正反面"},
            {"checkBox_finger", "QCheckBox", "指纹"},
            {"checkBox_reread", "QCheckBox", "强制重读"},
            {"pushButton_read_idc", "QPushButton", "读身份证"},
            {"pushButton_idc_clear_info", "QPushButton", "清空信息"},
            {"pushButton_command_aa", "QPushButton", "AA指令透传"},
            {"lineEdit_command_aa", "QLineEdit", "2001"},
            {"pushButton_read_emid", "QPushButton", "读EMID卡"},
            {"pushButton_read_phsy_id", "QPushButton", "读物理ID"},
            {"lineEdit_phsy_id", "QLineEdit", ""},
            {"pushButton_read_dn", "QPushButton", "读DN码"},
            {"pushButton_read_sam_id", "QPushButton", "读SAM ID"},
            {"lineEdit_sam_id", "QLineEdit", ""},
            {"label_image_photo", "QLabel", "证件头像"},
            {"textEdit_idc_info", "QTextEdit", ""},
            {"label_13", "QLabel", "图像缓存目录"},
            {"lineEdit_separation", "QLineEdit", "|"},
            {"pushButton_info_separator", "QPushButton", "设置身份证信息字段分隔符"},
            {"groupBox_2", "QGroupBox", "读身份证压力测试"},
            {"label", "QLabel", "次数"},
            {"lineEdit_2", "QLineEdit", "0"},
            {"label_2", "QLabel", "次 (0=无限次)"},
            {"label_3", "QLabel", "超时"},
            {"lineEdit_3", "QLineEdit", "3000"},
            {"label_4", "QLabel", "毫秒"},
            {"label_5", "QLabel", "间隔"},
            {"lineEdit_4", "QLineEdit", "200"},
            {"label_6", "QLabel", "毫秒"},
            {"label_7", "QLabel", "成功"},
            {"lineEdit_5", "QLineEdit", "0"},
            {"label_8", "QLabel", "次"},
            {"label_9", "QLabel", "失败"},
            {"lineEdit_6", "QLineEdit", "0"},
            {"label_10", "QLabel", "次"},
            {"label_11", "QLabel", "成功率"},
            {"lineEdit_7", "QLineEdit", "0"},
            {"label_12", "QLabel", "%"},
            {"checkBox_stop_on_error", "QCheckBox", "出错时停止"},
            {"pushButton_2", "QPushButton", "开始"},
            {"pushButton_3", "QPushButton", "停止"},
            {"pushButton_4", "QPushButton", "统计信息"},
            {"pushButton_5", "QPushButton", "重置计数器"},
        });
    }

    void widgetsAreThereWithTheirTexts()
    {
        Bench bench;
        compareWidget(bench.page<Form_Idcard>());
    }

    void fieldsThatOnlyShowAreReadOnly()
    {
        Bench bench;
        auto *page = bench.page<Form_Idcard>();
        for (auto *edit : page->findChildren<QLineEdit *>()) {
            const bool shows =
                QStringList({"lineEdit_phsy_id", "lineEdit_sam_id", "lineEdit_temp_dir"}).contains(edit->objectName());
            QVERIFY2(edit->isReadOnly() == shows, qPrintable(edit->objectName()));
        }
        QVERIFY(bench.widget<QTextEdit>("textEdit_idc_info", page)->isReadOnly());
        auto *photo = bench.widget<QLabel>("label_image_photo", page);
        QCOMPARE(photo->minimumSize(), QSize(102, 126));
        QCOMPARE(photo->maximumSize(), QSize(102, 126));
        QCOMPARE(page->windowTitle(), "Form");
    }

    void pageFitsTheWindow()
    {
        Bench bench;
        bench.window.show();
        const QSize hint = bench.page<Form_Idcard>()->minimumSizeHint();
        QVERIFY2(hint.width() <= 845 && hint.height() <= 310,
                 qPrintable(QString("%1 x %2").arg(hint.width()).arg(hint.height())));
        QCOMPARE(bench.window.size(), QSize(867, 644));
    }

    void fourBoxesStartChecked()
    {
        Bench bench;
        auto *page = bench.page<Form_Idcard>();
        QStringList checked;
        for (auto *box : page->findChildren<QCheckBox *>())
            if (box->isChecked())
                checked << box->objectName();
        QCOMPARE(checked, QStringList({"checkBox_text", "checkBox_photo", "checkBox_composite", "checkBox_reread"}));
    }

    void compositeSignalIsEmittedOnceDuringConstruction()
    {
        const ConstructionSpy spy;
        DeviceContext device{};
        const Form_Idcard page(&device, nullptr);
        QCOMPARE(spy.shown, QList<int>({2}));
    }

    void eachCheckBoxHasItsBit_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("flags");
        QTest::newRow("fingerprint on") << "checkBox_finger"
                                        << "0x1F";
        QTest::newRow("text off") << "checkBox_text"
                                  << "0x1C";
        QTest::newRow("photo off") << "checkBox_photo"
                                   << "0x1A";
        QTest::newRow("composite off") << "checkBox_composite"
                                       << "0x16";
        QTest::newRow("force re-read off") << "checkBox_reread"
                                           << "0xE";
        QTest::newRow("slow PC on") << "checkBox_compatible"
                                    << "0x81E";
        QTest::newRow("stop on error reaches the driver too") << "checkBox_stop_on_error"
                                                              << "0x101E";
    }

    void eachCheckBoxHasItsBit()
    {
        QFETCH(QString, box);
        QFETCH(QString, flags);
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        recorder().vek_idcr_getinfo = [](auto, auto, auto, auto, auto, auto, auto, auto, auto) { return -1; };
        bench.press(box.toUtf8().constData(), page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        bench.press("pushButton_read_idc", page);
        bench.press(box.toUtf8().constData(), page);
        bench.press("pushButton_read_idc", page);
        QCOMPARE(Bench::calls().size(), 2);
        QVERIFY2(Bench::calls().at(0).startsWith("vek_idcr_getinfo(1A2B, " + flags + ", 5000, 1, "),
                 qPrintable(Bench::calls().at(0)));
        QVERIFY(Bench::calls().at(1).startsWith("vek_idcr_getinfo(1A2B, 0x1E, 5000, 1, "));
    }

    void compositeBoxShowsAndHidesTheDialog()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Idcard>();
        const QSignalSpy shown(page, &Form_Idcard::showHideImageDlg);
        auto *dialog = bench.widget<QDialog>("Dialog_idc_image_display");
        bench.press("checkBox_composite", page);
        QVERIFY(!dialog->isVisible());
        bench.press("checkBox_composite", page);
        QVERIFY(dialog->isVisible());
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown.at(0).first().toInt(), 0);
        QCOMPARE(shown.at(1).first().toInt(), 2);
    }

    void otherBoxesDoNotTouchTheDialog()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Idcard>();
        const QSignalSpy shown(page, &Form_Idcard::showHideImageDlg);
        for (const char *box : {"checkBox_text", "checkBox_photo", "checkBox_finger", "checkBox_compatible",
                                "checkBox_reread", "checkBox_stop_on_error"})
            bench.press(box, page);
        QCOMPARE(shown.size(), 0);
    }

    void clearEmptiesPhotoTextAndIds()
    {
        Bench bench;
        bench.loadDriver();
        auto *page = bench.page<Form_Idcard>();
        bench.widget<QTextEdit>("textEdit_idc_info", page)->setPlainText("text");
        bench.widget<QLineEdit>("lineEdit_sam_id", page)->setText("sam");
        bench.widget<QLineEdit>("lineEdit_phsy_id", page)->setText("uid");
        bench.press("pushButton_idc_clear_info", page);
        QCOMPARE(bench.widget<QTextEdit>("textEdit_idc_info", page)->toPlainText(), "");
        QCOMPARE(bench.widget<QLabel>("label_image_photo", page)->text(), "");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_sam_id", page)->text(), "");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_phsy_id", page)->text(), "");
        QCOMPARE(bench.widget<QLineEdit>("lineEdit_command_aa", page)->text(), "2001");
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
    }

    void stressTestButtonsAreInert()
    {
        Bench bench;
        bench.openDevice();
        auto *page = bench.page<Form_Idcard>();
        for (const char *button : {"pushButton_2", "pushButton_3", "pushButton_4", "pushButton_5"})
            bench.press(button, page);
        QVERIFY(bench.log().isEmpty());
        QVERIFY(Bench::calls().isEmpty());
        for (const char *counter : {"lineEdit_2", "lineEdit_5", "lineEdit_6", "lineEdit_7"})
            QCOMPARE(bench.widget<QLineEdit>(counter, page)->text(), "0");
    }
};

QTEST_MAIN(TestFormIdcard)
#include "test_form_idcard.moc"
