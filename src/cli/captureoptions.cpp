#include "captureoptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <cmath>

namespace KEO {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("CaptureOptions", text);
}

Error usage(const QString &message)
{
    return {Error::Usage, message};
}

struct Declarations
{
    QCommandLineOption device{"device", tr("Device model, as the tool flow names it."), "NAME"};
    QCommandLineOption cable{"cable", tr("Cable to use; default the first that answers."), "NAME"};
    QCommandLineOption core{"core", tr("Core to capture, repeatable; default the first."), "N"};
    QCommandLineOption chain{
        "chain", tr("Instruction codes of the JTAG chain, 0 for the target; default 0."), "LIST"};
    QCommandLineOption delay{"delay", tr("Start a lite core after MS milliseconds; default 0."),
                             "MS"};
    QCommandLineOption forceAfter{"force-after", tr("Force the trigger after S seconds."), "S"};
    QCommandLineOption timeout{"timeout", tr("Give up after S seconds."), "S"};
    QCommandLineOption rounds{"auto", tr("Capture N rounds, each exported under its own number."),
                              "N"};
    QCommandLineOption format{
        "format", tr("Export as csv, vcd or prn, repeatable; default vcd, with --save none."),
        "FORMAT"};
    QCommandLineOption out{"out", tr("Folder of the exports, made if missing; default here."),
                           "DIR"};
    QCommandLineOption name{
        "name", tr("Base name of the exports, letters, digits and _; default FILE's."), "BASE"};
    QCommandLineOption period{"period", tr("Clock period, in us, ns or ps; default 1us."), "10ns"};
    QCommandLineOption picture{"picture", tr("Draw the capture, zoomed to fit."), "FILE.png"};
    QCommandLineOption size{"size", tr("Size of the picture in pixels; default 1280x720."), "WxH"};
    QCommandLineOption save{"save", tr("Save the capture as a project, of rounds the last one."),
                            "FILE.analyzer_prj"};
    QCommandLineOption open{"open", tr("Export a saved project instead of capturing."),
                            "FILE.analyzer_prj"};
    QCommandLineOption listCables{"list-cables", tr("List the cables that answer.")};
    QCommandLineOption json{"json", tr("Print one JSON document on standard output.")};
    QCommandLineOption quiet{"quiet", tr("No progress on standard error.")};
    QCommandLineOption help{{"h", "help"}, tr("Show this help.")};
    QCommandLineOption version{{"v", "version"}, tr("Show the version.")};

    [[nodiscard]] QList<QCommandLineOption> all() const
    {
        return {device, cable,  core,       chain, delay,  forceAfter, timeout,
                rounds, format, out,        name,  period, picture,    size,
                save,   open,   listCables, json,  quiet,  help,       version};
    }
    /// What a capture needs and a saved project has no use for.
    [[nodiscard]] QList<QCommandLineOption> ofCaptures() const
    {
        return {device, cable, chain, delay, forceAfter, timeout, rounds, save};
    }
};

// Times beyond a day are taken for a slip of the unit.
constexpr double kMaxSeconds = 86400;

Result<qint64> milliseconds(const QString &option, const QString &text)
{
    bool ok = false;
    const double seconds = text.toDouble(&ok);
    if (!ok || !std::isfinite(seconds) || seconds <= 0 || seconds > kMaxSeconds)
        return usage(
            tr("--%1 takes seconds above 0 and up to 86400, not \"%2\".").arg(option, text));
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
            return usage(tr("--%1 takes numbers from 0 to %2, not \"%3\".")
                             .arg(option, QString::number(maximum), text));
        numbers.append(number);
    }
    return numbers;
}

Result<QList<ExportFormat>> formatList(const QStringList &texts)
{
    QList<ExportFormat> formats;
    for (const QString &text : texts) {
        ExportFormat format;
        if (text == "csv")
            format = ExportFormat::Csv;
        else if (text == "vcd")
            format = ExportFormat::Vcd;
        else if (text == "prn")
            format = ExportFormat::Prn;
        else
            return usage(tr("--format takes csv, vcd or prn, not \"%1\".").arg(text));
        if (!formats.contains(format))
            formats.append(format);
    }
    return formats;
}

Result<ClockPeriod> clockPeriod(const QString &text, const QList<ExportFormat> &formats)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,7})(us|ns|ps)$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch() || match.captured(1).toInt() < 1)
        return usage(tr("--period takes 1 to 9999999 and us, ns or ps, such as 10ns, not \"%1\".")
                         .arg(text));
    const ClockPeriod period{match.captured(1).toInt(), match.captured(2)};
    // The clock of a VCD changes in the middle of a sample, in whole picoseconds.
    if (formats.contains(ExportFormat::Vcd) && period.picoseconds() < 2)
        return usage(tr("--period must be at least 2ps for the vcd format."));
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
        return usage(tr("--size takes WxH from 200x100 to %1x%1 pixels, not \"%2\".")
                         .arg(QString::number(kMaxPictureSide), text));
    return size;
}

Result<QString> projectPath(const QString &option, const QString &path)
{
    if (!path.endsWith(".analyzer_prj"))
        return usage(
            tr("--%1 takes a file that ends in .analyzer_prj, not \"%2\".").arg(option, path));
    return QFileInfo(path).absoluteFilePath();
}

/// The file to work on: the description FILE, or the project of --open.
Result<QString> inputPath(const QCommandLineParser &parser, const Declarations &declared)
{
    const QStringList files = parser.positionalArguments();
    if (parser.isSet(declared.open)) {
        if (!files.isEmpty())
            return usage(tr("--open takes no FILE."));
        for (const QCommandLineOption &option : declared.ofCaptures()) {
            if (parser.isSet(option))
                return usage(tr("--%1 does not go with --open.").arg(option.names().first()));
        }
        return projectPath(QStringLiteral("open"), parser.value(declared.open));
    }
    if (files.size() != 1)
        return usage(files.isEmpty() ? tr("FILE is missing.") : tr("Only one FILE is taken."));
    if (!files.first().endsWith(".keo") && !files.first().endsWith(".zeo"))
        return usage(tr("FILE must end in .keo or .zeo: %1").arg(files.first()));
    return QFileInfo(files.first()).absoluteFilePath();
}

} // namespace

Result<CaptureOptions> parseCaptureOptions(const QStringList &arguments)
{
    const Declarations declared;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Captures from an on-chip logic analyzer without a window: loads the core description "
           "FILE (.keo or .zeo), arms its cores through a cable server, waits for the trigger (a "
           "lite core has none and starts after the delay), reads the samples and exports them. "
           "Or exports what was saved as a project before.\n\n"
           "Exit status: 0 captured, 2 usage, 3 no server, "
           "4 timed out, 5 the device refused, 6 a file could not be read or written, 130 stopped "
           "by Ctrl-C."));
    parser.addOptions(declared.all());
    parser.addPositionalArgument("FILE", tr("Core description to capture with."));
    CaptureOptions options;
    if (!parser.parse(arguments))
        return usage(parser.errorText());
    if (parser.isSet(declared.help)) {
        options.task = CaptureOptions::Task::ShowHelp;
        // The options are read before there is an application that knows the program's name.
        options.helpText = parser.helpText().replace(QLatin1String("<executable_name>"),
                                                     QLatin1String("signalscope-capture"));
        return options;
    }
    if (parser.isSet(declared.version)) {
        options.task = CaptureOptions::Task::ShowVersion;
        return options;
    }

    options.json = parser.isSet(declared.json);
    options.quiet = parser.isSet(declared.quiet);
    options.cable = parser.value(declared.cable);
    if (parser.isSet(declared.listCables)) {
        if (!parser.positionalArguments().isEmpty() || parser.isSet(declared.open))
            return usage(tr("--list-cables takes no FILE."));
        options.task = CaptureOptions::Task::ListCables;
        return options;
    }
    const auto file = inputPath(parser, declared);
    if (!file)
        return file.error();
    options.file = *file;
    if (parser.isSet(declared.open))
        options.task = CaptureOptions::Task::ExportSaved;
    if (parser.isSet(declared.save)) {
        const auto project = projectPath(QStringLiteral("save"), parser.value(declared.save));
        if (!project)
            return project.error();
        options.project = *project;
        options.formats.clear();
    }
    options.device = parser.value(declared.device);

    const auto cores = numberList("core", parser.values(declared.core), 15);
    if (!cores)
        return cores.error();
    for (const int core : *cores) {
        if (!options.cores.contains(core))
            options.cores.append(core);
    }
    if (parser.isSet(declared.chain)) {
        const auto chain = numberList("chain", parser.value(declared.chain).split(u','), 65535);
        if (!chain)
            return chain.error();
        options.chain = *chain;
    }
    if (parser.isSet(declared.delay)) {
        const auto delay = numberList("delay", {parser.value(declared.delay)}, kMaxDelay);
        if (!delay)
            return delay.error();
        options.delay = delay->first();
    }
    for (const auto &[option, name, target] :
         {std::tuple(&declared.forceAfter, "force-after", &options.forceAfter),
          std::tuple(&declared.timeout, "timeout", &options.timeout)}) {
        if (!parser.isSet(*option))
            continue;
        const auto time = milliseconds(QString::fromLatin1(name), parser.value(*option));
        if (!time)
            return time.error();
        *target = *time;
    }
    if (parser.isSet(declared.rounds)) {
        bool ok = false;
        const int rounds = parser.value(declared.rounds).toInt(&ok);
        if (!ok || rounds < 1)
            return usage(tr("--auto takes a number of rounds from 1, not \"%1\".")
                             .arg(parser.value(declared.rounds)));
        options.autoRounds = rounds;
    }
    if (parser.isSet(declared.format)) {
        const auto formats = formatList(parser.values(declared.format));
        if (!formats)
            return formats.error();
        options.formats = *formats;
    }
    if (parser.isSet(declared.period)) {
        const auto period = clockPeriod(parser.value(declared.period), options.formats);
        if (!period)
            return period.error();
        options.period = *period;
    }
    if (parser.isSet(declared.picture)) {
        const QString picture = parser.value(declared.picture);
        if (!picture.endsWith(QStringLiteral(".png"), Qt::CaseInsensitive))
            return usage(tr("--picture takes a file that ends in .png, not \"%1\".").arg(picture));
        options.picture = QFileInfo(picture).absoluteFilePath();
    }
    if (parser.isSet(declared.size)) {
        if (options.picture.isEmpty())
            return usage(tr("--size goes with --picture."));
        const auto size = pictureSize(parser.value(declared.size));
        if (!size)
            return size.error();
        options.pictureSize = *size;
    }
    options.directory = QDir(parser.value(declared.out)).absolutePath();
    options.baseName = parser.isSet(declared.name)
                           ? parser.value(declared.name)
                           : asExportName(QFileInfo(options.file).completeBaseName());
    if (options.baseName.isEmpty() || options.baseName != asExportName(options.baseName))
        return usage(tr("--name takes letters, digits and _, not \"%1\".").arg(options.baseName));
    return options;
}

} // namespace KEO
