#pragma once

#include <QPainterPath>
#include <QProxyStyle>
#include <QRect>

namespace WaveMonitor {

/// The look of the tree during a drag: the application's own style with a drop line above or below
/// a row. The line is drawn along with every primitive, because each one may paint over the last.
class TreeProxyStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    enum class Mode : int { NoLine = 0, UnderRow = 1, OverRow = 2 };

    TreeProxyStyle();

    void setEnabled(bool enabled) { m_enabled = enabled; }
    void setMode(Mode mode) { m_mode = mode; }
    [[nodiscard]] Mode mode() const { return m_mode; }
    /// The row or rows that the line refers to, in viewport pixels.
    void setRect(const QRect &rect) { m_rect = rect; }
    [[nodiscard]] const QRect &rect() const { return m_rect; }

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget = nullptr) const override;

private:
    void drawDropLine(const QStyleOption &option, QPainter *painter, const QWidget *widget) const;

    bool m_enabled = false;
    QPainterPath m_marker; ///< points at the line's left end
    Mode m_mode = Mode::NoLine;
    QRect m_rect;
};

} // namespace WaveMonitor
