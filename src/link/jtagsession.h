#pragma once

#include "cmdpack.h"

#include <base/result.h>

#include <QHash>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QPair>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace KEO {

class JtagClient;
class Transcript;

/// One cable server. Copied by value; the order of a list of these is the order of the cables.
struct JtagConnection
{
    QString name;                 ///< cable name, shown to the user
    QString serverName;           ///< local socket name
    int port = 0;                 ///< carried, not used
    int cable = 0;                ///< cable number of the programmer tool
    int channel = 0;              ///< channel of the programmer tool
    JtagClient *client = nullptr; ///< null until connected; the session owns it
};

/// Takes the one reply to a command.
using JtagTask = std::function<void(const CmdPack &)>;
/// Takes replies until it sets `*done`.
using JtagDataTask = std::function<void(const CmdPack &, bool *done)>;
/// A data request that was sent, for as long as its task waits.
using JtagDataRequest = std::weak_ptr<const JtagDataTask>;

/// Replies that a server may still send to requests that were forgotten. They come before the
/// replies to all later requests, since a server answers in order.
struct LateReplies
{
    bool areAwaited = false; ///< until somebody knows better; the counts are less sure
    int commands = 0;        ///< to commands, at most
    int data = 0;            ///< to data requests, at most
};

/// The connections to all cable servers that answered, the current one among them, and the tasks
/// that wait for replies. GUI thread; only connecting blocks. There is no time-out on a reply: a
/// task waits until the reply, clearTasks or disconnectAll. Replies that no task waits for, replies
/// of a cable that is not current, and packets sent without a connection are dropped with a line in
/// the debug log. A task may call anything of the session: no lock is held while it runs.
class JtagSession final : public QObject
{
    Q_OBJECT

public:
    /// The process-wide session, made on first use and never deleted.
    static JtagSession *instance();

    /// Writes each packet of the connections made from now on to a file, docs/link-protocol.md has
    /// its form, until stopTranscript or the end of the application object; or tells why the file
    /// can't be written. A file that later takes no more ends the writing with a warning.
    [[nodiscard]] std::optional<Error> startTranscript(const QString &path);
    /// Completes the file, if one is written.
    void stopTranscript();
    /// Tries each record with connectServer(record, 5000), in order; returns the ones that failed.
    QList<JtagConnection> connectServers(const QList<JtagConnection> &records);
    /// Up to 65 attempts of \a msecs each, 30 ms apart: about 2 s for a name that nobody answers
    /// on. An attempt that runs out of time is the last one: somebody listens, but has let so many
    /// clients wait that there is no room for one more. Ends early, without a connection, once
    /// \a isGivenUp says so; it is asked every 50 ms. A connection is appended to the list; the
    /// server's later death does not take it out again.
    bool connectServer(const JtagConnection &record, int msecs,
                       const std::function<bool()> &isGivenUp = {});
    [[nodiscard]] bool hasConnection() const;
    /// A cable is selected and its server still holds the connection. Nothing in the session acts
    /// on a server that went away; a program that runs unattended may want to.
    [[nodiscard]] bool isCurrentConnected() const;
    /// The server of that cable still holds its connection; false for a name that is not listed.
    [[nodiscard]] bool isConnected(const QString &name) const;
    /// Makes the first connection of that name current; false, and no change, if there is none.
    bool selectCable(const QString &name);
    /// Sends \a pack to the current cable (nowhere if none is selected). With a task, the packet
    /// carries a "request_id", the smallest that is free, and the reply runs the task once.
    void sendCommand(CmdPack pack, JtagTask task = {});
    /// Lets \a task take one more reply under the smallest free id, without sending anything: the
    /// reply that came was to an earlier command.
    void awaitReply(JtagTask task);
    /// The same as sendCommand with "data_request_id" and the table of data requests, whose ids
    /// count apart. The id stays taken until the task says that it is done, or finishData says so.
    /// selectCable must have succeeded before.
    JtagDataRequest sendDataCommand(CmdPack pack, JtagDataTask task);
    /// Forgets the task of \a request, if it still waits, and frees its id.
    void finishData(const JtagDataRequest &request);
    /// Cable name and `cable * 2 + channel` of each connection.
    [[nodiscard]] QList<QPair<QString, int>> availableCables() const;
    /// Forgets all tasks; replies still on their way are dropped, or meet a later task that waits
    /// under the same id.
    void clearTasks();
    /// What the current cable's server still owes. Noted here, where it outlives the run that has
    /// forgotten its requests. The session counts down the replies that no task waits for, and
    /// leaves it to the tasks to tell which of the others are late.
    [[nodiscard]] LateReplies lateReplies() const { return m_lateReplies.value(m_current); }
    void setLateReplies(LateReplies late) { m_lateReplies[m_current] = late; }
    /// Tells the current server that no more packets come and waits, up to \a msecs, until it has
    /// taken all that were sent: it shows so by ending the connection in turn. True if it did, or
    /// is gone anyway; without such an end of one direction (there is none for named pipes) the
    /// packets have left, and that is all. Blocks; no task runs meanwhile. \a isGivenUp is asked
    /// every 50 ms.
    bool endConnection(int msecs, const std::function<bool()> &isGivenUp = {});
    /// Drops all connections and tasks. The clients, idle from now on, stay children of the
    /// session.
    void disconnectAll();

Q_SIGNALS:
    /// A server has ended its connection.
    void connectionLost();

public Q_SLOTS:
    /// Runs the task that waits for \a data; a packet with both ids counts as a "request_id" reply.
    /// The task gets the packet without the id it was found by.
    void dataReturned(CmdPack data);

private:
    JtagSession();
    ~JtagSession() override;

    /// Null if there is no connection of that name.
    [[nodiscard]] const JtagConnection *find(const QString &name) const;

    void send(const CmdPack &pack);
    void noteDropped(int LateReplies::*kind);
    void runTask(CmdPack reply);
    void runDataTask(CmdPack reply);

    // The mutexes guard the tables, are never held together and never while a task runs or is
    // destroyed. An entry without a task marks a free id.
    QMutex m_taskMutex;
    QMutex m_dataTaskMutex;
    QMap<unsigned int, JtagTask> m_tasks;
    QMap<unsigned int, std::shared_ptr<const JtagDataTask>> m_dataTasks;
    JtagClient *m_current = nullptr; // borrowed, a child of the session like all clients
    QHash<const JtagClient *, LateReplies> m_lateReplies;
    QList<JtagConnection> m_connections;
    std::shared_ptr<Transcript> m_transcript; ///< null without one; the clients share it
};

} // namespace KEO
