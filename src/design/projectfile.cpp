#include "projectfile.h"

#include "initext.h"
#include "ownfile.h"

#include <base/wholefile.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace KEO {

namespace {

constexpr qint64 kMaxProjectFileSize = 1024 * 1024;
constexpr qsizetype kMostCandidates = 1000; // files beside a data file that are looked into

const QString kKeoFile = QStringLiteral("KEO_FILE");
const QString kDataFile = QStringLiteral("DATA_FILE");

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ProjectFile)
};

/// Earlier versions wrote paths that hold only in the folder where the program was started, so one
/// that does is taken where \a folder has no such file.
QString absolutePath(const QDir &folder, const QString &path)
{
    if (path.isEmpty() || QDir::isAbsolutePath(path))
        return path;
    const QString beside = folder.absoluteFilePath(path);
    return QFileInfo::exists(path) && !QFileInfo::exists(beside)
               ? QFileInfo(path).absoluteFilePath()
               : beside;
}

} // namespace

Result<ProjectFile> readProjectFile(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    if (!bytes)
        return bytes.error();
    Result<ProjectFile> project = parseProjectFile(*bytes);
    if (!project)
        return Error{project.error().kind, path + QStringLiteral(": ") + project.error().message};
    const QDir folder = QFileInfo(path).absoluteDir();
    project->keoFile = absolutePath(folder, project->keoFile);
    project->dataFile = absolutePath(folder, project->dataFile);
    return project;
}

Result<ProjectFile> parseProjectFile(const QByteArray &ini)
{
    const IniText text(ini);
    if (text.holdsSerialisedObject())
        return Error{Error::Format, Text::tr("The project file holds a value that is no text.")};
    return ProjectFile{text.value(kKeoFile), text.value(kDataFile)};
}

QByteArray projectFileText(const QByteArray &present, const ProjectFile &project)
{
    const IniText text(present);
    const bool isOurs = text.isWellFormed() && !text.holdsSerialisedObject();
    return (isOurs ? text : IniText({}))
        .with({{kDataFile, QDir::toNativeSeparators(project.dataFile)},
               {kKeoFile, QDir::toNativeSeparators(project.keoFile)}});
}

std::optional<Error> addProjectFile(FileSet &files, const QString &path, const ProjectFile &project)
{
    const Result<QByteArray> present =
        readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    return files.add(path, projectFileText(present ? *present : QByteArray(), project),
                     LineEnds::AsTheyAre);
}

std::optional<Error> writeProjectFile(const QString &path, const ProjectFile &project)
{
    FileSet files;
    if (const std::optional<Error> error = addProjectFile(files, path, project))
        return error;
    const QList<FileSet::Fault> faults = files.commit();
    return faults.isEmpty() ? std::nullopt : std::optional(faults.first().error);
}

QString dataFileBeside(const QString &projectPath)
{
    const QFileInfo info(projectPath);
    return QStringLiteral("%1/%2.xml").arg(info.path(), info.baseName());
}

QString projectFileFor(const QString &path)
{
    if (!isDataFile(path))
        return path;
    const QFileInfo swapped(path);
    const QFileInfoList beside =
        swapped.absoluteDir().entryInfoList({QStringLiteral("*.xml")}, QDir::Files, QDir::Time);
    for (const QFileInfo &candidate : beside.first(std::min(beside.size(), kMostCandidates))) {
        if (candidate.size() > kMaxProjectFileSize)
            continue;
        const Result<ProjectFile> project = readProjectFile(candidate.filePath());
        if (project && !project->keoFile.isEmpty() && QFileInfo(project->dataFile) == swapped)
            return candidate.filePath();
    }
    return path;
}

} // namespace KEO
