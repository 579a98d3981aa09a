#include "captureprogram.h"

#include "bashcompletion.h"
#include "capturerun.h"
#include "descriptiontask.h"
#include "dryrun.h"
#include "listings.h"
#include "savedtasks.h"

#include <link/jtagsession.h>
#include <version/version.h>

#include <QJsonArray>

#include <optional>
#include <utility>

namespace KEO {

namespace {

/// A run on a design, or its preview.
TaskResult runDesign(const CaptureOptions &options, WindowExport &windows, ResultOutput &output,
                     ProgressReport &report)
{
    if (options.dryRun)
        return previewRun(options, output, report);
    if (!options.transcript.isEmpty()) {
        const auto error = JtagSession::instance()->startTranscript(options.transcript);
        if (error)
            return {ExitStatus::FileError, error->message, {}};
    }
    return CaptureRun(options, windows, output, report).run();
}

TaskResult runTask(const CaptureOptions &options, const PictureWriter &drawPicture,
                   ResultOutput &output)
{
    ProgressReport report(ProgressReport::styleFor(options.quiet));
    WindowExport windows(options, drawPicture, output, report);
    switch (options.task) {
    case CaptureOptions::Task::ListCables:
        return listCables(options, output);
    case CaptureOptions::Task::ListRecovery:
        return listRecovery(output);
    case CaptureOptions::Task::ExportSaved:
        return exportSaved(options, windows);
    case CaptureOptions::Task::Compare:
        return compareSaved(options, output);
    case CaptureOptions::Task::Rehearse:
        return rehearseSaved(options, output);
    case CaptureOptions::Task::Diff:
        return diffDescriptions(options, output);
    case CaptureOptions::Task::Capture:
    case CaptureOptions::Task::ShowCompletion:
    case CaptureOptions::Task::ShowHelp:
    case CaptureOptions::Task::ShowVersion:
        break;
    }
    TaskResult result = runDesign(options, windows, output, report);
    if (!report.warnings().isEmpty())
        result.document.insert("warnings", QJsonArray::fromStringList(report.warnings()));
    return result;
}

/// What the program says of itself; nothing for a task that is work.
std::optional<QString> ownText(const CaptureOptions &options)
{
    switch (options.task) {
    case CaptureOptions::Task::ShowCompletion:
        return bashCompletion();
    case CaptureOptions::Task::ShowHelp:
        return options.helpText;
    case CaptureOptions::Task::ShowVersion:
        return QStringLiteral("signalscope-capture ") + versionText();
    default:
        return {};
    }
}

} // namespace

ExitStatus runCaptureProgram(const CaptureOptions &options, const PictureWriter &drawPicture)
{
    if (const auto text = ownText(options)) {
        ResultOutput output(ResultStyle::Lines);
        output.line(*text);
        return output.finish({});
    }
    ResultOutput output(options.json               ? ResultStyle::Document
                        : options.toStandardOutput ? ResultStyle::Nothing
                                                   : ResultStyle::Lines);
    TaskResult result = runTask(options, drawPicture, output);
    JtagSession::instance()->disconnectAll();
    JtagSession::instance()->stopTranscript();
    return output.finish(std::move(result));
}

} // namespace KEO
