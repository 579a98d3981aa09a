#pragma once

#include <base/result.h>
#include <capture/capturepace.h>

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>

class QAction;
class QTabWidget;
class QToolBar;
class QWidget;

namespace KEO {

class AnalyzerProject;

/// Which kind of core a description is for. The numbers are no one's to know; they keep apart from
/// any index.
enum class ProjectKind : int { Unknown = 10086, Standard = 10087, Lite = 10088 };

/// The kind that the element `Mode` of the XML file \a path tells, whatever the file's extension;
/// Standard without such an element, Unknown if it names another kind or the file can't be read or
/// is no XML.
[[nodiscard]] ProjectKind kindOfFile(const QString &path);

/// How to make the project object of one kind.
struct ProjectFactory
{
    ProjectKind kind = ProjectKind::Unknown;
    std::function<std::unique_ptr<AnalyzerProject>(QObject *parent)> make;
};
using ProjectFactories = QList<ProjectFactory>;

/// The kinds of project that the program has; their runs go at that pace.
[[nodiscard]] ProjectFactories projectFactories(const CapturePace &pace = {});

/// Decides which project takes a file. Holds one project object of each kind for as long as it
/// lives; at most one of them is open, and opening a file closes it first. Shows nothing itself:
/// a file that no project takes opens nothing, with the reason in a signal and in the debug log.
/// GUI thread.
class ProjectManager final : public QObject
{
    Q_OBJECT

public:
    /// What becomes of what the user has set and arranged in the project that was open.
    enum class Settings { Forget, Keep };

    /// The projects have the same parent as the manager, and end with the manager.
    explicit ProjectManager(QObject *parent,
                            const ProjectFactories &factories = projectFactories());
    ~ProjectManager() override;

    /// Closes the open project, which a running capture refuses, or the user when the programmer
    /// is writing to a device: then nothing else happens. Opens
    /// \a file, a description (".keo", ".zeo") or a project file (".analyzer_prj"), in the project
    /// of its kind and hands it the device, also when the file did not open. False if the project
    /// that was open stays.
    bool openFile(QWidget *parent, const QString &family, const QString &device,
                  const QString &fsFile, const QString &file, Settings settings = Settings::Forget);

    /// Closes the open project, if any; \a askStop says whether a running capture may be stopped,
    /// and none at all means no. False if the project stays open.
    bool closeCurrent(QWidget *parent, const std::function<bool()> &askStop);
    /// See AnalyzerProject; nothing without an open project.
    void stopReading() const;
    void tell(const QString &text) const;
    [[nodiscard]] QString startPreview() const;

    /// What an opened project may use of the main window. Set them before each openFile, which
    /// passes them on and clears them if a project takes the file.
    std::function<QTabWidget *()> tabWidgetGetter;
    std::function<QToolBar *()> toolBarGetter;
    std::function<QAction *()> openActionGetter;

Q_SIGNALS:
    /// What is open has this path from now on; empty when nothing is open any more. See
    /// AnalyzerProject.
    void fileNamed(const QString &path, const QString &remark = {});
    /// \a file was to be opened, and nothing is open now, for that reason: whole sentences.
    void fileRefused(const QString &file, const QString &reason);

private:
    [[nodiscard]] Result<AnalyzerProject *> projectFor(const QString &file) const;
    void handOverGetters(AnalyzerProject &project) const;
    void clearGetters();

    AnalyzerProject *m_current = nullptr; // one of the projects
    std::map<ProjectKind, std::unique_ptr<AnalyzerProject>> m_projects;
};

} // namespace KEO
