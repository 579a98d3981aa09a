#include "viewertest.h"

#include <wave/rulerview.h>
#include <wave/signaltreemodel.h>
#include <wave/signaltreeview.h>
#include <wave/viewergeometry.h>
#include <wave/wavemonitorwidget.h>
#include <wave/waveview.h>

#include <QApplication>
#include <QDomDocument>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>

#include <algorithm>
#include <memory>

using namespace WaveMonitor;

namespace {

constexpr int kSamples = 300;

/// Samples of a counter's bit \a bit.
QBitArray counterBit(int bit, int samples = kSamples)
{
    QBitArray data(samples);
    for (int i = 0; i < samples; ++i)
        data.setBit(i, i >> bit & 1);
    return data;
}

SignalElement element(int id, int samples = kSamples)
{
    return {id, QStringLiteral("s%1").arg(id), {}, counterBit(id % 8, samples)};
}

/// A viewer with its parts. Rows: 12 signals, a bus of 4, another 12 signals, a bus of 4.
struct Viewer
{
    explicit Viewer(quint64 domain = 16, const WindowState *saved = nullptr)
        : widget(std::make_unique<WaveMonitorWidget>(domain, nullptr, saved)),
          tree(widget->findChild<SignalTreeView *>()),
          waves(widget->findChild<WaveView *>()),
          ruler(widget->findChild<RulerView *>()),
          model(tree->model())
    {
        widget->resize(1200, 400);
    }

    void fill(int samples = kSamples)
    {
        int id = 0;
        for (int block = 0; block < 2; ++block) {
            for (int i = 0; i < 12; ++i)
                widget->addSignal(element(id++, samples));
            QList<SignalElement> members;
            for (int i = 0; i < 4; ++i)
                members.append(element(id++, samples));
            BusElement bus{QStringLiteral("bus%1").arg(block), {}, {}};
            for (SignalElement &member : members)
                bus.signals.append(&member);
            widget->addBus(bus);
        }
        widget->setTriggerPosition(5);
        show();
    }
    void show()
    {
        widget->show();
        settle();
    }
    static void settle()
    {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }
    void plant(int clock)
    {
        const int x = ruler->mapFromScene(clock * CLOCK_PITCH, 0).x();
        driveContextMenu(ruler->viewport(), {x, 10},
                         QStringLiteral("Create Marker at Clock Period: %1").arg(clock));
    }
    QString value(int row) const
    {
        return model->index(row, SignalTreeModel::ValueColumn).data().toString();
    }
    QStringList names() const
    {
        QStringList texts;
        for (int row = 0; row < model->rowCount(); ++row)
            texts.append(model->index(row, SignalTreeModel::NameColumn).data().toString());
        return texts;
    }

    std::unique_ptr<WaveMonitorWidget> widget;
    SignalTreeView *tree;
    WaveView *waves;
    RulerView *ruler;
    QAbstractItemModel *model;
};

/// Places of the rows in a viewer's coordinates, in device pixels.
struct RowPlaces
{
    QList<qreal> tree;
    QList<qreal> waves;
};

RowPlaces rowPlaces(const Viewer &viewer)
{
    const qreal ratio = viewer.widget->devicePixelRatioF();
    RowPlaces places;
    QModelIndex index = viewer.model->index(0, 0);
    while (index.isValid()) {
        const QPoint top = viewer.tree->visualRect(index).topLeft();
        const QPoint global = viewer.tree->viewport()->mapToGlobal(top);
        places.tree.append(viewer.widget->mapFromGlobal(global).y() * ratio);
        index = viewer.tree->indexBelow(index);
    }
    const QList<QGraphicsItem *> items = viewer.waves->scene()->items();
    for (const QGraphicsItem *item : items) {
        if (!item->isVisible())
            continue;
        const QPointF top = viewer.waves->viewportTransform().map(item->scenePos());
        const QPointF global = viewer.waves->viewport()->mapToGlobal(top);
        places.waves.append(viewer.widget->mapFromGlobal(global).y() * ratio);
    }
    std::sort(places.waves.begin(), places.waves.end());
    return places;
}

} // namespace

// Runs a second time at two device pixels to a pixel.
class tst_WaveMonitorWidget final : public ViewerTest
{
    Q_OBJECT

private Q_SLOTS:
    void rowsStandSideBySide();
    void rulerStandsOverTheWaves();
    void showsValuesAtTheMarker();
    void zoomFits_data();
    void zoomFits();
    void viewersZoomAlone();
    void autorunSwapsSamplesAlone();
    void restoresItsState();
    void savesAndLoads();
    void pressOnAWaveSelectsItsRow();
    void rulerLeavesTheKeysAlone();
    void diesWithEventsQueued();
    void isEmptyWithoutData();
};

void tst_WaveMonitorWidget::rowsStandSideBySide()
{
    Viewer viewer;
    viewer.fill();
    const auto verify = [&](const char *when, int rows) {
        viewer.settle();
        const RowPlaces places = rowPlaces(viewer);
        QVERIFY2(places.tree.size() == rows, when);
        const bool together = places.tree == places.waves;
        if (!together)
            qDebug() << places.tree << places.waves;
        QVERIFY2(together, when);
        const qreal height = ROW_HEIGHT * viewer.widget->devicePixelRatioF();
        for (qsizetype row = 1; row < places.tree.size(); ++row)
            QCOMPARE(places.tree[row] - places.tree[row - 1], height);
    };
    verify("at first", 26);
    QCOMPARE(rowPlaces(viewer).tree.first(), kRulerHeight * viewer.widget->devicePixelRatioF());

    QScrollBar *treeBar = viewer.tree->verticalScrollBar();
    QScrollBar *waveBar = viewer.waves->verticalScrollBar();
    QCOMPARE(treeBar->maximum(), waveBar->maximum());
    waveBar->setValue(77);
    verify("scrolled by the waves", 26);
    treeBar->setValue(treeBar->maximum());
    verify("scrolled by the tree", 26);
    viewer.tree->expand(viewer.model->index(12, 0));
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

    for (int id = 100; id < 104; ++id)
        viewer.widget->addSignal(element(id));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    waveBar->setValue(waveBar->maximum()); // before the tree has laid its new rows out
    verify("added", 34);

    // As a drop does: the bus with its members goes up, a signal goes below the rest.
    auto *model = qobject_cast<SignalTreeModel *>(viewer.model);
    model->moveAbove(model->index(2, 0), {model->index(12, 0)});
    model->moveAppend({}, {model->index(0, 0)});
    QCOMPARE(viewer.names().at(1), QStringLiteral("bus0"));
    verify("moved", viewer.tree->isExpanded(model->index(1, 0)) ? 34 : 30);

    viewer.tree->selectAll();
    driveContextMenu(viewer.tree->viewport(), {20, 20}, QStringLiteral("Ungroup"));
    verify("ungrouped", 36);
    viewer.tree->selectAll();
    driveContextMenu(viewer.tree->viewport(), {20, 20}, QStringLiteral("Group"));
    verify("grouped", 1);
    viewer.widget->resize(900, 130);
    viewer.tree->expandAll();
    verify("in a low window", 37);
}

void tst_WaveMonitorWidget::rulerStandsOverTheWaves()
{
    Viewer viewer;
    viewer.fill();
    const auto verify = [&] {
        viewer.settle();
        for (const int sample : {0, 1, 17, kSamples - 1, kSamples}) {
            const int x = viewer.ruler->mapFromScene(sample * CLOCK_PITCH, 0).x();
            QCOMPARE(x, viewer.waves->mapFromScene(sample * CLOCK_PITCH, 0).x());
        }
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
    Viewer viewer;
    viewer.fill();
    QCOMPARE(viewer.value(0), QStringLiteral("1")); // bit 0 of 5
    QCOMPARE(viewer.value(12), QStringLiteral("0"));
    viewer.plant(6);
    viewer.settle();
    QCOMPARE(viewer.value(0), QStringLiteral("0"));
    viewer.plant(9);
    QWidget *viewport = viewer.ruler->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, {303, 22}); // the older marker
    viewer.settle();
    QCOMPARE(viewer.value(1), QStringLiteral("1"));
    QTest::mouseMove(viewport, {350, 22});
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, {350, 22});
    viewer.settle();
    QCOMPARE(viewer.value(0), QStringLiteral("1")); // 7
    QCOMPARE(viewer.value(2), QStringLiteral("1"));
    for (const int x : {353, 453})
        driveContextMenu(viewport, {x, 22}, QStringLiteral("Remove Marker"));
    viewer.settle();
    QCOMPARE(viewer.ruler->timeMarker(), nullptr);
    QCOMPARE(viewer.value(1), QStringLiteral("0")); // the trigger's sample again
}

void tst_WaveMonitorWidget::zoomFits_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<qreal>("rate"); // for a width of 1000
    QTest::newRow("some samples") << 2000 << 0.01;
    QTest::newRow("too many samples") << 10'000'000 << 1.0 / 256;
    QTest::newRow("one sample") << 1 << 16.0;
    QTest::newRow("no samples") << 0 << 16.0;
}

void tst_WaveMonitorWidget::zoomFits()
{
    QFETCH(int, samples);
    QFETCH(qreal, rate);
    Viewer viewer;
    viewer.widget->addSignal({0, QStringLiteral("s"), {}, QBitArray(samples)});
    viewer.show();
    const int bar = viewer.waves->verticalScrollBar()->width();
    viewer.widget->resize(viewer.widget->width() + 1000 + bar - viewer.waves->width(), 400);
    viewer.settle();
    QCOMPARE(viewer.waves->width() - bar, 1000);
    viewer.widget->zoomFit();
    viewer.settle();
    QCOMPARE(viewer.widget->zoomRate(), rate);
    QCOMPARE(viewer.waves->zoomRate(), rate);
    QCOMPARE(viewer.ruler->zoomRate(), rate);
    if (samples == 2000)
        QCOMPARE(viewer.waves->horizontalScrollBar()->maximum(), 0); // all in view
}

void tst_WaveMonitorWidget::viewersZoomAlone()
{
    Viewer one(16);
    Viewer two(32);
    one.fill();
    two.fill();
    one.widget->zoomIn();
    one.widget->zoomIn();
    two.plant(3);
    one.settle();
    QCOMPARE(one.waves->zoomRate(), 4.0);
    QCOMPARE(two.waves->zoomRate(), 1.0);
    QCOMPARE(two.ruler->zoomRate(), 1.0);
    QCOMPARE(one.value(1), QStringLiteral("0")); // sample 5
    QCOMPARE(two.value(1), QStringLiteral("1")); // sample 3

    // A zoom that begins in the wave view reaches the widget, whose next step goes on from there.
    driveContextMenu(one.waves->viewport(), {50, 50}, QStringLiteral("Zoom In"));
    one.settle();
    QCOMPARE(one.widget->zoomRate(), 8.0);
    one.widget->zoomOut();
    one.settle();
    QCOMPARE(one.ruler->zoomRate(), 4.0);
}

void tst_WaveMonitorWidget::autorunSwapsSamplesAlone()
{
    Viewer viewer;
    viewer.fill();
    viewer.plant(4);
    viewer.widget->setZoom(0.5);
    viewer.tree->expand(viewer.model->index(12, 0));
    viewer.settle();
    const QStringList names = viewer.names();
    const QRectF scene = viewer.waves->sceneRect();

    viewer.widget->setAutorunCounter(7);
    viewer.widget->updateData(QList<QBitArray>(32, QBitArray(kSamples, true)));
    viewer.settle();
    QCOMPARE(viewer.widget->findChild<QLabel *>()->text(),
             QStringLiteral("    Autorun Counter: 7"));
    QCOMPARE(viewer.value(0), QStringLiteral("1"));
    QCOMPARE(viewer.value(12), QStringLiteral("F"));
    QCOMPARE(viewer.names(), names);
    QCOMPARE(viewer.waves->zoomRate(), 0.5);
    QCOMPARE(viewer.ruler->timeMarker()->clock(), 4);
    QVERIFY(viewer.tree->isExpanded(viewer.model->index(12, 0)));
    QCOMPARE(viewer.waves->sceneRect(), scene);

    viewer.widget->updateData({QBitArray(kSamples)}); // not as many as there are signals
    QCOMPARE(viewer.value(0), QStringLiteral("1"));
}

void tst_WaveMonitorWidget::restoresItsState()
{
    std::unique_ptr<WindowState> state;
    {
        Viewer viewer;
        viewer.fill();
        viewer.tree->header()->resizeSection(0, 150);
        viewer.tree->header()->resizeSection(1, 90);
        viewer.tree->setCurrentIndex(viewer.model->index(0, 0));
        viewer.tree->selectionModel()->select(viewer.model->index(1, 0),
                                              QItemSelectionModel::Select);
        driveContextMenu(viewer.tree->viewport(), {20, 20}, QStringLiteral("Group"));
        viewer.widget->setZoom(0.25);
        viewer.widget->setTitle(2, -1);
        QCOMPARE(viewer.widget->windowTitle(), QStringLiteral("window 2"));
        viewer.widget->setTitle(2, 0);
        QCOMPARE(viewer.widget->windowTitle(), QStringLiteral("core 0 window 2"));
        state = viewer.widget->saveState();
    }
    QCOMPARE(state->core, 0);
    QCOMPARE(state->window, 2);
    QCOMPARE(state->nameWidth, 150);
    QCOMPARE(state->valueWidth, 90);
    QCOMPARE(state->zoomRate, 0.25);
    QVERIFY(state->layout.ownerDocument().isNull()); // the document is gone, and the node knows

    // As over a new capture: the same signals come, then the state, which has outlived its viewer.
    Viewer viewer(32, state.get());
    viewer.fill();
    viewer.widget->restoreState(nullptr);
    const WindowState withoutLayout;
    viewer.widget->restoreState(&withoutLayout);
    QCOMPARE(viewer.model->rowCount(), 26);
    viewer.widget->restoreState(state.get());
    viewer.settle();
    QCOMPARE(viewer.tree->sizeHint().width(), 240);
    QCOMPARE(viewer.tree->header()->sectionSize(0), 150);
    QCOMPARE(viewer.tree->header()->sectionSize(1), 90);
    QCOMPARE(viewer.model->rowCount(), 25);
    QCOMPARE(viewer.names().at(0), QStringLiteral("group_0[1:0]"));
    QCOMPARE(viewer.waves->zoomRate(), 0.25);
    QCOMPARE(rowPlaces(viewer).tree, rowPlaces(viewer).waves);
}

void tst_WaveMonitorWidget::savesAndLoads()
{
    Viewer viewer;
    viewer.fill();
    QDomDocument document;
    document.appendChild(viewer.widget->saveWindow(document));

    QDomDocument read;
    QVERIFY(read.setContent(document.toString()));
    Viewer other(32);
    other.widget->loadWindow(read.documentElement());
    other.show();
    QCOMPARE(other.names(), viewer.names());
    QCOMPARE(other.widget->signalMap(), viewer.widget->signalMap());
    QCOMPARE(other.value(0), viewer.value(0));
    QCOMPARE(other.tree->header()->sectionSize(0), 180);
    QCOMPARE(other.tree->header()->sectionSize(1), 120);
    QCOMPARE(other.waves->sceneRect(), QRectF(0, 0, kSamples * 50, 26 * 30));
    QCOMPARE(other.ruler->sceneRect().width(), kSamples * 50.0);
}

void tst_WaveMonitorWidget::pressOnAWaveSelectsItsRow()
{
    Viewer viewer;
    viewer.fill();
    const auto selected = [&] {
        const QModelIndexList rows = viewer.tree->selectionModel()->selectedIndexes();
        return rows.size() == 1 ? rows.first().row() : -1;
    };
    QTest::mouseClick(viewer.waves->viewport(), Qt::LeftButton, {}, {100, 75});
    QCOMPARE(selected(), 2);
    viewer.widget->setZoom(1.0 / 256);
    viewer.settle();
    QTest::mouseClick(viewer.waves->viewport(), Qt::LeftButton, {}, {500, 75});
    QCOMPARE(selected(), -1); // past the end of the samples
}

void tst_WaveMonitorWidget::rulerLeavesTheKeysAlone()
{
    Viewer viewer;
    viewer.fill();
    viewer.tree->setFocus();
    QTest::mouseClick(viewer.ruler->viewport(), Qt::LeftButton, {}, {300, 8});
    QTest::mouseClick(viewer.ruler->viewport(), Qt::LeftButton, {}, {300, 40});
    QCOMPARE(viewer.widget->focusWidget(), viewer.tree);
}

void tst_WaveMonitorWidget::diesWithEventsQueued()
{
    Viewer survivor(32);
    survivor.fill();
    auto viewer = std::make_unique<Viewer>(16);
    viewer->fill();
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
    viewer.show();
    QTest::mouseClick(viewer.waves->viewport(), Qt::LeftButton, {}, {100, 75});
    QCOMPARE(driveContextMenu(viewer.tree->viewport(), {20, 20}), QStringList());
    QCOMPARE(driveContextMenu(viewer.ruler->viewport(), {20, 10}), QStringList());
    viewer.widget->updateData({});
    viewer.widget->setZoom(std::numeric_limits<double>::quiet_NaN());
    viewer.settle();
    QCOMPARE(viewer.waves->zoomRate(), 1.0);
    viewer.widget->setZoom(0.0);
    viewer.settle();
    QCOMPARE(viewer.waves->zoomRate(), 1.0 / 256);
    QCOMPARE(viewer.tree->sizeHint().width(), 300);
    QCOMPARE(viewer.widget->minimumHeight(), 100);
}

int main(int argc, char **argv)
{
    return runTest<tst_WaveMonitorWidget, QApplication>(argc, argv);
}

#include "tst_wavemonitorwidget.moc"
