#include "differencemarks.h"

#include <wave/common/viewergeometry.h>
#include <wave_data/layoutnode.h>

#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

constexpr QColor kMarkColor(255, 80, 170);
constexpr int kNarrowest = 3; // pixels, so that one sample is seen at any zoom
constexpr int kBarHeight = 3; // pixels
constexpr int kFieldTop = 3;  // pixels below the top of the row

/// Calls \a use with each signal of a row.
template <typename Use>
void forEachSignal(const LayoutNode &row, Use use)
{
    if (row.type == LayoutNode::Signal)
        use(static_cast<const SignalLayoutNode &>(row).id);
    for (const auto &member : row.children)
        forEachSignal(*member, use);
}

} // namespace

DifferenceMarks::DifferenceMarks(const WindowComparison &comparison, Side side)
    : m_comparison(comparison), m_shift(side == Side::A ? 0 : comparison.offset())
{
    for (qsizetype position = 0; position < comparison.compared().size(); ++position) {
        const ComparedSignal &signal = comparison.compared().at(position);
        if (signal.differing > 0)
            m_positions.insert(side == Side::A ? signal.idInA : signal.idInB, position);
    }
}

QSet<int> DifferenceMarks::markedSignals() const
{
    const QList<int> ids = m_positions.keys();
    return {ids.cbegin(), ids.cend()};
}

void DifferenceMarks::paint(QPainter &painter, const ShownWaves &shown) const
{
    const int first = std::max(0, int(std::floor(-shown.top / ROW_HEIGHT)));
    for (int row = first; row < shown.rows.size(); ++row) {
        const qreal top = shown.top + row * ROW_HEIGHT;
        if (top >= shown.size.height())
            break;
        Columns columns(size_t(std::max(0, shown.size.width())), false);
        forEachSignal(*shown.rows.at(row), [&](int id) {
            const auto found = m_positions.constFind(id);
            if (found != m_positions.cend())
                addSignal(columns, shown, *found);
        });
        paintRow(painter, columns, top);
    }
    if (!m_current)
        return;
    const qreal x =
        std::round(shown.left + qreal(*m_current + m_shift) * shown.pixelsPerSample) + 1.0;
    painter.setPen(QPen(kMarkColor, 1.0, Qt::DashLine));
    painter.drawLine(QPointF(x, 0.0), QPointF(x, shown.size.height()));
}

/// Sets the columns that show samples which differ. Goes from run to run, and past each as far as
/// it is seen, so the time follows the pixels.
void DifferenceMarks::addSignal(Columns &columns, const ShownWaves &shown, qsizetype position) const
{
    const auto sampleAt = [&](qreal x) {
        return qsizetype(std::floor((x - shown.left) / shown.pixelsPerSample)) - m_shift;
    };
    const auto columnOf = [&](qsizetype sample) {
        return shown.left + qreal(sample + m_shift) * shown.pixelsPerSample;
    };
    const qreal width = shown.size.width();
    SampleRange left{sampleAt(0.0), sampleAt(width) + 1};
    while (const auto run = m_comparison.differenceWithin(position, left)) {
        const qreal from = std::clamp(std::floor(columnOf(run->first)), 0.0, width);
        const qreal seen = std::max(std::ceil(columnOf(run->end)), from + kNarrowest);
        const qreal to = std::min(seen, width);
        std::fill(columns.begin() + std::ptrdiff_t(from), columns.begin() + std::ptrdiff_t(to),
                  true);
        left.first = std::max(run->end, sampleAt(to));
        if (left.first >= left.end)
            break;
    }
}

void DifferenceMarks::paintRow(QPainter &painter, const Columns &columns, qreal top) const
{
    for (auto from = std::find(columns.begin(), columns.end(), true); from != columns.end();) {
        const auto to = std::find(from, columns.end(), false);
        const QRectF field(qreal(from - columns.begin()), top + kFieldTop, qreal(to - from),
                           ROW_HEIGHT - kFieldTop - kBarHeight);
        painter.fillRect(field, QBrush(kMarkColor, Qt::BDiagPattern));
        painter.fillRect(QRectF(field.left(), field.bottom(), field.width(), kBarHeight),
                         kMarkColor);
        from = std::find(to, columns.end(), true);
    }
}

} // namespace WaveMonitor
