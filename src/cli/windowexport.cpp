#include "windowexport.h"

#include <QCoreApplication>
#include <QJsonObject>

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

std::optional<Error> WindowExport::prepare() const
{
    const Result<QString> directory = prepareDirectory(m_options.directory);
    return directory ? std::optional<Error>() : directory.error();
}

std::optional<Error> WindowExport::write(const CaptureLabel &label, const ExportCore &core,
                                         WaveMonitor::WindowContents contents, bool only)
{
    const qsizetype samples = contents.maxDataLength();
    Result<QStringList> written = writeCapture(m_options, label, core, contents);
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

} // namespace KEO
