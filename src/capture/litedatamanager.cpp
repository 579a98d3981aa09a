#include "litedatamanager.h"

#include "bits.h"
#include "capturepackets.h"
#include "registermap.h"
#include "shiftword.h"

#include <base/logging.h>
#include <config/liteconfig.h>

#include <QFileInfo>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace KEO {

namespace {

/// Polls that may wait for their answers. Enough to keep any server busy, and few enough that what
/// comes after them, a Stop above all, does not wait long behind them.
constexpr int kMaxUnansweredPolls = 64;
/// How long no answer to any of them is waited for, the first time and at most.
constexpr int kPollPatience = 2000; // ms
constexpr int kMaxPollPatience = 60 * 60 * 1000;

} // namespace

KeoLiteDataManager::KeoLiteDataManager(QObject *parent)
    : KeoLiteDataManager(*JtagSession::instance(), parent)
{
}

// The check timer's interval stays 0, on purpose: a lite capture lasts as long as its samples,
// mostly less than a millisecond, so each turn of the event loop asks whether it is done. Qt runs
// such a timer once a turn, after the events that are due, so the window stays alive.
KeoLiteDataManager::KeoLiteDataManager(JtagSession &session, QObject *parent)
    : CaptureManager(session, parent),
      m_checkTimer(new QTimer(this)),
      m_delayTimer(new QTimer(this)),
      m_patienceTimer(new QTimer(this)),
      m_unansweredPolls(std::make_shared<int>(0))
{
    m_patienceTimer->setSingleShot(true);
    m_patienceTimer->setInterval(kPollPatience);
    connect(m_checkTimer, &QTimer::timeout, this, &KeoLiteDataManager::checkState);
    connect(m_delayTimer, &QTimer::timeout, this, &KeoLiteDataManager::onDelay);
    connect(m_patienceTimer, &QTimer::timeout, this, &KeoLiteDataManager::askAgain);
}

KeoLiteDataManager::~KeoLiteDataManager() = default;

bool KeoLiteDataManager::load(const QString &path, QString &id, QString *reason)
{
    if (!QFileInfo::exists(path))
        return false;
    noteExtension(path);
    const QList<LiteCoreConfig> cores = loadLiteConfigFile(path, &id, nullptr, reason);
    // Lite shift words name no core: with a second one in the chip nobody could tell which answers.
    const bool isOne = cores.size() == 1;
    if (!isOne)
        qCDebug(lcCapture, "%lld lite cores, and only one can be captured from",
                qlonglong(cores.size()));
    if (!isOne && reason && reason->isEmpty())
        *reason = tr("It describes %1 lite cores; exactly one can be used.").arg(cores.size());
    setCore(isOne ? std::make_unique<LiteCoreConfig>(cores.first()) : nullptr);
    return isOne;
}

void KeoLiteDataManager::setCore(std::unique_ptr<LiteCoreConfig> core)
{
    const QPointer<KeoLiteDataManager> self(this);
    if (state() != CaptureState::Idle)
        stop();
    if (self)
        m_core = std::move(core);
}

void KeoLiteDataManager::start(int delay)
{
    if (state() != CaptureState::Idle || !m_core)
        return;
    m_core->active = 1;
    if (!beginRun(CaptureState::Started) || delay < 0)
        return;
    if (delay == 0)
        onDelay();
    else
        m_delayTimer->start(delay);
}

QList<QBitArray> KeoLiteDataManager::startWords() const
{
    if (!m_core)
        return {};
    return {readRegisterWord(Registers::kCaptureInit), startWord(Arm, registerWidth()),
            readRegisterWord(Registers::kStart)};
}

void KeoLiteDataManager::onDelay()
{
    // In the state Started the core may also have been read already; then there is nothing to arm.
    if (state() != CaptureState::Started || m_core->active != 1)
        return;
    m_delayTimer->stop();
    beginStep();
    readInitRegister();
}

/// Asked again when no answer comes, like the polls: one lost reply must not hold up the run.
void KeoLiteDataManager::readInitRegister()
{
    session().sendCommand(selectCaptureInitPacket(readRegisterWord(Registers::kCaptureInit)));
    readRegister(readCaptureInitPacket(registerWidth()), registerWidth(), EmptyAnswer::MeansZero,
                 [this, step = currentStep()](RegisterAnswer answer) {
                     if (step.isCurrent())
                         takeInitRegister(answer);
                 });
    m_patienceTimer->start();
}

QList<QBitArray> KeoLiteDataManager::rawCapture()
{
    if (state() != CaptureState::ReadComplete)
        return {};
    const QList<QBitArray> capture = sections(0);
    forgetSections();
    const Step step = beginStep();
    const bool isAuto = autorun() >= 0;
    if (isAuto)
        m_core->active = 1;
    enterState(CaptureState::Started);
    if (!step.isCurrent())
        return capture;
    if (isAuto) {
        beginRound();
        onDelay(); // the delay is for the first round only
    } else {
        m_checkTimer->start(); // whose next tick ends the run
    }
    return capture;
}

void KeoLiteDataManager::checkState()
{
    if (state() == CaptureState::Polling)
        poll();
    else if (state() == CaptureState::Started && m_core->active != 1)
        finish();
}

void KeoLiteDataManager::disarm()
{
    if (!m_core || m_core->active != 1)
        return;
    m_core->active = 2;
    writeStartRegister(Disarm, registerWidth());
}

/// Polls that are still on their way keep the old count to themselves.
void KeoLiteDataManager::forgetRun()
{
    m_checkTimer->stop();
    m_delayTimer->stop();
    m_patienceTimer->stop();
    m_patienceTimer->setInterval(kPollPatience);
    m_unansweredPolls = std::make_shared<int>(0);
}

QBitArray KeoLiteDataManager::sectionWord(const ReadPlan &plan, qint64 row) const
{
    return shiftOutWord(row, plan.rowBits);
}

void KeoLiteDataManager::windowComplete(const ReadPlan &, int)
{
    Q_EMIT readRamComplete();
}

int KeoLiteDataManager::registerWidth() const
{
    return int(signalBits(m_core->signals));
}

CaptureManager::ReadPlan KeoLiteDataManager::readPlan() const
{
    ReadPlan plan;
    plan.core = m_core->index;
    plan.rowBits = registerWidth();
    plan.sectionRows = std::clamp(m_core->capture_amount, 0, kSectionRows);
    // Rounded up, so a last section may ask for rows behind the capture; they are cut off with the
    // samples. Single precision counts exactly far beyond the rows that 16-bit addresses reach.
    if (plan.sectionRows > 0)
        plan.sectionCount = int(std::ceil(float(m_core->capture_amount) / float(plan.sectionRows)));
    plan.windowCount = 1;
    return plan;
}

/// Zero tells that the core holds the samples of its first moments already, and so does an answer
/// without bits: whatever a read brings says more than a wait for nothing. An answer that says
/// nothing is as good as a lost one.
void KeoLiteDataManager::takeInitRegister(RegisterAnswer answer)
{
    switch (answer) {
    case RegisterAnswer::Nothing:
        return;
    case RegisterAnswer::Zero:
    case RegisterAnswer::AssumedZero:
        readCapture(answer);
        return;
    case RegisterAnswer::NotZero:
        break;
    }
    m_patienceTimer->stop();
    m_patienceTimer->setInterval(kPollPatience);
    writeStartRegister(Arm, registerWidth());
    const Step step = beginStep();
    enterState(CaptureState::Polling);
    if (step.isCurrent())
        m_checkTimer->start();
}

/// One poll for each tick, whether or not the one before has been answered. Only when a server
/// leaves many unanswered does polling pause until the next answer, so that neither the packets nor
/// the tasks that wait pile up over a long wait.
void KeoLiteDataManager::poll()
{
    if (*m_unansweredPolls >= std::min(kMaxUnansweredPolls, pace().pollsInFlight)) {
        m_checkTimer->stop();
        m_patienceTimer->start();
        return;
    }
    ++*m_unansweredPolls;
    readStartRegister(
        registerWidth(), EmptyAnswer::MeansZero,
        [this, step = currentStep(), unanswered = m_unansweredPolls](RegisterAnswer answer) {
            --*unanswered;
            if (step.isCurrent())
                takeStartRegister(answer);
        });
}

/// The core clears its start register when it has taken its samples. An answer without bits counts
/// as clear, see takeInitRegister.
void KeoLiteDataManager::takeStartRegister(RegisterAnswer answer)
{
    if (answer == RegisterAnswer::Zero || answer == RegisterAnswer::AssumedZero) {
        readCapture(answer);
        return;
    }
    m_patienceTimer->stop();
    m_patienceTimer->setInterval(kPollPatience);
    if (!m_checkTimer->isActive())
        m_checkTimer->start();
}

/// No answer for a while: it may be lost. Polls that wait are forgotten. Each time in a row takes
/// twice as long, so a server that is dead costs next to nothing.
void KeoLiteDataManager::askAgain()
{
    m_patienceTimer->setInterval(std::min(2 * m_patienceTimer->interval(), kMaxPollPatience));
    if (state() == CaptureState::Started) {
        readInitRegister();
        return;
    }
    if (isOpening()) { // the task that waits for "OPEN" must stay
        m_patienceTimer->start();
        return;
    }
    qCDebug(lcCapture, "%d polls without an answer, asking again", *m_unansweredPolls);
    giveUpReads();
    m_unansweredPolls = std::make_shared<int>(0);
    m_checkTimer->start();
}

void KeoLiteDataManager::readCapture(RegisterAnswer answer)
{
    m_core->active = 2;
    m_checkTimer->stop();
    m_patienceTimer->stop();
    readMemory(readPlan(),
               answer == RegisterAnswer::AssumedZero ? Evidence::Assumed : Evidence::Told);
}

} // namespace KEO
