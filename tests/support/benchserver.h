#pragma once

#include <link/jtagsession.h>
#include <servers/serverlauncher.h>

/// Starts the simulated server of the first cable and connects the session to it. The board file is
/// that of the environment.
inline void startBenchServer(KEO::ServerProcesses &processes)
{
    auto rows =
        KEO::launchServers(processes, QStringLiteral(KEO_BURNER_DIR), KEO::serverTable().mid(0, 1));
    // On a busy machine a server takes longer to start than the program waits for it.
    for (int attempt = 0; attempt < 10 && !rows.isEmpty(); ++attempt)
        rows = KEO::JtagSession::instance()->connectServers(rows);
    if (!rows.isEmpty())
        qFatal("the server does not answer");
}

/// A server that runs as long as this lives, and begins its stimulus anew.
struct BenchServer
{
    BenchServer() { startBenchServer(servers); }
    ~BenchServer()
    {
        KEO::JtagSession::instance()->disconnectAll();
        KEO::killServers(servers);
    }
    KEO::ServerProcesses servers;
};
