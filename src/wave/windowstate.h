#pragma once

#include <wave_data/dataformat.h>
#include <wave_data/layoutsnapshot.h>

#include <QDomElement>
#include <QList>

#include <optional>
#include <vector>

namespace WaveMonitor {

/// What stands in the upper left corner of the waves.
struct ScrollPlace
{
    qreal sample = 0; ///< with its fraction
    int top = 0;      ///< pixels above it
};

/// The view settings of one core and window, kept in memory over a new capture.
struct WindowState
{
    int core = 0; ///< -1 means none
    int window = 0;
    int nameWidth = 180;                  ///< pixels of the tree's column 0
    int valueWidth = 120;                 ///< pixels of column 1
    QDomElement layout;                   ///< `Layout`, see WindowContents; null when absent
    int format = DataFormat::Hexadecimal; ///< the default radix, a DataFormat::Type
    double zoomRate = 1.0;
    std::vector<HiddenRow> hidden;     ///< rows that the layout has no more
    QList<int> openBuses;              ///< rows of the layout
    std::optional<ScrollPlace> scroll; ///< nothing: as the viewer comes up
};

} // namespace WaveMonitor
