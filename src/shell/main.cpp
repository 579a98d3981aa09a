#include "startup.h"

#include <base/console.h>
#include <image/images.h>
#include <version/version.h>

#include <QApplication>
#include <QIcon>

int main(int argc, char **argv)
{
    qInstallMessageHandler(&KEO::printMessage);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("signalscope"));
    QApplication::setApplicationVersion(KEO::versionText());
    QApplication::setDesktopFileName(QStringLiteral("signalscope"));
    QApplication::setWindowIcon(KEO::programIcon());
    return KEO::Startup(KEO::parseStartupOptions(QApplication::arguments())).run();
}
