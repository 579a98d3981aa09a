#pragma once

#include <QList>
#include <QString>

class QJsonObject;

namespace Sim {

class JsonWalk;

/// How the programmer, a command-line tool, knows a cable: it counts them, and each hangs on the
/// server of one socket.
struct ProgrammerCable
{
    int index;
    const char *socket;
};
inline constexpr ProgrammerCable kProgrammerCables[] = {{1, "keo1"}, {2, "keo"}, {0, "keolk7"}};

enum class ProgrammerAction { Scan, Download };

/// Something that goes wrong in a run of the programmer. A download that it hits leaves the device
/// without a bitstream, except under Flood.
struct ProgrammerFault
{
    enum class Kind {
        Exit,   ///< ends half way with the exit status `value`
        Error,  ///< prints `text` half way and ends with 0
        Killed, ///< ends half way as if killed
        Absent, ///< ends at once with the exit status `value`, without a word
        Cut,    ///< ends with the exit status `value` once `bytes` of the output are written
        Hang,   ///< stops half way and never ends, until its standard input closes
        Flood,  ///< prints `bytes` without a line end half way, then goes on
    };

    Kind kind = Kind::Exit;
    ProgrammerAction action = ProgrammerAction::Download;
    int nth = 1; ///< which run of the action since the power came on, or JsonWalk::kEvery
    int value = 0;
    int bytes = 0;
    QString text;
    QString name; ///< as in the board file, for the log
};

/// What the board file says of the programmer on one cable.
struct ProgrammerSetup
{
    int scanMs = 300;
    int downloadMs = 2000;
    QList<ProgrammerFault> faults; ///< of several that are due, the first counts
};

ProgrammerSetup readProgrammerSetup(JsonWalk &walk, const QJsonObject &object,
                                    const QString &place);

} // namespace Sim
