#include "jtagclient.h"

#include "packetcodec.h"
#include "packettext.h"
#include "transcript.h"

#include <base/logging.h>

#include <utility>

namespace KEO {

JtagClient::JtagClient(QObject *parent) : QLocalSocket(parent)
{
    // The largest frame has to fit, or it would never be complete; more is the server's to keep.
    setReadBufferSize(kLengthFieldSize + kMaxPayloadSize);
    m_nextFrame.setSingleShot(true);
    connect(&m_nextFrame, &QTimer::timeout, this, &JtagClient::onDataReady);
    // Queued, since a socket does not repeat readyRead while a receiver of it still runs: a reply
    // that opens a box or waits for further replies would block them all.
    connect(this, &QLocalSocket::readyRead, this, &JtagClient::onDataReady, Qt::QueuedConnection);
}

void JtagClient::sendPack(const CmdPack &pack)
{
    if (state() != ConnectedState) {
        qCDebug(lcLink, "packet lost: the server is not connected");
        return;
    }
    const std::optional<QByteArray> frame = encodeFrame(pack);
    if (!frame) {
        qCWarning(lcLink) << "packet not sent, it has no wire form:" << pack;
        return;
    }
    if (m_transcript)
        m_transcript->frameSent(m_transcriptServer, *frame);
    write(*frame);
    flush();
}

void JtagClient::writeTo(std::shared_ptr<Transcript> transcript, const QString &cable)
{
    m_transcript = std::move(transcript);
    if (!m_transcript)
        return;
    m_transcriptServer = m_transcript->addServer(serverName());
    QByteArray text = "connected, cable ";
    appendQuotedText(text, cable);
    m_transcript->event(m_transcriptServer, text);
    // Without this object, which may be half gone when its base hangs up.
    connect(this, &QLocalSocket::disconnected, [kept = m_transcript, server = m_transcriptServer] {
        kept->event(server, "disconnected");
    });
}

bool JtagClient::readLength()
{
    if (bytesAvailable() < kLengthFieldSize)
        return false;
    char field[kLengthFieldSize];
    if (read(field, kLengthFieldSize) != kLengthFieldSize)
        return false;
    const std::optional<qint32> length = decodeLength(field);
    if (!length) {
        qCDebug(lcLink) << "input of" << serverName() << "dropped from here on, bad frame length"
                        << QByteArray(field, kLengthFieldSize).toHex();
        if (m_transcript)
            m_transcript->event(m_transcriptServer,
                                "bad frame length " + QByteArray(field, kLengthFieldSize).toHex() +
                                    ", all input is dropped from here on");
        m_inputDropped = true;
        skip(bytesAvailable());
        return false;
    }
    m_blockSize = *length;
    return true;
}

void JtagClient::onDataReady()
{
    if (!isOpen())
        return;
    if (m_inputDropped) {
        skip(bytesAvailable());
        return;
    }
    if (m_blockSize == 0 && !readLength())
        return;
    if (bytesAvailable() < m_blockSize)
        return;
    const QByteArray payload = read(std::exchange(m_blockSize, 0));
    const std::optional<CmdPack> pack = decodePayload(payload);
    if (!pack)
        qCDebug(lcLink) << "malformed frame from" << serverName();
    if (m_transcript)
        m_transcript->payloadReceived(m_transcriptServer, payload);
    m_nextFrame.start();
    Q_EMIT cmdReceived(pack.value_or(CmdPack())); // last, a receiver may delete the client
}

} // namespace KEO
