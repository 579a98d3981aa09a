#include "server.h"

#include "packet.h"
#include "replychannel.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>

#include <algorithm>
#include <cstdlib>

namespace Sim {

namespace {

constexpr int kTickMs = 10;
constexpr int kProbeMs = 500;
constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;
constexpr qint64 kLongestTickNs = kNanosecondsPerSecond / 4; // after the process was stopped
constexpr qint64 kMaxUnsent = 256 * 1024 * 1024;

} // namespace

/// One client: cuts its bytes into packets and hands them to the server in order.
class Connection final : public QObject
{
    Q_OBJECT

public:
    Connection(Server *server, QLocalSocket *socket, int number)
        : m_server(server),
          m_socket(socket),
          m_number(number),
          m_replies(socket),
          m_replay(server->m_replay)
    {
        socket->setParent(this);
        connect(socket, &QLocalSocket::readyRead, this, &Connection::drain);
        connect(socket, &QLocalSocket::disconnected, this, [this] { m_server->drop(this); });
    }

    [[nodiscard]] int number() const { return m_number; }
    ReplyChannel &replies() { return m_replies; }
    /// What answers it in place of the cable.
    std::optional<Replay> &replay() { return m_replay; }

    void silence()
    {
        m_isSilent = true;
        m_replies.silence();
    }

    void drain()
    {
        if (m_isSilent)
            return;
        m_decoder.feed(m_socket->readAll());
        while (!m_isSilent) {
            const auto frame = m_decoder.take();
            if (!frame)
                break;
            if (frame->flaw.isEmpty())
                m_server->handle(*this, frame->packet);
            else
                m_server->m_log->complain(
                    QStringLiteral("a frame can't be read: %1").arg(frame->flaw));
        }
        if (!m_decoder.broken().isEmpty())
            abandon(m_decoder.broken());
        else if (m_socket->bytesToWrite() > kMaxUnsent)
            abandon(QStringLiteral("the client takes no replies"));
    }

    void abandon(const QString &why)
    {
        if (m_isSilent)
            return;
        m_server->m_log->complain(
            QStringLiteral("client %1 is cut off: %2").arg(m_number).arg(why));
        silence();
        // The signal that follows ends in drop(), which deletes this later.
        m_socket->abort();
    }

private:
    Server *m_server;       // borrowed, outlives this
    QLocalSocket *m_socket; // owned by the object tree
    int m_number = 0;
    FrameDecoder m_decoder;
    ReplyChannel m_replies;
    std::optional<Replay> m_replay;
    bool m_isSilent = false;
};

Server::Server(std::unique_ptr<Cable> cable, QList<Fault> faults, qint64 samplesPerSecond,
               ChainStateFile chainState, Logbook *log, QObject *parent)
    : QObject(parent),
      m_cable(std::move(cable)),
      m_faults(std::move(faults)),
      m_samplesPerSecond(samplesPerSecond),
      m_chainState(std::move(chainState)),
      m_log(log)
{
    m_tick->setInterval(kTickMs);
    connect(m_tick, &QTimer::timeout, this, &Server::sample);
    connect(m_server, &QLocalServer::newConnection, this, &Server::acceptClients);
}

Server::~Server()
{
    if (m_server->isListening())
        m_chainState.clear();
}

QString Server::listen(const QString &name)
{
    QLocalSocket probe;
    probe.connectToServer(name);
    if (probe.waitForConnected(kProbeMs))
        return QStringLiteral("another server is alive on the socket \"%1\"").arg(name);
    const bool isRefused = probe.error() == QLocalSocket::ConnectionRefusedError;
    if (!isRefused && probe.error() != QLocalSocket::ServerNotFoundError)
        return QStringLiteral("the socket \"%1\" is in use: %2").arg(name, probe.errorString());
    // Where sockets are files, anything else in their place is somebody's own.
    if (QFileInfo(QDir(QDir::tempPath()).filePath(name)).isFile())
        return QStringLiteral("a file stands where the socket \"%1\" belongs").arg(name);
    if (isRefused)
        QLocalServer::removeServer(name);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (m_server->listen(name))
        return m_chainState.clear() ? QString()
                                    : QStringLiteral("%1 can't be removed, and tells of an "
                                                     "earlier power-on")
                                          .arg(m_chainState.path());
    return QStringLiteral("the socket \"%1\" can't be opened: %2")
        .arg(name, m_server->errorString());
}

void Server::acceptClients()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        m_connections.push_back(std::make_unique<Connection>(this, socket, ++m_lastClient));
        m_log->note(QStringLiteral("client %1 connects").arg(m_lastClient));
        if (m_isHung)
            m_connections.back()->silence();
        else
            m_connections.back()->drain(); // bytes that came before the signal was connected
    }
}

void Server::drop(Connection *connection)
{
    const auto at =
        std::find_if(m_connections.begin(), m_connections.end(),
                     [connection](const auto &held) { return held.get() == connection; });
    if (at == m_connections.end())
        return;
    m_log->note(QStringLiteral("client %1 leaves").arg(connection->number()));
    m_cable->clientLeft(connection->number());
    connection->silence();
    at->release()->deleteLater(); // one of its own functions may be running
    m_connections.erase(at);
}

void Server::handle(Connection &connection, const Packet &packet)
{
    if (connection.replay())
        return answerFrom(*connection.replay(), connection, packet);
    sample(); // what a core holds is a matter of when it is asked
    const QString operation = operationOf(packet);
    notePacket(connection, QStringLiteral(">"), packet);

    std::optional<int> forcedResult;
    std::optional<Fault> delivery;
    for (const Fault &fault : m_faults.due(operation)) {
        m_log->note(QStringLiteral("fault: %1").arg(fault.name));
        switch (fault.kind) {
        case Fault::Kind::Die:
            std::_Exit(fault.value);
        case Fault::Kind::Hang:
            return hang();
        case Fault::Kind::Garbage:
            connection.replies().send(fault.bytes);
            break;
        case Fault::Kind::Result:
            forcedResult = fault.value;
            break;
        default:
            if (!delivery)
                delivery = fault;
        }
    }

    if (operation == QStringLiteral("OPEN"))
        m_cable->follow(m_chainState.read());
    const auto reply = m_cable->handle(connection.number(), packet, forcedResult);
    if (m_cable->isArmed() && !m_tick->isActive()) {
        m_sampledAt.start();
        m_nanosecondsLeft = 0;
        m_tick->start();
    }
    if (!reply)
        return;
    notePacket(connection, QStringLiteral("<"), *reply);
    if (delivery)
        connection.replies().sendWith(*delivery, encodeFrame(*reply));
    else
        connection.replies().send(encodeFrame(*reply));
}

void Server::answerFrom(Replay &replay, Connection &connection, const Packet &packet)
{
    notePacket(connection, QStringLiteral(">"), packet);
    const Replay::Answer answer = replay.take(packet);
    if (!answer.told.isEmpty())
        m_log->complain(answer.told);
    if (answer.isRefused)
        return connection.abandon(QStringLiteral("the transcript tells no answer"));
    if (!answer.frames.isEmpty())
        connection.replies().send(answer.frames);
}

void Server::notePacket(const Connection &connection, const QString &way, const Packet &packet)
{
    if (m_log->hasFile()) // the line is costly
        m_log->note(QStringLiteral("%1 %2 ").arg(connection.number()).arg(way) + describe(packet));
}

void Server::sample()
{
    if (!m_tick->isActive())
        return;
    const qint64 elapsed = std::min(m_sampledAt.nsecsElapsed(), kLongestTickNs);
    m_sampledAt.start();
    // At most 1e9 samples a second for a quarter of a second: the product stays below 2^63.
    const qint64 scaled = elapsed * m_samplesPerSecond + m_nanosecondsLeft;
    m_nanosecondsLeft = scaled % kNanosecondsPerSecond;
    m_cable->advance(scaled / kNanosecondsPerSecond);
    if (!m_cable->isArmed())
        m_tick->stop();
}

void Server::hang()
{
    m_isHung = true;
    m_tick->stop();
    for (const auto &connection : m_connections)
        connection->silence();
}

} // namespace Sim

#include "server.moc"
