#pragma once

#include <QBitArray>
#include <QColor>
#include <QGraphicsItem>
#include <QList>

#include <memory>

namespace WaveMonitor {

class DataFormat;
class ValueFont;

/// The trace of a bus row: a hexagon for each run of equal values, with the value's text where it
/// fits. Same coordinates as SignalWaveItem.
class BusWaveItem final : public QGraphicsItem
{
public:
    BusWaveItem();
    ~BusWaveItem() override;

    /// The samples of each member, first member the most significant bit; shared, not copied. The
    /// first member's length is the bus's; a member without that sample reads as 0 there.
    void setMembers(const QList<QBitArray> &members);
    [[nodiscard]] const QList<QBitArray> &members() const { return m_members; }
    /// Borrowed from the bus node; null shows no texts.
    void setFormat(const DataFormat *format);
    void setSelected(bool selected); ///< of the row in the tree; hides QGraphicsItem's on purpose
    [[nodiscard]] bool isRowSelected() const { return m_selected; }
    void setColor(const QColor &color);
    [[nodiscard]] const QColor &color() const { return m_color; }

    [[nodiscard]] QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget = nullptr) override;

private:
    [[nodiscard]] qsizetype sampleCount() const
    {
        return m_members.isEmpty() ? 0 : m_members.first().size();
    }

    QList<QBitArray> m_members;
    const DataFormat *m_format = nullptr;
    bool m_selected = false;
    QColor m_color = Qt::green;
    std::shared_ptr<const ValueFont> m_font; ///< from the first text on
};

} // namespace WaveMonitor
