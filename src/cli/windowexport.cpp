#include "windowexport.h"

#include <base/console.h>
#include <base/wholefile.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::WindowExport)
};

} // namespace

WindowExport::WindowExport(const CaptureOptions &options, const PictureWriter &drawPicture,
                           ResultOutput &output, ProgressReport &report)
    : m_options(options), m_drawPicture(drawPicture), m_output(output), m_report(report)
{
}

std::optional<Error> WindowExport::prepare(qsizetype windows) const
{
    for (const ExportFormat format : m_options.formats) {
        if (const std::optional<QString> obstacle = exportObstacle(format))
            return Error{Error::Usage, *obstacle};
    }
    if (m_options.toStandardOutput && windows != 1)
        return Error{
            Error::Usage,
            Text::tr("--out - takes one window; there are %1.").arg(QString::number(windows))};
    QStringList folders;
    if (!m_options.formats.isEmpty() && !m_options.toStandardOutput)
        folders.append(m_options.directory);
    if (!m_options.picture.isEmpty())
        folders.append(QFileInfo(m_options.picture).path());
    for (const QString &folder : std::as_const(folders)) {
        const Result<QString> directory = prepareDirectory(folder);
        if (!directory)
            return directory.error();
    }
    return {};
}

std::optional<Error> WindowExport::write(const CaptureLabel &label, const ExportCore &core,
                                         WaveMonitor::WindowContents contents, bool only)
{
    const qsizetype samples = contents.maxDataLength();
    if (m_options.toStandardOutput)
        m_report.finish();
    Result<QStringList> written = m_options.toStandardOutput
                                      ? printCapture(core, contents)
                                      : writeCapture(m_options, label, core, contents);
    if (!written)
        return written.error();
    if (!m_options.picture.isEmpty()) {
        const QString path = picturePath(m_options, label, only);
        if (!m_drawPicture(path, m_options.pictureSize, label.core, label.window,
                           std::move(contents)))
            return Error{Error::File, Text::tr("The picture %1 can not be written.").arg(path)};
        written->append(path);
    }
    if (!m_output.isJson())
        m_report.finish();
    for (const QString &path : std::as_const(*written))
        m_output.line(path);
    QJsonObject entry{{"core", label.core},
                      {"window", label.window},
                      {"samples", samples},
                      {"trigger_position", core.triggerSample},
                      {"files", QJsonArray::fromStringList(*written)}};
    if (label.round > 0)
        entry.insert("round", label.round);
    m_captures.append(entry);
    return {};
}

Result<QStringList> WindowExport::printCapture(const ExportCore &core,
                                               const WaveMonitor::WindowContents &contents) const
{
    const auto fail = [](const QString &reason) {
        return Error{Error::File,
                     Text::tr("The samples can not be written to standard output: %1").arg(reason)};
    };
    sendRawBytes(stdout);
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered))
        return fail(out.errorString());
    const auto reason =
        writeExport(out, exportSettings(m_options, m_options.formats.first()), core, contents);
    if (reason)
        return fail(*reason);
    errno = 0;
    if (!out.flush())
        return fail(writeFault(out.errorString()));
    return QStringList();
}

} // namespace KEO
