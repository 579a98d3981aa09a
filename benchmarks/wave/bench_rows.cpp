#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>

#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QLoggingCategory>

#include <random>

using namespace WaveMonitor;

namespace {

constexpr int kSignals = 256;
constexpr int kBuses = 32;
constexpr int kBusMembers = 8;
constexpr int kSamples = 100'000;

/// 256 signals and 32 buses of 8, in a tree and in a scene, 33 rows showing.
struct Viewer
{
    Viewer() : view(nullptr, 300)
    {
        std::mt19937 random(7);
        int id = 0;
        const auto element = [&] {
            QBitArray samples(kSamples);
            for (int i = 0; i < kSamples; ++i)
                samples.setBit(i, random() % 5 == 0);
            const int own = id++;
            return SignalElement{own, QStringLiteral("net[%1]").arg(own), {}, samples};
        };
        view.setModel(&model);
        view.resize(300, 33 * 30);
        view.show();
        for (int i = 0; i < kSignals; ++i)
            model.addSignal(element());
        for (int i = 0; i < kBuses; ++i) {
            QList<SignalElement> members(kBusMembers);
            BusElement bus{QStringLiteral("bus_%1").arg(i), {}, {}};
            for (SignalElement &member : members) {
                member = element();
                bus.signals.append(&member);
            }
            model.addBus(bus);
        }
        view.expandAll();
        showItems();
    }

    /// What the wave view does once for a burst of changes, and the tree in its own time.
    qsizetype showItems()
    {
        const QList<QGraphicsItem *> shown = scene.items();
        for (QGraphicsItem *item : shown)
            scene.removeItem(item);
        const QList<QGraphicsItem *> items = model.waveItems();
        for (QGraphicsItem *item : items)
            scene.addItem(item);
        QCoreApplication::processEvents();
        return items.size();
    }

    QModelIndexList rows(int first, int count, int step = 1) const
    {
        QModelIndexList rows;
        for (int i = 0; i < count; ++i)
            rows.append(model.index(first + i * step, 0));
        return rows;
    }

    QGraphicsScene scene; // outlives the model, whose items it shows
    SignalTreeModel model;
    SignalTreeView view;
};

void check(benchmark::State &state, bool right)
{
    if (!right)
        state.SkipWithError("wrong rows");
}

void BM_Recalculate(benchmark::State &state)
{
    Viewer viewer;
    for (auto _ : state)
        check(state, viewer.model.waveItems().size() == 544);
}
BENCHMARK(BM_Recalculate)->Unit(benchmark::kMillisecond);

void BM_Rebuild(benchmark::State &state)
{
    Viewer viewer;
    for (auto _ : state)
        check(state, viewer.showItems() == 544);
}
BENCHMARK(BM_Rebuild)->Unit(benchmark::kMillisecond);

void BM_GroupAndUngroup(benchmark::State &state)
{
    Viewer viewer;
    for (auto _ : state) {
        viewer.view.selectOnly(viewer.rows(0, kSignals));
        viewer.model.groupBus(viewer.rows(0, kSignals));
        viewer.showItems();
        check(state, viewer.model.rowCount() == 1 + kBuses);
        state.PauseTiming();
        viewer.model.ungroupBus(viewer.model.index(0, 0));
        viewer.showItems();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_GroupAndUngroup)->Unit(benchmark::kMillisecond);

/// Undo of a group of all signals, as the user sees it: rows, waves and tree.
void BM_UndoGroup(benchmark::State &state)
{
    Viewer viewer;
    QAction *undo = viewer.view.actions().first();
    for (auto _ : state) {
        state.PauseTiming();
        viewer.view.selectOnly(viewer.rows(0, kSignals));
        QMetaObject::invokeMethod(&viewer.view, "onGroupBus");
        viewer.showItems();
        check(state, viewer.model.rowCount() == 1 + kBuses);
        state.ResumeTiming();
        undo->trigger();
        viewer.showItems();
        check(state, viewer.model.rowCount() == kSignals + kBuses);
    }
}
BENCHMARK(BM_UndoGroup)->Unit(benchmark::kMillisecond);

/// Every other signal to the end, as the worst selection is for a move.
void BM_MoveScatteredRows(benchmark::State &state)
{
    Viewer viewer;
    for (auto _ : state) {
        const QModelIndexList rows = viewer.rows(0, kSignals / 2, 2);
        viewer.view.selectOnly(rows);
        const QModelIndexList places = viewer.model.moveAppend({}, rows);
        viewer.view.selectOnly(places);
        viewer.showItems();
        check(state, places.last().row() == kSignals + kBuses - 1);
        state.PauseTiming();
        viewer.model.movePrepend({}, places);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_MoveScatteredRows)->Unit(benchmark::kMillisecond);

void BM_CollapseAndExpandAll(benchmark::State &state)
{
    Viewer viewer;
    for (auto _ : state) {
        viewer.view.collapseAll();
        viewer.model.relayoutItems();
        viewer.view.expandAll();
        viewer.model.relayoutItems();
        QCoreApplication::processEvents();
    }
    check(state, viewer.model.waveItems().last()->isVisible());
}
BENCHMARK(BM_CollapseAndExpandAll)->Unit(benchmark::kMillisecond);

void BM_PressRow(benchmark::State &state)
{
    Viewer viewer;
    const QList<QGraphicsItem *> items = viewer.model.waveItems();
    qsizetype next = 0;
    for (auto _ : state) {
        viewer.model.itemPressed(items[next++ % items.size()]);
        QCoreApplication::processEvents();
    }
}
BENCHMARK(BM_PressRow)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
