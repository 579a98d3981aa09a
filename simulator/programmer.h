#pragma once

#include "boardfile.h"
#include "downloadrequest.h"
#include "logbook.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <optional>

namespace Sim {

class ChainStateFile;

/// The programmer behind its command line: looks at the board of a board file, changes what is in
/// its devices, and says so in the way of such tools. What is wrong with the board or the file goes
/// into the output as "Error: ...", with the exit status 0; only the ways out that a fault asks for
/// have another one. Functions return the exit status.
class Programmer final
{
public:
    using Write = std::function<void(const QByteArray &)>;

    /// \a write takes the output, ready to be read at once. \a log is borrowed.
    Programmer(const BoardFile &board, Write write, Logbook *log);

    int scan();
    int download(const DownloadRequest &request);

private:
    /// A piece of output and when it comes, in ms since the start.
    struct Step
    {
        QByteArray text;
        qint64 at = 0;
    };

    static QList<Step> scanSteps(const CableSetup &setup);
    static QList<Step> downloadSteps(const DeviceSetup &device, const ProgrammerSetup &programmer);

    /// Counts the run and names the first fault that is due.
    std::optional<ProgrammerFault> beginRun(ProgrammerAction action, const CableSetup &setup,
                                            const ChainStateFile &file);
    bool setDevice(int position, bool isProgrammed, const ChainStateFile &file);
    /// Gives out the steps; the exit status when a fault ends the run before the last one is out.
    std::optional<int> play(const QList<Step> &steps, const std::optional<ProgrammerFault> &fault);
    /// What a fault does half way; as above.
    std::optional<int> strike(const ProgrammerFault &fault);
    int refuse(const QString &why);

    BoardFile m_board;
    Write m_write;
    Logbook *m_log; // borrowed
};

} // namespace Sim
