#pragma once

#include <QMetaType>
#include <QPointer>

namespace WaveMonitor {

class TimeSliderItem;

/// Handle of a time marker. Owns its item and survives it: the scene may delete the item first.
class TimeSliderData final
{
public:
    TimeSliderData() = default;
    TimeSliderData(const TimeSliderData &) = delete;
    TimeSliderData &operator=(const TimeSliderData &) = delete;
    ~TimeSliderData(); ///< deletes the item later, since removal can run from the item's own event

    /// The marker's item; a new one when there is none.
    TimeSliderItem *item();
    /// Sample index of the marker, 0 without an item.
    [[nodiscard]] int clock() const;

private:
    QPointer<TimeSliderItem> m_item;
};

} // namespace WaveMonitor

Q_DECLARE_METATYPE(WaveMonitor::TimeSliderData *)
