#include "parentwatch.h"

#include <QCoreApplication>

#include <cstdio>
#include <thread>

namespace Sim {

void quitWhenInputEnds()
{
    // A thread, because waiting on standard input works with no event loop on every platform. It is
    // never joined: it can only end with the input.
    std::thread([] {
        while (std::getchar() != EOF) {
        }
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    }).detach();
}

} // namespace Sim
