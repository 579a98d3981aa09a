#include "viewertest.h"

#include <wave/rulerview.h>
#include <wave/viewergeometry.h>
#include <wave/waveview.h>

#include <QApplication>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QImage>
#include <QScrollBar>
#include <QWheelEvent>

#include <memory>
#include <vector>

using namespace WaveMonitor;

namespace {

constexpr quint64 kDomain = 32;
constexpr int kSamples = 400;

/// Rows without traces; the owner of its items, as the tree model is of its own.
class Rows final : public WaveView::DataSourceProtocol
{
public:
    explicit Rows(int rows, int samples = kSamples)
    {
        for (int row = 0; row < rows; ++row)
            append(samples);
    }

    void append(int samples)
    {
        auto item = std::make_unique<QGraphicsRectItem>(0, 0, samples * CLOCK_PITCH, ROW_HEIGHT);
        item->setPen(Qt::NoPen);
        item->setPos(0, ROW_HEIGHT * qreal(m_items.size()));
        item->setFlag(QGraphicsItem::ItemIsSelectable);
        m_items.push_back(std::move(item));
    }

    QList<QGraphicsItem *> waveItems() override
    {
        ++rebuilds;
        QList<QGraphicsItem *> items;
        for (const auto &item : m_items)
            items.append(item.get());
        return items;
    }
    void relayoutItems() override {}
    int triggerPosition() override { return trigger; }
    void itemPressed(QGraphicsItem *item) override { pressed.append(item); }

    QGraphicsItem *at(int row) const { return m_items.at(size_t(row)).get(); }

    int rebuilds = 0;
    int trigger = 1000;
    QList<QGraphicsItem *> pressed;

private:
    std::vector<std::unique_ptr<QGraphicsItem>> m_items;
};

struct Viewer
{
    explicit Viewer(int rows = 40) : source(rows)
    {
        view.setDomain(kDomain);
        view.setDataSource(&source);
        view.resize(1000, 400);
        view.show();
        raise(EvStructureChanged);
    }

    void raise(NotificationType type)
    {
        raiseLater(sender.get(), type);
        QCoreApplication::processEvents();
    }
    void zoomTo(qreal rate)
    {
        sender->setProperty("zoomRate", rate);
        raise(EvAfterZoom);
    }
    QWidget *viewport() const { return view.viewport(); }
    QImage picture() const { return view.viewport()->grab().toImage(); }
    void wheel(QWidget *target, int delta, Qt::KeyboardModifiers modifiers)
    {
        QWheelEvent event({100, 20}, target->mapToGlobal(QPointF(100, 20)), {}, {0, delta},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(target, &event);
        QCoreApplication::processEvents();
    }
    void drag(Qt::MouseButton button, QPoint from, QPoint to)
    {
        press(button, from);
        QTest::mouseMove(viewport(), to);
        QTest::mouseRelease(viewport(), button, {}, to);
        QCoreApplication::processEvents();
    }
    void press(Qt::MouseButton button, QPoint at) { QTest::mousePress(viewport(), button, {}, at); }

    Rows source;
    std::unique_ptr<QObject> sender = newSender(kDomain);
    WaveView view;
};

} // namespace

class tst_WaveView final : public ViewerTest
{
    Q_OBJECT

private Q_SLOTS:
    void zoomTellsBeforeAndAfter();
    void zoomKeepsTheRows();
    void wheel_data();
    void wheel();
    void wheelOverTheRuler();
    void contextMenuZooms();
    void dragZoomsToRegion_data();
    void dragZoomsToRegion();
    void regionIsShadedWhileChosen();
    void regionGivesWayToPanning();
    void middleDragPans();
    void pressSelects();
    void drawsTriggerAndMarkers();
    void outlivesTheMarkers();
    void burstRebuildsOnce();
    void sceneFollowsTheRows();
    void removesAndAddsOnRequest();
    void leavesOtherViewersAlone();
    void leavesTheItemsToTheirOwner();
};

void tst_WaveView::zoomTellsBeforeAndAfter()
{
    Viewer viewer;
    QList<qreal> rates;
    Listener listener({EvBeforeZoom, EvAfterZoom}, [&rates](const QObject &view) {
        rates.append(view.property("zoomRate").toReal());
    });
    viewer.wheel(viewer.viewport(), 120, Qt::ControlModifier);
    QCOMPARE(viewer.view.transform(), QTransform::fromScale(2.0, 1.0));
    QCOMPARE(listener.take(), (QList<int>{2, 3}));
    QCOMPARE(rates, (QList<qreal>{1.0, 2.0}));

    // The same rate from another part ends the exchange.
    viewer.zoomTo(2.0);
    QCOMPARE(listener.take(), QList<int>{3}); // the sender's own

    // At its bounds a zoom changes nothing and says nothing.
    for (const auto &[rate, delta] : {std::pair(16.0, 120), std::pair(1.0 / 256, -120)}) {
        viewer.zoomTo(rate);
        listener.take();
        viewer.wheel(viewer.viewport(), delta, Qt::ControlModifier);
        QCOMPARE(viewer.view.zoomRate(), rate);
        QCOMPARE(listener.take(), QList<int>());
    }
}

void tst_WaveView::zoomKeepsTheRows()
{
    Viewer viewer;
    for (const int height : {400, 401}) {
        viewer.view.resize(1000, height);
        viewer.view.verticalScrollBar()->setValue(333);
        for (const qreal rate : {2.0, 4.0, 1.0 / 64, 1.0, 0.3})
            viewer.zoomTo(rate);
        QCOMPARE(viewer.view.verticalScrollBar()->value(), 333);
    }
}

void tst_WaveView::wheel_data()
{
    QTest::addColumn<int>("delta");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<qreal>("rate");
    QTest::addColumn<bool>("scrolls");
    const Qt::KeyboardModifiers control = Qt::ControlModifier;
    QTest::newRow("Ctrl up") << 120 << control << 2.0 << false;
    QTest::newRow("Ctrl down") << -120 << control << 0.5 << false;
    QTest::newRow("Ctrl, smallest step up") << 1 << control << 2.0 << false;
    QTest::newRow("Ctrl, no turn") << 0 << control << 0.5 << false;
    QTest::newRow("plain") << -120 << Qt::KeyboardModifiers() << 1.0 << true;
    QTest::newRow("Ctrl+Shift") << -120 << (control | Qt::ShiftModifier) << 1.0 << true;
}

void tst_WaveView::wheel()
{
    QFETCH(int, delta);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(qreal, rate);
    QFETCH(bool, scrolls);
    Viewer viewer;
    viewer.wheel(viewer.viewport(), delta, modifiers);
    QCOMPARE(viewer.view.zoomRate(), rate);
    QCOMPARE(viewer.view.verticalScrollBar()->value() != 0, scrolls);
}

void tst_WaveView::wheelOverTheRuler()
{
    Viewer viewer;
    RulerView ruler;
    ruler.setDomain(kDomain);
    ruler.setClocks(kSamples);
    ruler.resize(1000, 50);
    ruler.show();
    ruler.viewport()->installEventFilter(&viewer.view);
    viewer.wheel(ruler.viewport(), 120, Qt::ControlModifier);
    QCOMPARE(viewer.view.zoomRate(), 2.0);
    QCOMPARE(ruler.zoomRate(), 2.0);
    viewer.wheel(ruler.viewport(), -120, {});
    QVERIFY(viewer.view.verticalScrollBar()->value() > 0);
    // The view's own horizontal bar keeps its wheel.
    const int row = viewer.view.verticalScrollBar()->value();
    const int column = viewer.view.horizontalScrollBar()->value();
    viewer.wheel(viewer.view.horizontalScrollBar(), -120, {});
    QCOMPARE(viewer.view.verticalScrollBar()->value(), row);
    QVERIFY(viewer.view.horizontalScrollBar()->value() > column);
    QCOMPARE(ruler.horizontalScrollBar()->value(), viewer.view.horizontalScrollBar()->value());
}

void tst_WaveView::contextMenuZooms()
{
    Viewer viewer;
    const QStringList entries{QStringLiteral("Zoom In"), QStringLiteral("Zoom Out")};
    QCOMPARE(driveContextMenu(viewer.viewport(), {100, 100}, entries.at(0)), entries);
    QCOMPARE(viewer.view.zoomRate(), 2.0);
    driveContextMenu(viewer.viewport(), {100, 100}, entries.at(1));
    driveContextMenu(viewer.viewport(), {100, 100}, entries.at(1));
    QCOMPARE(viewer.view.zoomRate(), 0.5);
}

void tst_WaveView::dragZoomsToRegion_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<qreal>("before");
    QTest::addColumn<qreal>("zoomedBy"); // 0: bounded at 16
    QTest::newRow("9 pixels") << 300 << 309 << 1.0 << 1.0;
    QTest::newRow("10 pixels") << 300 << 310 << 0.1 << 10.0;
    QTest::newRow("to the left") << 600 << 400 << 1.0 << 200.0;
    QTest::newRow("narrow at a high zoom") << 300 << 312 << 4.0 << 0.0;
}

void tst_WaveView::dragZoomsToRegion()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(qreal, before);
    QFETCH(qreal, zoomedBy);
    Viewer viewer;
    viewer.zoomTo(before);
    viewer.view.horizontalScrollBar()->setValue(700);
    viewer.view.verticalScrollBar()->setValue(100);
    const qreal leftEdge = viewer.view.mapToScene(std::min(from, to), 0).x();
    const qreal middle = viewer.view.mapToScene((from + to) / 2, 0).x();
    viewer.drag(Qt::LeftButton, {from, 50}, {to, 300});

    const int width = viewer.viewport()->width();
    if (zoomedBy == 1.0) {
        QCOMPARE(viewer.view.zoomRate(), before);
        return;
    }
    const qreal expected = zoomedBy == 0.0 ? 16.0 : before * width / zoomedBy;
    QCOMPARE(viewer.view.zoomRate(), expected);
    if (zoomedBy != 0.0)
        QVERIFY(std::abs(viewer.view.mapFromScene(leftEdge, 0).x()) <= 1);
    const int shown = viewer.view.mapFromScene(middle, 0).x();
    QVERIFY(shown > 0 && shown < width);
    QCOMPARE(viewer.view.verticalScrollBar()->value(), 100);
}

void tst_WaveView::regionIsShadedWhileChosen()
{
    Viewer viewer;
    const QColor edge(0, 255, 255);
    const int bottom = viewer.viewport()->height() - 1;
    viewer.press(Qt::LeftButton, {300, 50});
    QTest::mouseMove(viewer.viewport(), {500, 70});
    QImage picture = viewer.picture();
    const QColor shade = picture.pixelColor(100, 5);
    QVERIFY(shade.blue() > 20 && shade.blue() < 40 && shade.red() == 0);
    QCOMPARE(picture.pixelColor(299, 0).blue(), 255);
    QCOMPARE(picture.pixelColor(299, bottom).green(), 255);
    QCOMPARE(picture.pixelColor(300, 200), QColor(Qt::black));
    QCOMPARE(picture.pixelColor(498, 200), QColor(Qt::black));
    QCOMPARE(picture.pixelColor(499, 200).blue(), 255);
    QCOMPARE(picture.pixelColor(500, 200), shade);
    QCOMPARE(picture.pixelColor(picture.width() - 1, bottom), shade);

    // Back to less than the shortest drag: nothing is chosen any more.
    QTest::mouseMove(viewer.viewport(), {309, 70});
    picture = viewer.picture();
    QCOMPARE(picture.pixelColor(100, 5), QColor(Qt::black));
    QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, {}, {309, 70});
    QCoreApplication::processEvents();
    QCOMPARE(viewer.view.zoomRate(), 1.0);

    // From the left edge on there is no left shade.
    viewer.press(Qt::LeftButton, {0, 50});
    QTest::mouseMove(viewer.viewport(), {500, 70});
    QCOMPARE(viewer.picture().pixelColor(0, 5), QColor(Qt::black));
    QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, {}, {500, 70});
    QCOMPARE(viewer.picture().pixelColor(700, 5), QColor(Qt::black));
}

void tst_WaveView::regionGivesWayToPanning()
{
    Viewer viewer;
    viewer.press(Qt::LeftButton, {300, 50});
    QTest::mouseMove(viewer.viewport(), {500, 70});
    viewer.press(Qt::MiddleButton, {500, 70});
    QCOMPARE(viewer.picture().pixelColor(100, 5), QColor(Qt::black));
    QTest::mouseRelease(viewer.viewport(), Qt::MiddleButton, {}, {500, 70});
    QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, {}, {500, 70});
    QCoreApplication::processEvents();
    QCOMPARE(viewer.view.zoomRate(), 1.0);
}

void tst_WaveView::middleDragPans()
{
    Viewer viewer;
    viewer.view.horizontalScrollBar()->setValue(700);
    viewer.view.verticalScrollBar()->setValue(100);
    viewer.press(Qt::MiddleButton, {300, 200});
    QCOMPARE(viewer.viewport()->cursor().shape(), Qt::ClosedHandCursor);
    QTest::mouseMove(viewer.viewport(), {310, 180});
    QTest::mouseMove(viewer.viewport(), {250, 150});
    QTest::mouseRelease(viewer.viewport(), Qt::MiddleButton, {}, {250, 150});
    QCOMPARE(viewer.view.horizontalScrollBarValue(), 750);
    QCOMPARE(viewer.view.verticalScrollBar()->value(), 150);
    QCOMPARE(viewer.viewport()->cursor().shape(), Qt::ArrowCursor);
    QTest::mouseMove(viewer.viewport(), {100, 100});
    QCOMPARE(viewer.view.horizontalScrollBarValue(), 750);
    QCOMPARE(viewer.source.pressed.size(), 0);
}

void tst_WaveView::pressSelects()
{
    Viewer viewer(3);
    for (const int y : {15, 75, 200})
        QTest::mouseClick(viewer.viewport(), Qt::LeftButton, {}, {100, y});
    QTest::mouseClick(viewer.viewport(), Qt::RightButton, {}, {100, 15});
    const QList<QGraphicsItem *> expected{viewer.source.at(0), viewer.source.at(2), nullptr};
    QCOMPARE(viewer.source.pressed, expected);
    QCoreApplication::processEvents();
    QCOMPARE(viewer.view.zoomRate(), 1.0);
}

void tst_WaveView::drawsTriggerAndMarkers()
{
    Viewer viewer;
    RulerView ruler;
    ruler.setDomain(kDomain);
    ruler.setClocks(kSamples);
    ruler.resize(1000, 50);
    ruler.show();
    viewer.source.trigger = 4;
    for (const int clock : {0, 7})
        driveContextMenu(ruler.viewport(), {50 * clock, 10},
                         QStringLiteral("Create Marker at Clock Period: %1").arg(clock));
    const auto column = [](const QImage &picture, int x, const QColor &color) {
        return picture.pixelColor(x, 0) == color && picture.pixelColor(x, 200) == color &&
               picture.pixelColor(x, picture.height() - 1) == color;
    };
    QImage picture = viewer.picture();
    QVERIFY(column(picture, 200, Qt::yellow));
    QVERIFY(column(picture, 0, QColor(255, 0, 0)));
    QVERIFY(column(picture, 350, QColor(255, 0, 0)));
    QVERIFY(!column(picture, 201, Qt::yellow));

    // The shift before the sample is a scene distance: it shows at high zoom only by rounding.
    viewer.zoomTo(2.0);
    viewer.view.horizontalScrollBar()->setValue(100);
    picture = viewer.picture();
    QVERIFY(column(picture, 300, Qt::yellow));
    QVERIFY(column(picture, 600, QColor(255, 0, 0)));
}

void tst_WaveView::outlivesTheMarkers()
{
    Viewer viewer;
    auto ruler = std::make_unique<RulerView>();
    ruler->setDomain(kDomain);
    ruler->setClocks(kSamples);
    ruler->resize(1000, 50);
    ruler->show();
    driveContextMenu(ruler->viewport(), {100, 10},
                     QStringLiteral("Create Marker at Clock Period: 2"));
    QVERIFY(viewer.picture().pixelColor(100, 100) == QColor(255, 0, 0));
    raiseLater(ruler.get(), EvAfterMarkerRemove);
    ruler.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    viewer.picture(); // reads no marker that is gone
    QCoreApplication::processEvents();
    viewer.picture();
}

void tst_WaveView::burstRebuildsOnce()
{
    Viewer viewer;
    viewer.source.rebuilds = 0;
    for (int i = 0; i < 50; ++i) {
        raiseLater(viewer.sender.get(), EvStructureChanged);
        raiseLater(viewer.sender.get(), i % 2 ? EvCollapsed : EvExpanded);
    }
    viewer.source.append(kSamples);
    QCoreApplication::processEvents();
    QCOMPARE(viewer.source.rebuilds, 1);
    QCOMPARE(viewer.source.at(40)->scene(), viewer.view.scene());
}

void tst_WaveView::sceneFollowsTheRows()
{
    Viewer viewer(3);
    QCOMPARE(viewer.view.sceneRect(), QRectF(0, 0, kSamples * 50, 90));
    viewer.source.at(1)->hide();
    viewer.raise(EvCollapsed);
    QCOMPARE(viewer.view.sceneRect(), QRectF(0, 0, kSamples * 50, 60));
    viewer.source.at(1)->show();
    viewer.raise(EvExpanded);
    QCOMPARE(viewer.view.sceneRect(), QRectF(0, 0, kSamples * 50, 90));
    viewer.source.append(2 * kSamples); // a longer capture does not widen the scene
    viewer.raise(EvStructureChanged);
    QCOMPARE(viewer.view.sceneRect(), QRectF(0, 0, kSamples * 50, 120));

    // Before the first rows there is no width to keep.
    Viewer empty(0);
    QVERIFY(empty.view.sceneRect().isEmpty());
    empty.source.append(7);
    empty.raise(EvStructureChanged);
    QCOMPARE(empty.view.sceneRect(), QRectF(0, 0, 350, 30));
}

void tst_WaveView::removesAndAddsOnRequest()
{
    Viewer viewer(3);
    raiseLater(viewer.sender.get(), EvStructureChanged);
    viewer.raise(EvRemoveAllItems); // the last word
    QCOMPARE(viewer.view.scene()->items().size(), 0);
    viewer.raise(EvAddAllItems);
    QCOMPARE(viewer.view.scene()->items().size(), 3);
}

void tst_WaveView::leavesOtherViewersAlone()
{
    Viewer viewer(3);
    viewer.source.rebuilds = 0;
    const auto stranger = newSender(kDomain + 16, 4.0);
    for (const NotificationType type :
         {EvAfterZoom, EvStructureChanged, EvExpanded, EvRemoveAllItems})
        raiseLater(stranger.get(), type);
    auto dying = newSender(kDomain, 8.0);
    raiseLater(dying.get(), EvAfterZoom);
    dying.reset();
    QCoreApplication::processEvents();
    QCOMPARE(viewer.view.zoomRate(), 1.0);
    QCOMPARE(viewer.source.rebuilds, 0);
    QCOMPARE(viewer.view.scene()->items().size(), 3);
}

void tst_WaveView::leavesTheItemsToTheirOwner()
{
    Rows source(3);
    const auto sender = newSender(kDomain);
    auto view = std::make_unique<WaveView>();
    view->setDomain(kDomain);
    view->setDataSource(&source);
    raiseLater(sender.get(), EvStructureChanged);
    QCoreApplication::processEvents();
    QCOMPARE(source.at(0)->scene(), view->scene());
    raiseLater(sender.get(), EvStructureChanged);
    raiseLater(view.get(), EvViewScrolled);
    view.reset();
    QCoreApplication::processEvents();
    QCOMPARE(source.at(0)->scene(), nullptr);
}

int main(int argc, char **argv)
{
    return runTest<tst_WaveView, QApplication>(argc, argv);
}

#include "tst_waveview.moc"
