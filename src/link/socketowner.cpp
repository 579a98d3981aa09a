#include "socketowner.h"

#include <QLocalSocket>

#ifdef Q_OS_LINUX
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace KEO {

bool isServedByOwnUser([[maybe_unused]] const QLocalSocket &socket)
{
#ifdef Q_OS_LINUX
    constexpr uid_t kAdministrator = 0;
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return false;
    return peer.uid == geteuid() || peer.uid == kAdministrator;
#else
    return true;
#endif
}

} // namespace KEO
