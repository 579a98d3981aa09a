#pragma once

#include "exportwindow.h"
#include "plaincsvwriter.h"

#include <wave_data/clockperiod.h>

#include <QList>
#include <QRegularExpression>
#include <QString>

#include <optional>

namespace KEO {

/// Kinds of export file. The plain ones hold the same samples for programs that know the standards
/// alone.
enum class ExportFormat { Csv, Vcd, Prn, VcdPlain, CsvPlain, Fst };

using WaveMonitor::ClockPeriod;

/// Which kind of core the waves come from.
enum class ExportMode { Lite = 0, Standard = 1 };

/// Which columns a PRN file has. The first two values are the writer's selectors.
enum class PrnContent { All = 0, Shown = 1, Buses = 2 };

/// What an export tells of a core beyond its samples.
struct ExportCore
{
    int index = -1;             ///< as the description counts
    QString moduleName;         ///< scope in a VCD
    QString sampleClock;        ///< net name
    bool clockInverted = false; ///< the core samples on the falling edge
    int triggerSample = 0;      ///< of each window
};

/// How one window is written.
struct ExportSettings
{
    ExportFormat format = ExportFormat::Csv;
    ClockPeriod period;
    PrnContent prnContent = PrnContent::All;
    QList<int> buses;                   ///< ordinals of the buses in a PRN of buses, ascending
    Formulas formulas = Formulas::Kept; ///< in a plain CSV
};

/// The name of an export before its suffix is made of word characters of any script.
[[nodiscard]] QRegularExpression exportNamePattern();
/// \a text with an underscore in place of every other character.
[[nodiscard]] QString asExportName(QString text);

/// Tells one window's file from the others': "_core<core>_window<window>", both in decimal.
[[nodiscard]] QString windowSuffix(int core, int window);
/// The suffix of a file written from a core of kind \a mode. A lite core has one window, so that
/// its files carry none; but its PRN does, as programs that read it expect.
[[nodiscard]] QString exportSuffix(ExportMode mode, ExportFormat format, int core, int window);

/// `<directory>/<name>.<csv, vcd, prn, plain.vcd, plain.csv or fst>`, where \a name includes the
/// suffix.
[[nodiscard]] QString exportPath(const QString &directory, const QString &name,
                                 ExportFormat format);

/// Why files of this format can't be written on this computer, a sentence for people; nothing if
/// they can.
[[nodiscard]] std::optional<QString> exportObstacle(ExportFormat format);

/// Writes a window to \a path, whose content is replaced. A VCD of either kind and an FST count in
/// picoseconds, the other formats in the period's own unit. False, with the reason in the debug log
/// "keo.export" and, if given, in \a reason, when the file can't be written or \a path is something
/// else than a file.
[[nodiscard]] bool writeExport(const QString &path, const ExportSettings &settings,
                               const ExportCore &core, const ExportWindow &window,
                               QString *reason = nullptr);
/// The same to a device that is open for writing. Nothing on success, else the reason.
[[nodiscard]] std::optional<QString> writeExport(QIODevice &out, const ExportSettings &settings,
                                                 const ExportCore &core,
                                                 const ExportWindow &window);

} // namespace KEO
