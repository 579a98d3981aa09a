#pragma once

#include <base/result.h>
#include <design/triggeroptions.h>
#include <export/exportfiles.h>

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

/// What the command line asks for.
struct CaptureOptions
{
    enum class Task {
        Capture,
        ExportSaved,
        Compare,
        Rehearse,
        Diff,
        ListCables,
        ListRecovery,
        ShowCompletion,
        ShowHelp,
        ShowVersion
    };

    Task task = Task::Capture;
    /// Core description, of Diff the older one, or the project of ExportSaved and Rehearse or the
    /// first one of Compare; absolute path.
    QString file;
    QString otherFile; ///< second project of Compare or description of Diff, absolute path
    QString project;   ///< project file to save, absolute path; empty: none
    QString device;    ///< device model; may be empty
    QString cable;     ///< cable name; empty means the first that answers
    QList<int> cores;  ///< core numbers as the description gives them; empty means the first
    QList<TriggerOptions> triggers;   ///< of cores named once each; none with --open
    QList<int> chain{0};              ///< instruction codes, 0 for the target
    std::optional<int> delay;         ///< ms before a lite core starts
    int pace = 0;                     ///< ms between two sections of the capture memory
    std::optional<qint64> forceAfter; ///< ms
    std::optional<qint64> timeout;    ///< ms
    std::optional<int> autoRounds;
    /// Each once, in the order given. None if the capture is saved and nothing else is asked for.
    QList<ExportFormat> formats{ExportFormat::Vcd};
    Formulas formulas = Formulas::Kept; ///< in a plain CSV
    /// The one format goes to standard output, and no file is made of it. Then at most one round
    /// and no JSON.
    bool toStandardOutput = false;
    QString directory; ///< absolute path
    QString baseName;  ///< word characters only
    ClockPeriod period;
    QString picture;              ///< PNG file, absolute path; empty: none
    QSize pictureSize{1280, 720}; ///< pixels
    QString transcript;           ///< file of all packets, absolute path; empty: none
    bool dryRun = false;          ///< of Capture: tell what would be sent, and stop there
    bool json = false;
    bool quiet = false;
    bool usesRunningServers = false; ///< starts none
    QString helpText;                ///< set for ShowHelp
};

/// Reads a command line whose first entry is the program's name. An error's message is one
/// sentence for the user.
Result<CaptureOptions> parseCaptureOptions(const QStringList &arguments);

} // namespace KEO
