#include "filewatch.h"

#include <QDateTime>
#include <QFileInfo>

#include <utility>

namespace KEO {

FileWatch::FileWatch(QObject *parent) : QObject(parent)
{
    m_timer.setInterval(kSettleTime);
    connect(&m_timer, &QTimer::timeout, this, &FileWatch::look);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatch::note);
}

void FileWatch::setFiles(const QStringList &paths)
{
    if (const QStringList old = m_watcher.files(); !old.isEmpty())
        m_watcher.removePaths(old);
    QStringList present;
    for (const QString &path : paths) {
        if (!path.isEmpty() && QFileInfo(path).isFile())
            present.append(path);
    }
    present.removeDuplicates();
    if (!present.isEmpty())
        m_watcher.addPaths(present);
    m_pending.removeIf([&](const auto &entry) { return !paths.contains(entry.key()); });
}

void FileWatch::note(const QString &path)
{
    if (!m_pending.contains(path))
        m_pending.insert(path, {});
    if (!m_timer.isActive())
        m_timer.start();
}

void FileWatch::look()
{
    QStringList settled;
    QStringList missing;
    for (auto entry = m_pending.begin(); entry != m_pending.end(); ++entry) {
        const QFileInfo info(entry.key());
        const bool exists = info.isFile();
        const qint64 size = exists ? info.size() : -1;
        const qint64 modified = exists ? info.lastModified().toMSecsSinceEpoch() : 0;
        entry->waited += kSettleTime;
        const bool isSame = size == entry->size && modified == entry->modified;
        if (isSame && exists)
            settled.append(entry.key());
        else if (entry->waited == kReturnTime && !exists)
            missing.append(entry.key());
        entry->size = size;
        entry->modified = modified;
    }
    for (const QString &path : std::as_const(settled)) {
        m_pending.remove(path);
        if (!m_watcher.files().contains(path))
            m_watcher.addPath(path); // a file that was replaced is no longer watched
    }
    if (m_pending.isEmpty())
        m_timer.stop();
    for (const QString &path : settled + missing)
        Q_EMIT fileChanged(path);
}

} // namespace KEO
