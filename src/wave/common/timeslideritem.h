#pragma once

#include <QGraphicsObject>
#include <QPainterPath>
#include <QRectF>

namespace WaveMonitor {

/// The flag of a time marker on the ruler, with the marker's sample number above it. The tip of the
/// flag is the item's origin. Its shape is measured in pixels at every zoom; its position is the
/// ruler's business. Only the flag itself can be hit, the number cannot.
class TimeSliderItem final : public QGraphicsObject
{
    Q_OBJECT

public:
    TimeSliderItem();

    /// Sample index of the marker.
    [[nodiscard]] int clock() const { return m_clock; }
    void setClock(int clock);
    /// The marker whose values are shown; at most one of a ruler.
    [[nodiscard]] bool isActive() const { return m_active; } ///< hides QGraphicsItem's on purpose
    void setActive(bool active);

    [[nodiscard]] QRectF boundingRect() const override { return m_bounds; }
    [[nodiscard]] QPainterPath shape() const override { return m_path; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget = nullptr) override;

private:
    int m_clock = 0;
    bool m_active = false;
    QPainterPath m_path; ///< the flag
    QRectF m_bounds;     ///< of flag and number; kept, because a scene asks all the time
};

} // namespace WaveMonitor
