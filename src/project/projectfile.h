#pragma once

#include <base/result.h>

#include <QString>

namespace KEO {

/// The two files that a saved session names, as the INI file `.analyzer_prj` holds them: keys
/// `KEO_FILE` and `DATA_FILE` of the default section. A missing key is an empty path.
struct ProjectFile
{
    QString keoFile;  ///< core description
    QString dataFile; ///< captured samples
};

/// Reads a project file of at most 1 MB. An error of kind File or Limit if it can't be read, of
/// kind Format if a value is anything but text: a serialised object in a foreign file can take all
/// memory or end the program when it is read.
Result<ProjectFile> readProjectFile(const QString &path);

} // namespace KEO
