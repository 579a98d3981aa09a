#pragma once

#include "captureoptions.h"

#include <base/result.h>
#include <servers/serverlauncher.h>

#include <QString>
#include <QStringList>

#include <functional>

namespace KEO {

/// Gets at the cable servers: reaches one that already runs on its name (the desktop program's,
/// say), else starts it, unless the options forbid it. Servers that it started end with it at the
/// latest.
class CableAccess final
{
public:
    /// A quiet program starts quiet servers.
    explicit CableAccess(const CaptureOptions &options);
    CableAccess(const CableAccess &) = delete;
    CableAccess &operator=(const CableAccess &) = delete;
    ~CableAccess();

    /// Connects the session to the cable of that name, or to the first that answers if the name is
    /// empty, and returns its name. Gives up early when the program is interrupted.
    Result<QString> reach(const QString &cable);
    /// Connects the session to every cable that answers; their names in table order.
    QStringList reachAll();
    /// Ends the servers that it started, in good order; see KEO::endServers.
    void endServers(const std::function<bool()> &isGivenUp);

private:
    enum class Reached { Yes, No, Busy, Foreign };

    Reached connectTo(const ServerRow &row);

    ServerErrors m_errors;
    bool m_startsServers;
    ServerProcesses m_processes;
};

} // namespace KEO
