#pragma once

#include "analyzerproject.h"
#include "wavetabs.h"

#include <config/signalentry.h>
#include <design/datafilereader.h>
#include <design/datafilewriter.h>
#include <design/projectfile.h>
#include <export/exportfiles.h>

#include <QMap>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QVariant>

#include <optional>

namespace KEO {

class CaptureManager;
class DescriptionWatch;
class KeoProgrammerWidget;
class ProgrammerPage;
class RunToolBar;

/// What the standard and the lite project have in common: their place in the main window, the run
/// control from Start to the last wave, the tabs with the waves, and their files. A kind of project
/// adds its page, its data manager and what the kinds tell in different words.
///
/// Everything runs on the GUI thread, much of it inside the signals of a data manager or inside a
/// box's event loop. A run may be stopped, and the project closed or deleted, in either.
class CaptureProject : public AnalyzerProject
{
    Q_OBJECT

public:
    ~CaptureProject() override;

    [[nodiscard]] bool isBusy() const final;
    void setupProject(QWidget *mainWindow) final;
    bool closeProject(QWidget *parent, const std::function<bool()> &askStop) final;
    /// Takes ".keo" and ".zeo" descriptions and ".analyzer_prj" project files. False during a
    /// capture, for any other extension (letter case counts), and after an error, which it has then
    /// shown.
    bool openFile(const QString &path) final;
    void setDevice(const QString &family, const QString &device, const QString &fsFile) final;

    /// F3 forces the trigger and F4 stops, and both take the waiting tip away.
    bool event(QEvent *event) override;
    /// Catches what the tip hands to the main window.
    bool eventFilter(QObject *watched, QEvent *event) override;

public Q_SLOTS:
    void onStart();
    void onAuto();
    void onStop();
    void onForceTrigger();
    void onZoomIn();
    void onZoomOut();
    void onZoomFit();
    /// Asks what to export of the waves that show, and writes it.
    void onExport();
    void onComplete(int resultID);
    /// Writes data file, description and project file. The first time it asks where to.
    void onSave();
    /// Another cable is chosen: the one at \a index of the list.
    void cabelChanged(int index);
    void onProgrammerChanged(bool succ, const QString &text);
    void onProgrammerEnableChange(bool status);

Q_SIGNALS:
    /// Number of the cable for the programmer tool.
    void programCableChanged(int cableIdx);
    /// Channel of the cable for the programmer tool. Channel 0 is not told.
    void programChannelChanged(int cableIdx);

protected:
    enum class RunKind { Single, Auto };

    /// How the arrangements of the waves find their windows in the next capture.
    explicit CaptureProject(LayoutKey layoutKey, QObject *parent);

    // What a kind of project has to tell or do.

    /// Owned by the class of the kind. Not asked for while that is being made or destroyed.
    [[nodiscard]] virtual CaptureManager &manager() const = 0;
    /// The tab with the settings, the programmer on top. Called once.
    virtual QWidget *buildPage() = 0;
    [[nodiscard]] virtual QString pageTitle() const = 0;
    /// The project has been put into a window, as at first or anew.
    virtual void resetPage() = 0;
    virtual void setPageEnabled(bool enabled) = 0;
    [[nodiscard]] virtual bool canStart() const = 0; ///< judged while idle
    [[nodiscard]] virtual bool canAuto() const = 0;  ///< judged while idle
    /// Takes the settings over from the page and starts.
    virtual void startRun() = 0;
    virtual void forceTrigger() = 0;
    /// What a box says when the user has stopped a run, or forced its trigger; empty for no box.
    [[nodiscard]] virtual QString stoppedText() const = 0;
    [[nodiscard]] virtual QString forcedText() const = 0;
    /// A wave tab of the core with that number is about to go; the names that the user gave its
    /// signals, by flat position, belong to the core.
    virtual void keepNames(int core, const QMap<int, SignalNames> &names) = 0;
    /// The project leaves the main window: what becomes of a run and of the design.
    virtual void leaveDesign() = 0;
    /// The sentence for a result that has no text of its own.
    [[nodiscard]] virtual QString unknownErrorText(int resultID) const = 0;
    [[nodiscard]] virtual ExportMode exportMode() const = 0;
    /// The cores to choose from in an export, given the waves that show, of which there are some.
    [[nodiscard]] virtual QList<ExportCore>
    exportCores(const QList<WaveMonitor::WaveMonitorWidget *> &monitors) const = 0;

    // What a kind of project has to tell about its files.

    /// Loads the description at \a path and shows it on the page. Fills in its check value.
    [[nodiscard]] virtual bool loadDesign(const QString &path, QString &id) = 0;
    /// What a box says of a saved session whose description can't be loaded.
    [[nodiscard]] virtual QString invalidSessionText() const = 0;
    /// Is a saved session without waves not worth opening?
    [[nodiscard]] virtual bool needsWaves() const = 0;
    /// Where Save writes.
    struct SaveTargets
    {
        QString projectFile;
        QString dataFile;
    };
    /// For the session that was opened from \a projectFile, with its samples in \a dataFile.
    [[nodiscard]] virtual SaveTargets saveTargets(const QString &projectFile,
                                                  const QString &dataFile) const = 0;
    /// Takes the settings over from the page and writes them into the description at \a path.
    /// False if that file can't be written.
    [[nodiscard]] virtual bool saveDescription(const QString &path) = 0;
    /// The numbers under which the data file has the wave tab \a wave, which stands at
    /// \a position in the list; contents are not asked for.
    [[nodiscard]] virtual WindowToSave numbersOf(const WaveMonitor::WaveMonitorWidget &wave,
                                                 int position) const = 0;
    /// Were all of \a windows captured from the open design?
    [[nodiscard]] virtual bool fitsDesign(const LoadedWindows &windows) const = 0;
    /// How a saved window shows.
    struct SavedTab
    {
        int core = -1; ///< -1 for none
        int window = 0;
        QString title;
    };
    /// Nothing for a window that is not to be shown.
    [[nodiscard]] virtual std::optional<SavedTab> tabOf(const LoadedWindow &window) const = 0;

    // What a kind of project may use.

    /// For the page: a new programmer, which the page owns.
    [[nodiscard]] KeoProgrammerWidget *makeProgrammerWidget();
    /// Model of the device with the cores, as the programmer has it; empty without a device.
    [[nodiscard]] QString targetName() const;
    /// The one place that decides what is enabled. Whatever changes the state of a run ends here.
    void updateActions();
    /// Shows one capture window: as the next round of an Auto run, or in a new tab. If nothing was
    /// captured a box says \a emptyText.
    void showCapture(const CapturedWindow &captured, const QString &emptyText);
    [[nodiscard]] static QString invalidDescriptionText();
    [[nodiscard]] bool isOpen() const { return !m_keoFilePath.isEmpty(); }
    /// For the destructors of the kinds: the page goes while there still is somebody to talk to.
    void deletePage();

private:
    void buildToolBar();
    void connectManager();
    [[nodiscard]] bool openDescription(const QString &path);
    /// Opens a saved session. False after an error, which it has then shown.
    [[nodiscard]] bool openProjectFile(const QString &path);
    /// What the project file at \a path says; nothing, with the reason in the debug log, if it
    /// can't be read or its description can't be loaded.
    [[nodiscard]] std::optional<ProjectFile> loadProject(const QString &path);
    enum class DataFileState { Loaded, Unusable };
    /// Shows the waves of the data file at \a path, all of them or none, and tells in a box why
    /// there are none. Loaded also when the file belongs to another design. The box may see the
    /// project closed or deleted.
    DataFileState loadDataFile(const QString &path);
    /// Hands the description's check value to the programmer as well.
    [[nodiscard]] bool takeDesign(const QString &path);
    void updateIsBusy(bool isBusy);
    /// A modal box. Does nothing while a box with the same text is open, so that a server which
    /// sends nonsense round by round does not pile them up.
    void showError(const QString &text);
    void showWarning(const QString &text);
    /// A modal box under the window's title; none without a text.
    void showInformation(const QString &text);
    void connectDescriptionWatch();
    [[nodiscard]] QString errorText(int resultID) const;
    /// Starts if the programmer's chain allows it.
    void startIfFit(RunKind kind);
    void startCapture(RunKind kind);
    void showSavedWindows(LoadedWindows windows);
    void saveDataFile(const QString &path) const;
    void clearWaveMonitors(WaveTabs::Layouts layouts);
    [[nodiscard]] QTabWidget *tabWidget() const;
    /// The wave tab in front, or null.
    [[nodiscard]] WaveMonitor::WaveMonitorWidget *currentWave() const;

    // All empty while the project is closed.
    QString m_keoFilePath;     ///< core description
    QString m_projectFilePath; ///< empty until saved
    QString m_dataFilePath;    ///< samples and arrangement, empty until saved

    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_page;             // ours; in the tab widget while open
    RunToolBar *m_runToolBar = nullptr;   // child
    DescriptionWatch *m_descriptionWatch; // child
    ProgrammerPage *m_programmer;         // child
    WaveTabs m_waveTabs;
    QSet<QString> m_openErrors; // texts of the boxes that are open
};

} // namespace KEO
