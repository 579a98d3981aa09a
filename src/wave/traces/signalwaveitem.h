#pragma once

#include "waveitem.h"

#include <QBitArray>

namespace WaveMonitor {

/// The trace of a one-bit row, in scene coordinates (see viewergeometry.h), high at y 6 and low at
/// y 24. Draws what the exposed rectangle needs and shows the pixels that a line per sample gives.
class SignalWaveItem final : public WaveItem
{
public:
    /// Bit i is sample i; shared, not copied.
    void setData(const QBitArray &data);
    [[nodiscard]] const QBitArray &data() const { return m_data; }

    [[nodiscard]] QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget = nullptr) override;

private:
    QBitArray m_data;
};

} // namespace WaveMonitor
