#include "filewatch.h"

#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <utility>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace KEO {

namespace {

using namespace std::chrono_literals;

constexpr auto kSettleTime = 100ms; // a write comes as many events
constexpr auto kRareTime = 1s;      // looks without an event
constexpr int kPatience = 10;       // looks before a missing file is told

// Two writes within one tick of the file system's clock have the same time.
constexpr qint64 kCoarsestClock = 2000; // ms

} // namespace

bool FileWatch::Stamp::looksLike(const Stamp &other) const
{
    return exists == other.exists && size == other.size && written == other.written &&
           created == other.created && device == other.device && inode == other.inode;
}

/// True only if nothing can have been written between the looks.
bool FileWatch::Stamp::surelyEquals(const Stamp &later) const
{
    if (!looksLike(later))
        return false;
    return !exists || written.msecsTo(lookedAt) > kCoarsestClock;
}

FileWatch::FileWatch(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &FileWatch::look);
    m_rareTimer.setInterval(kRareTime);
    connect(&m_rareTimer, &QTimer::timeout, this, &FileWatch::lookFromTimeToTime);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this] {
        if (!m_timer.isActive())
            m_timer.start(kSettleTime);
    });
}

FileWatch::~FileWatch() = default;

void FileWatch::watch(const QString &path)
{
    stop();
    m_path = path;
    if (path.isEmpty())
        return;
    m_rareTimer.start();
    renewWatch();
    m_known = stampOfFile();
    if (!m_known.exists)
        m_timer.start(kRareTime);
}

void FileWatch::stop()
{
    m_timer.stop();
    m_rareTimer.stop();
    m_looksInVain = 0;
    m_path.clear();
    renewWatch();
}

void FileWatch::renewWatch()
{
    const QStringList held = m_watcher.files();
    if (!held.isEmpty())
        m_watcher.removePaths(held);
    if (!m_path.isEmpty() && QFileInfo::exists(m_path))
        m_watcher.addPath(m_path);
}

FileWatch::Stamp FileWatch::stampOfFile() const
{
    const QFileInfo info(m_path);
    Stamp stamp;
    stamp.lookedAt = QDateTime::currentDateTimeUtc();
    stamp.exists = info.exists();
    if (stamp.exists) {
        stamp.size = info.size();
        stamp.written = info.lastModified().toUTC();
        stamp.created = info.birthTime().toUTC();
        stamp.touched = info.metadataChangeTime().toUTC();
    }
#ifdef Q_OS_UNIX
    struct stat file = {};
    if (stamp.exists && stat(QFile::encodeName(m_path).constData(), &file) == 0) {
        stamp.device = quint64(file.st_dev);
        stamp.inode = quint64(file.st_ino);
    }
#endif
    return stamp;
}

void FileWatch::lookFromTimeToTime()
{
    if (!m_timer.isActive() && !m_known.looksLike(stampOfFile()))
        look();
}

/// The watch comes before the stamp: what is written after the stamp raises another event.
void FileWatch::look()
{
    renewWatch();
    const Stamp present = stampOfFile();
    if (present.exists) {
        m_looksInVain = 0;
    } else {
        ++m_looksInVain;
        m_timer.start(m_looksInVain < kPatience ? kSettleTime : kRareTime);
        if (m_looksInVain < kPatience)
            return;
    }
    const QString path = m_path; // a listener may end this watch
    if (m_known.surelyEquals(present)) {
        if (std::exchange(m_known.touched, present.touched) != present.touched)
            Q_EMIT attributesChanged(path);
        return;
    }
    if (present.exists && !m_seen.looksLike(present)) {
        m_seen = present; // perhaps still being written
        m_timer.start(kSettleTime);
        return;
    }
    m_known = present;
    Q_EMIT fileChanged(path);
}

} // namespace KEO
