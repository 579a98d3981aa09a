#pragma once

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

namespace KEO {

/// Tells when one file changes, however a tool writes it: in place, by a rename over it, or by
/// removing it and making it again. The system's watch follows the file and not its name, so it is
/// renewed after each event. It sees neither a folder that another one takes the place of, nor a
/// link that is switched, nor what other computers write to a network drive; so the name is looked
/// at from time to time as well.
/// Files that tools are in the middle of replacing count as missing only after a second, and one
/// that is being written is told once it has stopped changing.
///
/// Holds at most one file and needs an event loop. Not for files that others may lock: it opens
/// none.
class FileWatch final : public QObject
{
    Q_OBJECT

public:
    explicit FileWatch(QObject *parent = nullptr);
    ~FileWatch() override;

    /// Watches \a path, which need not exist, in place of the file before. What it holds now counts
    /// as known.
    void watch(const QString &path);
    void stop();

    /// Empty while nothing is watched.
    [[nodiscard]] QString path() const { return m_path; }

Q_SIGNALS:
    /// The file was written, was removed, or is back. Several events in a row are told once.
    void fileChanged(const QString &path);
    /// The file has its size and its time, but something of it was written: its attributes, or a
    /// content after which a tool has put the time back. Whoever knows the content may compare.
    void attributesChanged(const QString &path);

private:
    /// By which a file is told from its former self.
    struct Stamp
    {
        bool exists = false;
        qint64 size = 0;    ///< bytes
        QDateTime written;  ///< UTC
        QDateTime created;  ///< UTC, invalid where the system does not know
        QDateTime touched;  ///< UTC, the same; of the attributes, too
        quint64 device = 0; ///< with the next one the file itself; 0 where the system has no such
        quint64 inode = 0;
        QDateTime lookedAt; ///< UTC

        [[nodiscard]] bool looksLike(const Stamp &other) const;
        [[nodiscard]] bool surelyEquals(const Stamp &later) const;
    };
    [[nodiscard]] Stamp stampOfFile() const;
    void renewWatch();
    void look();
    void lookFromTimeToTime();

    QFileSystemWatcher m_watcher;
    QTimer m_timer;     ///< runs between an event and the look at the file, and while it is missing
    QTimer m_rareTimer; ///< runs while a file is watched
    QString m_path;
    Stamp m_known;         ///< what listeners know
    Stamp m_seen;          ///< at the last look
    int m_looksInVain = 0; ///< since the file was missing
};

} // namespace KEO
