#include <capture/registerimage.h>
#include <cli/bashcompletion.h>
#include <cli/captureoptions.h>
#include <config/capturelimits.h>
#include <design/capturecommand.h>
#include <support/files.h>
#include <support/testmain.h>
#include <trigger/randomunit.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

using namespace KEO;

class tst_CaptureOptions : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data();
    void refuses();
    void reads();
    void readsWhatIsLeftOut();
    void keepsTheOrderOfCores();
    void takesWhatIsWritten();
    void triggerRules_data();
    void triggerRules();
    void manPageNamesEveryOption();
    void helpAndManPageNameEveryExitStatus();
    void bashCompletes_data();
    void bashCompletes();
};

void tst_CaptureOptions::refuses_data()
{
    addColumns<QString, QString>({"line", "word"}); // what the message must name
    addRow("no file", "", "FILE");
    addRow("two files", "a.keo b.keo", "FILE");
    addRow("other extension", "a.xml", "a.xml");
    addRow("unknown option", "--fast a.keo", "fast");
    addRow("core not a number", "--core x a.keo", "\"x\"");
    addRow("core out of range", "--core 16 a.keo", "\"16\"");
    addRow("chain with a gap", "--chain 0,,8 a.keo", "chain");
    addRow("pause too long", "--pace 10001 a.keo", "10000");
    addRow("delay too long", "--delay 3600001 a.keo", "3600000");
    addRow("time zero", "--timeout 0 a.keo", "timeout");
    addRow("time not finite", "--timeout nan a.keo", "nan");
    addRow("rounds zero", "--auto 0 a.keo", "auto");
    addRow("format", "--format pdf a.keo", "pdf");
    addRow("period without unit", "--period 10 a.keo", "\"10\"");
    addRow("period too long", "--period 10000000us a.keo", "10000000us");
    addRow("half a picosecond", "--period 1ps --format vcd a.keo", "2ps");
    addRow("formula-proof without a plain csv", "--format csv --formula-proof a.keo", "csv-plain");
    addRow("two formats to standard output", "--out - --format csv --format vcd a.keo", "--out -");
    addRow("no format to standard output", "--out - --save a.analyzer_prj a.keo", "--out -");
    addRow("rounds to standard output", "--out - --auto 2 a.keo", "--out -");
    addRow("json beside samples", "--out - --json --open a.analyzer_prj", "--json");
    addRow("name with a slash", "--name a/b a.keo", "a/b");
    addRow("picture of another kind", "--picture a.jpg a.keo", "a.jpg");
    addRow("size without picture", "--size 800x600 a.keo", "--picture");
    addRow("size too large", "--picture a.png --size 99999x100 a.keo", "99999x100");
    addRow("project of another kind", "--save a.prj b.keo", "a.prj");
    addRow("open and a file", "--open a.analyzer_prj b.keo", "FILE");
    addRow("open and save", "--open a.analyzer_prj --save b.analyzer_prj", "--save");
    addRow("open and a match unit", "--open a.analyzer_prj --set M0===1", "--set");
    addRow("setting before its core", "--amount 32 --core 1 a.keo", "--amount");
    addRow("amount in words", "--core 1 --amount many a.keo", "\"many\"");
    addRow("open and a cable", "--open a.analyzer_prj --cable LK7", "--cable");
    addRow("compare with nothing", "--compare a.analyzer_prj", "two projects");
    addRow("compare three", "--compare a.analyzer_prj b.analyzer_prj c.analyzer_prj", "two");
    addRow("compare no project", "--compare a.analyzer_prj b.keo", "b.keo");
    addRow("compare and export", "--compare a.analyzer_prj --format vcd b.analyzer_prj",
           "--format");
    addRow("diff with nothing", "--diff a.keo", "two descriptions");
    addRow("diff of a project", "--diff a.analyzer_prj b.keo", "a.analyzer_prj");
    addRow("diff and compare", "--diff a.keo --compare b.analyzer_prj b.keo", "--diff");
    addRow("diff and save", "--diff a.keo --save a.analyzer_prj b.keo", "--save");
    addRow("compare and open", "--compare a.analyzer_prj --open b.analyzer_prj", "--open");
    addRow("rehearse with a file", "--rehearse a.analyzer_prj b.keo", "FILE");
    addRow("rehearse two", "--rehearse a.analyzer_prj --rehearse b.analyzer_prj", "one project");
    addRow("rehearse on a cable", "--rehearse a.analyzer_prj --timeout 3", "--timeout");
    addRow("rehearse and open", "--rehearse a.analyzer_prj --open b.analyzer_prj", "--open");
    addRow("open two", "--open a.analyzer_prj --open b.analyzer_prj", "one project");
    addRow("list with project", "--list-cables --open a.analyzer_prj", "--open");
    addRow("list with a file", "--list-recovery a.keo", "FILE");
    addRow("list one cable", "--list-cables --cable LK7", "--cable");
    addRow("two lists", "--list-recovery --list-cables", "--list-recovery");
}

void tst_CaptureOptions::refuses()
{
    QFETCH(QString, line);
    QFETCH(QString, word);
    const auto options =
        parseCaptureOptions(QStringList("program") + line.split(u' ', Qt::SkipEmptyParts));
    QVERIFY(!options);
    QCOMPARE(options.error().kind, Error::Usage);
    QVERIFY2(options.error().message.contains(word), qPrintable(options.error().message));
}

void tst_CaptureOptions::reads()
{
    const auto options = parseCaptureOptions(
        {"program", "--device",      "KR-A",     "--cable",   "LK7",     "--core",
         "1",       "--core",        "0",        "--core",    "1",       "--chain",
         "8,0",     "--force-after", "0.5",      "--timeout", "2",       "--auto",
         "3",       "--format",      "csv",      "--format",  "prn",     "--format",
         "csv",     "--out",         "some/dir", "--name",    "run_1",   "--period",
         "1ps",     "--picture",     "shot.png", "--size",    "800x600", "--json",
         "--quiet", "my design.zeo"});
    QVERIFY(options);
    QCOMPARE(options->file, QDir::current().absoluteFilePath("my design.zeo"));
    QCOMPARE(options->device, "KR-A");
    QCOMPARE(options->cable, "LK7");
    QCOMPARE(options->cores, (QList<int>{1, 0}));
    QCOMPARE(options->chain, (QList<int>{8, 0}));
    QCOMPARE(options->forceAfter, 500);
    QCOMPARE(options->timeout, 2000);
    QCOMPARE(options->autoRounds, 3);
    QCOMPARE(options->formats, (QList<ExportFormat>{ExportFormat::Csv, ExportFormat::Prn}));
    QCOMPARE(options->directory, QDir::current().absoluteFilePath("some/dir"));
    QCOMPARE(options->baseName, "run_1");
    QCOMPARE(options->period, (ClockPeriod{1, "ps"}));
    QCOMPARE(options->picture, QDir::current().absoluteFilePath("shot.png"));
    QCOMPARE(options->pictureSize, QSize(800, 600));
    QVERIFY(options->json && options->quiet);
}

void tst_CaptureOptions::readsWhatIsLeftOut()
{
    using enum CaptureOptions::Task;
    const auto plain = parseCaptureOptions({"program", "dir/my design.v2.keo"});
    QVERIFY(plain && plain->task == Capture);
    QCOMPARE(plain->baseName, "my_design_v2");
    QCOMPARE(plain->chain, QList<int>{0});
    QCOMPARE(plain->formats, QList<ExportFormat>{ExportFormat::Vcd});
    QVERIFY(plain->project.isEmpty());
    QVERIFY(plain->cores.isEmpty() && !plain->autoRounds && !plain->timeout);
    const auto saved = parseCaptureOptions({"program", "--save", "a b.analyzer_prj", "c.keo"});
    QVERIFY(saved && saved->task == Capture && saved->formats.isEmpty());
    QCOMPARE(saved->project, QDir::current().absoluteFilePath("a b.analyzer_prj"));
    const auto open = parseCaptureOptions({"program", "--open", "a b.1.analyzer_prj"});
    QVERIFY(open && open->task == ExportSaved);
    QCOMPARE(open->file, QDir::current().absoluteFilePath("a b.1.analyzer_prj"));
    QCOMPARE(open->baseName, "a_b_1");
    QCOMPARE(open->formats, QList<ExportFormat>{ExportFormat::Vcd});
    const auto compare = parseCaptureOptions(
        {"program", "--json", "--compare", "a.analyzer_prj", "dir/b.analyzer_prj", "--core", "2"});
    QVERIFY(compare && compare->task == Compare && compare->json);
    QCOMPARE(compare->file, QDir::current().absoluteFilePath("a.analyzer_prj"));
    QCOMPARE(compare->otherFile, QDir::current().absoluteFilePath("dir/b.analyzer_prj"));
    QCOMPARE(compare->cores, QList<int>{2});
    const auto rehearse = parseCaptureOptions(
        {"program", "--rehearse", "a.analyzer_prj", "--core", "2", "--set", "M0===1", "--json"});
    QVERIFY(rehearse && rehearse->task == Rehearse && rehearse->json);
    QCOMPARE(rehearse->file, QDir::current().absoluteFilePath("a.analyzer_prj"));
    QCOMPARE(rehearse->triggers, (QList{TriggerOptions{.core = 2, .units = {"M0===1"}}}));
    QCOMPARE((ClockPeriod{3, "us"}).picoseconds(), 3000000);
}

void tst_CaptureOptions::keepsTheOrderOfCores()
{
    const auto first = parseCaptureOptions({"program", "--windows", "2", "a.keo"});
    QVERIFY(first && first->triggers == QList{TriggerOptions{.windows = 2}});
    const auto both = parseCaptureOptions({"program", "--core", "1", "--set", "M0===1", "--core=0",
                                           "--amount=64", "--set", "M2=>0", "--core", "1", "a.keo",
                                           "--expression", "M0", "--set=M1===X"});
    QVERIFY(both);
    QCOMPARE(both->cores, (QList<int>{1, 0}));
    QCOMPARE(both->triggers,
             (QList{TriggerOptions{.core = 1, .units = {"M0===1", "M1===X"}, .expressions = {"M0"}},
                    TriggerOptions{.core = 0, .amount = 64, .units = {"M2=>0"}}}));
}

namespace {

constexpr int kUnitsOn = 5;

/// A core as a tool flow describes it, the same for the same seed.
std::unique_ptr<CoreConfig> describedCore(int index, quint32 seed)
{
    QRandomGenerator random(seed);
    auto core = std::make_unique<CoreConfig>(index);
    core->storage_depth = 32 << random.bounded(8);
    core->capture_amount = 32;
    core->signals = {{"s", {}, {}}};
    core->dynamic = random.bounded(2);
    for (int unit = 0; unit < kUnitsOn; ++unit) {
        TriggerPort &port = *core->triggers[unit];
        for (int bit = random.bounded(1, 70); bit > 0; --bit)
            port.signals.append({QString::number(bit), {}, {}});
        MatchUnit &record = *core->matchUnits[2 * unit];
        record.enabled = true;
        record.trigger = &port;
        record.match_type = MatchType(random.bounded(6));
        record.counter_enable = random.bounded(2);
        record.counter_width = random.bounded(1, 17);
        setRandomly(record, random);
    }
    core->expressions = {"M0&M2", "M4", "!M6|M8^M0", "M4"};
    core->ensureExpressionFlags();
    return core;
}

/// Whatever a user may do on the page.
void changeAsOnThePage(CoreConfig &core, QRandomGenerator &random)
{
    const auto any = [&](int count) { return random.bounded(count); };
    QList<int> amounts;
    while (amounts.isEmpty()) {
        core.window_num = any(kMaxOfferedWindows) + 1;
        amounts = offeredAmounts(core.storage_depth, core.window_num);
    }
    core.capture_amount = amounts[any(int(amounts.size()))];
    core.trigger_pos = any(core.capture_amount - kMinRowsFromTrigger + 1);
    for (MatchUnit *unit : core.enabledUnits()) {
        if (any(2))
            setRandomly(*unit, random);
    }
    if (core.dynamic == 0)
        return;
    for (qsizetype row = 0; row < core.expressions.size(); ++row) {
        core.expressionEnabled[row] = any(2);
        if (any(2))
            core.setExpression(QStringList{"M8", "!(M0^!M2)", "M4", "(M6)"}[any(4)], int(row));
    }
}

QStringList inForce(const CoreConfig &core)
{
    QStringList texts;
    for (qsizetype row = 0; row < core.expressions.size(); ++row) {
        if (core.expressionEnabled[row])
            texts.append(core.expressions[row]);
    }
    texts.sort();
    return texts;
}

} // namespace

// A command that was written for one set-up gives it to a description with any other.
void tst_CaptureOptions::takesWhatIsWritten()
{
    for (quint32 seed = 0; seed < 300; ++seed) {
        QRandomGenerator random(seed);
        std::vector<std::unique_ptr<CoreConfig>> cores;
        RunSettings settings{.delay = int(seed % 3), .device = seed % 2 ? "KR-A" : ""};
        for (int index = 0; index < 2; ++index) {
            cores.push_back(describedCore(index, seed + index));
            changeAsOnThePage(*cores.back(), random);
            const WrittenOptions written = triggerOptionsOf(*cores.back());
            QCOMPARE(written.remarks, QStringList());
            settings.cores.append(written.options);
        }
        const CommandPlace place{.program = "program",
                                 .description = "/a b/d'e.keo",
                                 .cable = "TARNO keo",
                                 .chain = seed % 2 ? QList<int>{0} : QList<int>{8, 0}};
        const auto options = parseCaptureOptions(captureArguments(settings, place));
        QVERIFY2(options, qPrintable(options ? QString() : options.error().message));
        QCOMPARE(options->triggers, settings.cores);
        QCOMPARE(options->cores, (QList<int>{0, 1}));
        QCOMPARE(options->chain, place.chain);
        QCOMPARE(options->cable, place.cable);
        QCOMPARE(options->device, settings.device);
        QCOMPARE(options->file, place.description);
        QCOMPARE(options->delay.value_or(0), settings.delay);
        for (int index = 0; index < 2; ++index) {
            const auto target = describedCore(index, seed + index);
            changeAsOnThePage(*target, random);
            const auto error = applyTriggerOptions(options->triggers[index], *target);
            QVERIFY2(!error, qPrintable(error ? error->message : QString()));
            QCOMPARE(buildRegisterImage(*target, {}, true),
                     buildRegisterImage(*cores[index], {}, true));
            if (target->dynamic)
                QCOMPARE(inForce(*target), inForce(*cores[index]));
        }
    }
}

void tst_CaptureOptions::triggerRules_data()
{
    addColumns<TriggerOptions, QString>({"options", "outcome"}); // or words of the refusal
    addRow("amount falls with the windows", TriggerOptions{.windows = 3}, "3 256 247 M0 M2");
    addRow("amount that still fits", TriggerOptions{.windows = 1}, "1 512 400 M0 M2");
    addRow("position falls with the amount", TriggerOptions{.amount = 64}, "2 64 55 M0 M2");
    addRow("all three", TriggerOptions{.windows = 8, .amount = 32, .position = 23},
           "8 32 23 M0 M2");
    addRow("windows", TriggerOptions{.windows = 9}, "1 to 8");
    addRow("amount", TriggerOptions{.amount = 100}, "takes 32, 64, 128, 256, 512 with");
    addRow("amount for the windows", TriggerOptions{.windows = 4, .amount = 512},
           "32, 64, 128, 256 with a memory of 1024 samples and --windows 4, not 512.");
    addRow("position", TriggerOptions{.amount = 32, .position = 24}, "0 to 23");
    addRow("one expression", TriggerOptions{.expressions = {" m0 & ! M2 "}}, "2 512 400 M0&!M2");
    addRow("as a description has it", TriggerOptions{.expressions = {"match[0]&!match[2]"}},
           "2 512 400 M0&!M2");
    addRow("in its own place", TriggerOptions{.expressions = {"M2"}}, "2 512 400 M2");
    addRow("none", TriggerOptions{.expressions = {"none"}}, "2 512 400");
    addRow("too many", TriggerOptions{.expressions = {"M0", "M2", "M0"}}, "room for 2");
    addRow("none and another", TriggerOptions{.expressions = {"none", "M0"}}, "alone");
    addRow("no expression", TriggerOptions{.expressions = {"M0 M2"}}, "\"M0 M2\"");
    addRow("another character", TriggerOptions{.expressions = {"M0+M2"}}, "\"M0+M2\"");
    addRow("unit that is off", TriggerOptions{.expressions = {"M0|M12"}}, "M12");
}

void tst_CaptureOptions::triggerRules()
{
    QFETCH(const TriggerOptions, options);
    QFETCH(const QString, outcome);
    CoreConfig core(4);
    core.dynamic = 1;
    core.storage_depth = 1024;
    core.window_num = 2;
    core.capture_amount = 512;
    core.trigger_pos = 400;
    core.expressions = {"M0", "M2"};
    core.ensureExpressionFlags();
    core.matchUnits[0]->enabled = core.matchUnits[2]->enabled = true;
    const std::optional<Error> error = applyTriggerOptions(options, core);
    if (error) {
        QVERIFY2(error->message.contains(outcome), qPrintable(error->message));
        QVERIFY(error->message.contains("ore 4"));
    } else {
        QStringList state{QString::number(core.window_num), QString::number(core.capture_amount),
                          QString::number(core.trigger_pos)};
        QCOMPARE((state + inForce(core)).join(u' '), outcome);
    }
    core.dynamic = 0;
    QCOMPARE(bool(applyTriggerOptions({.expressions = {"M0"}}, core)), true);
}

/// The long options in what \a pattern captures of \a text, sorted.
QStringList optionsIn(const QString &text, const QString &pattern)
{
    static const QRegularExpression option("--[a-z-]+");
    QStringList options;
    QRegularExpressionMatchIterator entry =
        QRegularExpression(pattern, QRegularExpression::MultilineOption).globalMatch(text);
    while (entry.hasNext()) {
        QRegularExpressionMatchIterator name = option.globalMatch(entry.next().captured(1));
        while (name.hasNext())
            options.append(name.next().captured());
    }
    options.sort();
    return options;
}

// What is written about the options keeps up with them.
void tst_CaptureOptions::manPageNamesEveryOption()
{
    const auto help = parseCaptureOptions({"program", "--help"});
    QVERIFY(help);
    const QStringList known = optionsIn(help->helpText, "^  (-.*?)  ");
    QVERIFY(known.size() > 15);
    const QByteArray page =
        contentOf(QStringLiteral(KEO_SOURCE_DIR "/packaging/signalscope-capture.1"));
    QCOMPARE(
        optionsIn(QString::fromUtf8(page).replace("\\-", "-"), R"(^\.TP\n\.BI? (.*)$)").join(u' '),
        known.join(u' '));
}

/// The numbers in what \a pattern captures of \a text, each once, in their order.
QStringList numbersIn(const QString &text, const QString &pattern)
{
    static const QRegularExpression number("\\b\\d+\\b");
    QMap<int, QString> numbers;
    QRegularExpressionMatchIterator entry =
        QRegularExpression(pattern, QRegularExpression::MultilineOption).globalMatch(text);
    while (entry.hasNext()) {
        QRegularExpressionMatchIterator found = number.globalMatch(entry.next().captured(1));
        while (found.hasNext()) {
            const QString digits = found.next().captured();
            numbers.insert(digits.toInt(), digits);
        }
    }
    return numbers.values();
}

void tst_CaptureOptions::helpAndManPageNameEveryExitStatus()
{
    const QString header = contentOf(QStringLiteral(KEO_SOURCE_DIR "/src/cli/exitstatus.h"));
    const QStringList known = numbersIn(header, R"(^ +\w+ = (\d+))");
    QVERIFY(known.size() > 7);
    const auto help = parseCaptureOptions({"program", "--help"});
    QVERIFY(help);
    QCOMPARE(numbersIn(help->helpText, R"(^Exit status: ((?:.|\n)*?)\n\n)"), known);
    const QString page =
        contentOf(QStringLiteral(KEO_SOURCE_DIR "/packaging/signalscope-capture.1"));
    const QString statuses = page.section(".SH EXIT STATUS", 1).section(".SH", 0, 0);
    QCOMPARE(numbersIn(statuses, R"(^\.TP\n\.B (.*)$)"), known);
}

void tst_CaptureOptions::bashCompletes_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("offered");
    const auto row = [](const char *typed, const char *offered) {
        QTest::newRow(typed) << typed << offered;
    };
    row("--di", "--diff");
    row("--format v", "vcd vcd-plain");
    row("--format = v", "vcd vcd-plain"); // as bash splits "--format=v"
    row("--out =", "folder other");
    row("--open fo", "folder");
    row("--open ", "folder other run.analyzer_prj");
    row("--picture ", "folder it.png other");
    row("--timeout ", "");
    row("", "folder new.zeo other run.analyzer_prj two words.keo");
    row("--diff two", "two words.keo");
}

void tst_CaptureOptions::bashCompletes()
{
    QFETCH(QString, typed);
    QFETCH(QString, offered);
    QTemporaryDir folder;
    for (const char *name : {"two words.keo", "new.zeo", "run.analyzer_prj", "it.png", "a.txt"})
        QVERIFY(QFile(folder.filePath(name)).open(QIODevice::WriteOnly));
    QVERIFY(QDir(folder.path()).mkdir("folder") && QDir(folder.path()).mkdir("other"));
    QProcess bash;
    bash.setWorkingDirectory(folder.path());
    bash.start("bash", {"-c", bashCompletion() + R"(
        words=$1 # the last one is being typed, perhaps empty
        COMP_WORDS=(signalscope-capture)
        while [[ $words == *' '* ]]; do COMP_WORDS+=("${words%%' '*}"); words=${words#*' '}; done
        COMP_WORDS+=("$words")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        __signalscope_capture
        [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort)",
                        "bash", typed});
    QVERIFY(bash.waitForFinished());
    QCOMPARE(QString::fromUtf8(bash.readAllStandardError()), "");
    QCOMPARE(QString::fromUtf8(bash.readAllStandardOutput()).trimmed().replace('\n', ' '), offered);
}

KEO_TEST_MAIN(tst_CaptureOptions)
#include "tst_captureoptions.moc"
