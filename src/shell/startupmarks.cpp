#include "startupmarks.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLoggingCategory>
#include <QMetaObject>
#include <QWidget>

#include <ctime>

namespace KEO {

namespace {

// Not for -debug: its messages are for who looks at a design.
Q_LOGGING_CATEGORY(lcStartup, "signalscope.startup", QtInfoMsg)

class PaintWatch final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            deleteLater();
            // Behind the painting of all that is in the window, which one turn does.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [] { markStartup("painted"); }, Qt::QueuedConnection);
        }
        return false;
    }
};

} // namespace

void markStartup(const char *done)
{
    qCDebug(lcStartup).noquote() << done + QStringLiteral(", %1 ms of processor time")
                                               .arg(1000.0 * double(std::clock()) / CLOCKS_PER_SEC,
                                                    0, 'f', 1);
}

void markFirstPaint(QWidget &window)
{
    if (lcStartup().isDebugEnabled())
        window.installEventFilter(new PaintWatch(&window));
}

} // namespace KEO
