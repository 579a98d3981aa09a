#include "captureoptions.h"

#include "optiontable.h"
#include "triggeroptionreader.h"

#include <design/recoverystore.h>

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <utility>

namespace KEO {

namespace {

using Text = OptionText;
using Task = CaptureOptions::Task;

void addOptions(QCommandLineParser &parser)
{
    for (const OptionRow &row : optionTable())
        parser.addOption(
            {row.names.split(u' '), Text::tr(row.text), QString::fromLatin1(row.value)});
    parser.addPositionalArgument(
        "FILE", Text::tr("Core description to capture with; with --compare the second project, "
                         "with --diff the newer description."));
}

/// Reads all options but those that say what the task is.
std::optional<Error> readOptions(const QCommandLineParser &parser, CaptureOptions &options)
{
    for (const OptionRow &row : optionTable()) {
        if (!row.read || !(row.tasks & bitOf(options.task)) || !parser.isSet(row.name()))
            continue;
        if (const auto error = row.read(options, parser.values(row.name())))
            return error;
    }
    return {};
}

/// A description named on the command line.
Result<QString> descriptionPath(const QString &file)
{
    if (!file.endsWith(".keo") && !file.endsWith(".zeo"))
        return usage(Text::tr("FILE must end in .keo or .zeo: %1").arg(file));
    return QFileInfo(file).absoluteFilePath();
}

/// The description FILE of a capture.
Result<QString> capturedDescription(const QStringList &files)
{
    if (files.size() != 1)
        return usage(files.isEmpty() ? Text::tr("FILE is missing.")
                                     : Text::tr("Only one FILE is taken."));
    return descriptionPath(files.first());
}

/// Options that the task of the option \a name has no use for.
std::optional<Error> refuseOthers(const QCommandLineParser &parser, const QString &name, Task task)
{
    for (const OptionRow &row : optionTable()) {
        if (row.tasks && !(row.tasks & bitOf(task)) && parser.isSet(row.name()))
            return usage(Text::tr("--%1 does not go with --%2.").arg(row.name(), name));
    }
    return {};
}

/// A project file that the option \a name reads, or one of the recovery store by its number there.
Result<QString> savedProject(const QString &name, const QString &path)
{
    static const QRegularExpression recovery(QStringLiteral("^recovery(?::([0-9]{1,4}))?$"));
    const QRegularExpressionMatch match = recovery.match(path);
    if (!match.hasMatch())
        return projectPath(name, path);
    const QList<Recovery> entries = RecoveryStore().entries();
    const int number = match.captured(1).isEmpty() ? 1 : match.captured(1).toInt();
    if (number < 1 || number > entries.size())
        return usage(Text::tr("There is no %1; --list-recovery tells what there is.").arg(path));
    return entries[number - 1].project;
}

/// The project of --open.
Result<QString> openedProject(const QCommandLineParser &parser)
{
    const QString name = QStringLiteral("open");
    if (const auto error = refuseOthers(parser, name, Task::ExportSaved))
        return *error;
    if (parser.values(name).size() != 1 || !parser.positionalArguments().isEmpty())
        return usage(Text::tr("--open takes one project and no FILE."));
    return savedProject(name, parser.value(name));
}

/// The two projects of --compare.
std::optional<Error> readCompared(const QCommandLineParser &parser, CaptureOptions &options)
{
    const QString name = QStringLiteral("compare");
    if (const auto error = refuseOthers(parser, name, Task::Compare))
        return error;
    if (parser.values(name).size() != 1 || parser.positionalArguments().size() != 1)
        return usage(Text::tr("--compare takes two projects."));
    if (const auto error = store(options.file, savedProject(name, parser.value(name))))
        return error;
    return store(options.otherFile, savedProject(name, parser.positionalArguments().first()));
}

/// The project of --rehearse.
Result<QString> rehearsedProject(const QCommandLineParser &parser)
{
    const QString name = QStringLiteral("rehearse");
    if (const auto error = refuseOthers(parser, name, Task::Rehearse))
        return *error;
    if (parser.values(name).size() != 1 || !parser.positionalArguments().isEmpty())
        return usage(Text::tr("--rehearse takes one project and no FILE."));
    return savedProject(name, parser.value(name));
}

/// The two descriptions of --diff.
std::optional<Error> readDiffed(const QCommandLineParser &parser, CaptureOptions &options)
{
    const QString name = QStringLiteral("diff");
    if (const auto error = refuseOthers(parser, name, Task::Diff))
        return error;
    if (parser.values(name).size() != 1 || parser.positionalArguments().size() != 1)
        return usage(Text::tr("--diff takes two descriptions."));
    if (const auto error = store(options.file, descriptionPath(parser.value(name))))
        return error;
    return store(options.otherFile, descriptionPath(parser.positionalArguments().first()));
}

/// Standard output takes one file and nothing beside it.
std::optional<Error> checkStandardOutput(const CaptureOptions &options)
{
    if (options.json)
        return usage(Text::tr("--json does not go with --out -."));
    if (options.formats.size() != 1)
        return usage(Text::tr("--out - takes one --format."));
    if (options.autoRounds.value_or(1) != 1)
        return usage(Text::tr("--out - takes one round."));
    return {};
}

/// What there is to do, and with which files.
std::optional<Error> readTask(const QCommandLineParser &parser, CaptureOptions &options)
{
    for (const auto &[name, task] : {std::pair("list-cables", Task::ListCables),
                                     std::pair("list-recovery", Task::ListRecovery)}) {
        if (!parser.isSet(name))
            continue;
        options.task = task;
        if (!parser.positionalArguments().isEmpty())
            return usage(Text::tr("--%1 takes no FILE.").arg(QLatin1String(name)));
        return refuseOthers(parser, QLatin1String(name), task);
    }
    if (parser.isSet("rehearse")) {
        options.task = Task::Rehearse;
        return store(options.file, rehearsedProject(parser));
    }
    if (parser.isSet("compare")) {
        options.task = Task::Compare;
        return readCompared(parser, options);
    }
    if (parser.isSet("diff")) {
        options.task = Task::Diff;
        return readDiffed(parser, options);
    }
    if (parser.isSet("open")) {
        options.task = Task::ExportSaved;
        return store(options.file, openedProject(parser));
    }
    if (const auto error = store(options.file, capturedDescription(parser.positionalArguments())))
        return error;
    if (!parser.isSet("save"))
        return {};
    options.formats.clear();
    return store(options.project, projectPath(QStringLiteral("save"), parser.value("save")));
}

/// The desktop program spells its options with one dash; the one that both have may be spelled so
/// here too.
QStringList withTwoDashes(QStringList arguments)
{
    for (qsizetype i = 1; i < arguments.size() && arguments.at(i) != QLatin1String("--"); ++i) {
        if (arguments.at(i) == QLatin1String("-transcript") ||
            arguments.at(i).startsWith(QLatin1String("-transcript=")))
            arguments[i].prepend(u'-');
    }
    return arguments;
}

} // namespace

Result<CaptureOptions> parseCaptureOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(Text::tr(
        "Captures from an on-chip logic analyzer without a window: loads the core description "
        "FILE (.keo or .zeo), arms its cores through a cable server, waits for the trigger (a "
        "lite core has none and starts after the delay), reads the samples and exports them. "
        "Or exports what was saved as a project before, compares two such projects, tells where a "
        "trigger would come in one, or what differs between two core descriptions.\n\n"
        "Exit status: 0 captured, or equal, or a hit, 1 different, or no hit, 2 usage, 3 no "
        "server, 4 timed out, 5 the device refused, 6 a file could not be read or written, 129 "
        "stopped by the end of the terminal, 130 by Ctrl-C, 143 by SIGTERM."));
    addOptions(parser);
    CaptureOptions options;
    if (!parser.parse(withTwoDashes(arguments)))
        return usage(parser.errorText());
    if (parser.isSet("completion")) {
        options.task = Task::ShowCompletion;
        if (parser.value("completion") != completedShell())
            return usage(
                Text::tr("--completion takes bash, not \"%1\".").arg(parser.value("completion")));
        return options;
    }
    if (parser.isSet("help")) {
        options.task = Task::ShowHelp;
        // The options are read before there is an application that knows the program's name.
        options.helpText = parser.helpText().replace(QLatin1String("<executable_name>"),
                                                     QLatin1String("signalscope-capture"));
        return options;
    }
    if (parser.isSet("version")) {
        options.task = Task::ShowVersion;
        return options;
    }
    if (const auto error = readTask(parser, options))
        return *error;
    if (const auto error = readOptions(parser, options))
        return *error;
    if (bitOf(options.task) & kTrigger) {
        if (const auto error = store(options.triggers, readTriggerOptions(parser)))
            return *error;
    }
    if (!(bitOf(options.task) & (kCapture | kExport)))
        return options;
    if (options.directory == QLatin1String("-") && !options.dryRun) {
        options.toStandardOutput = true;
        if (const auto error = checkStandardOutput(options))
            return *error;
    }
    options.directory = QDir(options.directory).absolutePath();
    if (!parser.isSet("name"))
        options.baseName = asExportName(QFileInfo(options.file).completeBaseName());
    if (options.baseName.isEmpty() || options.baseName != asExportName(options.baseName))
        return usage(
            Text::tr("--name takes letters, digits and _, not \"%1\".").arg(options.baseName));
    return options;
}

} // namespace KEO
