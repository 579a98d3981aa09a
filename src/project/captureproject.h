#pragma once

#include "analyzerproject.h"
#include "wavetabs.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <utility>

namespace KEO {

struct CapturePace;
class CommandCopy;
class ConfigPage;
class Design;
class DescriptionWatch;
class DeviceChooser;
class JtagSession;
class ProgrammerLink;
class ProjectBoxes;
class ProjectFiles;
class RecoveryKeeper;
class RunControl;
class RunStatus;
class RunToolBar;
class SetupCarrier;
class StatusLine;
class TriggerFromWaves;
class TriggerRehearsal;
class WhyNoTrigger;

/// A design with its page in the main window: puts the parts of a project together and says what
/// is enabled. The kinds of project differ in their design and their page.
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
    [[nodiscard]] QString refusal() const final;
    void setDevice(const QString &family, const QString &device, const QString &fsFile) final;
    [[nodiscard]] std::shared_ptr<const ProjectSetup> setup() final;
    void takeOver(const ProjectSetup &setup) final;
    [[nodiscard]] QString startPreview() final;
    void stopReading() final;
    void tell(const QString &text) final;

    /// F3 forces the trigger and F4 stops, and both take the waiting tip away.
    bool event(QEvent *event) override;
    /// Catches what the tip hands to the main window.
    bool eventFilter(QObject *watched, QEvent *event) override;

    /// How fast runs ask the cable server, from the next one on.
    void setPace(const CapturePace &pace);

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
    /// Puts the command line on the clipboard that captures as Start would.
    void onCopyCommand();
    /// Another cable is chosen: the one at \a index of the list.
    void cabelChanged(int index);
    void onProgrammerChanged(bool succ, const QString &text);
    void onProgrammerEnableChange(bool status);
    /// Takes over the device that the user named, for the runs to come, and for a reload as well.
    void chooseDevice(const QString &family, const QString &device);

Q_SIGNALS:
    /// Number of the cable for the programmer tool.
    void programCableChanged(int cableIdx);
    /// Channel of the cable for the programmer tool. Channel 0 is not told.
    void programChannelChanged(int cableIdx);
    /// What became of a save or an export, in words for the user.
    void told(const QString &text);

protected:
    /// What a kind of project brings along. The page may borrow the design.
    struct Kind
    {
        std::unique_ptr<Design> design;
        std::unique_ptr<ConfigPage> page;
    };
    template <typename KindOfDesign, typename KindOfPage>
    static Kind makeKind(JtagSession &session)
    {
        auto design = std::make_unique<KindOfDesign>(session);
        auto page = std::make_unique<KindOfPage>(*design);
        return {std::move(design), std::move(page)};
    }
    CaptureProject(Kind kind, QObject *parent);

    [[nodiscard]] Design &design() const { return *m_design; }
    [[nodiscard]] ConfigPage &page() const { return *m_page; }
    /// All of a captured window is there.
    void showCapture(int core, int window);

private:
    void connectToolBar();
    void connectProgrammer();
    void connectDescriptionWatch();
    /// The one place that decides what is enabled. Whatever changes the state of a run ends here.
    void updateActions();
    /// Tells which device and cable a run would use, and which servers are gone.
    void updateConnections();
    /// The open file has a name: tells of it and watches the description.
    void followFile();

    std::unique_ptr<Design> m_design;
    std::unique_ptr<ConfigPage> m_page;
    QPointer<QWidget> m_tab; // of the page; ours; in the tab widget while open
    WaveTabs m_waveTabs;
    QString m_clockedDescription;         ///< whose clock periods are kept
    ProgrammerLink *m_programmer;         // child
    ProjectBoxes *m_boxes;                // child
    RunToolBar *m_runToolBar;             // child
    DescriptionWatch *m_descriptionWatch; // child
    RunControl *m_run;                    // child
    ProjectFiles *m_files;                // child
    CommandCopy *m_command;               // child
    RecoveryKeeper *m_recovery;           // child
    SetupCarrier *m_carrier;              // child
    TriggerRehearsal *m_rehearsal;        // child
    WhyNoTrigger *m_why;                  // child
    TriggerFromWaves *m_fromWaves;        // child
    DeviceChooser *m_deviceChooser;       // child
    StatusLine *m_status;                 // child
    RunStatus *m_runStatus;               // child
};

} // namespace KEO
