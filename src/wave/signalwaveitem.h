#pragma once

#include <QBitArray>
#include <QColor>
#include <QGraphicsItem>

namespace WaveMonitor {

/// The trace of a one-bit row, in scene coordinates (see viewergeometry.h), high at y 6 and low at
/// y 24. Draws what the exposed rectangle needs and shows the pixels that a line per sample gives.
class SignalWaveItem final : public QGraphicsItem
{
public:
    SignalWaveItem();

    /// Bit i is sample i; shared, not copied.
    void setData(const QBitArray &data);
    [[nodiscard]] const QBitArray &data() const { return m_data; }
    void setSelected(bool selected); ///< of the row in the tree; hides QGraphicsItem's on purpose
    [[nodiscard]] bool isRowSelected() const { return m_selected; }
    void setColor(const QColor &color);
    [[nodiscard]] const QColor &color() const { return m_color; }

    [[nodiscard]] QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget = nullptr) override;

private:
    QBitArray m_data;
    bool m_selected = false;
    QColor m_color = Qt::green;
};

} // namespace WaveMonitor
