#include "timesliderdata.h"

#include "timeslideritem.h"

namespace WaveMonitor {

TimeSliderData::~TimeSliderData()
{
    if (m_item)
        m_item->deleteLater();
}

TimeSliderItem *TimeSliderData::item()
{
    if (!m_item)
        m_item = new TimeSliderItem;
    return m_item;
}

int TimeSliderData::clock() const
{
    return m_item ? m_item->clock() : 0;
}

} // namespace WaveMonitor
