#include "pages/idcard/form_idc_info_display.h"
#include "tests/support/bench.h"
#include "tests/support/meta_object.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

class TestFormIdcInfoDisplay : public QObject {
    Q_OBJECT

private slots:
    /// The sizes count in the desktop's font; the offscreen platform's own is larger.
    void initTestCase() { QApplication::setFont(QFont("Sans Serif", 9)); }

    void isAPlainWidgetWithoutSignalsAndSlots()
    {
        QCOMPARE(ownMethods(Form_Idc_info_display::staticMetaObject), QStringList());
        QCOMPARE(Form_Idc_info_display::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    }

    void hasTheDialogsWidgetsWithoutTheLines()
    {
        const Form_Idc_info_display panel(nullptr);
        QStringList widgets;
        for (const auto *child : panel.findChildren<QWidget *>())
            widgets << child->objectName() + "=" + child->property("text").toString();
        QCOMPARE(widgets,
                 QStringList({"checkBox_idc_disp_follow_main_wnd=吸附到主窗口", "pushButton_idc_info_min_size=隐藏窗口",
                              "label=在身份证测试界面，选中“正反面”对勾，即可显示本窗口", "label_image_front=正面图像",
                              "label_image_back=反面图像"}));
        for (const char *name : {"label_image_front", "label_image_back"}) {
            const auto *label = panel.findChild<QLabel *>(name);
            QCOMPARE(label->minimumSize(), QSize(404, 257));
            QCOMPARE(label->maximumSize(), QSize(404, 257));
        }
        QCOMPARE(panel.windowTitle(), "Form");
        QCOMPARE(panel.size(), QSize(422, 587));
    }

    void itsContentsFitItsSize()
    {
        Form_Idc_info_display panel(nullptr);
        panel.show();
        QCOMPARE(panel.size(), QSize(422, 587));
    }

    void itsButtonAndBoxDoNothing()
    {
        Form_Idc_info_display panel(nullptr);
        panel.show();
        const QPoint position = panel.pos();
        panel.findChild<QPushButton *>("pushButton_idc_info_min_size")->click();
        panel.findChild<QCheckBox *>("checkBox_idc_disp_follow_main_wnd")->click();
        QVERIFY(panel.isVisible());
        QCOMPARE(panel.pos(), position);
    }

    void noPartOfTheProgramMakesOne()
    {
        Bench bench;
        QVERIFY(bench.window.findChildren<Form_Idc_info_display *>().isEmpty());
    }
};

QTEST_MAIN(TestFormIdcInfoDisplay)
#include "test_form_idc_info_display.moc"
