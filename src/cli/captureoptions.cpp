#include "captureoptions.h"

#include "triggeroptionreader.h"

#include <capture/capturepace.h>
#include <design/recoverystore.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::CaptureOptions)
};

Error usage(const QString &message)
{
    return {Error::Usage, message};
}

// Times beyond a day are taken for a slip of the unit.
constexpr double kMaxSeconds = 86400;

Result<qint64> milliseconds(const QString &option, const QString &text)
{
    bool ok = false;
    const double seconds = text.toDouble(&ok);
    if (!ok || !std::isfinite(seconds) || seconds <= 0 || seconds > kMaxSeconds)
        return usage(
            Text::tr("--%1 takes seconds above 0 and up to 86400, not \"%2\".").arg(option, text));
    return qint64(std::ceil(seconds * 1000));
}

// As long as a delay in the window can be.
constexpr int kMaxDelay = 3600000;

Result<QList<int>> numberList(const QString &option, const QStringList &texts, int maximum)
{
    QList<int> numbers;
    for (const QString &text : texts) {
        bool ok = false;
        const int number = text.trimmed().toInt(&ok);
        if (!ok || number < 0 || number > maximum)
            return usage(Text::tr("--%1 takes numbers from 0 to %2, not \"%3\".")
                             .arg(option, QString::number(maximum), text));
        numbers.append(number);
    }
    return numbers;
}

const QList<std::pair<QString, ExportFormat>> &formatNames()
{
    static const QList<std::pair<QString, ExportFormat>> names = {
        {QStringLiteral("csv"), ExportFormat::Csv},
        {QStringLiteral("vcd"), ExportFormat::Vcd},
        {QStringLiteral("prn"), ExportFormat::Prn},
        {QStringLiteral("vcd-plain"), ExportFormat::VcdPlain},
        {QStringLiteral("csv-plain"), ExportFormat::CsvPlain},
        {QStringLiteral("fst"), ExportFormat::Fst}};
    return names;
}

QStringList formatNameList()
{
    QStringList names;
    for (const auto &[name, format] : formatNames())
        names.append(name);
    return names;
}

Result<QList<ExportFormat>> formatList(const QStringList &texts)
{
    QList<ExportFormat> formats;
    for (const QString &text : texts) {
        const auto named =
            std::ranges::find(formatNames(), text, &std::pair<QString, ExportFormat>::first);
        if (named == formatNames().end())
            return usage(Text::tr("--format takes one of %1, not \"%2\".")
                             .arg(formatNameList().join(QStringLiteral(", ")), text));
        if (!formats.contains(named->second))
            formats.append(named->second);
    }
    return formats;
}

Result<ClockPeriod> clockPeriod(const QString &text, const QList<ExportFormat> &formats)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,7})(us|ns|ps)$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch() || match.captured(1).toInt() < 1)
        return usage(
            Text::tr("--period takes 1 to 9999999 and us, ns or ps, such as 10ns, not \"%1\".")
                .arg(text));
    const ClockPeriod period{match.captured(1).toInt(), match.captured(2)};
    // The clock of a VCD changes in the middle of a sample, in whole picoseconds.
    if (formats.contains(ExportFormat::Vcd) && period.picoseconds() < 2)
        return usage(Text::tr("--period must be at least 2ps for the vcd format."));
    return period;
}

// Small enough for any viewer of PNG files, large enough for a wall.
constexpr int kMaxPictureSide = 16384;

Result<QSize> pictureSize(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,5})x([0-9]{1,5})$"));
    const auto match = pattern.match(text);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    if (size.width() < 200 || size.height() < 100 || size.width() > kMaxPictureSide ||
        size.height() > kMaxPictureSide)
        return usage(Text::tr("--size takes WxH from 200x100 to %1x%1 pixels, not \"%2\".")
                         .arg(QString::number(kMaxPictureSide), text));
    return size;
}

Result<QString> projectPath(const QString &option, const QString &path)
{
    if (!path.endsWith(".analyzer_prj"))
        return usage(Text::tr("--%1 takes a file that ends in .analyzer_prj, not \"%2\".")
                         .arg(option, path));
    return QFileInfo(path).absoluteFilePath();
}

using Task = CaptureOptions::Task;
using Values = const QStringList &; // of one option, in the order given; at least one

constexpr int kCapture = 1;
constexpr int kExport = 2; // of a saved capture
constexpr int kList = 4;
constexpr int kCompare = 8;   // of two saved captures
constexpr int kDiff = 16;     // of two descriptions
constexpr int kRehearse = 32; // of a trigger on a saved capture
constexpr int kTrigger = kCapture | kRehearse;

int bitOf(Task task)
{
    switch (task) {
    case Task::Capture:
        return kCapture;
    case Task::ExportSaved:
        return kExport;
    case Task::Compare:
        return kCompare;
    case Task::Rehearse:
        return kRehearse;
    case Task::Diff:
        return kDiff;
    default:
        return kList;
    }
}

/// Stores \a value in \a target, or tells why there is none.
template <typename Target, typename Value>
std::optional<Error> store(Target &target, const Result<Value> &value)
{
    if (!value)
        return value.error();
    target = *value;
    return {};
}

template <auto member>
std::optional<Error> takeText(CaptureOptions &options, Values values)
{
    options.*member = values.last();
    return {};
}

template <auto member>
std::optional<Error> setFlag(CaptureOptions &options, Values)
{
    options.*member = true;
    return {};
}

std::optional<Error> readCores(CaptureOptions &options, Values values)
{
    const auto cores = numberList("core", values, 15);
    if (!cores)
        return cores.error();
    for (const int core : *cores) {
        if (!options.cores.contains(core))
            options.cores.append(core);
    }
    return {};
}

std::optional<Error> readDelay(CaptureOptions &options, Values values)
{
    const auto delay = numberList("delay", {values.last()}, kMaxDelay);
    if (!delay)
        return delay.error();
    options.delay = delay->first();
    return {};
}

std::optional<Error> readPace(CaptureOptions &options, Values values)
{
    const auto pace = numberList("pace", {values.last()}, CapturePace::kMaxSectionPause);
    if (!pace)
        return pace.error();
    options.pace = pace->first();
    return {};
}

std::optional<Error> readRounds(CaptureOptions &options, Values values)
{
    bool ok = false;
    const int rounds = values.last().toInt(&ok);
    if (!ok || rounds < 1)
        return usage(
            Text::tr("--auto takes a number of rounds from 1, not \"%1\".").arg(values.last()));
    options.autoRounds = rounds;
    return {};
}

std::optional<Error> readPicture(CaptureOptions &options, Values values)
{
    if (!values.last().endsWith(QStringLiteral(".png"), Qt::CaseInsensitive))
        return usage(
            Text::tr("--picture takes a file that ends in .png, not \"%1\".").arg(values.last()));
    options.picture = QFileInfo(values.last()).absoluteFilePath();
    return {};
}

std::optional<Error> readFormulaProof(CaptureOptions &options, Values)
{
    if (!options.formats.contains(ExportFormat::CsvPlain))
        return usage(Text::tr("--formula-proof goes with --format csv-plain."));
    options.formulas = Formulas::Disarmed;
    return {};
}

std::optional<Error> readSize(CaptureOptions &options, Values values)
{
    if (options.picture.isEmpty())
        return usage(Text::tr("--size goes with --picture."));
    return store(options.pictureSize, pictureSize(values.last()));
}

std::optional<Error> readTranscript(CaptureOptions &options, Values values)
{
    if (values.last().isEmpty())
        return usage(Text::tr("--transcript takes a file."));
    options.transcript = QFileInfo(values.last()).absoluteFilePath();
    return {};
}

const QString kCompletedShell = QStringLiteral("bash");

struct OptionRow
{
    QString names;               ///< a blank between them, the long one last
    const char *value = nullptr; ///< its name in the help; null for an option without
    const char *text = nullptr;  ///< the help, not yet translated
    int tasks = 0;               ///< that take the option
    /// Reads the option if it is given to such a task, after the rows above. Null: it says what the
    /// task is, or counts for the core named before it.
    std::optional<Error> (*read)(CaptureOptions &options, Values values) = nullptr;

    [[nodiscard]] QString name() const { return names.section(u' ', -1); }
};

/// Every option, in the order of the help.
const QList<OptionRow> &optionTable()
{
    using O = CaptureOptions;
    static const QList<OptionRow> table = {
        {"device", "NAME",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Device model, as the tool flow names it."),
         kCapture, takeText<&O::device>},
        {"cable", "NAME",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Cable to use; default the first that answers."),
         kCapture | kList, takeText<&O::cable>},
        {"core", "N",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Core to capture, repeatable; default the first."),
         kTrigger | kExport | kCompare | kDiff, readCores},
        {"set", "UNIT=SETTING",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Set a match unit of the core named last, repeatable: M0='==RX01', "
                           "M1='in 0x10..0x2F', M2='>0d9,count=5,continuous'."),
         kTrigger},
        {"expression", "TEXT",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Put only this expression of the core named last in force, or none, "
                           "repeatable: 'M0&!M1'."),
         kTrigger},
        {"windows", "N",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Windows of the core named last, 1 to 8."),
         kTrigger},
        {"amount", "N",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Samples in a window of the core named last: 32, 64, 128 and so on."),
         kTrigger},
        {"position", "N",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Samples before the trigger of the core named last."),
         kTrigger},
        {"chain", "LIST",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Instruction codes of the JTAG chain, 0 for the target; default 0."),
         kCapture,
         [](O &options, Values values) {
             return store(options.chain, numberList("chain", values.last().split(u','), 65535));
         }},
        {"delay", "MS",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Start a lite core after MS milliseconds; default 0."),
         kCapture, readDelay},
        {"force-after", "S",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Force the trigger after S seconds."), kCapture,
         [](O &options, Values values) {
             return store(options.forceAfter, milliseconds("force-after", values.last()));
         }},
        {"timeout", "S", QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Give up after S seconds."),
         kCapture,
         [](O &options, Values values) {
             return store(options.timeout, milliseconds("timeout", values.last()));
         }},
        {"pace", "MS",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Pause of MS milliseconds between sections, for a slow cable; "
                           "default 0."),
         kCapture, readPace},
        {"auto", "N",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Capture N rounds, each exported under its own number."),
         kCapture, readRounds},
        {"format", "FORMAT",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Export as csv, vcd, prn, vcd-plain, csv-plain or fst, repeatable; "
                           "default vcd, with --save none."),
         kCapture | kExport,
         [](O &options, Values values) { return store(options.formats, formatList(values)); }},
        {"formula-proof", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Keep titles in csv-plain from being formulas of a spreadsheet."),
         kCapture | kExport, readFormulaProof},
        {"out", "DIR",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Folder of the exports, made if missing; default here. - writes one "
                           "window in one format to standard output."),
         kCapture | kExport, takeText<&O::directory>},
        {"name", "BASE",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Base name of the exports, letters, digits and _; default FILE's."),
         kCapture | kExport, takeText<&O::baseName>},
        {"period", "10ns",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Clock period, in us, ns or ps; default 1us."),
         kCapture | kExport,
         [](O &options, Values values) {
             return store(options.period, clockPeriod(values.last(), options.formats));
         }},
        {"picture", "FILE.png",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Draw the capture, zoomed to fit."),
         kCapture | kExport, readPicture},
        {"size", "WxH",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Size of the picture in pixels; default 1280x720."),
         kCapture | kExport, readSize},
        {"save", "FILE.analyzer_prj",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Save the capture as a project, of rounds the last one."),
         kCapture},
        {"open", "FILE.analyzer_prj",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Export a saved project instead of capturing; or recovery, the last "
                           "capture that the window did not save, recovery:2 the one before."),
         kExport},
        {"list-recovery", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "List the captures that were not saved."), kList},
        {"compare", "A.analyzer_prj",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Compare a saved project with another one, the FILE."),
         kCompare},
        {"rehearse", "FILE.analyzer_prj",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Tell where the trigger would come in the waves of a saved project."),
         kRehearse},
        {"diff", "OLD.keo",
         QT_TRANSLATE_NOOP(
             "KEO::CaptureOptions",
             "Tell what differs between a core description and another one, the FILE."),
         kDiff},
        {"dry-run", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Print what would be sent to the cores, without a server."),
         kCapture, setFlag<&O::dryRun>},
        {"transcript", "FILE",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Write every packet to and from the cable server to FILE."),
         kCapture, readTranscript},
        {"list-cables", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "List the cables that answer."), kList},
        {"json", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Print one JSON document on standard output."),
         kCapture | kExport | kCompare | kDiff | kRehearse | kList, setFlag<&O::json>},
        {"quiet", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "No progress on standard error."),
         kCapture | kExport | kCompare | kDiff | kRehearse | kList, setFlag<&O::quiet>},
        {"completion", "SHELL",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Print a script that completes these options in bash.")},
        {"h help", nullptr, QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Show this help.")},
        {"v version", nullptr, QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Show the version.")},
    };
    return table;
}

QStringList choicesOf(const OptionRow &row)
{
    QStringList choices;
    if (row.name() == QLatin1String("completion"))
        choices = {kCompletedShell};
    if (row.name() == QLatin1String("format"))
        choices = formatNameList();
    return choices;
}

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
    if (!parser.positionalArguments().isEmpty())
        return usage(Text::tr("--open takes no FILE."));
    if (const auto error = refuseOthers(parser, QStringLiteral("open"), Task::ExportSaved))
        return *error;
    return savedProject(QStringLiteral("open"), parser.value("open"));
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
        if (!parser.positionalArguments().isEmpty() || parser.isSet("open") ||
            parser.isSet("compare") || parser.isSet("diff") || parser.isSet("rehearse"))
            return usage(Text::tr("--%1 takes no FILE.").arg(QLatin1String(name)));
        return {};
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
        "server, 4 timed out, 5 the device refused, 6 a file could not be read or written, 130 "
        "stopped by Ctrl-C, 143 by SIGTERM."));
    addOptions(parser);
    CaptureOptions options;
    if (!parser.parse(withTwoDashes(arguments)))
        return usage(parser.errorText());
    if (parser.isSet("completion")) {
        options.task = Task::ShowCompletion;
        if (parser.value("completion") != kCompletedShell)
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
    if (options.directory == QLatin1String("-")) {
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

QList<OptionName> captureOptionNames()
{
    QList<OptionName> options;
    for (const OptionRow &row : optionTable()) {
        OptionName &option = options.emplaceBack();
        for (const QString &name : row.names.split(u' '))
            option.spellings.append((name.size() > 1 ? QLatin1String("--") : QLatin1String("-")) +
                                    name);
        option.value = QString::fromLatin1(row.value);
        option.choices = choicesOf(row);
    }
    return options;
}

} // namespace KEO
