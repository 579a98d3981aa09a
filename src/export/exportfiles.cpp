#include "exportfiles.h"

#include "csvwriter.h"
#include "prnwriter.h"
#include "vcdwriter.h"

#include <base/logging.h>

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
    }
    Q_UNREACHABLE();
}

bool write(const QString &path, const ExportSettings &settings, const ExportCore &core,
           const ExportWindow &window)
{
    const ClockPeriod &period = settings.period;
    switch (settings.format) {
    case ExportFormat::Csv:
        return writeCsv(path, period.unit, period.number, window);
    case ExportFormat::Vcd:
        return writeVcd(path, core.moduleName, core.sampleClock, core.clockInverted,
                        QStringLiteral("ps"), period.picoseconds(), core.triggerSample, window);
    case ExportFormat::Prn:
        if (settings.prnContent == PrnContent::Buses)
            return writePrnBuses(path, period.unit, period.number, window, settings.buses);
        return writePrn(path, period.unit, period.number, window, int(settings.prnContent));
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
    return write(path, settings, core, window) || fail(qt_error_string(errno));
}

} // namespace KEO
