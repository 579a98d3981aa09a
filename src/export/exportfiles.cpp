#include "exportfiles.h"

#include "csvwriter.h"
#include "fstwriter.h"
#include "prnwriter.h"
#include "vcdwriter.h"

#include <base/logging.h>
#include <base/wholefile.h>

#include <QCoreApplication>
#include <QFileInfo>

#include <cerrno>

namespace KEO {

namespace {

// The toolkit's word characters leave out combining marks, without which some scripts are not
// words.
const QString kWordClass = QStringLiteral("\\w\\p{M}");

QRegularExpression wordPattern(const QString &pattern)
{
    return QRegularExpression(pattern.arg(kWordClass),
                              QRegularExpression::UseUnicodePropertiesOption);
}

QString extension(ExportFormat format)
{
    switch (format) {
    case ExportFormat::Csv:
        return QStringLiteral("csv");
    case ExportFormat::Vcd:
        return QStringLiteral("vcd");
    case ExportFormat::Prn:
        return QStringLiteral("prn");
    case ExportFormat::VcdPlain:
        return QStringLiteral("plain.vcd");
    case ExportFormat::CsvPlain:
        return QStringLiteral("plain.csv");
    case ExportFormat::Fst:
        return QStringLiteral("fst");
    }
    Q_UNREACHABLE();
}

PlainVcdHead plainHead(const ExportSettings &settings, const ExportCore &core)
{
    return {.moduleName = core.moduleName,
            .period = settings.period.picoseconds(),
            .triggerSample = core.triggerSample,
            .written = QDateTime::currentDateTime()};
}

/// By a writer of text, whose reason is the system's alone.
bool writeText(QIODevice &out, const ExportSettings &settings, const ExportCore &core,
               const ExportWindow &window)
{
    const ClockPeriod &period = settings.period;
    switch (settings.format) {
    case ExportFormat::Csv:
        return writeCsv(out, period.unit, period.number, window);
    case ExportFormat::Vcd:
        return writeVcd(out, core.moduleName, core.sampleClock, core.clockInverted,
                        QStringLiteral("ps"), period.picoseconds(), core.triggerSample, window,
                        QDateTime::currentDateTime());
    case ExportFormat::Prn:
        if (settings.prnContent == PrnContent::Buses)
            return writePrnBuses(out, period.unit, period.number, window, settings.buses);
        return writePrn(out, period.unit, period.number, window, int(settings.prnContent));
    case ExportFormat::VcdPlain:
        return writePlainVcd(out, plainHead(settings, core), window);
    case ExportFormat::CsvPlain:
        return writePlainCsv(out, period.unit, period.number, core.triggerSample, settings.formulas,
                             window);
    case ExportFormat::Fst:
        break;
    }
    Q_UNREACHABLE();
}

} // namespace

QRegularExpression exportNamePattern()
{
    return wordPattern(QStringLiteral("[%1]+"));
}

QString asExportName(QString text)
{
    return text.replace(wordPattern(QStringLiteral("[^%1]")), QStringLiteral("_"));
}

QString windowSuffix(int core, int window)
{
    return QStringLiteral("_core%1_window%2").arg(core).arg(window);
}

QString exportSuffix(ExportMode mode, ExportFormat format, int core, int window)
{
    return mode == ExportMode::Lite && format != ExportFormat::Prn ? QString()
                                                                   : windowSuffix(core, window);
}

QString exportPath(const QString &directory, const QString &name, ExportFormat format)
{
    return QStringLiteral("%1/%2.%3").arg(directory, name, extension(format));
}

std::optional<QString> exportObstacle(ExportFormat format)
{
    return format == ExportFormat::Fst ? fstObstacle() : std::nullopt;
}

bool writeExport(const QString &path, const ExportSettings &settings, const ExportCore &core,
                 const ExportWindow &window, QString *reason)
{
    const auto fail = [&](const QString &why) {
        qCDebug(lcExport).noquote() << path << "can't be written:" << why;
        if (reason)
            *reason = why;
        return false;
    };
    const QFileInfo present(path);
    if (present.exists() && !present.isFile()) // a pipe without a reader would never open
        return fail(QCoreApplication::translate("KEO::ExportFiles", "it is no file"));
    const auto lineEnds =
        settings.format == ExportFormat::Fst ? LineEnds::AsTheyAre : LineEnds::Native;
    std::optional<QString> fault; // none yet: the file itself may fail
    const auto error = writeWholeFile(path, lineEnds, [&](QIODevice &file) {
        fault = writeExport(file, settings, core, window);
        return !fault;
    });
    return !error || fail(fault ? *fault : qt_error_string(errno));
}

std::optional<QString> writeExport(QIODevice &out, const ExportSettings &settings,
                                   const ExportCore &core, const ExportWindow &window)
{
    if (settings.format == ExportFormat::Fst)
        return writeFst(out, plainHead(settings, core), window);
    errno = 0;
    if (writeText(out, settings, core, window))
        return std::nullopt;
    return writeFault(out.errorString());
}

} // namespace KEO
