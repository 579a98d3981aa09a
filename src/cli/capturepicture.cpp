#include "capturepicture.h"

#include "capturesource.h"

#include <project/capturedisplay.h>
#include <wave/wavemonitorwidget.h>

#include <QCoreApplication>
#include <QEvent>
#include <QPixmap>

namespace KEO {

namespace {

// The viewer's parts tell one another of changes through the event queue. Only these calls are
// delivered: a reply from the server must not come in while its last one is being looked at.
void deliverNotifications()
{
    for (int round = 0; round < 4; ++round)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
}

} // namespace

bool drawPicture(const QString &path, QSize size, const CapturedCore &core, int window,
                 const QList<WaveMonitor::SignalElement> &elements)
{
    WaveMonitor::WaveMonitorWidget viewer(0, nullptr);
    viewer.resize(size);
    addCapturedRows(viewer, core.signals, elements);
    viewer.setTriggerPosition(core.trigger_pos);
    viewer.setTitle(window, core.index);
    viewer.show();
    deliverNotifications();
    viewer.zoomFit();
    deliverNotifications();
    return viewer.grab().save(path, "PNG");
}

} // namespace KEO
