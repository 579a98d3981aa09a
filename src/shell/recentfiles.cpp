#include "recentfiles.h"

#include <base/logging.h>
#include <base/userfolder.h>
#include <base/wholefile.h>

#include <QDir>
#include <QFileInfo>

namespace KEO {

namespace {

constexpr qint64 kMaxSize = 64 * 1024;

} // namespace

RecentFiles::RecentFiles() : m_file(userDataFolder() + QStringLiteral("/recent-files"))
{
}

QStringList RecentFiles::paths() const
{
    const Result<QByteArray> text = readWholeFile(m_file, kMaxSize, LineEnds::Native);
    QStringList paths = text ? QString::fromUtf8(*text).split(u'\n') : QStringList();
    paths.removeIf([](const QString &path) { return !QDir::isAbsolutePath(path); });
    paths.removeDuplicates();
    return paths.first(qMin<qsizetype>(paths.size(), kCount));
}

void RecentFiles::add(const QString &path) const
{
    QStringList paths = this->paths();
    const QString added = QFileInfo(path).absoluteFilePath();
    if (added.contains(u'\n') || (!paths.isEmpty() && paths.first() == added))
        return;
    paths.removeAll(added);
    paths.prepend(added);
    QDir().mkpath(QFileInfo(m_file).path());
    const QString text = paths.first(qMin<qsizetype>(paths.size(), kCount)).join(u'\n') + u'\n';
    if (const auto error = writeWholeFile(m_file, text.toUtf8(), LineEnds::Native))
        qCDebug(lcShell).noquote() << "recent files:" << error->message;
}

} // namespace KEO
