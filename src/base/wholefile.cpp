#include "wholefile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <utility>

#ifdef Q_OS_UNIX
#include <unistd.h>
#else
#include <io.h>
#endif

namespace KEO {
namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::WholeFile)
};

constexpr qint64 kPiece = 256 * 1024; // bytes read at once

QIODevice::OpenMode withLineEnds(QIODevice::OpenMode mode, LineEnds lineEnds)
{
    return lineEnds == LineEnds::Native ? mode | QIODevice::Text : mode;
}

Error notAFile(const QString &path)
{
    return {Error::File, Text::tr("%1 is not a file.").arg(path)};
}

Error tooLarge(const QString &path, qint64 maxBytes)
{
    return {
        Error::Limit,
        Text::tr("%1 is larger than the %2 bytes allowed.").arg(path, QString::number(maxBytes))};
}

/// The toolkit has no words for bytes that a full disk did not take, the system has.
Error failure(const QSaveFile &file)
{
    return {Error::File,
            Text::tr("%1 can't be written: %2")
                .arg(file.fileName(), errno != 0 ? qt_error_string(errno) : file.errorString())};
}

/// Waits until the system has the bytes of \a file on the disk. Some disks refuse them only now.
bool isOnDisk(const QSaveFile &file)
{
#ifdef Q_OS_UNIX
    // What can't be synchronised, such as a file system in a program, says so and is no fault.
    return fsync(file.handle()) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS;
#else
    return _commit(file.handle()) == 0 || errno == EBADF;
#endif
}

} // namespace

Result<QByteArray> readWholeFile(const QString &path, qint64 maxBytes, LineEnds lineEnds)
{
    if (!QFileInfo(path).isFile())
        return notAFile(path);
    QFile file(path);
    if (!file.open(withLineEnds(QIODevice::ReadOnly, lineEnds)))
        return Error{Error::File, Text::tr("%1 can't be opened: %2").arg(path, file.errorString())};
    if (file.size() > maxBytes)
        return tooLarge(path, maxBytes);
    QByteArray content;
    content.reserve(file.size());
    // The file may have grown since, and the toolkit takes the memory for all that it is asked for.
    while (content.size() <= maxBytes) {
        const QByteArray piece = file.read(kPiece);
        if (piece.isEmpty())
            break;
        content += piece;
    }
    if (file.error() != QFileDevice::NoError)
        return Error{Error::File, Text::tr("%1 can't be read: %2").arg(path, file.errorString())};
    if (content.size() > maxBytes)
        return tooLarge(path, maxBytes);
    return content;
}

FileSet::FileSet() = default;
FileSet::~FileSet() = default;

std::optional<Error> FileSet::add(const QString &path, const QByteArray &content, LineEnds lineEnds)
{
    return add(path, lineEnds,
               [&](QIODevice &file) { return file.write(content) == content.size(); });
}

std::optional<Error> FileSet::add(const QString &path, LineEnds lineEnds,
                                  const std::function<bool(QIODevice &)> &write)
{
    if (const QFileInfo present(path); present.exists() && !present.isFile())
        return notAFile(path);
    auto file = std::make_unique<QSaveFile>(path);
    errno = 0;
    if (!file->open(withLineEnds(QIODevice::WriteOnly, lineEnds)))
        return failure(*file);
    // commit() ignores what the disk says when it takes the bytes, and on a full one it has then
    // destroyed the old file. So everything must be known to be out before.
    if (!write(*file) || !file->flush() || !isOnDisk(*file)) {
        const Error error = failure(*file);
        const int reason = errno;
        file.reset();
        errno = reason;
        return error;
    }
    m_files.push_back(std::move(file));
    return std::nullopt;
}

QList<FileSet::Fault> FileSet::commit()
{
    QList<Fault> faults;
    int reason = 0;
    for (const std::unique_ptr<QSaveFile> &file : m_files) {
        errno = 0;
        if (file->commit())
            continue;
        reason = errno;
        faults.append({file->fileName(), failure(*file)});
    }
    m_files.clear();
    errno = reason;
    return faults;
}

std::optional<Error> writeWholeFile(const QString &path, const QByteArray &content,
                                    LineEnds lineEnds)
{
    return writeWholeFile(path, lineEnds,
                          [&](QIODevice &file) { return file.write(content) == content.size(); });
}

std::optional<Error> writeWholeFile(const QString &path, LineEnds lineEnds,
                                    const std::function<bool(QIODevice &)> &write)
{
    FileSet files;
    if (const std::optional<Error> error = files.add(path, lineEnds, write))
        return error;
    const QList<FileSet::Fault> faults = files.commit();
    return faults.isEmpty() ? std::nullopt : std::optional(faults.first().error);
}

} // namespace KEO
