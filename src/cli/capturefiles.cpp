#include "capturefiles.h"

#include <export/csvwriter.h>
#include <export/prnwriter.h>
#include <export/vcdwriter.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryFile>

namespace KEO {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("CaptureFiles", text);
}

// All signals and buses, as the export dialog offers first.
constexpr int kPrnAll = 0;

QString extension(ExportFormat format)
{
    switch (format) {
    case ExportFormat::Csv:
        return QStringLiteral("csv");
    case ExportFormat::Vcd:
        return QStringLiteral("vcd");
    case ExportFormat::Prn:
        return QStringLiteral("prn");
    }
    Q_UNREACHABLE();
}

QString suffix(const CaptureLabel &label, ExportFormat format)
{
    const QString round = label.round > 0 ? u'_' + QString::number(label.round) : QString();
    if (label.kind == CapturedCore::Kind::Lite && format != ExportFormat::Prn)
        return round;
    return QStringLiteral("%1_core%2_window%3")
        .arg(round, QString::number(label.core), QString::number(label.window));
}

bool write(const QString &path, const CaptureOptions &options, ExportFormat format,
           const CapturedCore &core, const WaveMonitor::WindowContents &contents)
{
    const ClockPeriod &period = options.period;
    switch (format) {
    case ExportFormat::Csv:
        return writeCsv(path, period.unit, period.number, contents);
    case ExportFormat::Vcd:
        return writeVcd(path, core.module_name, core.sample_clock, core.trig_type == 1,
                        QStringLiteral("ps"), period.picoseconds(), core.trigger_pos, contents);
    case ExportFormat::Prn:
        return writePrn(path, period.unit, period.number, contents, kPrnAll);
    }
    Q_UNREACHABLE();
}

} // namespace

Result<QString> prepareDirectory(const QString &path)
{
    if (!QDir().mkpath(path))
        return Error{Error::File, tr("The folder %1 can not be made.").arg(path)};
    QTemporaryFile probe(path + QStringLiteral("/.signalscope-XXXXXX"));
    if (!probe.open())
        return Error{
            Error::File,
            tr("No file can be written to the folder %1: %2").arg(path, probe.errorString())};
    return path;
}

QString exportPath(const CaptureOptions &options, const CaptureLabel &label, ExportFormat format)
{
    return QStringLiteral("%1/%2%3.%4")
        .arg(options.directory, options.baseName, suffix(label, format), extension(format));
}

QString picturePath(const CaptureOptions &options, const CaptureLabel &label, bool only)
{
    if (only)
        return options.picture;
    const qsizetype dot = options.picture.lastIndexOf(u'.');
    return options.picture.left(dot) + suffix(label, ExportFormat::Vcd) + options.picture.mid(dot);
}

Result<QStringList> writeCapture(const CaptureOptions &options, const CaptureLabel &label,
                                 const CapturedCore &core,
                                 const WaveMonitor::WindowContents &contents)
{
    QStringList paths;
    for (const ExportFormat format : options.formats) {
        const QString path = exportPath(options, label, format);
        if (!write(path, options, format, core, contents))
            return Error{Error::File, tr("The file %1 can not be written.").arg(path)};
        paths.append(path);
    }
    return paths;
}

} // namespace KEO
