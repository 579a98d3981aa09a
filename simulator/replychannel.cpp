#include "replychannel.h"

#include <QLocalSocket>

#include <utility>

namespace Sim {

ReplyChannel::ReplyChannel(QLocalSocket *socket, QObject *parent)
    : QObject(parent), m_socket(socket)
{
    m_pause->setSingleShot(true);
    m_pause->setTimerType(Qt::PreciseTimer);
    connect(m_pause, &QTimer::timeout, this, &ReplyChannel::writeNext);
}

void ReplyChannel::send(const QByteArray &frame)
{
    enqueue(std::exchange(m_glued, QByteArray()) + frame + std::exchange(m_swapped, QByteArray()),
            0);
}

void ReplyChannel::sendWith(const Fault &fault, const QByteArray &frame)
{
    switch (fault.kind) {
    case Fault::Kind::Lost:
        return;
    case Fault::Kind::Late:
        QTimer::singleShot(fault.ms, this, [this, frame] { send(frame); });
        return;
    case Fault::Kind::Doubled:
        return send(frame + frame);
    case Fault::Kind::Swapped:
        m_swapped += frame;
        return;
    case Fault::Kind::Glued:
        m_glued += frame;
        return;
    case Fault::Kind::Pieces:
        for (qsizetype at = 0; at < frame.size(); at += fault.value)
            enqueue(frame.mid(at, fault.value), at == 0 ? 0 : fault.ms);
        return;
    default:
        return send(frame);
    }
}

void ReplyChannel::silence()
{
    m_silent = true;
    m_queue.clear();
    m_pause->stop();
}

void ReplyChannel::enqueue(const QByteArray &bytes, int msBefore)
{
    if (m_silent)
        return;
    const bool isIdle = m_queue.isEmpty() && !m_pause->isActive();
    m_queue.append({bytes, msBefore});
    if (isIdle)
        writeNext();
}

void ReplyChannel::writeNext()
{
    while (!m_queue.isEmpty()) {
        if (const int pause = std::exchange(m_queue.first().msBefore, 0); pause > 0) {
            m_pause->start(pause);
            return;
        }
        m_socket->write(m_queue.takeFirst().bytes);
        m_socket->flush();
    }
}

} // namespace Sim
