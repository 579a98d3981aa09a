#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/common/timeslideritem.h>
#include <wave/ruler/scaleruler.h>
#include <wave/view/waveview.h>

#include <QImage>
#include <QRandomGenerator>
#include <QScrollBar>

#include <cmath>

using namespace WaveMonitor;

namespace {

constexpr int kFlagY = 22; // viewport pixels, in the flags
constexpr int kScaleY = 40;
constexpr int kTop = 29; // of the scale: the toolkit leaves a pixel below a scene at the bottom

/// A viewer of 20 samples, and the mouse over its ruler.
struct RulerUser final : Viewer
{
    RulerUser() : Viewer("a", 20) {}

    void press(int x, int y) const
    {
        QTest::mousePress(ruler->viewport(), Qt::LeftButton, {}, {x, y});
    }
    void moveTo(int x) const { QTest::mouseMove(ruler->viewport(), {x, kFlagY}); }
    void release() const { QTest::mouseRelease(ruler->viewport(), Qt::LeftButton); }
    /// Of the markers, the active one first.
    QList<int> clocks() const
    {
        QList<int> clocks;
        const QList<TimeSliderData *> markers = ruler->timeMarkers();
        for (const TimeSliderData *marker : markers)
            clocks.append(marker->clock());
        return clocks;
    }
    bool isActive(int marker) const { return ruler->timeMarkers().at(marker)->item()->isActive(); }
    qreal height(int marker) const { return ruler->timeMarkers().at(marker)->item()->zValue(); }

    QList<int> heardClocks; ///< at the last event
    Listener listener{{EvBeforeMarkerCreate, EvAfterMarkerCreate, EvBeforeMarkerChange,
                       EvAfterMarkerChange, EvBeforeMarkerRemove, EvAfterMarkerRemove},
                      [this](const QObject &) { heardClocks = clocks(); }};
};

} // namespace

class tst_RulerView final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void ticks_data();
    void ticks();
    void numbersStandApart();
    void markersLikeAList();
    void offersTheNearestSample();
    void markersByKeysAndDoubleClicks();
    void viewFollowsADraggedFlag();
    void zoomsToMarkersAndBack();
};

void tst_RulerView::ticks_data()
{
    addColumns<qreal, int, int>({"zoom", "major", "minor"});
    const std::tuple<qreal, int, int> rows[] = {
        {16, 1, 1},           {1, 1, 1},           {0.75, 2, 1},
        {1.0 / 2, 2, 1},      {1.0 / 4, 5, 1},     {1.0 / 8, 10, 1},
        {1.0 / 16, 20, 2},    {1.0 / 32, 50, 5},   {1.0 / 64, 100, 10},
        {1.0 / 128, 200, 20}, {1.0 / 256, 500, 50}};
    for (const auto &[zoom, major, minor] : rows)
        QTest::addRow("%g", zoom) << zoom << major << minor;
}

// Reads the ticks off the picture: long ones cross both lines of pixels, short ones the lower.
void tst_RulerView::ticks()
{
    QFETCH(qreal, zoom);
    QFETCH(int, major);
    QFETCH(int, minor);
    Viewer viewer("a", 6000);
    viewer.zoomTo(zoom);
    viewer.waves->horizontalScrollBar()->setValue(137);
    viewer.settle();
    const int scroll = viewer.ruler->horizontalScrollBar()->value();
    const QImage picture = pixelsOf(viewer.ruler->viewport());
    const auto verify = [&](int y, const auto &isTick) {
        QSet<int> wanted;
        for (int i = 0; i < 6000; ++i) {
            if (isTick(i))
                wanted.insert(int(std::lround(50 * i * zoom)) - scroll);
        }
        for (int x = 5; x < picture.width() - 5; ++x) { // a line between two pixels is on either
            const bool isWhite = picture.pixelColor(x, y) == Qt::white;
            const bool isBeside = isWhite || picture.pixelColor(x - 1, y) == Qt::white;
            QVERIFY2(isBeside || !wanted.contains(x), qPrintable(QString::number(x)));
            QVERIFY2(!isWhite || wanted.contains(x) || wanted.contains(x + 1),
                     qPrintable(QString::number(x)));
        }
    };
    verify(kTop + 14, [&](int i) { return i % major == 0; });
    verify(kTop + 17, [&](int i) { return i % major == 0 || i % minor == 1; });
}

// Before each tick with a number the scale is free, at every zoom and size of letters.
void tst_RulerView::numbersStandApart()
{
    const QFont before = QApplication::font();
    for (const int points : {8, 12, 16}) {
        for (int halvings = 0; halvings <= 8; ++halvings) {
            QFont font = before;
            font.setPointSize(points);
            QApplication::setFont(font);
            const qreal zoom = std::exp2(-halvings);
            Viewer viewer("a", 1'200'000);
            viewer.zoomTo(zoom);
            viewer.waves->horizontalScrollBar()->setValue(halvings < 4 ? 10'000'000 : 100'000);
            viewer.settle();
            const int scroll = viewer.ruler->horizontalScrollBar()->value();
            const QImage picture = pixelsOf(viewer.ruler->viewport());
            const auto lightRows = [&](int x) {
                int light = 0;
                for (int y = kTop + 2; y < kTop + 15; ++y)
                    light += picture.pixelColor(x, y).lightness() > 140;
                return light;
            };
            const int major = tickSpacing(zoom).major;
            int numbers = 0;
            for (int i = 0; i < 1'200'000; i += major) {
                int x = int(std::lround(50 * i * zoom)) - scroll;
                if (x < 4 || x > picture.width() - 30)
                    continue;
                x -= lightRows(x) != 13; // a line between two pixels is on either
                if (lightRows(x) != 13)
                    continue;
                ++numbers;
                QVERIFY2(lightRows(x - 1) + lightRows(x - 2) == 0,
                         qPrintable(QStringLiteral("%1 pt at %2").arg(points).arg(i)));
            }
            QVERIFY(numbers >= 3);
        }
    }
    QApplication::setFont(before);
}

// Planting, dragging, pressing and removing at random: the active marker stands first.
void tst_RulerView::markersLikeAList()
{
    RulerUser user;
    QRandomGenerator random(4);
    QList<int> clocks;
    for (int step = 0; step < 150; ++step) {
        const bool isAny = clocks.isEmpty() || random.bounded(4) == 0;
        const int clock = isAny ? random.bounded(20) : clocks[random.bounded(clocks.size())];
        const int x = 50 * clock + 3; // within its flag
        const auto at = clocks.indexOf(clock);
        QList<int> told{EvBeforeMarkerChange, EvAfterMarkerChange};
        if (at < 0) {
            user.plant(clock);
            clocks.prepend(clock);
            told = {EvBeforeMarkerCreate, EvAfterMarkerCreate};
            QCOMPARE(user.height(0), 0.0); // it comes to the front when clicked
        } else if (clocks.size() > 5 || random.bounded(6) == 0) {
            QCOMPARE(user.rulerMenu(x, kFlagY, "Remove Marker"), QStringList("Remove Marker"));
            clocks.removeAt(at);
            told = {EvBeforeMarkerRemove, EvAfterMarkerRemove};
        } else {
            // Neither the number above a flag nor the scale below it starts a drag.
            user.press(x, random.bounded(2) ? 8 : 29);
            user.release();
            QCOMPARE(user.listener.take(), QList<int>());
            user.press(x, kFlagY);
            clocks.move(at, 0);
            QCOMPARE(user.listener.take(), told);
            const int place = random.bounded(-300, 1300);
            const int nearest = std::clamp(int(std::lround(place / 50.0)), 0, 19);
            const bool moves = !clocks.contains(nearest);
            if (moves || nearest == clock) {
                user.moveTo(place);
                clocks[0] = nearest;
            }
            user.release();
            user.moveTo(500);
            QVERIFY(user.height(0) == 1.0);
            told = moves ? told : QList<int>();
        }
        QCOMPARE(user.listener.take(), told);
        QCOMPARE(user.clocks(), clocks);
        if (!told.isEmpty())
            QCOMPARE(user.heardClocks, clocks);
        for (int marker = 0; marker < clocks.size(); ++marker) {
            QCOMPARE(user.isActive(marker), marker == 0);
            QCOMPARE(user.ruler->timeMarkers().at(marker)->item()->pos(),
                     QPointF(50 * clocks[marker], 0));
        }
    }
    while (!clocks.isEmpty())
        user.rulerMenu(50 * clocks.takeFirst() + 3, kFlagY, "Remove Marker");
    QCOMPARE(user.ruler->timeMarker(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(user.ruler->scene()->items().size(), 1); // the scale
}

void tst_RulerView::offersTheNearestSample()
{
    RulerUser user;
    for (const auto &[x, clock] : {std::pair(174, 3), std::pair(176, 4), std::pair(985, 19)})
        QCOMPARE(user.rulerMenu(x, 10),
                 QStringList(QStringLiteral("Create Marker at Clock Period: %1").arg(clock)));
    QCOMPARE(user.rulerMenu(174, kScaleY), QStringList());
    // A capture without samples leaves no place to go to.
    user.plant(0);
    user.ruler->setClocks(0);
    user.press(3, kFlagY);
    user.moveTo(400);
    user.release();
    QCOMPARE(user.clocks(), QList<int>{0});
    QCOMPARE(user.rulerMenu(174, 10), QStringList());
}

void tst_RulerView::markersByKeysAndDoubleClicks()
{
    RulerUser user;
    QWidget *const viewport = user.ruler->viewport();
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, {203, 10});
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, {470, kScaleY});
    QCOMPARE(user.clocks(), (QList<int>{9, 4}));
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, {203, kFlagY}); // a flag
    QTest::mouseDClick(viewport, Qt::RightButton, {}, {303, 10});
    QCOMPARE(user.clocks().size(), 2);

    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QApplication::setActiveWindow(user.widget.get());
        QTest::keyClick(user.waves, key, modifiers);
        user.settle();
        return user.clocks();
    };
    QCursor::setPos(user.waves->viewport()->mapToGlobal(QPoint(360, 200)));
    QCOMPARE(press(Qt::Key_M), (QList<int>{7, 9, 4}));
    QCursor::setPos(viewport->mapToGlobal(QPoint(460, 10)));
    QCOMPARE(press(Qt::Key_M), (QList<int>{9, 7, 4})); // one stands there
    QCursor::setPos(user.widget->mapToGlobal(QPoint(5, 300)));
    user.zoomTo(2);
    const int middle =
        qRound(user.waves->mapToScene(user.waves->viewport()->width() / 2, 0).x() / CLOCK_PITCH);
    QCOMPARE(press(Qt::Key_M), (QList<int>{middle, 9, 7, 4}));
    QCOMPARE(press(Qt::Key_Right, Qt::AltModifier).first(), middle + 1);
    QCOMPARE(press(Qt::Key_M, Qt::ShiftModifier), (QList<int>{9, 7, 4}));
    for (int step = 0; step < 12; ++step)
        press(Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(user.clocks(), (QList<int>{0, 7, 4}));
    QCOMPARE(user.waves->horizontalScrollBar()->value(), 0); // it came along
    // In the names the letter is part of one.
    QTest::keyClick(user.tree, Qt::Key_M);
    QCOMPARE(user.clocks().size(), 3);
}

void tst_RulerView::viewFollowsADraggedFlag()
{
    Viewer viewer("a", 400);
    viewer.plant(3);
    QWidget *const viewport = viewer.ruler->viewport();
    QScrollBar *const bar = viewer.waves->horizontalScrollBar();
    const auto clock = [&] { return viewer.ruler->timeMarker()->clock(); };
    QTest::mousePress(viewport, Qt::LeftButton, {}, {153, kFlagY});
    const int edge = viewport->width() - 5;
    QTest::mouseMove(viewport, {edge, kFlagY});
    QTRY_VERIFY(clock() > 40);
    QTest::mouseMove(viewport, {edge / 2, kFlagY}); // and stands still again
    viewer.settle();
    const int place = bar->value();
    QCOMPARE(clock(), qRound((place + edge / 2) / CLOCK_PITCH));
    QTest::qWait(100);
    QCOMPARE(bar->value(), place);
    QTest::mouseMove(viewport, {-2000, kFlagY});
    QTRY_COMPARE(clock(), 0);
    QTRY_COMPARE(bar->value(), 0);
    QTest::mouseMove(viewport, {edge, kFlagY});
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, {edge, kFlagY});
    QTest::qWait(100);
    QCOMPARE(bar->value(), 0);
}

void tst_RulerView::zoomsToMarkersAndBack()
{
    Viewer viewer("a", 4000);
    QWidget *const viewport = viewer.waves->viewport();
    const auto menu = [&](const QString &choice = {}) {
        return driveContextMenu(viewport, {50, 50}, choice);
    };
    viewer.plant(10);
    QVERIFY(!menu().contains("Zoom to Markers"));
    viewer.ruler->plantMarker(300);
    viewer.ruler->plantMarker(1500); // the last two: 1500 and 300
    viewer.settle();
    QCOMPARE(menu("Zoom to Markers").mid(0, 4),
             (QStringList{"Zoom In", "Zoom Out", "", "Zoom to Markers"}));
    viewer.settle();
    const auto x = [&](int sample) { return viewer.waves->mapFromScene(sample * 50, 0).x(); };
    QVERIFY(x(300) > 0 && x(300) < 80);
    QVERIFY(x(1500) < viewport->width() && x(1500) > viewport->width() - 80);
    QCOMPARE(viewer.ruler->mapFromScene(1500 * 50, 0).x(), x(1500));

    // Each zoom back, with its place.
    QRandomGenerator random(3);
    QList<std::pair<qreal, int>> zooms;
    QScrollBar *const bar = viewer.waves->horizontalScrollBar();
    const auto zoom = [&] { return std::pair(viewer.waves->zoomRate(), bar->value()); };
    for (int step = 0; step < 12; ++step) {
        bar->setValue(random.bounded(bar->maximum() + 1));
        zooms.append(zoom());
        viewer.zoomTo(std::exp2(step % 5 - random.bounded(4) - 0.5 * (step % 2)));
        if (zoom().first == zooms.last().first)
            zooms.removeLast();
    }
    QApplication::setActiveWindow(viewer.widget.get());
    while (!zooms.isEmpty()) {
        QTest::keyClick(viewer.waves, Qt::Key_Backspace);
        viewer.settle();
        QCOMPARE(zoom(), zooms.takeLast());
        QCOMPARE(viewer.ruler->zoomRate(), viewer.widget->zoomRate());
    }
    QTest::keyClick(viewer.waves, Qt::Key_Backspace);
    QCOMPARE(zoom(), std::pair(1.0, 0)); // before the first
}

KEO_WIDGET_TEST_MAIN(tst_RulerView)
#include "tst_rulerview.moc"
