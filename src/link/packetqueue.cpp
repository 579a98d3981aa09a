#include "packetqueue.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace KEO {

namespace {

/// Stands in front of the bytes between front and back.
struct Head
{
    qint64 time;
    quint32 size;  // of the whole packet
    quint32 front; // bytes as in the packet before, counted from its start
    quint32 back;  // and from its end
    quint32 server : 30;
    quint32 kind : 2;
};

using Word = quint64;

Word wordAt(const char *bytes)
{
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Both count in whole words: what is left over is copied sooner than compared.

qsizetype sharedFront(QByteArrayView a, QByteArrayView b)
{
    const qsizetype most = std::min(a.size(), b.size()) - qsizetype(sizeof(Word));
    qsizetype shared = 0;
    while (shared <= most && wordAt(a.data() + shared) == wordAt(b.data() + shared))
        shared += sizeof(Word);
    return shared;
}

qsizetype sharedBack(QByteArrayView a, QByteArrayView b)
{
    const qsizetype most = std::min(a.size(), b.size()) - qsizetype(sizeof(Word));
    qsizetype shared = 0;
    while (shared <= most &&
           wordAt(a.end() - shared - sizeof(Word)) == wordAt(b.end() - shared - sizeof(Word)))
        shared += sizeof(Word);
    return shared;
}

} // namespace

void PacketQueue::append(const QueuedPacket &packet)
{
    const QByteArrayView bytes = packet.bytes;
    const qsizetype front = sharedFront(m_previous, bytes);
    const qsizetype back =
        sharedBack(QByteArrayView(m_previous).sliced(front), bytes.sliced(front));
    const QByteArrayView between = bytes.sliced(front, bytes.size() - front - back);
    Head head{};
    head.time = packet.time;
    head.size = quint32(bytes.size());
    head.front = quint32(front);
    head.back = quint32(back);
    head.server = quint32(packet.server);
    head.kind = quint32(packet.kind);
    const qsizetype start = m_waiting.size();
    m_waiting.resize(start + qsizetype(sizeof head) + between.size());
    char *const out = m_waiting.data() + start;
    std::memcpy(out, &head, sizeof head);
    std::copy_n(between.data(), between.size(), out + sizeof head);

    if (m_previous.size() != bytes.size())
        m_previous.resize(bytes.size());
    std::copy_n(bytes.data(), bytes.size(), m_previous.data());
}

void PacketQueue::exchange(QByteArray &bytes)
{
    bytes.resize(0); // and keeps its memory
    bytes.swap(m_waiting);
}

QueuedPacket PacketQueueReader::take(QByteArrayView &waiting)
{
    Head head;
    std::memcpy(&head, waiting.data(), sizeof head);
    const qsizetype betweenSize = qsizetype(head.size) - head.front - head.back;
    const QByteArrayView between = waiting.sliced(sizeof head, betweenSize);
    waiting = waiting.sliced(qsizetype(sizeof head) + betweenSize);
    m_bytes.replace(head.front, m_bytes.size() - head.front - head.back, between);
    return {head.time, int(head.server), QueuedPacket::Kind(head.kind), m_bytes};
}

} // namespace KEO
