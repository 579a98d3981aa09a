#include <cli/captureoptions.h>
#include <support/files.h>
#include <support/testmain.h>

#include <QDir>
#include <QRegularExpression>

using namespace KEO;

class tst_CaptureOptions : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data();
    void refuses();
    void reads();
    void readsWhatIsLeftOut();
    void pagesNameEveryOption();
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
    addRow("delay too long", "--delay 3600001 a.keo", "3600000");
    addRow("time zero", "--timeout 0 a.keo", "timeout");
    addRow("time not finite", "--timeout nan a.keo", "nan");
    addRow("rounds zero", "--auto 0 a.keo", "auto");
    addRow("format", "--format pdf a.keo", "pdf");
    addRow("period without unit", "--period 10 a.keo", "\"10\"");
    addRow("period too long", "--period 10000000us a.keo", "10000000us");
    addRow("half a picosecond", "--period 1ps --format vcd a.keo", "2ps");
    addRow("name with a slash", "--name a/b a.keo", "a/b");
    addRow("picture of another kind", "--picture a.jpg a.keo", "a.jpg");
    addRow("size without picture", "--size 800x600 a.keo", "--picture");
    addRow("size too large", "--picture a.png --size 99999x100 a.keo", "99999x100");
    addRow("project of another kind", "--save a.prj b.keo", "a.prj");
    addRow("open and a file", "--open a.analyzer_prj b.keo", "FILE");
    addRow("open and save", "--open a.analyzer_prj --save b.analyzer_prj", "--save");
    addRow("open and a cable", "--open a.analyzer_prj --cable LK7", "--cable");
    addRow("list with project", "--list-cables --open a.analyzer_prj", "FILE");
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
    QCOMPARE((ClockPeriod{3, "us"}).picoseconds(), 3000000);
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
void tst_CaptureOptions::pagesNameEveryOption()
{
    const auto help = parseCaptureOptions({"program", "--help"});
    QVERIFY(help);
    const QStringList known = optionsIn(help->helpText, "^  (-.*?)  ");
    QVERIFY(known.size() > 15);
    for (const auto &[page, entry] :
         {std::pair("packaging/signalscope-capture.1", R"(^\.TP\n\.BI? (.*)$)"),
          std::pair("README.md", R"(^\| (`--(?:[^|\\]|\\.)*)\|)")}) {
        const QByteArray text = contentOf(QStringLiteral(KEO_SOURCE_DIR "/") + QLatin1String(page));
        QCOMPARE(optionsIn(QString::fromUtf8(text).replace("\\-", "-"), entry).join(u' '),
                 known.join(u' '));
    }
}

KEO_TEST_MAIN(tst_CaptureOptions)
#include "tst_captureoptions.moc"
