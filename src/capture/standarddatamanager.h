#pragma once

#include "capturemanager.h"

#include <config/coreconfig.h>
#include <config/descriptionencoding.h>

#include <QBitArray>
#include <QElapsedTimer>
#include <QList>
#include <QString>

#include <functional>

class QTimer;

namespace KEO {

/// Runs captures on the standard cores of one design: owns the core records, programs the cores,
/// polls until one has triggered, reads its memory and hands out raw windows. It knows nothing of
/// the screen. See CaptureManager for threads, the end of a run, and what receivers may do.
class KeoStandardDataManager final : public CaptureManager
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
    /// (.keo or .zeo) is kept for the register image. \a reason, if not null, receives in words for
    /// the user why a file that is there gives no core. Stops a run that is going on.
    bool load(const QString &path, QString &id, QString *reason = nullptr);
    /// Replaces the cores. Stops a run that is going on.
    void setCores(CoreList cores);
    /// Deletes all cores. Stops a run that is going on.
    void release();

    /// Programs the cores at these positions in cores() and starts polling. Positions without a
    /// core are skipped. Does nothing unless idle.
    void start(const QList<int> &positions);
    /// The shift words that start would send for these positions, and then those of the first poll;
    /// all that follows depends on the answers. Changes nothing.
    [[nodiscard]] QList<QBitArray> startWords(const QList<int> &positions) const;
    /// Asks the armed cores to trigger now. Does nothing while reading.
    void forceTrigger();
    /// The sections of a window, to be joined in list order; row order is told at cutSamples. Takes
    /// the run on, so it must be called exactly once for each readRamComplete. Empty for a window
    /// that was not read.
    QList<QBitArray> rawWindow(int window);

    [[nodiscard]] const CoreList &cores() const { return m_cores; }
    /// Of the description that was loaded last.
    [[nodiscard]] DescriptionEncoding encoding() const { return m_encoding; }
    /// The core with that CoreConfig::index, as the signals carry it, or null. Borrowed.
    [[nodiscard]] CoreConfig *coreByIndex(int index) const;
    /// Cores whose `active` is not 0. Borrowed.
    [[nodiscard]] QList<CoreConfig *> activeCores() const;

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

protected:
    void disarm() override;
    void forgetRun() override;
    [[nodiscard]] QBitArray sectionWord(const ReadPlan &plan, qint64 row) const override;
    void windowComplete(const ReadPlan &plan, int window) override;

private:
    [[nodiscard]] static ReadPlan readPlan(const CoreConfig &core);
    [[nodiscard]] QList<CoreConfig *> coresAt(const QList<int> &positions) const;
    [[nodiscard]] QList<QBitArray> wholeImage(const CoreConfig &core) const;
    CoreConfig *firstArmedCore() const;
    void selectCore(CoreConfig &core);
    void arm(CoreConfig &core, const QList<QBitArray> &image);
    void rearm();

    void poll(CoreConfig &core, const Step &step);
    void takeStartRegister(RegisterAnswer answer);
    void startTimer();
    [[nodiscard]] bool awaitsAnswers() const;

    QTimer *m_timer; // owned by the object tree
    CoreList m_cores;
    DescriptionEncoding m_encoding = DescriptionEncoding::Latin1;
    CoreConfig *m_currentCore = nullptr;  // in m_cores; polled or read
    CoreConfig *m_selectedCore = nullptr; // in m_cores; the one that shift words reach
    int m_pollsWaiting = 0;               // for their answers
    QElapsedTimer m_sincePoll;
    ErrorBox m_errorBox;
};

} // namespace KEO
