#include "transcript.h"

#include "packetcodec.h"
#include "packettext.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <utility>

namespace KEO {

namespace {

using namespace std::chrono_literals;

constexpr auto kPause = 2ms;            // between two writes while packets come without a pause
constexpr auto kCountInterval = 1000ms; // until polls that were counted are told
constexpr qsizetype kMaxQueued = 32 * 1024 * 1024; // bytes of packets that wait to be written
constexpr qsizetype kKeptMemory = 16 * 1024 * 1024;
constexpr qsizetype kWrittenAtOnce = 256 * 1024;
constexpr qint64 kRoomAtEnd = 256; // for the lines that tell what was cut
constexpr char kFirstWords[] = "# Signal Scope transcript";

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::Transcript)
};

Error fault(const QString &path, const QString &why)
{
    return {Error::File, Text::tr("The transcript %1 can not be written: %2").arg(path, why)};
}

/// Would a user miss what the file holds?
bool isOther(const QString &path)
{
    QFile file(path);
    return file.size() > 0 &&
           (!file.open(QIODevice::ReadOnly) || file.read(sizeof kFirstWords - 1) != kFirstWords);
}

QByteArray header()
{
    return QByteArray(kFirstWords) + " 1\n# Milliseconds since " +
           QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1() + '\n';
}

/// Milliseconds with three digits behind the point, in ten columns.
void appendTime(QByteArray &line, qint64 nanoseconds)
{
    constexpr int kColumns = 10;
    char digits[24];
    char *out = std::end(digits);
    qint64 micros = nanoseconds / 1000;
    for (int i = 0; i < 4 || micros > 0; ++i, micros /= 10) {
        if (i == 3)
            *--out = '.';
        *--out = char('0' + micros % 10);
    }
    while (std::end(digits) - out < kColumns)
        *--out = ' ';
    line.append(out, std::end(digits) - out);
}

} // namespace

Result<std::shared_ptr<Transcript>> Transcript::open(const QString &path, Complaint complain,
                                                     qint64 limit)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        return fault(path, Text::tr("it is no regular file."));
    if (info.exists() && isOther(path))
        return fault(path, Text::tr("the file holds something else, which is not replaced."));
    std::shared_ptr<Transcript> transcript(new Transcript(std::move(complain), limit));
    QFile &file = transcript->m_file;
    file.setFileName(path);
    const QByteArray head = header();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered) ||
        file.write(head) != head.size())
        return fault(path, file.errorString());
    transcript->m_size = head.size();
    transcript->m_thread = std::thread(&Transcript::work, transcript.get());
    return transcript;
}

Transcript::Transcript(Complaint complain, qint64 limit)
    : m_complain(std::move(complain)),
      m_limit(limit),
      m_folding(
          [this](const TranscriptPacket &packet, const PacketText &text) { print(packet, text); },
          [this](int server, qint64 requests, qint64 replies) {
              printCount(server, requests, replies);
          })
{
    m_clock.start();
    m_untilCounts.start();
}

Transcript::~Transcript()
{
    finish();
}

int Transcript::addServer(const QString &name)
{
    QByteArray text;
    appendNameText(text, name);
    const std::unique_lock lock(m_mutex);
    m_names.append(text);
    return int(m_names.size()) - 1;
}

void Transcript::frameSent(int server, const QByteArray &frame)
{
    add(QueuedPacket::Kind::Sent, server, QByteArrayView(frame).sliced(kLengthFieldSize));
}

void Transcript::payloadReceived(int server, const QByteArray &payload)
{
    add(QueuedPacket::Kind::Received, server, payload);
}

void Transcript::event(int server, const QByteArray &text)
{
    add(QueuedPacket::Kind::Event, server, text);
}

void Transcript::add(QueuedPacket::Kind kind, int server, QByteArrayView bytes)
{
    if (m_isClosed)
        return;
    if (m_isFull) {
        ++m_cut;
        return;
    }
    const qint64 time = m_clock.nsecsElapsed();
    const std::unique_lock lock(m_mutex);
    if (m_queue.size() > kMaxQueued) {
        ++m_lost;
        return;
    }
    m_queue.append({time, server, kind, bytes});
    if (std::exchange(m_isIdle, false))
        m_wake.notify_one();
}

void Transcript::finish()
{
    {
        const std::unique_lock lock(m_mutex);
        if (std::exchange(m_isEnding, true))
            return;
        m_wake.notify_one();
    }
    if (m_thread.joinable())
        m_thread.join();
    m_isClosed = true;
}

void Transcript::work()
{
    QByteArray queue;
    bool isLast = false;
    const auto isWoken = [this] { return !m_queue.isEmpty() || m_isEnding; };
    while (!isLast) {
        std::unique_lock lock(m_mutex);
        m_isIdle = true;
        if (m_folding.hasCounts())
            m_wake.wait_for(lock, kCountInterval, isWoken);
        else
            m_wake.wait(lock, isWoken);
        m_isIdle = false;
        isLast = m_isEnding;
        m_queue.exchange(queue);
        m_namesInUse = m_names;
        const qint64 lost = std::exchange(m_lost, 0);
        lock.unlock();
        write(queue, lost);
        if (queue.capacity() > kKeptMemory)
            queue.clear();
        lock.lock();
        if (!isLast)
            m_wake.wait_for(lock, kPause, [this] { return m_isEnding; });
    }
    m_folding.printCounts();
    if (m_cut > 0)
        m_buffer.append("# Not written: " + QByteArray::number(m_cut) + " packets\n");
    flush();
    m_file.close();
}

void Transcript::write(QByteArrayView queue, qint64 lost)
{
    const bool isEmpty = queue.isEmpty();
    while (!queue.isEmpty()) {
        const QueuedPacket packet = m_reader.take(queue);
        if (packet.kind == QueuedPacket::Kind::Event)
            printEvent(packet);
        else
            m_folding.take({packet.time, packet.server, packet.kind == QueuedPacket::Kind::Sent,
                            packet.bytes});
    }
    if (m_untilCounts.hasExpired(kCountInterval.count()) || isEmpty) {
        m_folding.printCounts();
        m_untilCounts.start();
    }
    if (lost > 0) {
        const qsizetype start = m_buffer.size();
        m_buffer.append("# Lost: " + QByteArray::number(lost) + " packets, the file is too slow\n");
        endLine(start);
    }
    flush();
}

void Transcript::beginLine(qint64 time, int server)
{
    appendTime(m_buffer, time);
    m_buffer.append(' ').append(m_namesInUse.at(server));
}

void Transcript::print(const TranscriptPacket &packet, const PacketText &text)
{
    if (m_isFull) {
        ++m_cut;
        return;
    }
    const qsizetype start = m_buffer.size();
    beginLine(packet.time, packet.server);
    if (text.isMalformed()) {
        m_buffer.append(" ! ").append(packet.payload.toByteArray().toHex());
    } else {
        m_buffer.append(packet.isSent ? " >" : " <");
        text.appendTo(m_buffer);
    }
    endLine(start);
}

void Transcript::printEvent(const QueuedPacket &event)
{
    m_folding.printCounts();
    const qsizetype start = m_buffer.size();
    beginLine(event.time, event.server);
    m_buffer.append(" * ").append(event.bytes);
    endLine(start);
}

void Transcript::printCount(int server, qint64 requests, qint64 replies)
{
    const qsizetype start = m_buffer.size();
    m_buffer.append("# ")
        .append(m_namesInUse.at(server))
        .append(": the latest two requests ")
        .append(QByteArray::number(requests))
        .append(" times more, the latest reply ")
        .append(QByteArray::number(replies))
        .append(" times more");
    endLine(start);
}

/// Takes the line from \a start on back if it does not fit. From then on none does: a gap could not
/// be told from a packet that was never sent.
void Transcript::endLine(qsizetype start)
{
    m_buffer.append('\n');
    const bool fits = m_size + m_buffer.size() + kRoomAtEnd <= m_limit;
    if (!m_isFull && fits) {
        if (m_buffer.size() > kWrittenAtOnce)
            flush();
        return;
    }
    m_buffer.truncate(start);
    if (m_isFull.exchange(true))
        return;
    ++m_cut;
    m_buffer.append("# The limit of " + QByteArray::number(m_limit) +
                    " bytes is reached. What came later is cut.\n");
}

void Transcript::flush()
{
    if (m_buffer.isEmpty() || m_isClosed)
        return;
    if (m_file.write(m_buffer) == m_buffer.size()) {
        m_size += m_buffer.size();
        m_buffer.resize(0); // and keeps its memory
        return;
    }
    const QString why = m_file.errorString();
    m_isClosed = true;
    m_file.resize(m_size); // no half of a line
    m_complain(fault(m_file.fileName(), why).message);
}

} // namespace KEO
