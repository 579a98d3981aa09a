#include "savedcapture.h"

#include "projectfile.h"

#include <base/wholefile.h>
#include <link/jtagsession.h>

#include <QCoreApplication>
#include <QFileInfo>

#include <optional>
#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::SavedCapture)
};

} // namespace

Result<QString> saveProject(const QString &path, const QString &description,
                            const SavedProject &captures)
{
    QList<WindowToSave> windows;
    for (const SavedCapture &capture : captures.captures) {
        windows.append(kindTraits(captures.kind)
                           .numbersOf(capture.core.index, capture.window, windows.size()));
        windows.last().contents = &capture.contents;
    }
    const QFileInfo info(path);
    const ProjectFile project{description, info.path() + u'/' + info.completeBaseName() +
                                               QStringLiteral(".xml")};
    FileSet files;
    std::optional<Error> error = addDataFile(files, project.dataFile, windows);
    if (!error)
        error = addProjectFile(files, path, project);
    if (error)
        return *error;
    if (const QList<FileSet::Fault> faults = files.commit(); !faults.isEmpty())
        return faults.first().error;
    return project.dataFile;
}

Result<OpenedProject> openProjectDesign(const QString &path)
{
    const Result<ProjectFile> project = readProjectFile(projectFileFor(path));
    if (!project)
        return project.error();
    const DescriptionKind kind = descriptionKind(project->keoFile);
    OpenedProject opened{Design::make(kind, *JtagSession::instance()), {}};
    if (const Result<QString> id = opened.design->load(project->keoFile); !id)
        return id.error();
    Result<std::optional<Design::SavedWindows>> windows =
        opened.design->openWindows(project->dataFile, TriggerPosition::Any);
    if (!windows)
        return windows.error();
    if (!*windows)
        return Error{Error::Format, otherDesignText()};
    opened.windows = std::move(**windows);
    // The names of a lite core's files tell nothing of the window: one would replace the other.
    if (kind == DescriptionKind::Lite && opened.windows.size() > 1)
        return Error{Error::Format,
                     Text::tr("The data file %1 holds %2 windows of a lite core, which has one.")
                         .arg(project->dataFile, QString::number(opened.windows.size()))};
    if (opened.windows.empty())
        return Error{Error::Format, Text::tr("The project %1 holds no waves.").arg(path)};
    return opened;
}

Result<SavedProject> openProject(const QString &path)
{
    Result<OpenedProject> opened = openProjectDesign(path);
    if (!opened)
        return opened.error();
    SavedProject saved{opened->design->traits().kind, {}};
    for (Design::SavedWindow &window : opened->windows) {
        ExportCore core = opened->design->exportCore(window.place.core);
        core.triggerSample = window.contents.triggerPosition();
        saved.captures.push_back({core, window.place.window, std::move(window.contents)});
    }
    return saved;
}

} // namespace KEO
