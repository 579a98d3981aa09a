#include "wholefile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#ifdef Q_OS_UNIX
#include <fcntl.h>
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

constexpr int kNameLength = 8;        // of what tells a file that is being written
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

Error failure(const QString &path, const QString &toolkitReason)
{
    return {Error::File, Text::tr("%1 can't be written: %2").arg(path, writeFault(toolkitReason))};
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

/// A file whose bytes begin to go to the disk while more are being made, so that there is little to
/// wait for at the end.
class EagerSaveFile final : public QSaveFile
{
public:
    using QSaveFile::QSaveFile;

protected:
    qint64 writeData(const char *data, qint64 size) override
    {
        const qint64 written = QSaveFile::writeData(data, size);
#ifdef Q_OS_LINUX
        m_written += std::max<qint64>(written, 0);
        if (m_written - m_begun >= kBegunAtOnce) {
            // A hint: what it can't do, the wait at the end does.
            const int reason = errno;
            sync_file_range(handle(), m_begun, kBegunAtOnce, SYNC_FILE_RANGE_WRITE);
            errno = reason;
            m_begun += kBegunAtOnce;
        }
#endif
        return written;
    }

private:
#ifdef Q_OS_LINUX
    static constexpr qint64 kBegunAtOnce = 4 * 1024 * 1024; // bytes
    qint64 m_written = 0;
    qint64 m_begun = 0;
#endif
};

/// Where the bytes of a file go: what a link points to is replaced, not the link.
QString placeOf(const QFileInfo &file)
{
    if (!file.isSymLink())
        return file.filePath();
    return file.exists() ? file.canonicalFilePath() : file.symLinkTarget();
}

/// A rename of which all but the system's own call is done beforehand.
class NativeRename final
{
public:
    NativeRename(const QString &from, const QString &to)
        : m_from(QFileInfo(from).filesystemFilePath()), m_to(QFileInfo(to).filesystemFilePath())
    {
#ifdef Q_OS_UNIX
        // While it is open, the file that is replaced is not taken apart within the call.
        m_replaced = open(m_to.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
#endif
    }
    NativeRename(NativeRename &&other) noexcept
        : m_from(std::move(other.m_from)),
          m_to(std::move(other.m_to)),
          m_replaced(std::exchange(other.m_replaced, -1))
    {
    }
    NativeRename(const NativeRename &) = delete;
    NativeRename &operator=(const NativeRename &) = delete;
    NativeRename &operator=(NativeRename &&) = delete;
    ~NativeRename()
    {
#ifdef Q_OS_UNIX
        if (m_replaced >= 0)
            close(m_replaced);
#endif
    }

    void run()
    {
        std::filesystem::rename(m_from, m_to, m_error);
    }
    /// The system's number for what went wrong, 0 for nothing.
    [[nodiscard]] int reason() const
    {
        return m_error.value();
    }

private:
    std::filesystem::path m_from;
    std::filesystem::path m_to;
    std::error_code m_error;
    int m_replaced = -1; // a descriptor
};

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

FileSet::~FileSet()
{
    for (const Entry &entry : m_files)
        QFile::remove(entry.written);
}

std::optional<Error> FileSet::add(const QString &path, const QByteArray &content, LineEnds lineEnds)
{
    return add(path, lineEnds,
               [&](QIODevice &file) { return file.write(content) == content.size(); });
}

std::optional<Error> FileSet::add(const QString &path, LineEnds lineEnds,
                                  const std::function<bool(QIODevice &)> &write)
{
    const QFileInfo present(path);
    if (present.exists() && !present.isFile())
        return notAFile(path);
    if (present.exists() && !present.isWritable()) {
        errno = EACCES;
        return failure(path, {});
    }
    const QString place = placeOf(present);
    // It takes a name of its own first: what puts it into its place must be a rename and no more.
    EagerSaveFile file(place + u'.' +
                       QUuid::createUuid().toString(QUuid::Id128).first(kNameLength));
    errno = 0;
    if (!file.open(withLineEnds(QIODevice::WriteOnly, lineEnds)))
        return failure(path, file.errorString());
    // commit() ignores what the disk says when it takes the bytes.
    if (!write(file) || !file.flush() || !isOnDisk(file) || !file.commit()) {
        const int reason = errno;
        const Error error = failure(path, file.errorString());
        file.cancelWriting();
        errno = reason;
        return error;
    }
    if (present.exists())
        QFile::setPermissions(file.fileName(), present.permissions());
    m_files.append({path, place, file.fileName()});
    return std::nullopt;
}

/// Whoever kills the program between two of these calls leaves files of two generations, so all
/// that can be done before or after them is not done between them.
QList<FileSet::Fault> FileSet::commit()
{
    std::vector<NativeRename> renames;
    for (const Entry &entry : std::as_const(m_files))
        renames.emplace_back(entry.written, entry.place);
    for (NativeRename &rename : renames)
        rename.run();

    QList<Fault> faults;
    int reason = 0;
    for (size_t i = 0; i < renames.size(); ++i) {
        if (renames[i].reason() == 0)
            continue;
        const Entry &entry = m_files[qsizetype(i)];
        QFile::remove(entry.written);
        reason = errno = renames[i].reason();
        faults.append({entry.path, failure(entry.path, {})});
    }
    m_files.clear();
    errno = reason;
    return faults;
}

QString writeFault(const QString &toolkitReason)
{
    return errno != 0 ? qt_error_string(errno) : toolkitReason;
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
