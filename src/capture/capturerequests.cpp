#include "capturerequests.h"

#include "capturepackets.h"

#include <base/logging.h>

#include <utility>

namespace KEO {

CaptureRequests::CaptureRequests(JtagSession &session) : m_session(session)
{
}

CaptureRequests::~CaptureRequests()
{
    beginRound();
    beginRound();
}

void CaptureRequests::open(const QVariantList &chain, std::function<void(int)> opened)
{
    m_passesOver = m_session.lateReplies().areAwaited;
    m_opened = std::move(opened);
    m_hasResult = false;
    m_isHeard = false;
    noteAsked();
    m_isOpening = true;
    m_session.sendCommand(openPacket(chain), [this, era = std::weak_ptr(m_era)](const CmdPack &r) {
        if (!era.expired())
            awaitOpened(r);
    });
}

/// The answers to earlier "OPEN"s come first, under the same id.
void CaptureRequests::awaitOpened(const CmdPack &reply)
{
    bool isNumber = false;
    const int result = reply.value(QStringLiteral("RES")).toInt(&isNumber);
    m_lastResult = isNumber ? result : -1;
    m_hasResult = true;
    LateReplies late = m_session.lateReplies();
    if (!m_passesOver || late.commands == 0) {
        endOpening(m_lastResult);
        return;
    }
    qCDebug(lcCapture, "passed over the answer to an earlier OPEN");
    --late.commands;
    m_session.setLateReplies(late);
    m_session.awaitReply([this, era = std::weak_ptr(m_era)](const CmdPack &r) {
        if (!era.expired())
            awaitOpened(r);
    });
}

void CaptureRequests::endOpening(int result)
{
    m_isOpening = false;
    m_passesOver = false;
    m_session.setLateReplies({});
    m_quiet.start();
    const std::function<void(int)> opened = m_opened; // it may stop the run, and replace itself
    opened(result);
}

/// A data reply that comes when none can be late any more ends the waiting for "OPEN" as well: an
/// earlier one was not late but lost, and what was taken for its answer was this one's.
bool CaptureRequests::passesOver()
{
    if (!m_passesOver)
        return false;
    LateReplies late = m_session.lateReplies();
    if (late.data == 0 && m_hasResult) {
        const std::weak_ptr<int> era = m_era;
        endOpening(m_lastResult);
        return era.expired();
    }
    qCDebug(lcCapture, "passed over a reply to an earlier request");
    if (late.data > 0)
        --late.data;
    m_session.setLateReplies(late);
    return true;
}

void CaptureRequests::read(const CmdPack &pack, Read read)
{
    noteAsked();
    ++*m_unanswered;
    const auto request = std::make_shared<Request>();
    request->unanswered = m_unanswered;
    const auto task = [this, era = std::weak_ptr(m_era), request,
                       read = std::move(read)](const CmdPack &reply, bool *done) {
        if (era.expired())
            *done = true;
        else if (!passesOver())
            takeReply(request, read, reply, done);
    };
    request->handle = m_session.sendDataCommand(pack, task);
}

void CaptureRequests::takeReply(const std::shared_ptr<Request> &request, const Read &read,
                                const CmdPack &reply, bool *done)
{
    const Verdict verdict = read.judge(reply);
    if (verdict == Verdict::Foreign) {
        qCDebug(lcCapture, "a reply does not fit the request under its id");
        return;
    }
    if (request->isAnswered) {
        qCDebug(lcCapture, "an answer came twice");
        if (read.takeAgain)
            read.takeAgain(reply);
        return;
    }
    request->isAnswered = true;
    --*request->unanswered;
    m_isHeard = true;
    if (verdict != Verdict::Useless) {
        m_hasGivenUp = false;
        m_quiet.start();
    }
    if (verdict == Verdict::Keep)
        m_kept.append(request->handle);
    else
        *done = true;
    read.take(reply);
}

void CaptureRequests::beginRound()
{
    for (const JtagDataRequest &request : std::as_const(m_keptBefore))
        m_session.finishData(request);
    m_keptBefore = std::exchange(m_kept, {});
}

void CaptureRequests::stop()
{
    // An "OPEN" that was overtaken by the answer to a read is lost.
    noteLate(m_isOpening && !m_isHeard ? 1 : 0);
    m_isOpening = false;
    m_passesOver = false;
    m_hasGivenUp = false;
    forget();
}

void CaptureRequests::giveUp()
{
    noteLate(0);
    m_hasGivenUp = true;
    forget();
}

void CaptureRequests::noteLate(int commands)
{
    LateReplies late = m_session.lateReplies();
    late.commands += commands;
    late.data += *m_unanswered;
    late.areAwaited = late.areAwaited || commands > 0 || *m_unanswered > 0;
    m_session.setLateReplies(late);
}

void CaptureRequests::finish()
{
    m_session.setLateReplies({});
    m_unanswered = std::make_shared<int>(0);
    m_hasGivenUp = false;
    m_isOpening = false;
}

void CaptureRequests::forget()
{
    m_session.clearTasks();
    m_era = std::make_shared<int>(0);
    m_unanswered = std::make_shared<int>(0);
    m_kept.clear();
    m_keptBefore.clear();
}

qint64 CaptureRequests::silence() const
{
    const bool isAsked = *m_unanswered > 0 || (m_isOpening && !m_isHeard) || m_hasGivenUp;
    return isAsked && m_quiet.isValid() ? m_quiet.elapsed() : 0;
}

void CaptureRequests::noteAsked()
{
    if (silence() == 0)
        m_quiet.start();
}

} // namespace KEO
