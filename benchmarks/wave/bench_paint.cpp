// One repaint of a full window of rows: what every scroll step, zoom step and marker move costs.

#include <wave/common/viewergeometry.h>
#include <wave/traces/buswaveitem.h>
#include <wave/traces/signalwaveitem.h>
#include <wave_data/dataformat.h>

#include <QApplication>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QImage>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>

using namespace WaveMonitor;

namespace {

constexpr int kRows = 33;
constexpr int kBusMembers = 8;
constexpr QSize kViewport(1920, 1000);
constexpr qsizetype kShort = 65'536;
constexpr qsizetype kLong = 1'048'576;

enum class Samples { Random, Toggling, Constant };

QBitArray samples(Samples kind, qsizetype count, unsigned seed)
{
    std::mt19937 random(seed);
    QBitArray bits(count);
    for (qsizetype i = 0; i < count; ++i)
        bits.setBit(i, kind == Samples::Random ? (random() >> 16 & 1) != 0
                                               : kind == Samples::Toggling && i % 2 != 0);
    return bits;
}

/// The viewer's window, reduced to its rows.
class Rows final
{
public:
    Rows(qreal zoom, qsizetype count)
    {
        m_scene.setBackgroundBrush(Qt::black);
        m_view.setFrameShape(QFrame::NoFrame);
        m_view.setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
        m_view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_view.setAlignment(Qt::AlignLeft | Qt::AlignTop);
        m_view.setTransform(QTransform::fromScale(zoom, 1));
        m_scene.setSceneRect(0, 0, CLOCK_PITCH * qreal(count), kRows * ROW_HEIGHT);
        m_view.setScene(&m_scene);
        m_view.resize(kViewport);
        m_view.show();
    }

    void add(QGraphicsItem *item)
    {
        item->setPos(0, ROW_HEIGHT * m_rows++);
        m_scene.addItem(item); // which owns it now
    }

    void repaint(benchmark::State &state)
    {
        QScrollBar *bar = m_view.horizontalScrollBar();
        bar->setValue(bar->maximum() / 3 | 1);
        QApplication::processEvents();
        if (m_view.viewport()->size() != kViewport || !showsTraces()) {
            state.SkipWithError("the view doesn't show the rows");
            return;
        }
        for (auto _ : state)
            m_view.viewport()->repaint();
    }

private:
    bool showsTraces()
    {
        const QImage shown = m_view.viewport()->grab().toImage();
        for (int row = 0; row < m_rows; ++row) {
            bool green = false;
            for (int y = 6; y <= 24; ++y)
                green = green || shown.pixelColor(kViewport.width() / 2, row * 30 + y) == Qt::green;
            if (!green)
                return false;
        }
        return m_rows == kRows;
    }

    QGraphicsScene m_scene;
    QGraphicsView m_view;
    int m_rows = 0;
};

void signalRows(benchmark::State &state, Samples kind, qreal zoom, qsizetype count)
{
    Rows rows(zoom, count);
    for (unsigned row = 0; row < kRows; ++row) {
        auto *item = new SignalWaveItem;
        item->setData(samples(kind, count, row));
        rows.add(item);
    }
    rows.repaint(state);
}

void busRows(benchmark::State &state, Samples kind, qreal zoom, qsizetype count)
{
    const DataFormat hexadecimal;
    Rows rows(zoom, count);
    for (unsigned row = 0; row < kRows; ++row) {
        QList<QBitArray> members;
        for (unsigned member = 0; member < kBusMembers; ++member)
            members.append(samples(kind, count, row * kBusMembers + member));
        auto *item = new BusWaveItem;
        item->setMembers(members);
        item->setFormat(&hexadecimal);
        rows.add(item);
    }
    rows.repaint(state);
}

void registerAll()
{
    struct Zoom
    {
        const char *name;
        qreal rate;
    };
    struct Kind
    {
        const char *name;
        Samples samples;
    };
    for (const auto &[kindName, kind] :
         {Kind{"random", Samples::Random}, Kind{"toggling", Samples::Toggling},
          Kind{"constant", Samples::Constant}}) {
        for (const auto &[zoomName, zoom] :
             {Zoom{"1:256", 1.0 / 256}, Zoom{"1:16", 1.0 / 16}, Zoom{"1", 1}, Zoom{"16", 16}}) {
            for (const qsizetype count : {kShort, kLong}) {
                const std::string row = std::string(kindName) + "/zoom " + zoomName + "/" +
                                        std::to_string(count) + " samples";
                const auto add = [&](const char *item, auto paint) {
                    benchmark::RegisterBenchmark((item + row).c_str(), paint, kind, zoom, count)
                        ->Unit(benchmark::kMillisecond);
                };
                add("signal/", signalRows);
                add("bus/", busRows);
            }
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
