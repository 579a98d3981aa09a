#pragma once

#include "capturepace.h"
#include "runreport.h"

#include <config/capturelimits.h>
#include <link/cmdpack.h>
#include <link/jtagsession.h>

#include <QBitArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

class QTimer;

namespace KEO {

class CaptureRequests;
struct SectionPlace;

/// Where a run stands. The numbers are fixed; a standard core's run has no state 2, and the state 1
/// of the two kinds of core has two names.
enum class CaptureState {
    Idle = 0,
    Armed = 1,       ///< standard: cores are programmed, the start register is polled
    Started = 1,     ///< lite: the capture has not been armed yet, or its data has been taken
    Polling = 2,     ///< lite: armed, the start register is polled
    Reading = 3,     ///< the capture memory of a core is being read
    ReadComplete = 4 ///< all of it is there
};

/// What the runs of the two kinds of core have in common: the device, the steps of a run and who
/// may disturb them, reading the capture memory section by section, and the end. A kind of core
/// adds how it is armed and polled and what its memory looks like.
///
/// GUI thread; nothing blocks and nothing runs an event loop: what is read is asked for section by
/// section on a timer, at the pace that the program has set. A run ends with triggerComplete: when
/// everything has been read, on stop, or when the device can't be opened. There is no time-out: a
/// lost reply, or a description that asks for no section at all, leaves the run waiting for stop.
/// The report tells meanwhile that a server does not answer.
///
/// A window is handed out only if every section of it came as it was asked for; of any other it is
/// told that it is complete, and nothing is handed out. Which replies are believed, see
/// CaptureRequests.
///
/// Every receiver of a signal, and whatever else runs in the event loop, may stop, start, release
/// or delete the manager. Replies that arrive for an earlier run, or for a manager that is gone, do
/// nothing.
class CaptureManager : public QObject
{
    Q_OBJECT

public:
    static constexpr int kSectionRows = kBlockRows; ///< of capture memory, read at once at the most

    ~CaptureManager() override;

    /// Sends "OPEN"; selectCable must have succeeded before. Does not wait: start may follow at
    /// once, and a device that can't be opened stops the run, which emits triggerComplete(0), and
    /// then triggerComplete(result).
    void openDevice(const QVariantList &chain);
    /// Aborts the run and closes the device. Also when idle, and then it still sends "CLOSE".
    void stop();

    [[nodiscard]] CaptureState state() const { return m_state; }
    /// Finished rounds of an Auto run; -1 outside of one. Set to 0 before start, a run begins again
    /// after each read until it is stopped.
    [[nodiscard]] int autorun() const { return m_autorun; }
    void setAutorun(int rounds) { m_autorun = rounds; }
    /// Device model of the run.
    [[nodiscard]] const QString &deviceName() const { return m_deviceName; }
    void setDeviceName(const QString &name) { m_deviceName = name; }
    /// The description was a .zeo file.
    [[nodiscard]] bool isZeo() const { return m_isZeo; }
    void setZeo(bool isZeo) { m_isZeo = isZeo; }
    /// What the run that is going on, or the last one, has to tell; begins anew with each start.
    [[nodiscard]] const RunReport &report() const { return m_report; }
    [[nodiscard]] const CapturePace &pace() const { return m_pace; }
    /// From the next run on.
    void setPace(const CapturePace &pace) { m_pace = pace; }

Q_SIGNALS:
    /// A run is over: 0, or after that the result of an "OPEN" that failed.
    void triggerComplete(int resultID);
    /// Sent on every step of a run, also when the value stays.
    void statusChanged(bool isBusy);
    /// Progress of a window: \a sectionsRead of \a sections have arrived.
    void sectionRead(int core, int window, int sectionsRead, int sections);
    /// See report. Missing windows are told before triggerComplete.
    void reportChanged();

protected:
    /// \a session is borrowed and outlives the manager.
    explicit CaptureManager(JtagSession &session, QObject *parent);

    /// How the memory of a core is read.
    struct ReadPlan
    {
        int core = 0;         ///< its index, as the signals carry it
        int rowBits = 0;      ///< from one row to the next
        int sectionRows = 0;  ///< in a section
        int sectionCount = 0; ///< in a window; 0 if there is nothing to read
        int windowCount = 0;
        qint64 stride = 0;   ///< rows from one window to the next
        int leadingBits = 0; ///< that a section's read shifts out before its rows

        /// Bits that are read for a section, filling included.
        [[nodiscard]] int sectionBits() const;
    };

    /// Remembers a step of a run, so that a timer or reply can tell whether the run has moved on,
    /// or the manager is gone.
    struct Step
    {
        QPointer<CaptureManager> manager;
        quint64 number = 0;

        [[nodiscard]] bool isCurrent() const { return manager && manager->m_step == number; }
    };

    /// What the answer to a register read says.
    enum class RegisterAnswer {
        Nothing, ///< another type, or fewer bits than the register has
        NotZero,
        Zero,
        AssumedZero ///< no bits, and they count as zeros
    };
    enum class EmptyAnswer { SaysNothing, MeansZero };
    /// How it is known that the memory holds the samples of this capture.
    enum class Evidence { Told, Assumed };

    // What a kind of core has to do.

    /// Takes the cores that are armed out of the run and tells them so.
    virtual void disarm() = 0;
    /// A run is over: stops its timers and forgets what it has left behind.
    virtual void forgetRun() = 0;
    /// The word that asks for the section of \a plan which begins at \a row.
    [[nodiscard]] virtual QBitArray sectionWord(const ReadPlan &plan, qint64 row) const = 0;
    /// The last section of a window has arrived. May delete the manager.
    virtual void windowComplete(const ReadPlan &plan, int window) = 0;

    // What a kind of core may use.

    [[nodiscard]] Step currentStep() { return {this, m_step}; }
    /// Makes all requests and replies that are under way stale.
    Step beginStep();
    void enterState(CaptureState state);
    /// A run begins. False when a receiver of the state has made it move on.
    bool beginRun(CaptureState state);
    /// A round of an Auto run begins.
    void beginRound();
    /// Closes the device at the end of a run that was not stopped.
    void finish();
    /// A description's extension tells the form of the design; another one tells nothing.
    void noteExtension(const QString &path);
    using PacketMaker = CmdPack (*)(const QBitArray &word);
    /// Sends a packet with each of \a words, behind those posted before. Up to a few hundred go at
    /// once; the rest, a truth table has tens of thousands, in portions, between which the event
    /// loop runs. A stop drops what is left.
    void post(PacketMaker packet, const QList<QBitArray> &words);
    /// Not all of that has been sent.
    [[nodiscard]] bool isPosting() const { return !m_outbox.isEmpty(); }
    [[nodiscard]] static QBitArray startWord(int value, int registerWidth);
    void writeStartRegister(int value, int registerWidth);
    /// Sends \a pack, which reads a register of \a width bits. \a answered gets what comes of it;
    /// it has to look itself whether the run has moved on. A zero makes the memory be read, so if
    /// the server takes it back, the samples are in doubt.
    void readRegister(const CmdPack &pack, int width, EmptyAnswer empty,
                      std::function<void(RegisterAnswer)> answered);
    /// Selects the start register and reads it.
    void readStartRegister(int width, EmptyAnswer empty,
                           std::function<void(RegisterAnswer)> answered);
    /// The reads under way are lost; the run goes on.
    void giveUpReads();
    /// Begins to read all windows; the sections are asked for one by one, see CapturePace.
    void readMemory(const ReadPlan &plan, Evidence evidence = Evidence::Told);
    /// The sections of a window in list order, the last one first; empty if it was not read whole.
    [[nodiscard]] QList<QBitArray> sections(int window) const;
    void forgetSections() { m_windows.clear(); }
    [[nodiscard]] JtagSession &session() const { return m_session; }
    /// "OPEN" has not been answered yet.
    [[nodiscard]] bool isOpening() const;

    enum StartValue { Disarm = 0, Arm = 1, Force = 3 };

private:
    struct Section
    {
        enum { Awaited, Damaged, Whole } state = Awaited;
        QBitArray rows;
    };
    struct Window
    {
        QList<Section> sections; ///< by their number, as far as they have been asked for
        int arrived = 0;
        bool isTrusted = true;
        bool isDelivered = false;
    };
    struct SectionRead;
    /// What of a reading has not been asked for yet.
    struct Unasked
    {
        ReadPlan plan;
        Step step;
        int window = 0; ///< of the next section
        int section = 0;
        int inFlight = 0; ///< sections that wait for their answers
    };

    void endRun();
    void sendPortion();
    void emptyOutbox();
    void beginWindow();
    /// Has the next section asked for when its time has come.
    void scheduleSection();
    void onSectionDue();
    void askSection(const ReadPlan &plan, const SectionPlace &place, const Step &step);
    void noteAnswered();
    [[nodiscard]] static Section sectionOf(const CmdPack &reply, const ReadPlan &plan);
    void takeSection(SectionRead &read, const CmdPack &reply);
    void takeSectionAgain(const SectionRead &read, const CmdPack &reply);
    void deliver(const ReadPlan &plan, int window);
    /// The samples of that reading may be wrong; of one window, or of all.
    void doubt(quint64 reading, std::optional<int> window = {});
    void noteMissingWindows();
    void watchServer();
    void changeReport(RunReport report);

    JtagSession &m_session; // borrowed
    std::unique_ptr<CaptureRequests> m_requests;
    CaptureState m_state = CaptureState::Idle;
    RunReport m_report;
    CapturePace m_pace;
    struct Posted
    {
        PacketMaker packet = nullptr;
        QBitArray word;
    };
    QList<Posted> m_outbox; // still to be sent
    QTimer *m_outboxTimer;  // owned by the object tree; runs while there are any
    QTimer *m_watch;        // owned by the object tree; runs in a run
    std::optional<Unasked> m_unasked;
    QTimer *m_sectionTimer;     // owned by the object tree; runs while sections are to be asked for
    QElapsedTimer m_sinceAsked; // since the latest section was, or the reading began
    // Of the latest reading of a core's memory.
    quint64 m_reading = 0; // its number
    int m_readCore = 0;
    Evidence m_evidence = Evidence::Told;
    bool m_isDoubted = false;
    QList<Window> m_windows; // until they are handed out, or the run is over
    QList<int> m_deliveredWindows;

    QString m_deviceName;
    int m_autorun = -1;
    bool m_isZeo = false;
    quint64 m_step = 0;
};

} // namespace KEO
