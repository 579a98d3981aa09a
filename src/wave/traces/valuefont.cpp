#include "valuefont.h"

#include <QFontInfo>

#include <algorithm>
#include <limits>

namespace WaveMonitor {

namespace {

constexpr qreal kUnknown = std::numeric_limits<qreal>::infinity();
constexpr qreal kRounding = 1; ///< font engines round the borders of glyphs to pixels

} // namespace

std::shared_ptr<const ValueFont> ValueFont::shared()
{
    // Not kept for good: a font must not outlive the application object.
    static std::weak_ptr<const ValueFont> existing;
    std::shared_ptr<const ValueFont> font = existing.lock();
    if (!font) {
        font = std::make_shared<const ValueFont>();
        existing = font;
    }
    return font;
}

ValueFont::ValueFont()
    : m_font(QStringLiteral("Courier New"), 9),
      m_metrics(m_font),
      m_greatestWidth(kUnknown),
      m_greatestHeight(kUnknown)
{
    if (!QFontInfo(m_font).fixedPitch())
        return;
    QRectF extremes; // leftmost left, rightmost right and so on of all digits
    qreal leastRight = kUnknown;
    qreal greatestLeft = -kUnknown;
    for (const QChar digit : QStringLiteral("0123456789ABCDEF-")) {
        const QRectF ink = m_metrics.boundingRect(QString(digit));
        extremes |= ink;
        leastRight = std::min(leastRight, ink.right());
        greatestLeft = std::max(greatestLeft, ink.left());
    }
    m_pitch = m_metrics.horizontalAdvance(u'0');
    m_leastWidth = leastRight - greatestLeft - 2 * kRounding;
    m_greatestWidth = extremes.width() + 2 * kRounding;
    m_greatestHeight = extremes.height() + 2 * kRounding;
}

bool ValueFont::isTooLong(qsizetype length, qreal width) const
{
    return length > 0 && qreal(length - 1) * m_pitch + m_leastWidth > width;
}

bool ValueFont::fits(const QString &text, const QSizeF &room) const
{
    const qreal greatest = qreal(text.size() - 1) * m_pitch + m_greatestWidth;
    if (greatest <= room.width() && m_greatestHeight <= room.height())
        return true;
    const QRectF measured = m_metrics.boundingRect(text);
    return measured.width() <= room.width() && measured.height() <= room.height();
}

} // namespace WaveMonitor
