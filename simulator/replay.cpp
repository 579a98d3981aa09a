#include "replay.h"

#include "cable.h"

#include <QHash>
#include <QQueue>
#include <QtEndian>

#include <algorithm>
#include <utility>

namespace Sim {

namespace {

const QStringList kIdKeys = {QStringLiteral("request_id"), QStringLiteral("data_request_id")};

QByteArray frameOf(const QByteArray &payload)
{
    QByteArray frame(4, '\0');
    qToBigEndian(qint32(payload.size()), frame.data());
    return frame + payload;
}

} // namespace

/// Requests of one id. A server answers in order: a reply belongs to the first that has none, a
/// second one to the last that has. What comes without an id goes with the reply before it.
struct Replay::Owners
{
    QQueue<int> waiting;
    int answered = -1;

    int next()
    {
        if (!waiting.isEmpty())
            answered = waiting.dequeue();
        return answered;
    }
};

Replay::Id Replay::takeId(Packet &packet)
{
    for (const QString &key : kIdKeys) {
        const auto entry = packet.find(key);
        if (entry == packet.end())
            continue;
        const quint32 number = entry->toUInt();
        packet.erase(entry);
        return {key, number};
    }
    return {};
}

Replay::Replay(const QList<TranscriptLine> &lines, QString name) : m_name(std::move(name))
{
    QHash<Id, Owners> owners;
    int answered = -1;
    for (const TranscriptLine &line : lines) {
        Packet body = line.packet;
        const Id id = takeId(body);
        if (line.kind == TranscriptLine::Kind::ToServer) {
            if (!id.first.isEmpty())
                owners[id].waiting.enqueue(int(m_requests.size()));
            m_requests.append({line.number, body, !id.first.isEmpty(), {}});
            continue;
        }
        const int owner = id.first.isEmpty() ? answered : owners[id].next();
        if (owner < 0)
            continue; // its request came before the transcript
        answered = owner;
        const bool isMalformed = line.kind == TranscriptLine::Kind::Malformed;
        m_requests[owner].replies.append(
            {body, isMalformed ? frameOf(line.payload) : QByteArray(), id.first});
    }
}

Replay::Answer Replay::take(const Packet &packet)
{
    ++m_asked;
    Packet body = packet;
    const auto [idKey, id] = takeId(body);
    Answer answer;
    const Request *const request = find(body);
    if (!request) {
        const bool isBehind = m_next == m_requests.size();
        if (!std::exchange(m_isBehind, isBehind)) // of what has no counterpart, the first will do
            answer.told = differenceOf(body);
        m_differs = true;
        m_next = std::min(m_next + 1, int(m_requests.size())); // one stands for the other
    }
    if (m_differs) {
        answer.isRefused = !idKey.isEmpty();
        return answer;
    }
    if (request->wantsAnswer && request->replies.isEmpty() &&
        std::exchange(m_silent, request->line) != request->line)
        answer.told = QStringLiteral("packet %1 gets no answer: line %2 of %3 got none")
                          .arg(QString::number(m_asked), QString::number(request->line), m_name);
    for (const Reply &reply : request->replies) {
        if (!reply.frame.isEmpty()) {
            answer.frames += reply.frame;
            continue;
        }
        Packet sent = reply.packet;
        if (!reply.idKey.isEmpty())
            sent.insert(reply.idKey, id);
        answer.frames += encodeFrame(sent);
    }
    return answer;
}

const Replay::Request *Replay::find(const Packet &body)
{
    // A program that asks less often than the transcript's passes over the rest.
    int next = m_next;
    while (next < m_requests.size() && m_requests.at(next).body != body &&
           among(m_latest, m_requests.at(next).body))
        ++next;
    if (next < m_requests.size() && m_requests.at(next).body == body) {
        note(next);
        m_next = next + 1;
        return &m_requests.at(next);
    }
    if (const Request *again = among(m_latest, body))
        return again;
    // The same capture once more.
    if (next == m_requests.size() && !m_requests.isEmpty() &&
        m_requests.constFirst().body == body) {
        m_latest = {-1, -1};
        note(0);
        m_next = 1;
        return &m_requests.constFirst();
    }
    return nullptr;
}

const Replay::Request *Replay::among(const std::array<int, 2> &latest, const Packet &body) const
{
    for (const int request : latest) {
        if (request >= 0 && m_requests.at(request).body == body)
            return &m_requests.at(request);
    }
    return nullptr;
}

void Replay::note(int request)
{
    const Packet &body = m_requests.at(request).body;
    if (m_latest[0] < 0 || m_requests.at(m_latest[0]).body != body)
        m_latest[1] = m_latest[0];
    m_latest[0] = request;
}

QString Replay::differenceOf(const Packet &body) const
{
    const QString expected = m_next < m_requests.size()
                                 ? QStringLiteral("line %1 of %2 has %3")
                                       .arg(QString::number(m_requests.at(m_next).line), m_name,
                                            describe(m_requests.at(m_next).body))
                                 : QStringLiteral("%1 has nothing more").arg(m_name);
    return QStringLiteral("packet %1 differs: got %2, but %3")
        .arg(QString::number(m_asked), describe(body), expected);
}

} // namespace Sim
