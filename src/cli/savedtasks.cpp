#include "savedtasks.h"

#include "projectcomparison.h"
#include "rehearsalreport.h"
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

Result<std::vector<RehearsalReport>> rehearsals(const CaptureOptions &options)
{
    Result<OpenedProject> project = openProjectDesign(options.file);
    if (!project)
        return project.error();
    Design &design = *project->design;
    if (design.traits().kind == DescriptionKind::Lite)
        return Error{Error::Usage, Text::tr("A lite core has no trigger to rehearse.")};
    QList<TriggerOptions> triggers = options.triggers;
    for (TriggerOptions &entry : triggers)
        entry.core = entry.core.value_or(project->windows.front().place.core);
    if (const auto error = design.apply(triggers))
        return *error;
    const auto isWanted = [&options](int core) {
        return options.cores.isEmpty() || options.cores.contains(core);
    };
    QList<int> rehearsed;
    std::vector<RehearsalReport> reports;
    for (const auto &[place, contents] : project->windows) {
        std::optional<Rehearsal> rehearsal;
        if (isWanted(place.core))
            rehearsal = design.rehearse(place.core, contents);
        if (!rehearsal)
            continue;
        QList<DiagnosisLine> why;
        if (const CoreConfig *core = std::as_const(design).triggerCore(place.core))
            why = whyNoTrigger(*core, portSamplesOf(*core, contents), *rehearsal);
        rehearsed.append(place.core);
        reports.emplace_back(place.core, place.window, contents.triggerPosition(),
                             std::move(*rehearsal), std::move(why));
    }
    for (const int core : options.cores) {
        if (!rehearsed.contains(core))
            return Error{Error::Usage, Text::tr("The project has no waves of core %1.").arg(core)};
    }
    return reports;
}

} // namespace

TaskResult rehearseSaved(const CaptureOptions &options, ResultOutput &output)
{
    TaskResult result;
    QJsonArray windows;
    if (const Result<std::vector<RehearsalReport>> reports = rehearsals(options)) {
        result.status = ExitStatus::NoHit;
        for (const RehearsalReport &report : *reports) {
            for (const QString &line : report.lines())
                output.line(line);
            windows.append(report.json());
            if (report.hasHit())
                result.status = ExitStatus::Captured;
        }
    } else {
        result.status = statusOf(reports.error().kind);
        result.message = reports.error().message;
    }
    result.document = {{"file", options.file}, {"windows", windows}};
    return result;
}

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
