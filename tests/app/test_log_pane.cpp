#include "app/log_pane.h"
#include "app/main_window.h"

#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>

class TestLogPane : public QObject {
    Q_OBJECT

    static QTextEdit *pane(MainWindow &window) { return window.findChild<QTextEdit *>("textEdit_log"); }

private slots:
    void eachLineIsAParagraph()
    {
        MainWindow window;
        emit window.addLog("first");
        emit window.addLog("second");
        QCOMPARE(pane(window)->toPlainText(), "first\nsecond");
        QCOMPARE(pane(window)->document()->blockCount(), 2);
    }

    void markupIsShownAsCharacters()
    {
        MainWindow window;
        emit window.addLog("设备1 [<b>bold</b>&amp;<img src=x>].");
        QCOMPARE(pane(window)->toPlainText(), "设备1 [<b>bold</b>&amp;<img src=x>].");
    }

    void aLineBreakInsideAMessageGivesTwoLines()
    {
        MainWindow window;
        emit window.addLog("a, \r\nb");
        QCOMPARE(pane(window)->toPlainText(), "a, \nb");
    }

    void theViewStaysAtTheEnd()
    {
        MainWindow window;
        window.show();
        for (int i = 0; i < 200; ++i)
            emit window.addLog(QString::number(i));
        QScrollBar *bar = pane(window)->verticalScrollBar();
        QVERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), bar->maximum());
    }

    void theViewDoesNotJumpWhenTheUserReadsFurtherUp()
    {
        MainWindow window;
        window.show();
        for (int i = 0; i < 200; ++i)
            emit window.addLog(QString::number(i));
        QScrollBar *bar = pane(window)->verticalScrollBar();
        bar->setValue(bar->maximum() / 2);
        const int position = bar->value();
        emit window.addLog("new");
        QCOMPARE(bar->value(), position);
    }

    void linesGoToTheEndWhereverTheUsersCursorStands()
    {
        MainWindow window;
        emit window.addLog("one");
        emit window.addLog("two");
        QTextCursor cursor = pane(window)->textCursor();
        cursor.setPosition(1);
        pane(window)->setTextCursor(cursor);
        emit window.addLog("three");
        QCOMPARE(pane(window)->toPlainText(), "one\ntwo\nthree");
        QCOMPARE(pane(window)->textCursor().position(), 1);
    }

    void aSelectionToTheEndDoesNotGrow()
    {
        MainWindow window;
        emit window.addLog("one");
        pane(window)->selectAll();
        emit window.addLog("two");
        QCOMPARE(pane(window)->textCursor().selectedText(), "one");
    }

    void clearEmptiesThePaneBeforeAnyDriverIsLoaded()
    {
        MainWindow window;
        window.show();
        emit window.addLog("one");
        auto *clear = window.findChild<QPushButton *>("pushButton_clear_log");
        QVERIFY(clear->isEnabled());
        QVERIFY(pane(window)->isEnabled());
        QTest::mouseClick(clear, Qt::LeftButton);
        QCOMPARE(pane(window)->toPlainText(), "");
    }

    void undoTakesNoLineOut()
    {
        MainWindow window;
        window.show();
        emit window.addLog("one");
        pane(window)->setFocus();
        QTest::keyClick(pane(window), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(pane(window)->toPlainText(), "one");
    }

    void theUserMayTypeIntoThePane()
    {
        MainWindow window;
        QVERIFY(!pane(window)->isReadOnly());
    }
};

QTEST_MAIN(TestLogPane)
#include "test_log_pane.moc"
