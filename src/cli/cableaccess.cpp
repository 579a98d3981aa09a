#include "cableaccess.h"

#include <link/jtagsession.h>

#include <QCoreApplication>
#include <QLocalSocket>

namespace KEO {

namespace {

constexpr int kConnectTime = 5000;

// A name that nobody listens on is refused at once, so this waits only for a busy server.
bool isListening(const QString &serverName)
{
    QLocalSocket probe;
    probe.connectToServer(serverName);
    return probe.waitForConnected(kConnectTime);
}

} // namespace

CableAccess::~CableAccess()
{
    killServers(m_processes);
}

bool CableAccess::connectTo(const ServerRow &row)
{
    const JtagConnection &connection = row.connection;
    if (!isListening(connection.serverName) &&
        launchServers(m_processes, siblingDirectory(), {row}).isEmpty())
        return false;
    if (JtagSession::instance()->connectServer(connection, kConnectTime))
        return true;
    stopServer(m_processes, connection.name);
    return false;
}

Result<QString> CableAccess::reach(const QString &cable)
{
    QStringList known;
    for (const ServerRow &row : serverTable()) {
        const QString &name = row.connection.name;
        known.append(name);
        if ((cable.isEmpty() || cable == name) && connectTo(row))
            return name;
    }
    if (!cable.isEmpty() && !known.contains(cable))
        return Error{Error::Usage, QCoreApplication::translate(
                                       "CableAccess", "No cable is called \"%1\"; there are: %2.")
                                       .arg(cable, known.join(QStringLiteral(", ")))};
    return Error{Error::Link,
                 QCoreApplication::translate("CableAccess",
                                             "The cable server can not be started or reached.")};
}

QStringList CableAccess::reachAll()
{
    QStringList reached;
    for (const ServerRow &row : serverTable()) {
        if (connectTo(row))
            reached.append(row.connection.name);
    }
    return reached;
}

} // namespace KEO
