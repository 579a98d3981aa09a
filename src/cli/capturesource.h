#pragma once

#include "captureoptions.h"

#include <base/result.h>
#include <capture/capturemanager.h>
#include <config/signalentry.h>
#include <export/exportfiles.h>
#include <wave_data/signalelement.h>
#include <wave_data/windowcontents.h>

#include <QList>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace KEO {

/// One captured window, and what files and pictures tell of its core.
struct CapturedWindow
{
    ExportMode mode = ExportMode::Standard;
    ExportCore core;
    QList<SignalEntry> rows;                    ///< as the description lists them
    QList<WaveMonitor::SignalElement> elements; ///< empty if no row has arrived

    /// As a viewer shows it. The samples are shared, so asking twice costs little.
    [[nodiscard]] WaveMonitor::WindowContents contents() const;
};

/// The cores of one description and the runs on them: what differs between the kinds of core.
class CaptureSource : public QObject
{
    Q_OBJECT

public:
    /// The one for the kind of core that the description to capture with is for. A description that
    /// says nothing, or can't be read, counts as standard, whose loader has the words for it.
    static std::unique_ptr<CaptureSource> forOptions(const CaptureOptions &options);

    virtual CaptureManager &manager() = 0;
    /// Loads the description and checks what \a options ask of it. Nothing on success, else an
    /// error whose kind decides the exit status.
    virtual std::optional<Error> prepare(const CaptureOptions &options) = 0;
    /// Windows of a run, rounds apart.
    [[nodiscard]] virtual int windowCount() const = 0;
    virtual void start() = 0;
    virtual void forceTrigger() = 0;
    /// What a run waits for, such as "the trigger of core 1"; empty once everything has triggered.
    [[nodiscard]] virtual QString waitingFor() const = 0;
    /// Takes the window of a captured() signal. To be called once for each, since it takes the run
    /// on; \a core and \a window are those of the signal.
    virtual CapturedWindow take(int core, int window) = 0;

Q_SIGNALS:
    /// All of a window is there; see take.
    void captured(int core, int window);
};

} // namespace KEO
