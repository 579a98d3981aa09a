#pragma once

#include "captureoptions.h"

#include <base/result.h>

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

/// Texts of the command line.
struct OptionText
{
    Q_DECLARE_TR_FUNCTIONS(KEO::CaptureOptions)
};

/// The command line asks for something that can't be done; \a message is a sentence for the user.
[[nodiscard]] Error usage(const QString &message);

/// Stores \a value in \a target, or tells why there is none.
template <typename Target, typename Value>
std::optional<Error> store(Target &target, const Result<Value> &value)
{
    if (!value)
        return value.error();
    target = *value;
    return {};
}

/// Kinds of task, a bit each.
enum TaskKind : int {
    kCapture = 1,
    kExport = 2,    ///< of a saved capture
    kCompare = 4,   ///< of two saved captures
    kDiff = 8,      ///< of two descriptions
    kRehearse = 16, ///< of a trigger on a saved capture
    kListCables = 32,
    kListRecovery = 64,
    kList = kListCables | kListRecovery,
    kTrigger = kCapture | kRehearse
};
[[nodiscard]] int bitOf(CaptureOptions::Task task);

/// One option of the command line.
struct OptionRow
{
    QString names;               ///< a blank between them, the long one last
    const char *value = nullptr; ///< its name in the help; null for an option without
    const char *text = nullptr;  ///< the help, not yet translated
    int tasks = 0;               ///< that take the option, see TaskKind
    /// Reads the option, given once or more often, if it is given to such a task, after the rows
    /// above. Null: it says what the task is, or counts for the core named before it.
    std::optional<Error> (*read)(CaptureOptions &options, const QStringList &values) = nullptr;

    [[nodiscard]] QString name() const { return names.section(u' ', -1); }
};

/// Every option, in the order of the help.
[[nodiscard]] const QList<OptionRow> &optionTable();

/// An option as it is typed.
struct OptionName
{
    QStringList spellings; ///< with their dashes
    QString value;         ///< what it takes, as the help names it; empty: nothing
    QStringList choices;   ///< the values that there are, if these can be told
};
/// Every option, in the order of the help.
[[nodiscard]] QList<OptionName> captureOptionNames();

/// The shell that --completion knows.
[[nodiscard]] QString completedShell();

/// \a path, absolute, if it is a project file; \a option names where it was given.
[[nodiscard]] Result<QString> projectPath(const QString &option, const QString &path);

} // namespace KEO
