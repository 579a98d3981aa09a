#include "jtagclient.h"

#include "packetcodec.h"

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
    write(*frame);
    flush();
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
    const std::optional<CmdPack> pack = decodePayload(read(std::exchange(m_blockSize, 0)));
    if (!pack)
        qCDebug(lcLink) << "malformed frame from" << serverName();
    m_nextFrame.start();
    Q_EMIT cmdReceived(pack.value_or(CmdPack())); // last, a receiver may delete the client
}

} // namespace KEO
