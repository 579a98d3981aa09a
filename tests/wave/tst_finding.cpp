#include "viewertest.h"

#include <wave/common/clockperiods.h>
#include <wave/common/timesliderdata.h>
#include <wave/view/waveview.h>
#include <wave_data/rowtext.h>

#include <QHelpEvent>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QToolTip>

using namespace WaveMonitor;

namespace {

constexpr int kSamples = 3000;

struct Periods
{
    ClockPeriods periods; // outlives the viewer
};

/// A viewer with rows that change seldom, and its keys.
struct Finder final : Periods, Viewer
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
        widget->setTitle(0, 3);
        widget->showStrips(&periods);
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
    template <typename Widget>
    Widget *part(const char *name) const
    {
        return widget->findChild<Widget *>(name);
    }
    /// Opens the bar and types.
    void find(const QString &text) const
    {
        press(Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(widget->focusWidget(), text);
        if (text.isEmpty())
            press(Qt::Key_Delete);
        settle();
    }
    QString outcome() const { return part<QLabel>("findOutcome")->accessibleDescription(); }
    QString measured() const { return part<QLabel>("measureText")->accessibleDescription(); }
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
    void findsRowsByName();
    void findsSamples();
    void tellsKindsApart_data();
    void tellsKindsApart();
    void showsHitsOnTheRuler();
    void measures();
    void readsClockPeriods_data();
    void readsClockPeriods();
    void tellsValuesAtThePointer();
    void overviewMovesTheWaves();
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

void tst_Finding::findsRowsByName()
{
    const Finder user;
    user.tree->setFocus();
    user.find("NET");
    QCOMPARE(user.outcome(), "Name: 6 found");
    for (const char *name : {"net0", "net1", "net2", "net3", "net4", "net5", "net0"}) {
        QTest::keyClick(user.widget->focusWidget(), Qt::Key_Return);
        user.settle();
        QCOMPARE(namesOf(user.tree->selectedRows()), name);
    }
    QVERIFY(user.tree->isExpanded(user.model->index(3, 0))); // for its members
    QCOMPARE(user.outcome(), "Name: 1 of 6, from the top again");
    user.press(Qt::Key_F3, Qt::ShiftModifier);
    QCOMPARE(namesOf(user.tree->selectedRows()), "net5");
    user.press(Qt::Key_F3, Qt::ShiftModifier);
    QCOMPARE(namesOf(user.tree->selectedRows()), "net4");
    user.press(Qt::Key_Escape);
    QCOMPARE(user.widget->focusWidget(), user.tree);
    QVERIFY(!user.part<QWidget>("findBar")->isVisible());
    user.find("nothing of the kind");
    const QString failure = QStringLiteral("No name has \"nothing of the kind\" in it.");
    QCOMPARE(user.outcome(), failure);
    // What there is no room for is seen to be missing.
    const auto *label = user.part<QLabel>("findOutcome");
    for (const int width : {480, 1600}) {
        user.widget->resize(width, 400);
        user.settle();
        QCOMPARE(label->text() == failure, width == 1600);
        QVERIFY(label->fontMetrics().horizontalAdvance(label->text()) <= label->width());
    }
}

// Against the texts of the row, from place to place, forth and back and round.
void tst_Finding::findsSamples()
{
    const Finder user;
    QRandomGenerator random(6);
    for (const auto &[row, text] :
         {std::pair(3, "5"), std::pair(3, "= 2"), std::pair(0, "1"), std::pair(0, "rising")}) {
        user.select({row});
        user.press(Qt::Key_Escape);
        const QString wanted = QString(text) == "rising" ? QString("1") : QString(text).right(1);
        QList<int> hits;
        for (int k = 0; k < kSamples; ++k) {
            const bool before =
                k > 0 ? user.value(row, k - 1) == wanted : QString(text) == "rising";
            if (user.value(row, k) == wanted && !before)
                hits.append(k);
        }
        QVERIFY(hits.size() > 3);
        user.waves->setFocus();
        user.press(Qt::Key_T);
        int place = 1000;
        user.find(text);
        for (int step = 0; step < 25; ++step) {
            const bool isForth = random.bounded(3) > 0;
            const auto after = std::upper_bound(hits.cbegin(), hits.cend(), place);
            const auto from = std::lower_bound(hits.cbegin(), hits.cend(), place);
            if (isForth)
                place = after == hits.cend() ? hits.first() : *after;
            else
                place = from == hits.cbegin() ? hits.last() : *(from - 1);
            user.press(random.bounded(2) ? Qt::Key_F3 : Qt::Key_Return,
                       isForth ? Qt::NoModifier : Qt::ShiftModifier);
            QVERIFY(user.isCentred(place));
            const QString count =
                QStringLiteral(": %1 of %2").arg(hits.indexOf(place) + 1).arg(hits.size());
            QVERIFY2(user.outcome().contains(count), qPrintable(user.outcome() + count));
        }
        // F3 goes on with the focus in the waves too.
        user.waves->setFocus();
        user.press(Qt::Key_F3);
        QVERIFY(!user.isCentred(place));
    }
}

void tst_Finding::tellsKindsApart_data()
{
    const auto row = addColumns<int, QString, QString>({"selected", "text", "says"});
    row("name", 3, "net", "Name: 6");
    row("number in names and values", 3, "2", "Value of bus");
    row("number without a row", -1, "2", "Name: 1");
    row("number in no name, without a row", -1, "77", "Select a row");
    row("comparison", 3, ">= 6", "Value of bus");
    row("comparison without a row", -1, "> 6", "Select a row");
    row("edge", 3, "edge", "Edge of bus");
    row("rise of a bus", 3, "rising", "look for \"edge\"");
    row("digits that begin a name too", 3, "b", "Name: 1");
    row("too large", 3, "> 9", "more bits than the row has (3)");
    row("nowhere", 0, "edge0", "No name");
    row("nothing", 3, "", "");
}

void tst_Finding::tellsKindsApart()
{
    QFETCH(int, selected);
    QFETCH(QString, text);
    QFETCH(QString, says);
    const Finder user;
    if (selected >= 0)
        user.select({selected});
    user.find(text);
    QVERIFY2(user.outcome().contains(says), qPrintable(user.outcome()));
    QVERIFY(!says.isEmpty() || user.outcome().isEmpty());
}

void tst_Finding::showsHitsOnTheRuler()
{
    const Finder user;
    const auto picture = [&] { return pixelsOf(user.ruler->viewport()); };
    user.select({0});
    user.press(Qt::Key_T);
    user.press(Qt::Key_Right, Qt::ControlModifier);
    user.waves->centreOn(user.waves->middleSample() + 3); // beside what was gone to
    user.waves->horizontalScrollBar()->setValue(user.waves->horizontalScrollBar()->value() / 50 *
                                                50);
    user.settle();
    const QImage before = picture();
    user.find("edge");
    int ticks = 0;
    const int scroll = user.waves->horizontalScrollBar()->value();
    for (int k = 1; k < kSamples; ++k) {
        const int x = k * 50 - scroll;
        if (x < 1 || x >= user.ruler->viewport()->width() - 1)
            continue;
        const bool isHit = user.value(0, k) != user.value(0, k - 1);
        ticks += isHit;
        const QColor foot = picture().pixelColor(x, 47);
        QCOMPARE(foot == QColor(0xFF, 0xB0, 0x00) || foot == QColor(Qt::cyan), isHit);
    }
    QVERIFY(ticks > 0);
    user.press(Qt::Key_Escape);
    QCOMPARE(picture(), before);
}

void tst_Finding::measures()
{
    Finder user;
    user.select({3});
    user.waves->setFocus();
    user.press(Qt::Key_Home);
    const auto point = [&](int sample) {
        QTest::mouseMove(user.waves->viewport(), {sample * 50 + 20, 40});
    };
    QCOMPARE(user.measured(), QString());
    point(4);
    QCOMPARE(user.measured(), "Sample 4   trigger -996");
    user.plant(2);
    user.plant(10);
    int edges = 0;
    for (int k = 3; k <= 10; ++k)
        edges += user.value(3, k) != user.value(3, k - 1);
    point(5);
    point(4);
    QCOMPARE(user.measured(), QStringLiteral("Sample 4   trigger -996   marker -6   "
                                             "markers 8   edges of bus: %1")
                                  .arg(edges));
    // The period of another core says nothing here.
    user.periods.set(1, ClockPeriod{7, "us"});
    QVERIFY(!user.measured().contains("("));
    auto *field = user.part<QLineEdit>("clockPeriod");
    field->setFocus();
    QTest::keyClicks(field, "nonsense\r");
    QVERIFY(user.measured().startsWith("A clock period is"));
    field->selectAll();
    QTest::keyClicks(field, "80 MHz\r");
    QCOMPARE(user.periods.ofCore(3), (ClockPeriod{12'500, "ps"}));
    QVERIFY2(user.measured().contains("marker -6 (75 ns, 13.3333 MHz)   "
                                      "markers 8 (100 ns, 10 MHz)"),
             qPrintable(user.measured()));
    user.periods.set(3, ClockPeriod{10, "ns"}); // by the export
    QCOMPARE(field->text(), "10 ns");
    QVERIFY(user.measured().contains("markers 8 (80 ns, 12.5 MHz)"));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(user.waves->viewport(), &leave);
    QVERIFY(user.measured().startsWith("Marker 10   trigger -990 (9.9 us, "));
    // A narrow window shows less of it and does not grow.
    user.widget->resize(500, 400);
    user.settle();
    QCOMPARE(user.widget->width(), 500);
    const auto *text = user.part<QLabel>("measureText");
    QVERIFY(text->fontMetrics().horizontalAdvance(text->text()) <= text->width());
    QVERIFY(text->text() != user.measured() && text->toolTip() == user.measured());
}

void tst_Finding::readsClockPeriods_data()
{
    const auto row = addColumns<QString, int, QString>({"text", "number", "unit"});
    row("ns", "10ns", 10, "ns");
    row("fraction", " 2.5 ns ", 2500, "ps");
    row("comma", "2,5us", 2500, "ns");
    row("milliseconds", "3 ms", 3000, "us");
    row("sign of micro", "4 \u00b5s", 4, "us");
    row("frequency", "100 mhz", 10, "ns");
    row("crooked frequency", "27 MHz", 37'037, "ps");
    row("slow", "32.768 kHz", 30'517'578 / 1000 + 1, "ns");
    row("longest", "9999999us", 9'999'999, "us");
    row("too long", "10 s", 0, "");
    row("too short", "0.4ps", 0, "");
    row("no unit", "10", 0, "");
    row("zero", "0 ns", 0, "");
    row("zero frequency", "0 Hz", 0, "");
    row("other unit", "10 m", 0, "");
}

void tst_Finding::readsClockPeriods()
{
    QFETCH(QString, text);
    QFETCH(int, number);
    QFETCH(QString, unit);
    const auto period = readClockPeriod(text);
    QCOMPARE(period.has_value(), number > 0);
    if (period)
        QCOMPARE(*period, (ClockPeriod{number, unit}));
}

void tst_Finding::tellsValuesAtThePointer()
{
    const Finder user;
    user.waves->setFocus();
    user.press(Qt::Key_Home);
    const auto tipAt = [&](const QPoint &place) {
        QToolTip::hideText();
        QHelpEvent event(QEvent::ToolTip, place, user.waves->viewport()->mapToGlobal(place));
        QApplication::sendEvent(user.waves->viewport(), &event);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    QCOMPARE(tipAt({20 * 50 + 3, 3 * 30 + 7}),
             QStringLiteral("bus = %1 at sample 20").arg(user.value(3, 20)));
    QCOMPARE(tipAt({1, 30 + 7}), QStringLiteral("net1 = %1 at sample 0").arg(user.value(1, 0)));
    tipAt({1, 300}); // below the rows
    QTRY_VERIFY(!QToolTip::isVisible());
}

void tst_Finding::overviewMovesTheWaves()
{
    const Finder user;
    user.waves->setFocus();
    user.press(Qt::Key_Home);
    auto *strip = user.part<QWidget>("overview");
    const int width = strip->width();
    QTest::mousePress(strip, Qt::LeftButton, {}, {width / 2, 10});
    QVERIFY(user.isCentred(kSamples / 2));
    QTest::mouseMove(strip, {width / 4, 10});
    QVERIFY(user.isCentred(width / 4 * kSamples / width));
    QTest::mouseRelease(strip, Qt::LeftButton, {}, {width / 4, 10});
    // Taken off its middle, the frame follows by as much as the pointer moves.
    user.zoomTo(1.0 / 8);
    user.waves->centreOn(1500);
    const int left = user.waves->horizontalScrollBar()->value();
    QTest::mousePress(strip, Qt::LeftButton, {}, {width / 2 + 9, 10});
    QCOMPARE(user.waves->horizontalScrollBar()->value(), left);
    QTest::mouseMove(strip, {width / 2 + 9 + 30, 10});
    const int moved = user.waves->horizontalScrollBar()->value() - left;
    QVERIFY(std::abs(moved - 30 * kSamples / width * 50 / 8) <= 2 * kSamples / width * 50 / 8);
    QTest::mouseRelease(strip, Qt::LeftButton);

    // The row, the trigger and the part that shows can be seen.
    user.select({0});
    user.settle();
    const QImage picture = strip->grab().toImage();
    const qreal ratio = picture.devicePixelRatio();
    QSet<int> changing;
    for (int k = 1; k < kSamples; ++k) {
        if (user.value(0, k) != user.value(0, k - 1))
            changing.insert(int(k * width * ratio / kSamples));
    }
    int greens = 0;
    for (int x = 0; x < picture.width(); ++x) {
        const QColor middle = picture.pixelColor(x, picture.height() / 2);
        greens += middle == QColor(Qt::green);
        QVERIFY(middle != QColor(Qt::green) || changing.contains(x));
    }
    QVERIFY(greens > changing.size() / 2); // outside the part that shows
    const QColor trigger = picture.pixelColor(int(1000 * width * ratio / kSamples), int(2 * ratio));
    QVERIFY(trigger.red() > 150 && trigger.green() > 150 && trigger.blue() < 100);
}

KEO_WIDGET_TEST_MAIN(tst_Finding)
#include "tst_finding.moc"
