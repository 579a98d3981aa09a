#include "startup.h"

#include <image/images.h>

#include <QApplication>
#include <QIcon>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("signalscope"));
    QApplication::setApplicationVersion(QStringLiteral(SIGNALSCOPE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("signalscope"));
    QApplication::setWindowIcon(KEO::programIcon());
    return KEO::Startup(KEO::parseStartupOptions(QApplication::arguments())).run();
}
