#include "captureoptions.h"
#include "captureprogram.h"

#include <base/console.h>
#include <base/logging.h>
#include <cli_picture/capturepicture.h>

#include <QApplication>
#include <QCoreApplication>

#include <memory>

namespace {

QStringList argumentList(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

// Only a picture needs the toolkit's widgets, and it is drawn without a display.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, bool draws)
{
    if (!draws)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The toolkit misses a user's session here, which machines without a display don't have.
    KEO::setLogOutput(KEO::LogOutput::Nothing);
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false); // a drawn picture is no end of the run
    return application;
}

} // namespace

int main(int argc, char **argv)
{
    KEO::holdStandardStreams();
    qInstallMessageHandler(&KEO::printMessage);
    // Read before the application takes out what it knows itself.
    const QStringList arguments = argumentList(argc, argv);
    const auto options = KEO::parseCaptureOptions(arguments);
    if (!options)
        return int(KEO::refuseArguments(options.error(), arguments));
    const auto application = makeApplication(argc, argv, !options->picture.isEmpty());
    KEO::setLogOutput(options->quiet ? KEO::LogOutput::Nothing : KEO::LogOutput::Warnings);
    QCoreApplication::setApplicationName(QStringLiteral("signalscope-capture"));
    return int(KEO::runCaptureProgram(*options, KEO::drawPicture));
}
