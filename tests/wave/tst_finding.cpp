#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/view/waveview.h>
#include <wave_data/rowtext.h>

#include <QRandomGenerator>
#include <QScrollBar>

using namespace WaveMonitor;

namespace {

constexpr int kSamples = 3000;

/// A viewer with rows that change seldom, and its keys.
struct Finder final : Viewer
{
    Finder() : Viewer({}, 0)
    {
        QRandomGenerator random(8);
        QList<SignalElement> signals;
        for (int id = 0; id < 6; ++id) {
            SignalElement signal{id, QStringLiteral("net%1").arg(id), {}, QBitArray(kSamples)};
            bool level = false;
            for (int k = 0; k < kSamples; ++k) {
                level ^= random.bounded(60 * (id + 1)) == 0;
                signal.data.setBit(k, level);
            }
            signals.append(signal);
        }
        for (int id = 0; id < 3; ++id)
            widget->addSignal(signals[id]);
        widget->addBus({"bus", {}, {&signals[3], &signals[4], &signals[5]}});
        widget->setTriggerPosition(1000);
        settle();
        widget->activateWindow();
        [[maybe_unused]] const bool isActive = QTest::qWaitForWindowActive(widget.get());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(widget->focusWidget(), key, modifiers);
        settle();
    }
    void select(const QList<int> &rows) const
    {
        QModelIndexList indexes;
        for (const int row : rows)
            indexes.append(model->index(row, 0));
        tree->selectOnly(indexes);
    }
    /// Is the sample in the middle, or as near as the ends allow?
    bool isCentred(int sample) const
    {
        const QScrollBar *bar = waves->horizontalScrollBar();
        const int wanted =
            qRound(sample * CLOCK_PITCH * waves->zoomRate() - waves->viewport()->width() / 2.0);
        return bar->value() == std::clamp(wanted, 0, bar->maximum());
    }
    int marker() const { return ruler->timeMarker() ? ruler->timeMarker()->clock() : -1; }
    QString value(int row, int sample) const
    {
        return rowValueAt(model->contents(), *model->node(model->index(row, 0)), sample);
    }
};

} // namespace

class tst_Finding final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void goesToPlaces();
    void goesFromEdgeToEdge();
    void goesFromMarkerToMarker();
};

void tst_Finding::goesToPlaces()
{
    const Finder user;
    const QStringList entries = driveContextMenu(user.waves->viewport(), {50, 50});
    QCOMPARE(entries.mid(0, 2), QStringList({"Zoom In", "Zoom Out"}));
    QVERIFY(entries.contains("Go to Trigger") && entries.contains("Next Edge"));
    for (const bool hasMarker : {false, true}) {
        if (hasMarker)
            user.plant(user.waves->middleSample());
        for (const qreal zoom : {1.0, 16.0, 1.0 / 16}) {
            user.zoomTo(zoom);
            // Letters and ends are the tree's where the tree has the focus.
            for (QWidget *pane : QList<QWidget *>{user.waves, user.tree}) {
                pane->setFocus();
                const auto modifiers = pane == user.tree ? Qt::ControlModifier : Qt::NoModifier;
                for (const auto &[key, sample] :
                     {std::pair(Qt::Key_T, 1000), std::pair(Qt::Key_Home, 0),
                      std::pair(Qt::Key_End, kSamples - 1), std::pair(Qt::Key_T, 1000)}) {
                    user.press(key, modifiers);
                    QVERIFY(user.isCentred(sample));
                    QCOMPARE(user.marker(), hasMarker ? sample : -1);
                }
            }
        }
    }
    driveContextMenu(user.waves->viewport(), {50, 50}, "Go to Start");
    QVERIFY(user.isCentred(0));
}

// With and without a marker, in one row, a bus, or several rows at a time.
void tst_Finding::goesFromEdgeToEdge()
{
    const Finder user;
    QRandomGenerator random(5);
    for (const bool hasMarker : {false, true}) {
        for (const QList<int> &rows : {QList<int>{0}, QList<int>{3}, QList<int>{1, 2, 3}}) {
            user.select(rows);
            user.press(Qt::Key_T);
            if (hasMarker && user.marker() < 0)
                user.plant(1000);
            QCOMPARE(user.marker(), hasMarker ? 1000 : -1);
            int place = 1000;
            for (int step = 0; step < 60; ++step) {
                const int way = random.bounded(3) == 0 ? -1 : 1;
                const auto isEdge = [&](int sample) {
                    return std::any_of(rows.cbegin(), rows.cend(), [&](int row) {
                        return user.value(row, sample) != user.value(row, sample - 1);
                    });
                };
                int next = place + way;
                while (next > 0 && next < kSamples && !isEdge(next))
                    next += way;
                if (next > 0 && next < kSamples)
                    place = next;
                user.press(way > 0 ? Qt::Key_Right : Qt::Key_Left, Qt::ControlModifier);
                QVERIFY(user.isCentred(place));
                QCOMPARE(user.marker(), hasMarker ? place : -1);
            }
        }
    }
    // Once the user has looked elsewhere, the way begins there.
    user.rulerMenu(user.ruler->mapFromScene(user.marker() * CLOCK_PITCH, 0).x() + 3, 22,
                   "Remove Marker");
    user.select({0});
    user.waves->horizontalScrollBar()->setValue(2000 * 50);
    user.press(Qt::Key_Right, Qt::ControlModifier);
    QVERIFY(user.waves->middleSample() > 2000);
}

void tst_Finding::goesFromMarkerToMarker()
{
    const Finder user;
    for (const int sample : {7, 3, 11, 5})
        user.plant(sample);
    for (const int next : {7, 11, 3, 5}) {
        user.press(Qt::Key_M, Qt::ControlModifier);
        QCOMPARE(user.marker(), next);
        QVERIFY(user.isCentred(next));
    }
    for (const int next : {3, 11, 7}) {
        user.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(user.marker(), next);
    }
    QCOMPARE(user.ruler->timeMarkers().size(), 4);
}

KEO_WIDGET_TEST_MAIN(tst_Finding)
#include "tst_finding.moc"
