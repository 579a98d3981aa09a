#include "savedcapture.h"

#include "coredescriptions.h"

#include <config/descriptionkind.h>
#include <design/datafilecheck.h>
#include <design/datafilereader.h>
#include <design/datafilewriter.h>
#include <design/exportcore.h>
#include <design/projectfile.h>

#include <QCoreApplication>

#include <algorithm>
#include <optional>
#include <utility>

namespace KEO {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SavedCapture", text);
}

/// The windows of \a dataFile, if \a fits says that they were captured from the project's design.
template <typename Fits>
Result<LoadedWindows> loadFitting(const QString &dataFile, Fits fits)
{
    Result<LoadedWindows> windows = loadDataFile(dataFile);
    if (windows && !fits(*windows))
        return Error{Error::Format, tr("Data file miss match the project")};
    return windows;
}

Result<SavedProject> standardProject(const ProjectFile &project)
{
    const Result<CoreList> cores = loadStandardCores(project.keoFile);
    if (!cores)
        return cores.error();
    Result<LoadedWindows> windows = loadFitting(
        project.dataFile, [&](const LoadedWindows &all) { return fitsCores(all, *cores); });
    if (!windows)
        return windows.error();
    SavedProject saved{ExportMode::Standard, {}};
    for (LoadedWindow &window : *windows) {
        const std::optional<WindowPlace> place = placeOf(window);
        if (!place)
            continue;
        const auto core = std::ranges::find_if(
            *cores, [&](const auto &candidate) { return candidate->index == place->core; });
        saved.captures.push_back({exportCore(**core), place->window, std::move(window.contents)});
    }
    return saved;
}

Result<SavedProject> liteProject(const ProjectFile &project)
{
    const Result<LiteCoreConfig> core = loadLiteCore(project.keoFile);
    if (!core)
        return core.error();
    Result<LoadedWindows> windows = loadFitting(
        project.dataFile, [&](const LoadedWindows &all) { return fitsLiteCore(all, *core); });
    if (!windows)
        return windows.error();
    SavedProject saved{ExportMode::Lite, {}};
    for (LoadedWindow &window : *windows) {
        if (const std::optional<int> number = windowNumberOf(window))
            saved.captures.push_back({exportCore(*core), *number, std::move(window.contents)});
    }
    // The names of a lite core's files tell nothing of the window: one would replace the other.
    if (saved.captures.size() > 1)
        return Error{Error::Format,
                     tr("The data file %1 holds %2 windows of a lite core, which has one.")
                         .arg(project.dataFile, QString::number(saved.captures.size()))};
    return saved;
}

} // namespace

Result<QString> saveProject(const QString &path, const QString &description,
                            const SavedProject &captures)
{
    QList<WindowToSave> windows;
    for (const SavedCapture &capture : captures.captures) {
        const bool isNumbered = captures.mode == ExportMode::Standard;
        windows.append({isNumbered ? std::optional(capture.core.index) : std::nullopt,
                        capture.window, &capture.contents});
    }
    const ProjectFile project{description, dataFileBeside(path)};
    std::optional<Error> error = writeDataFile(project.dataFile, windows);
    if (!error)
        error = writeProjectFile(path, project);
    if (error)
        return *error;
    return project.dataFile;
}

Result<SavedProject> openProject(const QString &path)
{
    const Result<ProjectFile> project = readProjectFile(path);
    if (!project)
        return project.error();
    const bool isLite = descriptionKind(project->keoFile) == DescriptionKind::Lite;
    Result<SavedProject> saved = isLite ? liteProject(*project) : standardProject(*project);
    if (saved && saved->captures.empty())
        return Error{Error::Format, tr("The project %1 holds no waves.").arg(path)};
    return saved;
}

} // namespace KEO
