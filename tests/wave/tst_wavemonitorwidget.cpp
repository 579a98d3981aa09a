#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/view/waveview.h>

#include <QAccessible>
#include <QDomDocument>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QRandomGenerator>
#include <QScrollBar>

#include <cmath>

using namespace WaveMonitor;

namespace {

constexpr int kSamples = 300;
constexpr int kBus = 12; // the row of the first bus
const QString kRows = "a b c d e f g h i j k l X(m n o p) q r s t u v w x y z a1 a2 Y(b1 b2 b3 b4)";

QString value(const Viewer &viewer, int row)
{
    return viewer.model->index(row, SignalTreeModel::ValueColumn).data().toString();
}

/// Values of the first three rows, bits 2 to 0 of the shown sample.
QString sample(const Viewer &viewer)
{
    return value(viewer, 2) + value(viewer, 1) + value(viewer, 0);
}

/// The place of a point of a view in its viewer, in device pixels.
qreal heightOf(const Viewer &viewer, const QAbstractScrollArea *view, const QPoint &point)
{
    const QPoint global = view->viewport()->mapToGlobal(point);
    return viewer.widget->mapFromGlobal(global).y() * viewer.widget->devicePixelRatioF();
}

/// Tops of the rows from the top down.
QList<qreal> treeRows(const Viewer &viewer)
{
    QList<qreal> tops;
    for (QModelIndex index = viewer.model->index(0, 0); index.isValid();
         index = viewer.tree->indexBelow(index))
        tops.append(heightOf(viewer, viewer.tree, viewer.tree->visualRect(index).topLeft()));
    return tops;
}

QList<qreal> waveRows(const Viewer &viewer)
{
    QList<qreal> tops;
    for (const QGraphicsItem *item : viewer.waves->scene()->items()) {
        if (item->isVisible())
            tops.append(
                heightOf(viewer, viewer.waves, viewer.waves->mapFromScene(item->scenePos())));
    }
    std::sort(tops.begin(), tops.end());
    return tops;
}

} // namespace

// Runs a second time at two device pixels to a pixel.
class tst_WaveMonitorWidget final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void partsStandSideBySide();
    void showsValuesAtTheMarker();
    void zoomFits();
    void autorunSwapsSamplesAlone();
    void restoresItsState();
    void isReachedWithoutAMouse();
    void diesWithEventsQueued();
    void diesWithADragLeftOver();
    void isEmptyWithoutData();
};

// Whatever the user does to rows, scroll bars, zoom and size.
void tst_WaveMonitorWidget::partsStandSideBySide()
{
    Viewer viewer(kRows, kSamples);
    const qreal ratio = viewer.widget->devicePixelRatioF();
    QScrollBar *const bars[] = {viewer.tree->verticalScrollBar(), viewer.waves->verticalScrollBar(),
                                viewer.waves->horizontalScrollBar()};
    QCOMPARE(treeRows(viewer).first(), kRulerHeight * ratio);
    const auto menu = [&](const char *entry) {
        viewer.tree->selectAll();
        driveContextMenu(viewer.tree->viewport(), {20, 20}, entry);
    };
    QRandomGenerator random(9);
    for (int step = 0; step < 150; ++step) {
        const int rows = viewer.model->rowCount();
        const QModelIndex any = viewer.model->index(random.bounded(rows), 0);
        const int operation = random.bounded(12);
        bool isLeft = false;
        if (operation == 0)
            viewer.tree->setExpanded(any, !viewer.tree->isExpanded(any));
        else if (operation == 1)
            random.bounded(2) ? viewer.tree->expandAll() : viewer.tree->collapseAll();
        else if (operation == 2)
            viewer.model->moveAbove(viewer.model->index(random.bounded(rows), 0), {any});
        else if (operation == 3)
            menu(rowsOf(*viewer.model).contains(u'(') ? "Ungroup" : "Group");
        else if (operation == 4 && rows < 40)
            addRows(*viewer.widget, "new1 new2 N(new3 new4)", kSamples);
        else if (operation == 5)
            viewer.widget->setZoom(std::exp2(random.bounded(13) - 8.3));
        else if (operation == 6)
            viewer.widget->zoomFit();
        else if (operation == 7)
            viewer.widget->resize(random.bounded(800, 1900), random.bounded(130, 600));
        else if (operation == 8)
            QTest::keyClick(viewer.tree, random.bounded(2) ? Qt::Key_End : Qt::Key_Home);
        else if (operation == 9)
            isLeft = true;     // for another tab
        if (random.bounded(2)) // before or after the others have heard
            viewer.settle();
        QScrollBar *bar = bars[random.bounded(3)];
        bar->setValue(random.bounded(2) ? bar->maximum() : random.bounded(bar->maximum() + 1));
        viewer.settle();
        if (isLeft) {
            const int left = bars[2]->value();
            viewer.widget->hide();
            viewer.widget->show();
            viewer.settle();
            QCOMPARE(bars[2]->value(), left);
        }

        const QList<qreal> tops = treeRows(viewer);
        QVERIFY(tops.size() >= viewer.model->rowCount());
        QCOMPARE(tops, waveRows(viewer));
        for (qsizetype row = 1; row < tops.size(); ++row)
            QCOMPARE(tops[row] - tops[row - 1], ROW_HEIGHT * ratio);
        QCOMPARE(bars[0]->maximum(), bars[1]->maximum());
        QCOMPARE(viewer.waves->sceneRect(),
                 QRectF(0, 0, kSamples * CLOCK_PITCH, qreal(tops.size()) * ROW_HEIGHT));
        for (const int sample : {0, 1, 17, kSamples - 1, kSamples})
            QCOMPARE(viewer.ruler->mapFromScene(sample * CLOCK_PITCH, 0).x(),
                     viewer.waves->mapFromScene(sample * CLOCK_PITCH, 0).x());
        QCOMPARE(viewer.ruler->viewport()->mapTo(viewer.widget.get(), QPoint()).x(),
                 viewer.waves->viewport()->mapTo(viewer.widget.get(), QPoint()).x());
        QCOMPARE(viewer.ruler->viewport()->width(), viewer.waves->viewport()->width());
    }
}

void tst_WaveMonitorWidget::showsValuesAtTheMarker()
{
    Viewer viewer(kRows, kSamples);
    QCOMPARE(sample(viewer), "101");
    QCOMPARE(value(viewer, kBus), "0");
    viewer.plant(6);
    QCOMPARE(sample(viewer), "110");
    viewer.plant(9);
    QWidget *viewport = viewer.ruler->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, {303, 22}); // the older marker
    viewer.settle();
    QCOMPARE(sample(viewer), "110");
    QTest::mouseMove(viewport, {350, 22});
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, {350, 22});
    viewer.settle();
    QCOMPARE(sample(viewer), "111");
    for (const int x : {353, 453})
        driveContextMenu(viewport, {x, 22}, "Remove Marker");
    viewer.settle();
    QCOMPARE(sample(viewer), "101"); // the trigger's sample again
    // The ruler leaves the keys to the tree.
    viewer.tree->setFocus();
    for (const int y : {8, 40})
        QTest::mouseClick(viewport, Qt::LeftButton, {}, {300, y});
    QCOMPARE(viewer.widget->focusWidget(), viewer.tree);
}

void tst_WaveMonitorWidget::zoomFits()
{
    const std::pair<int, qreal> rates[] = {
        {2000, 0.01}, {10'000'000, 1.0 / 256}, {1, 16.0}, {0, 16.0}};
    for (const auto &[samples, rate] : rates) { // in a width of 1000
        Viewer viewer("s", samples);
        const int bar = viewer.waves->verticalScrollBar()->width();
        viewer.widget->resize(viewer.widget->width() + 1000 + bar - viewer.waves->width(), 400);
        viewer.settle();
        viewer.widget->zoomFit();
        viewer.settle();
        QCOMPARE(viewer.widget->zoomRate(), rate);
        QCOMPARE(viewer.waves->zoomRate(), rate);
        QCOMPARE(viewer.ruler->zoomRate(), rate);
        QCOMPARE(viewer.waves->horizontalScrollBar()->maximum() == 0, samples != 10'000'000);
        if (samples != 10'000'000)
            continue;
        // What does not fit lies far from the trigger.
        viewer.widget->setTriggerPosition(samples / 3);
        for (int again = 0; again < 2; ++again) {
            viewer.widget->zoomFit();
            viewer.settle();
            const int x = viewer.waves->mapFromScene(samples / 3 * CLOCK_PITCH, 0).x();
            QVERIFY(std::abs(x - viewer.waves->viewport()->width() / 2) <= 1);
            viewer.waves->horizontalScrollBar()->setValue(0);
        }
    }
}

void tst_WaveMonitorWidget::autorunSwapsSamplesAlone()
{
    Viewer viewer(kRows, kSamples);
    viewer.plant(4);
    viewer.tree->expand(viewer.model->index(kBus, 0));
    viewer.zoomTo(0.5);
    const auto state = [&] {
        return std::tuple(rowsOf(*viewer.model), viewer.waves->zoomRate(),
                          viewer.ruler->timeMarker()->clock(), viewer.waves->sceneRect());
    };
    const auto before = state();
    viewer.widget->setAutorunCounter(7);
    QList<QBitArray> samples; // by id: low and high in turn
    for (int id = 0; id < 32; ++id)
        samples.append(QBitArray(kSamples, id % 2 != 0));
    viewer.widget->updateData(samples);
    viewer.settle();
    QCOMPARE(viewer.widget->findChild<QLabel *>()->text(), "    Autorun Counter: 7");
    QCOMPARE(sample(viewer) + value(viewer, kBus), "0105");
    const QImage picture = pixelsOf(viewer.waves->viewport());
    QCOMPARE(picture.pixelColor(190, 24), QColor(Qt::green)); // row 0
    QVERIFY(state() == before);
    viewer.widget->updateData({QBitArray(kSamples)}); // not as many as there are signals
    QCOMPARE(sample(viewer), "010");
}

void tst_WaveMonitorWidget::restoresItsState()
{
    std::unique_ptr<WindowState> state;
    {
        Viewer viewer(kRows, kSamples);
        viewer.tree->header()->resizeSection(0, 150);
        viewer.tree->header()->resizeSection(1, 90);
        viewer.tree->selectOnly({viewer.model->index(0, 0), viewer.model->index(1, 0)});
        driveContextMenu(viewer.tree->viewport(), {20, 20}, "Group");
        viewer.model->setData(viewer.model->index(2, 0), "was_d", Qt::EditRole);
        viewer.tree->selectOnly({viewer.model->index(2, 0)});
        driveContextMenu(viewer.tree->viewport(), {20, 20}, "Hide");
        viewer.tree->expand(viewer.model->index(0, 0));
        viewer.tree->expand(viewer.model->index(kBus - 2, 0));
        viewer.zoomTo(0.25);
        viewer.waves->horizontalScrollBar()->setValue(1733);
        viewer.waves->verticalScrollBar()->setValue(350);
        viewer.model->setDefaultFormat(DataFormat::Octal);
        viewer.widget->setTitle(2, -1);
        QCOMPARE(viewer.widget->windowTitle(), "window 2");
        viewer.widget->setTitle(2, 0);
        QCOMPARE(viewer.widget->windowTitle(), "core 0 window 2");
        state = viewer.widget->saveState();
    }
    QCOMPARE(QPoint(state->core, state->window), QPoint(0, 2));

    // As over a new capture: the same signals come, then the state, which has outlived its viewer.
    Viewer viewer(kRows, kSamples, 32, state.get());
    const WindowState withoutLayout;
    viewer.widget->restoreState(nullptr);
    viewer.widget->restoreState(&withoutLayout);
    QCOMPARE(viewer.model->rowCount(), 26);
    viewer.widget->restoreState(state.get());
    viewer.settle();
    QCOMPARE(viewer.tree->sizeHint().width(), 240);
    QCOMPARE(viewer.tree->header()->sectionSize(0), 150);
    QCOMPARE(viewer.tree->header()->sectionSize(1), viewer.tree->viewport()->width() - 150);
    viewer.tree->header()->resizeSection(0, 500); // the values stay as wide as they were set
    QCOMPARE(viewer.tree->header()->sectionSize(1), 90);
    viewer.tree->header()->resizeSection(0, 150);
    QVERIFY(rowsOf(*viewer.model).startsWith("group_0[1:0](a b) c "));
    QCOMPARE(viewer.waves->zoomRate(), 0.25);
    QCOMPARE(viewer.model->defaultFormat(), int(DataFormat::Octal));
    QCOMPARE(treeRows(viewer), waveRows(viewer));
    QCOMPARE(treeRows(viewer).size(), 24 + 2 + 4);
    const auto place = [](const Viewer &shown) {
        return QPoint(shown.waves->horizontalScrollBar()->value(),
                      shown.waves->verticalScrollBar()->value());
    };
    QCOMPARE(place(viewer), QPoint(1733, 350));
    driveContextMenu(viewer.tree->viewport(), {20, 20}, "Show All");
    viewer.settle();
    QVERIFY(rowsOf(*viewer.model).contains(" c was_d e ")); // under its name
    viewer.waves->verticalScrollBar()->setValue(30);
    viewer.zoomTo(1); // the place was for once
    QCOMPARE(place(viewer).y(), 30);

    // A tab in the background, seen only after the capture after the next.
    for (int round = 0; round < 2; ++round) {
        WaveMonitorWidget unseen(64, nullptr, state.get());
        addRows(unseen, kRows, kSamples);
        unseen.restoreState(state.get());
        Viewer::settle();
        state = unseen.saveState();
    }
    Viewer seen({}, 0, 80, state.get());
    seen.widget->hide();
    addRows(*seen.widget, kRows, kSamples);
    seen.widget->restoreState(state.get());
    seen.settle();
    seen.widget->show();
    seen.settle();
    QCOMPARE(place(seen), QPoint(1733, 350));

    QDomDocument document;
    Viewer other({}, 0, 48);
    other.widget->loadWindow(viewer.widget->saveWindow(document));
    other.settle();
    QCOMPARE(rowsOf(*other.model), rowsOf(*viewer.model));
    QCOMPARE(sample(other), sample(viewer));
    QCOMPARE(other.waves->sceneRect(), QRectF(0, 0, kSamples * 50, 25 * 30));
    QCOMPARE(other.ruler->sceneRect().width(), kSamples * 50.0);
}

void tst_WaveMonitorWidget::isReachedWithoutAMouse()
{
    Viewer viewer(kRows, kSamples);
    QApplication::setActiveWindow(viewer.widget.get());
    viewer.tree->setFocus();
    QTest::keyClick(viewer.tree, Qt::Key_Tab);
    QCOMPARE(viewer.widget->focusWidget(), viewer.waves);
    QTest::keyClick(viewer.waves, Qt::Key_Right);
    QVERIFY(viewer.waves->horizontalScrollBar()->value() > 0);
    QTest::keyClick(viewer.waves, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(viewer.widget->focusWidget(), viewer.tree);
    // A step is taken back from the waves as well.
    viewer.tree->selectOnly({viewer.model->index(0, 0)});
    viewer.waves->setFocus();
    QTest::keyClick(viewer.waves, Qt::Key_Delete);
    QCOMPARE(viewer.model->rowCount(), 25);
    QTest::keyClick(viewer.waves, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(viewer.model->rowCount(), 26);
    const std::pair<QWidget *, QString> names[] = {
        {viewer.tree, "Signals"}, {viewer.waves, "Waves"}, {viewer.ruler, "Ruler"}};
    for (const auto &[pane, name] : names)
        QCOMPARE(QAccessible::queryAccessibleInterface(pane)->text(QAccessible::Name), name);
}

void tst_WaveMonitorWidget::diesWithEventsQueued()
{
    Viewer survivor(kRows, kSamples, 32);
    auto viewer = std::make_unique<Viewer>(kRows, kSamples);
    viewer->plant(3);
    viewer->widget->zoomIn();
    viewer->widget->setTriggerPosition(9);
    viewer->tree->expandAll();
    viewer->waves->horizontalScrollBar()->setValue(500);
    viewer.reset();
    survivor.settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(survivor.widget->zoomRate(), 1.0);
}

// A row that is dropped outside leaves its drag, which changes the tree's style, and with it the
// range of its bar, when the viewer goes. The sanitizers see who reads the other pane's bar then.
void tst_WaveMonitorWidget::diesWithADragLeftOver()
{
    for (const bool expands : {false, true}) {
        Viewer viewer(kRows, kSamples);
        viewer.tree->selectOnly({viewer.model->index(kBus, 0)});
        viewer.tree->setExpanded(viewer.model->index(kBus, 0), expands);
        viewer.settle();
        const QPoint press = viewer.tree->visualRect(viewer.model->index(2, 0)).center();
        QTest::mousePress(viewer.tree->viewport(), Qt::LeftButton, {}, press);
        for (const int distance : {12, 24})
            QTest::mouseMove(viewer.tree->viewport(), press + QPoint(0, distance));
        QTest::mouseRelease(viewer.tree->viewport(), Qt::LeftButton, {}, press);
        QVERIFY(viewer.tree->testAttribute(Qt::WA_SetStyle)); // the drag's
    }
}

void tst_WaveMonitorWidget::isEmptyWithoutData()
{
    Viewer viewer;
    QVERIFY(viewer.waves->sceneRect().isEmpty());
    QTest::mouseClick(viewer.waves->viewport(), Qt::LeftButton, {}, {100, 75});
    QCOMPARE(driveContextMenu(viewer.tree->viewport(), {20, 20}), QStringList());
    QCOMPARE(driveContextMenu(viewer.ruler->viewport(), {20, 10}), QStringList());
    viewer.widget->updateData({});
    for (const auto &[asked, rate] : {std::pair(std::nan(""), 1.0), std::pair(0.0, 1.0 / 256)}) {
        viewer.zoomTo(asked);
        QCOMPARE(viewer.waves->zoomRate(), rate);
    }
    QCOMPARE(viewer.tree->sizeHint().width(), 300);
    QCOMPARE(viewer.widget->minimumHeight(), 100);
}

KEO_WIDGET_TEST_MAIN(tst_WaveMonitorWidget)
#include "tst_wavemonitorwidget.moc"
