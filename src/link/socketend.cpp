#include "socketend.h"

#include <QLocalSocket>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#endif

namespace KEO {

bool endOutput([[maybe_unused]] const QLocalSocket &socket)
{
#ifdef Q_OS_UNIX
    return shutdown(int(socket.socketDescriptor()), SHUT_WR) == 0;
#else
    return false;
#endif
}

} // namespace KEO
