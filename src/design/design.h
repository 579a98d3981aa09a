#pragma once

#include "capturedisplay.h"
#include "coresetup.h"
#include "datafilecheck.h"
#include "kindtraits.h"
#include "rehearsal.h"
#include "triggeroptions.h"

#include <base/result.h>
#include <capture/capturemanager.h>
#include <capture/triggercheck.h>
#include <config/signalentry.h>

#include <QBitArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace KEO {

struct CoreConfig;

/// The cores of one description, the runs on them and what may be done with their captures: all
/// that the kinds of core differ in, without a window. Owns the data manager and with it the core
/// records. See CaptureManager for threads and for what may happen inside its signals.
class Design : public QObject
{
    Q_OBJECT

public:
    /// The one for a kind of core. An unknown kind counts as standard, whose loader has the words
    /// for it. \a session is borrowed and outlives the design.
    [[nodiscard]] static std::unique_ptr<Design> make(DescriptionKind kind, JtagSession &session);

    [[nodiscard]] const KindTraits &traits() const { return m_traits; }
    /// The one that the manager talks through.
    [[nodiscard]] JtagSession &session() const { return m_session; }
    /// Not to be asked for in the destructors of receivers.
    [[nodiscard]] virtual CaptureManager &manager() = 0;
    [[nodiscard]] bool isBusy() { return manager().state() != CaptureState::Idle; }

    /// Replaces the cores with those of the description at \a path and gives its check value. An
    /// error of kind File says in words for the user why it can't be used; one that is missing
    /// changes nothing, any other leaves no cores. Of standard cores the first is in the run then.
    [[nodiscard]] Result<QString> load(const QString &path);
    /// The description as the cores are now, to be written in text mode; null without cores.
    [[nodiscard]] virtual QByteArray descriptionText() const = 0;
    /// The window with the design is closed: what becomes of a run and of the cores. May see the
    /// design deleted.
    virtual void leave() = 0;

    /// Makes the cores with these numbers the ones that run, or the first for none, just as the
    /// description has them. An error of kind Usage if there is no such core, of kind Format if
    /// one can't be captured as it stands, see captureObstacle.
    [[nodiscard]] virtual std::optional<Error> choose(const QList<int> &cores) = 0;
    /// Changes the settings of cores as a command line asks, see applyTriggerOptions; to be called
    /// before choose. An error of kind Usage if there is no such core, or nothing to set on it.
    [[nodiscard]] virtual std::optional<Error> apply(const QList<TriggerOptions> &options) = 0;
    /// Copies of the cores as they are set.
    [[nodiscard]] virtual CoreSetup setup() const = 0;
    /// Takes over what was set in an older build of the design that was just loaded, as far as it
    /// holds that. See carrySettings; all of a design of the other kind is lost.
    virtual SettingsCarry carry(const CoreSetup &before) = 0;
    /// What would make another run on the same description the same as the next one here. An error
    /// of kind Usage or Format tells why that one can't be. \a deviceModel is as in take.
    [[nodiscard]] virtual Result<RunSettings> runSettings(const QString &deviceModel) const = 0;
    /// The model of device that a run goes by; empty: not known. \a deviceModel is as in take.
    [[nodiscard]] virtual QString deviceOfRun(const QString &deviceModel) const = 0;
    /// Is that the programmer's target, and not the name that the manager has?
    [[nodiscard]] virtual bool goesByTarget() const = 0;
    /// Why the samples of a run may be shifted that goes by \a device, a sentence for the user;
    /// empty: they are not, if that is the device.
    [[nodiscard]] QString deviceDoubt(const QString &device) const;
    /// Is there anything that a run, or an Auto run, could read?
    [[nodiscard]] virtual bool canStart() const = 0;
    [[nodiscard]] virtual bool canAuto() const = 0;
    /// Windows of a run, rounds apart.
    [[nodiscard]] virtual int windowCount() const = 0;
    /// From start to the capture, in ms; negative: not before forceTrigger. Only for a kind that
    /// has a delay.
    void setDelay(int delay) { m_delay = delay; }
    [[nodiscard]] int delay() const { return m_delay; }
    virtual void start() = 0;
    /// The shift words that start would send as the cores are now, as far as they are known
    /// beforehand. Changes nothing.
    [[nodiscard]] virtual QList<QBitArray> startWords() const = 0;
    struct CoreFinding
    {
        int core = 0; ///< its number in the description
        TriggerFinding finding;
    };
    /// What there is to say of the trigger set-ups that start would send.
    [[nodiscard]] virtual QList<CoreFinding> findings() const { return {}; }
    /// What the trigger of the core with that number, as it is set now, makes of a window; nothing
    /// if there is no such core, or it has no trigger.
    [[nodiscard]] virtual std::optional<Rehearsal>
    rehearse(int core, const WaveMonitor::WindowContents &contents);
    virtual void forceTrigger() = 0;
    /// What a run waits for, such as "the trigger of core 1"; empty once everything has triggered.
    [[nodiscard]] virtual QString waitingFor() const = 0;
    /// Takes the window of a captured() signal. To be called once for each, since it takes the run
    /// on; \a core and \a window are those of the signal, \a deviceModel the chip's model or empty.
    /// Nothing if the core, or the design itself, is gone.
    [[nodiscard]] virtual std::optional<CapturedWindow> take(int core, int window,
                                                             const QString &deviceModel) = 0;

    /// The core with that number if it has a trigger, else null. Borrowed until the next load.
    [[nodiscard]] virtual const CoreConfig *triggerCore(int) const { return nullptr; }
    [[nodiscard]] virtual CoreConfig *triggerCore(int) { return nullptr; }
    /// What an export tells of the core with that number; of an unknown one, its number.
    [[nodiscard]] virtual ExportCore exportCore(int core) const = 0;
    /// The user has named the signals of a core, by flat position.
    virtual void keepNames(int core, const QMap<int, SignalNames> &names) = 0;

    /// A window of a data file.
    struct SavedWindow
    {
        WindowPlace place;
        WaveMonitor::WindowContents contents;
    };
    using SavedWindows = std::vector<SavedWindow>;
    /// The windows of the data file at \a path that are to be shown, in its order; nothing if it
    /// belongs to another design. Errors are those of loadDataFile.
    [[nodiscard]] Result<std::optional<SavedWindows>>
    openWindows(const QString &path, TriggerPosition position = TriggerPosition::AsDescribed) const;

Q_SIGNALS:
    /// All of a window is there; see take. \a core is the number in the description.
    void captured(int core, int window);

protected:
    Design(DescriptionKind kind, JtagSession &session);

    /// Where load gets the cores. Gives the check value, or why there is none.
    virtual bool loadCores(const QString &path, QString &id, QString &reason) = 0;
    /// Were all of \a windows captured from these cores?
    [[nodiscard]] virtual bool fits(const LoadedWindows &windows,
                                    TriggerPosition position) const = 0;
    /// Nothing for a window that is not to be shown.
    [[nodiscard]] virtual std::optional<WindowPlace> placeOf(const LoadedWindow &window) const = 0;
    /// Do the samples of the cores lie otherwise in some models of device?
    [[nodiscard]] virtual bool dependsOnDevice() const = 0;
    [[nodiscard]] static Error unknownCore(int number);

private:
    const KindTraits &m_traits;
    JtagSession &m_session;
    int m_delay = 0;
};

} // namespace KEO
