#include "serverlauncher.h"

#include <base/logging.h>
#include <base/siblingprogram.h>

#include <QElapsedTimer>
#include <QProcess>

namespace KEO {

namespace {

constexpr int kStartTime = 5000; // ms
constexpr int kEndTime = 3000;   // ms
constexpr int kLeaveTime = 500;  // ms for a server to end by itself
constexpr int kWaitSlice = 50;   // ms

std::unique_ptr<QProcess> startServer(const QString &path, ServerErrors errors)
{
    auto process = std::make_unique<QProcess>();
    // Nobody reads what a server prints, so it must not gather in memory.
    process->setStandardOutputFile(QProcess::nullDevice());
    if (errors == ServerErrors::Forwarded)
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    else
        process->setStandardErrorFile(QProcess::nullDevice());
    process->start(path, {QStringLiteral("-local")}, QIODevice::ReadWrite);
    if (process->waitForStarted(kStartTime))
        return process;
    qCDebug(lcServers) << "server not started:" << path << process->errorString();
    return nullptr;
}

/// Waits until all have ended, for the time that servers get to do so, or until it is given up.
void awaitEnd(const ServerProcesses &processes, const std::function<bool()> &isGivenUp)
{
    QElapsedTimer time;
    time.start();
    for (const auto &[cable, process] : processes) {
        while (process->state() != QProcess::NotRunning && !time.hasExpired(kLeaveTime) &&
               !isGivenUp())
            process->waitForFinished(kWaitSlice);
    }
}

} // namespace

QList<ServerRow> serverTable()
{
    return {
        {QStringLiteral("chainserver"),
         {QStringLiteral("Tarno USB Cable(FT2CH)"), QStringLiteral("keo1"), 36545, 1, 0}},
        {QStringLiteral("chainserver_lpt"),
         {QStringLiteral("Parallel Port(LPT)"), QStringLiteral("keo"), 36546, 2, 0}},
        {QStringLiteral("chainserver_lk7"),
         {QStringLiteral("LK7"), QStringLiteral("keolk7"), 36547, 0, 0}},
    };
}

QList<JtagConnection> launchServers(ServerProcesses &processes, const QString &directory,
                                    const QList<ServerRow> &rows, ServerErrors errors)
{
    QList<JtagConnection> started;
    for (const ServerRow &row : rows) {
        Q_ASSERT(!processes.contains(row.connection.name));
        std::unique_ptr<QProcess> process =
            startServer(programPath(directory, row.executable), errors);
        if (!process)
            continue;
        processes.emplace(row.connection.name, std::move(process));
        started.append(row.connection);
    }
    return started;
}

void stopServer(ServerProcesses &processes, const QString &cable)
{
    const auto entry = processes.find(cable);
    if (entry == processes.end())
        return;
    entry->second->kill();
    entry->second->waitForFinished(kEndTime);
    processes.erase(entry);
}

void killServers(ServerProcesses &processes)
{
    for (const auto &[cable, process] : processes)
        process->kill();
    while (!processes.empty())
        stopServer(processes, processes.begin()->first);
}

void endServers(ServerProcesses &processes, const std::function<bool()> &isGivenUp)
{
    for (const auto &[cable, process] : processes)
        process->closeWriteChannel();
    awaitEnd(processes, isGivenUp);
    for (const auto &[cable, process] : processes)
        process->terminate();
    awaitEnd(processes, isGivenUp);
    killServers(processes);
}

} // namespace KEO
