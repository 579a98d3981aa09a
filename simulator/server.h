#pragma once

#include "boardfile.h"
#include "cable.h"
#include "chainstate.h"
#include "faultplan.h"
#include "logbook.h"
#include "replay.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class QLocalSocket;

namespace Sim {

class Connection;

/// One cable server: a local socket in front of a Cable, the faults of the board file between them,
/// and the clock that lets the armed cores sample. Lives on the main thread.
class Server final : public QObject
{
    Q_OBJECT

public:
    Server(std::unique_ptr<Cable> cable, QList<Fault> faults, qint64 samplesPerSecond,
           ChainStateFile chainState, Logbook *log, QObject *parent = nullptr);
    ~Server() override;

    /// Answers each client from \a replay, from its start on, and no more from the cable.
    void play(const Replay &replay) { m_replay = replay; }
    /// Serves clients of this user under \a name, and switches the board's power on. The place of a
    /// server that died is taken; when one lives there, or on any other obstacle, the result is the
    /// error's text.
    QString listen(const QString &name);

private:
    friend class Connection;

    void acceptClients();
    void drop(Connection *connection);
    void handle(Connection &connection, const Packet &packet);
    void answerFrom(Replay &replay, Connection &connection, const Packet &packet);
    void notePacket(const Connection &connection, const QString &way, const Packet &packet);
    void sample();
    void hang();

    std::unique_ptr<Cable> m_cable;
    std::optional<Replay> m_replay; ///< as it begins
    FaultPlan m_faults;
    qint64 m_samplesPerSecond = 0;
    ChainStateFile m_chainState;                     ///< what a programmer leaves
    Logbook *m_log;                                  // borrowed
    QLocalServer *m_server = new QLocalServer(this); // owned by the object tree
    QTimer *m_tick = new QTimer(this); // owned by the object tree; runs while a core is armed
    QElapsedTimer m_sampledAt;
    qint64 m_nanosecondsLeft = 0; ///< of the time that made no whole sample
    std::vector<std::unique_ptr<Connection>> m_connections;
    int m_lastClient = 0;
    bool m_isHung = false;
};

} // namespace Sim
