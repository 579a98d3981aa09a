#pragma once

#include "captureoptions.h"

#include <base/result.h>
#include <capture/capturemanager.h>
#include <config/signalentry.h>
#include <wave/signalelement.h>

#include <QList>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace KEO {

/// What exports and pictures tell of a core, whatever its kind.
struct CapturedCore
{
    enum class Kind { Standard, Lite };

    Kind kind = Kind::Standard;
    int index = 0; ///< as the description counts
    QString module_name;
    QString sample_clock;
    int trig_type = 0;
    int trigger_pos = 0; ///< samples
    QList<SignalEntry> signals;
};

/// One captured window.
struct CapturedWindow
{
    CapturedCore core;
    QList<WaveMonitor::SignalElement> elements; ///< empty if no row has arrived
};

/// The cores of one description and the runs on them: what differs between the kinds of core.
class CaptureSource : public QObject
{
    Q_OBJECT

public:
    /// The one for the kind of core that the description at \a path is for. A description that
    /// says nothing, or can't be read, counts as standard, whose loader has the words for it.
    static std::unique_ptr<CaptureSource> forFile(const QString &path);

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

protected:
    [[nodiscard]] static Error refusal(const QString &file, const QString &reason);
};

} // namespace KEO
