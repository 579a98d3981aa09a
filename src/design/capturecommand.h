#pragma once

#include "triggeroptions.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace KEO {

/// Where a capture happens.
struct CommandPlace
{
    QString program;     ///< the capture program, as a shell finds it
    QString description; ///< absolute path
    QString cable;       ///< name; empty: none
    QList<int> chain{0}; ///< instruction codes, 0 for the target
    int pace = 0;        ///< ms between two sections; 0: as fast as the server answers
};

/// The command line of signalscope-capture that captures with \a settings whatever those of the
/// description are: the program, all settings as options, and the description.
[[nodiscard]] QStringList captureArguments(const RunSettings &settings, const CommandPlace &place);

/// One line for a POSIX shell, which splits it into \a arguments again.
[[nodiscard]] QString shellCommand(const QStringList &arguments);

} // namespace KEO
