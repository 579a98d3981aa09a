#include "savedtasks.h"

#include "projectcomparison.h"
#include "windowexport.h"

#include <design/savedcapture.h>

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::SavedTasks)
};

std::optional<Error> exportWindows(const CaptureOptions &options, WindowExport &windows)
{
    Result<SavedProject> project = openProject(options.file);
    if (!project)
        return project.error();
    const auto isWanted = [&options](const SavedCapture &capture) {
        return options.cores.isEmpty() || options.cores.contains(capture.core.index);
    };
    const qsizetype wanted = std::ranges::count_if(project->captures, isWanted);
    if (wanted == 0)
        return Error{Error::Usage, Text::tr("The project has no waves of these cores.")};
    if (const auto error = windows.prepare(wanted))
        return error;
    for (SavedCapture &capture : project->captures) {
        if (!isWanted(capture))
            continue;
        const CaptureLabel label{capture.core.index, capture.window, 0,
                                 kindTraits(project->kind).exportMode};
        if (const auto error =
                windows.write(label, capture.core, std::move(capture.contents), wanted == 1))
            return error;
    }
    return {};
}

Result<ProjectComparison> comparisonOf(const CaptureOptions &options)
{
    const Result<SavedProject> a = openProject(options.file);
    if (!a)
        return a.error();
    const Result<SavedProject> b = openProject(options.otherFile);
    if (!b)
        return b.error();
    ProjectComparison comparison(*a, *b, options.cores);
    if (comparison.isEmpty())
        return Error{Error::Usage, Text::tr("The projects have no waves of these cores.")};
    return comparison;
}

} // namespace

TaskResult exportSaved(const CaptureOptions &options, WindowExport &windows)
{
    TaskResult result;
    if (const auto error = exportWindows(options, windows)) {
        result.status = statusOf(error->kind);
        result.message = error->message;
    }
    result.document = {{"file", options.file}, {"captures", windows.captures()}};
    return result;
}

TaskResult compareSaved(const CaptureOptions &options, ResultOutput &output)
{
    TaskResult result;
    QJsonArray compared;
    if (const Result<ProjectComparison> comparison = comparisonOf(options)) {
        for (const QString &line : comparison->lines())
            output.line(line);
        compared = comparison->json();
        result.status = comparison->isEqual() ? ExitStatus::Captured : ExitStatus::Different;
    } else {
        result.status = statusOf(comparison.error().kind);
        result.message = comparison.error().message;
    }
    result.document = {{"a", options.file}, {"b", options.otherFile}, {"windows", compared}};
    return result;
}

} // namespace KEO
