#pragma once

#include "cableaccess.h"
#include "capturefiles.h"
#include "captureoptions.h"
#include "exitstatus.h"
#include "progressreport.h"

#include <base/result.h>
#include <design/design.h>
#include <design/savedcapture.h>
#include <wave_data/windowcontents.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QSize>

#include <functional>
#include <memory>

class QTimer;

namespace KEO {

/// One run of the capture program: reaches a cable, arms the cores, exports what arrives; or
/// exports what a project holds; or compares two projects. Exported paths go to standard output as
/// they are written, or all together as one JSON document; progress and errors go to standard
/// error.
class CaptureProgram final : public QObject
{
    Q_OBJECT

public:
    /// Draws a captured window as the viewer shows it into a PNG file; false if that can't be
    /// written. Handed in, since it needs widgets and this class does without.
    using PictureWriter = std::function<bool(const QString &path, QSize size, int core, int window,
                                             WaveMonitor::WindowContents contents)>;

    /// \a drawPicture is needed when the options ask for a picture.
    explicit CaptureProgram(CaptureOptions options, PictureWriter drawPicture = {},
                            QObject *parent = nullptr);

    /// Runs the event loop until the task is done.
    ExitStatus run();

private:
    ExitStatus listCables();
    ExitStatus listRecovery();
    ExitStatus capture();
    void previewRun();
    ExitStatus exportSaved();
    ExitStatus compareSaved();
    /// Loads the description and checks what the options ask of it.
    std::optional<Error> prepare();

    void warnOfMissingDevice();
    void startCapture();
    void rearmTimers();
    void onCaptured(int core, int window);
    Result<QStringList> writeFiles(const CaptureLabel &label, const ExportCore &core,
                                   WaveMonitor::WindowContents contents, bool isOnly) const;
    /// Tells of one exported window.
    void reportCapture(const CaptureLabel &label, const ExportCore &core, qsizetype samples,
                       const QStringList &files);
    void keepForProject(const CapturedWindow &captured);
    void endWithProject();
    void onSectionRead(int core, int window, int sectionsRead, int sections);
    void onReportChanged();
    void onTriggerComplete(int resultId);
    void endIfIncomplete();
    void end(ExitStatus status, const QString &message = {});

    [[nodiscard]] QString waitingFor() const;
    [[nodiscard]] bool isAuto() const { return m_options.autoRounds.has_value(); }
    void printJson();
    /// One JSON document, with the message if there is one.
    void printDocument(QJsonObject document);
    /// A line to standard output; a fault is kept for the end.
    void print(const QString &line);
    void printMessage() const;
    [[nodiscard]] ExitStatus statusAfterPrinting();

    const CaptureOptions m_options;
    const PictureWriter m_drawPicture;
    ProgressReport m_report;
    CableAccess m_cables;
    JtagSession &m_session; // the process-wide one
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
    ExitStatus m_status = ExitStatus::Captured;
    QString m_message;
    QString m_printFault;  ///< why standard output did not take everything; else empty
    QJsonArray m_captures; ///< or compared windows
    QJsonObject m_preview; // of a dry run
    SavedProject m_kept;   // the latest round
    bool m_projectSaved = false;
    QString m_exportFault; ///< why the first export failed; else empty
};

} // namespace KEO
