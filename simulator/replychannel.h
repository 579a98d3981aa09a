#pragma once

#include "faultplan.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTimer>

class QLocalSocket;

namespace Sim {

/// Sends replies down one socket, in order, bent as the faults say. Borrows the socket, which must
/// live as long.
class ReplyChannel final : public QObject
{
    Q_OBJECT

public:
    explicit ReplyChannel(QLocalSocket *socket, QObject *parent = nullptr);

    /// Sends a frame as it is, ahead of nothing that is already waiting.
    void send(const QByteArray &frame);
    /// Sends a reply under a fault that changes the way of replies.
    void sendWith(const Fault &fault, const QByteArray &frame);
    /// Drops all that waits and sends nothing more.
    void silence();

private:
    struct Piece
    {
        QByteArray bytes;
        int msBefore = 0;
    };

    void enqueue(const QByteArray &bytes, int msBefore);
    void writeNext();

    QLocalSocket *m_socket; // borrowed
    QList<Piece> m_queue;
    QTimer *m_pause = new QTimer(this); // owned by the object tree
    QByteArray m_glued;                 ///< leaves in one write with the next reply
    QByteArray m_swapped;               ///< leaves after the next reply
    bool m_silent = false;
};

} // namespace Sim
