#pragma once

#include <base/siblingprogram.h>
#include <link/jtagsession.h>

#include <QList>
#include <QProcess>
#include <QString>

#include <functional>
#include <map>
#include <memory>

namespace KEO {

/// A cable server as the program knows it before it runs.
struct ServerRow
{
    QString executable; ///< file name without directory and without the platform's suffix
    JtagConnection connection;
};

/// The running servers by cable name. A process enters only after it has started.
using ServerProcesses = std::map<QString, std::unique_ptr<QProcess>>;

/// All cable servers, in the order in which they start and in which users see their cables.
[[nodiscard]] QList<ServerRow> serverTable();

/// What a server says on standard error stands in this program's own, or nowhere.
enum class ServerErrors { Forwarded, Discarded };

/// Starts the servers of \a rows from \a directory one after the other, waiting up to 5000 ms for
/// each, and returns the records of those that started, without a client, in the same order. A
/// server that does not start is left out, its reason in the debug log. \a processes must not hold
/// any of the cables yet.
///
/// A server's standard input stays an open pipe, whose end tells it that this program is gone; its
/// standard output is discarded.
[[nodiscard]] QList<JtagConnection> launchServers(ServerProcesses &processes,
                                                  const QString &directory = siblingDirectory(),
                                                  const QList<ServerRow> &rows = serverTable(),
                                                  ServerErrors errors = ServerErrors::Forwarded);

/// Takes the server of \a cable out of \a processes, kills it and waits up to 3000 ms for its end.
void stopServer(ServerProcesses &processes, const QString &cable);

/// The same for all servers.
void killServers(ServerProcesses &processes);

/// Ends all servers, and each gets the chance to do so itself: first their input ends, half a
/// second later they are asked to terminate, and after as much time again, or once \a isGivenUp
/// says so, they are killed.
void endServers(ServerProcesses &processes, const std::function<bool()> &isGivenUp);

} // namespace KEO
