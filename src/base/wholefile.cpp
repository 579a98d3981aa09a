#include "wholefile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace KEO {
namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::WholeFile)
};

QIODevice::OpenMode withLineEnds(QIODevice::OpenMode mode, LineEnds lineEnds)
{
    return lineEnds == LineEnds::Native ? mode | QIODevice::Text : mode;
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
        return Error{Error::File, Text::tr("%1 is not a file.").arg(path)};
    QFile file(path);
    if (!file.open(withLineEnds(QIODevice::ReadOnly, lineEnds)))
        return Error{Error::File, Text::tr("%1 can't be opened: %2").arg(path, file.errorString())};
    if (file.size() > maxBytes)
        return tooLarge(path, maxBytes);
    QByteArray content = file.read(maxBytes + 1); // the file may have grown since
    if (file.error() != QFileDevice::NoError)
        return Error{Error::File, Text::tr("%1 can't be read: %2").arg(path, file.errorString())};
    if (content.size() > maxBytes)
        return tooLarge(path, maxBytes);
    return content;
}

std::optional<Error> writeWholeFile(const QString &path, const QByteArray &content,
                                    LineEnds lineEnds)
{
    QSaveFile file(path);
    const auto failure = [&] {
        return Error{Error::File,
                     Text::tr("%1 can't be written: %2").arg(path, file.errorString())};
    };
    if (!file.open(withLineEnds(QIODevice::WriteOnly, lineEnds)))
        return failure();
    // commit() reports success on a full disk and has then destroyed the old file, so everything
    // must be known to be out before.
    if (file.write(content) != content.size() || !file.flush()) {
        const Error error = failure();
        file.cancelWriting();
        return error;
    }
    if (!file.commit())
        return failure();
    return std::nullopt;
}

} // namespace KEO
