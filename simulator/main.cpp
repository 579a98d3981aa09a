#include "boardcheck.h"
#include "boardfile.h"
#include "cable.h"
#include "logbook.h"
#include "parentwatch.h"
#include "server.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

namespace {

// Exit status.
constexpr int kFine = 0;
constexpr int kBadCommandLine = 1;
constexpr int kBadBoard = 2;
constexpr int kNameTaken = 3;

int serve(const QString &socketName, const QString &logPath)
{
    Sim::Logbook log(QCoreApplication::applicationName());
    const auto refuse = [&log](const QString &why, int status) {
        log.complain(why);
        return status;
    };

    Sim::BoardFile board;
    const QString path = Sim::boardPathInForce();
    if (path.isEmpty()) {
        log.complain(QStringLiteral("no board file: nothing hangs on the cable"));
    } else {
        const auto read = Sim::readBoardFile(path);
        if (!read)
            return refuse(read.error(), kBadBoard);
        board = *read;
    }
    const QString logFile = logPath.isEmpty() ? board.log : logPath;
    if (!logFile.isEmpty() && !log.openFile(logFile))
        return kBadBoard;

    const Sim::CableSetup setup = board.cables.value(socketName);
    QStringList notes;
    auto cable = Sim::Cable::build(
        setup, [&log](const QString &text) { log.complain(text); }, &notes);
    if (!cable)
        return refuse(cable.error(), kBadBoard);
    for (const QString &note : std::as_const(notes))
        log.complain(QStringLiteral("reads as 0: %1").arg(note));

    Sim::Server server(std::move(*cable), setup.faults, board.samplesPerSecond,
                       Sim::ChainStateFile(socketName, board.path), &log);
    if (const QString error = server.listen(socketName); !error.isEmpty())
        return refuse(error, kNameTaken);
    log.note(QStringLiteral("serves \"%1\"").arg(socketName));
    Sim::quitWhenInputEnds();
    const int status = QCoreApplication::exec();
    log.note(QStringLiteral("ends"));
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QFileInfo(application.applicationFilePath()).baseName());
    QCoreApplication::setApplicationVersion(QStringLiteral(SIM_VERSION));
    const QString socketName = QStringLiteral(SIM_SOCKET_NAME);

    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(
        QStringLiteral(
            "Simulated cable server: stands in for a cable and the board behind it.\n"
            "It serves the local socket \"%1\" until its standard input closes. The\n"
            "board file is named by the environment variable SIGNALSCOPE_BOARD; without\n"
            "it, board.json beside the program counts.\n\n"
            "Exit status: 0 fine, 1 bad command line, 2 bad board file, 3 the socket is\n"
            "taken.")
            .arg(socketName));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption local(QStringLiteral("local"),
                                   QStringLiteral("Serve clients of this computer and user."));
    const QCommandLineOption check(
        QStringLiteral("check"),
        QStringLiteral("Load everything a board file names, describe it, "
                       "and end."),
        QStringLiteral("BOARDFILE"));
    const QCommandLineOption logOption(QStringLiteral("log"),
                                       QStringLiteral("Append every packet to this file."),
                                       QStringLiteral("FILE"));
    parser.addOptions({local, check, logOption});
    parser.process(application);

    if (parser.isSet(check)) {
        QTextStream out(stdout);
        return Sim::checkBoard(parser.value(check), out) ? kFine : kBadBoard;
    }
    if (!parser.isSet(local) || !parser.positionalArguments().isEmpty()) {
        QTextStream(stderr) << QCoreApplication::applicationName()
                            << ": start it with -local; --help tells more\n";
        return kBadCommandLine;
    }
    return serve(socketName, parser.value(logOption));
}
