#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/common/timeslideritem.h>
#include <wave/view/waveview.h>

#include <QContextMenuEvent>
#include <QImage>
#include <QPainter>
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
    void labelsAreWhole();
    void plantsAndRemovesMarkers();
    void dragsMarkersFromSampleToSample();
    void pressActivates();
    void diesWithItsMenuOpen();
};

void tst_RulerView::ticks_data()
{
    addColumns<qreal, int, int>({"zoom", "major", "minor"});
    addRow("16", 16.0, 1, 1);
    addRow("1", 1.0, 1, 1);
    addRow("between 1/2 and 1", 0.75, 2, 1);
    addRow("1/2", 1.0 / 2, 2, 1);
    addRow("1/4", 1.0 / 4, 5, 1);
    addRow("1/8", 1.0 / 8, 10, 1);
    addRow("1/16", 1.0 / 16, 20, 2);
    addRow("1/32", 1.0 / 32, 50, 5);
    addRow("1/64", 1.0 / 64, 100, 10);
    addRow("1/128", 1.0 / 128, 200, 20);
    addRow("1/256", 1.0 / 256, 500, 50);
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
    const QImage picture = viewer.ruler->viewport()->grab().toImage();
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

// The number right of a tick, beside the same number drawn with all the room it wants.
void tst_RulerView::labelsAreWhole()
{
    Viewer viewer("a", 1000);
    viewer.zoomTo(1.0 / 16);
    const QRect room(200 * 50 / 16 + 2, kTop, 40, 14); // beside the tick of sample 200
    const QImage label = viewer.ruler->viewport()->grab(room).toImage();
    QImage expected(room.size(), label.format());
    expected.fill(QColor(0x555555));
    QPainter painter(&expected);
    painter.setFont(viewer.ruler->font());
    painter.setPen(Qt::white);
    painter.drawText(QPointF(2, painter.fontMetrics().ascent()), "200");
    painter.end();
    const auto inkedColumns = [](const QImage &image) {
        int columns = 0;
        for (int x = 0; x < image.width(); ++x) {
            int y = 0;
            while (y < image.height() && image.pixelColor(x, y).red() <= 0x90)
                ++y;
            columns += y < image.height();
        }
        return columns;
    };
    QVERIFY(inkedColumns(expected) > 10);
    QCOMPARE(inkedColumns(label), inkedColumns(expected));
}

void tst_RulerView::plantsAndRemovesMarkers()
{
    RulerUser user;
    // 174 is nearer to sample 3 than to 4.
    const QString create = "Create Marker at Clock Period: 3";
    QCOMPARE(user.rulerMenu(174, 10, create), QStringList{create});
    QCOMPARE(user.listener.take(), (QList<int>{6, 7}));
    QCOMPARE(user.heardClocks, QList<int>{3});
    user.plant(5);
    QCOMPARE(user.heardClocks, (QList<int>{5, 3}));
    QVERIFY(user.isActive(0) && !user.isActive(1));
    QCOMPARE(user.ruler->timeMarker()->item()->pos(), QPointF(250, 0));
    QCOMPARE(user.height(0), 0.0); // it comes to the front when clicked
    user.listener.take();

    // Past the middle of the last sample the nearest start is one past the end.
    QCOMPARE(user.rulerMenu(985, 10), QStringList("Create Marker at Clock Period: 19"));
    QCOMPARE(user.rulerMenu(174, kScaleY), QStringList());
    const QString remove = "Remove Marker";
    QCOMPARE(user.rulerMenu(253, kFlagY, remove), QStringList{remove});
    QCOMPARE(user.listener.take(), (QList<int>{10, 11}));
    QCOMPARE(user.heardClocks, QList<int>{3});
    QVERIFY(user.isActive(0));
    user.rulerMenu(153, kFlagY, remove);
    QCOMPARE(user.ruler->timeMarker(), nullptr);
    QCOMPARE(user.heardClocks, QList<int>());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(user.ruler->scene()->items().size(), 1); // the scale
}

void tst_RulerView::dragsMarkersFromSampleToSample()
{
    RulerUser user;
    user.plant(3);
    user.listener.take();
    user.press(153, kFlagY);
    QCOMPARE(user.listener.take(), (QList<int>{8, 9})); // chosen as the active one
    user.moveTo(174);
    QCOMPARE(user.listener.take(), QList<int>()); // still sample 3
    user.moveTo(176);
    QCOMPARE(user.listener.take(), (QList<int>{8, 9}));
    QCOMPARE(user.heardClocks, QList<int>{4});
    user.moveTo(1500);
    QCOMPARE(user.clocks(), QList<int>{19});
    user.moveTo(-300);
    QCOMPARE(user.clocks(), QList<int>{0});
    QCOMPARE(user.ruler->timeMarker()->item()->pos(), QPointF(0, 0));
    user.release();
    user.moveTo(500);
    QCOMPARE(user.clocks(), QList<int>{0});

    // A capture without samples leaves no place to go to.
    user.ruler->setClocks(0);
    user.press(3, kFlagY);
    user.moveTo(400);
    QCOMPARE(user.clocks(), QList<int>{0});
    user.release();
    QCOMPARE(user.rulerMenu(174, 10), QStringList());
}

void tst_RulerView::pressActivates()
{
    RulerUser user;
    for (const int clock : {2, 4, 6})
        user.plant(clock);
    user.listener.take();
    // Neither the number above a flag nor the scale below it starts a drag.
    for (const int y : {8, 29, kFlagY}) {
        QCOMPARE(user.clocks(), (QList<int>{6, 4, 2}));
        QCOMPARE(user.listener.take(), QList<int>());
        user.press(103, y);
        user.release();
    }
    QCOMPARE(user.listener.take(), (QList<int>{8, 9}));
    QCOMPARE(user.clocks(), (QList<int>{2, 6, 4}));
    QVERIFY(user.isActive(0) && !user.isActive(1));
    QVERIFY(user.height(0) == 1.0 && user.height(1) == 0.0);
}

void tst_RulerView::diesWithItsMenuOpen()
{
    Viewer viewer("a");
    QTimer::singleShot(0, this, [&] { viewer.widget.reset(); });
    QContextMenuEvent event(QContextMenuEvent::Mouse, {100, 10}, {100, 10});
    QApplication::sendEvent(viewer.ruler->viewport(), &event);
    QVERIFY(!viewer.widget);
}

KEO_WIDGET_TEST_MAIN(tst_RulerView)
#include "tst_rulerview.moc"
