#pragma once

#include "projectparts.h"

#include <design/ownedfile.h>
#include <design/recoverystore.h>

#include <QObject>
#include <QString>

#include <optional>

namespace KEO {

struct ProjectFile;

/// The files of the design in a window: its description, and the project and data file of a saved
/// session. Reports what goes wrong in boxes; while one shows, the project may be closed or
/// deleted, and this with it.
class ProjectFiles final : public QObject
{
    Q_OBJECT

public:
    ProjectFiles(const ProjectParts &parts, QObject *parent) : QObject(parent), m_parts(parts) {}

    /// See CaptureProject::openFile.
    [[nodiscard]] bool open(const QString &path);
    /// Why the last file did not open, or opened without its waves; else empty.
    [[nodiscard]] const QString &fault() const { return m_fault; }
    /// Writes data file, description and project file, which take their places together. A
    /// description that another program has written meanwhile is kept beside. Until a project has
    /// been saved it asks where to, beginning beside the file that \a window, which holds the
    /// project, has in its property `startDir`, or beside the description.
    void save(const QObject *window);
    void close();
    /// Path of the open description; empty while the project is closed.
    [[nodiscard]] const QString &description() const { return m_keoFilePath; }
    /// See OwnedFile.
    [[nodiscard]] const QByteArray &descriptionState() const { return m_description.state(); }
    /// Path of what is open: the project file, or the description where nothing was saved yet.
    [[nodiscard]] const QString &file() const
    {
        return m_projectFilePath.isEmpty() ? m_keoFilePath : projectFile();
    }
    /// Path of the project file as the user knows it; empty until saved.
    [[nodiscard]] const QString &projectFile() const;
    /// What is open, if it comes from the recovery store and was not saved since. It has no files
    /// of its own then: description() is where it came from.
    [[nodiscard]] const std::optional<Recovery> &recovered() const { return m_recovered; }

Q_SIGNALS:
    /// The description at \a path is about to be read, to be opened from there.
    void readingDescription(const QString &path);
    /// What became of the files, in words for the user: also what no box tells.
    void told(const QString &text);
    /// All three files have been written.
    void saved();

private:
    [[nodiscard]] bool openProject(const QString &path);
    [[nodiscard]] bool openRecovered();
    /// Also shows the design and tells the programmer of it. No box.
    [[nodiscard]] bool loadDesign(const QString &path);
    /// Shows the waves of the data file at \a path, all of them or none, and tells in a box why
    /// there are none. True also when the file belongs to another design.
    [[nodiscard]] bool showWaves(const QString &path);
    /// Nothing opens, or no waves show, for that reason.
    void refuse(const QString &reason);
    /// Asks for the path of a project file; empty when the user gave up.
    [[nodiscard]] QString askPath(const QString &lastFile) const;
    [[nodiscard]] std::optional<QString> obstacleOf(const QString &path) const;
    /// What became of a save.
    struct Outcome
    {
        bool isSessionSaved = false; ///< project and data file
        bool isSaved = false;        ///< all files
        QString text;                ///< for the status line
        QString error;               ///< for a box, if any
    };
    [[nodiscard]] Outcome writeFiles(const QString &projectFile, const ProjectFile &paths);
    void tell(const Outcome &outcome);
    [[nodiscard]] QString placeOfRecovered() const;

    const ProjectParts m_parts;
    // All empty while the project is closed.
    QString m_keoFilePath;     ///< core description
    QString m_projectFilePath; ///< empty until saved
    QString m_dataFilePath;    ///< samples and arrangement, empty until saved
    OwnedFile m_description;   ///< its state on disk
    QString m_openedFile;      ///< the project file that the user opened
    QString m_refusedPath;     ///< chosen last, but it could not be written
    std::optional<Recovery> m_recovered;
    QString m_fault;
};

} // namespace KEO
