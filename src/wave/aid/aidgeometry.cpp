#include "aidgeometry.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>

#include <algorithm>

namespace WaveMonitor {

int aidRowHeight()
{
    QFont font = QApplication::font();
    font.setBold(true);      // as the row of the hits has it
    constexpr int kLine = 1; // between rows
    return std::max(kAidLeastRowHeight, QFontMetrics(font).height() + kLine);
}

} // namespace WaveMonitor
