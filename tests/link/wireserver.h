#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QList>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMap>
#include <QString>
#include <QVariant>
#include <QtEndian>

#include <functional>
#include <optional>

/// Frames by the toolkit's own streaming, which the program's and the simulator's coding are held
/// against.
namespace Wire {

using Packet = QMap<QString, QVariant>;

inline QByteArray frame(const Packet &packet)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_8);
    stream << qint32(0) << packet;
    stream.device()->seek(0);
    stream << qint32(bytes.size() - 4);
    return bytes;
}

/// Takes the first frame out of \a input, once it is whole.
inline std::optional<Packet> take(QByteArray &input)
{
    const qint32 size = input.size() < 4 ? 0 : qFromBigEndian<qint32>(input.constData());
    if (input.size() < 4 + size)
        return std::nullopt;
    QDataStream stream(input.mid(4, size));
    stream.setVersion(QDataStream::Qt_4_8);
    Packet packet;
    stream >> packet;
    input.remove(0, 4 + size);
    return packet;
}

} // namespace Wire

/// The server side of the link for tests: takes one client after the other, hands on the packets
/// that come, and writes whatever it is told to.
class WireServer final
{
public:
    explicit WireServer(const QString &name)
    {
        QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] {
            m_client = m_server.nextPendingConnection();
            m_input.clear();
            QObject::connect(m_client, &QLocalSocket::readyRead, &m_server, [this] {
                m_input += m_client->readAll();
                while (const auto packet = Wire::take(m_input)) {
                    packets.append(*packet);
                    if (onPacket)
                        onPacket(*packet);
                }
            });
        });
        if (!m_server.listen(name))
            qWarning("the test's server cannot listen");
    }

    QString name() const { return m_server.serverName(); }
    bool hasClient() const { return m_client != nullptr; }
    /// Bytes written but not yet taken by the client.
    qint64 bytesPending() const { return m_client ? m_client->bytesToWrite() : 0; }

    void write(const QByteArray &bytes)
    {
        m_client->write(bytes);
        m_client->flush();
    }
    void reply(const Wire::Packet &packet) { write(Wire::frame(packet)); }
    /// Ends the connection as a dying server does.
    void drop() { m_client->disconnectFromServer(); }

    QList<Wire::Packet> packets; ///< every one so far
    std::function<void(const Wire::Packet &)> onPacket;

private:
    QLocalServer m_server;
    QLocalSocket *m_client = nullptr; // owned by m_server
    QByteArray m_input;
};
