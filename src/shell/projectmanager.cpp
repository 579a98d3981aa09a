#include "projectmanager.h"

#include <base/logging.h>
#include <config/descriptionkind.h>
#include <design/projectfile.h>
#include <project/analyzerproject.h>
#include <project/keoliteanalyzerproject.h>
#include <project/keostandardanalyzerproject.h>

#include <QPointer>

namespace KEO {

namespace {

/// The description that \a file is or names, or nothing.
QString descriptionPath(const QString &file)
{
    if (!file.endsWith(QLatin1String(".analyzer_prj")))
        return file;
    const Result<ProjectFile> project = readProjectFile(projectFileFor(file));
    if (project)
        return project->keoFile;
    qCDebug(lcShell).noquote() << project.error().message;
    return {};
}

} // namespace

ProjectKind kindOfFile(const QString &path)
{
    switch (descriptionKind(path)) {
    case DescriptionKind::Standard:
        return ProjectKind::Standard;
    case DescriptionKind::Lite:
        return ProjectKind::Lite;
    case DescriptionKind::Unknown:
        break;
    }
    return ProjectKind::Unknown;
}

ProjectFactories projectFactories()
{
    return {{ProjectKind::Standard,
             [](QObject *parent) { return std::make_unique<KeoStandardAnalyzerProject>(parent); }},
            {ProjectKind::Lite,
             [](QObject *parent) { return std::make_unique<KeoLiteAnalyzerProject>(parent); }}};
}

ProjectManager::ProjectManager(QObject *parent, const ProjectFactories &factories) : QObject(parent)
{
    for (const ProjectFactory &factory : factories)
        m_projects[factory.kind] = factory.make(parent);
}

ProjectManager::~ProjectManager() = default;

void ProjectManager::openFile(QWidget *parent, const QString &family, const QString &device,
                              const QString &fsFile, const QString &file)
{
    if (!closeCurrent(parent, {}))
        return;
    AnalyzerProject *const project = projectFor(file);
    if (!project)
        return;
    m_current = project;
    handOverGetters(*project);
    project->setupProject(parent);
    const QPointer<ProjectManager> self(this); // a file may be refused in a box, see closeCurrent
    const bool isOpened = project->openFile(file);
    if (!self)
        return;
    // Stays the current project even so: closing it once more does no harm.
    if (!isOpened)
        project->closeProject(parent, {});
    project->setDevice(family, device, fsFile);
    clearGetters();
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

AnalyzerProject *ProjectManager::projectFor(const QString &file) const
{
    const QString path = descriptionPath(file);
    if (!path.endsWith(QLatin1String(".keo")) && !path.endsWith(QLatin1String(".zeo"))) {
        qCDebug(lcShell) << "no core description:" << file;
        return nullptr;
    }
    const auto entry = m_projects.find(kindOfFile(path));
    if (entry != m_projects.end())
        return entry->second.get();
    qCDebug(lcShell) << "no project takes the kind of core of" << path;
    return nullptr;
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
