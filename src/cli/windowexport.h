#pragma once

#include "capturefiles.h"
#include "captureoptions.h"
#include "progressreport.h"
#include "resultoutput.h"

#include <base/result.h>
#include <wave_data/windowcontents.h>

#include <QJsonArray>
#include <QSize>
#include <QString>

#include <functional>
#include <optional>

namespace KEO {

/// Draws a captured window as the viewer shows it into a PNG file; false if that can't be written.
/// Handed in, since it needs widgets and the tasks do without.
using PictureWriter = std::function<bool(const QString &path, QSize size, int core, int window,
                                         WaveMonitor::WindowContents contents)>;

/// Writes windows in the formats that the options ask for, and tells which files came of it.
/// Borrows all that it is given.
class WindowExport final
{
public:
    /// \a drawPicture is needed when the options ask for a picture.
    WindowExport(const CaptureOptions &options, const PictureWriter &drawPicture,
                 ResultOutput &output, ProgressReport &report);

    /// Makes the folders of the files if they are missing. Tells, before anything is done, that so
    /// many windows can't be written as the options ask.
    [[nodiscard]] std::optional<Error> prepare(qsizetype windows) const;
    /// Writes one window, the \a only one or one of several, and prints the paths, or else the
    /// window itself. What was written before an error stays.
    [[nodiscard]] std::optional<Error> write(const CaptureLabel &label, const ExportCore &core,
                                             WaveMonitor::WindowContents contents, bool only);
    /// One object a written window, for --json.
    [[nodiscard]] const QJsonArray &captures() const { return m_captures; }

private:
    [[nodiscard]] Result<QStringList>
    printCapture(const ExportCore &core, const WaveMonitor::WindowContents &contents) const;

    const CaptureOptions &m_options;
    const PictureWriter &m_drawPicture;
    ResultOutput &m_output;
    ProgressReport &m_report;
    QJsonArray m_captures;
};

} // namespace KEO
