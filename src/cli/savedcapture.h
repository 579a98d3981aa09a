#pragma once

#include <base/result.h>
#include <config/coreconfig.h>
#include <wave/windowcontents.h>

#include <QString>

#include <vector>

namespace KEO {

/// One window of a project.
struct SavedCapture
{
    int core = 0; ///< CoreConfig::index
    int window = 0;
    WaveMonitor::WindowContents contents;
};

/// A project as it was saved.
struct SavedProject
{
    CoreList cores;
    std::vector<SavedCapture> captures; ///< in the order of the data file; each fits its core
};

/// Saves \a captures as the project \a path, which names the description \a description as it
/// stands and a data file beside it. Both files are written whole or not at all. Returns the path
/// of the data file.
Result<QString> saveProject(const QString &path, const QString &description,
                            const std::vector<SavedCapture> &captures);

/// Opens a project of standard cores. Refuses one that has no waves or waves of another design.
Result<SavedProject> openProject(const QString &path);

} // namespace KEO
