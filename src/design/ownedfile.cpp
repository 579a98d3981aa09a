#include "ownedfile.h"

#include <base/wholefile.h>

#include <QCryptographicHash>
#include <QFileInfo>

namespace KEO {

namespace {

constexpr qint64 kMaxSize = 64 * 1024 * 1024; // more than any description may have

QByteArray hashOf(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Sha256);
}

/// "design.kept-1.keo" for "design.keo", with the first number that is free.
QString pathBeside(const QString &path)
{
    const QFileInfo info(path);
    for (int number = 1;; ++number) {
        const QString beside =
            QStringLiteral("%1/%2.kept-%3.%4")
                .arg(info.path(), info.completeBaseName(), QString::number(number), info.suffix());
        if (!QFileInfo::exists(beside))
            return beside;
    }
}

} // namespace

void OwnedFile::know(const QString &path)
{
    const Result<QByteArray> present = readWholeFile(path, kMaxSize, LineEnds::Native);
    m_known = present ? hashOf(*present) : QByteArray();
}

void OwnedFile::wrote(const QByteArray &content)
{
    m_known = hashOf(content);
}

bool OwnedFile::isUnchanged(const QString &path) const
{
    const Result<QByteArray> present = readWholeFile(path, kMaxSize, LineEnds::Native);
    return present && hashOf(*present) == m_known;
}

Result<QString> OwnedFile::keepNews(FileSet &files, const QString &path,
                                    const QByteArray &content) const
{
    if (!QFileInfo::exists(path))
        return QString();
    const Result<QByteArray> text = readWholeFile(path, kMaxSize, LineEnds::Native);
    if (text && (text->isEmpty() || *text == content || hashOf(*text) == m_known))
        return QString();
    const Result<QByteArray> present = readWholeFile(path, kMaxSize, LineEnds::AsTheyAre);
    if (!present)
        return present.error();
    const QString beside = pathBeside(path);
    if (const std::optional<Error> error = files.add(beside, *present, LineEnds::AsTheyAre))
        return *error;
    return beside;
}

} // namespace KEO
