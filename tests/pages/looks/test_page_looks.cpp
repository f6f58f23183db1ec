// What all pages owe the eye and the keyboard, at the window's own size.
#include "tests/support/bench.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>
#include <QSet>

namespace {

/// A label of pictures is as large as its picture, whatever its text.
const char kPhoto[] = "label_image_photo";

/// How far a label may stand from the field that it names, in pixels.
constexpr int kNear = 12;

/// More widgets than any page has.
constexpr int kMany = 100;

QRect placeOn(const QWidget *page, const QWidget *widget)
{
    return QRect(widget->mapTo(page, QPoint(0, 0)), widget->size());
}

/// The field that starts right behind the label in its row, or null.
QWidget *fieldBehind(const QWidget *page, const QLabel *label)
{
    const QRect place = placeOn(page, label);
    for (auto *field : page->findChildren<QWidget *>()) {
        if (qobject_cast<QLineEdit *>(field) == nullptr && qobject_cast<QComboBox *>(field) == nullptr)
            continue;
        const QRect other = placeOn(page, field);
        const int gap = other.left() - place.right();
        if (gap > 0 && gap <= kNear && qAbs(other.center().y() - place.center().y()) <= 4)
            return field;
    }
    return nullptr;
}

/// A widget's name in the list of those that Tab reaches. Radio buttons are reached as one: the arrow keys lead from
/// one to the next.
QString keyboardName(const QWidget *widget)
{
    return qobject_cast<const QRadioButton *>(widget) != nullptr ? "radio buttons" : widget->objectName();
}

/// All that Tab has to reach.
QSet<QString> keyboardTargets(const QWidget *page)
{
    QSet<QString> names;
    for (const auto *child : page->findChildren<QWidget *>()) {
        const QString name = keyboardName(child);
        // The parts of scroll areas and combo boxes are reached with their owners.
        const bool isPart = name.isEmpty() || name.startsWith("qt_") || child->focusProxy() != nullptr;
        if (!isPart && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus) != 0)
            names << name;
    }
    return names;
}

} // namespace

class TestPageLooks : public QObject {
    Q_OBJECT

private:
    static void addPageRows()
    {
        QTest::addColumn<int>("tab");
        const char *const titles[] = {"status", "CPU card", "stripe", "ID card", "Mifare", "social security"};
        for (int tab = 0; tab < 6; ++tab)
            QTest::newRow(titles[tab]) << tab;
    }

    /// The row's page, in front, with a device open.
    static QWidget *shownPage(Bench &bench)
    {
        QFETCH(int, tab);
        bench.openDevice();
        auto *tabs = bench.widget<QTabWidget>("tabWidget");
        tabs->setCurrentIndex(tab);
        QCoreApplication::processEvents();
        return tabs->currentWidget();
    }

private slots:
    /// The sizes count in the desktop's font; the offscreen platform's own is larger.
    void initTestCase() { QApplication::setFont(QFont("Sans Serif", 9)); }

    void everyObjectNameStandsOnce_data() { addPageRows(); }

    void everyObjectNameStandsOnce()
    {
        Bench bench;
        QSet<QString> seen;
        for (const auto *child : shownPage(bench)->findChildren<QWidget *>()) {
            const QString name = child->objectName();
            if (name.isEmpty() || name.startsWith("qt_"))
                continue;
            QVERIFY2(!seen.contains(name), qPrintable(name));
            seen << name;
        }
        QVERIFY(seen.size() > 5);
    }

    void noTextIsCut_data() { addPageRows(); }

    void noTextIsCut()
    {
        Bench bench;
        auto *page = shownPage(bench);
        QCOMPARE(bench.window.size(), QSize(867, 644));
        QVERIFY(page->minimumSizeHint().width() <= page->width());
        QVERIFY(page->minimumSizeHint().height() <= page->height());
        for (const auto *child : page->findChildren<QWidget *>()) {
            const bool hasText = qobject_cast<const QAbstractButton *>(child) != nullptr ||
                                 qobject_cast<const QComboBox *>(child) != nullptr ||
                                 qobject_cast<const QLabel *>(child) != nullptr;
            if (!hasText || !child->isVisible() || child->objectName() == kPhoto)
                continue;
            const QSize needed = child->sizeHint();
            QVERIFY2(child->width() >= needed.width() && child->height() >= needed.height(),
                     qPrintable(QString("%1 has %2 x %3 and needs %4 x %5")
                                    .arg(child->objectName())
                                    .arg(child->width())
                                    .arg(child->height())
                                    .arg(needed.width())
                                    .arg(needed.height())));
            QVERIFY2(page->rect().contains(placeOn(page, child)), qPrintable(child->objectName()));
        }
    }

    void labelsAreBuddiesOfTheirFields_data() { addPageRows(); }

    void labelsAreBuddiesOfTheirFields()
    {
        Bench bench;
        auto *page = shownPage(bench);
        for (const auto *label : page->findChildren<QLabel *>())
            if (auto *field = fieldBehind(page, label))
                QVERIFY2(label->buddy() == field, qPrintable(label->objectName() + " of " + field->objectName()));
    }

    void tabKeyGoesThroughThePageToTheLog_data() { addPageRows(); }

    void tabKeyGoesThroughThePageToTheLog()
    {
        Bench bench;
        auto *page = shownPage(bench);
        QApplication::setActiveWindow(&bench.window);
        bench.widget<QTabWidget>("tabWidget")->setFocus();
        const auto tab = [] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); };
        QStringList reached;
        for (tab(); page->isAncestorOf(QApplication::focusWidget()) && reached.size() < kMany; tab())
            reached << keyboardName(QApplication::focusWidget());
        QCOMPARE(QApplication::focusWidget()->objectName(), "textEdit_log");
        const QSet<QString> once(reached.begin(), reached.end());
        QCOMPARE(once.size(), reached.size());
        QCOMPARE(once, keyboardTargets(page));
        for (const auto *edit : page->findChildren<QTextEdit *>())
            QCOMPARE(edit->toPlainText(), "");
    }

    void tabKeyLeavesTheLogWithoutChangingIt()
    {
        Bench bench;
        bench.loadDriver();
        QApplication::setActiveWindow(&bench.window);
        auto *log = bench.widget<QTextEdit>("textEdit_log");
        log->setPlainText("a line");
        log->setFocus();
        QTest::keyClick(log, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget()->objectName(), "pushButton_clear_log");
        QCOMPARE(log->toPlainText(), "a line");
    }

    void anEnlargedWindowGivesItsRoomToTheLogAndTheTextBoxes_data() { addPageRows(); }

    void anEnlargedWindowGivesItsRoomToTheLogAndTheTextBoxes()
    {
        Bench bench;
        auto *page = shownPage(bench);
        QList<QTextEdit *> boxes = page->findChildren<QTextEdit *>();
        boxes << bench.widget<QTextEdit>("textEdit_log");
        QList<QSize> before;
        for (const auto *box : boxes)
            before << box->size();
        bench.window.resize(bench.window.size() + QSize(200, 400));
        QCoreApplication::processEvents();
        for (int i = 0; i < boxes.size(); ++i) {
            QVERIFY2(boxes.at(i)->width() >= before.at(i).width() + 90, qPrintable(boxes.at(i)->objectName()));
            QVERIFY2(boxes.at(i)->height() >= before.at(i).height() + 50, qPrintable(boxes.at(i)->objectName()));
        }
    }
};

QTEST_MAIN(TestPageLooks)
#include "test_page_looks.moc"
