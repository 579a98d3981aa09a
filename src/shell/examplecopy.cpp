#include "examplecopy.h"

#include <base/wholefile.h>
#include <config/descriptiondiff.h>
#include <config/loadeddescription.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace KEO {

namespace {

constexpr int kMaxCopies = 100;

/// Whether the file \a path holds the design \a original, whatever the settings.
bool isDesign(const QString &path, const QByteArray &original)
{
    const Result<QByteArray> bytes = descriptionBytes(path);
    if (!bytes)
        return false;
    const Result<LoadedDescription> copy = loadDescription(*bytes);
    const Result<LoadedDescription> design = loadDescription(original);
    if (!copy || !design)
        return false;
    const QList<DescriptionChange> changes = descriptionChanges(*design, *copy);
    return std::all_of(changes.begin(), changes.end(), [](const DescriptionChange &change) {
        return change.origin == DescriptionChange::Origin::Saved;
    });
}

} // namespace

QString exampleFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
           QStringLiteral("/Signal Scope");
}

Result<QString> copyOfExample(const QString &description)
{
    const Result<QByteArray> original = descriptionBytes(description);
    if (!original)
        return original.error();
    const QDir folder(exampleFolder());
    const QFileInfo name(description);
    for (int number = 1; number <= kMaxCopies; ++number) {
        const QString base =
            name.completeBaseName() + (number > 1 ? QStringLiteral("-%1").arg(number) : QString());
        const QString path = folder.filePath(base + u'.' + name.suffix());
        if (isDesign(path, *original))
            return path;
        if (QFileInfo::exists(path))
            continue;
        folder.mkpath(QStringLiteral("."));
        if (const auto error = writeWholeFile(path, *original, LineEnds::AsTheyAre))
            return *error;
        return path;
    }
    return Error{Error::File, QCoreApplication::translate("KEO::copyOfExample",
                                                          "There are too many copies in %1.")
                                  .arg(QDir::toNativeSeparators(folder.path()))};
}

} // namespace KEO
