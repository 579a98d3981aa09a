#include "tracegeometry.h"

#include <wave/common/viewergeometry.h>
#include <wave_data/samplechanges.h>

#include <QBitArray>
#include <QPointF>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace WaveMonitor {

namespace {

// The raster engine walks cosmetic lines in 26.6 fixed point numbers, rounded down where they are
// positive, and steps them in 16.16 ones.
constexpr int kFixedBits = 6;
constexpr int kFixedOne = 1 << kFixedBits;
constexpr int kStepBits = 16;

constexpr int kMaximumRows = 64;
constexpr int kMaximumStampColumns = 16;

/// Columns that a slant of \a width device pixels can touch, with the one before its tip: its tip
/// stands anywhere in a column, and rows are looked at half a pixel off.
int stampColumns(qreal width)
{
    return int(std::ceil(width)) + 3;
}

/// Rounded down on either side of zero, and what misses a border by an error of rounding is on it:
/// so a trace stays the same as it scrolls.
int toFixed(qreal value)
{
    constexpr qreal kError = 1e-6;
    return int(std::floor((value + kError) * kFixedOne));
}

struct FixedPoint
{
    int x = 0;
    int y = 0;
};

/// The pixels of a line that is steeper than 45 degrees, with half a pixel more at both ends.
template <typename Plot>
void walkSteepLine(FixedPoint from, FixedPoint to, Plot plot)
{
    if (from.y > to.y)
        std::swap(from, to);
    const int step = int((qint64(to.x - from.x) << kStepBits) / (to.y - from.y));
    const int half = kFixedOne / 2;
    const int firstY = from.y - half; // where the cap begins
    const int row = (firstY + half) >> kFixedBits;
    const int endRow = (to.y + half + half) >> kFixedBits;
    qint64 x = (qint64(from.x) << (kStepBits - kFixedBits)) - (step >> 1);
    x += qint64(row * kFixedOne + (step > 0 ? half : 0) - firstY) * step >> kFixedBits;
    for (int y = row; y < endRow; ++y, x += step)
        plot(int(x >> kStepBits), y);
}

/// Collects the pixels of one trace.
class Raster final
{
public:
    Raster(const PixelGrid &grid, SampleRange range);

    [[nodiscard]] TraceColumns take() &&;

    void level(bool high, qsizetype from, qsizetype to);
    void edge(qsizetype sample);
    void flats(qreal from, qreal to);
    void slants(qreal tip, qreal width);

private:
    /// The pixels of the two slants that leave a tip to one side, by the tip's place in its column.
    struct Stamp
    {
        int width = 0; ///< fixed; 0 when not made yet
        std::array<quint64, kMaximumStampColumns> masks;
    };

    [[nodiscard]] qreal deviceX(qreal x) const
    {
        return m_grid.toDevice.m11() * x + m_grid.toDevice.dx();
    }
    [[nodiscard]] qreal deviceY(qreal y) const
    {
        return m_grid.toDevice.m22() * y + m_grid.toDevice.dy();
    }
    /// Fixed x of a line's end, moved to the clip's border if it lies beyond.
    [[nodiscard]] int clippedX(qreal x) const
    {
        return toFixed(std::clamp(deviceX(x), m_xMin, m_xMax));
    }
    [[nodiscard]] int sampleColumn(qsizetype sample) const
    {
        return clippedX(CLOCK_PITCH * qreal(sample)) >> kFixedBits;
    }
    [[nodiscard]] quint64 rowBit(qreal y) const
    {
        return quint64(1) << ((toFixed(deviceY(y)) >> kFixedBits) - m_columns.top);
    }

    void fill(int from, int to, quint64 mask);
    void plot(int column, int row);
    void flushFlats();
    void widen();
    /// Index of the tip's column in the stamp of a slant that goes \a width to the right.
    [[nodiscard]] int tipColumn(qreal width) const { return width < 0 ? m_stampColumns - 2 : 1; }
    const Stamp &stamp(int phase, int width);

    const PixelGrid &m_grid;
    TraceColumns m_columns;
    int m_stampColumns;
    // As far outside the clip as a slant reaches: what ends beyond is not seen.
    qreal m_xMin;
    qreal m_xMax;
    quint64 m_highBit;
    quint64 m_lowBit;
    int m_flatFrom = 0; ///< columns of upper and lower line that aren't filled in yet
    int m_flatTo = -1;
    std::array<Stamp, kFixedOne> m_rightward;
    std::array<Stamp, kFixedOne> m_leftward;
};

Raster::Raster(const PixelGrid &grid, SampleRange range)
    : m_grid(grid),
      m_stampColumns(stampColumns(grid.slantWidth())),
      m_xMin(grid.clip.left() - grid.pen - m_stampColumns),
      m_xMax(grid.clip.right() + 1 + m_stampColumns)
{
    m_columns.top = toFixed(deviceY(kHighY)) >> kFixedBits;
    // One row to spare, for single pixels are rounded to a row.
    m_columns.rows = (toFixed(deviceY(kLowY)) >> kFixedBits) - m_columns.top + 2;
    m_highBit = rowBit(kHighY);
    m_lowBit = rowBit(kLowY);
    // Room for a stamp on either side, so that none needs a check.
    m_columns.left = sampleColumn(range.first) - m_stampColumns;
    const int right = sampleColumn(range.end) + m_stampColumns;
    m_columns.masks.assign(size_t(right - m_columns.left + 1), 0);
}

TraceColumns Raster::take() &&
{
    flushFlats();
    if (m_grid.pen > 1)
        widen();
    return std::move(m_columns);
}

/// Makes each pixel a square of the pen's width, to the right and down.
void Raster::widen()
{
    const auto pen = size_t(m_grid.pen);
    std::vector<quint64> &masks = m_columns.masks;
    masks.insert(masks.end(), pen - 1, 0);
    m_columns.rows += int(pen) - 1;
    for (size_t column = masks.size(); column-- > 0;) {
        quint64 mask = 0;
        for (size_t left = column - std::min(column, pen - 1); left <= column; ++left)
            mask |= masks[left];
        for (size_t down = 1; down < pen; ++down)
            mask |= mask << 1;
        masks[column] = mask;
    }
}

void Raster::fill(int from, int to, quint64 mask)
{
    for (int column = from; column <= to; ++column)
        m_columns.masks[size_t(column - m_columns.left)] |= mask;
}

void Raster::plot(int column, int row)
{
    const size_t index = size_t(column - m_columns.left);
    const int bit = row - m_columns.top;
    if (index < m_columns.masks.size() && bit >= 0 && bit < m_columns.rows)
        m_columns.masks[index] |= quint64(1) << bit;
}

/// The level between the left borders of two samples.
void Raster::level(bool high, qsizetype from, qsizetype to)
{
    fill(sampleColumn(from), sampleColumn(to), high ? m_highBit : m_lowBit);
}

void Raster::edge(qsizetype sample)
{
    const int column = sampleColumn(sample);
    fill(column, column, m_lowBit | (m_lowBit - m_highBit));
}

/// The upper and the lower line between two scene x, in either order.
void Raster::flats(qreal from, qreal to)
{
    int first = clippedX(from);
    int last = clippedX(to);
    if (std::abs(first - last) <= 1 && QPointF(from, 0) == QPointF(to, 0)) {
        // No line at all: a single pixel, which is rounded and not cut off.
        for (const qreal y : {kHighY, kLowY})
            plot(qRound(deviceX(from)), qRound(deviceY(y)));
        return;
    }
    if (first == last)
        return; // too short to be drawn
    if (first > last)
        std::swap(first, last);
    first >>= kFixedBits;
    last >>= kFixedBits;
    if (first > m_flatTo + 1 || last < m_flatFrom - 1) {
        flushFlats();
        m_flatFrom = first;
        m_flatTo = last;
        return;
    }
    m_flatFrom = std::min(m_flatFrom, first);
    m_flatTo = std::max(m_flatTo, last);
}

void Raster::flushFlats()
{
    fill(m_flatFrom, m_flatTo, m_highBit | m_lowBit);
    m_flatTo = m_flatFrom - 1;
}

/// The two slants from the middle at scene x \a tip to the upper and the lower line, which they
/// meet \a width scene units further on (to the left if negative).
void Raster::slants(qreal tip, qreal width)
{
    const qreal from = deviceX(tip);
    const qreal to = deviceX(tip + width);
    const auto inside = [this](qreal x) { return x >= m_xMin && x <= m_xMax; };
    if (!inside(from) || !inside(to))
        return;
    const int fixed = toFixed(from);
    const Stamp &made = stamp(fixed & (kFixedOne - 1), toFixed(to) - fixed);
    const int first = (fixed >> kFixedBits) - tipColumn(width);
    quint64 *masks = &m_columns.masks[size_t(first - m_columns.left)];
    for (size_t i = 0; i < size_t(m_stampColumns); ++i)
        masks[i] |= made.masks[i];
}

const Raster::Stamp &Raster::stamp(int phase, int width)
{
    Stamp &made = (width < 0 ? m_leftward : m_rightward)[size_t(phase)];
    if (made.width == width)
        return made;
    made.width = width;
    made.masks.fill(0);
    const int x = tipColumn(width) * kFixedOne + phase;
    for (const qreal y : {kHighY, kLowY}) {
        walkSteepLine({x, toFixed(deviceY(kMiddleY))}, {x + width, toFixed(deviceY(y))},
                      [&](int column, int row) {
                          made.masks[size_t(column)] |= quint64(1) << (row - m_columns.top);
                      });
    }
    return made;
}

} // namespace

SampleRange exposedSamples(const QRectF &exposed, qsizetype count, int spare)
{
    const auto bounded = [count](qreal sample) {
        return qsizetype(std::clamp<qreal>(sample, 0, qreal(count)));
    };
    const qsizetype first = bounded(std::floor(exposed.left() / CLOCK_PITCH - spare));
    const qsizetype end = bounded(std::ceil(exposed.right() / CLOCK_PITCH + spare));
    return {first, std::max(first, end)};
}

bool PixelGrid::holdsTrace() const
{
    const qreal slant = slantWidth();
    return (kLowY - kHighY) * toDevice.m22() + 2 + pen <= kMaximumRows &&
           stampColumns(slant) <= kMaximumStampColumns &&
           slant + 1 < (kMiddleY - kHighY) * toDevice.m22();
}

TraceColumns signalColumns(const QBitArray &data, SampleRange range, const PixelGrid &grid)
{
    Raster raster(grid, range);
    SampleChanges changes({&data, 1}, range.first, range.end);
    bool high = range.first < range.end && data.testBit(range.first);
    qsizetype change = changes.next();
    for (qsizetype run = range.first; run < range.end; high = !high) {
        if (run == change) {
            raster.edge(run);
            change = changes.next();
        }
        raster.level(high, run, change);
        run = change;
    }
    return std::move(raster).take();
}

TraceColumns busColumns(std::span<const QBitArray> members, qsizetype count, SampleRange range,
                        const PixelGrid &grid)
{
    Raster raster(grid, range);
    const qreal slant = kSlantPixels / grid.zoom;
    // A change right behind the range closes its last run.
    SampleChanges changes(members, range.first, std::min(range.end + 1, count));
    qsizetype change = changes.next();
    bool opened = range.first == 0;
    for (qsizetype run = range.first; run < range.end;) {
        if (run == change) {
            opened = true;
            change = changes.next();
        }
        const qsizetype end = std::min(change, range.end);
        const bool closed = change <= range.end;
        const qreal left = CLOCK_PITCH * qreal(run);
        const qreal right = CLOCK_PITCH * qreal(end);
        if (opened)
            raster.slants(left, slant);
        if (closed)
            raster.slants(right, -slant);
        // A sample can be narrower than a slant, so its lines may run backwards. All samples of the
        // run but the first and the last are one line.
        const qreal afterSlant = opened ? left + slant : left;
        const qreal beforeSlant = closed ? right - slant : right;
        if (end - run == 1) {
            raster.flats(afterSlant, beforeSlant);
        } else {
            raster.flats(afterSlant, left + CLOCK_PITCH);
            if (end - run > 2)
                raster.flats(left + CLOCK_PITCH, right - CLOCK_PITCH);
            raster.flats(right - CLOCK_PITCH, beforeSlant);
        }
        run = end;
    }
    return std::move(raster).take();
}

std::optional<std::vector<QRect>> toRects(const TraceColumns &columns, size_t limit)
{
    std::vector<QRect> rects;
    const std::vector<quint64> &masks = columns.masks;
    for (auto run = masks.begin(); run != masks.end();) {
        const auto end =
            std::find_if(run, masks.end(), [run](quint64 mask) { return mask != *run; });
        quint64 mask = *run;
        for (int row = columns.top; mask != 0;) {
            const int gap = std::countr_zero(mask);
            mask >>= gap;
            const int height = std::countr_one(mask);
            mask = height < kMaximumRows ? mask >> height : 0;
            if (rects.size() == limit)
                return std::nullopt;
            rects.emplace_back(columns.left + int(run - masks.begin()), row + gap, int(end - run),
                               height);
            row += gap + height;
        }
        run = end;
    }
    return rects;
}

QImage toImage(const TraceColumns &columns, QRgb color)
{
    const qsizetype width = qsizetype(columns.masks.size());
    QImage image(int(width), columns.rows, QImage::Format_ARGB32_Premultiplied);
    const QRgb opaque = color | 0xFF000000U;
    for (int row = 0; row < columns.rows; ++row) {
        QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (qsizetype column = 0; column < width; ++column)
            line[column] = -QRgb(columns.masks[size_t(column)] >> row & 1) & opaque;
    }
    return image;
}

} // namespace WaveMonitor
