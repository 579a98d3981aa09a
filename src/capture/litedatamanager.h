#pragma once

#include "capturemanager.h"

#include <config/litecoreconfig.h>

#include <QBitArray>
#include <QList>
#include <QString>

#include <memory>

class QTimer;

namespace KEO {

/// Runs captures on the one lite core of a design: owns its record, starts it at once, after a
/// delay or on demand, polls until it is done, reads its memory and hands out the raw bits. See
/// CaptureManager for threads, signals and what receivers may do.
///
/// A run goes: start (Started), the delay or onDelay, a look at the capture init register. Zero
/// there means that the core holds data already, which is read at once; else the core is started
/// and polled (Polling). Then Reading, ReadComplete, readRamComplete; rawCapture ends the run, or
/// begins the next round of an Auto run.
class KeoLiteDataManager final : public CaptureManager
{
    Q_OBJECT

public:
    /// Uses the process-wide session.
    explicit KeoLiteDataManager(QObject *parent = nullptr);
    /// \a session is borrowed and outlives the manager.
    explicit KeoLiteDataManager(JtagSession &session, QObject *parent = nullptr);
    ~KeoLiteDataManager() override;

    /// Replaces the core with that of the description at \a path, and \a id with its check value.
    /// False if there is no such file, which changes nothing, or if it does not describe exactly
    /// one core; then there is no core, and \a reason, if not null, receives in words for the user
    /// why. The extension (.keo or .zeo) is kept, see isZeo. Stops a run that is going on.
    bool load(const QString &path, QString &id, QString *reason = nullptr);
    /// Replaces the core; null for none. Stops a run that is going on.
    void setCore(std::unique_ptr<LiteCoreConfig> core);
    /// The core, or null. Borrowed.
    [[nodiscard]] LiteCoreConfig *core() const { return m_core.get(); }

    /// Begins a capture \a delay ms from now; at once with 0; not before onDelay with a negative
    /// delay. Does nothing unless idle and there is a core.
    void start(int delay);
    /// The shift words of a capture that begins now and whose core has no samples of its first
    /// moments: it is asked for them, armed, and polled; all that follows depends on the answers.
    /// None without a core. Changes nothing.
    [[nodiscard]] QList<QBitArray> startWords() const;
    /// The sections of the capture, to be joined in list order; row order is told at
    /// cutPlainSamples. Takes the run on, so it must be called exactly once for each
    /// readRamComplete. Empty, and without effect, at any other time.
    QList<QBitArray> rawCapture();

public Q_SLOTS:
    /// One tick of the check timer.
    void checkState();
    /// Arms the capture now, whatever is left of the delay; also what Force Trigger means for a
    /// lite core. Does nothing unless a capture waits to be armed.
    void onDelay();

Q_SIGNALS:
    /// All sections are there; see rawCapture.
    void readRamComplete();

protected:
    void disarm() override;
    void forgetRun() override;
    [[nodiscard]] QBitArray sectionWord(const ReadPlan &plan, qint64 row) const override;
    void windowComplete(const ReadPlan &plan, int window) override;

private:
    [[nodiscard]] int registerWidth() const;
    [[nodiscard]] ReadPlan readPlan() const;
    void readInitRegister();
    void takeInitRegister(RegisterAnswer answer);
    void poll();
    void takeStartRegister(RegisterAnswer answer);
    void askAgain();
    void readCapture(RegisterAnswer answer);

    std::unique_ptr<LiteCoreConfig> m_core;
    QTimer *m_checkTimer;                   // owned by the object tree
    QTimer *m_delayTimer;                   // owned by the object tree
    QTimer *m_patienceTimer;                // owned by the object tree; until reads are asked again
    std::shared_ptr<int> m_unansweredPolls; // shared with the tasks that wait for the answers
};

} // namespace KEO
