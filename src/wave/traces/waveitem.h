#pragma once

#include <QColor>
#include <QGraphicsItem>

namespace WaveMonitor {

/// What the traces of one-bit rows and of buses have in common: a colour, and whether the row is
/// selected in the tree. Traces draw only what the exposed rectangle needs.
class WaveItem : public QGraphicsItem
{
public:
    WaveItem();

    void setSelected(bool selected); ///< of the row in the tree; hides QGraphicsItem's on purpose
    [[nodiscard]] bool isRowSelected() const { return m_selected; }
    void setColor(const QColor &color);
    [[nodiscard]] const QColor &color() const { return m_color; }

private:
    bool m_selected = false;
    QColor m_color = Qt::green;
};

} // namespace WaveMonitor
