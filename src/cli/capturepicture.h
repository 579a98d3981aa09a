#pragma once

#include <wave/signalelement.h>

#include <QList>
#include <QSize>
#include <QString>

namespace KEO {

struct CapturedCore;

/// Draws a captured window as the viewer shows it, zoomed so that all samples fit if they can, into
/// a PNG file of \a size pixels. False if the file can't be written. Needs a QApplication.
bool drawPicture(const QString &path, QSize size, const CapturedCore &core, int window,
                 const QList<WaveMonitor::SignalElement> &elements);

} // namespace KEO
