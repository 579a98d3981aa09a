#pragma once

#include <base/result.h>

#include <QByteArray>
#include <QString>

#include <optional>

namespace KEO {

class FileSet;

/// The two files that a saved session names, as the INI file `.analyzer_prj` holds them: keys
/// `KEO_FILE` and `DATA_FILE` of the default section. A missing key is an empty path.
struct ProjectFile
{
    QString keoFile;  ///< core description
    QString dataFile; ///< captured samples

    bool operator==(const ProjectFile &other) const = default;
};

/// Reads a project file of at most 1 MB. Relative paths in it come back absolute, seen from the
/// project file's folder. An error of kind File or Limit if it can't be read, of
/// kind Format if a value is a serialised object of the toolkit's: in a foreign file it can take
/// all memory or end the program when other programs read it.
Result<ProjectFile> readProjectFile(const QString &path);

/// The same from its bytes, with the paths as they stand.
Result<ProjectFile> parseProjectFile(const QByteArray &ini);

/// What a project file that holds \a present is to hold once it names \a project: its other lines
/// as they are, nothing of them if they are no settings or hold a serialised object.
[[nodiscard]] QByteArray projectFileText(const QByteArray &present, const ProjectFile &project);

/// Puts into \a files a project file for \a path that has the two paths, with the system's
/// separators; other keys of a file that is there keep their values. Nothing on success, else an
/// error of kind File.
[[nodiscard]] std::optional<Error> addProjectFile(FileSet &files, const QString &path,
                                                  const ProjectFile &project);

/// The same for a file alone, which is written whole or not at all.
[[nodiscard]] std::optional<Error> writeProjectFile(const QString &path,
                                                    const ProjectFile &project);

/// The data file that goes with a project file which names none yet: beside it, with its name up to
/// the first dot.
[[nodiscard]] QString dataFileBeside(const QString &projectPath);

/// The project file to read when the user names \a path: that one, unless it is a data file and a
/// file beside it is the project file that names it. So it is once samples and paths have changed
/// places, see KindTraits::swapsPaths.
[[nodiscard]] QString projectFileFor(const QString &path);

} // namespace KEO
