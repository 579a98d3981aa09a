#pragma once

#include "result.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

class QIODevice;

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

/// Files that are replaced together, each whole or not at all. All of their bytes are on the disk
/// beside their places before the first one takes its own, so that a program that is killed, or a
/// computer that loses its power, leaves files of two generations only between two renames.
/// Without commit() nothing happens to any place.
///
/// After an error `errno` is the system's reason for it.
class FileSet final
{
public:
    FileSet();
    FileSet(const FileSet &) = delete;
    FileSet &operator=(const FileSet &) = delete;
    ~FileSet();

    /// Puts \a content down for \a path. What is no regular file, such as a pipe or a device, is
    /// not replaced. Nothing on success; else an error of kind File with the system's reason, and
    /// the set is as before.
    [[nodiscard]] std::optional<Error> add(const QString &path, const QByteArray &content,
                                           LineEnds lineEnds);
    /// The same with what \a write writes; it returns success.
    [[nodiscard]] std::optional<Error> add(const QString &path, LineEnds lineEnds,
                                           const std::function<bool(QIODevice &)> &write);

    struct Fault
    {
        QString path;
        Error error; ///< of kind File
    };
    /// Puts the files in their places, in the order of their adding. Gives those that could not
    /// be; the others are in place. The set is empty then.
    [[nodiscard]] QList<Fault> commit();

private:
    struct Entry
    {
        QString path;    ///< as it was given
        QString place;   ///< of the bytes, behind all links
        QString written; ///< where the bytes are now, beside it
    };
    QList<Entry> m_files;
};

/// Why a file did not take what was written to it. The toolkit has no words for bytes that a full
/// disk refuses, the system has: it counts if errno was set to 0 before the attempt, else
/// \a toolkitReason.
[[nodiscard]] QString writeFault(const QString &toolkitReason);

/// A set of one file: writes \a content to \a path whole or not at all; after an error a file that
/// was there before has its old content. Errors are those of FileSet::add.
[[nodiscard]] std::optional<Error> writeWholeFile(const QString &path, const QByteArray &content,
                                                  LineEnds lineEnds);
/// The same with what \a write writes.
[[nodiscard]] std::optional<Error> writeWholeFile(const QString &path, LineEnds lineEnds,
                                                  const std::function<bool(QIODevice &)> &write);

} // namespace KEO
