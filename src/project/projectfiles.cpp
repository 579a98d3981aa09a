#include "projectfiles.h"

#include "configpage.h"
#include "programmerlink.h"
#include "projectboxes.h"
#include "wavetabs.h"

#include <base/logging.h>
#include <base/wholefile.h>
#include <design/design.h>
#include <design/projectfile.h>
#include <wave/wavemonitorwidget.h>
#include <widgets/messagebox.h>

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

#include <utility>

namespace KEO {

namespace {

const QString kSuffix = QStringLiteral(".analyzer_prj");

/// The toolkit takes all files that do not exist for the same.
bool isSameFile(const QString &a, const QString &b)
{
    return QFileInfo(a).absoluteFilePath() == QFileInfo(b).absoluteFilePath() ||
           (QFileInfo::exists(a) && QFileInfo(a) == QFileInfo(b));
}

} // namespace

QList<WindowToSave> windowsToSave(const ProjectParts &parts)
{
    QList<WindowToSave> windows;
    for (const WaveMonitor::WaveMonitorWidget *wave : parts.waves.monitors()) {
        windows.append(parts.design.traits().numbersOf(wave->coreNumber(), wave->windowNumber(),
                                                       windows.size()));
        windows.last().contents = &wave->contents();
    }
    return windows;
}

bool ProjectFiles::open(const QString &name)
{
    if (m_parts.design.isBusy())
        return false;
    const QString path = QFileInfo(name).absoluteFilePath(); // holds wherever it is saved to
    m_fault.clear();
    m_recovered = RecoveryStore().entryOf(path);
    if (m_recovered)
        return openRecovered();
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
    const QString projectFile = projectFileFor(path);
    const Result<ProjectFile> project = readProjectFile(projectFile);
    if (!project)
        refuse(project.error().message);
    if (!project || !loadDesign(project->keoFile)) {
        m_parts.boxes.showError(kindText(traits.invalidSession));
        return false;
    }
    m_keoFilePath = project->keoFile;
    m_openedFile = projectFile;
    m_projectFilePath = projectFile;
    m_dataFilePath = project->dataFile;
    if (traits.swapsPaths)
        m_projectFilePath.swap(m_dataFilePath);
    return showWaves(project->dataFile) || !traits.needsWaves;
}

/// Takes what the store has, and writes to where the capture came from.
bool ProjectFiles::openRecovered()
{
    const Result<ProjectFile> project = readProjectFile(m_recovered->project);
    if (!project)
        refuse(project.error().message);
    if (!project || !loadDesign(project->keoFile)) {
        m_parts.boxes.showError(kindText(m_parts.design.traits().invalidSession));
        return false;
    }
    m_keoFilePath = m_recovered->description;
    m_description.resume(m_recovered->descriptionState);
    return showWaves(project->dataFile) || !m_parts.design.traits().needsWaves;
}

bool ProjectFiles::loadDesign(const QString &path)
{
    if (!QFileInfo::exists(path)) // leaves the cores as they are
        return false;
    m_parts.page.leaveDesign();
    // Before it is read: what is written in between counts as news.
    m_description.know(path);
    if (!m_recovered)
        Q_EMIT readingDescription(path);
    const Result<QString> id = m_parts.design.load(path);
    if (!id) {
        refuse(id.error().message);
        return false;
    }
    m_parts.page.showDesign();
    m_parts.programmer.setDesignId(*id);
    return true;
}

bool ProjectFiles::showWaves(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        refuse(tr("The data file %1 is not there.").arg(path));
        m_parts.boxes.showWarning(tr("Cached data file specified in project file is missing."));
        return false;
    }
    Result<std::optional<Design::SavedWindows>> windows = m_parts.design.openWindows(path);
    if (!windows) {
        refuse(windows.error().message);
        if (windows.error().kind != Error::File)
            m_parts.boxes.showError(windows.error().message);
        return false;
    }
    if (!*windows) {
        refuse(tr("The waves in %1 are those of another design, or of other settings.").arg(path));
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

/// Said before any box: it may see this gone.
void ProjectFiles::refuse(const QString &reason)
{
    m_fault = reason.simplified(); // a box's text may have several lines
    qCDebug(lcProject).noquote() << "open:" << reason;
    Q_EMIT told(m_fault);
}

void ProjectFiles::save(const QObject *window)
{
    const QPointer<ProjectFiles> self(this);
    m_parts.waves.finishEditing();
    const bool isFirst = m_projectFilePath.isEmpty();
    if (isFirst) {
        const QString path =
            askPath(window && !m_recovered ? window->property("startDir").toString() : QString());
        if (!self || m_keoFilePath.isEmpty()) // closed while the dialog showed
            return;
        m_projectFilePath = path;
    }
    if (m_projectFilePath.isEmpty())
        return;
    if (m_dataFilePath.isEmpty())
        m_dataFilePath = dataFileBeside(m_projectFilePath);
    const auto [origin, recovered] = std::pair(m_keoFilePath, std::exchange(m_recovered, {}));
    if (recovered)
        m_keoFilePath = placeOfRecovered();
    m_parts.page.saveSettings();
    const Outcome outcome = writeFiles(m_projectFilePath, {m_keoFilePath, m_dataFilePath});
    if (isFirst && !outcome.isSessionSaved) { // else nothing could be saved there or elsewhere
        m_refusedPath = std::exchange(m_projectFilePath, {});
        m_dataFilePath.clear();
        m_keoFilePath = origin;
        m_recovered = recovered;
    }
    tell(outcome);
}

/// The description goes back to where it came from, but not over what is there now: the tools may
/// have built another design since.
QString ProjectFiles::placeOfRecovered() const
{
    if (m_description.isUnchanged(m_keoFilePath))
        return m_keoFilePath;
    const QFileInfo project(m_projectFilePath);
    const QString base = project.absolutePath() + u'/' + project.completeBaseName();
    const QString suffix = u'.' + QFileInfo(m_keoFilePath).suffix();
    QString place = base + suffix;
    for (int number = 1; QFileInfo::exists(place) || place == m_projectFilePath; ++number)
        place = base + QStringLiteral(".recovered-%1").arg(number) + suffix;
    return place;
}

/// Under the other name no program opens it, see KindTraits::swapsPaths.
const QString &ProjectFiles::projectFile() const
{
    const bool isSwapped = m_dataFilePath.endsWith(kSuffix) && !m_projectFilePath.endsWith(kSuffix);
    return isSwapped ? m_dataFilePath : m_projectFilePath;
}

/// A file that can't be written does not keep the others from being saved.
ProjectFiles::Outcome ProjectFiles::writeFiles(const QString &projectFile, const ProjectFile &paths)
{
    FileSet files;
    QStringList reasons;
    bool isDescribed = true;
    bool isSessionSaved = true;
    const auto note = [&](const std::optional<Error> &error) {
        if (error)
            reasons.append(error->message);
        return !error;
    };
    isSessionSaved = note(addDataFile(files, paths.dataFile, windowsToSave(m_parts), m_openedFile));
    const QByteArray description = m_parts.design.descriptionText();
    const Result<QString> kept = m_description.keepNews(files, paths.keoFile, description);
    if (!kept)
        isDescribed = note(kept.error());
    else if (description.isNull())
        isDescribed = false;
    else
        isDescribed = note(files.add(paths.keoFile, description, LineEnds::Native));
    isSessionSaved = note(addProjectFile(files, projectFile, paths)) && isSessionSaved;
    for (const FileSet::Fault &fault : files.commit()) {
        note(fault.error);
        isDescribed = isDescribed && fault.path != paths.keoFile;
        isSessionSaved =
            isSessionSaved && fault.path != paths.dataFile && fault.path != projectFile;
    }
    if (isDescribed)
        m_description.wrote(description);
    const bool isSaved = reasons.isEmpty() && isDescribed;
    if (reasons.isEmpty())
        reasons.append(tr("Saved %1").arg(projectFile));
    if (kept && !kept->isEmpty())
        reasons.append(tr("%1 had been written anew by another program; that one is kept as %2")
                           .arg(paths.keoFile, *kept));
    for (const QString &reason : std::as_const(reasons))
        qCDebug(lcProject).noquote() << "save:" << reason;
    return {isSessionSaved, isSaved, reasons.join(QStringLiteral("; ")),
            isDescribed ? QString() : tr("Can not save to %1").arg(paths.keoFile)};
}

void ProjectFiles::tell(const Outcome &outcome)
{
    Q_EMIT told(outcome.text);
    if (outcome.isSaved)
        Q_EMIT saved();
    if (!outcome.error.isEmpty())
        m_parts.boxes.showError(outcome.error);
}

/// Why \a path is no place for a project file: another of its files would stand there.
std::optional<QString> ProjectFiles::obstacleOf(const QString &path) const
{
    if (isSameFile(path, m_keoFilePath))
        return tr("%1 is the core description, which Save writes too. Choose another name for the "
                  "project.")
            .arg(path);
    if (isSameFile(path, dataFileBeside(path)))
        return tr("Save writes the samples to %1. Choose another name for the project, such as one "
                  "that ends in %2.")
            .arg(path, kSuffix);
    return std::nullopt;
}

QString ProjectFiles::askPath(const QString &lastFile) const
{
    const QPointer<const ProjectFiles> self(this);
    const QString origin =
        m_recovered && !m_recovered->savedAs.isEmpty() ? m_recovered->savedAs : m_keoFilePath;
    const QFileInfo refused(m_refusedPath);
    const bool tellsPlace = !m_refusedPath.isEmpty() && refused.dir().exists();
    const QFileInfo last(tellsPlace ? m_refusedPath : lastFile.isEmpty() ? origin : lastFile);
    QString suggestion = last.path() + u'/' + last.baseName();
    for (;;) {
        QString path =
            QFileDialog::getSaveFileName(m_parts.boxes.window(), tr("Save Data File"), suggestion,
                                         tr("KEO Analyzer Project File (*%1)").arg(kSuffix));
        if (path.isEmpty() || !self)
            return {};
        if (const std::optional<QString> obstacle = obstacleOf(path)) {
            m_parts.boxes.showWarning(*obstacle);
            if (!self)
                return {};
            continue;
        }
        if (!QFileInfo(path).suffix().isEmpty()) // the dialog has asked
            return path;
        suggestion = path;
        path += kSuffix;
        if (!QFileInfo::exists(path))
            return path;
        const auto answer = showBox(QMessageBox::Warning, m_parts.boxes.window(), tr("Warning"),
                                    tr("%1 already exists. Do you want to replace it?").arg(path),
                                    QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
        if (answer == QMessageBox::Yes)
            return path;
        if (answer == QMessageBox::NoButton || !self)
            return {};
    }
}

void ProjectFiles::close()
{
    m_keoFilePath.clear();
    m_projectFilePath.clear();
    m_dataFilePath.clear();
    m_openedFile.clear();
    m_refusedPath.clear();
    m_recovered.reset();
}

} // namespace KEO
