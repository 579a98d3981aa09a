#include "wholefile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>

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

std::optional<Error> writeWholeFile(const QString &path, const QByteArray &content,
                                    LineEnds lineEnds)
{
    if (const QFileInfo present(path); present.exists() && !present.isFile())
        return notAFile(path);
    QSaveFile file(path);
    const auto failure = [&](const QString &reason) {
        return Error{Error::File, Text::tr("%1 can't be written: %2").arg(path, reason)};
    };
    if (!file.open(withLineEnds(QIODevice::WriteOnly, lineEnds)))
        return failure(file.errorString());
    // commit() reports success on a full disk and has then destroyed the old file, so everything
    // must be known to be out before. The toolkit has no words for bytes that a full disk did not
    // take, the system has.
    errno = 0;
    if (file.write(content) != content.size() || !file.flush()) {
        const QString reason = errno != 0 ? qt_error_string(errno) : file.errorString();
        file.cancelWriting();
        return failure(reason);
    }
    if (!file.commit())
        return failure(file.errorString());
    return std::nullopt;
}

} // namespace KEO
