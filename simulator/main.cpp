#include "boardcheck.h"
#include "boardfile.h"
#include "cable.h"
#include "fileread.h"
#include "logbook.h"
#include "parentwatch.h"
#include "replay.h"
#include "server.h"
#include "transcriptfile.h"

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

/// What a server is started with.
struct Orders
{
    QString socketName;
    QString log;        ///< file; empty: the board file's
    QString transcript; ///< file to replay in place of a board; may be empty
};

/// The board in force. Without a file, or in front of a transcript, nothing hangs on the cable.
Sim::Outcome<Sim::BoardFile> boardFor(const Orders &orders, Sim::Logbook &log)
{
    const QString path = Sim::boardPathInForce();
    if (!orders.transcript.isEmpty())
        return Sim::BoardFile();
    if (!path.isEmpty())
        return Sim::readBoardFile(path);
    log.complain(QStringLiteral("no board file: nothing hangs on the cable"));
    return Sim::BoardFile();
}

Sim::Outcome<Sim::Replay> readReplay(const Orders &orders)
{
    // Programs end theirs at 64 MiB; mail and editors add little. In memory it takes some 30 times
    // as much at worst.
    constexpr qint64 kMaxBytes = 80 * 1024 * 1024;
    const auto text = Sim::readWholeFile(orders.transcript, kMaxBytes);
    if (!text)
        return Sim::Failure{text.error()};
    const auto lines = Sim::readTranscript(*text, orders.socketName);
    if (!lines)
        return Sim::Failure{orders.transcript + QStringLiteral(": ") + lines.error()};
    return Sim::Replay(*lines, orders.transcript);
}

int serve(const Orders &orders)
{
    const QString &socketName = orders.socketName;
    Sim::Logbook log(QCoreApplication::applicationName());
    const auto refuse = [&log](const QString &why, int status) {
        log.complain(why);
        return status;
    };

    const auto board = boardFor(orders, log);
    if (!board)
        return refuse(board.error(), kBadBoard);
    const QString logFile = orders.log.isEmpty() ? board->log : orders.log;
    if (!logFile.isEmpty() && !log.openFile(logFile))
        return kBadBoard;

    const Sim::CableSetup setup = board->cables.value(socketName);
    QStringList notes;
    auto cable = Sim::Cable::build(
        setup, [&log](const QString &text) { log.complain(text); }, &notes);
    if (!cable)
        return refuse(cable.error(), kBadBoard);
    for (const QString &note : std::as_const(notes))
        log.complain(QStringLiteral("reads as 0: %1").arg(note));

    Sim::Server server(std::move(*cable), setup.faults, board->samplesPerSecond,
                       Sim::ChainStateFile(socketName, board->path), &log);
    if (!orders.transcript.isEmpty()) {
        const auto replay = readReplay(orders);
        if (!replay)
            return refuse(replay.error(), kBadBoard);
        if (replay->isEmpty())
            log.complain(QStringLiteral("%1 tells nothing of \"%2\": nothing hangs on the cable")
                             .arg(orders.transcript, socketName));
        else
            server.play(*replay);
    }
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
            "it, board.json beside the program counts. SIGNALSCOPE_REPLAY names a\n"
            "transcript to replay in place of a board, as --replay does.\n\n"
            "Exit status: 0 fine, 1 bad command line, 2 bad board file or transcript, 3 the\n"
            "socket is taken.")
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
    const QCommandLineOption replay(
        QStringLiteral("replay"),
        QStringLiteral("Answer as the server of this transcript did, and tell where a program "
                       "asks differently."),
        QStringLiteral("FILE"));
    parser.addOptions({local, check, logOption, replay});
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
    return serve(
        {socketName, parser.value(logOption),
         parser.isSet(replay) ? parser.value(replay) : qEnvironmentVariable("SIGNALSCOPE_REPLAY")});
}
