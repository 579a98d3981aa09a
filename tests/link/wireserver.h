#pragma once

#include <QByteArray>
#include <QList>
#include <QLocalServer>
#include <QMap>
#include <QString>
#include <QVariant>

class QLocalSocket;

/// Frames by the toolkit's own streaming, which the program's coding is held against.
namespace Wire {
using Packet = QMap<QString, QVariant>;
QByteArray frame(const Packet &packet);
} // namespace Wire

/// The server side of the link for tests: takes one client after the other, keeps the packets that
/// the newest one sent, and writes whatever it is told to.
class WireServer final : public QObject
{
    Q_OBJECT

public:
    explicit WireServer(const QString &name);

    [[nodiscard]] bool hasClient() const { return m_client != nullptr; }
    [[nodiscard]] const QList<Wire::Packet> &packets() const { return m_packets; }
    /// Bytes written but not yet taken by the client.
    [[nodiscard]] qint64 bytesPending() const;

    void write(const QByteArray &bytes);
    void reply(const Wire::Packet &packet) { write(Wire::frame(packet)); }
    /// Ends the connection as a dying server does.
    void drop();

private:
    void accept();
    void readPackets();

    QLocalServer m_server;
    QLocalSocket *m_client = nullptr; // owned by m_server
    QByteArray m_input;
    QList<Wire::Packet> m_packets;
};
