#include "optiontable.h"

#include <capture/capturepace.h>

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <utility>

namespace KEO {

namespace {

using Text = OptionText;
using Values = const QStringList &; // of one option, in the order given; at least one

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

QStringList choicesOf(const OptionRow &row)
{
    QStringList choices;
    if (row.name() == QLatin1String("completion"))
        choices = {completedShell()};
    if (row.name() == QLatin1String("format"))
        choices = formatNameList();
    return choices;
}

} // namespace

Error usage(const QString &message)
{
    return {Error::Usage, message};
}

int bitOf(CaptureOptions::Task task)
{
    using Task = CaptureOptions::Task;
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
    case Task::ListCables:
        return kListCables;
    case Task::ListRecovery:
        return kListRecovery;
    default:
        return 0; // the program tells of itself
    }
}

const QList<OptionRow> &optionTable()
{
    using O = CaptureOptions;
    static const QList<OptionRow> table = {
        {"device", "NAME",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Device model, as the tool flow names it."),
         kCapture, takeText<&O::device>},
        {"cable", "NAME",
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "Cable to use; default the first that answers."),
         kCapture, takeText<&O::cable>},
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
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "List the captures that were not saved."),
         kListRecovery},
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
        {"no-server-start", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions",
                           "Use only a cable server that runs already, as one of another machine."),
         kCapture | kList, setFlag<&O::usesRunningServers>},
        {"list-cables", nullptr,
         QT_TRANSLATE_NOOP("KEO::CaptureOptions", "List the cables that answer."), kListCables},
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

QString completedShell()
{
    return QStringLiteral("bash");
}

Result<QString> projectPath(const QString &option, const QString &path)
{
    if (!path.endsWith(".analyzer_prj"))
        return usage(Text::tr("--%1 takes a file that ends in .analyzer_prj, not \"%2\".")
                         .arg(option, path));
    return QFileInfo(path).absoluteFilePath();
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
