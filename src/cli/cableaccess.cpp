#include "cableaccess.h"

#include "interruption.h"

#include <link/jtagsession.h>
#include <link/socketowner.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLocalSocket>

namespace KEO {

namespace {

constexpr int kConnectTime = 5000; // ms
constexpr int kWaitSlice = 50;     // ms

enum class Socket { Answers, NobodyListens, TakesNoMore, IsForeign };

bool isInterrupted()
{
    return Interruption::pending().has_value();
}

// A name that nobody listens on is refused at once, so this waits only for a server that leaves
// other programs waiting as well.
Socket probe(const QString &serverName)
{
    QLocalSocket socket;
    QElapsedTimer time;
    time.start();
    socket.connectToServer(serverName);
    while (socket.state() == QLocalSocket::ConnectingState && !time.hasExpired(kConnectTime) &&
           !isInterrupted())
        socket.waitForConnected(kWaitSlice);
    if (socket.state() == QLocalSocket::ConnectedState)
        return isServedByOwnUser(socket) ? Socket::Answers : Socket::IsForeign;
    if (socket.error() == QLocalSocket::SocketAccessError)
        return Socket::IsForeign;
    return socket.state() == QLocalSocket::ConnectingState ? Socket::TakesNoMore
                                                           : Socket::NobodyListens;
}

} // namespace

CableAccess::CableAccess(const CaptureOptions &options)
    : m_errors(options.quiet ? ServerErrors::Discarded : ServerErrors::Forwarded),
      m_startsServers(!options.usesRunningServers)
{
}

CableAccess::~CableAccess()
{
    endServers([] { return false; });
}

void CableAccess::endServers(const std::function<bool()> &isGivenUp)
{
    KEO::endServers(m_processes, isGivenUp);
}

CableAccess::Reached CableAccess::connectTo(const ServerRow &row)
{
    const JtagConnection &connection = row.connection;
    const Socket socket = probe(connection.serverName);
    if (socket == Socket::TakesNoMore || isInterrupted())
        return Reached::Busy;
    if (socket == Socket::IsForeign)
        return Reached::Foreign;
    if (socket == Socket::NobodyListens) {
        if (!m_startsServers)
            return Reached::No;
        const Interruption::ChildShield shield;
        if (launchServers(m_processes, siblingDirectory(), {row}, m_errors).isEmpty())
            return Reached::No;
    }
    if (JtagSession::instance()->connectServer(connection, kConnectTime, isInterrupted))
        return Reached::Yes;
    stopServer(m_processes, connection.name);
    return Reached::No;
}

Result<QString> CableAccess::reach(const QString &cable)
{
    QStringList known;
    QStringList busy;
    QStringList foreign;
    for (const ServerRow &row : serverTable()) {
        const QString &name = row.connection.name;
        known.append(name);
        if (!cable.isEmpty() && cable != name)
            continue;
        const Reached reached = connectTo(row);
        if (reached == Reached::Yes)
            return name;
        if (reached == Reached::Busy)
            busy.append(name);
        else if (reached == Reached::Foreign)
            foreign.append(name);
    }
    if (!cable.isEmpty() && !known.contains(cable))
        return Error{Error::Usage, QCoreApplication::translate(
                                       "CableAccess", "No cable is called \"%1\"; there are: %2.")
                                       .arg(cable, known.join(QStringLiteral(", ")))};
    if (!busy.isEmpty())
        return Error{Error::Link, QCoreApplication::translate(
                                      "CableAccess", "The cable server of %1 is busy with other "
                                                     "programs and takes no more.")
                                      .arg(busy.join(QStringLiteral(", ")))};
    if (!foreign.isEmpty())
        return Error{Error::Link, QCoreApplication::translate(
                                      "CableAccess", "The cable server of %1 is another user's; "
                                                     "name a folder of your own in TMPDIR.")
                                      .arg(foreign.join(QStringLiteral(", ")))};
    if (!m_startsServers)
        return Error{Error::Link, QCoreApplication::translate(
                                      "CableAccess", "No cable server answers in the folder %1.")
                                      .arg(QDir::tempPath())};
    return Error{Error::Link,
                 QCoreApplication::translate("CableAccess",
                                             "The cable server can not be started or reached.")};
}

QStringList CableAccess::reachAll()
{
    QStringList reached;
    for (const ServerRow &row : serverTable()) {
        if (connectTo(row) == Reached::Yes)
            reached.append(row.connection.name);
    }
    return reached;
}

} // namespace KEO
