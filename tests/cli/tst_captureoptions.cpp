#include <cli/captureoptions.h>
#include <support/testmain.h>

#include <QDir>

using namespace KEO;

class tst_CaptureOptions : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data();
    void refuses();
    void reads();
    void projects();
    void defaults();
};

void tst_CaptureOptions::refuses_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("word"); // what the message must name
    const auto row = [](const char *name, const char *line, const char *word) {
        QTest::newRow(name) << line << word;
    };
    row("no file", "", "FILE");
    row("two files", "a.keo b.keo", "FILE");
    row("other extension", "a.xml", "a.xml");
    row("extension in capitals", "A.KEO", "A.KEO");
    row("unknown option", "--fast a.keo", "fast");
    row("core not a number", "--core x a.keo", "\"x\"");
    row("core out of range", "--core 16 a.keo", "\"16\"");
    row("core negative", "--core=-1 a.keo", "\"-1\"");
    row("chain with a gap", "--chain 0,,8 a.keo", "chain");
    row("time zero", "--timeout 0 a.keo", "timeout");
    row("time not finite", "--timeout nan a.keo", "nan");
    row("time huge", "--force-after 1e9 a.keo", "force-after");
    row("rounds zero", "--auto 0 a.keo", "auto");
    row("format", "--format pdf a.keo", "pdf");
    row("period without unit", "--period 10 a.keo", "\"10\"");
    row("period zero", "--period 0ns a.keo", "0ns");
    row("period too long", "--period 10000000us a.keo", "10000000us");
    row("half a picosecond", "--period 1ps --format vcd a.keo", "2ps");
    row("half a picosecond, default format", "--period 1ps a.keo", "2ps");
    row("name with a slash", "--name a/b a.keo", "a/b");
    row("name with a dot", "--name a.b a.keo", "a.b");
    row("picture of another kind", "--picture a.jpg a.keo", "a.jpg");
    row("size without picture", "--size 800x600 a.keo", "--picture");
    row("size without height", "--picture a.png --size 800 a.keo", "\"800\"");
    row("size too large", "--picture a.png --size 99999x100 a.keo", "99999x100");
    row("project of another kind", "--save a.prj b.keo", "a.prj");
    row("open and a file", "--open a.analyzer_prj b.keo", "FILE");
    row("open a description", "--open a.keo", "a.keo");
    row("open and save", "--open a.analyzer_prj --save b.analyzer_prj", "--save");
    row("open and a cable", "--open a.analyzer_prj --cable LK7", "--cable");
    row("list with project", "--list-cables --open a.analyzer_prj", "FILE");
    row("list with file", "--list-cables a.keo", "FILE");
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

void tst_CaptureOptions::projects()
{
    using enum CaptureOptions::Task;
    const auto saved = parseCaptureOptions({"program", "--save", "a b.analyzer_prj", "c.keo"});
    QVERIFY(saved && saved->task == Capture);
    QCOMPARE(saved->project, QDir::current().absoluteFilePath("a b.analyzer_prj"));
    QVERIFY(saved->formats.isEmpty());
    const auto both =
        parseCaptureOptions({"program", "--save", "a.analyzer_prj", "--format", "prn", "c.keo"});
    QVERIFY(both);
    QCOMPARE(both->formats, QList<ExportFormat>{ExportFormat::Prn});
    const auto open = parseCaptureOptions({"program", "--open", "a b.1.analyzer_prj"});
    QVERIFY(open && open->task == ExportSaved);
    QCOMPARE(open->file, QDir::current().absoluteFilePath("a b.1.analyzer_prj"));
    QCOMPARE(open->baseName, "a_b_1");
    QCOMPARE(open->formats, QList<ExportFormat>{ExportFormat::Vcd});
}

void tst_CaptureOptions::defaults()
{
    const auto options = parseCaptureOptions({"program", "dir/my design.v2.keo"});
    QVERIFY(options);
    QCOMPARE(options->baseName, "my_design_v2");
    QCOMPARE(options->chain, QList<int>{0});
    QCOMPARE(options->formats, QList<ExportFormat>{ExportFormat::Vcd});
    QVERIFY(options->project.isEmpty());
    QVERIFY(options->cores.isEmpty() && !options->autoRounds && !options->timeout);
    QCOMPARE((ClockPeriod{3, "us"}).picoseconds(), 3000000);
    QCOMPARE((ClockPeriod{3, "ns"}).picoseconds(), 3000);
}

KEO_TEST_MAIN(tst_CaptureOptions)
#include "tst_captureoptions.moc"
