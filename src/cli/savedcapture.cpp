#include "savedcapture.h"

#include <config/standardconfig.h>
#include <project/datafilecheck.h>
#include <project/datafilereader.h>
#include <project/datafilewriter.h>
#include <project/projectfile.h>

#include <QCoreApplication>

#include <optional>
#include <utility>

namespace KEO {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("SavedCapture", text);
}

Result<CoreList> loadCores(const QString &path)
{
    bool ok = false;
    QString reason;
    CoreList cores = loadStandardConfigFile(path, nullptr, &ok, &reason);
    if (!cores.empty())
        return cores;
    if (reason.isEmpty())
        reason = tr("It describes no standard analyzer core.");
    return Error{Error::File, tr("%1 can not be used: %2").arg(path, reason)};
}

} // namespace

Result<QString> saveProject(const QString &path, const QString &description,
                            const std::vector<SavedCapture> &captures)
{
    QList<WindowToSave> windows;
    for (const SavedCapture &capture : captures)
        windows.append({capture.core, capture.window, &capture.contents});
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
    Result<CoreList> cores = loadCores(project->keoFile);
    if (!cores)
        return cores.error();
    Result<LoadedWindows> windows = loadDataFile(project->dataFile);
    if (!windows)
        return windows.error();
    if (!fitsCores(*windows, *cores))
        return Error{Error::Format, tr("Data file miss match the project")};
    SavedProject saved{*std::move(cores), {}};
    for (LoadedWindow &window : *windows) {
        if (const std::optional<WindowPlace> place = placeOf(window))
            saved.captures.push_back({place->core, place->window, std::move(window.contents)});
    }
    if (saved.captures.empty())
        return Error{Error::Format, tr("The project %1 holds no waves.").arg(path)};
    return saved;
}

} // namespace KEO
