#include "projectmanager.h"

#include <base/boundedxml.h>
#include <base/wholefile.h>
#include <config/descriptionfile.h>
#include <project/analyzerproject.h>
#include <project/keoliteanalyzerproject.h>
#include <project/keostandardanalyzerproject.h>
#include <project/projectfile.h>

#include <QDomDocument>
#include <QLoggingCategory>

namespace KEO {

namespace {

Q_LOGGING_CATEGORY(lcShell, "keo.shell", QtInfoMsg)

/// A description with a byte that its declared encoding does not have still tells its kind: the
/// tool flow writes net names in the encoding of its own system.
Result<QDomDocument> parseDescription(const QByteArray &bytes)
{
    Result<QDomDocument> document = parseBoundedXml(bytes, kDescriptionLimits);
    if (document)
        return document;
    constexpr QByteArrayView mark("\xEF\xBB\xBF");
    const bool marked = QByteArrayView(bytes).startsWith(mark);
    const QByteArrayView content = QByteArrayView(bytes).sliced(marked ? mark.size() : 0);
    return parseBoundedXml(QString::fromLatin1(content), kDescriptionLimits);
}

ProjectKind kindOfMode(const QDomElement &mode)
{
    if (mode.isNull() || mode.text() == QLatin1String("Standard"))
        return ProjectKind::Standard;
    if (mode.text() == QLatin1String("Lite"))
        return ProjectKind::Lite;
    qCDebug(lcShell) << "a description for an unknown kind of core:" << mode.text().left(80);
    return ProjectKind::Unknown;
}

/// The description that \a file is or names, or nothing.
QString descriptionPath(const QString &file)
{
    if (!file.endsWith(QLatin1String(".analyzer_prj")))
        return file;
    const Result<ProjectFile> project = readProjectFile(file);
    if (project)
        return project->keoFile;
    qCDebug(lcShell).noquote() << project.error().message;
    return {};
}

} // namespace

ProjectKind kindOfFile(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxDescriptionSize, LineEnds::Native);
    if (!bytes) {
        qCDebug(lcShell).noquote() << bytes.error().message;
        return ProjectKind::Unknown;
    }
    const Result<QDomDocument> document = parseDescription(*bytes);
    if (!document) {
        qCDebug(lcShell).noquote() << path << document.error().message;
        return ProjectKind::Unknown;
    }
    return kindOfMode(document->documentElement().firstChildElement(QStringLiteral("Mode")));
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
    // Stays the current project even so: closing it once more does no harm.
    if (!project->openFile(file))
        project->closeProject(parent, {});
    project->setDevice(family, device, fsFile);
    clearGetters();
}

bool ProjectManager::closeCurrent(QWidget *parent, const std::function<bool()> &askStop)
{
    if (!m_current)
        return true;
    if (!m_current->closeProject(parent, askStop))
        return false;
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
