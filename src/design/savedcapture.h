#pragma once

#include "design.h"
#include "kindtraits.h"

#include <base/result.h>
#include <wave_data/windowcontents.h>

#include <QString>

#include <memory>
#include <vector>

namespace KEO {

/// One window of a project.
struct SavedCapture
{
    ExportCore core;
    int window = 0;
    WaveMonitor::WindowContents contents;
};

/// A project's captures, all from cores of one kind, in the order of the data file.
struct SavedProject
{
    DescriptionKind kind = DescriptionKind::Standard;
    std::vector<SavedCapture> captures;
};

/// Saves \a captures as the project \a path, which names the description \a description as it
/// stands and a data file beside it, whose name is the project's whole base name. The two are
/// replaced together, or neither. Returns the path of the data file.
Result<QString> saveProject(const QString &path, const QString &description,
                            const SavedProject &captures);

/// A project as it stands in its files.
struct OpenedProject
{
    std::unique_ptr<Design> design;
    Design::SavedWindows windows; ///< at least one
};

/// Opens a project of either kind with its description. Refuses what openProject does.
Result<OpenedProject> openProjectDesign(const QString &path);

/// Opens a project of either kind of core. Refuses one that has no waves or waves of another
/// design. A description whose trigger position was changed after the capture is none: the windows
/// keep theirs.
Result<SavedProject> openProject(const QString &path);

} // namespace KEO
