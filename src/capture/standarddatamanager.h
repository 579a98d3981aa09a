#pragma once

#include <config/coreconfig.h>
#include <link/cmdpack.h>

#include <QBitArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <functional>

class QTimer;

namespace KEO {

class JtagSession;

/// Where a run stands. The numbers are shared with the lite core's runs, which have a state 2.
enum class CaptureState {
    Idle = 0,
    Armed = 1,       ///< cores are programmed, the start register is polled
    Reading = 3,     ///< the capture memory of the current core is being read
    ReadComplete = 4 ///< all windows of the current core are there
};

/// Runs captures on the standard cores of one design: owns the core records, programs the cores,
/// polls until one has triggered, reads its memory and hands out raw windows. It knows nothing of
/// the screen. GUI thread; nothing blocks, but reading runs the event loop between two sections.
///
/// A run ends with triggerComplete: when all armed cores have been read, on stop, or when the
/// device can't be opened. There is no time-out: a lost reply, or a description that asks for
/// windows without a section, leaves the run waiting for stop.
///
/// Every receiver of a signal, and whatever else runs in the event loop, may stop, start, release
/// or delete the manager. Replies that arrive for an earlier run, or for a manager that is gone, do
/// nothing.
class KeoStandardDataManager final : public QObject
{
    Q_OBJECT

public:
    /// Shows an error to the user.
    using ErrorBox = std::function<void(const QString &title, const QString &text)>;

    /// Uses the process-wide session.
    explicit KeoStandardDataManager(QObject *parent = nullptr);
    /// \a session is borrowed and outlives the manager.
    explicit KeoStandardDataManager(JtagSession &session, QObject *parent = nullptr);
    ~KeoStandardDataManager() override;

    /// Replaces the cores with those of the description at \a path, and \a id with its check value.
    /// False if there is no such file, which changes nothing, or if it gives no core. The extension
    /// (.keo or .zeo) is kept for the register image. Stops a run that is going on.
    bool load(const QString &path, QString &id);
    /// Replaces the cores. Stops a run that is going on.
    void setCores(CoreList cores);
    /// Deletes all cores. Stops a run that is going on.
    void release();

    /// Sends "OPEN"; selectCable must have succeeded before. Does not wait: start may follow at
    /// once, and a device that can't be opened stops the run, which emits triggerComplete(0), and
    /// then triggerComplete(result).
    void openDevice(const QVariantList &chain);
    /// Programs the cores at these positions in cores() and starts polling. Positions without a
    /// core are skipped. Does nothing unless idle.
    void start(const QList<int> &positions);
    /// Aborts the run and closes the device. Also when idle, and then it still sends "CLOSE".
    void stop();
    /// Asks the armed cores to trigger now. Does nothing while reading.
    void forceTrigger();
    /// The sections of a window, to be joined in list order; row order is told at cutSamples. Takes
    /// the run on, so it must be called exactly once for each readRamComplete. Empty for a window
    /// that was not read.
    QList<QBitArray> rawWindow(int window);

    [[nodiscard]] CaptureState state() const { return m_state; }
    [[nodiscard]] const CoreList &cores() const { return m_cores; }
    /// The core with that CoreConfig::index, as the signals carry it, or null. Borrowed.
    [[nodiscard]] CoreConfig *coreByIndex(int index) const;
    /// Cores whose `active` is not 0. Borrowed.
    [[nodiscard]] QList<CoreConfig *> activeCores() const;

    /// Finished rounds of an Auto run; -1 outside of one. Set to 0 before start, a run begins again
    /// after each read until it is stopped.
    [[nodiscard]] int autorun() const { return m_autorun; }
    void setAutorun(int rounds) { m_autorun = rounds; }
    /// Device model of the run, for the register image.
    [[nodiscard]] const QString &deviceName() const { return m_deviceName; }
    void setDeviceName(const QString &name) { m_deviceName = name; }
    /// The cores came from a .zeo description.
    [[nodiscard]] bool isZeo() const { return m_isZeo; }
    void setZeo(bool isZeo) { m_isZeo = isZeo; }

    /// How onTimeout shows its error. The program with windows installs a box here; this library
    /// serves the command line as well and knows no widgets. Without one the error is logged.
    void setErrorBox(ErrorBox box);

public Q_SLOTS:
    /// One tick of the polling timer.
    void checkState();
    /// Stops and reports a server that does not answer. Nothing in the program calls it by itself.
    void onTimeout();

Q_SIGNALS:
    /// All sections of a window are there; see rawWindow. \a coreIdx is CoreConfig::index.
    void readRamComplete(int coreIdx, int winIdx);
    /// A run is over: 0, or after that the result of an "OPEN" that failed.
    void triggerComplete(int resultID);
    /// Sent on every step of a run, also when the value stays.
    void statusChanged(bool isBusy);
    /// Progress of a window: \a sectionsRead of \a sections have arrived.
    void sectionRead(int core, int window, int sectionsRead, int sections);

private:
    /// How the memory of a core is read; taken once for each read.
    struct ReadPlan
    {
        int registerWidth = 0;
        int sectionSize = 0;  ///< rows
        int sectionCount = 0; ///< in a window; 0 if there is nothing to read
        int windowCount = 0;
        qint64 stride = 0; ///< rows from one window to the next

        explicit ReadPlan(const CoreConfig &core);
        /// Bits that are read for a section, filling included.
        [[nodiscard]] int sectionBits() const;
    };

    /// Remembers a step of a run, so that a loop or reply can tell whether the run has moved on, or
    /// the manager is gone.
    struct Step
    {
        QPointer<KeoStandardDataManager> manager;
        quint64 number = 0;

        [[nodiscard]] bool isCurrent() const { return manager && manager->m_step == number; }
    };

    Step currentStep() { return {this, m_step}; }
    /// Makes all loops and replies that are under way stale.
    Step beginStep();
    void enterState(CaptureState state);
    void endRun();

    CoreConfig *firstArmedCore() const;
    void selectCore(CoreConfig &core);
    void writeStartRegister(const CoreConfig &core, int value);
    void arm(CoreConfig &core, const QList<QBitArray> &image);
    void rearm();

    void poll(CoreConfig &core, const Step &step);
    void takeStartRegister(const CmdPack &reply);
    void readWindows();
    /// False when the run has moved on meanwhile.
    bool readSections(const ReadPlan &plan, int window, const Step &step);
    void takeSection(const CmdPack &reply, const ReadPlan &plan);

    JtagSession &m_session; // borrowed
    QTimer *m_timer;        // owned by the object tree
    CaptureState m_state = CaptureState::Idle;
    QString m_deviceName;
    CoreList m_cores;
    CoreConfig *m_currentCore = nullptr;  // in m_cores; polled or read
    CoreConfig *m_selectedCore = nullptr; // in m_cores; the one that shift words reach
    QList<QList<QBitArray>> m_windowData; // sections of each window of the current core, last first
    int m_autorun = -1;
    bool m_isZeo = false;
    quint64 m_step = 0;
    ErrorBox m_errorBox;
};

} // namespace KEO
