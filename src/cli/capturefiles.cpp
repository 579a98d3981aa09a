#include "capturefiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryFile>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::CaptureFiles)
};

QString suffix(const CaptureLabel &label, ExportFormat format)
{
    const QString round = label.round > 0 ? u'_' + QString::number(label.round) : QString();
    return round + exportSuffix(label.mode, format, label.core, label.window);
}

} // namespace

Result<QString> prepareDirectory(const QString &path)
{
    if (!QDir().mkpath(path))
        return Error{Error::File, Text::tr("The folder %1 can not be made.").arg(path)};
    QTemporaryFile probe(path + QStringLiteral("/.signalscope-XXXXXX"));
    if (!probe.open())
        return Error{
            Error::File,
            Text::tr("No file can be written to the folder %1: %2").arg(path, probe.errorString())};
    return path;
}

QString exportPath(const CaptureOptions &options, const CaptureLabel &label, ExportFormat format)
{
    return exportPath(options.directory, options.baseName + suffix(label, format), format);
}

QString picturePath(const CaptureOptions &options, const CaptureLabel &label, bool only)
{
    if (only)
        return options.picture;
    const qsizetype dot = options.picture.lastIndexOf(u'.');
    return options.picture.left(dot) + suffix(label, ExportFormat::Vcd) + options.picture.mid(dot);
}

ExportSettings exportSettings(const CaptureOptions &options, ExportFormat format)
{
    return {.format = format, .period = options.period, .buses = {}, .formulas = options.formulas};
}

Result<QStringList> writeCapture(const CaptureOptions &options, const CaptureLabel &label,
                                 const ExportCore &core,
                                 const WaveMonitor::WindowContents &contents)
{
    QStringList paths;
    for (const ExportFormat format : options.formats) {
        const QString path = exportPath(options, label, format);
        const ExportSettings settings = exportSettings(options, format);
        QString reason;
        if (!writeExport(path, settings, core, contents, &reason))
            return Error{Error::File,
                         Text::tr("The file %1 can not be written: %2").arg(path, reason)};
        paths.append(path);
    }
    return paths;
}

} // namespace KEO
