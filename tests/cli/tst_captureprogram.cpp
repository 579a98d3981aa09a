// The capture program as a script meets it: a process with arguments, files, output and an exit
// status, against the simulated board.

#include <link/wireserver.h>
#include <support/files.h>
#include <support/testdesign.h>
#include <support/testmain.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString kProgram = QStringLiteral(KEO_BIN_DIR "/signalscope-capture");
const QString kServer = QStringLiteral(KEO_BURNER_DIR "/chainserver");

struct Outcome
{
    int status = -1;
    QString output;
    QString errors;
};

Outcome finished(QProcess &process)
{
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

bool isListening(const QString &server)
{
    QLocalSocket socket;
    socket.connectToServer(server);
    return socket.waitForConnected(1000);
}

QStringList lines(const QString &path)
{
    return QString::fromUtf8(contentOf(path)).split(u'\n');
}

} // namespace

class tst_CaptureProgram : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void writesEveryFormat();
    void savesWhatItCanNotExport_data();
    void savesWhatItCanNotExport();
    void exportsProjects_data();
    void exportsProjects();
    void writesToStandardOutput();
    void comparesProjects_data();
    void comparesProjects();
    void rehearsesProjects();
    void tellsWhatHasChanged();
    void refusesProjects_data();
    void refusesProjects();
    void endsWithItsStatus_data();
    void endsWithItsStatus();
    void tellsWhatAServerLacks();
    void meetsABusyServer();
    void tellsOfAnotherUsersServer();
    void runsWithoutStandardStreams();
    void tellsOfAFullDisk_data();
    void tellsOfAFullDisk();
    void keepsOrdersFromTheTerminal();
    void fitsItsLineIntoTheTerminal();
    void forcesTheTrigger();
    void startsLiteCoresLater();
    void usesAServerThatRuns();
    void stopsOnASignal_data();
    void stopsOnASignal();
    void leavesItsServerInOrder_data();
    void leavesItsServerInOrder();
    void tellsWhatItWouldSend();
    void findsNoServer();

private:
    /// Arguments are split at blanks; `design.keo` and other files stand in the test's directory.
    Outcome run(const QString &line, const QString &program = kProgram);
    QString file(const QString &name) const { return m_directory->filePath(name); }
    void board(const TestDesign &design);
    void write(const char *name, const QByteArray &text) const
    {
        putFile(file(QLatin1String(name)), text);
    }
    /// A copy of the program with no servers beside it.
    QString copyWithoutServers();

    std::unique_ptr<QTemporaryDir> m_directory;
};

void tst_CaptureProgram::init()
{
    QuietTest::init();
    m_directory = std::make_unique<QTemporaryDir>();
}

void tst_CaptureProgram::board(const TestDesign &design)
{
    design.write(m_directory->path());
    qputenv("SIGNALSCOPE_BOARD", file("board.json").toLocal8Bit());
}

QString tst_CaptureProgram::copyWithoutServers()
{
    const QString copy = file("SignalScope/bin/signalscope-capture");
    if (!QDir(m_directory->path()).mkpath("SignalScope/bin") || !QFile::copy(kProgram, copy))
        QTest::qFail("no copy of the program", __FILE__, __LINE__);
    return copy;
}

Outcome tst_CaptureProgram::run(const QString &line, const QString &program)
{
    QProcess process;
    process.setWorkingDirectory(m_directory->path());
    process.start(program, line.split(u' '));
    return finished(process);
}

void tst_CaptureProgram::writesEveryFormat()
{
    TestDesign design;
    design.windows = 2;
    board(design);
    qunsetenv("XDG_RUNTIME_DIR");
    const Outcome outcome = run("--device KR-A --format csv --format vcd --format prn "
                                "--out new/folder --name run --period 10ns "
                                "--picture shot.png --size 900x400 design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QStringList expected;
    for (const char *window : {"0", "1"}) {
        for (const char *format : {"csv", "vcd", "prn"})
            expected.append(
                file(QStringLiteral("new/folder/run_core0_window%1.%2")
                         .arg(QString::fromLatin1(window), QString::fromLatin1(format))));
    }
    const QStringList pictures{file("shot_core0_window0.png"), file("shot_core0_window1.png")};
    for (const QString &path : expected + pictures)
        QVERIFY2(outcome.output.contains(path + u'\n'), qPrintable(outcome.output));
    QCOMPARE(outcome.output.count(u'\n'), 8);
    QVERIFY(outcome.errors.contains("Waiting for the trigger of core 0"));
    // Nothing of the platform, which has no windows, nor of a session that nobody has opened.
    for (const char *word : {"plugin", "XDG_RUNTIME_DIR"})
        QVERIFY2(!outcome.errors.contains(word), qPrintable(outcome.errors));
    QVERIFY(outcome.errors.contains("Reading core 0 window 1"));

    QVERIFY(lines(expected.first()).value(design.amount + 5).startsWith("2560, "));
    const QStringList vcd = lines(expected.at(1));
    QVERIFY(vcd.contains("  1 ps"));
    // Samples are taken at rising edges.
    QCOMPARE(vcd.value(vcd.indexOf("$comment Sample 16 (Trigger) $end") + 1), "1!");
    QVERIFY(
        lines(expected.at(2)).constFirst().startsWith("time unit: ns\tcount[15:0]\t/count[15]"));
    // The trigger's yellow line stands above the black ground in each picture.
    for (const QString &path : pictures) {
        const QImage picture(path);
        QCOMPARE(picture.size(), QSize(900, 400));
        QSet<QRgb> colors;
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, 75));
        QVERIFY(colors.contains(qRgb(255, 255, 0)) && colors.contains(qRgb(0, 0, 0)));
    }
    // A window that the lowest zoom doesn't hold is seen around its trigger.
    design = {.amount = 4096, .position = 2048};
    board(design);
    QCOMPARE(run("--device KR-A --picture low.png --size 900x400 design.keo").status, 0);
    const QImage low(file("low.png"));
    int trigger = 0;
    while (trigger < low.width() && low.pixel(trigger, 75) != qRgb(255, 255, 0))
        ++trigger;
    // The waves stand between the tree, 300 wide, and a scroll bar.
    QVERIFY2(std::abs(trigger - 595) < 8, qPrintable(QString::number(trigger)));
}

void tst_CaptureProgram::savesWhatItCanNotExport_data()
{
    addColumns<QString, QString>({"line", "blocked"});
    addRow("export", "--format vcd --name p", "out/p_core0_window0.vcd");
    addRow("round", "--auto 3 --format vcd --name p", "out/p_2_core0_window0.vcd");
    addRow("picture", "--picture shots/p.png", "shots/p_core0_window0.png");
}

// A rare trigger is not lost with a file that nobody can write.
void tst_CaptureProgram::savesWhatItCanNotExport()
{
    QFETCH(const QString, line);
    QFETCH(const QString, blocked);
    TestDesign design;
    design.windows = line.contains("--auto") ? 1 : 2;
    board(design);
    QVERIFY(QDir(m_directory->path()).mkpath(blocked)); // a folder stands in the way
    const Outcome outcome =
        run("--device KR-A --out out --save s.analyzer_prj " + line + " design.keo");
    QCOMPARE(outcome.status, 6);
    QVERIFY2(outcome.errors.contains(file(blocked)), qPrintable(outcome.errors));
    QVERIFY(outcome.output.contains(file("s.analyzer_prj")));
    QCOMPARE(lines(file("s.xml")).filter("<Window").size(), design.windows);
    QCOMPARE(run("--open s.analyzer_prj --out again").status, 0);
}

void tst_CaptureProgram::exportsProjects_data()
{
    addColumns<bool, QString, int>({"lite", "cores", "files"});
    addRow("standard cores", false, "--core 1 --core 0", 20);
    addRow("lite core", true, "--delay 5", 5);
}

// Saved and exported, the capture gives the files that it gives at once. No server can be reached.
void tst_CaptureProgram::exportsProjects()
{
    QFETCH(const bool, lite);
    QFETCH(const QString, cores);
    QFETCH(const int, files);
    TestDesign design;
    design.lite = lite;
    design.windows = 2;
    design.cores = 2;
    board(design);
    const QString formats = " --format csv --format vcd --format prn --format vcd-plain "
                            "--format csv-plain --period 10ns --name capture";
    const Outcome captured = run("--device KR-A " + cores + " --out once --save p.analyzer_prj" +
                                 formats + " design.keo");
    QVERIFY2(captured.status == 0, qPrintable(captured.errors));
    if (!lite) // they are armed as the design lists them
        QVERIFY(captured.output.indexOf("core0") < captured.output.indexOf("core1"));
    // The windows of a lite core name none.
    QCOMPARE(lines(file("p.xml")).filter("<Window").filter(" core=").isEmpty(), lite);

    const QString lonely = copyWithoutServers();
    const Outcome outcome = run("--open p.analyzer_prj --out again" + formats, lonely);
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    const QStringList once = QDir(file("once")).entryList(QDir::Files, QDir::Name);
    QCOMPARE(once.size(), files);
    QCOMPARE(QDir(file("again")).entryList(QDir::Files, QDir::Name), once);
    QCOMPARE(outcome.output.count(file("again/")), files);
    for (const QString &name : once) {
        const auto content = [&](const char *folder) {
            QStringList all = lines(file(QLatin1String(folder) + u'/' + name));
            all.removeIf([](const QString &line) { return line.contains(u':'); }); // the date
            return all;
        };
        QCOMPARE(content("again"), content("once"));
    }
    QCOMPARE(run("--open p.analyzer_prj --core 7", lonely).status, 2);
    if (lite)
        return;
    const Outcome one =
        run("--open p.analyzer_prj --core 1 --json --picture shot.png --out one", lonely);
    const auto captures = QJsonDocument::fromJson(one.output.toUtf8())["captures"].toArray();
    QCOMPARE(captures.size(), 2);
    QCOMPARE(captures.first()["samples"].toInt(), design.amount);
    QVERIFY(!QImage(file("shot_core1_window0.png")).isNull());
    QCOMPARE(QDir(file("one")).entryList(QDir::Files, QDir::Name),
             (QStringList{"p_core1_window0.vcd", "p_core1_window1.vcd"}));
}

// The bytes of the file and nothing else. What can't go there is told before anything is captured.
void tst_CaptureProgram::writesToStandardOutput()
{
    const TestDesign design;
    board(design);
    const QString capture = "--device KR-A --format csv-plain --name p ";
    QCOMPARE(run(capture + "design.keo").status, 0);
    const QByteArray table = contentOf(file("p_core0_window0.plain.csv"));
    QCOMPARE(table.count('\n'), design.amount + 1);
    const Outcome printed = run(capture + "--out - --save s.analyzer_prj design.keo");
    QVERIFY2(printed.status == 0, qPrintable(printed.errors));
    QVERIFY(printed.output.toUtf8() == table);
    QVERIFY(printed.errors.contains("Reading core 0 window 0"));
    QVERIFY(run("--open s.analyzer_prj --format csv-plain --out -").output.toUtf8() == table);
    QVERIFY(!QDir(file("-")).exists());

    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "");
    const Outcome missing = run("--device KR-A --format fst --out fst design.keo");
    qputenv("PATH", path);
    QCOMPARE(missing.status, 2);
    QVERIFY2(missing.errors.contains("gtkwave"), qPrintable(missing.errors));
    QVERIFY(!missing.errors.contains("Waiting"));

    const Outcome more = run(capture + "--windows 2 --out - design.keo");
    QCOMPARE(more.status, 2);
    QVERIFY(more.output.isEmpty() && !more.errors.contains("Waiting"));
    const Outcome full =
        run("-c " + QStringLiteral("$0\t--open\ts.analyzer_prj\t--out\t->/dev/full")
                        .replace("$0", kProgram),
            "bash");
    QCOMPARE(full.status, 6);
}

void tst_CaptureProgram::comparesProjects_data()
{
    addColumns<bool, int, int>({"lite", "signal", "sample"});
    addRow("first bit", false, 0, 0);
    addRow("trigger", false, 15, 16);
    addRow("end of a word", false, 7, 63);
    addRow("last bit", false, 23, 255);
    addRow("lite core", true, 20, 128);
}

// One flipped bit in the second window, or the only one, of a copy is found and nothing else is.
void tst_CaptureProgram::comparesProjects()
{
    QFETCH(const bool, lite);
    QFETCH(const int, signal);
    QFETCH(const int, sample);
    TestDesign design;
    design.lite = lite;
    design.windows = 2;
    board(design);
    const QString delay = lite ? " --delay 5" : "";
    const Outcome saved = run("--device KR-A --save a.analyzer_prj design.keo" + delay);
    QVERIFY2(saved.status == 0, qPrintable(saved.errors));
    const QString data = lines(file("a.xml")).join(u'\n');
    const QString name = design.name(signal);
    const auto saveCopy = [&](const QString &text) {
        write("b.xml", text.toUtf8());
        write("b.analyzer_prj", "[General]\nKEO_FILE=" + file("design.keo").toUtf8() +
                                    "\nDATA_FILE=" + file("b.xml").toUtf8() + "\n");
    };
    saveCopy(data);
    const QString lonely = copyWithoutServers();
    const QString compare = "--compare a.analyzer_prj b.analyzer_prj";
    const Outcome equal = run(compare, lonely);
    QVERIFY2(equal.status == 0, qPrintable(equal.errors));
    QCOMPARE(equal.output.count("equal, samples compared: 256\n"), lite ? 1 : 2);

    QString changed = data;
    const qsizetype element =
        changed.indexOf("name=\"" + name + u'"', changed.lastIndexOf("<Window"));
    const qsizetype bit = changed.indexOf(u'>', element) + 1 + sample;
    QVERIFY(element > 0 && (changed.at(bit) == u'0' || changed.at(bit) == u'1'));
    changed[bit] = changed.at(bit) == u'0' ? u'1' : u'0';
    saveCopy(changed);
    const Outcome found = run(compare, lonely);
    QCOMPARE(found.status, 1);
    QCOMPARE(found.output.count(u'\n'), lite ? 2 : 3);
    QVERIFY2(found.output.contains("\n  " + name + ": first at sample " + QString::number(sample)),
             qPrintable(found.output));
    const QJsonDocument json =
        QJsonDocument::fromJson(run(compare + " --json --core 0", lonely).output.toUtf8());
    QCOMPARE(json["status"].toInt(), 1);
    const QJsonValue window = json["windows"].toArray().last();
    QCOMPARE(window["equal"].toBool(true), false);
    QCOMPARE(window["differences"].toArray().size(), 1);
    const QJsonValue difference = window["differences"][0];
    QCOMPARE(difference["name"].toString(), name);
    QCOMPARE(difference["first"].toInt(-1), sample);
    QCOMPARE(difference["from_trigger"].toInt(999), sample - (lite ? 0 : design.position));
    QCOMPARE(difference["samples"].toInt(), 1);
    QCOMPARE(run(compare + " --core 7", lonely).status, 2);

    // A window that one of them lacks is a difference too.
    if (!lite) {
        const qsizetype last = data.lastIndexOf("<Window");
        saveCopy(data.left(last) + "</WaveData>");
        const Outcome lacking = run(compare, lonely);
        QCOMPARE(lacking.status, 1);
        QVERIFY(lacking.output.contains("core 0 window 1: only in A"));
    }
    QVERIFY(QFile::remove(file("b.xml")));
    QCOMPARE(run(compare, lonely).status, 6);
}

// The window begins 16 samples before count 0x137, the second one right behind it. With its own
// trigger each window hits at its trigger; with another one where the bus says so.
void tst_CaptureProgram::rehearsesProjects()
{
    TestDesign design;
    design.dynamic = true;
    design.windows = 2;
    design.cores = 2;
    board(design);
    const Outcome saved = run("--device KR-A --core 1 --save p.analyzer_prj design.keo");
    QVERIFY2(saved.status == 0, qPrintable(saved.errors));
    // A user's names are only shown.
    QString data = lines(file("p.xml")).join(u'\n');
    data.replace(QRegularExpression("(<Signal [^>]*name=\"count.4.\"[^>]* text=\")\""),
                 "\\1count[3]\"");
    QVERIFY(data.contains("text=\"count[3]\""));
    write("p.xml", data.toUtf8());
    const QString lonely = copyWithoutServers();

    const Outcome own = run("--rehearse p.analyzer_prj", lonely);
    QVERIFY2(own.status == 0, qPrintable(own.errors));
    QCOMPARE(own.output.split(u'\n', Qt::SkipEmptyParts),
             (QStringList{"core 1 window 0: hits: 1 of 256 samples", "  hit: 16 (trigger 0)",
                          "  M0: matches: 1", "  M1: matches: 256", "  M0&M1: hits: 1",
                          "core 1 window 1: hits: 1 of 256 samples", "  hit: 16 (trigger 0)",
                          "  M0: matches: 1", "  M1: matches: 256", "  M0&M1: hits: 1"}));

    const QString other = "--rehearse p.analyzer_prj --core 1 --set M0===XXXXXXXX0011100X "
                          "--set M1=<0x180 --expression M0&M1";
    const Outcome runs = run(other, lonely);
    QVERIFY2(runs.output.startsWith("core 1 window 0: hits: 2 of 256 samples\n"
                                    "  hit: 17..18 (trigger +1..+2)\n"),
             qPrintable(runs.output));
    const QJsonDocument json =
        QJsonDocument::fromJson(run(other + " --json", lonely).output.toUtf8());
    QCOMPARE(json["status"].toInt(-1), 0);
    const QJsonValue second = json["windows"][1]; // counts 0x227 to 0x326
    QCOMPARE(second["hits"].toInt(-1), 0);
    QCOMPARE(second["units"][0]["matches"].toInt(), 2);
    QCOMPARE(json["windows"][0]["hit_runs"][0]["from_trigger"].toInt(), 1);

    QCOMPARE(run(other + " --set M0=R", lonely).status, 2); // no text of a setting
    const Outcome never = run("--rehearse p.analyzer_prj --set M1=>0xF00", lonely);
    QCOMPARE(never.status, 1);
    QVERIFY2(never.output.startsWith("core 1 window 0: hits: 0 of 256 samples\n  M0: matches: 1\n"
                                     "  M1: matches: 0\n"),
             qPrintable(never.output));
    QVERIFY2(
        never.output.contains("  why: exp0 fails by M1 alone, which never reports: otherwise it "
                              "would be true at 1 sample, first at 16.\n"),
        qPrintable(never.output));
    QVERIFY(second["why"].toArray().size() > 1);
    QVERIFY(!own.output.contains("why: "));
    const Outcome absent = run("--rehearse p.analyzer_prj --core 0", lonely);
    QCOMPARE(absent.status, 2);
    QVERIFY2(absent.errors.contains("no waves of core 0"), qPrintable(absent.errors));

    design.lite = true;
    design.cores = 1;
    design.windows = 1;
    board(design);
    QCOMPARE(run("--device KR-A --delay 5 --save l.analyzer_prj design.keo").status, 0);
    const Outcome lite = run("--rehearse l.analyzer_prj", lonely);
    QCOMPARE(lite.status, 2);
    QVERIFY2(lite.errors.contains("no trigger"), qPrintable(lite.errors));
}

// A design that was built anew, and one that has become lite.
void tst_CaptureProgram::tellsWhatHasChanged()
{
    TestDesign design;
    design.extension = "zeo";
    design.write(m_directory->path());
    design.extension = "keo";
    design.cores = 2;
    design.noise = 9;
    design.storageDepth = 8192;
    design.position = 20;
    design.write(m_directory->path());
    const QString diff = "--diff design.zeo design.keo";
    const Outcome told = run(diff);
    QVERIFY2(told.status == 1 && told.errors.isEmpty(), qPrintable(told.errors));
    QCOMPARE(told.output, QString("Core 0: memory 4096 \u2192 8192\n"
                                  "Core 0, setting: trigger position 16 \u2192 20\n"
                                  "Core 0: signal added: %1\n"
                                  "Design: core 1 added: clock clk, signals: 25\n")
                              .arg(design.name(24)));
    const QJsonDocument json = QJsonDocument::fromJson(run(diff + " --json").output.toUtf8());
    QCOMPARE(json["status"].toInt(), 1);
    QCOMPARE(json["changes"].toArray().size(), 4);
    QCOMPARE(json["changes"][0]["subject"], "storage_depth");
    QCOMPARE(json["changes"][0]["after"], "8192");
    QCOMPARE(json["changes"][1]["setting"], true);
    QCOMPARE(json["changes"][2]["action"], "added");
    QCOMPARE(run(diff + " --core 1").output.count(u'\n'), 1);
    const Outcome equal = run("--diff design.keo design.keo");
    QCOMPARE(equal.status, 0);
    QCOMPARE(equal.output, "equal\n");

    design.lite = true;
    design.extension = "zeo";
    design.write(m_directory->path());
    QVERIFY(run(diff).output.contains("Design: kind of cores Lite \u2192 Standard\n"));
    write("design.zeo", "<KEO_CONFIG>");
    const Outcome broken = run(diff);
    QCOMPARE(broken.status, 6);
    QVERIFY2(broken.errors.contains("design.zeo can not be used: "), qPrintable(broken.errors));
}

void tst_CaptureProgram::refusesProjects_data()
{
    addColumns<bool, QByteArray, QString>({"lite", "data", "words"});
    addRow("no data file", false, QByteArray(), "p.xml");
    addRow("another lite design", true, QByteArray("<WaveData><Window/></WaveData>"),
           "Data file miss match the project");
    addRow("no waves", false, QByteArray("<WaveData/>"), "holds no waves");
    addRow("no description", false, QByteArray("gone"), "design.keo can not be used");
    // Windows that fit, but would get the same file names.
    QByteArray window("><TriggerPosition>0</TriggerPosition><Signals>");
    for (int signal = 0; signal < TestDesign().signalCount(); ++signal)
        window += "<Signal name=\"" + TestDesign().name(signal).toLatin1() + "\">01</Signal>";
    window += "</Signals></Window>";
    addRow("two windows of a lite core", true,
           "<WaveData><Window index=\"0\"" + window + "<Window index=\"1\"" + window +
               "</WaveData>",
           "2 windows");
}

void tst_CaptureProgram::refusesProjects()
{
    QFETCH(const bool, lite);
    QFETCH(QByteArray, data);
    QFETCH(QString, words);
    TestDesign design;
    design.lite = lite;
    design.write(m_directory->path());
    write("p.analyzer_prj", "[General]\nKEO_FILE=" + file("design.keo").toUtf8() +
                                "\nDATA_FILE=" + file("p.xml").toUtf8() + "\n");
    if (!data.isNull())
        write("p.xml", data);
    if (data == "gone")
        QVERIFY(QFile::remove(file("design.keo")));
    const Outcome outcome = run("--quiet --open p.analyzer_prj");
    QCOMPARE(outcome.status, 6);

    QVERIFY2(outcome.errors.startsWith("signalscope-capture: "), // and no message of the log
             qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(words), qPrintable(outcome.errors));
    QCOMPARE(QDir(m_directory->path()).entryList({"*.vcd"}).size(), 1); // the stimulus
}

void tst_CaptureProgram::endsWithItsStatus_data()
{
    // A change of the board or the folder, and the arguments.
    addColumns<QString, QString, int, QString>({"change", "line", "status", "words"});
    addRow("unknown cable", "", "--cable USB design.keo", 2, "\"USB\"");
    addRow("no such core", "", "--core 3 design.keo", 2, "core 3");
    addRow("Auto with windows", "windows", "--auto 2 design.keo", 2, "one window");
    addRow("dead server", "dies", "design.keo", 3, "went away");
    addRow("trigger never comes", "quiet", "--timeout 0.7 design.keo", 4, "the trigger of core 0");
    addRow("no bitstream", "blank", "design.keo", 5, "Device does not load fs file yet.");
    addRow("unknown result", "result", "design.keo", 5, "Unknown device error ID77.");
    addRow("no such file", "", "other.keo", 6, "other.keo");
    addRow("no XML", "text", "design.keo", 6, "design.keo");
    addRow("delay of a standard core", "", "--delay 5 design.keo", 2, "--delay");
    addRow("lite core never done", "lite", "--timeout 0.7 design.keo", 4, "the capture of core 0");
    addRow("no such lite core", "lite", "--core 3 design.keo", 2, "core 3");
    addRow("two lite cores", "two", "design.keo", 6, "2 lite cores");
    addRow("unknown mode", "mode", "design.keo", 6, "mode");
    addRow("trigger behind the end", "position", "design.keo", 6, "2000 of 256");
    addRow("section lost", "lost", "design.keo", 5, "Not delivered: core 0 window 0.");
    addRow("amount of no whole sections", "amount", "design.keo", 6, "only multiples of 128");
    addRow("no folder can be made", "", "--out board.json/x design.keo", 6, "board.json/x");
    addRow("export is a folder", "folder", "design.keo", 6, "design_core0_window0.vcd");
    addRow("picture is a pipe", "pipe", "--picture shot.png design.keo", 6, "shot.png");
    addRow("picture in no folder", "quiet", "--picture board.json/p.png design.keo", 6, "folder");
    addRow("picture beside samples", "quiet",
           "--format csv --out - --picture board.json/p.png design.keo", 6, "folder");
    addRow("option that is not there", "", "--fast design.keo", 2, "fast");
}

void tst_CaptureProgram::endsWithItsStatus()
{
    QFETCH(QString, change);
    QFETCH(QString, line);
    QFETCH(int, status);
    QFETCH(QString, words);
    TestDesign design;
    design.windows = change == "windows" || change == "lost" ? 2 : 1;
    if (change == "position")
        design.position = 2000;
    if (change == "lost")
        design.faults = R"([{"at": "READ_RAM", "do": "lost"}])";
    design.fires = change != "quiet";
    design.programmed = change != "blank";
    design.amount = change == "amount" ? 200 : design.amount;
    if (change == "dies")
        design.faults = R"([{"at": "READ_RAM", "nth": 2, "do": "die"}])";
    if (change == "result")
        design.faults = R"([{"at": "OPEN", "nth": 1, "do": "result", "value": 77}])";
    design.lite = change == "lite" || change == "two";
    if (change == "lite")
        design.samplesPerSecond = 10;
    board(design);
    if (change == "two" || change == "mode") {
        QString text = lines(file("design.keo")).join(u'\n');
        if (change == "two")
            text.replace("<KEO_ID>", "<KoCore_Lite/><KEO_ID>");
        else
            text.replace("Standard", "Stranger");
        write("design.keo", text.toUtf8());
        qputenv("SIGNALSCOPE_BOARD", ""); // what the board makes of it is not the point here
    }
    if (change == "folder")
        QDir(m_directory->path()).mkdir("design_core0_window0.vcd");
    if (change == "pipe") // that nobody reads
        QCOMPARE(QProcess::execute("mkfifo", {file("shot.png")}), 0);
    if (change == "text")
        write("design.keo", "no XML");
    const Outcome outcome = run("--device KR-A " + line);
    QVERIFY2(outcome.status == status, qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(words), qPrintable(outcome.errors));
    if (change != "lost") // whose other window is exported
        QCOMPARE(outcome.output, QString());
    if (status != 2)
        return;
    // A script has one way to see what was wrong.
    const QJsonObject document =
        QJsonDocument::fromJson(run("--json " + line).output.toUtf8()).object();
    QCOMPARE(document["status"], status);
    QVERIFY(document["message"].toString().contains(words));
}

/// A section that is a bit short makes no samples, and no answer at all is told.
void tst_CaptureProgram::tellsWhatAServerLacks()
{
    TestDesign design;
    design.lite = true;
    design.amount = 100;
    board(design);
    for (const bool isShort : {true, false}) {
        QLocalServer::removeServer("keo1"); // of a server that was killed
        WireServer server(QStringLiteral("keo1"));
        server.onPacket = [&](const Wire::Packet &request) {
            Wire::Packet reply = request;
            if (request["CMD"] == "OPEN")
                reply["RES"] = 0;
            else
                reply["DATA"] = QBitArray(request["SIZE"].toInt() -
                                          int(isShort && request["OPRATE"] == "READ_RAM"));
            const bool isAsked =
                request.contains("request_id") || request.contains("data_request_id");
            if (isAsked && (isShort || request["CMD"] == "OPEN"))
                server.reply(reply);
        };
        QProcess process;
        process.setWorkingDirectory(m_directory->path());
        process.start(kProgram, {"--device", "KR-A", "--timeout", "4.5", "design.keo"});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 20'000);
        const Outcome outcome = finished(process);
        QCOMPARE(outcome.status, isShort ? 5 : 4);
        QVERIFY2(outcome.errors.contains(isShort ? "No data" : "does not answer"),
                 qPrintable(outcome.errors));
        QCOMPARE(outcome.output, QString());
    }
}

/// A server with as many clients waiting as it takes: Ctrl-C ends the program at once, and without
/// it the program ends by itself and says why.
void tst_CaptureProgram::meetsABusyServer()
{
    board(TestDesign());
    QLocalServer server;
    server.setListenBacklogSize(1);
    QLocalServer::removeServer("keo1");
    QVERIFY(server.listen("keo1"));
    std::vector<std::unique_ptr<QLocalSocket>> others;
    do {
        others.push_back(std::make_unique<QLocalSocket>());
        others.back()->connectToServer("keo1");
    } while (others.back()->state() == QLocalSocket::ConnectedState);
    for (const bool isInterrupted : {true, false}) {
        QProcess process;
        process.setWorkingDirectory(m_directory->path());
        process.start(kProgram, {"--cable", "Tarno USB Cable(FT2CH)", "design.keo"});
        QVERIFY(process.waitForStarted());
        if (isInterrupted) {
            QThread::msleep(500);
            ::kill(pid_t(process.processId()), SIGINT);
            QVERIFY(process.waitForFinished(3000));
        }
        const Outcome outcome = finished(process);
        QCOMPARE(outcome.status, isInterrupted ? 130 : 3);
        QVERIFY2(outcome.errors.contains(isInterrupted ? "Capture Stopped!" : "busy"),
                 qPrintable(outcome.errors));
    }
}

/// As some services start what they run. What would be printed must not get into a file or to the
/// server, whose numbers the closed streams had.
void tst_CaptureProgram::runsWithoutStandardStreams()
{
    board(TestDesign());
    QCOMPARE(run("--device KR-A --format csv --name all design.keo").status, 0);
    for (int closed = 1; closed < 8; ++closed) {
        QProcess process;
        process.setWorkingDirectory(m_directory->path());
        process.setChildProcessModifier([closed] {
            for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                if (closed & (1 << stream))
                    ::close(stream);
            }
        });
        process.start(kProgram,
                      {"--device", "KR-A", "--format", "csv", "--name", "some", "design.keo"});
        const bool isPrinted = !(closed & (1 << STDOUT_FILENO));
        QCOMPARE(finished(process).status, isPrinted ? 0 : 6);
        QCOMPARE(lines(file("some_core0_window0.csv")), lines(file("all_core0_window0.csv")));
    }
}

/// Whose servers were there first in a folder that all users share.
void tst_CaptureProgram::tellsOfAnotherUsersServer()
{
    if (geteuid() != 0)
        QSKIP("only the administrator can be somebody else");
    board(TestDesign());
    constexpr uid_t kStranger = 65534;
    const int stranger = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, {}};
    qstrncpy(address.sun_path, qPrintable(QDir::tempPath() + "/keo1"), sizeof address.sun_path);
    QLocalServer::removeServer("keo1");
    QCOMPARE(bind(stranger, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    QCOMPARE(seteuid(kStranger), 0);
    const int listening = listen(stranger, 9);
    QCOMPARE(seteuid(0), 0);
    QCOMPARE(listening, 0);
    QProcess process;
    process.setWorkingDirectory(m_directory->path());
    process.start(kProgram, {"--cable", "Tarno USB Cable(FT2CH)", "design.keo"});
    const Outcome outcome = finished(process);
    ::close(stranger);
    QCOMPARE(outcome.status, 3);
    QVERIFY2(outcome.errors.contains("another user's"), qPrintable(outcome.errors));
    QLocalServer::removeServer("keo1");
}

void tst_CaptureProgram::tellsOfAFullDisk_data()
{
    addColumns<QString, QString>({"line", "words"});
    addRow("help", "--help", "can not be printed");
    addRow("cables", "--list-cables --json", "can not be printed");
    addRow("result", "--device KR-A --json design.keo", "can not be printed");
    addRow("export", "--device KR-A --format csv --out . --name full design.keo",
           "full_core0_window0.csv");
}

void tst_CaptureProgram::tellsOfAFullDisk()
{
    QFETCH(const QString, line);
    QFETCH(const QString, words);
    board(TestDesign());
    const bool isExport = words == "full_core0_window0.csv";
    QProcess process;
    process.setWorkingDirectory(m_directory->path());
    const QString old = file("full_core0_window0.csv");
    if (isExport) {
        putFile(old, "good");
        // A limit on the size of files stands for the disk.
        process.setChildProcessModifier([] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{2000, 2000};
            setrlimit(RLIMIT_FSIZE, &limit);
        });
    } else {
        process.setStandardOutputFile("/dev/full");
    }
    process.start(kProgram, line.split(u' '));
    const Outcome outcome = finished(process);
    QCOMPARE(outcome.status, 6);
    QVERIFY2(outcome.errors.contains(words), qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(qt_error_string(isExport ? EFBIG : ENOSPC)),
             qPrintable(outcome.errors));
    if (isExport)
        QCOMPARE(lines(old), QStringList("good"));
}

void tst_CaptureProgram::keepsOrdersFromTheTerminal()
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const QString name = QString::fromLatin1(ptsname(terminal));
    const int screen = open(qPrintable(name), O_RDWR | O_NOCTTY); // keeps it open for us to read
    for (const bool shown : {true, false}) {
        QProcess process;
        if (shown)
            process.setStandardErrorFile(name);
        process.start(kProgram, {"--open", QStringLiteral("\x1b]0;x\a\u009b31m.analyzer_prj")});
        const Outcome outcome = finished(process);
        QCOMPARE(outcome.status, 6);
        QByteArray errors = outcome.errors.toUtf8();
        if (shown) {
            errors.resize(4096);
            errors.resize(std::max<ssize_t>(0, read(terminal, errors.data(), 4096)));
        }
        QVERIFY2(errors.contains("]0;x"), errors);
        QCOMPARE(errors.contains('\x1b') || errors.contains('\a') || errors.contains("\xc2\x9b"),
                 !shown);
    }
    close(screen);
    close(terminal);
}

/// A line that wraps can't be taken back, so that each second would leave one behind.
void tst_CaptureProgram::fitsItsLineIntoTheTerminal()
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const QString name = QString::fromLatin1(ptsname(terminal));
    const int screen = open(qPrintable(name), O_RDWR | O_NOCTTY);
    constexpr int kColumns = 40;
    const winsize size{24, kColumns, 0, 0};
    QCOMPARE(ioctl(terminal, TIOCSWINSZ, &size), 0);
    TestDesign design;
    design.fires = false;
    board(design);
    QProcess process;
    process.setWorkingDirectory(m_directory->path());
    process.setStandardErrorFile(name);
    process.start(kProgram, {"--device", "KR-A", "--timeout", "1.5", "design.keo"});
    QCOMPARE(finished(process).status, 4);
    QByteArray shown(4096, 0);
    shown.resize(std::max<ssize_t>(0, read(terminal, shown.data(), size_t(shown.size()))));
    const QByteArray progress = shown.left(shown.indexOf("signalscope-capture:"));
    QVERIFY2(progress.contains("Waiting for") && progress.contains(" s)"), shown);
    for (const QByteArray &line : progress.split('\r'))
        QVERIFY2(line.size() < kColumns, line);
    close(screen);
    close(terminal);
}

void tst_CaptureProgram::forcesTheTrigger()
{
    TestDesign design;
    design.fires = false;
    board(design);
    const Outcome outcome = run("--device KR-A --force-after 0.6 design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QVERIFY(outcome.errors.contains("Forcing the trigger."));
}

/// The core takes no sample before the delay is over, and --force-after cuts it short.
void tst_CaptureProgram::startsLiteCoresLater()
{
    TestDesign design;
    design.lite = true;
    board(design);
    QElapsedTimer time;
    time.start();
    QCOMPARE(run("--device KR-A --delay 800 design.keo").status, 0);
    QVERIFY(time.elapsed() >= 800);
    QVERIFY(lines(file("design.vcd")).contains("$comment Sample 0 (Trigger) $end"));
    const Outcome forced = run("--device KR-A --delay 3600000 --force-after 0.3 "
                               "--picture shot.png design.keo");
    QVERIFY2(forced.status == 0, qPrintable(forced.errors));
    QVERIFY(forced.errors.contains("Forcing the trigger."));
    QCOMPARE(QImage(file("shot.png")).size(), QSize(1280, 720));
}

void tst_CaptureProgram::usesAServerThatRuns()
{
    board(TestDesign());
    QProcess server;
    server.start(kServer, {"-local"});
    QVERIFY(server.waitForStarted());
    QTRY_VERIFY(isListening("keo1"));
    for (int time = 0; time < 2; ++time) {
        const Outcome outcome = run("--device KR-A --json --quiet design.keo");
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.errors, QString());
        const QJsonObject document = QJsonDocument::fromJson(outcome.output.toUtf8()).object();
        QCOMPARE(document["status"].toInt(-1), 0);
        QCOMPARE(document["cable"].toString(), "Tarno USB Cable(FT2CH)");
        const QJsonArray captures = document["captures"].toArray();
        QCOMPARE(captures.size(), 1);
        QCOMPARE(captures.first()["trigger_position"].toInt(), 16);
        QVERIFY(QFile::exists(captures.first()["files"].toArray().first().toString()));
    }
    QVERIFY(isListening("keo1"));
    server.closeWriteChannel();
    QVERIFY(server.waitForFinished());
}

void tst_CaptureProgram::stopsOnASignal_data()
{
    addColumns<int, int, bool>({"signal", "status", "nohup"});
    addRow("Ctrl-C", SIGINT, 130, false);
    addRow("end of the session", SIGTERM, 143, false);
    addRow("end of the terminal", SIGHUP, 129, false);
    addRow("end of the session behind nohup(1)", SIGTERM, 143, true);
}

void tst_CaptureProgram::stopsOnASignal()
{
    QFETCH(int, signal);
    QFETCH(const bool, nohup);
    TestDesign design;
    design.fires = false;
    board(design);
    QProcess process;
    process.setWorkingDirectory(m_directory->path());
    if (nohup)
        process.setChildProcessModifier([] { ::signal(SIGHUP, SIG_IGN); });
    process.start(kProgram, {"--device", "KR-A", "design.keo"});
    QVERIFY(process.waitForStarted());
    QString errors;
    QTRY_VERIFY((errors += process.readAllStandardError()).contains("Waiting for the trigger"));
    QVERIFY(isListening("keo1"));
    if (nohup) {
        ::kill(pid_t(process.processId()), SIGHUP);
        QVERIFY(!process.waitForFinished(300));
    }
    ::kill(pid_t(process.processId()), signal);
    const Outcome outcome = finished(process);
    QTEST(outcome.status, "status");
    QVERIFY(!isListening("keo1"));
    QVERIFY(outcome.errors.contains("Capture Stopped!"));
}

void tst_CaptureProgram::leavesItsServerInOrder_data()
{
    addColumns<QString, int>({"end", "status"});
    addRow("captured", "", 0);
    addRow("time-out", "--timeout 0.1", 4);
    addRow("Ctrl-C", "wait", 130);
    addRow("ended by timeout(1)", "wait", 143);
    addRow("end of the terminal", "wait", 129);
    addRow("Ctrl-C twice, and the server hangs", "hang", 130);
}

/// By the server's own account: the core is disarmed and the device closed, then it ends by itself.
void tst_CaptureProgram::leavesItsServerInOrder()
{
    QFETCH(const QString, end);
    QFETCH(const int, status);
    TestDesign design;
    design.fires = end.isEmpty();
    design.logs = true;
    if (end == u"hang")
        design.faults = R"([{"at": "CLOSE", "do": "hang"}])";
    board(design);
    constexpr int kRuns = 8;
    for (int time = 1; time <= kRuns; ++time) {
        QProcess process;
        process.setWorkingDirectory(m_directory->path());
        QStringList arguments{"--device", "KR-A", "design.keo"};
        if (end.startsWith(u'-'))
            arguments += end.split(u' ');
        process.setChildProcessModifier([] { ::setpgid(0, 0); });
        process.start(kProgram, arguments);
        QVERIFY(process.waitForStarted());
        const auto id = pid_t(process.processId());
        if (status > 128) { // by a signal, which its server gets as well
            QTRY_COMPARE(contentOf(file("packets.log")).count(" > OPEN"), time);
            ::kill(-id, status - 128);
            QTRY_COMPARE(contentOf(file("packets.log")).count(" > CLOSE"), time);
            if (end == u"hang")
                ::kill(-id, SIGINT);
        }
        QCOMPARE(finished(process).status, status);
        const QStringList log = lines(file("packets.log"));
        QCOMPARE(log.filter(" > CLOSE").size(), time);
        if (end != u"hang")
            QCOMPARE(log.filter(" chainserver ends").size(), time);
        // What a core was told before the device was closed: to disarm, unless it had triggered.
        const QStringList told = log.filter("OPRATE=WRITE_START_REG");
        QCOMPARE(told.last().contains("write 0x0000 = 0x0 "), !end.isEmpty());
    }
}

void tst_CaptureProgram::findsNoServer()
{
    board(TestDesign());
    const QString copy = copyWithoutServers();
    for (const char *line : {"design.keo", "--list-cables"})
        QCOMPARE(run(line, copy).status, 3);
    // Quiet, only the sentence of the refusal is told: not by servers, and not by the log.
    write("board.json", "no board");
    for (const char *line : {"design.keo", "--list-cables", "--expression M0) design.keo"}) {
        const Outcome outcome = run(QStringLiteral("--quiet ") + line);
        QVERIFY(outcome.status != 0);
        QVERIFY2(outcome.errors.startsWith("signalscope-capture: "), qPrintable(outcome.errors));
        QCOMPARE(outcome.errors.count(u'\n'), 1);
    }
    board(TestDesign());
    QCOMPARE(run("--list-cables").output, "Tarno USB Cable(FT2CH)\nParallel Port(LPT)\nLK7\n");
}

/// Where no server is.
void tst_CaptureProgram::tellsWhatItWouldSend()
{
    TestDesign design;
    design.dynamic = true;
    design.cores = 2;
    board(design);
    const QString program = copyWithoutServers();
    const QStringList before = QDir(m_directory->path()).entryList();
    const Outcome text = run("--dry-run --device KR-A --core 1 design.keo", program);
    QCOMPARE(text.status, 0);
    QVERIFY2(text.output.startsWith("select         core 1\n"
                                    "write  0x0020  expression count = 1\n"
                                    "write  0x0021  capture amount = 256\n"
                                    "write  0x0022  trigger offset = 235\n"
                                    "write  0x0023  window count = 1\n"
                                    "write  0x0100  M0 compare = "),
             qPrintable(text.output));
    QVERIFY2(text.output.endsWith("M1 control = in range 100000000 to 111011111111\n"
                                  "write  0xAB00  truth table 0, 4 words = 1 at 3\n"
                                  "write  0x0000  start = arm\n"
                                  "select         core 1\n"
                                  "read   0x0000  start\n"),
             qPrintable(text.output));
    QCOMPARE(
        run("--dry-run --device KR-A --core 1 --format csv --out - design.keo", program).output,
        text.output);
    QCOMPARE(run("--dry-run --core 2 design.keo", program).status, 2);

    QString description = lines(file("design.keo")).join(u'\n');
    QVERIFY(description.contains("M0&amp;M1"));
    write("never.keo", description.replace("M0&amp;M1", "M0&amp;M9").toUtf8());
    const Outcome json = run("--dry-run --json --quiet never.keo", program);
    QCOMPARE(json.status, 0);
    const QJsonObject document = QJsonDocument::fromJson(json.output.toUtf8()).object();
    QCOMPARE(document["words"].toInt(), 5 + 8 + 4 + 1 + 2);
    QCOMPARE(document["registers"].toArray().size(), 5 + 8 + 1 + 1 + 2);
    const QJsonObject finding = document["findings"].toArray().first().toObject();
    QCOMPARE(finding["expression"], 0);
    QVERIFY(finding["text"].toString().contains("M9, which is off"));
    QVERIFY(QFile::remove(file("never.keo")));

    design.lite = true;
    design.write(m_directory->path());
    const Outcome lite = run("--dry-run --quiet design.keo", program);
    QCOMPARE(lite.output, "read   0x0002  capture init\n"
                          "write  0x0000  start = arm\n"
                          "read   0x0000  start\n");
    QCOMPARE(QDir(m_directory->path()).entryList(), before);
}

KEO_TEST_MAIN(tst_CaptureProgram)
#include "tst_captureprogram.moc"
