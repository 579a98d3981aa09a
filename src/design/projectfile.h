#pragma once

#include <base/result.h>

#include <QByteArray>
#include <QString>

#include <optional>

namespace KEO {

/// The two files that a saved session names, as the INI file `.analyzer_prj` holds them: keys
/// `KEO_FILE` and `DATA_FILE` of the default section. A missing key is an empty path.
struct ProjectFile
{
    QString keoFile;  ///< core description
    QString dataFile; ///< captured samples

    bool operator==(const ProjectFile &other) const = default;
};

/// Reads a project file of at most 1 MB. An error of kind File or Limit if it can't be read, of
/// kind Format if a value is a serialised object of the toolkit's: in a foreign file it can take
/// all memory or end the program when other programs read it.
Result<ProjectFile> readProjectFile(const QString &path);

/// The same from its bytes.
Result<ProjectFile> parseProjectFile(const QByteArray &ini);

/// What a project file that holds \a present is to hold once it names \a project: its other lines
/// as they are, nothing of them if they are no settings or hold a serialised object.
[[nodiscard]] QByteArray projectFileText(const QByteArray &present, const ProjectFile &project);

/// Writes the two paths, with the system's separators, into the project file at \a path, whole or
/// not at all; other keys of a file that is there keep their values. Nothing on success, else an
/// error of kind File.
[[nodiscard]] std::optional<Error> writeProjectFile(const QString &path,
                                                    const ProjectFile &project);

/// The data file that goes with a project file which names none yet: beside it, with its name up to
/// the first dot.
[[nodiscard]] QString dataFileBeside(const QString &projectPath);

} // namespace KEO
