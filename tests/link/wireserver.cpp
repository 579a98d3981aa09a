#include "wireserver.h"

#include <QDataStream>
#include <QLocalSocket>
#include <QtEndian>

namespace Wire {

QByteArray frame(const Packet &packet)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_8);
    stream << qint32(0) << packet;
    stream.device()->seek(0);
    stream << qint32(bytes.size() - 4);
    return bytes;
}

} // namespace Wire

WireServer::WireServer(const QString &name)
{
    connect(&m_server, &QLocalServer::newConnection, this, &WireServer::accept);
    if (!m_server.listen(name))
        qWarning("the test's server cannot listen");
}

void WireServer::accept()
{
    m_client = m_server.nextPendingConnection();
    m_input.clear();
    connect(m_client, &QLocalSocket::readyRead, this, &WireServer::readPackets);
}

void WireServer::readPackets()
{
    m_input += m_client->readAll();
    while (m_input.size() >= 4) {
        const auto size = qFromBigEndian<qint32>(m_input.constData());
        if (m_input.size() < 4 + size)
            return;
        QDataStream stream(m_input.mid(4, size));
        stream.setVersion(QDataStream::Qt_4_8);
        Wire::Packet packet;
        stream >> packet;
        m_packets.append(packet);
        m_input.remove(0, 4 + size);
    }
}

qint64 WireServer::bytesPending() const
{
    return m_client ? m_client->bytesToWrite() : 0;
}

void WireServer::write(const QByteArray &bytes)
{
    m_client->write(bytes);
    m_client->flush();
}

void WireServer::drop()
{
    m_client->disconnectFromServer();
}
