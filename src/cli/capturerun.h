#pragma once

#include "cableaccess.h"
#include "captureoptions.h"
#include "progressreport.h"
#include "resultoutput.h"

#include <base/result.h>
#include <design/design.h>
#include <design/savedcapture.h>

#include <QObject>

#include <memory>
#include <optional>

class QTimer;

namespace KEO {

class WindowExport;

/// One capture without a window: reaches a cable, arms the cores, exports what arrives and saves it
/// as a project. Borrows all that it is given.
class CaptureRun final : public QObject
{
    Q_OBJECT

public:
    CaptureRun(const CaptureOptions &options, WindowExport &windows, ResultOutput &output,
               ProgressReport &report);

    /// Runs the event loop until the capture is done.
    TaskResult run();

private:
    /// What has to be in order before there is anything to wait for.
    [[nodiscard]] std::optional<Error> prepare();
    void reachCable();
    void start();
    void rearmTimers();
    void onCaptured(int core, int window);
    [[nodiscard]] std::optional<Error> write(const CapturedWindow &captured, int core);
    void keepForProject(const CapturedWindow &captured);
    void endWithProject();
    void onSectionRead(int core, int window, int sectionsRead, int sections);
    void onReportChanged();
    void onTriggerComplete(int resultId);
    void endIfIncomplete();
    void end(ExitStatus status, const QString &message = {});
    void leaveServer();

    [[nodiscard]] QString waitingFor() const;
    [[nodiscard]] bool isAuto() const { return m_options.autoRounds.has_value(); }

    const CaptureOptions &m_options;
    WindowExport &m_exports;
    ResultOutput &m_output;
    ProgressReport &m_report;
    CableAccess m_cables;
    std::unique_ptr<Design> m_design;
    CaptureManager &m_manager; // of the design
    QTimer *m_forceTimer;      // owned by the object tree
    QTimer *m_timeoutTimer;    // owned by the object tree
    QTimer *m_linkTimer;       // owned by the object tree

    QString m_cable;         // the one in use
    int m_windows = 0;       // of the whole run, Auto rounds apart
    int m_windowsLeft = 0;   // those that have not arrived yet
    int m_round = 0;         // rounds exported so far
    bool m_isSilent = false; // the server, of late
    bool m_ended = false;
    TaskResult m_result;
    SavedProject m_kept; // the latest round
    bool m_projectSaved = false;
    QString m_exportFault; // why the first export failed; else empty
};

} // namespace KEO
