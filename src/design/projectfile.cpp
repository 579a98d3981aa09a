#include "projectfile.h"

#include "initext.h"

#include <base/wholefile.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace KEO {

namespace {

constexpr qint64 kMaxProjectFileSize = 1024 * 1024;

const QString kKeoFile = QStringLiteral("KEO_FILE");
const QString kDataFile = QStringLiteral("DATA_FILE");

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ProjectFile)
};

} // namespace

Result<ProjectFile> readProjectFile(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    if (!bytes)
        return bytes.error();
    Result<ProjectFile> project = parseProjectFile(*bytes);
    if (!project)
        return Error{project.error().kind, path + QStringLiteral(": ") + project.error().message};
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

std::optional<Error> writeProjectFile(const QString &path, const ProjectFile &project)
{
    const Result<QByteArray> present =
        readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    return writeWholeFile(path, projectFileText(present ? *present : QByteArray(), project),
                          LineEnds::AsTheyAre);
}

QString dataFileBeside(const QString &projectPath)
{
    const QFileInfo info(projectPath);
    return QStringLiteral("%1/%2.xml").arg(info.path(), info.baseName());
}

} // namespace KEO
