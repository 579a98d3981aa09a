#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/view/waveview.h>

#include <QImage>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QWheelEvent>

#include <cmath>

using namespace WaveMonitor;

namespace {

/// A viewer, and the mouse over its waves. Rows are 30 pixels high.
struct WaveUser final : Viewer
{
    explicit WaveUser(int rows) : Viewer(QString("a ").repeated(rows), 400) {}

    QWidget *viewport() const { return waves->viewport(); }
    QImage picture() const { return pixelsOf(viewport()); }
    int row() const { return waves->verticalScrollBar()->value(); }
    int column() const { return waves->horizontalScrollBar()->value(); }
    void scrollTo(int column, int row) const
    {
        waves->horizontalScrollBar()->setValue(column);
        waves->verticalScrollBar()->setValue(row);
    }
    void wheel(QWidget *target, int delta, Qt::KeyboardModifiers modifiers = {}) const
    {
        QWheelEvent event({100, 20}, target->mapToGlobal(QPointF(100, 20)), {}, {0, delta},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(target, &event);
        settle();
    }
    /// Presses at the first point and moves on to the others.
    void pull(Qt::MouseButton button, const QList<QPoint> &points) const
    {
        QTest::mousePress(viewport(), button, {}, points.first());
        for (const QPoint &point : points.mid(1))
            QTest::mouseMove(viewport(), point);
    }
    void release(Qt::MouseButton button, QPoint at) const
    {
        QTest::mouseRelease(viewport(), button, {}, at);
        settle();
    }
};

} // namespace

class tst_WaveView final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void zoomsByAllRoads();
    void zoomsAboutOnePoint();
    void countsNotches();
    void keepsTheMiddle();
    void dragZoomsToRegion();
    void regionIsShadedWhileChosen();
    void middleDragPans();
    void pressSelects();
    void drawsTriggerAndMarkers();
};

void tst_WaveView::zoomsByAllRoads()
{
    const Viewer other("a", 400, 32);
    const WaveUser user(40);
    QList<qreal> rates;
    Listener listener({EvBeforeZoom, EvAfterZoom}, [&rates](const QObject &sender) {
        rates.append(sender.property("zoomRate").toReal());
    });
    QRandomGenerator random(2);
    qreal rate = 1.0;
    for (int step = 0; step < 150; ++step) {
        if (step % 30 == 0)
            user.widget->resize(1000, 400 + random.bounded(20));
        const int row = random.bounded(user.waves->verticalScrollBar()->maximum());
        user.scrollTo(0, row);
        const bool isUp = random.bounded(20) < (step / 40 % 2 ? 4 : 16);
        const qreal next = std::clamp(isUp ? rate * 2 : rate / 2, 1.0 / 256, 16.0);
        const bool isWheel = random.bounded(2);
        QWidget *over = random.bounded(2) ? user.ruler->viewport() : user.viewport();
        listener.take();
        rates.clear();
        if (isWheel) {
            user.wheel(over, isUp ? random.bounded(1, 240) : -random.bounded(240),
                       Qt::ControlModifier);
            // Nothing is said where nothing changes.
            QCOMPARE(rates, next == rate ? QList<qreal>() : (QList<qreal>{rate, next}));
        } else if (random.bounded(2)) {
            driveContextMenu(user.viewport(), {50, 50}, isUp ? "Zoom In" : "Zoom Out");
        } else if (isUp) {
            user.widget->zoomIn();
        } else {
            user.widget->zoomOut();
        }
        user.settle();
        rate = next;
        QCOMPARE(user.row(), row);
        QCOMPARE(user.widget->zoomRate(), rate);
        QCOMPARE(user.waves->zoomRate(), rate);
        QCOMPARE(user.ruler->zoomRate(), rate);
        for (const auto modifiers :
             {Qt::KeyboardModifiers(), Qt::ControlModifier | Qt::ShiftModifier}) {
            user.scrollTo(0, row);
            user.wheel(over, row > 100 ? 120 : -120, modifiers); // scrolls
            QVERIFY(user.row() != row && user.waves->zoomRate() == rate);
        }
    }
    QCOMPARE(other.waves->zoomRate() + other.ruler->zoomRate(), 2.0);
    // The horizontal bar keeps its wheel.
    user.zoomTo(1.0);
    const int row = user.row();
    user.wheel(user.waves->horizontalScrollBar(), -120);
    QVERIFY(user.row() == row && user.column() > 0);
}

// The pointer's place over waves or ruler, and else the middle, also before the first scrolling.
void tst_WaveView::zoomsAboutOnePoint()
{
    QRandomGenerator random(3);
    for (int round = 0; round < 40; ++round) {
        WaveUser user(3);
        const int width = user.viewport()->width();
        if (round % 2)
            user.scrollTo(random.bounded(4000, 12'000), 0);
        const int x = round % 4 < 2 ? 100 : width / 2;
        const qreal held = user.waves->mapToScene(x, 0).x();
        for (const qreal rate : {2.0, 4.0, 8.0, 4.0, 8.0, 16.0}) {
            const bool isUp = rate > user.waves->zoomRate();
            if (x != 100)
                isUp ? user.widget->zoomIn() : user.widget->zoomOut();
            else
                user.wheel(random.bounded(2) ? user.ruler->viewport() : user.viewport(),
                           isUp ? 120 : -120, Qt::ControlModifier);
            user.settle();
            QCOMPARE(user.waves->zoomRate(), rate);
            // A wheel holds what is below the pointer to the pixel, from step to step.
            QVERIFY(std::abs(user.waves->mapFromScene(held, 0).x() - x) <= (x == 100 ? 16 : 1));
        }
    }
}

// Eight events of 15 make one notch; so do a turn of any size and one that follows another wheel's.
void tst_WaveView::countsNotches()
{
    WaveUser user(3);
    const auto turn = [&](int delta, int events, int notches) {
        const qreal before = user.waves->zoomRate();
        for (int i = 0; i < events; ++i)
            user.wheel(i % 2 ? user.viewport() : user.ruler->viewport(), delta,
                       Qt::ControlModifier);
        QCOMPARE(user.waves->zoomRate(), before * std::exp2(delta > 0 ? notches : -notches));
    };
    turn(-15, 8, 1);
    turn(-15, 1, 1);
    turn(15, 16, 2);
    turn(-240, 1, 1);
    turn(-120, 3, 3);
    turn(40, 4, 2);
    user.wheel(user.viewport(), 40); // scrolls
    turn(40, 1, 1);
}

void tst_WaveView::keepsTheMiddle()
{
    Viewer viewer({}, 400);
    const auto distance = [&](int sample) {
        return std::abs(viewer.waves->mapFromScene(sample * CLOCK_PITCH, 0).x() -
                        viewer.waves->viewport()->width() / 2);
    };
    viewer.waves->centreOn(200); // before there is anything to see
    addRows(*viewer.widget, "a b", 400);
    viewer.settle();
    QVERIFY(distance(200) <= 1);
    viewer.widget->resize(900, 300);
    viewer.settle();
    QVERIFY(distance(200) <= 1);
    for (int i = 0; i < 8; ++i)
        viewer.widget->zoomOut();
    viewer.settle();
    for (int i = 0; i < 8; ++i)
        viewer.widget->zoomIn();
    viewer.settle();
    QVERIFY(distance(200) <= 1);
    const int bar = viewer.waves->horizontalScrollBar()->value() + 100;
    viewer.waves->horizontalScrollBar()->setValue(bar); // moved: the left edge stays from now on
    viewer.widget->resize(1000, 300);
    viewer.settle();
    QCOMPARE(viewer.waves->horizontalScrollBar()->value(), bar);
}

void tst_WaveView::dragZoomsToRegion()
{
    using Drag = std::tuple<int, int, qreal, qreal>; // from, to, rate, by what; 0: bounded at 16
    for (const auto &[from, to, before, zoomedBy] :
         {Drag(300, 309, 1.0, 1.0), Drag(300, 310, 0.1, 10.0), Drag(600, 400, 1.0, 200.0),
          Drag(300, 312, 4.0, 0.0)}) {
        WaveUser user(40);
        user.zoomTo(before);
        user.scrollTo(700, 100);
        const qreal leftEdge = user.waves->mapToScene(std::min(from, to), 0).x();
        const qreal middle = user.waves->mapToScene((from + to) / 2, 0).x();
        user.pull(Qt::LeftButton, {{from, 50}, {to, 300}});
        user.release(Qt::LeftButton, {to, 300});

        const int width = user.viewport()->width();
        const qreal drawn = zoomedBy == 1.0 ? before : before * width / zoomedBy;
        QCOMPARE(user.waves->zoomRate(), std::min(drawn, 16.0));
        QCOMPARE(user.row(), 100);
        QVERIFY(zoomedBy <= 1.0 || std::abs(user.waves->mapFromScene(leftEdge, 0).x()) <= 1);
        const int shown = user.waves->mapFromScene(middle, 0).x();
        QVERIFY(shown > 0 && shown < width);
    }
}

void tst_WaveView::regionIsShadedWhileChosen()
{
    WaveUser user(1);
    const int bottom = user.viewport()->height() - 1;
    user.pull(Qt::LeftButton, {{300, 50}, {500, 70}});
    const QImage picture = user.picture();
    const QColor shade = picture.pixelColor(100, 200);
    QVERIFY(shade.blue() > 20 && shade.blue() < 40 && shade.red() == 0);
    for (const auto &[x, y] : {QPoint(299, 0), QPoint(299, bottom), QPoint(499, 200)})
        QCOMPARE(picture.pixelColor(x, y), QColor(0, 255, 255));
    QCOMPARE(picture.pixelColor(301, 200), QColor(Qt::black));
    QCOMPARE(picture.pixelColor(picture.width() - 1, bottom), shade);
    // Back to less than the shortest drag: nothing is chosen any more.
    const auto isShaded = [&](int x) { return user.picture().pixelColor(x, 200) == shade; };
    QTest::mouseMove(user.viewport(), {309, 70});
    QVERIFY(!isShaded(100));
    user.release(Qt::LeftButton, {309, 70});
    user.pull(Qt::LeftButton, {{0, 50}, {500, 70}});
    QVERIFY(isShaded(700));
    // Panning takes over.
    user.pull(Qt::MiddleButton, {{500, 70}});
    QVERIFY(!isShaded(700));
    user.release(Qt::MiddleButton, {500, 70});
    user.release(Qt::LeftButton, {500, 70});
    QCOMPARE(user.waves->zoomRate(), 1.0);
    // Escape takes all of the drag back.
    user.pull(Qt::LeftButton, {{0, 50}, {500, 70}});
    QTest::keyClick(user.waves, Qt::Key_Escape);
    QVERIFY(!isShaded(700));
    QTest::mouseMove(user.viewport(), {600, 70});
    QVERIFY(!isShaded(700));
    user.release(Qt::LeftButton, {600, 70});
    QCOMPARE(user.waves->zoomRate(), 1.0);
}

void tst_WaveView::middleDragPans()
{
    WaveUser user(40);
    user.scrollTo(700, 100);
    user.pull(Qt::MiddleButton, {{300, 200}, {310, 180}, {250, 150}});
    QCOMPARE(user.viewport()->cursor().shape(), Qt::ClosedHandCursor);
    user.release(Qt::MiddleButton, {250, 150});
    QCOMPARE(user.viewport()->cursor().shape(), Qt::ArrowCursor);
    QTest::mouseMove(user.viewport(), {100, 100});
    QCOMPARE(QPoint(user.column(), user.row()), QPoint(750, 150));
    QVERIFY(user.tree->selectedRows().isEmpty());
}

void tst_WaveView::pressSelects()
{
    WaveUser user(3);
    const auto selectedBy = [&](Qt::MouseButton button, int y) {
        QTest::mouseClick(user.viewport(), button, {}, {600, y});
        const QModelIndexList rows = user.tree->selectedRows();
        return rows.size() == 1 ? rows.first().row() : -1;
    };
    QCOMPARE(selectedBy(Qt::LeftButton, 75), 2);
    QCOMPARE(selectedBy(Qt::RightButton, 15), 2);
    QCOMPARE(selectedBy(Qt::LeftButton, 200), -1); // below the rows
    QCOMPARE(selectedBy(Qt::LeftButton, 15), 0);
    user.zoomTo(1.0 / 256);
    QCOMPARE(selectedBy(Qt::LeftButton, 15), -1); // past the end of the samples
}

void tst_WaveView::drawsTriggerAndMarkers()
{
    WaveUser user(1);
    user.widget->setTriggerPosition(4);
    user.plant(0);
    user.plant(7);
    const auto isLine = [&](int x, const QColor &color) {
        const QImage picture = user.picture();
        return picture.pixelColor(x, 0) == color &&
               picture.pixelColor(x, picture.height() - 1) == color;
    };
    QVERIFY(isLine(200, Qt::yellow) && !isLine(201, Qt::yellow));
    QVERIFY(isLine(0, Qt::red) && isLine(350, Qt::red));
    // The shift before the sample is a scene distance: it shows at high zoom only by rounding.
    user.zoomTo(2.0);
    user.scrollTo(100, 0);
    QVERIFY(isLine(300, Qt::yellow) && isLine(600, Qt::red));
}

KEO_WIDGET_TEST_MAIN(tst_WaveView)
#include "tst_waveview.moc"
