#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QAction;
class QTabWidget;
class QToolBar;
class QWidget;

namespace KEO {

struct ProjectSetup;

/// One kind of project as the project manager drives it. A project object lives as long as the
/// program and is opened and closed many times; at most one is open.
///
/// The getters reach what the project may use of the main window. The project manager sets them
/// before setupProject; closeProject clears them, and a project that is closed touches none of it.
class AnalyzerProject : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// A capture is going on.
    [[nodiscard]] virtual bool isBusy() const = 0;
    /// Builds the widgets, the first time, and puts them into the main window, each time.
    virtual void setupProject(QWidget *mainWindow) = 0;
    /// Takes everything out of the main window again. During a capture it asks \a askStop whether
    /// the capture may be stopped; without it, or on no, it returns false and stays open. It stays
    /// as well if the user lets the programmer write on, which it asks over \a parent itself.
    virtual bool closeProject(QWidget *parent, const std::function<bool()> &askStop) = 0;
    /// Opens a configuration or project file. Reports its errors itself.
    virtual bool openFile(const QString &path) = 0;
    /// Why the last file was not opened, in whole sentences; empty if there is no more to tell.
    [[nodiscard]] virtual QString refusal() const { return {}; }
    /// Takes over the device that the command line named; each may be empty.
    virtual void setDevice(const QString &family, const QString &device, const QString &fsFile) = 0;

    /// What the user has set and arranged in the open project; null for nothing. It outlives the
    /// project's closing.
    [[nodiscard]] virtual std::shared_ptr<const ProjectSetup> setup() { return {}; }
    /// Takes that over into the file that was just opened, as far as its design holds it, and tells
    /// what became of it.
    virtual void takeOver(const ProjectSetup &) {}

    /// What Start would send to the cores with the settings that show, for people to read; empty if
    /// there is nothing to run.
    [[nodiscard]] virtual QString startPreview() { return {}; }

    /// Ends a capture whose samples are being read; any other goes on. Reading runs inside the
    /// event loop that it began in, so it would hold up the question before closeProject until its
    /// end.
    virtual void stopReading() {}

    /// Says in the status line what was done.
    virtual void tell(const QString &) {}

    std::function<QTabWidget *()> tabWidgetGetter;
    std::function<QToolBar *()> toolBarGetter;
    std::function<QAction *()> openActionGetter;

Q_SIGNALS:
    /// The open file has this path from now on; empty when the project has been closed. \a remark
    /// tells that what is open is not what stands there.
    void fileNamed(const QString &path, const QString &remark = {});
};

} // namespace KEO
