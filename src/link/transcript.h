#pragma once

#include "packetqueue.h"
#include "pollfolding.h"

#include <base/result.h>

#include <QByteArray>
#include <QByteArrayView>
#include <QElapsedTimer>
#include <QFile>
#include <QList>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace KEO {

/// Most bytes of a transcript. What polls say again and again is told in numbers, so this is many
/// captures.
inline constexpr qint64 kTranscriptLimit = 64 * 1024 * 1024;

/// Every packet that passes the clients, with its time, as lines of text in a file;
/// docs/link-protocol.md has the form. Taking a packet costs its thread next to nothing: lines are
/// made and written on another one, as soon as a packet comes, and while they come without a pause
/// every two milliseconds. Little more is lost when the program crashes, but for the numbers of
/// polls, which are told once a second.
///
/// A file that can't take any more, a full disk say, is told once and left alone from then on.
class Transcript final
{
public:
    /// Told once what went wrong with the file, on the writing thread.
    using Complaint = std::function<void(const QString &)>;

    /// Begins a file. An older transcript makes room; a file of another kind stays, and is an
    /// error.
    static Result<std::shared_ptr<Transcript>> open(const QString &path, Complaint complain,
                                                    qint64 limit = kTranscriptLimit);
    Transcript(const Transcript &) = delete;
    Transcript &operator=(const Transcript &) = delete;
    ~Transcript();

    /// A number for the server of that name, which the following take.
    [[nodiscard]] int addServer(const QString &name);
    /// A packet to a server, its length field included.
    void frameSent(int server, const QByteArray &frame);
    /// A payload from a server, malformed or not.
    void payloadReceived(int server, const QByteArray &payload);
    /// Anything else that matters on the way; \a text is printable ASCII.
    void event(int server, const QByteArray &text);

    /// Writes what is left and closes the file; what comes later is passed over.
    void finish();

private:
    Transcript(Complaint complain, qint64 limit);

    void add(QueuedPacket::Kind kind, int server, QByteArrayView bytes);
    void work();
    void write(QByteArrayView queue, qint64 lost);
    void print(const TranscriptPacket &packet, const PacketText &text);
    void printEvent(const QueuedPacket &event);
    void beginLine(qint64 time, int server);
    void printCount(int server, qint64 requests, qint64 replies);
    void endLine(qsizetype start);
    void flush();

    // Both threads, under the mutex.
    std::mutex m_mutex;
    std::condition_variable m_wake;
    PacketQueue m_queue;
    QList<QByteArray> m_names; ///< of the servers, as they stand in a line
    qint64 m_lost = 0;         ///< came faster than the file takes them
    bool m_isIdle = false;
    bool m_isEnding = false;

    std::atomic<bool> m_isClosed = false; ///< takes nothing any more
    std::atomic<bool> m_isFull = false;   ///< has reached its limit
    std::atomic<qint64> m_cut = 0;        ///< packets behind the limit

    // The writing thread alone, once it runs.
    Complaint m_complain;
    qint64 m_limit;
    QFile m_file;
    qint64 m_size = 0;   ///< of the file
    QByteArray m_buffer; ///< whole lines
    QList<QByteArray> m_namesInUse;
    PacketQueueReader m_reader;
    PollFolding m_folding;
    QElapsedTimer m_untilCounts; ///< since the latest counts

    QElapsedTimer m_clock;
    std::thread m_thread;
};

} // namespace KEO
