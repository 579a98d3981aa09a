#pragma once

class QLocalSocket;

namespace KEO {

/// Ends the direction to the server; what it sends still arrives. False where local sockets can't
/// do that, and then nothing happens.
bool endOutput(const QLocalSocket &socket);

} // namespace KEO
