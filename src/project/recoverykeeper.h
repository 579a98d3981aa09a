#pragma once

#include "projectparts.h"

#include <design/datafilewriter.h>
#include <design/recoverystore.h>

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>

namespace KEO {

class ProjectFiles;

/// Keeps the captures that show and were never saved in the user's recovery store: in pieces while
/// nothing else is to be done, and at the latest in finish(). A capture that is saved has no entry
/// any more. Of an Auto run it is the round that shows, at its end and once in a while. A store
/// that can't be written is told of, and hinders nothing.
class RecoveryKeeper final : public QObject
{
    Q_OBJECT

public:
    /// \a parts and \a files are borrowed and outlive every use.
    RecoveryKeeper(const ProjectParts &parts, const ProjectFiles &files, QObject *parent);

    /// A window of the run shows now, or a new round of it.
    void captured();
    /// The waves were opened from the store.
    void opened(const Recovery &entry);
    /// What shows has been saved.
    void saved();
    /// The waves are about to go: writes what is not in the store as it shows now. The next window
    /// belongs to another capture.
    void finish();

Q_SIGNALS:
    void told(const QString &text);

private:
    void beginCapture();
    void runEnded(bool isBusy);
    /// Begins to write what shows.
    void write(const QByteArray &dataFile);
    void step();
    void end();

    const ProjectParts m_parts;
    const ProjectFiles &m_files;
    RecoveryStore m_store;
    QTimer m_later; ///< until writing begins
    QTimer m_idle;  ///< from piece to piece

    // Of the capture that shows; all empty while it needs no entry.
    std::optional<Recovery> m_about;
    QByteArray m_description; ///< as it was when the first window came
    std::unique_ptr<RecoveryWriter> m_writer;
    size_t m_hash = 0; ///< of the data file that was written last, or is being written
    bool m_hasTold = false;
};

} // namespace KEO
