#pragma once

#include <base/result.h>

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

/// Kinds of export file.
enum class ExportFormat { Csv, Vcd, Prn };

/// Clock period as the user gives it: a number and one of the units us, ns and ps.
struct ClockPeriod
{
    int number = 1; ///< 1 to 9999999
    QString unit = QStringLiteral("us");

    [[nodiscard]] qint64 picoseconds() const;
    bool operator==(const ClockPeriod &other) const = default;
};

/// What the command line asks for.
struct CaptureOptions
{
    enum class Task { Capture, ListCables, ShowHelp, ShowVersion };

    Task task = Task::Capture;
    QString file;             ///< core description, absolute path
    QString device;           ///< device model; may be empty
    QString cable;            ///< cable name; empty means the first that answers
    QList<int> cores;         ///< core numbers as the description gives them; empty means the first
    QList<int> chain{0};      ///< instruction codes, 0 for the target
    std::optional<int> delay; ///< ms before a lite core starts
    std::optional<qint64> forceAfter; ///< ms
    std::optional<qint64> timeout;    ///< ms
    std::optional<int> autoRounds;
    QList<ExportFormat> formats{ExportFormat::Vcd}; ///< each once, in the order given
    QString directory;                              ///< absolute path
    QString baseName;                               ///< word characters only
    ClockPeriod period;
    QString picture;              ///< PNG file, absolute path; empty: none
    QSize pictureSize{1280, 720}; ///< pixels
    bool json = false;
    bool quiet = false;
    QString helpText; ///< set for ShowHelp
};

/// Reads a command line whose first entry is the program's name. An error's message is one
/// sentence for the user.
Result<CaptureOptions> parseCaptureOptions(const QStringList &arguments);

} // namespace KEO
