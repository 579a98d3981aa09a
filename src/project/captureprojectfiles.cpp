// The files of a project: what both kinds do alike to open, to save and to show what was saved.

#include "captureproject.h"
#include "descriptionwatch.h"
#include "programmerpage.h"
#include "projectlog.h"
#include "savedialog.h"

#include <programmer_ui/keoprogrammerwidget.h>
#include <wave/wavemonitorwidget.h>

#include <QFileInfo>
#include <QTabWidget>

#include <utility>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

bool CaptureProject::openFile(const QString &path)
{
    if (isBusy())
        return false;
    const QPointer<CaptureProject> self(this);
    bool isOpened = false;
    if (path.endsWith(QLatin1String(".analyzer_prj")))
        isOpened = openProjectFile(path);
    else if (path.endsWith(QLatin1String(".keo")) || path.endsWith(QLatin1String(".zeo")))
        isOpened = openDescription(path);
    if (isOpened && self) {
        updateActions();
        m_descriptionWatch->start(m_keoFilePath, m_page);
    }
    return isOpened;
}

bool CaptureProject::openDescription(const QString &path)
{
    if (!takeDesign(path)) {
        showError(invalidDescriptionText());
        return false;
    }
    m_keoFilePath = path;
    return true;
}

bool CaptureProject::openProjectFile(const QString &path)
{
    const std::optional<ProjectFile> project = loadProject(path);
    if (!project) {
        showError(invalidSessionText());
        return false;
    }
    m_keoFilePath = project->keoFile;
    const SaveTargets targets = saveTargets(path, project->dataFile);
    m_projectFilePath = targets.projectFile;
    m_dataFilePath = targets.dataFile;
    const bool areNeeded = needsWaves(); // nobody may be left to ask after a box
    return loadDataFile(project->dataFile) == DataFileState::Loaded || !areNeeded;
}

bool CaptureProject::takeDesign(const QString &path)
{
    QString designId;
    if (!loadDesign(path, designId))
        return false;
    if (m_programmer->widget())
        m_programmer->widget()->setDesignId(designId);
    return true;
}

std::optional<ProjectFile> CaptureProject::loadProject(const QString &path)
{
    const Result<ProjectFile> project = readProjectFile(path);
    if (!project)
        qCDebug(keoProject).noquote() << project.error().message;
    if (!project || !takeDesign(project->keoFile))
        return std::nullopt;
    return *project;
}

QString CaptureProject::invalidDescriptionText()
{
    return tr("Invalid KEO file specified in project.");
}

void CaptureProject::onSave()
{
    const QPointer<CaptureProject> self(this);
    if (m_projectFilePath.isEmpty()) {
        const QString path = askProjectPath(m_mainWindow, suggestedProjectPath(parent()));
        if (!self || m_keoFilePath.isEmpty()) // closed while the dialog showed
            return;
        m_projectFilePath = path;
    }
    if (m_projectFilePath.isEmpty())
        return;
    if (m_dataFilePath.isEmpty())
        m_dataFilePath = dataFileBeside(m_projectFilePath);
    const QString projectFile = m_projectFilePath;
    const ProjectFile paths{m_keoFilePath, m_dataFilePath};
    saveDataFile(paths.dataFile);
    if (!saveDescription(paths.keoFile))
        showError(tr("Can not save to %1").arg(paths.keoFile));
    if (const std::optional<Error> error = writeProjectFile(projectFile, paths))
        qCDebug(keoProject).noquote() << "project file not saved:" << error->message;
}

void CaptureProject::saveDataFile(const QString &path) const
{
    QList<WindowToSave> windows;
    for (const WaveMonitorWidget *wave : m_waveTabs.monitors()) {
        windows.append(numbersOf(*wave, int(windows.size())));
        windows.last().contents = &wave->contents();
    }
    if (const std::optional<Error> error = writeDataFile(path, windows))
        qCDebug(keoProject).noquote() << "data file not saved:" << error->message;
}

CaptureProject::DataFileState CaptureProject::loadDataFile(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        showWarning(tr("Cached data file specified in project file is missing."));
        return DataFileState::Unusable;
    }
    Result<LoadedWindows> windows = KEO::loadDataFile(path);
    if (!windows) {
        qCDebug(keoProject).noquote() << path << windows.error().message;
        if (windows.error().kind != Error::File)
            showError(windows.error().message);
        return DataFileState::Unusable;
    }
    if (fitsDesign(*windows))
        showSavedWindows(*std::move(windows));
    else
        showWarning(tr("Data file miss match the project"));
    return DataFileState::Loaded;
}

void CaptureProject::showSavedWindows(LoadedWindows windows)
{
    int count = 0;
    for (LoadedWindow &window : windows) {
        const std::optional<SavedTab> tab = tabOf(window);
        if (!tab)
            continue;
        WaveMonitorWidget *wave =
            m_waveTabs.add(tab->core, tab->window, std::move(window.contents), m_mainWindow);
        ++count;
        if (QTabWidget *tabs = tabWidget())
            tabs->insertTab(count, wave, tab->title);
    }
}

} // namespace KEO
