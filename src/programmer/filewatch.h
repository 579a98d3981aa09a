#pragma once

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

namespace KEO {

/// Tells when watched files have changed on disk, in one signal for each change, however it came
/// about: written in place in many pieces, or replaced by a file of the same name. Waits until the
/// file has not changed for kSettleTime, so that nobody reads half a file. A file that is missing
/// has kReturnTime to come back, since replacing it may leave a gap; then its absence is a change,
/// and its return, however late, is the next one. GUI thread.
class FileWatch final : public QObject
{
    Q_OBJECT

public:
    static constexpr int kSettleTime = 200;  ///< ms
    static constexpr int kReturnTime = 2000; ///< ms

    explicit FileWatch(QObject *parent = nullptr);

    /// Watches these files and no others. Empty paths and files that do not exist are left out.
    void setFiles(const QStringList &paths);
    [[nodiscard]] QStringList files() const { return m_watcher.files(); }

Q_SIGNALS:
    void fileChanged(const QString &path);

private:
    struct Pending
    {
        qint64 size = -1;    ///< bytes at the last look; -1 while the file is missing
        qint64 modified = 0; ///< ms since the epoch
        int waited = 0;      ///< ms
    };

    void note(const QString &path);
    void look();

    QFileSystemWatcher m_watcher;
    QHash<QString, Pending> m_pending;
    QTimer m_timer;
};

} // namespace KEO
