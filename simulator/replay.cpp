#include "replay.h"

#include "cable.h"

#include <QtEndian>

#include <algorithm>
#include <optional>
#include <utility>

namespace Sim {

namespace {

const QStringList kIdKeys = {QStringLiteral("request_id"), QStringLiteral("data_request_id")};

/// Takes the id out of a packet; the key it stood under, or nothing.
QString takeId(Packet &packet, quint32 &id)
{
    for (const QString &key : kIdKeys) {
        const auto entry = packet.find(key);
        if (entry == packet.end())
            continue;
        id = entry->toUInt();
        packet.erase(entry);
        return key;
    }
    return {};
}

QByteArray frameOf(const QByteArray &payload)
{
    QByteArray frame(4, '\0');
    qToBigEndian(qint32(payload.size()), frame.data());
    return frame + payload;
}

} // namespace

Replay::Replay(const QList<TranscriptLine> &lines, QString name) : m_name(std::move(name))
{
    for (const TranscriptLine &line : lines) {
        if (line.kind != TranscriptLine::Kind::ToServer) {
            addReply(line);
            continue;
        }
        Request request{line.number, line.packet, {}, 0, {}};
        request.idKey = takeId(request.body, request.id);
        m_requests.append(request);
    }
}

/// A server answers in order: a reply belongs to the first request of its id that has none, a
/// second one to the last that has. What comes without an id goes with the reply before it.
void Replay::addReply(const TranscriptLine &line)
{
    Reply reply{line.packet, line.payload, {}};
    quint32 id = 0;
    reply.idKey = takeId(reply.packet, id);
    int owner = reply.idKey.isEmpty() ? m_answered : -1;
    for (int i = int(m_requests.size()) - 1; i >= 0 && !reply.idKey.isEmpty(); --i) {
        const Request &request = m_requests.at(i);
        if (request.idKey != reply.idKey || request.id != id)
            continue;
        if (request.replies.isEmpty() || owner < 0)
            owner = i;
        if (!request.replies.isEmpty())
            break; // all before it are older than an answer
    }
    if (owner < 0)
        return; // its request came before the transcript
    m_requests[owner].replies.append(reply);
    m_answered = owner;
}

Replay::Answer Replay::take(const Packet &packet)
{
    ++m_asked;
    Packet body = packet;
    quint32 id = 0;
    const QString idKey = takeId(body, id);
    Answer answer;
    const Request *const request = find(body);
    if (!request) {
        answer.difference = differenceOf(packet);
        m_differs = true;
        m_next = std::min(m_next + 1, int(m_requests.size())); // one stands for the other
    }
    if (m_differs) {
        answer.isRefused = !idKey.isEmpty();
        return answer;
    }
    for (const Reply &reply : request->replies) {
        if (!reply.payload.isEmpty()) {
            answer.frames += frameOf(reply.payload);
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
    if (next == m_requests.size() && !m_requests.isEmpty() && m_requests.first().body == body) {
        m_latest = {-1, -1};
        note(0);
        m_next = 1;
        return &m_requests.first();
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

QString Replay::differenceOf(const Packet &packet) const
{
    const QString expected = m_next < m_requests.size()
                                 ? QStringLiteral("line %1 of %2 has %3")
                                       .arg(QString::number(m_requests.at(m_next).line), m_name,
                                            describe(m_requests.at(m_next).body))
                                 : QStringLiteral("%1 has nothing more").arg(m_name);
    Packet body = packet;
    quint32 id = 0;
    takeId(body, id);
    return QStringLiteral("packet %1 differs: got %2, but %3")
        .arg(QString::number(m_asked), describe(body), expected);
}

} // namespace Sim
