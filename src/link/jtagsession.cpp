#include "jtagsession.h"

#include "jtagclient.h"
#include "socketend.h"
#include "socketowner.h"
#include "transcript.h"

#include <base/logging.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <optional>
#include <utility>

namespace KEO {

namespace {

constexpr int kConnectTime = 5000; // ms
constexpr int kConnectRetries = 64;
constexpr int kRetryPause = 30; // ms
constexpr int kWaitSlice = 50;  // ms

const QString kRequestId = QStringLiteral("request_id");
const QString kDataRequestId = QStringLiteral("data_request_id");

/// The smallest id that no task waits under. The keys ascend, so the first that is not the next
/// number leaves a gap.
template <typename Task>
unsigned int freeId(const QMap<unsigned int, Task> &tasks)
{
    unsigned int id = 0;
    for (auto entry = tasks.cbegin(); entry != tasks.cend(); ++entry, ++id) {
        if (entry.key() != id || !entry.value())
            break;
    }
    return id;
}

template <typename Task>
unsigned int store(QMutex &mutex, QMap<unsigned int, Task> &tasks, Task task)
{
    const QMutexLocker lock(&mutex);
    const unsigned int id = freeId(tasks);
    tasks[id] = std::move(task);
    return id;
}

/// Empties a table. The tasks die after the lock is gone: what they captured may call back.
template <typename Task>
void clear(QMutex &mutex, QMap<unsigned int, Task> &tasks)
{
    QMap<unsigned int, Task> old;
    const QMutexLocker lock(&mutex);
    old.swap(tasks);
}

/// Takes the id out of a reply; nothing if it is no number.
std::optional<unsigned int> takeId(CmdPack &reply, const QString &key)
{
    bool isNumber = false;
    const unsigned int id = reply.take(key).toUInt(&isNumber);
    return isNumber ? std::optional(id) : std::nullopt;
}

} // namespace

JtagSession::JtagSession() = default;
JtagSession::~JtagSession() = default;

JtagSession *JtagSession::instance()
{
    static auto *const session = new JtagSession;
    return session;
}

std::optional<Error> JtagSession::startTranscript(const QString &path)
{
    const auto complain = [this](const QString &text) {
        QMetaObject::invokeMethod(
            this, [text] { qCWarning(lcLink).noquote() << text; }, Qt::QueuedConnection);
    };
    Result<std::shared_ptr<Transcript>> transcript = Transcript::open(path, complain);
    if (!transcript)
        return transcript.error();
    m_transcript = *std::move(transcript);
    qAddPostRoutine([] { instance()->stopTranscript(); });
    return {};
}

void JtagSession::stopTranscript()
{
    if (const auto transcript = std::exchange(m_transcript, nullptr))
        transcript->finish();
}

QList<JtagConnection> JtagSession::connectServers(const QList<JtagConnection> &records)
{
    QList<JtagConnection> failed;
    for (const JtagConnection &record : records) {
        if (!connectServer(record, kConnectTime))
            failed.append(record);
    }
    return failed;
}

bool JtagSession::connectServer(const JtagConnection &record, int msecs,
                                const std::function<bool()> &isGivenUp)
{
    auto client = std::make_unique<JtagClient>(this);
    const auto goesOn = [&] { return !isGivenUp || !isGivenUp(); };
    const auto connectOnce = [&] {
        QElapsedTimer time;
        time.start();
        client->connectToServer(record.serverName, QIODevice::ReadWrite);
        while (client->state() == QLocalSocket::ConnectingState && !time.hasExpired(msecs) &&
               goesOn())
            client->waitForConnected(std::min(kWaitSlice, msecs));
        return client->state() == QLocalSocket::ConnectedState;
    };
    bool connected = connectOnce();
    for (int retry = 0; !connected && retry < kConnectRetries && goesOn(); ++retry) {
        if (client->state() == QLocalSocket::ConnectingState) {
            qCDebug(lcLink) << record.serverName << "takes no more clients";
            break;
        }
        client->abort();
        QThread::msleep(kRetryPause);
        connected = connectOnce();
    }
    if (!connected) {
        qCDebug(lcLink) << "no connection to" << record.serverName << client->errorString();
        return false;
    }
    if (!isServedByOwnUser(*client)) {
        qCDebug(lcLink) << "no connection to" << record.serverName << "which is another user's";
        return false;
    }
    client->writeTo(m_transcript, record.name);
    connect(client.get(), &JtagClient::disconnected, this, &JtagSession::connectionLost);
    m_connections.append(record);
    m_connections.last().client = client.release(); // the session is its parent
    return true;
}

bool JtagSession::hasConnection() const
{
    return !m_connections.isEmpty();
}

bool JtagSession::isCurrentConnected() const
{
    return m_current && m_current->state() == QLocalSocket::ConnectedState;
}

bool JtagSession::isConnected(const QString &name) const
{
    const JtagConnection *connection = find(name);
    return connection && connection->client &&
           connection->client->state() == QLocalSocket::ConnectedState;
}

const JtagConnection *JtagSession::find(const QString &name) const
{
    const auto connection =
        std::find_if(m_connections.cbegin(), m_connections.cend(),
                     [&](const JtagConnection &candidate) { return candidate.name == name; });
    return connection == m_connections.cend() ? nullptr : &*connection;
}

bool JtagSession::selectCable(const QString &name)
{
    const JtagConnection *connection = find(name);
    if (!connection)
        return false;
    if (m_current)
        disconnect(m_current, &JtagClient::cmdReceived, this, &JtagSession::dataReturned);
    m_current = connection->client;
    if (m_current)
        connect(m_current, &JtagClient::cmdReceived, this, &JtagSession::dataReturned);
    return true;
}

void JtagSession::sendCommand(CmdPack pack, JtagTask task)
{
    if (task)
        pack[kRequestId] = store(m_taskMutex, m_tasks, std::move(task));
    send(pack);
}

void JtagSession::awaitReply(JtagTask task)
{
    store(m_taskMutex, m_tasks, std::move(task));
}

JtagDataRequest JtagSession::sendDataCommand(CmdPack pack, JtagDataTask task)
{
    std::shared_ptr<const JtagDataTask> stored;
    if (task) {
        stored = std::make_shared<const JtagDataTask>(std::move(task));
        pack[kDataRequestId] = store(m_dataTaskMutex, m_dataTasks, stored);
    }
    send(pack);
    return stored;
}

void JtagSession::finishData(const JtagDataRequest &request)
{
    // Dies after the lock is gone, see clear.
    const std::shared_ptr<const JtagDataTask> task = request.lock();
    const QMutexLocker lock(&m_dataTaskMutex);
    for (std::shared_ptr<const JtagDataTask> &entry : m_dataTasks) {
        if (task && entry == task)
            entry.reset();
    }
}

void JtagSession::send(const CmdPack &pack)
{
    if (!m_current) {
        qCDebug(lcLink, "packet lost: no cable was selected yet");
        return;
    }
    m_current->sendPack(pack);
}

QList<QPair<QString, int>> JtagSession::availableCables() const
{
    QList<QPair<QString, int>> cables;
    cables.reserve(m_connections.size());
    for (const JtagConnection &connection : m_connections)
        cables.append({connection.name, connection.cable * 2 + connection.channel});
    return cables;
}

void JtagSession::clearTasks()
{
    clear(m_taskMutex, m_tasks);
    clear(m_dataTaskMutex, m_dataTasks);
}

bool JtagSession::endConnection(int msecs, const std::function<bool()> &isGivenUp)
{
    QElapsedTimer time;
    time.start();
    const auto goesOn = [&] {
        return isCurrentConnected() && !time.hasExpired(msecs) && !(isGivenUp && isGivenUp());
    };
    while (goesOn() && m_current->bytesToWrite() > 0)
        m_current->waitForBytesWritten(std::min(kWaitSlice, msecs));
    if (!isCurrentConnected())
        return true;
    if (m_current->bytesToWrite() > 0 || !endOutput(*m_current))
        return false;
    while (goesOn())
        m_current->waitForDisconnected(std::min(kWaitSlice, msecs));
    return !isCurrentConnected();
}

void JtagSession::disconnectAll()
{
    const QList<JtagConnection> connections = std::exchange(m_connections, {});
    for (const JtagConnection &connection : connections)
        connection.client->disconnectFromServer();
    clearTasks();
    m_lateReplies.clear();
}

void JtagSession::dataReturned(CmdPack data)
{
    if (data.contains(kRequestId))
        runTask(std::move(data));
    else if (data.contains(kDataRequestId))
        runDataTask(std::move(data));
    else
        qCDebug(lcLink) << "packet without an id dropped," << data.size() << "keys";
}

void JtagSession::noteDropped(int LateReplies::*kind)
{
    LateReplies late = lateReplies();
    late.*kind = std::max(late.*kind - 1, 0);
    setLateReplies(late);
}

// In both, an id that is not in the table stays out of it: a server must not be able to fill it.

void JtagSession::runTask(CmdPack reply)
{
    const std::optional<unsigned int> id = takeId(reply, kRequestId);
    JtagTask task;
    {
        const QMutexLocker lock(&m_taskMutex);
        const auto entry = id ? m_tasks.find(*id) : m_tasks.end();
        if (entry != m_tasks.end())
            task = std::exchange(entry.value(), {});
    }
    if (!task) {
        qCDebug(lcLink, "reply dropped: no task waits for it");
        noteDropped(&LateReplies::commands);
        return;
    }
    task(reply);
}

void JtagSession::runDataTask(CmdPack reply)
{
    const std::optional<unsigned int> id = takeId(reply, kDataRequestId);
    std::shared_ptr<const JtagDataTask> task;
    {
        const QMutexLocker lock(&m_dataTaskMutex);
        task = id ? m_dataTasks.value(*id) : nullptr;
    }
    if (!task) {
        qCDebug(lcLink, "data reply dropped: no task waits for it");
        noteDropped(&LateReplies::data);
        return;
    }
    bool done = false;
    (*task)(reply, &done);
    if (!done)
        return;
    const QMutexLocker lock(&m_dataTaskMutex);
    const auto entry = m_dataTasks.find(*id);
    // The task may have cleared the table, and another one may wait under the same id by now.
    if (entry != m_dataTasks.end() && entry.value() == task)
        entry.value().reset();
}

} // namespace KEO
