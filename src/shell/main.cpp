#include "startup.h"
#include "startupmarks.h"

#include <base/console.h>
#include <image/images.h>
#include <version/version.h>

#include <QApplication>
#include <QIcon>

int main(int argc, char **argv)
{
    KEO::holdStandardStreams();
    qInstallMessageHandler(&KEO::printMessage);
    KEO::markStartup("program loaded");
    QApplication application(argc, argv);
    KEO::markStartup("application made");
    QApplication::setApplicationName(QStringLiteral("signalscope"));
    QApplication::setApplicationVersion(KEO::versionText());
    QApplication::setDesktopFileName(QStringLiteral("signalscope"));
    QApplication::setWindowIcon(KEO::programIcon());
    return KEO::Startup(KEO::parseStartupOptions(QApplication::arguments())).run();
}
