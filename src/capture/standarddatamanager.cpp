#include "standarddatamanager.h"

#include "bits.h"
#include "capturelog.h"
#include "capturepackets.h"
#include "registerimage.h"
#include "shiftword.h"

#include <config/poweroftwo.h>
#include <config/standardconfig.h>
#include <link/jtagsession.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <utility>

namespace KEO {

namespace {

constexpr int kPollInterval = 500; // ms
constexpr int kSectionPause = 50;  // ms
constexpr int kSectionRows = 128;  // at most

/// Bits that a memory read shifts out around the rows.
constexpr int kLeadingBits = 32;
constexpr int kTrailingBits = 1;

constexpr qint64 kStartRegister = 0;
enum StartValue { Disarm = 0, Arm = 1, Force = 3 };

/// Tells the answer to a memory read from the answer to a poll. Needed because request ids are used
/// again at once: a reply that comes after a stop can find a request of the next run under its id.
bool isSection(const CmdPack &reply)
{
    return reply.contains(QStringLiteral("WINDOW"));
}

} // namespace

KeoStandardDataManager::ReadPlan::ReadPlan(const CoreConfig &core)
    : registerWidth(core.requiredRegisterWidth()),
      sectionSize(std::clamp(core.capture_amount, 0, kSectionRows)),
      sectionCount(sectionSize > 0 ? core.capture_amount / sectionSize : 0),
      windowCount(core.window_num)
{
    if (windowCount > 0)
        stride = core.storage_depth / roundUpToPowerOfTwo(windowCount);
}

int KeoStandardDataManager::ReadPlan::sectionBits() const
{
    const qint64 bits = qint64(registerWidth) * sectionSize + kLeadingBits + kTrailingBits;
    return int(std::min<qint64>(bits, std::numeric_limits<int>::max()));
}

KeoStandardDataManager::KeoStandardDataManager(QObject *parent)
    : KeoStandardDataManager(*JtagSession::instance(), parent)
{
}

KeoStandardDataManager::KeoStandardDataManager(JtagSession &session, QObject *parent)
    : QObject(parent), m_session(session), m_timer(new QTimer(this))
{
    m_timer->setInterval(kPollInterval);
    connect(m_timer, &QTimer::timeout, this, &KeoStandardDataManager::checkState);
}

KeoStandardDataManager::~KeoStandardDataManager() = default;

bool KeoStandardDataManager::load(const QString &path, QString &id)
{
    if (!QFileInfo::exists(path))
        return false;
    if (path.endsWith(QLatin1String(".keo")))
        m_isZeo = false;
    else if (path.endsWith(QLatin1String(".zeo")))
        m_isZeo = true;
    setCores(loadStandardConfigFile(path, &id));
    return !m_cores.empty();
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
    if (m_state != CaptureState::Idle)
        stop();
    if (!self)
        return;
    m_currentCore = nullptr;
    m_selectedCore = nullptr;
    m_cores.clear();
}

void KeoStandardDataManager::openDevice(const QVariantList &chain)
{
    const auto task = [self = QPointer(this)](const CmdPack &reply) {
        const int result = reply.value(QStringLiteral("RES")).toInt();
        if (!self || result == 0)
            return;
        self->stop();
        if (self)
            Q_EMIT self->triggerComplete(result);
    };
    m_session.sendCommand(openPacket(chain), task);
}

void KeoStandardDataManager::start(const QList<int> &positions)
{
    if (m_state != CaptureState::Idle)
        return;
    const Step step = beginStep();
    enterState(CaptureState::Armed);
    if (!step.isCurrent())
        return;
    for (const int position : positions) {
        if (position < 0 || size_t(position) >= m_cores.size() || !m_cores[size_t(position)])
            continue;
        CoreConfig &core = *m_cores[size_t(position)];
        arm(core, buildRegisterImage(core, m_deviceName, m_isZeo) + buildExpressionImage(core));
    }
    m_timer->start();
}

void KeoStandardDataManager::stop()
{
    for (const auto &core : m_cores) {
        if (core->active != 1)
            continue;
        core->active = 2;
        selectCore(*core);
        writeStartRegister(*core, Disarm);
    }
    m_session.sendCommand(closePacket());
    m_session.clearTasks();
    endRun();
}

void KeoStandardDataManager::forceTrigger()
{
    if (m_state == CaptureState::Reading)
        return;
    for (const auto &core : m_cores) {
        if (core->active != 1)
            continue;
        selectCore(*core);
        writeStartRegister(*core, Force);
    }
}

QList<QBitArray> KeoStandardDataManager::rawWindow(int window)
{
    const QList<QBitArray> sections = m_windowData.value(window);
    if (m_autorun >= 0)
        rearm();
    else if (m_state == CaptureState::ReadComplete)
        m_timer->start();
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
    if (m_state != CaptureState::Armed && m_state != CaptureState::ReadComplete)
        return;
    CoreConfig *core = firstArmedCore();
    if (core) {
        const bool goesOn = m_state == CaptureState::Armed && core == m_currentCore;
        const Step step = goesOn ? currentStep() : beginStep();
        enterState(CaptureState::Armed);
        if (step.isCurrent())
            poll(*core, step);
    } else if (m_state == CaptureState::ReadComplete) {
        m_session.sendCommand(closePacket());
        endRun();
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
        qCWarning(keoCapture).noquote() << text;
}

KeoStandardDataManager::Step KeoStandardDataManager::beginStep()
{
    ++m_step;
    return currentStep();
}

void KeoStandardDataManager::enterState(CaptureState state)
{
    m_state = state;
    Q_EMIT statusChanged(state != CaptureState::Idle);
}

/// Everything is reset before the first signal, so that a receiver can start the next run.
void KeoStandardDataManager::endRun()
{
    const QPointer<KeoStandardDataManager> self(this);
    beginStep();
    m_timer->stop();
    m_currentCore = nullptr;
    m_selectedCore = nullptr;
    m_windowData.clear();
    m_autorun = -1;
    enterState(CaptureState::Idle);
    if (self)
        Q_EMIT triggerComplete(0);
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
    m_session.sendCommand(writeRegisterPacket(coreSelectWord(core.index)));
}

void KeoStandardDataManager::writeStartRegister(const CoreConfig &core, int value)
{
    const QBitArray data = alignBits(bitsOfInt32(value), core.requiredRegisterWidth());
    m_session.sendCommand(writeStartPacket(writeRegisterWord(kStartRegister, data)));
}

/// \a image begins with the word that selects the core.
void KeoStandardDataManager::arm(CoreConfig &core, const QList<QBitArray> &image)
{
    core.active = 1;
    m_selectedCore = &core;
    for (const QBitArray &word : image)
        m_session.sendCommand(writeRegisterPacket(word));
    writeStartRegister(core, Arm);
}

/// The next round of an Auto run. The cores still hold their truth tables.
void KeoStandardDataManager::rearm()
{
    if (m_state != CaptureState::ReadComplete)
        return;
    const Step step = beginStep();
    enterState(CaptureState::Armed);
    if (!step.isCurrent())
        return;
    for (const auto &core : m_cores) {
        if (core->active != 0)
            arm(*core, buildRegisterImage(*core, m_deviceName, m_isZeo));
    }
    m_timer->start();
}

/// The core is selected when it becomes the current one, and again after a forced trigger or a new
/// round has left another one selected.
void KeoStandardDataManager::poll(CoreConfig &core, const Step &step)
{
    if (&core != m_currentCore || &core != m_selectedCore) {
        m_currentCore = &core;
        selectCore(core);
    }
    m_session.sendCommand(writeStartPacket(readRegisterWord(kStartRegister)));
    const auto task = [step](const CmdPack &reply, bool *done) {
        *done = true;
        if (step.isCurrent())
            step.manager->takeStartRegister(reply);
    };
    m_session.sendDataCommand(readStartPacket(core.requiredRegisterWidth()), task);
}

/// The core clears its start register when its windows are full. No bits are no answer.
void KeoStandardDataManager::takeStartRegister(const CmdPack &reply)
{
    const QBitArray data = reply.value(QStringLiteral("DATA")).toBitArray();
    const bool isAnswer = !data.isEmpty() && !isSection(reply);
    if (m_state != CaptureState::Armed || !isAnswer || !isZeroBits(data))
        return;
    m_currentCore->active = 2;
    if (m_autorun > -1)
        ++m_autorun;
    m_timer->stop();
    readWindows();
}

void KeoStandardDataManager::readWindows()
{
    const ReadPlan plan(*m_currentCore);
    const Step step = beginStep();
    m_windowData.clear();
    enterState(CaptureState::Reading);
    if (!step.isCurrent())
        return;
    if (plan.sectionCount == 0) {
        qCDebug(keoCapture, "core %d: nothing to read, capture amount %d", m_currentCore->index,
                m_currentCore->capture_amount);
        return; // not even a pause, or a huge window number would hang here
    }
    for (int window = 0; window < plan.windowCount; ++window) {
        m_windowData.append(QList<QBitArray>());
        if (!readSections(plan, window, step))
            return;
    }
}

bool KeoStandardDataManager::readSections(const ReadPlan &plan, int window, const Step &step)
{
    for (int section = 0; section < plan.sectionCount; ++section) {
        // The pause paces the server, and the event loop takes its replies and the user's Stop.
        QThread::msleep(kSectionPause);
        QCoreApplication::processEvents();
        if (!step.isCurrent() || m_state != CaptureState::Reading)
            return false;
        const SectionPlace place{section, plan.sectionCount, window};
        const qint64 row = window * plan.stride + qint64(section) * plan.sectionSize;
        m_session.sendCommand(burstReadPacket(readBlockWord(row, plan.sectionSize), place));
        const auto task = [step, plan](const CmdPack &reply, bool *done) {
            // A late answer to a poll can come in under this task's id: the section is still on its
            // way then, and without it the run would never end.
            *done = !step.isCurrent() || isSection(reply);
            if (step.isCurrent() && *done)
                step.manager->takeSection(reply, plan);
        };
        m_session.sendDataCommand(readRamPacket(plan.sectionBits(), place), task);
    }
    return true;
}

void KeoStandardDataManager::takeSection(const CmdPack &reply, const ReadPlan &plan)
{
    bool hasWindow = false;
    const int window = reply.value(QStringLiteral("WINDOW")).toInt(&hasWindow);
    if (!hasWindow || window < 0 || window >= m_windowData.size()) {
        qCDebug(keoCapture, "section dropped: no window %d is being read", window);
        return;
    }
    QBitArray data = reply.value(QStringLiteral("DATA")).toBitArray();
    if (data.size() > plan.sectionBits()) {
        qCDebug(keoCapture, "section of %lld bits cut to the %d asked for", qlonglong(data.size()),
                plan.sectionBits());
        data.truncate(plan.sectionBits());
    }
    QList<QBitArray> &sections = m_windowData[window];
    sections.prepend(dropBackBits(dropFrontBits(data, kLeadingBits), kTrailingBits));

    const Step step = currentStep();
    const int core = m_currentCore->index;
    const int count = int(sections.size());
    Q_EMIT sectionRead(core, window, count, plan.sectionCount);
    if (!step.isCurrent() || count != reply.value(QStringLiteral("SECTION_COUNT")).toInt())
        return;
    if (window + 1 == plan.windowCount) {
        enterState(CaptureState::ReadComplete);
        if (!step.isCurrent())
            return;
    }
    Q_EMIT readRamComplete(core, window);
}

} // namespace KEO
