#pragma once

#include "waveitem.h"

#include <QBitArray>
#include <QList>

#include <memory>

namespace WaveMonitor {

class DataFormat;
class ValueFont;

/// The trace of a bus row: a hexagon for each run of equal values, with the value's text where it
/// fits. Same coordinates as SignalWaveItem.
class BusWaveItem final : public WaveItem
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
    std::shared_ptr<const ValueFont> m_font; ///< from the first text on
};

} // namespace WaveMonitor
