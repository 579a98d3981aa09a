#pragma once

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <optional>

namespace KEO {

/// To be called before anything is opened: a standard stream that the program was started without
/// would lend its number to the next file or socket, and the text written to the stream would go
/// there. Afterwards such a stream has an end, or takes nothing.
void holdStandardStreams();

[[nodiscard]] bool isTerminal(std::FILE *stream);

/// Columns of the terminal behind \a stream; nothing where that can't be told.
[[nodiscard]] std::optional<int> terminalWidth(std::FILE *stream);

/// From now on \a stream changes no line ends, on systems where it would.
void sendRawBytes(std::FILE *stream);

/// Writes \a text to \a stream at once, in the system's encoding. On a terminal each control
/// character but line end, return and tab shows as a replacement character: a name or path from a
/// foreign file could give the terminal orders. Files and pipes get the text as it is. False when
/// not all of it went out; `errno` tells why.
[[nodiscard]] bool writeText(std::FILE *stream, const QString &text);

/// A message handler for qInstallMessageHandler that writes as above to standard error.
void printMessage(QtMsgType type, const QMessageLogContext &context, const QString &text);

} // namespace KEO
