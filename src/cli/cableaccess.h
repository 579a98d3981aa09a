#pragma once

#include <base/result.h>
#include <servers/serverlauncher.h>

#include <QString>
#include <QStringList>

namespace KEO {

/// Gets at the cable servers: reaches one that already runs on its name (the desktop program's,
/// say), else starts it. Servers that it started end with it.
class CableAccess final
{
public:
    CableAccess() = default;
    CableAccess(const CableAccess &) = delete;
    CableAccess &operator=(const CableAccess &) = delete;
    ~CableAccess();

    /// Connects the session to the cable of that name, or to the first that answers if the name is
    /// empty, and returns its name. Gives up early when the program is interrupted.
    Result<QString> reach(const QString &cable);
    /// Connects the session to every cable that answers; their names in table order.
    QStringList reachAll();

private:
    enum class Reached { Yes, No, Busy };

    Reached connectTo(const ServerRow &row);

    ServerProcesses m_processes;
};

} // namespace KEO
