#include "viewertest.h"

#include <wave/rulerview.h>
#include <wave/timesliderdata.h>
#include <wave/timeslideritem.h>

#include <QApplication>
#include <QGraphicsScene>
#include <QImage>
#include <QPainter>
#include <QScrollBar>

#include <memory>

using namespace WaveMonitor;

namespace {

constexpr quint64 kDomain = 16;
constexpr int kFlagY = 22; // viewport pixels, in the flags
constexpr int kScaleY = 40;
constexpr int kTop = 29; // of the scale: the toolkit leaves a pixel below a scene at the bottom

QList<int> clocksOf(const QObject &ruler)
{
    QList<int> clocks;
    const auto markers = ruler.property("timeMarkers").value<QList<TimeSliderData *>>();
    for (const TimeSliderData *marker : markers)
        clocks.append(marker->clock());
    return clocks;
}

void zoomAndScroll(QObject *sender)
{
    raiseLater(sender, EvAfterZoom);
    raiseLater(sender, EvViewScrolled);
    QCoreApplication::processEvents();
}

} // namespace

class tst_RulerView final : public ViewerTest
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void ticks_data();
    void ticks();
    void labelsAreWhole();
    void plantsMarkers();
    void offersNothingOnTheScaleOrWithoutSamples();
    void dragsMarkersFromSampleToSample();
    void pressActivates();
    void removesMarkers();
    void followsItsOwnWaveView();
    void diesWithItsMenuOpen();

private:
    void prepare() override;
    void plant(int clock);
    void drag(int fromX, int toX);
    TimeSliderItem *active() const { return m_ruler->timeMarker()->item(); }

    std::unique_ptr<RulerView> m_ruler;
    QList<int> m_heardClocks; ///< of the markers at the last event
    Listener m_listener{{EvBeforeMarkerCreate, EvAfterMarkerCreate, EvBeforeMarkerChange,
                         EvAfterMarkerChange, EvBeforeMarkerRemove, EvAfterMarkerRemove},
                        [this](const QObject &ruler) { m_heardClocks = clocksOf(ruler); }};
};

void tst_RulerView::prepare()
{
    m_ruler = std::make_unique<RulerView>();
    m_ruler->setDomain(kDomain);
    m_ruler->resize(1000, 50);
    m_ruler->setClocks(20);
    m_ruler->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_ruler.get()));
}

void tst_RulerView::cleanup()
{
    m_ruler.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_listener.take();
}

void tst_RulerView::plant(int clock)
{
    driveContextMenu(m_ruler->viewport(), QPoint(50 * clock, 10),
                     QStringLiteral("Create Marker at Clock Period: %1").arg(clock));
}

void tst_RulerView::drag(int fromX, int toX)
{
    QWidget *viewport = m_ruler->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, QPoint(fromX, kFlagY));
    QTest::mouseMove(viewport, QPoint(toX, kFlagY));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(toX, kFlagY));
}

void tst_RulerView::ticks_data()
{
    QTest::addColumn<qreal>("zoom");
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::newRow("16") << 16.0 << 1 << 1;
    QTest::newRow("1") << 1.0 << 1 << 1;
    QTest::newRow("between 1/2 and 1") << 0.75 << 2 << 1;
    QTest::newRow("1/2") << 1.0 / 2 << 2 << 1;
    QTest::newRow("1/4") << 1.0 / 4 << 5 << 1;
    QTest::newRow("1/8") << 1.0 / 8 << 10 << 1;
    QTest::newRow("1/16") << 1.0 / 16 << 20 << 2;
    QTest::newRow("1/32") << 1.0 / 32 << 50 << 5;
    QTest::newRow("1/64") << 1.0 / 64 << 100 << 10;
    QTest::newRow("1/128") << 1.0 / 128 << 200 << 20;
    QTest::newRow("1/256") << 1.0 / 256 << 500 << 50;
}

// Reads the ticks off the picture: long ones cross both lines of pixels, short ones the lower.
void tst_RulerView::ticks()
{
    QFETCH(qreal, zoom);
    QFETCH(int, major);
    QFETCH(int, minor);
    constexpr int samples = 6000;
    constexpr int scroll = 137;
    m_ruler->setClocks(samples);
    const auto sender = newSender(kDomain, zoom, scroll);
    zoomAndScroll(sender.get());
    QCOMPARE(m_ruler->horizontalScrollBar()->value(), scroll);

    const QImage picture = m_ruler->viewport()->grab().toImage();
    const auto isWhite = [&](int x, int y) { return picture.pixelColor(x, y) == Qt::white; };
    QSet<int> longTicks;
    QSet<int> shortTicks;
    for (int i = 0; i < samples; ++i) {
        const int x = int(std::lround(50 * i * zoom)) - scroll;
        if (i % major == 0)
            longTicks.insert(x);
        else if (i % minor == 1)
            shortTicks.insert(x);
    }
    for (int x = 5; x < picture.width() - 5; ++x) {
        const bool nearLong = longTicks.contains(x - 1) || longTicks.contains(x + 1);
        const bool nearShort = shortTicks.contains(x - 1) || shortTicks.contains(x + 1);
        // A line between two pixels may fall on either.
        const auto anyWhite = [&](int y) { return isWhite(x, y) || isWhite(x - 1, y); };
        if (longTicks.contains(x))
            QVERIFY2(anyWhite(kTop + 14) && anyWhite(kTop + 17), qPrintable(QString::number(x)));
        else if (shortTicks.contains(x))
            QVERIFY2(anyWhite(kTop + 17), qPrintable(QString::number(x)));
        else if (!nearLong && !nearShort)
            QVERIFY2(!isWhite(x, kTop + 17) && !isWhite(x, kTop + 14),
                     qPrintable(QString::number(x)));
    }
}

// The number right of a tick, beside the same number drawn with all the room it wants.
void tst_RulerView::labelsAreWhole()
{
    m_ruler->setClocks(1000);
    const auto sender = newSender(kDomain, 1.0 / 16, 0);
    zoomAndScroll(sender.get());
    const QRect room(200 * 50 / 16 + 2, kTop, 40, 14); // beside the tick of sample 200
    const QImage label = m_ruler->viewport()->grab(room).toImage();

    QImage expected(room.size(), label.format());
    expected.fill(QColor(0x555555));
    QPainter painter(&expected);
    painter.setFont(m_ruler->font());
    painter.setPen(Qt::white);
    painter.drawText(QPointF(2, painter.fontMetrics().ascent()), QStringLiteral("200"));
    painter.end();
    const auto inked = [](const QImage &image) {
        QSet<int> columns;
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                if (image.pixelColor(x, y).red() > 0x90)
                    columns.insert(x);
            }
        }
        return columns;
    };
    QVERIFY(inked(expected).size() > 10);
    QCOMPARE(inked(label).size(), inked(expected).size());
}

void tst_RulerView::plantsMarkers()
{
    // 174 is nearer to sample 3 than to 4.
    const QString entry = QStringLiteral("Create Marker at Clock Period: 3");
    QCOMPARE(driveContextMenu(m_ruler->viewport(), QPoint(174, 10), entry), QStringList{entry});
    QCOMPARE(m_listener.take(), (QList<int>{6, 7}));
    QCOMPARE(m_heardClocks, QList<int>{3});

    plant(5);
    QCOMPARE(m_heardClocks, (QList<int>{5, 3}));
    QVERIFY(active()->isActive());
    QCOMPARE(active()->pos(), QPointF(250, 0));
    QCOMPARE(active()->zValue(), 0.0); // it comes to the front when clicked
    QVERIFY(!m_ruler->timeMarkers().at(1)->item()->isActive());

    // Past the middle of the last sample the nearest start is one past the end.
    QCOMPARE(driveContextMenu(m_ruler->viewport(), QPoint(985, 10)),
             QStringList{QStringLiteral("Create Marker at Clock Period: 19")});
    QCOMPARE(m_heardClocks, (QList<int>{5, 3}));
}

void tst_RulerView::offersNothingOnTheScaleOrWithoutSamples()
{
    QCOMPARE(driveContextMenu(m_ruler->viewport(), QPoint(174, kScaleY)), QStringList());
    m_ruler->setClocks(0);
    QCOMPARE(driveContextMenu(m_ruler->viewport(), QPoint(174, 10)), QStringList());
}

void tst_RulerView::dragsMarkersFromSampleToSample()
{
    plant(3);
    m_listener.take();
    QWidget *viewport = m_ruler->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, QPoint(153, kFlagY));
    QCOMPARE(m_listener.take(), (QList<int>{8, 9})); // chosen as the active one
    QTest::mouseMove(viewport, QPoint(174, kFlagY));
    QCOMPARE(m_listener.take(), QList<int>()); // still sample 3
    QTest::mouseMove(viewport, QPoint(176, kFlagY));
    QCOMPARE(m_listener.take(), (QList<int>{8, 9}));
    QCOMPARE(m_heardClocks, QList<int>{4});
    QTest::mouseMove(viewport, QPoint(1500, kFlagY));
    m_listener.take();
    QCOMPARE(m_heardClocks, QList<int>{19});
    QTest::mouseMove(viewport, QPoint(-300, kFlagY));
    m_listener.take();
    QCOMPARE(m_heardClocks, QList<int>{0});
    QCOMPARE(active()->pos(), QPointF(0, 0));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(-300, kFlagY));
    QTest::mouseMove(viewport, QPoint(500, kFlagY));
    QCOMPARE(m_listener.take(), QList<int>());

    // A capture without samples leaves no place to go to.
    m_ruler->setClocks(0);
    drag(3, 400);
    QCOMPARE(clocksOf(*m_ruler), QList<int>{0});
}

void tst_RulerView::pressActivates()
{
    for (const int clock : {2, 4, 6})
        plant(clock);
    m_listener.take();
    drag(103, 103);
    QCOMPARE(m_listener.take(), (QList<int>{8, 9}));
    QCOMPARE(clocksOf(*m_ruler), (QList<int>{2, 6, 4}));
    QVERIFY(active()->isActive());
    QCOMPARE(active()->zValue(), 1.0);
    QCOMPARE(m_ruler->timeMarkers().at(1)->item()->zValue(), 0.0);
    QVERIFY(!m_ruler->timeMarkers().at(1)->item()->isActive());

    // Neither the number above a flag nor the scale below it starts a drag.
    QTest::mousePress(m_ruler->viewport(), Qt::LeftButton, {}, QPoint(303, 8));
    QTest::mouseRelease(m_ruler->viewport(), Qt::LeftButton, {}, QPoint(303, 8));
    QTest::mousePress(m_ruler->viewport(), Qt::LeftButton, {}, QPoint(300, 29));
    QTest::mouseRelease(m_ruler->viewport(), Qt::LeftButton, {}, QPoint(300, 29));
    QCOMPARE(m_listener.take(), QList<int>());
}

void tst_RulerView::removesMarkers()
{
    for (const int clock : {2, 4, 6})
        plant(clock);
    m_listener.take();
    const QString entry = QStringLiteral("Remove Marker");
    QCOMPARE(driveContextMenu(m_ruler->viewport(), QPoint(303, kFlagY), entry), QStringList{entry});
    QCOMPARE(m_listener.take(), (QList<int>{10, 11}));
    QCOMPARE(m_heardClocks, (QList<int>{4, 2}));
    QVERIFY(active()->isActive());
    driveContextMenu(m_ruler->viewport(), QPoint(103, kFlagY), entry);
    driveContextMenu(m_ruler->viewport(), QPoint(203, kFlagY), entry);
    QCOMPARE(m_ruler->timeMarker(), nullptr);
    QCOMPARE(m_heardClocks, QList<int>());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(m_ruler->scene()->items().size(), 1); // the scale
}

void tst_RulerView::followsItsOwnWaveView()
{
    m_ruler->setClocks(1000);
    const auto stranger = newSender(kDomain + 16, 4.0, 500);
    zoomAndScroll(stranger.get());
    QCOMPARE(m_ruler->zoomRate(), 1.0);
    QCOMPARE(m_ruler->horizontalScrollBar()->value(), 0);

    const auto own = newSender(kDomain, 4.0, 500);
    zoomAndScroll(own.get());
    QCOMPARE(m_ruler->zoomRate(), 4.0);
    QCOMPARE(m_ruler->mapFromScene(50.0 * 10, 0).x(), 50 * 10 * 4 - 500);
    QCOMPARE(m_ruler->mapFromScene(0, 0.0).y(), kTop); // the scale stands at the bottom
}

void tst_RulerView::diesWithItsMenuOpen()
{
    QTimer::singleShot(0, this, [this] { m_ruler.reset(); });
    QWidget *viewport = m_ruler->viewport();
    const QPoint position(100, 10);
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, viewport->mapToGlobal(position));
    QApplication::sendEvent(viewport, &event);
    QVERIFY(!m_ruler);
}

int main(int argc, char **argv)
{
    return runTest<tst_RulerView, QApplication>(argc, argv);
}

#include "tst_rulerview.moc"
