#pragma once

#include <base/result.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace WaveMonitor {
class WindowContents;
}

namespace KEO {

class FileSet;

/// One window on its way into a data file.
struct WindowToSave
{
    std::optional<int> core; ///< CoreConfig::index; none in a project whose files name no core
    int index = 0;           ///< window number in the core, or the window's position
    const WaveMonitor::WindowContents *contents = nullptr; ///< borrowed; never null
};

/// The data file of a project: XML in UTF-8, indented by 4, the same bytes for the same windows.
/// The root `WaveData` holds an element `Window` (see WaveMonitor::WindowContents) for each window,
/// in list order, with the attributes `index` and, if it has one, `core`. Samples go from their
/// bits straight into the text, which is sized first.
[[nodiscard]] QByteArray dataFileText(const QList<WindowToSave> &windows);

/// Puts that text into \a files for \a path, where no file stands, an empty one or a data file: a
/// foreign project file can name any path. \a mayReplace, if given, may hold anything else. Nothing
/// on success, else an error of kind File.
[[nodiscard]] std::optional<Error> addDataFile(FileSet &files, const QString &path,
                                               const QList<WindowToSave> &windows,
                                               const QString &mayReplace = {});

/// The same for a file alone, which is written whole or not at all.
[[nodiscard]] std::optional<Error> writeDataFile(const QString &path,
                                                 const QList<WindowToSave> &windows,
                                                 const QString &mayReplace = {});

} // namespace KEO
