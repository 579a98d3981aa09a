#pragma once

#include "result.h"

#include <QByteArray>

#include <optional>

namespace KEO {

/// How line ends in memory ("\n") and in a file relate.
enum class LineEnds {
    AsTheyAre, ///< bytes are bytes
    Native     ///< text mode: carriage returns vanish on reading; the system's line ends on writing
};

/// All bytes of the regular file at \a path. An error of kind File when it cannot be read or is no
/// regular file (opening a pipe could wait for ever), of kind Limit when it has more than
/// \a maxBytes.
Result<QByteArray> readWholeFile(const QString &path, qint64 maxBytes, LineEnds lineEnds);

/// Writes \a content to \a path whole or not at all: after an error a file that was there before
/// has its old content. What is no regular file, such as a pipe or a device, is not replaced.
/// Nothing on success, else an error of kind File with the system's reason.
[[nodiscard]] std::optional<Error> writeWholeFile(const QString &path, const QByteArray &content,
                                                  LineEnds lineEnds);

} // namespace KEO
