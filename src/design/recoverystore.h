#pragma once

#include "datafilecheck.h"

#include <base/result.h>

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QList>
#include <QString>

#include <optional>

namespace KEO {

struct WindowToSave;

/// A capture that was never saved.
struct Recovery
{
    QString project; ///< its project file in the store; empty until it is there
    /// The description that it was captured with, absolute. That file may be another one by now, or
    /// gone: the store has a copy of its own.
    QString description;
    QByteArray descriptionState; ///< OwnedFile::state of that file at the time
    QString savedAs;             ///< project file that was open at the time; may be empty
    QString deviceModel;         ///< may be empty
    QDateTime time;              ///< of the capture
    QList<WindowPlace> windows;
    bool namesCores = true; ///< see KindTraits

    /// The windows in words, such as "core 0 window 0, 1; core 2 window 0".
    [[nodiscard]] QString windowText() const;
};

struct RecoveryLimits
{
    int count = 8;
    qint64 bytes = 256 * 1024 * 1024; ///< of all together
};

/// Keeps the last captures that were not saved, each as a project in a folder of its own that holds
/// the description too. An entry comes and goes by one rename, so other programs that work with the
/// same folder, or a program that is killed, leave whole entries or none. Not synchronised with the
/// disk: a computer that loses its power may lose the last one.
///
/// An entry `<time>-<number>` consists of `<name>.analyzer_prj`, `<name>.xml`, the description
/// under its own name, and `recovery.json` with what Recovery tells.
class RecoveryStore final
{
public:
    explicit RecoveryStore(QString folder = standardFolder(), RecoveryLimits limits = {});
    /// In the user's data folder. Need not exist.
    [[nodiscard]] static QString standardFolder();

    /// Newest first; without those that are damaged.
    [[nodiscard]] QList<Recovery> entries() const;
    /// The one whose project file is \a project.
    [[nodiscard]] std::optional<Recovery> entryOf(const QString &project) const;
    /// Nothing happens if it is gone.
    void remove(const QString &project) const;

private:
    friend class RecoveryWriter;
    void prune() const;

    QString m_folder;
    RecoveryLimits m_limits;
};

/// One capture on its way into a store, in pieces small enough to be written between two events of
/// a window. Unless it came to its end it leaves nothing.
class RecoveryWriter final
{
public:
    /// \a description is the text of the description, \a dataFile that of the data file.
    RecoveryWriter(RecoveryStore store, Recovery about, QByteArray description,
                   QByteArray dataFile);
    RecoveryWriter(const RecoveryWriter &) = delete;
    RecoveryWriter &operator=(const RecoveryWriter &) = delete;
    ~RecoveryWriter();

    /// Writes a piece. False once there is nothing more to do.
    [[nodiscard]] bool step();
    /// Writes what is left. Gives the path of the project file, or why there is none: kind File, or
    /// Limit if the store is too small for it.
    [[nodiscard]] Result<QString> finish();

private:
    [[nodiscard]] std::optional<Error> begin();
    [[nodiscard]] std::optional<Error> writePiece();
    [[nodiscard]] std::optional<Error> complete();
    [[nodiscard]] QString baseName() const;

    const RecoveryStore m_store;
    Recovery m_about;
    const QByteArray m_description;
    const QByteArray m_dataFile;
    QString m_part; ///< folder with what is written so far; empty before and after
    QFile m_file;   ///< the data file
    qsizetype m_written = 0;
    bool m_isDone = false;
    std::optional<Error> m_error;
};

/// What an entry tells of \a windows.
[[nodiscard]] QList<WindowPlace> placesOf(const QList<WindowToSave> &windows);

} // namespace KEO
