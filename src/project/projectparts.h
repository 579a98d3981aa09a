#pragma once

#include <design/datafilewriter.h>

#include <QList>

namespace KEO {

class ConfigPage;
class Design;
class ProgrammerLink;
class ProjectBoxes;
class StatusLine;
class WaveTabs;

/// What the members of a project work on. All borrowed from it; they outlive every use.
struct ProjectParts
{
    Design &design;
    ConfigPage &page;
    ProgrammerLink &programmer;
    WaveTabs &waves;
    ProjectBoxes &boxes;
    StatusLine &status;
};

/// The waves that show, as a data file has them. Borrowed.
[[nodiscard]] QList<WindowToSave> windowsToSave(const ProjectParts &parts);
/// The design takes the names that its signals have in the waves that show.
void keepSignalNames(const ProjectParts &parts);

} // namespace KEO
