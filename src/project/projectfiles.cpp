#include "projectfiles.h"

#include "configpage.h"
#include "programmerlink.h"
#include "projectboxes.h"
#include "wavetabs.h"

#include <base/logging.h>
#include <design/design.h>
#include <design/projectfile.h>
#include <wave/wavemonitorwidget.h>

#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

#include <utility>

namespace KEO {

namespace {

const QString kSuffix = QStringLiteral(".analyzer_prj");

} // namespace

bool ProjectFiles::open(const QString &path)
{
    if (m_parts.design.isBusy())
        return false;
    if (path.endsWith(kSuffix))
        return openProject(path);
    if (!path.endsWith(QLatin1String(".keo")) && !path.endsWith(QLatin1String(".zeo")))
        return false;
    if (!loadDesign(path)) {
        m_parts.boxes.showError(tr("Invalid KEO file specified in project."));
        return false;
    }
    m_keoFilePath = path;
    return true;
}

bool ProjectFiles::openProject(const QString &path)
{
    const KindTraits &traits = m_parts.design.traits();
    const Result<ProjectFile> project = readProjectFile(path);
    if (!project)
        qCDebug(lcProject).noquote() << project.error().message;
    if (!project || !loadDesign(project->keoFile)) {
        m_parts.boxes.showError(kindText(traits.invalidSession));
        return false;
    }
    m_keoFilePath = project->keoFile;
    m_openedSession = path;
    m_projectFilePath = path;
    m_dataFilePath = project->dataFile;
    if (traits.swapsPaths)
        m_projectFilePath.swap(m_dataFilePath);
    return showWaves(project->dataFile) || !traits.needsWaves;
}

bool ProjectFiles::loadDesign(const QString &path)
{
    if (!QFileInfo::exists(path)) // leaves the cores as they are
        return false;
    m_parts.page.leaveDesign();
    const Result<QString> id = m_parts.design.load(path);
    if (!id)
        return false;
    m_parts.page.showDesign();
    m_parts.programmer.setDesignId(*id);
    return true;
}

bool ProjectFiles::showWaves(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        m_parts.boxes.showWarning(tr("Cached data file specified in project file is missing."));
        return false;
    }
    Result<std::optional<Design::SavedWindows>> windows = m_parts.design.openWindows(path);
    if (!windows) {
        qCDebug(lcProject).noquote() << path << windows.error().message;
        if (windows.error().kind != Error::File)
            m_parts.boxes.showError(windows.error().message);
        return false;
    }
    if (!*windows) {
        m_parts.boxes.showWarning(otherDesignText());
        return true;
    }
    for (auto &[place, contents] : **windows) {
        m_parts.waves.showSaved(
            place, kindText(m_parts.design.traits().savedTitle, {place.core, place.window}),
            std::move(contents));
    }
    return true;
}

void ProjectFiles::save(const QObject *window)
{
    const QPointer<ProjectFiles> self(this);
    if (m_projectFilePath.isEmpty()) {
        const QString path = askPath(window ? window->property("startDir").toString() : QString());
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
    saveWaves(paths.dataFile);
    m_parts.page.saveSettings();
    if (!m_parts.design.save(paths.keoFile))
        m_parts.boxes.showError(tr("Can not save to %1").arg(paths.keoFile));
    if (const std::optional<Error> error = writeProjectFile(projectFile, paths))
        qCDebug(lcProject).noquote() << "project file not saved:" << error->message;
}

QString ProjectFiles::askPath(const QString &lastFile) const
{
    const QFileInfo last(lastFile);
    const QString path = QFileDialog::getSaveFileName(
        m_parts.boxes.window(), tr("Save Data File"),
        lastFile.isEmpty() ? QString() : last.path() + u'/' + last.baseName(),
        tr("KEO Analyzer Project File (*%1)").arg(kSuffix));
    return path.isEmpty() || !QFileInfo(path).suffix().isEmpty() ? path : path + kSuffix;
}

void ProjectFiles::saveWaves(const QString &path) const
{
    QList<WindowToSave> windows;
    for (const WaveMonitor::WaveMonitorWidget *wave : m_parts.waves.monitors()) {
        windows.append(m_parts.design.traits().numbersOf(wave->coreNumber(), wave->windowNumber(),
                                                         windows.size()));
        windows.last().contents = &wave->contents();
    }
    if (const std::optional<Error> error = writeDataFile(path, windows, m_openedSession))
        qCDebug(lcProject).noquote() << "data file not saved:" << error->message;
}

void ProjectFiles::close()
{
    m_keoFilePath.clear();
    m_projectFilePath.clear();
    m_dataFilePath.clear();
    m_openedSession.clear();
}

} // namespace KEO
