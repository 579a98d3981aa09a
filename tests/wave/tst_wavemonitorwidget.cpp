#include "viewertest.h"

#include <wave/common/timesliderdata.h>
#include <wave/traces/waveitem.h>
#include <wave/view/waveview.h>

#include <QDomDocument>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QScrollBar>

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
    void rowsStandSideBySide();
    void rulerStandsOverTheWaves();
    void showsValuesAtTheMarker();
    void zoomFits();
    void viewersZoomAlone();
    void autorunSwapsSamplesAlone();
    void restoresItsState();
    void savesAndLoads();
    void diesWithEventsQueued();
    void isEmptyWithoutData();
};

void tst_WaveMonitorWidget::rowsStandSideBySide()
{
    Viewer viewer(kRows, kSamples);
    const qreal ratio = viewer.widget->devicePixelRatioF();
    const auto verify = [&](const char *when, int rows) {
        viewer.settle();
        const QList<qreal> tops = treeRows(viewer);
        QVERIFY2(tops.size() == rows, when);
        QVERIFY2(tops == waveRows(viewer), when);
        for (qsizetype row = 1; row < rows; ++row)
            QCOMPARE(tops[row] - tops[row - 1], ROW_HEIGHT * ratio);
    };
    verify("at first", 26);
    QCOMPARE(treeRows(viewer).first(), kRulerHeight * ratio);

    QScrollBar *treeBar = viewer.tree->verticalScrollBar();
    QScrollBar *waveBar = viewer.waves->verticalScrollBar();
    QCOMPARE(treeBar->maximum(), waveBar->maximum());
    waveBar->setValue(77);
    verify("scrolled by the waves", 26);
    treeBar->setValue(treeBar->maximum());
    verify("scrolled by the tree", 26);
    viewer.tree->expand(viewer.model->index(kBus, 0));
    viewer.tree->expand(viewer.model->index(25, 0));
    treeBar->setValue(treeBar->maximum()); // before the waves know of the members
    verify("expanded", 34);
    viewer.widget->zoomIn();
    verify("zoomed", 34);
    QTest::keyClick(viewer.tree, Qt::Key_End);
    verify("with the last row in view", 34);
    QCOMPARE(waveBar->value(), waveBar->maximum());
    viewer.tree->collapse(viewer.model->index(25, 0));
    verify("collapsed at the end", 30);

    addRows(*viewer.widget, "new1 new2 new3 new4", kSamples);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    waveBar->setValue(waveBar->maximum()); // before the tree has laid its new rows out
    verify("added", 34);

    // As a drop does: the bus with its members goes up, a signal goes below the rest.
    viewer.model->moveAbove(viewer.model->index(2, 0), {viewer.model->index(kBus, 0)});
    viewer.model->moveAppend({}, {viewer.model->index(0, 0)});
    verify("moved", 34);

    viewer.tree->selectAll();
    driveContextMenu(viewer.tree->viewport(), {20, 20}, "Ungroup");
    verify("ungrouped", 36);
    viewer.tree->selectAll();
    driveContextMenu(viewer.tree->viewport(), {20, 20}, "Group");
    verify("grouped", 1);
    viewer.widget->resize(900, 130);
    viewer.tree->expandAll();
    verify("in a low window", 37);
}

void tst_WaveMonitorWidget::rulerStandsOverTheWaves()
{
    Viewer viewer(kRows, kSamples);
    const auto verify = [&] {
        viewer.settle();
        for (const int sample : {0, 1, 17, kSamples - 1, kSamples})
            QCOMPARE(viewer.ruler->mapFromScene(sample * CLOCK_PITCH, 0).x(),
                     viewer.waves->mapFromScene(sample * CLOCK_PITCH, 0).x());
        QCOMPARE(viewer.ruler->viewport()->mapTo(viewer.widget.get(), QPoint()).x(),
                 viewer.waves->viewport()->mapTo(viewer.widget.get(), QPoint()).x());
        QCOMPARE(viewer.ruler->viewport()->width(), viewer.waves->viewport()->width());
    };
    verify();
    QScrollBar *bar = viewer.waves->horizontalScrollBar();
    bar->setValue(bar->maximum());
    verify();
    viewer.plant(kSamples - 1);
    for (const double rate : {16.0, 3.7, 1.0, 0.11, 1.0 / 256, 2.0}) {
        viewer.widget->setZoom(rate);
        verify();
        bar->setValue(bar->maximum());
        verify();
    }
    viewer.widget->resize(1900, 300);
    verify();
    viewer.widget->zoomFit();
    verify();
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
    }
}

void tst_WaveMonitorWidget::viewersZoomAlone()
{
    Viewer one(kRows, kSamples);
    Viewer two(kRows, kSamples, 32);
    one.widget->zoomIn();
    one.widget->zoomIn();
    two.plant(3);
    QCOMPARE(one.waves->zoomRate(), 4.0);
    QCOMPARE(two.waves->zoomRate(), 1.0);
    QCOMPARE(two.ruler->zoomRate(), 1.0);
    QCOMPARE(sample(one), "101");
    QCOMPARE(sample(two), "011");
    // A zoom that begins in the wave view reaches the widget, whose next step goes on from there.
    driveContextMenu(one.waves->viewport(), {50, 50}, "Zoom In");
    one.settle();
    QCOMPARE(one.widget->zoomRate(), 8.0);
    one.widget->zoomOut();
    driveContextMenu(one.waves->viewport(), {50, 50}, "Zoom Out");
    one.settle();
    QCOMPARE(one.ruler->zoomRate(), 2.0);
}

void tst_WaveMonitorWidget::autorunSwapsSamplesAlone()
{
    Viewer viewer(kRows, kSamples);
    viewer.plant(4);
    viewer.widget->setZoom(0.5);
    viewer.tree->expand(viewer.model->index(kBus, 0));
    viewer.settle();
    const QString rows = rowsOf(*viewer.model);
    const QRectF scene = viewer.waves->sceneRect();

    viewer.widget->setAutorunCounter(7);
    QList<QBitArray> samples; // by id: low and high in turn
    for (int id = 0; id < 32; ++id)
        samples.append(QBitArray(kSamples, id % 2 != 0));
    viewer.widget->updateData(samples);
    viewer.settle();
    QCOMPARE(viewer.widget->findChild<QLabel *>()->text(), "    Autorun Counter: 7");
    QCOMPARE(sample(viewer) + value(viewer, kBus), "0105");
    const QImage picture = viewer.waves->viewport()->grab().toImage();
    const qreal ratio = picture.devicePixelRatio();
    QCOMPARE(picture.pixelColor(int(190 * ratio), int(36 * ratio)), QColor(Qt::green)); // row 1
    QCOMPARE(rowsOf(*viewer.model), rows);
    QCOMPARE(viewer.waves->zoomRate(), 0.5);
    QCOMPARE(viewer.ruler->timeMarker()->clock(), 4);
    QVERIFY(viewer.tree->isExpanded(viewer.model->index(kBus, 0)));
    QCOMPARE(viewer.waves->sceneRect(), scene);

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
        viewer.widget->setZoom(0.25);
        viewer.widget->setTitle(2, -1);
        QCOMPARE(viewer.widget->windowTitle(), "window 2");
        viewer.widget->setTitle(2, 0);
        QCOMPARE(viewer.widget->windowTitle(), "core 0 window 2");
        state = viewer.widget->saveState();
    }
    QCOMPARE(QPoint(state->core, state->window), QPoint(0, 2));
    QVERIFY(state->layout.ownerDocument().isNull()); // the document is gone, and the node knows

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
    QCOMPARE(viewer.tree->header()->sectionSize(1), 90);
    QVERIFY(rowsOf(*viewer.model).startsWith("group_0[1:0](a b) c "));
    QCOMPARE(viewer.waves->zoomRate(), 0.25);
    QCOMPARE(treeRows(viewer), waveRows(viewer));
}

void tst_WaveMonitorWidget::savesAndLoads()
{
    Viewer viewer(kRows, kSamples);
    viewer.model->node(viewer.model->index(0, 0))->color = 0xFF0000;
    QDomDocument document;
    document.appendChild(viewer.widget->saveWindow(document));
    QDomDocument read;
    QVERIFY(read.setContent(document.toString()));
    Viewer other({}, 0, 32);
    other.widget->loadWindow(read.documentElement());
    other.settle();
    QCOMPARE(rowsOf(*other.model), rowsOf(*viewer.model));
    QCOMPARE(dynamic_cast<WaveItem &>(*other.model->waveItems().first()).color(), QColor(Qt::red));
    QCOMPARE(other.widget->signalMap(), viewer.widget->signalMap());
    QCOMPARE(sample(other), "101");
    QCOMPARE(other.tree->header()->sectionSize(0), 180);
    QCOMPARE(other.tree->header()->sectionSize(1), 120);
    QCOMPARE(other.waves->sceneRect(), QRectF(0, 0, kSamples * 50, 26 * 30));
    QCOMPARE(other.ruler->sceneRect().width(), kSamples * 50.0);
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

void tst_WaveMonitorWidget::isEmptyWithoutData()
{
    Viewer viewer;
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
