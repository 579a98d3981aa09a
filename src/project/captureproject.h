#pragma once

#include "analyzerproject.h"
#include "datafilereader.h"
#include "datafilewriter.h"
#include "wavetabs.h"

#include <export/exportfiles.h>

#include <QPointer>
#include <QSet>
#include <QString>
#include <QVariant>

#include <optional>

namespace KEO {

class DescriptionWatch;
class KeoProgrammerWidget;
class ProgrammerPage;
class RunToolBar;

/// What the standard and the lite project have in common: their place in the main window, the run
/// control from Start to the last wave, and the tabs with the waves. A kind of project adds its
/// page, its data manager and the texts in which the kinds differ.
///
/// Everything runs on the GUI thread, much of it inside the signals of a data manager or inside a
/// box's event loop. A run may be stopped, and the project closed or deleted, in either.
class CaptureProject : public AnalyzerProject
{
    Q_OBJECT

public:
    explicit CaptureProject(QObject *parent = nullptr);
    ~CaptureProject() override;

    void setupProject(QWidget *mainWindow) final;
    bool closeProject(QWidget *parent, const std::function<bool()> &askStop) final;

    void setDevice(const QString &family, const QString &device, const QString &fsFile) final;

    /// F3 forces the trigger and F4 stops, and both take the waiting tip away.
    bool event(QEvent *event) override;
    /// Catches what the tip hands to the main window.
    bool eventFilter(QObject *watched, QEvent *event) override;

public Q_SLOTS:
    void onStart();
    void onAuto();
    virtual void onStop() = 0;
    virtual void onForceTrigger() = 0;
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

    // What a kind of project has to tell or do.

    /// The tab with the settings, the programmer on top. Called once.
    virtual QWidget *buildPage() = 0;
    [[nodiscard]] virtual QString pageTitle() const = 0;
    /// The project has been put into a window, as at first or anew.
    virtual void resetPage() = 0;
    virtual void setPageEnabled(bool enabled) = 0;
    [[nodiscard]] virtual bool canStart() const = 0; ///< judged while idle
    [[nodiscard]] virtual bool canAuto() const = 0;  ///< judged while idle
    /// Finished rounds of an Auto run, -1 outside of one.
    [[nodiscard]] virtual int autorun() const = 0;
    virtual void setAutorun(int rounds) = 0;
    /// Device model of the runs.
    virtual void setDeviceName(const QString &name) = 0;
    virtual void openDevice(const QVariantList &chain) = 0;
    /// Takes the settings over from the page and starts.
    virtual void startRun() = 0;
    /// The user's names of a wave tab that is about to go belong to the core.
    virtual void keepNames(const WaveMonitor::WaveMonitorWidget &wave) = 0;
    /// The project leaves the main window: ends the run and lets go of the design as its kind does.
    virtual void leaveDesign() = 0;
    /// The sentence for a result that has no text of its own.
    [[nodiscard]] virtual QString unknownErrorText(int resultID) const = 0;
    [[nodiscard]] virtual ExportMode exportMode() const = 0;
    /// The cores to choose from in an export, given the waves that show, of which there are some.
    [[nodiscard]] virtual QList<ExportCore>
    exportCores(const QList<WaveMonitor::WaveMonitorWidget *> &monitors) const = 0;

    // What a kind of project has to tell about its files.

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
    /// The check value of the description that has been loaded, for the programmer.
    void setDesignId(const QString &id);
    /// For the data manager: a step of a run.
    void updateIsBusy(bool isBusy);
    /// The one place that decides what is enabled. Whatever changes the state of a run ends here.
    void updateActions();
    /// Shows one capture window: as the next round of an Auto run, or in a new tab.
    void showCapture(const CapturedWindow &captured);
    /// A modal box. Does nothing while a box with the same text is open, so that a server which
    /// sends nonsense round by round does not pile them up.
    void showError(const QString &text);
    void showWarning(const QString &text);
    enum class DataFileState { Loaded, Unusable };
    /// Shows the waves of the data file at \a path, all of them or none, and tells in a box why
    /// there are none. Loaded also when the file belongs to another design. The box may see the
    /// project closed or deleted.
    DataFileState loadDataFile(const QString &path);
    /// A modal box under the window's title.
    void showInformation(const QString &text);
    /// Call it after each successful openFile: from now on the user hears of changes on disk.
    void watchDescription();
    /// For the destructors of the kinds: the page goes while there still is somebody to talk to.
    void deletePage();

    // All empty while the project is closed.
    QString m_keoFilePath;     ///< core description
    QString m_projectFilePath; ///< empty until saved
    QString m_dataFilePath;    ///< samples and arrangement, empty until saved

private:
    void buildToolBar();
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

    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_page;             // ours; in the tab widget while open
    RunToolBar *m_runToolBar = nullptr;   // child
    DescriptionWatch *m_descriptionWatch; // child
    ProgrammerPage *m_programmer;         // child
    WaveTabs m_waveTabs;
    QSet<QString> m_openErrors; // texts of the boxes that are open
};

} // namespace KEO
