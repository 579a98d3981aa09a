#include "captureoptions.h"
#include "captureprogram.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("signalscope-capture"));

    const auto options = KEO::parseCaptureOptions(QCoreApplication::arguments());
    if (!options) {
        std::fprintf(stderr, "signalscope-capture: %s\nTry --help.\n",
                     qPrintable(options.error().message));
        return int(KEO::ExitStatus::Usage);
    }
    return int(KEO::CaptureProgram(*options).run());
}
