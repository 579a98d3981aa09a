#include "capturepicture.h"

#include <base/wholefile.h>
#include <wave/wavemonitorwidget.h>

#include <QCoreApplication>
#include <QEvent>
#include <QPixmap>

#include <utility>

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

bool drawPicture(const QString &path, QSize size, int core, int window,
                 WaveMonitor::WindowContents contents)
{
    // As a window of its own the viewer would tell its least size to the platform, which has no
    // windows and says so on standard error.
    QWidget canvas;
    canvas.resize(size);
    WaveMonitor::WaveMonitorWidget viewer(0, &canvas);
    viewer.resize(size);
    viewer.loadWindow(std::move(contents));
    viewer.setTitle(window, core);
    canvas.show();
    deliverNotifications();
    viewer.zoomFit();
    deliverNotifications();
    const QPixmap picture = viewer.grab();
    return !writeWholeFile(path, LineEnds::AsTheyAre,
                           [&](QIODevice &file) { return picture.save(&file, "PNG"); });
}

} // namespace KEO
