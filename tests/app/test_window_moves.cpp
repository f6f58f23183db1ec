#include "pages/idcard/dialog_idc_image_display.h"
#include "tests/support/bench.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>

#include <optional>

namespace {

/// Sends a mouse event to the window at a point of the screen.
void mouse(QWidget &window, QEvent::Type type, Qt::MouseButton button, const QPointF &screen)
{
    const QPointF local = window.mapFromGlobal(screen.toPoint());
    QMouseEvent event(type, local, local, screen, button, type == QEvent::MouseButtonRelease ? Qt::NoButton : button,
                      Qt::NoModifier);
    QApplication::sendEvent(&window, &event);
}

/// The last follow point; the pointer that comes with the signal is read while it is valid.
class FollowPoint : public QObject {
public:
    explicit FollowPoint(MainWindow &window)
    {
        connect(&window, &MainWindow::updateWindowPos, this, [this](const QPoint *point) {
            last = *point;
            ++count;
        });
    }
    std::optional<QPoint> last;
    int count = 0;
};

} // namespace

class TestWindowMoves : public QObject {
    Q_OBJECT

private slots:
    void theWindowStartsAt100And100()
    {
        MainWindow window;
        QCOMPARE(window.pos(), QPoint(100, 100));
    }

    void draggingMovesByTheDistanceFromThePress()
    {
        MainWindow window;
        window.show();
        const QPoint start = window.frameGeometry().topLeft();
        mouse(window, QEvent::MouseButtonPress, Qt::LeftButton, QPointF(300, 300));
        mouse(window, QEvent::MouseMove, Qt::LeftButton, QPointF(350, 280));
        QCOMPARE(window.frameGeometry().topLeft(), start + QPoint(50, -20));
        mouse(window, QEvent::MouseMove, Qt::LeftButton, QPointF(310, 310));
        QCOMPARE(window.frameGeometry().topLeft(), start + QPoint(10, 10));
        mouse(window, QEvent::MouseButtonRelease, Qt::LeftButton, QPointF(310, 310));
        mouse(window, QEvent::MouseMove, Qt::NoButton, QPointF(400, 400));
        QCOMPARE(window.frameGeometry().topLeft(), start + QPoint(10, 10));
    }

    /// None of these has a use for the mouse.
    void labelsAndGroupsLetTheWindowBeDragged_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"label_7", "groupBox_config", "label_device_info", "label_5", "statusbar"})
            QTest::newRow(name) << name;
    }

    void labelsAndGroupsLetTheWindowBeDragged()
    {
        QFETCH(QString, name);
        Bench bench;
        bench.loadDriver();
        const QPoint start = bench.window.frameGeometry().topLeft();
        auto *grip = bench.widget<QWidget>(name.toUtf8().constData());
        const QPoint point(9, 9);
        QTest::mousePress(grip, Qt::LeftButton, Qt::NoModifier, point);
        QMouseEvent move(QEvent::MouseMove, point + QPoint(20, 10), grip->mapToGlobal(point + QPoint(20, 10)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(grip, &move);
        QTest::mouseRelease(grip, Qt::LeftButton, Qt::NoModifier, point);
        QCOMPARE(bench.window.frameGeometry().topLeft(), start + QPoint(20, 10));
    }

    void screenPositionsAreRoundedHalvesUpwards()
    {
        MainWindow window;
        window.show();
        const QPoint start = window.frameGeometry().topLeft();
        mouse(window, QEvent::MouseButtonPress, Qt::LeftButton, QPointF(300.5, 300.4));
        mouse(window, QEvent::MouseMove, Qt::LeftButton, QPointF(310.4, 310.5));
        QCOMPARE(window.frameGeometry().topLeft(), start + QPoint(310 - 301, 311 - 300));
    }

    void anotherButtonStartsNoDrag()
    {
        MainWindow window;
        window.show();
        const QPoint start = window.frameGeometry().topLeft();
        FollowPoint follow(window);
        mouse(window, QEvent::MouseButtonPress, Qt::RightButton, QPointF(300, 300));
        mouse(window, QEvent::MouseMove, Qt::RightButton, QPointF(350, 350));
        mouse(window, QEvent::MouseButtonRelease, Qt::RightButton, QPointF(350, 350));
        QCOMPARE(window.frameGeometry().topLeft(), start);
        QCOMPARE(follow.count, 0);
    }

    void aReleaseWithoutPressStillPublishesTheFollowPoint()
    {
        MainWindow window;
        window.show();
        FollowPoint follow(window);
        mouse(window, QEvent::MouseButtonRelease, Qt::LeftButton, QPointF(300, 300));
        QCOMPARE(follow.count, 1);
        QCOMPARE(*follow.last, QPoint(window.pos().x() + window.width(), window.pos().y()));
    }

    void eachMovePublishesPositionPlusWidth()
    {
        MainWindow window;
        window.show();
        FollowPoint follow(window);
        window.move(222, 111);
        QTRY_VERIFY(follow.count > 0);
        QCOMPARE(*follow.last, QPoint(222 + window.width(), 111));
    }

    void theImageDialogFollows()
    {
        MainWindow window;
        window.show();
        auto *dialog = window.findChild<Dialog_idc_image_display *>();
        if (dialog == nullptr)
            QFAIL("no dialog");
        QVERIFY(dialog->isVisible());
        window.move(60, 40);
        QTRY_COMPARE(dialog->pos(), QPoint(60 + window.width(), 40));
        mouse(window, QEvent::MouseButtonPress, Qt::LeftButton, QPointF(100, 100));
        mouse(window, QEvent::MouseMove, Qt::LeftButton, QPointF(130, 120));
        QTRY_COMPARE(dialog->pos(), QPoint(90 + window.width(), 60));
    }
};

QTEST_MAIN(TestWindowMoves)
#include "test_window_moves.moc"
