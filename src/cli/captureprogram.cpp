#include "captureprogram.h"

#include "capturerun.h"
#include "dryrun.h"
#include "listings.h"
#include "savedtasks.h"

#include <link/jtagsession.h>

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
        return listCables(output);
    case CaptureOptions::Task::ListRecovery:
        return listRecovery(output);
    case CaptureOptions::Task::ExportSaved:
        return exportSaved(options, windows);
    case CaptureOptions::Task::Compare:
        return compareSaved(options, output);
    case CaptureOptions::Task::Capture:
    case CaptureOptions::Task::ShowHelp:
    case CaptureOptions::Task::ShowVersion:
        break;
    }
    if (options.dryRun)
        return previewRun(options, output, report);
    if (!options.transcript.isEmpty()) {
        const auto error = JtagSession::instance()->startTranscript(options.transcript);
        if (error)
            return {ExitStatus::FileError, error->message, {}};
    }
    return CaptureRun(options, windows, output, report).run();
}

} // namespace

ExitStatus runCaptureProgram(const CaptureOptions &options, const PictureWriter &drawPicture)
{
    using Task = CaptureOptions::Task;
    if (options.task == Task::ShowHelp || options.task == Task::ShowVersion) {
        ResultOutput text(false);
        text.line(options.task == Task::ShowHelp
                      ? options.helpText
                      : QStringLiteral("signalscope-capture " SIGNALSCOPE_VERSION));
        return text.finish({});
    }
    ResultOutput output(options.json);
    TaskResult result = runTask(options, drawPicture, output);
    JtagSession::instance()->disconnectAll();
    JtagSession::instance()->stopTranscript();
    return output.finish(std::move(result));
}

} // namespace KEO
