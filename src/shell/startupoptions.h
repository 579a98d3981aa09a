#pragma once

#include <capture/capturepace.h>

#include <QString>
#include <QStringList>

namespace KEO {

/// What the tool flow says on the command line. All empty until named.
struct StartupOptions
{
    QString keoFile;  ///< `-keo`: core description or project file to open
    QString startDir; ///< `-dir`: where the open dialog starts
    QString family;   ///< `-family`: device family; only with `-open` it may be missing
    QString device;   ///< `-device`: device model; the same
    QString fsFile;   ///< `-fs`: bitstream
    /// `-pace`: ms before each section of the capture memory; 0 to kMaxSectionPause, else as if it
    /// were not there.
    int sectionPause = CapturePace().sectionPause;
    /// `-open`: as `-keo`, which counts before it, but for a start by hand: without a family or a
    /// device, those of the last start count.
    QString openFile = {};
    QString transcript = {}; ///< `-transcript`: file of all packets to and from the cable servers

    bool operator==(const StartupOptions &other) const = default;
};

/// Reads a command line whose first entry is the program's name. Every argument is looked at, those
/// that were taken as a value as well, so `-keo -dir x` sets both; the last mention of an option
/// counts, one with nothing behind it does not, and what is no option is passed over.
[[nodiscard]] StartupOptions parseStartupOptions(const QStringList &arguments);

/// Does the command line ask for the debug messages? `-debug` counts wherever it stands.
[[nodiscard]] bool wantsDebugMessages(const QStringList &arguments);

} // namespace KEO
