#include "buswaveitem.h"

#include "tracepainting.h"
#include "valuefont.h"

#include <base/logging.h>
#include <wave/common/viewergeometry.h>
#include <wave_data/dataformat.h>
#include <wave_data/radixtext.h>
#include <wave_data/samplechanges.h>

#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <QTextOption>
#include <QVarLengthArray>

#include <algorithm>
#include <utility>

namespace WaveMonitor {

namespace {

constexpr qreal kSeparatorY = 29;

/// Samples beyond the exposed ones, so that a text that begins or ends there has its room.
constexpr int kSpareSamples = 3;

// Where the text of a run stands, in pixels: within the run's slants, and across most of the row.
constexpr qreal kTextMargin = 4;
constexpr qreal kTextTop = 7;
constexpr qreal kTextHeight = 20;

/// Both lines of each sample and the slants between them, for painters that give no pixel grid.
void drawLines(QPainter &painter, std::span<const QBitArray> members, qsizetype count,
               SampleRange range, qreal zoom)
{
    const qreal slant = zoom != 0 ? kSlantPixels / zoom : 0; // 0 when turned upright
    const auto drawSlants = [&painter](qreal tip, qreal end) {
        for (const qreal y : {kHighY, kLowY})
            painter.drawLine(QPointF(tip, kMiddleY), QPointF(end, y));
    };
    SampleChanges changes(members, range.first, std::min(range.end + 1, count));
    qsizetype change = changes.next();
    for (qsizetype i = range.first; i < range.end; ++i) {
        qreal left = CLOCK_PITCH * qreal(i);
        qreal right = left + CLOCK_PITCH;
        const bool opened = i == 0 || i == change;
        if (i == change)
            change = changes.next();
        if (opened) {
            drawSlants(left, left + slant);
            left += slant;
        }
        if (i + 1 == change) {
            drawSlants(right, right - slant);
            right -= slant;
        }
        for (const qreal y : {kHighY, kLowY})
            painter.drawLine(QPointF(left, y), QPointF(right, y));
    }
}

/// Least length of the text of a value of \a bits bits.
qsizetype leastTextLength(DataFormat::Type type, qsizetype bits)
{
    switch (type) {
    case DataFormat::Binary:
        return bits;
    case DataFormat::Octal:
        return (bits + 2) / 3;
    case DataFormat::Hexadecimal:
        return (bits + 3) / 4;
    default:
        return 1;
    }
}

/// The text of a bus at \a sample, its first member being the most significant bit.
QString valueText(const QList<QBitArray> &members, qsizetype sample, DataFormat::Type type)
{
    const qsizetype bits = members.size();
    QVarLengthArray<quint64, 4> words((bits + 63) / 64);
    std::fill(words.begin(), words.end(), 0);
    for (qsizetype bit = 0; bit < bits; ++bit) {
        const QBitArray &member = members[bits - 1 - bit];
        if (sample < member.size() && member.testBit(sample))
            words[bit / 64] |= quint64(1) << bit % 64;
    }
    QVarLengthArray<char, 256> text(radixTextCapacity(bits));
    return QString::fromLatin1(text.data(), radixText(type, words.data(), bits, text.data()));
}

/// Writes the texts of one item in one paint. The painter's transform and font change with the
/// first text written.
class TextWriter final
{
public:
    TextWriter(QPainter &painter, const QRectF &exposed, const ValueFont &font)
        : m_painter(painter),
          m_font(font),
          m_zoom(painter.transform().m11()),
          m_exposed(exposed.x() * m_zoom, exposed.y(), exposed.width() * m_zoom, exposed.height())
    {
    }

    /// Where the run's text can be seen, in pixels that only zoom apart from scene units; no size
    /// at all if it can't be seen.
    [[nodiscard]] QRectF room(qsizetype run, qsizetype end) const
    {
        const qreal width = CLOCK_PITCH * qreal(end - run) * m_zoom - 2 * kTextMargin;
        if (width <= 0)
            return {};
        const qreal left = CLOCK_PITCH * qreal(run) * m_zoom + kTextMargin;
        QRectF seen = QRectF(left, kTextTop, width, kTextHeight) & m_exposed;
        seen.setWidth(std::min(seen.width(), width)); // the cut rounds its borders
        return seen;
    }

    /// The sample past which a run's end makes no difference to its room.
    [[nodiscard]] qreal lastEnd() const
    {
        return (m_exposed.right() + kTextMargin) / (CLOCK_PITCH * m_zoom);
    }

    void write(const QRectF &room, const QString &text)
    {
        if (!m_font.fits(text, room.size()))
            return;
        if (!m_ready) {
            const QTransform now = m_painter.transform();
            m_painter.setTransform({1, now.m12(), now.m13(), now.m21(), 1, now.m23(), now.m31(),
                                    now.m32(), now.m33()});
            m_painter.setFont(m_font.font());
            m_ready = true;
        }
        m_painter.drawText(room, text, m_option);
    }

private:
    QPainter &m_painter;
    const ValueFont &m_font;
    const qreal m_zoom;
    const QRectF m_exposed;
    const QTextOption m_option{Qt::AlignLeft | Qt::AlignVCenter};
    bool m_ready = false;
};

/// A text for each run of equal values that has room for it. A run that begins before the range is
/// taken to begin with it, so its text stays in sight while it is scrolled.
void drawTexts(QPainter &painter, const QRectF &exposed, const QList<QBitArray> &members,
               SampleRange range, DataFormat::Type type, const ValueFont &font)
{
    TextWriter writer(painter, exposed, font);
    const qsizetype least = leastTextLength(type, members.size());
    const qsizetype count = members.first().size();
    const qsizetype limit =
        writer.lastEnd() < qreal(count) ? qsizetype(writer.lastEnd()) + 1 : count;
    SampleChanges changes(members, range.first + 1, limit);
    for (qsizetype run = range.first, end; run < limit; run = end) {
        end = changes.next();
        const QRectF room = writer.room(run, end);
        if (!room.isEmpty() && !font.isTooLong(least, room.width()))
            writer.write(room, valueText(members, run, type));
    }
}

} // namespace

BusWaveItem::BusWaveItem() = default;

BusWaveItem::~BusWaveItem() = default;

void BusWaveItem::setMembers(const QList<QBitArray> &members)
{
    prepareGeometryChange();
    m_members = members;
    update();
}

void BusWaveItem::setFormat(const DataFormat *format)
{
    if (std::exchange(m_format, format) != format)
        update();
}

QRectF BusWaveItem::boundingRect() const
{
    return {0, 0, CLOCK_PITCH * qreal(sampleCount()), ROW_HEIGHT};
}

void BusWaveItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    const QRectF &exposed = option->exposedRect;
    const qreal zoom = painter->transform().m11();
    const SampleRange range = exposedSamples(exposed, sampleCount(), kSpareSamples);
    qCDebug(KEO::lcWavePaint) << "dirty rectangle: " << exposed << "scale: " << zoom
                              << "start: " << range.first << "data size: " << sampleCount();
    painter->save();
    paintRowGround(*painter, exposed, kSeparatorY, isRowSelected());
    painter->setPen(QPen(QBrush(color()), 0, Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin));
    if (const auto grid = pixelGrid(*painter, color()))
        paintColumns(*painter, busColumns(m_members, sampleCount(), range, *grid), color());
    else
        drawLines(*painter, m_members, sampleCount(), range, zoom);
    if (m_format && range.first < range.end) {
        if (!m_font)
            m_font = ValueFont::shared();
        drawTexts(*painter, exposed, m_members, range, m_format->type(), *m_font);
    }
    painter->restore();
}

} // namespace WaveMonitor
