#include "capturemanager.h"

#include "bits.h"
#include "capturepackets.h"
#include "shiftword.h"

#include <base/logging.h>

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <limits>
#include <utility>

namespace KEO {

namespace {

constexpr int kSectionPause = 50; // ms
constexpr int kTrailingBits = 1;  // that a memory read shifts out behind the rows
constexpr qint64 kStartRegister = 0;

} // namespace

int CaptureManager::ReadPlan::sectionBits() const
{
    const qint64 bits = qint64(rowBits) * sectionRows + leadingBits + kTrailingBits;
    return int(std::min<qint64>(bits, std::numeric_limits<int>::max()));
}

CaptureManager::CaptureManager(JtagSession &session, QObject *parent)
    : QObject(parent), m_session(session)
{
}

CaptureManager::~CaptureManager() = default;

void CaptureManager::openDevice(const QVariantList &chain)
{
    const auto task = [self = QPointer(this)](const CmdPack &reply) {
        if (!self)
            return;
        self->m_isOpening = false;
        const int result = reply.value(QStringLiteral("RES")).toInt();
        if (result == 0)
            return;
        self->stop();
        if (self)
            Q_EMIT self->triggerComplete(result);
    };
    m_isOpening = true;
    m_session.sendCommand(openPacket(chain), task);
}

void CaptureManager::stop()
{
    disarm();
    m_session.sendCommand(closePacket());
    m_session.clearTasks();
    endRun();
}

CaptureManager::Step CaptureManager::beginStep()
{
    ++m_step;
    return currentStep();
}

void CaptureManager::enterState(CaptureState state)
{
    m_state = state;
    Q_EMIT statusChanged(state != CaptureState::Idle);
}

void CaptureManager::finish()
{
    m_session.sendCommand(closePacket());
    endRun();
}

/// Everything is reset before the first signal, so that a receiver can start the next run.
void CaptureManager::endRun()
{
    const QPointer<CaptureManager> self(this);
    beginStep();
    forgetRun();
    m_windows.clear();
    m_autorun = -1;
    m_isOpening = false;
    enterState(CaptureState::Idle);
    if (self)
        Q_EMIT triggerComplete(0);
}

void CaptureManager::noteExtension(const QString &path)
{
    if (path.endsWith(QLatin1String(".keo")))
        m_isZeo = false;
    else if (path.endsWith(QLatin1String(".zeo")))
        m_isZeo = true;
}

void CaptureManager::writeStartRegister(int value, int registerWidth)
{
    const QBitArray data = alignBits(bitsOfInt32(value), registerWidth);
    m_session.sendCommand(writeStartPacket(writeRegisterWord(kStartRegister, data)));
}

void CaptureManager::readStartRegister(int registerWidth, JtagDataTask task)
{
    m_session.sendCommand(writeStartPacket(readRegisterWord(kStartRegister)));
    m_session.sendDataCommand(readStartPacket(registerWidth), std::move(task));
}

void CaptureManager::readMemory(const ReadPlan &plan)
{
    const Step step = beginStep();
    m_windows.clear();
    if (m_autorun > -1)
        ++m_autorun;
    enterState(CaptureState::Reading);
    if (!step.isCurrent())
        return;
    if (plan.sectionCount == 0) {
        qCDebug(lcCapture, "core %d: nothing to read", plan.core);
        return; // not even a pause, or a huge window number would hang here
    }
    for (int window = 0; window < plan.windowCount; ++window) {
        m_windows.append(QList<QBitArray>());
        if (!readSections(plan, window, step))
            return;
    }
}

bool CaptureManager::readSections(const ReadPlan &plan, int window, const Step &step)
{
    for (int section = 0; section < plan.sectionCount; ++section) {
        // The pause paces the server, and the event loop takes its replies and the user's Stop.
        QThread::msleep(kSectionPause);
        QCoreApplication::processEvents();
        if (!step.isCurrent() || m_state != CaptureState::Reading)
            return false;
        const SectionPlace place{section, plan.sectionCount, window};
        const qint64 row = window * plan.stride + qint64(section) * plan.sectionRows;
        m_session.sendCommand(burstReadPacket(sectionWord(plan, row), place));
        const auto task = [this, step, plan](const CmdPack &reply, bool *done) {
            // Ids are used again at once, so a poll of a stopped run may be answered under this
            // one. The task goes on waiting for its own reply: without it the run would never end.
            *done = !step.isCurrent() || takeSection(reply, plan);
        };
        m_session.sendDataCommand(readRamPacket(plan.sectionBits(), place), task);
    }
    return true;
}

bool CaptureManager::takeSection(const CmdPack &reply, const ReadPlan &plan)
{
    bool hasWindow = false;
    const int window = reply.value(QStringLiteral("WINDOW")).toInt(&hasWindow);
    if (!hasWindow || window < 0 || window >= m_windows.size()) {
        qCDebug(lcCapture, "section dropped: no window %d is being read", window);
        return false;
    }
    QBitArray data = reply.value(QStringLiteral("DATA")).toBitArray();
    if (data.size() > plan.sectionBits()) {
        qCDebug(lcCapture, "section of %lld bits cut to the %d asked for", qlonglong(data.size()),
                plan.sectionBits());
        data.truncate(plan.sectionBits());
    }
    QList<QBitArray> &arrived = m_windows[window];
    arrived.prepend(dropBackBits(dropFrontBits(data, plan.leadingBits), kTrailingBits));

    const Step step = currentStep();
    const int count = int(arrived.size());
    Q_EMIT sectionRead(plan.core, window, count, plan.sectionCount);
    if (!step.isCurrent() || count != reply.value(QStringLiteral("SECTION_COUNT")).toInt())
        return true;
    if (window + 1 == plan.windowCount) {
        enterState(CaptureState::ReadComplete);
        if (!step.isCurrent())
            return true;
    }
    windowComplete(plan, window);
    return true;
}

} // namespace KEO
