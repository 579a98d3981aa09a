#pragma once

#include <QImage>
#include <QRect>
#include <QRectF>
#include <QTransform>

#include <optional>
#include <span>
#include <vector>

class QBitArray;

namespace WaveMonitor {

// Heights of a trace within its row, in scene units.
inline constexpr qreal kHighY = 6;
inline constexpr qreal kMiddleY = 15;
inline constexpr qreal kLowY = 24;

/// Width of the slant at the end of a bus value in pixels: the same at every zoom.
inline constexpr qreal kSlantPixels = 4;

/// Samples \a first up to but not including \a end; empty when they are equal.
struct SampleRange
{
    qsizetype first = 0;
    qsizetype end = 0;

    bool operator==(const SampleRange &other) const = default;
};

/// The samples of \a count that a rectangle in scene units shows, and \a spare more on each side.
SampleRange exposedSamples(const QRectF &exposed, qsizetype count, int spare);

/// Where lines land in device pixels. Traces drawn with a pen of width 0 and square caps, without
/// antialiasing, through such a mapping come out as the functions below give them, to the pixel,
/// where nothing cuts their lines off; a wider pen draws each of those pixels as a square that goes
/// on to the right and down.
struct PixelGrid
{
    QTransform toDevice; ///< scene units to device pixels, both axes scaled by more than 0, no more
    QRect clip;          ///< device pixels that are drawn at all; not empty
    qreal zoom = 1;      ///< horizontal scale without the device's pixel ratio
    int pen = 1;         ///< width of a line in device pixels, at least 1

    [[nodiscard]] qreal slantWidth() const { return kSlantPixels / zoom * toDevice.m11(); }
    /// Whether the rows of a trace fit in the masks of TraceColumns and its slants are steep.
    [[nodiscard]] bool holdsTrace() const;
};

/// The pixels of a trace between kHighY and kLowY, a mask for each device column: bit r of
/// masks[c] is the pixel (left + c, top + r). A mask can't hold what one pixel draws twice, so this
/// is for opaque colours.
struct TraceColumns
{
    int left = 0;
    int top = 0;
    int rows = 0; ///< 1 to 64
    std::vector<quint64> masks;
};

/// The trace of a one-bit row: a level for each sample of \a range, and an edge at the left of each
/// sample that differs from the one before. The range lies within the samples.
TraceColumns signalColumns(const QBitArray &data, SampleRange range, const PixelGrid &grid);

/// The trace of a bus of \a count samples: an upper and a lower line for each sample of \a range,
/// closed by two slants at both ends of a run of equal values. The range lies within the count.
TraceColumns busColumns(std::span<const QBitArray> members, qsizetype count, SampleRange range,
                        const PixelGrid &grid);

/// The pixels as rectangles that don't overlap, or nothing if it takes more than \a limit.
std::optional<std::vector<QRect>> toRects(const TraceColumns &columns, size_t limit);

/// The pixels in \a color, fully opaque, on transparent ground. Its upper left pixel belongs at
/// (left, top).
QImage toImage(const TraceColumns &columns, QRgb color);

} // namespace WaveMonitor
