#include "waveitem.h"

#include <utility>

namespace WaveMonitor {

WaveItem::WaveItem()
{
    setFlags(ItemIsSelectable | ItemUsesExtendedStyleOption);
}

void WaveItem::setSelected(bool selected)
{
    if (std::exchange(m_selected, selected) != selected)
        update();
}

void WaveItem::setColor(const QColor &color)
{
    if (std::exchange(m_color, color) != color)
        update();
}

} // namespace WaveMonitor
