#pragma once

#include "projectmanager.h"

#include <servers/exampledesign.h>
#include <wave/common/notificationcenter.h>

#include <QMainWindow>
#include <QString>

#include <memory>

namespace KEO {

struct AnalyzerPrivate;

/// The one top-level window: an Open action, tool bar, tab widget and status bar, and the debug
/// dock when the command line asks for it. Whatever else the user sees, the open project puts
/// there. The window itself decides which file to open and whether the program may close; a project
/// reaches `startDir`, reopen, reopenAndKeep and closeCurrentProject through the meta-object
/// system, since it knows only that it has a window.
class Analyzer final : public QMainWindow
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)
    Q_PROPERTY(QString startDir READ startDir WRITE setStartDir)

public:
    explicit Analyzer(QWidget *parent = nullptr,
                      const ProjectFactories &factories = projectFactories());
    ~Analyzer() override;

    /// Notification domain of the window.
    [[nodiscard]] quint64 domain() const { return m_domain; }
    /// Where the open dialog starts: a directory, or the file that was chosen last.
    [[nodiscard]] QString startDir() const { return m_startDir; }
    void setStartDir(const QString &startDir) { m_startDir = startDir; }

    /// Opens a description or project file in place of the open project and keeps the other three,
    /// which may be empty, for reopen.
    void openFile(const QString &file, const QString &family, const QString &device,
                  const QString &fsFile);
    /// Says that in the status line of the open project; nowhere if none is open.
    void tell(const QString &text);
    /// Offers to open a copy of that design while none is open.
    void offerExample(const ExampleDesign &example);
    /// Opens \a file for the same device as the file before.
    Q_INVOKABLE void reopen(const QString &file);
    /// The same, with what the user has set and arranged in the project that is open.
    Q_INVOKABLE void reopenAndKeep(const QString &file);
    /// Keeps the device that the user named for the open file, for reopen.
    Q_INVOKABLE void keepDevice(const QString &family, const QString &device);
    /// Closes the open project without a question; false if a capture is running.
    Q_INVOKABLE bool closeCurrentProject();

    /// Nothing in the window depends on formats or colours, yet.
    Q_INVOKABLE void handleEvents(WaveMonitor::Notification *e);

public Q_SLOTS:
    /// Lets the user choose a file and opens it. The device of the command line does not count for
    /// a file opened by hand.
    void onOpen();

protected:
    /// Asks before it stops a running capture, then closes the project and drops the connections.
    void closeEvent(QCloseEvent *event) override;
    /// A description or project file that is dropped on the window opens as if it were chosen by
    /// hand; not during a capture, or below a box.
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildDebugDock();
    /// Names the open file in the title, none for an empty path, and remembers it.
    void showFile(const QString &path, const QString &remark = {});
    /// Opens a file that the user has chosen in the window.
    void openChosen(const QString &path);

    std::unique_ptr<AnalyzerPrivate> m_d;
    quint64 m_domain = 0;
    QString m_startDir;
};

} // namespace KEO
