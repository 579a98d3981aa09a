#include "capturemanager.h"

#include "bits.h"
#include "capturepackets.h"
#include "capturerequests.h"
#include "registermap.h"
#include "shiftword.h"

#include <base/logging.h>

#include <QHash>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <utility>

namespace KEO {

namespace {

constexpr int kPortion = 256;       // packets sent in one turn of the event loop
constexpr int kTrailingBits = 1;    // that a memory read shifts out behind the rows
constexpr int kWatchInterval = 500; // ms
constexpr int kPatience = 3000;     // ms without an answer until the user is told

const QString kData = QStringLiteral("DATA");

/// The window that a reply names; only one to a memory read names any.
std::optional<int> windowOf(const CmdPack &reply)
{
    bool isNumber = false;
    const int window = reply.value(QStringLiteral("WINDOW")).toInt(&isNumber);
    return isNumber ? std::optional(window) : std::nullopt;
}

} // namespace

/// A read of a section; shared by what takes its answers.
struct CaptureManager::SectionRead
{
    ReadPlan plan;
    SectionPlace place;
    Step step;
    quint64 reading = 0;
    std::optional<size_t> digest = {}; ///< of the rows that came
};

int CaptureManager::ReadPlan::sectionBits() const
{
    const qint64 bits = qint64(rowBits) * sectionRows + leadingBits + kTrailingBits;
    return int(std::min<qint64>(bits, std::numeric_limits<int>::max()));
}

CaptureManager::CaptureManager(JtagSession &session, QObject *parent)
    : QObject(parent),
      m_session(session),
      m_requests(std::make_unique<CaptureRequests>(session)),
      m_outboxTimer(new QTimer(this)),
      m_watch(new QTimer(this)),
      m_sectionTimer(new QTimer(this))
{
    m_sectionTimer->setSingleShot(true);
    m_sectionTimer->setTimerType(Qt::PreciseTimer);
    connect(m_outboxTimer, &QTimer::timeout, this, &CaptureManager::sendPortion);
    connect(m_sectionTimer, &QTimer::timeout, this, &CaptureManager::onSectionDue);
    m_watch->setInterval(kWatchInterval);
    connect(m_watch, &QTimer::timeout, this, &CaptureManager::watchServer);
}

CaptureManager::~CaptureManager() = default;

void CaptureManager::openDevice(const QVariantList &chain)
{
    m_requests->open(chain, [this](int result) {
        if (result == 0)
            return;
        const QPointer<CaptureManager> self(this);
        stop();
        if (self)
            Q_EMIT triggerComplete(result);
    });
}

void CaptureManager::stop()
{
    emptyOutbox();
    disarm();
    m_session.sendCommand(closePacket());
    m_requests->stop();
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

bool CaptureManager::beginRun(CaptureState state)
{
    const Step step = beginStep();
    beginRound();
    m_watch->start();
    changeReport({});
    if (step.isCurrent())
        enterState(state);
    return step.isCurrent();
}

void CaptureManager::finish()
{
    m_session.sendCommand(closePacket());
    m_requests->finish();
    endRun();
}

/// Everything is reset before the first signal, so that a receiver can start the next run.
void CaptureManager::endRun()
{
    const Step step = beginStep();
    forgetRun();
    emptyOutbox();
    m_unasked.reset();
    m_sectionTimer->stop();
    m_watch->stop();
    m_autorun = -1;
    m_state = CaptureState::Idle;
    const QPointer<CaptureManager> self(this);
    noteMissingWindows();
    if (step.isCurrent())
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

QBitArray CaptureManager::startWord(int value, int registerWidth)
{
    return writeRegisterWord(Registers::kStart, alignBits(bitsOfInt32(value), registerWidth));
}

void CaptureManager::writeStartRegister(int value, int registerWidth)
{
    post(writeStartPacket, {startWord(value, registerWidth)});
}

void CaptureManager::post(PacketMaker packet, const QList<QBitArray> &words)
{
    const bool isFirst = m_outbox.isEmpty();
    m_outbox.reserve(m_outbox.size() + words.size());
    for (const QBitArray &word : words)
        m_outbox.append({packet, word});
    if (isFirst)
        sendPortion();
}

/// The timer's interval is 0, so the next portion follows behind the events that are due.
void CaptureManager::sendPortion()
{
    const QList<Posted> portion = m_outbox.first(std::min<qsizetype>(kPortion, m_outbox.size()));
    m_outbox.remove(0, portion.size());
    if (m_outbox.isEmpty())
        m_outboxTimer->stop();
    else
        m_outboxTimer->start();
    for (const auto &[packet, word] : portion)
        m_session.sendCommand(packet(word));
}

void CaptureManager::emptyOutbox()
{
    m_outbox.clear();
    m_outboxTimer->stop();
}

void CaptureManager::beginRound()
{
    m_requests->beginRound();
}

void CaptureManager::giveUpReads()
{
    m_requests->giveUp();
}

bool CaptureManager::isOpening() const
{
    return m_requests->isOpening();
}

void CaptureManager::readRegister(const CmdPack &pack, int width, EmptyAnswer empty,
                                  std::function<void(RegisterAnswer)> answered)
{
    using enum RegisterAnswer;
    using Verdict = CaptureRequests::Verdict;
    const auto answerOf = [width, empty](const CmdPack &reply) {
        const QVariant data = reply.value(kData);
        const QBitArray bits = data.toBitArray();
        const bool isEmpty =
            !data.isValid() || (data.typeId() == QMetaType::QBitArray && !bits.size());
        if (isEmpty)
            return empty == EmptyAnswer::MeansZero ? AssumedZero : Nothing;
        if (bits.size() < width) // a set bit may be among those that lack
            return Nothing;
        return isZeroBits(bits) ? Zero : NotZero;
    };
    const auto judge = [answerOf](const CmdPack &reply) {
        if (reply.contains(QStringLiteral("WINDOW")))
            return Verdict::Foreign;
        switch (answerOf(reply)) {
        case Nothing:
            return Verdict::Useless;
        case NotZero:
            return Verdict::Harmless;
        case Zero:
        case AssumedZero:
            break;
        }
        return Verdict::Keep;
    };
    const auto reading = std::make_shared<quint64>(0); // the one that the answer has started
    const auto take = [=, this, step = currentStep(),
                       answered = std::move(answered)](const CmdPack &reply) {
        if (step.isCurrent())
            *reading = m_reading + 1;
        answered(answerOf(reply));
    };
    const auto takeAgain = [=, this](const CmdPack &reply) {
        if (answerOf(reply) == NotZero)
            doubt(*reading);
    };
    m_requests->read(pack, {judge, take, takeAgain});
}

void CaptureManager::readStartRegister(int width, EmptyAnswer empty,
                                       std::function<void(RegisterAnswer)> answered)
{
    m_session.sendCommand(writeStartPacket(readRegisterWord(Registers::kStart)));
    readRegister(readStartPacket(width), width, empty, std::move(answered));
}

void CaptureManager::readMemory(const ReadPlan &plan, Evidence evidence)
{
    const Step step = beginStep();
    noteMissingWindows();
    if (!step.isCurrent())
        return;
    ++m_reading;
    m_readCore = plan.core;
    m_evidence = evidence;
    m_isDoubted = false;
    m_deliveredWindows.clear();
    if (m_autorun > -1)
        ++m_autorun;
    enterState(CaptureState::Reading);
    if (!step.isCurrent())
        return;
    if (plan.sectionCount == 0) {
        qCDebug(lcCapture, "core %d: nothing to read", plan.core);
        return; // a huge number of empty windows would take its time here
    }
    if (plan.windowCount <= 0)
        return;
    m_unasked = {plan, step};
    beginWindow();
    m_sinceAsked.start();
    scheduleSection();
}

void CaptureManager::beginWindow()
{
    m_windows.append(Window());
    m_windows.last().isTrusted = !m_isDoubted;
}

void CaptureManager::scheduleSection()
{
    const bool isFull = m_unasked->inFlight >= m_pace.sectionsInFlight;
    const qint64 pause =
        isFull ? CapturePace::kAnswerPatience : m_pace.sectionPause - m_sinceAsked.elapsed();
    m_sectionTimer->start(int(std::max<qint64>(pause, 0)));
}

void CaptureManager::onSectionDue()
{
    if (!m_unasked || !m_unasked->step.isCurrent() || m_state != CaptureState::Reading) {
        m_unasked.reset();
        return;
    }
    const Unasked due = *m_unasked;
    Unasked &next = *m_unasked;
    if (next.inFlight >= m_pace.sectionsInFlight)
        next.inFlight = 0; // they are lost, or nearly so
    ++next.inFlight;
    m_sinceAsked.start();
    m_windows[due.window].sections.append(Section());
    if (++next.section == next.plan.sectionCount) {
        next.section = 0;
        if (++next.window < next.plan.windowCount)
            beginWindow();
    }
    if (next.window < next.plan.windowCount)
        scheduleSection();
    else
        m_unasked.reset();
    // Last: a server that is found gone while it is written to may end the run.
    askSection(due.plan, {due.section, due.plan.sectionCount, due.window}, due.step);
}

void CaptureManager::askSection(const ReadPlan &plan, const SectionPlace &place, const Step &step)
{
    const int window = place.window;
    const qint64 row = window * plan.stride + qint64(place.section) * plan.sectionRows;
    m_session.sendCommand(burstReadPacket(sectionWord(plan, row), place));
    const auto read = std::make_shared<SectionRead>(SectionRead{plan, place, step, m_reading});
    const auto judge = [window](const CmdPack &reply) {
        using Verdict = CaptureRequests::Verdict;
        return windowOf(reply) == window ? Verdict::Keep : Verdict::Foreign;
    };
    m_requests->read(readRamPacket(plan.sectionBits(), place),
                     {judge, [this, read](const CmdPack &reply) { takeSection(*read, reply); },
                      [this, read](const CmdPack &reply) { takeSectionAgain(*read, reply); }});
}

/// A section of the reading under way has been answered.
void CaptureManager::noteAnswered()
{
    if (!m_unasked || m_unasked->inFlight == 0)
        return;
    if (m_unasked->inFlight-- >= m_pace.sectionsInFlight)
        scheduleSection();
}

/// A reply does not name its section, so the place is that of the request.
CaptureManager::Section CaptureManager::sectionOf(const CmdPack &reply, const ReadPlan &plan)
{
    QBitArray data = reply.value(kData).toBitArray();
    bool isNumber = false;
    const int count = reply.value(QStringLiteral("SECTION_COUNT")).toInt(&isNumber);
    if (data.size() < plan.sectionBits() || !isNumber || count != plan.sectionCount) {
        qCDebug(lcCapture, "a section of %lld bits, one of %d; asked for were %d bits, one of %d",
                qlonglong(data.size()), count, plan.sectionBits(), plan.sectionCount);
        return {Section::Damaged, {}};
    }
    data.truncate(plan.sectionBits());
    return {Section::Whole, dropBackBits(dropFrontBits(data, plan.leadingBits), kTrailingBits)};
}

void CaptureManager::takeSection(SectionRead &read, const CmdPack &reply)
{
    if (!read.step.isCurrent() || read.place.window >= m_windows.size())
        return;
    noteAnswered();
    Window &window = m_windows[read.place.window];
    Section &section = window.sections[read.place.section];
    section = sectionOf(reply, read.plan);
    if (section.state == Section::Whole)
        read.digest = qHash(section.rows);
    const int arrived = ++window.arrived;
    const Step step = read.step;
    const ReadPlan plan = read.plan;
    Q_EMIT sectionRead(plan.core, read.place.window, arrived, plan.sectionCount);
    if (step.isCurrent() && arrived == plan.sectionCount)
        deliver(plan, read.place.window);
}

/// Two replies to one request: one of them belongs to another, and may be of another capture.
void CaptureManager::takeSectionAgain(const SectionRead &read, const CmdPack &reply)
{
    const Section section = sectionOf(reply, read.plan);
    if (section.state != Section::Whole)
        return;
    if (read.digest) {
        if (*read.digest != qHash(section.rows))
            doubt(read.reading, read.place.window);
        return;
    }
    if (!read.step.isCurrent() || read.place.window >= m_windows.size())
        return;
    Window &window = m_windows[read.place.window];
    if (!window.isDelivered)
        window.sections[read.place.section] = section; // for the damaged one
}

void CaptureManager::deliver(const ReadPlan &plan, int window)
{
    const Step step = currentStep();
    if (window + 1 == plan.windowCount) {
        enterState(CaptureState::ReadComplete);
        if (!step.isCurrent())
            return;
    }
    m_windows[window].isDelivered = true;
    m_deliveredWindows.append(window);
    if (m_evidence == Evidence::Assumed)
        doubt(m_reading, window);
    if (step.isCurrent())
        windowComplete(plan, window);
}

QList<QBitArray> CaptureManager::sections(int window) const
{
    if (window < 0 || window >= m_windows.size() || !m_windows[window].isTrusted)
        return {};
    QList<QBitArray> rows;
    for (const Section &section : m_windows[window].sections) {
        if (section.state != Section::Whole)
            return {};
        rows.prepend(section.rows);
    }
    return rows;
}

/// Windows handed out are named in the report; the others will be handed out empty.
void CaptureManager::doubt(quint64 reading, std::optional<int> window)
{
    if (reading == 0 || reading != m_reading)
        return;
    qCDebug(lcCapture, "the samples of core %d are in doubt", m_readCore);
    m_isDoubted = m_isDoubted || !window;
    RunReport report = m_report;
    for (int i = 0; i < m_windows.size(); ++i) {
        if (!m_windows[i].isDelivered && window.value_or(i) == i)
            m_windows[i].isTrusted = false;
    }
    for (const int delivered : std::as_const(m_deliveredWindows)) {
        const RunReport::Window named{m_readCore, delivered};
        if (window.value_or(delivered) == delivered && !report.doubtful.contains(named))
            report.doubtful.append(named);
    }
    changeReport(report);
}

/// The windows of the latest reading make room.
void CaptureManager::noteMissingWindows()
{
    RunReport report = m_report;
    for (int i = 0; i < m_windows.size(); ++i) {
        if (!m_windows[i].isDelivered)
            report.missing.append({m_readCore, i});
    }
    m_windows.clear();
    changeReport(report);
}

void CaptureManager::watchServer()
{
    RunReport report = m_report;
    if (!m_session.isCurrentConnected())
        report.server = RunReport::Server::Gone;
    else if (m_requests->silence() >= kPatience)
        report.server = RunReport::Server::Silent;
    else
        report.server = RunReport::Server::Answers;
    changeReport(report);
}

void CaptureManager::changeReport(RunReport report)
{
    if (report == m_report)
        return;
    m_report = std::move(report);
    if (const QString text = m_report.text(); !text.isEmpty())
        qCDebug(lcCapture).noquote() << text;
    Q_EMIT reportChanged();
}

} // namespace KEO
