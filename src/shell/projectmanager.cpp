#include "projectmanager.h"

#include <base/logging.h>
#include <config/descriptionkind.h>
#include <design/projectfile.h>
#include <project/analyzerproject.h>
#include <project/keoliteanalyzerproject.h>
#include <project/keostandardanalyzerproject.h>

#include <QFileInfo>
#include <QPointer>

namespace KEO {

namespace {

/// The description that \a file is or names.
Result<QString> descriptionPath(const QString &file)
{
    if (!file.endsWith(QLatin1String(".analyzer_prj")))
        return file;
    const Result<ProjectFile> project = readProjectFile(projectFileFor(file));
    if (!project)
        return project.error();
    if (project->keoFile.isEmpty())
        return Error{Error::Format, ProjectManager::tr("The project names no core description.")};
    return project->keoFile;
}

ProjectKind projectKind(DescriptionKind kind)
{
    switch (kind) {
    case DescriptionKind::Standard:
        return ProjectKind::Standard;
    case DescriptionKind::Lite:
        return ProjectKind::Lite;
    case DescriptionKind::Unknown:
        break;
    }
    return ProjectKind::Unknown;
}

template <typename Project>
std::unique_ptr<AnalyzerProject> makeProject(QObject *parent, const CapturePace &pace)
{
    auto project = std::make_unique<Project>(parent);
    project->setPace(pace);
    return project;
}

} // namespace

ProjectKind kindOfFile(const QString &path)
{
    return projectKind(descriptionKind(path));
}

ProjectFactories projectFactories(const CapturePace &pace)
{
    return {
        {ProjectKind::Standard,
         [pace](QObject *parent) { return makeProject<KeoStandardAnalyzerProject>(parent, pace); }},
        {ProjectKind::Lite,
         [pace](QObject *parent) { return makeProject<KeoLiteAnalyzerProject>(parent, pace); }}};
}

ProjectManager::ProjectManager(QObject *parent, const ProjectFactories &factories) : QObject(parent)
{
    for (const ProjectFactory &factory : factories) {
        auto &project = m_projects[factory.kind] = factory.make(parent);
        connect(project.get(), &AnalyzerProject::fileNamed, this, &ProjectManager::fileNamed);
    }
}

ProjectManager::~ProjectManager() = default;

bool ProjectManager::openFile(QWidget *parent, const QString &family, const QString &device,
                              const QString &fsFile, const QString &file, Settings settings)
{
    const bool keeps = settings == Settings::Keep && m_current;
    const std::shared_ptr<const ProjectSetup> setup = keeps ? m_current->setup() : nullptr;
    if (!closeCurrent(parent, {}))
        return false;
    const Result<AnalyzerProject *> taker = projectFor(file);
    if (!taker) {
        qCDebug(lcShell).noquote() << file << taker.error().message;
        Q_EMIT fileRefused(file, taker.error().message);
        return true;
    }
    AnalyzerProject *const project = *taker;
    m_current = project;
    handOverGetters(*project);
    project->setupProject(parent);
    const QPointer<ProjectManager> self(this); // a file may be refused in a box, see closeCurrent
    const bool isOpened = project->openFile(file);
    if (!self)
        return true;
    // Stays the current project even so: closing it once more does no harm.
    if (!isOpened)
        project->closeProject(parent, {});
    project->setDevice(family, device, fsFile);
    clearGetters();
    if (isOpened && setup)
        project->takeOver(*setup);
    if (!isOpened) {
        const QString reason = project->refusal();
        Q_EMIT fileRefused(file, reason.isEmpty() ? tr("It can't be loaded.") : reason);
    }
    return true;
}

bool ProjectManager::closeCurrent(QWidget *parent, const std::function<bool()> &askStop)
{
    if (!m_current)
        return true;
    const QPointer<ProjectManager> self(this); // the window may go while the project asks
    if (!m_current->closeProject(parent, askStop))
        return false;
    if (self)
        m_current = nullptr;
    return true;
}

QString ProjectManager::startPreview() const
{
    return m_current ? m_current->startPreview() : QString();
}

void ProjectManager::tell(const QString &text) const
{
    if (m_current)
        m_current->tell(text);
}

void ProjectManager::stopReading() const
{
    if (m_current)
        m_current->stopReading();
}

Result<AnalyzerProject *> ProjectManager::projectFor(const QString &file) const
{
    const Result<QString> path = descriptionPath(file);
    if (!path)
        return path.error();
    if (!path->endsWith(QLatin1String(".keo")) && !path->endsWith(QLatin1String(".zeo"))) {
        const QString reason = tr("Core descriptions end in .keo or .zeo and projects in "
                                  ".analyzer_prj, in small letters.");
        return Error{Error::Usage,
                     *path == file ? reason : tr("It names %1. %2").arg(*path, reason)};
    }
    if (!QFileInfo::exists(*path)) {
        return Error{Error::File, *path == file
                                      ? tr("There is no such file.")
                                      : tr("It names %1, which is not there.").arg(*path)};
    }
    const Result<DescriptionKind> kind = readDescriptionKind(*path);
    if (!kind)
        return kind.error();
    const auto entry = m_projects.find(projectKind(*kind));
    if (entry != m_projects.end())
        return entry->second.get();
    return Error{Error::Usage, tr("The program has no project for this kind of core.")};
}

void ProjectManager::handOverGetters(AnalyzerProject &project) const
{
    project.tabWidgetGetter = tabWidgetGetter;
    project.toolBarGetter = toolBarGetter;
    project.openActionGetter = openActionGetter;
}

void ProjectManager::clearGetters()
{
    tabWidgetGetter = {};
    toolBarGetter = {};
    openActionGetter = {};
}

} // namespace KEO
