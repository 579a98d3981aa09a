#include "captureprogram.h"

#include "bashcompletion.h"
#include "capturerun.h"
#include "descriptiontask.h"
#include "dryrun.h"
#include "listings.h"
#include "savedtasks.h"

#include <base/console.h>
#include <link/jtagsession.h>
#include <version/version.h>

#include <QJsonArray>

#include <cstdio>
#include <optional>
#include <utility>

namespace KEO {

namespace {

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
    TaskResult result = options.dryRun ? previewRun(options, output, report)
                                       : CaptureRun(options, windows, output, report).run();
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

ExitStatus refuseArguments(const Error &error, const QStringList &arguments)
{
    ResultOutput output(arguments.contains(QLatin1String("--json")) ? ResultStyle::Document
                                                                    : ResultStyle::Lines);
    const ExitStatus status = output.finish({ExitStatus::Usage, error.message, {}});
    static_cast<void>(writeText(stderr, QStringLiteral("Try --help.\n")));
    return status;
}

} // namespace KEO
