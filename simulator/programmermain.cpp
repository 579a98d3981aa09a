#include "boardfile.h"
#include "downloadrequest.h"
#include "logbook.h"
#include "programmer.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace {

// Exit status.
constexpr int kBadCommandLine = 1;
constexpr int kBadBoard = 2;

void writeOut(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fflush(stdout); // it is read while the tool runs, and after it was killed
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("burner_cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SIM_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Simulated programmer: loads bitstreams into the devices of a simulated\n"
                       "board. The board file is named by the environment variable\n"
                       "SIGNALSCOPE_BOARD; without it, board.json beside the program counts.\n\n"
                       "Exit status: 0 see the output, 1 bad command line, 2 bad board file, or\n"
                       "what a fault of the board file asks for."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption scan(QStringLiteral("scan"),
                                  QStringLiteral("Print the devices of the chain, and end."));
    parser.addOption(scan);
    Sim::addDownloadOptions(parser);
    parser.process(application);

    Sim::Logbook log(QCoreApplication::applicationName());
    const auto refuse = [&log](const QString &why, int status) {
        log.complain(why);
        return status;
    };
    if (!parser.positionalArguments().isEmpty())
        return refuse(
            QStringLiteral("\"%1\" is no option").arg(parser.positionalArguments().first()),
            kBadCommandLine);
    const bool isScan = parser.isSet(scan);
    if (isScan && parser.optionNames().size() > 1)
        return refuse(QStringLiteral("--scan stands alone"), kBadCommandLine);
    const auto request = isScan ? Sim::Outcome<Sim::DownloadRequest>(Sim::DownloadRequest())
                                : Sim::readDownloadRequest(parser);
    if (!request)
        return refuse(request.error(), kBadCommandLine);

    Sim::BoardFile board;
    if (const QString path = Sim::boardPathInForce(); !path.isEmpty()) {
        const auto read = Sim::readBoardFile(path);
        if (!read)
            return refuse(read.error(), kBadBoard);
        board = *read;
    }
    if (!board.log.isEmpty() && !log.openFile(board.log))
        return kBadBoard;
    log.note(QStringLiteral("runs ") +
             QCoreApplication::arguments().mid(1).join(QChar(QChar::Space)));
    Sim::Programmer programmer(board, writeOut, &log);
    return isScan ? programmer.scan() : programmer.download(*request);
}
