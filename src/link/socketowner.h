#pragma once

class QLocalSocket;

namespace KEO {

/// Does the program at the other end of a connected socket run as this user, or as the system's
/// administrator? Sockets lie in a folder that all users share, and whoever comes first has the
/// name. True where the system can't tell, and on Windows, where the toolkit's sockets are made for
/// one user.
[[nodiscard]] bool isServedByOwnUser(const QLocalSocket &socket);

} // namespace KEO
