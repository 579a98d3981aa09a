#pragma once

#include "outcome.h"
#include "packet.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

namespace Sim {

/// A line of a transcript that tells what passed a connection.
struct TranscriptLine
{
    enum class Kind { ToServer, FromServer, Malformed };

    int number = 0; ///< in the file, from 1
    Kind kind = Kind::ToServer;
    Packet packet;
    QByteArray payload; ///< of a malformed frame
};

/// The lines of \a server in a transcript that a program wrote; see docs/link-protocol.md. An error
/// names the line. A last line without an end counts only if it is whole, as a program that crashed
/// may leave half of one.
Outcome<QList<TranscriptLine>> readTranscript(QByteArrayView text, const QString &server);

} // namespace Sim
