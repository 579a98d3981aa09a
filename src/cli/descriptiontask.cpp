#include "descriptiontask.h"

#include <config/descriptiondiff.h>

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DescriptionTask)
};

Result<LoadedDescription> loadFrom(const QString &path)
{
    const Result<QByteArray> bytes = descriptionBytes(path);
    if (!bytes)
        return bytes.error();
    Result<LoadedDescription> description = loadDescription(*bytes);
    if (description)
        return description;
    const Error &error = description.error();
    return Error{
        error.kind,
        Text::tr("%1 can not be used: %2").arg(QDir::toNativeSeparators(path), error.message)};
}

/// In the cores that are asked for, or in all; what concerns the whole always counts.
Result<QList<DescriptionChange>> changesIn(const CaptureOptions &options)
{
    const Result<LoadedDescription> before = loadFrom(options.file);
    if (!before)
        return before.error();
    const Result<LoadedDescription> after = loadFrom(options.otherFile);
    if (!after)
        return after.error();
    QList<DescriptionChange> changes = descriptionChanges(*before, *after);
    changes.removeIf([&](const DescriptionChange &change) {
        return change.core >= 0 && !options.cores.isEmpty() && !options.cores.contains(change.core);
    });
    return changes;
}

bool isSetting(const DescriptionChange &change)
{
    return change.origin == DescriptionChange::Origin::Saved;
}

QJsonObject jsonOf(const DescriptionChange &change)
{
    QJsonObject object{{"subject", nameOf(change.subject)},
                       {"action", nameOf(change.action)},
                       {"setting", isSetting(change)},
                       {"before", change.before},
                       {"after", change.after},
                       {"text", lineOf(change)}};
    const std::pair<const char *, int> numbers[] = {
        {"core", change.core}, {"port", change.port}, {"unit", change.unit}};
    for (const auto &[key, number] : numbers) {
        if (number >= 0)
            object.insert(QLatin1String(key), number);
    }
    if (!change.name.isEmpty())
        object.insert("name", change.name);
    if (change.subject == DescriptionChange::Subject::Bus)
        object.insert("signals", change.signalCount);
    return object;
}

} // namespace

TaskResult diffDescriptions(const CaptureOptions &options, ResultOutput &output)
{
    TaskResult result;
    QJsonArray told;
    if (const Result<QList<DescriptionChange>> changes = changesIn(options)) {
        for (const DescriptionChange &change : *changes) {
            output.line(wholeLineOf(change));
            told.append(jsonOf(change));
        }
        if (changes->isEmpty())
            output.line(Text::tr("equal"));
        result.status = changes->isEmpty() ? ExitStatus::Captured : ExitStatus::Different;
    } else {
        result.status = statusOf(changes.error().kind);
        result.message = changes.error().message;
    }
    result.document = {{"old", options.file}, {"new", options.otherFile}, {"changes", told}};
    return result;
}

} // namespace KEO
