#pragma once

#include "cmdpack.h"

#include <QLocalSocket>
#include <QTimer>

#include <memory>

namespace KEO {

class Transcript;

/// The socket to one cable server: packets out, packets in. It makes one connection in its life;
/// the connecting itself is the session's job. GUI thread; nothing here blocks.
///
/// A length field that is negative or too large leaves no way to find the next frame. From then on
/// all input of the connection is read and thrown away; sending still works.
class JtagClient final : public QLocalSocket
{
    Q_OBJECT

public:
    explicit JtagClient(QObject *parent = nullptr);

    /// Frames \a pack and writes it. Lost without an error if the server is gone; a packet that has
    /// no wire form is a mistake of the caller, logged as a warning, and not sent.
    void sendPack(const CmdPack &pack);
    /// Whatever passes from now on stands in \a transcript, which may be null.
    void writeTo(std::shared_ptr<Transcript> transcript, const QString &cable);

Q_SIGNALS:
    /// One frame has arrived whole; the packet is empty if its contents made no sense. Receivers
    /// may do anything, run an event loop (which then delivers the next frames) or delete the
    /// client.
    void cmdReceived(CmdPack pack);

public Q_SLOTS:
    /// Takes at most one complete frame; a pass with no delay looks for the next one.
    void onDataReady();

private:
    /// False while there is no length field to go by.
    bool readLength();

    qint32 m_blockSize = 0;      ///< payload bytes of the frame that is arriving, 0 between frames
    bool m_inputDropped = false; ///< the frame boundaries are lost
    QTimer m_nextFrame;          ///< single shot, no delay
    std::shared_ptr<Transcript> m_transcript; ///< null without one
    int m_transcriptServer = 0;               ///< number there
};

} // namespace KEO
