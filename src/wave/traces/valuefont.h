#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QSizeF>
#include <QString>

#include <memory>

namespace WaveMonitor {

/// The font of bus values, and whether a value's text fits in a space. Measuring a text costs more
/// than drawing a run, so most answers come from bounds that were measured once. Pixels.
class ValueFont final
{
public:
    /// The one that all bus items share while there are any.
    static std::shared_ptr<const ValueFont> shared();

    ValueFont();

    [[nodiscard]] const QFont &font() const { return m_font; }
    /// True only if no text of \a length characters fits in \a width, whatever its digits.
    [[nodiscard]] bool isTooLong(qsizetype length, qreal width) const;
    /// Whether the text, as QFontMetricsF::boundingRect measures it, fits in \a room.
    [[nodiscard]] bool fits(const QString &text, const QSizeF &room) const;

private:
    QFont m_font;
    QFontMetricsF m_metrics;
    // For text of one or more digits in a font of fixed pitch, otherwise bounds that decide
    // nothing: width = (length - 1) * m_pitch + something between the two.
    qreal m_pitch = 0;
    qreal m_leastWidth = 0;
    qreal m_greatestWidth;
    qreal m_greatestHeight;
};

} // namespace WaveMonitor
