#include "standarddatamanager.h"

#include "bits.h"
#include "capturepackets.h"
#include "registerimage.h"
#include "registermap.h"
#include "shiftword.h"

#include <base/logging.h>
#include <config/poweroftwo.h>
#include <config/standardconfig.h>
#include <link/jtagsession.h>

#include <QFileInfo>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr int kLeadingBits = 32; // that a memory read shifts out before the rows

} // namespace

CaptureManager::ReadPlan KeoStandardDataManager::readPlan(const CoreConfig &core)
{
    const int rows = std::clamp(core.capture_amount, 0, kSectionRows);
    ReadPlan plan;
    plan.core = core.index;
    plan.rowBits = core.requiredRegisterWidth();
    plan.sectionRows = rows;
    plan.sectionCount = rows > 0 ? core.capture_amount / rows : 0;
    plan.windowCount = core.window_num;
    if (plan.windowCount > 0)
        plan.stride = core.storage_depth / roundUpToPowerOfTwo(plan.windowCount);
    plan.leadingBits = kLeadingBits;
    return plan;
}

KeoStandardDataManager::KeoStandardDataManager(QObject *parent)
    : KeoStandardDataManager(*JtagSession::instance(), parent)
{
}

KeoStandardDataManager::KeoStandardDataManager(JtagSession &session, QObject *parent)
    : CaptureManager(session, parent), m_timer(new QTimer(this))
{
    connect(m_timer, &QTimer::timeout, this, &KeoStandardDataManager::checkState);
}

KeoStandardDataManager::~KeoStandardDataManager() = default;

bool KeoStandardDataManager::load(const QString &path, QString &id, QString *reason)
{
    if (!QFileInfo::exists(path))
        return false;
    noteExtension(path);
    CoreList cores = loadStandardConfigFile(path, &id, nullptr, reason, &m_encoding);
    const bool isEmpty = cores.empty();
    if (isEmpty && reason && reason->isEmpty())
        *reason = tr("It describes no standard analyzer core.");
    setCores(std::move(cores));
    return !isEmpty;
}

void KeoStandardDataManager::setCores(CoreList cores)
{
    const QPointer<KeoStandardDataManager> self(this);
    release();
    if (self)
        m_cores = std::move(cores);
}

void KeoStandardDataManager::release()
{
    const QPointer<KeoStandardDataManager> self(this);
    if (state() != CaptureState::Idle)
        stop();
    if (!self)
        return;
    m_currentCore = nullptr;
    m_selectedCore = nullptr;
    m_cores.clear();
}

void KeoStandardDataManager::start(const QList<int> &positions)
{
    if (state() != CaptureState::Idle)
        return;
    if (!beginRun(CaptureState::Armed))
        return;
    for (CoreConfig *core : coresAt(positions))
        arm(*core, wholeImage(*core));
    startTimer();
}

QList<QBitArray> KeoStandardDataManager::startWords(const QList<int> &positions) const
{
    QList<QBitArray> words;
    const QList<CoreConfig *> cores = coresAt(positions);
    for (const CoreConfig *core : cores) {
        words += wholeImage(*core);
        words.append(startWord(Arm, core->requiredRegisterWidth()));
    }
    if (!cores.isEmpty()) {
        // Cores are polled in the order of the description.
        const auto first = std::ranges::find_if(
            m_cores, [&](const auto &core) { return cores.contains(core.get()); });
        words += {coreSelectWord((*first)->index), readRegisterWord(Registers::kStart)};
    }
    return words;
}

void KeoStandardDataManager::forceTrigger()
{
    if (state() == CaptureState::Reading)
        return;
    for (const auto &core : m_cores) {
        if (core->active != 1)
            continue;
        selectCore(*core);
        writeStartRegister(Force, core->requiredRegisterWidth());
    }
}

QList<QBitArray> KeoStandardDataManager::rawWindow(int window)
{
    const QList<QBitArray> sections = this->sections(window);
    if (autorun() >= 0)
        rearm();
    else if (state() == CaptureState::ReadComplete)
        startTimer();
    return sections;
}

CoreConfig *KeoStandardDataManager::coreByIndex(int index) const
{
    const auto found =
        std::ranges::find_if(m_cores, [index](const auto &core) { return core->index == index; });
    return found == m_cores.end() ? nullptr : found->get();
}

QList<CoreConfig *> KeoStandardDataManager::activeCores() const
{
    QList<CoreConfig *> active;
    for (const auto &core : m_cores) {
        if (core->active != 0)
            active.append(core.get());
    }
    return active;
}

void KeoStandardDataManager::setErrorBox(ErrorBox box)
{
    m_errorBox = std::move(box);
}

void KeoStandardDataManager::checkState()
{
    if (state() != CaptureState::Armed && state() != CaptureState::ReadComplete)
        return;
    CoreConfig *core = firstArmedCore();
    if (core) {
        const bool goesOn = state() == CaptureState::Armed && core == m_currentCore;
        if (isPosting() || (goesOn && awaitsAnswers()))
            return; // the next tick comes
        if (!goesOn)
            m_pollsWaiting = 0;
        const Step step = goesOn ? currentStep() : beginStep();
        enterState(CaptureState::Armed);
        if (step.isCurrent())
            poll(*core, step);
    } else if (state() == CaptureState::ReadComplete) {
        finish();
    }
}

void KeoStandardDataManager::onTimeout()
{
    const ErrorBox box = m_errorBox; // a receiver of stop's signals may delete the manager
    const QString text = tr("ERROR: No response was reveived from Chainserver, the server probably "
                            "timed out.");
    stop();
    if (box)
        box(tr("Error"), text);
    else
        qCWarning(lcCapture).noquote() << text;
}

void KeoStandardDataManager::disarm()
{
    for (const auto &core : m_cores) {
        if (core->active != 1)
            continue;
        core->active = 2;
        selectCore(*core);
        writeStartRegister(Disarm, core->requiredRegisterWidth());
    }
}

void KeoStandardDataManager::forgetRun()
{
    m_timer->stop();
    m_pollsWaiting = 0;
    m_currentCore = nullptr;
    m_selectedCore = nullptr;
}

void KeoStandardDataManager::startTimer()
{
    m_timer->start(pace().pollInterval);
}

/// As many polls wait for their answers as may.
bool KeoStandardDataManager::awaitsAnswers() const
{
    return m_pollsWaiting >= pace().pollsInFlight &&
           !m_sincePoll.hasExpired(CapturePace::kAnswerPatience);
}

QBitArray KeoStandardDataManager::sectionWord(const ReadPlan &plan, qint64 row) const
{
    return readBlockWord(row, plan.sectionRows);
}

void KeoStandardDataManager::windowComplete(const ReadPlan &plan, int window)
{
    Q_EMIT readRamComplete(plan.core, window);
}

QList<CoreConfig *> KeoStandardDataManager::coresAt(const QList<int> &positions) const
{
    QList<CoreConfig *> cores;
    for (const int position : positions) {
        if (position >= 0 && size_t(position) < m_cores.size() && m_cores[size_t(position)])
            cores.append(m_cores[size_t(position)].get());
    }
    return cores;
}

QList<QBitArray> KeoStandardDataManager::wholeImage(const CoreConfig &core) const
{
    return buildRegisterImage(core, deviceName(), isZeo()) + buildExpressionImage(core);
}

CoreConfig *KeoStandardDataManager::firstArmedCore() const
{
    const auto found =
        std::ranges::find_if(m_cores, [](const auto &core) { return core->active == 1; });
    return found == m_cores.end() ? nullptr : found->get();
}

void KeoStandardDataManager::selectCore(CoreConfig &core)
{
    m_selectedCore = &core;
    post(writeRegisterPacket, {coreSelectWord(core.index)});
}

/// \a image begins with the word that selects the core.
void KeoStandardDataManager::arm(CoreConfig &core, const QList<QBitArray> &image)
{
    core.active = 1;
    m_selectedCore = &core;
    post(writeRegisterPacket, image);
    writeStartRegister(Arm, core.requiredRegisterWidth());
}

/// The next round of an Auto run. The cores still hold their truth tables.
void KeoStandardDataManager::rearm()
{
    if (state() != CaptureState::ReadComplete)
        return;
    const Step step = beginStep();
    m_pollsWaiting = 0;
    beginRound();
    enterState(CaptureState::Armed);
    if (!step.isCurrent())
        return;
    for (const auto &core : m_cores) {
        if (core->active != 0)
            arm(*core, buildRegisterImage(*core, deviceName(), isZeo()));
    }
    startTimer();
}

/// The core is selected when it becomes the current one, and again after a forced trigger or a new
/// round has left another one selected.
void KeoStandardDataManager::poll(CoreConfig &core, const Step &step)
{
    if (&core != m_currentCore || &core != m_selectedCore) {
        m_currentCore = &core;
        selectCore(core);
    }
    if (m_pollsWaiting >= pace().pollsInFlight)
        m_pollsWaiting = 0; // they are lost, or nearly so
    ++m_pollsWaiting;
    m_sincePoll.start();
    readStartRegister(core.requiredRegisterWidth(), EmptyAnswer::SaysNothing,
                      [this, step](RegisterAnswer answer) {
                          if (step.isCurrent())
                              takeStartRegister(answer);
                      });
}

/// The core clears its start register when its windows are full.
void KeoStandardDataManager::takeStartRegister(RegisterAnswer answer)
{
    if (state() != CaptureState::Armed)
        return;
    m_pollsWaiting = std::max(m_pollsWaiting - 1, 0);
    if (answer != RegisterAnswer::Zero) {
        if (pace().pollsInFlight != CapturePace::kUnbounded)
            startTimer();
        return;
    }
    m_currentCore->active = 2;
    m_timer->stop();
    readMemory(readPlan(*m_currentCore));
}

} // namespace KEO
