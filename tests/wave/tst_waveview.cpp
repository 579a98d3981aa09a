#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/view/waveview.h>

#include <QGraphicsRectItem>
#include <QImage>
#include <QScrollBar>
#include <QWheelEvent>

using namespace WaveMonitor;

namespace {

/// A viewer, and the mouse over its waves. Rows are 30 pixels high.
struct WaveUser final : Viewer
{
    explicit WaveUser(int rows) : Viewer(QString("a ").repeated(rows), 400) {}

    QWidget *viewport() const { return waves->viewport(); }
    QImage picture() const { return viewport()->grab().toImage(); }
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
    void press(Qt::MouseButton button, QPoint at) const
    {
        QTest::mousePress(viewport(), button, {}, at);
    }
    void moveTo(QPoint place) const { QTest::mouseMove(viewport(), place); }
    void release(Qt::MouseButton button, QPoint at) const
    {
        QTest::mouseRelease(viewport(), button, {}, at);
        settle();
    }
};

/// One row without a trace, which belongs to the source.
struct OneRow final : WaveView::DataSourceProtocol
{
    QList<QGraphicsItem *> waveItems() override
    {
        ++rebuilds;
        return {&item};
    }
    void relayoutItems() override {}
    int triggerPosition() override { return 0; }
    void itemPressed(QGraphicsItem *) override {}

    QGraphicsRectItem item{0, 0, 350, ROW_HEIGHT};
    int rebuilds = 0;
};

} // namespace

class tst_WaveView final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void wheel_data();
    void wheel();
    void zoomHasBounds();
    void zoomKeepsTheRows();
    void dragZoomsToRegion_data();
    void dragZoomsToRegion();
    void regionIsShadedWhileChosen();
    void middleDragPans();
    void pressSelects();
    void drawsTriggerAndMarkers();
    void sceneFollowsTheRows();
    void rebuildsOnceAndOutlivesOthers();
};

void tst_WaveView::wheel_data()
{
    addColumns<int, Qt::KeyboardModifiers, qreal, bool>({"delta", "modifiers", "rate", "scrolls"});
    const Qt::KeyboardModifiers control = Qt::ControlModifier;
    addRow("Ctrl up", 120, control, 2.0, false);
    addRow("Ctrl down", -120, control, 0.5, false);
    addRow("Ctrl, smallest step up", 1, control, 2.0, false);
    addRow("Ctrl, no turn", 0, control, 0.5, false);
    addRow("plain", -120, Qt::KeyboardModifiers(), 1.0, true);
    addRow("Ctrl+Shift", -120, control | Qt::ShiftModifier, 1.0, true);
}

void tst_WaveView::wheel()
{
    QFETCH(int, delta);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, scrolls);
    for (const bool overRuler : {false, true}) {
        WaveUser user(40);
        user.wheel(overRuler ? user.ruler->viewport() : user.viewport(), delta, modifiers);
        QTEST(user.waves->zoomRate(), "rate");
        QCOMPARE(user.row() != 0, scrolls);
        // The horizontal bar keeps its wheel.
        const int row = user.row();
        user.wheel(user.waves->horizontalScrollBar(), -120);
        QCOMPARE(user.row(), row);
        QVERIFY(user.column() > 0);
    }
}

void tst_WaveView::zoomHasBounds()
{
    WaveUser user(3);
    QList<qreal> rates;
    Listener listener({EvBeforeZoom, EvAfterZoom}, [&rates](const QObject &sender) {
        rates.append(sender.property("zoomRate").toReal());
    });
    user.wheel(user.viewport(), 120, Qt::ControlModifier);
    QCOMPARE(listener.take().first(2), (QList<int>{EvBeforeZoom, EvAfterZoom}));
    QCOMPARE(rates.first(2), (QList<qreal>{1.0, 2.0}));
    for (const auto &[rate, delta] : {std::pair(16.0, 120), std::pair(1.0 / 256, -120)}) {
        user.zoomTo(rate);
        listener.take();
        user.wheel(user.viewport(), delta, Qt::ControlModifier);
        QCOMPARE(user.waves->zoomRate(), rate);
        QCOMPARE(listener.take(), QList<int>()); // changes nothing and says nothing
    }
}

void tst_WaveView::zoomKeepsTheRows()
{
    WaveUser user(40);
    for (const int height : {400, 401}) {
        user.widget->resize(1000, height);
        user.scrollTo(0, 333);
        for (const qreal rate : {2.0, 4.0, 1.0 / 64, 1.0, 0.3})
            user.zoomTo(rate);
        QCOMPARE(user.row(), 333);
    }
}

void tst_WaveView::dragZoomsToRegion_data()
{
    addColumns<int, int, qreal, qreal>({"from", "to", "before", "zoomedBy"}); // 0: bounded at 16
    addRow("9 pixels", 300, 309, 1.0, 1.0);
    addRow("10 pixels", 300, 310, 0.1, 10.0);
    addRow("to the left", 600, 400, 1.0, 200.0);
    addRow("narrow at a high zoom", 300, 312, 4.0, 0.0);
}

void tst_WaveView::dragZoomsToRegion()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(qreal, before);
    QFETCH(qreal, zoomedBy);
    WaveUser user(40);
    user.zoomTo(before);
    user.scrollTo(700, 100);
    const qreal leftEdge = user.waves->mapToScene(std::min(from, to), 0).x();
    const qreal middle = user.waves->mapToScene((from + to) / 2, 0).x();
    user.press(Qt::LeftButton, {from, 50});
    user.moveTo({to, 300});
    user.release(Qt::LeftButton, {to, 300});

    const int width = user.viewport()->width();
    const qreal drawn = zoomedBy == 1.0 ? before : before * width / zoomedBy;
    QCOMPARE(user.waves->zoomRate(), std::min(drawn, 16.0));
    QCOMPARE(user.row(), 100);
    if (zoomedBy > 1.0)
        QVERIFY(std::abs(user.waves->mapFromScene(leftEdge, 0).x()) <= 1);
    const int shown = user.waves->mapFromScene(middle, 0).x();
    QVERIFY(shown > 0 && shown < width);
}

void tst_WaveView::regionIsShadedWhileChosen()
{
    WaveUser user(1);
    const int bottom = user.viewport()->height() - 1;
    user.press(Qt::LeftButton, {300, 50});
    user.moveTo({500, 70});
    const QImage picture = user.picture();
    const QColor shade = picture.pixelColor(100, 200);
    QVERIFY(shade.blue() > 20 && shade.blue() < 40 && shade.red() == 0);
    for (const auto &[x, y] : {QPoint(299, 0), QPoint(299, bottom), QPoint(499, 200)})
        QCOMPARE(picture.pixelColor(x, y), QColor(0, 255, 255));
    QCOMPARE(picture.pixelColor(301, 200), QColor(Qt::black));
    QCOMPARE(picture.pixelColor(498, 200), QColor(Qt::black));
    QCOMPARE(picture.pixelColor(500, 200), shade);
    QCOMPARE(picture.pixelColor(picture.width() - 1, bottom), shade);
    // Back to less than the shortest drag: nothing is chosen any more.
    const auto isShaded = [&](int x) { return user.picture().pixelColor(x, 200) == shade; };
    user.moveTo({309, 70});
    QVERIFY(!isShaded(100));
    user.release(Qt::LeftButton, {309, 70});
    // From the left edge on there is no left shade.
    user.press(Qt::LeftButton, {0, 50});
    user.moveTo({500, 70});
    QVERIFY(!isShaded(0) && isShaded(700));
    // Panning takes over.
    user.press(Qt::MiddleButton, {500, 70});
    QVERIFY(!isShaded(700));
    user.release(Qt::MiddleButton, {500, 70});
    user.release(Qt::LeftButton, {500, 70});
    QCOMPARE(user.waves->zoomRate(), 1.0);
}

void tst_WaveView::middleDragPans()
{
    WaveUser user(40);
    user.scrollTo(700, 100);
    user.press(Qt::MiddleButton, {300, 200});
    QCOMPARE(user.viewport()->cursor().shape(), Qt::ClosedHandCursor);
    user.moveTo({310, 180});
    user.moveTo({250, 150});
    user.release(Qt::MiddleButton, {250, 150});
    QCOMPARE(user.viewport()->cursor().shape(), Qt::ArrowCursor);
    user.moveTo({100, 100});
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
        return picture.pixelColor(x, 0) == color && picture.pixelColor(x, 200) == color &&
               picture.pixelColor(x, picture.height() - 1) == color;
    };
    QVERIFY(isLine(200, Qt::yellow) && !isLine(201, Qt::yellow));
    QVERIFY(isLine(0, Qt::red) && isLine(350, Qt::red));
    // The shift before the sample is a scene distance: it shows at high zoom only by rounding.
    user.zoomTo(2.0);
    user.scrollTo(100, 0);
    QVERIFY(isLine(300, Qt::yellow) && isLine(600, Qt::red));
}

void tst_WaveView::sceneFollowsTheRows()
{
    Viewer viewer;
    QVERIFY(viewer.waves->sceneRect().isEmpty());
    addRows(*viewer.widget, "a B(b c)", 7);
    viewer.settle();
    QCOMPARE(viewer.waves->sceneRect(), QRectF(0, 0, 350, 60));
    viewer.tree->expandAll();
    viewer.settle();
    QCOMPARE(viewer.waves->sceneRect(), QRectF(0, 0, 350, 120));
    viewer.tree->collapseAll();
    viewer.settle();
    QCOMPARE(viewer.waves->sceneRect(), QRectF(0, 0, 350, 60));
    addRows(*viewer.widget, "long", 7); // a longer capture does not widen the scene
    viewer.settle();
    QCOMPARE(viewer.waves->sceneRect(), QRectF(0, 0, 350, 90));
}

void tst_WaveView::rebuildsOnceAndOutlivesOthers()
{
    OneRow source;
    auto view = std::make_unique<WaveView>();
    view->setDomain(16);
    view->setDataSource(&source);
    view->show();
    auto ruler = std::make_unique<RulerView>();
    ruler->setDomain(16);
    ruler->setClocks(20);
    ruler->show();
    driveContextMenu(ruler->viewport(), {100, 10}, "Create Marker at Clock Period: 2");
    for (int i = 0; i < 50; ++i) {
        raiseLater(ruler.get(), EvStructureChanged);
        raiseLater(ruler.get(), i % 2 ? EvCollapsed : EvExpanded);
    }
    source.rebuilds = 0;
    QCoreApplication::processEvents();
    QCOMPARE(source.rebuilds, 1);
    QCOMPARE(source.item.scene(), view->scene());
    raiseLater(ruler.get(), EvStructureChanged);
    raiseLater(ruler.get(), EvRemoveAllItems); // the last word
    QCoreApplication::processEvents();
    QCOMPARE(source.item.scene(), nullptr);
    raiseLater(ruler.get(), EvAddAllItems);
    QCoreApplication::processEvents();
    QCOMPARE(source.item.scene(), view->scene());
    QCOMPARE(view->viewport()->grab().toImage().pixelColor(100, 50), QColor(Qt::red));

    raiseLater(ruler.get(), EvAfterMarkerRemove);
    ruler.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    view->viewport()->grab(); // reads no marker that is gone
    QCoreApplication::processEvents();
    view->viewport()->grab();

    raiseLater(view.get(), EvViewScrolled);
    view.reset();
    QCoreApplication::processEvents();
    QCOMPARE(source.item.scene(), nullptr); // it is the source's
}

KEO_WIDGET_TEST_MAIN(tst_WaveView)
#include "tst_waveview.moc"
