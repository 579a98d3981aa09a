#pragma once

#include <wave_data/windowcontents.h>

#include <QSize>
#include <QString>

namespace KEO {

/// Draws window \a window of \a core as the viewer shows it, zoomed so that all samples fit if they
/// can, into a PNG file of \a size pixels. False if the file can't be written. Needs a
/// QApplication.
bool drawPicture(const QString &path, QSize size, int core, int window,
                 WaveMonitor::WindowContents contents);

} // namespace KEO
