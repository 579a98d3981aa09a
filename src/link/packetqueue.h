#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace KEO {

/// What passed a client at a moment.
struct QueuedPacket
{
    enum class Kind : quint32 { Sent, Received, Event };

    qint64 time = 0; ///< nanoseconds since the start
    int server = 0;  ///< counted from 0
    Kind kind = Kind::Event;
    QByteArrayView bytes; ///< a payload, or the text of an event
};

/// The giving end of a queue of packets to another thread. Of each it keeps only what is between
/// the bytes that it shares with the front and the back of the one before: a register image is
/// almost the same packet over and over, and memory that goes to and fro between two processors
/// costs a sender more than all else that a queue does.
class PacketQueue
{
public:
    void append(const QueuedPacket &packet);
    /// Bytes that wait.
    [[nodiscard]] qsizetype size() const { return m_waiting.size(); }
    [[nodiscard]] bool isEmpty() const { return m_waiting.isEmpty(); }
    /// Gives what waits for a reader and takes memory in return, whose content goes.
    void exchange(QByteArray &bytes);

private:
    QByteArray m_waiting;
    QByteArray m_previous; ///< the bytes of the latest packet; the reader has a copy of its own
};

/// The taking end. Has to get all that one queue gave, in order.
class PacketQueueReader
{
public:
    /// Takes the first packet off \a waiting, which must not be empty. Its bytes live until the
    /// next call.
    QueuedPacket take(QByteArrayView &waiting);

private:
    QByteArray m_bytes;
};

} // namespace KEO
