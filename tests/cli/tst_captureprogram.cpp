// The capture program as a script meets it: a process with arguments, files, output and an exit
// status, against the simulated board.

#include <support/testdesign.h>
#include <support/testmain.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QSet>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
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
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n');
}

/// Rows of samples of a CSV file, cell by cell.
QList<QStringList> csvRows(const QString &path)
{
    QList<QStringList> rows;
    for (const QString &line : lines(path)) {
        if (line.contains(", X") || !rows.isEmpty())
            rows.append(line.split(", "));
    }
    return rows.mid(1, rows.size() - 2); // without the row before the first sample
}

} // namespace

class tst_CaptureProgram : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void writesEveryFormat();
    void tellsResultsAsJson();
    void savesProjects();
    void savesWhatItCanNotExport_data();
    void savesWhatItCanNotExport();
    void exportsProjects_data();
    void exportsProjects();
    void exportsOneCoreOfAProject();
    void refusesProjects_data();
    void refusesProjects();
    void drawsPictures();
    void endsWithItsStatus_data();
    void endsWithItsStatus();
    void tellsOfAFullDisk_data();
    void tellsOfAFullDisk();
    void keepsOrdersFromTheTerminal();
    void forcesTheTrigger();
    void numbersTheRounds();
    void capturesFromLiteCores_data();
    void capturesFromLiteCores();
    void startsLiteCoresLater();
    void capturesBothCoresOfTheExample();
    void usesAServerThatRuns();
    void stopsOnCtrlC();
    void findsNoServer();
    void listsCables();

private:
    /// Arguments are split at blanks; `design.keo` and other files stand in the test's directory.
    Outcome run(const QString &line, const QString &program = kProgram);
    QString file(const QString &name) const { return m_directory->filePath(name); }
    void board(const TestDesign &design);
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
    const Outcome outcome = run("--device KR-A --format csv --format vcd --format prn "
                                "--out new/folder --name run --period 10ns design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QStringList expected;
    for (const char *window : {"0", "1"}) {
        for (const char *format : {"csv", "vcd", "prn"})
            expected.append(
                file(QStringLiteral("new/folder/run_core0_window%1.%2")
                         .arg(QString::fromLatin1(window), QString::fromLatin1(format))));
    }
    QCOMPARE(outcome.output.split(u'\n', Qt::SkipEmptyParts), expected);
    QVERIFY(outcome.errors.contains("Waiting for the trigger of core 0"));
    QVERIFY(outcome.errors.contains("Reading core 0 window 1"));

    // The row of sample i stands at (i + 1) * period; the bus is the first column.
    const QList<QStringList> csv = csvRows(expected.first());
    QCOMPARE(csv.size(), design.amount);
    const qint64 start = design.firstTrigger(design.position) - design.position;
    for (int sample = 0; sample < design.amount; ++sample) {
        const QStringList &cells = csv.at(sample);
        QCOMPARE(cells.at(0).toInt(), (sample + 1) * 10);
        QCOMPARE(cells.at(1).toInt(nullptr, 16), int(start + sample));
        QCOMPARE(cells.at(18).at(0).digitValue(), int(design.level(16, start + sample)));
    }
    QVERIFY(lines(expected.at(1)).contains("$comment Sample 16 (Trigger) $end"));
    QVERIFY(lines(expected.at(1)).contains("  1 ps"));
    QVERIFY(
        lines(expected.at(2)).constFirst().startsWith("time unit: ns\tcount[15:0]\t/count[15]"));
}

void tst_CaptureProgram::tellsResultsAsJson()
{
    board(TestDesign());
    const Outcome outcome = run("--device KR-A --json --quiet design.keo");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QString());
    const QJsonObject document = QJsonDocument::fromJson(outcome.output.toUtf8()).object();
    QCOMPARE(document["status"].toInt(-1), 0);
    QCOMPARE(document["cable"].toString(), "Tarno USB Cable(FT2CH)");
    const QJsonArray captures = document["captures"].toArray();
    QCOMPARE(captures.size(), 1);
    QCOMPARE(captures.first()["samples"].toInt(), 256);
    QCOMPARE(captures.first()["trigger_position"].toInt(), 16);
    QVERIFY(QFile::exists(captures.first()["files"].toArray().first().toString()));
}

void tst_CaptureProgram::savesProjects()
{
    board(TestDesign());
    const QStringList description = lines(file("design.keo"));
    const Outcome outcome = run("--device KR-A --auto 2 --save new/p.1.analyzer_prj design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.output.split(u'\n', Qt::SkipEmptyParts),
             (QStringList{file("new/p.1.analyzer_prj"), file("new/p.1.xml")}));
    const QStringList project = lines(file("new/p.1.analyzer_prj"));
    QVERIFY(project.contains("KEO_FILE=" + file("design.keo")));
    QVERIFY(project.contains("DATA_FILE=" + file("new/p.1.xml")));
    QCOMPARE(lines(file("design.keo")), description); // the tool flow's file stays
    // Only the last round.
    QCOMPARE(lines(file("new/p.1.xml")).filter("<Window").size(), 1);

    QVERIFY(QFile::remove(file("new/p.1.xml")) && QDir(m_directory->path()).mkdir("new/p.1.xml"));
    const Outcome blocked = run("--device KR-A --save new/p.1.analyzer_prj design.keo");
    QCOMPARE(blocked.status, 6);
    QVERIFY2(blocked.errors.contains(file("new/p.1.xml")), qPrintable(blocked.errors));
    QCOMPARE(lines(file("new/p.1.analyzer_prj")), project);
}

void tst_CaptureProgram::savesWhatItCanNotExport_data()
{
    addColumns<QString, QString>({"line", "blocked"});
    addRow("export", "--format vcd --name p", "out/p_core0_window0.vcd");
    addRow("round", "--auto 3 --format vcd --name p", "out/p_2_core0_window0.vcd");
    addRow("picture", "--picture out/p.png", "out/p_core0_window0.png");
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
    addRow("standard cores", false, "--core 0 --core 1", 12);
    addRow("lite core", true, "--delay 5", 3);
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
    const QString formats = " --format csv --format vcd --format prn --period 10ns --name capture";
    const Outcome captured = run("--device KR-A " + cores + " --out once --save p.analyzer_prj" +
                                 formats + " design.keo");
    QVERIFY2(captured.status == 0, qPrintable(captured.errors));
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
}

void tst_CaptureProgram::exportsOneCoreOfAProject()
{
    TestDesign design;
    design.windows = 2;
    design.cores = 2;
    board(design);
    QCOMPARE(run("--device KR-A --core 0 --core 1 --save p.analyzer_prj design.keo").status, 0);
    const Outcome one = run("--open p.analyzer_prj --core 1 --json --picture shot.png --out one");
    QVERIFY2(one.status == 0, qPrintable(one.errors));
    const QJsonObject document = QJsonDocument::fromJson(one.output.toUtf8()).object();
    QCOMPARE(document["captures"].toArray().size(), 2);
    QCOMPARE(document["captures"].toArray().first()["samples"].toInt(), design.amount);
    QVERIFY(!QImage(file("shot_core1_window0.png")).isNull());
    QVERIFY(QFile::exists(file("one/p_core1_window1.vcd")));
}

void tst_CaptureProgram::refusesProjects_data()
{
    addColumns<bool, QByteArray, QString>({"lite", "data", "words"});
    addRow("no data file", false, QByteArray(), "p.xml");
    addRow("cut off", false, QByteArray("<WaveData><Window"), "Error when reading data file.");
    const QByteArray other("<WaveData><Window/></WaveData>");
    addRow("another design", false, other, "Data file miss match the project");
    addRow("another lite design", true, other, "Data file miss match the project");
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
    const auto writeFile = [&](const char *name, const QByteArray &text) {
        QFile out(file(QLatin1String(name)));
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(text) == text.size());
    };
    writeFile("p.analyzer_prj", "[General]\nKEO_FILE=" + file("design.keo").toUtf8() +
                                    "\nDATA_FILE=" + file("p.xml").toUtf8() + "\n");
    if (!data.isNull())
        writeFile("p.xml", data);
    if (data == "gone")
        QVERIFY(QFile::remove(file("design.keo")));
    const Outcome outcome = run("--quiet --open p.analyzer_prj");
    QCOMPARE(outcome.status, 6);
    QVERIFY2(outcome.errors.startsWith("signalscope-capture: "), // and no message of the log
             qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(words), qPrintable(outcome.errors));
    QCOMPARE(QDir(m_directory->path()).entryList({"*.vcd"}).size(), 1); // the stimulus
}

// The trigger stands at sample 16 of 256: a yellow line above the black ground in each picture.
void tst_CaptureProgram::drawsPictures()
{
    TestDesign design;
    design.windows = 2;
    board(design);
    const Outcome outcome =
        run("--device KR-A --quiet --picture shot.png --size 900x400 design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    // Nothing of the platform, which has no windows.
    QVERIFY2(!outcome.errors.contains("plugin"), qPrintable(outcome.errors));
    for (const char *name : {"shot_core0_window0.png", "shot_core0_window1.png"}) {
        QVERIFY2(outcome.output.contains(file(name)), qPrintable(outcome.output));
        const QImage picture(file(name));
        QCOMPARE(picture.size(), QSize(900, 400));
        QSet<QRgb> colors;
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, 75));
        QVERIFY(colors.contains(qRgb(255, 255, 0)) && colors.contains(qRgb(0, 0, 0)));
    }
}

void tst_CaptureProgram::endsWithItsStatus_data()
{
    // A change of the board or the folder, and the arguments.
    addColumns<QString, QString, int, QString>({"change", "line", "status", "words"});
    addRow("unknown option", "", "--fast design.keo", 2, "fast");
    addRow("unknown cable", "", "--cable USB design.keo", 2, "\"USB\"");
    addRow("no such core", "", "--core 3 design.keo", 2, "core 3");
    addRow("Auto with windows", "windows", "--auto 2 design.keo", 2, "one window");
    addRow("dead server", "dies", "design.keo", 3, "went away");
    addRow("trigger never comes", "quiet", "--timeout 0.7 design.keo", 4, "the trigger of core 0");
    addRow("no bitstream", "blank", "design.keo", 5, "Device does not load fs file yet.");
    addRow("chain does not fit", "", "--chain 0,8 design.keo", 5, "Open device failed.");
    addRow("unknown result", "result", "design.keo", 5, "Unknown device error ID77.");
    addRow("no such file", "", "other.keo", 6, "other.keo");
    addRow("no XML", "text", "design.keo", 6, "design.keo");
    addRow("delay of a standard core", "", "--delay 5 design.keo", 2, "--delay");
    addRow("lite core never done", "lite", "--timeout 0.7 design.keo", 4, "the capture of core 0");
    addRow("no such lite core", "lite", "--core 3 design.keo", 2, "core 3");
    addRow("two lite cores", "two", "design.keo", 6, "2 lite cores");
    addRow("no folder can be made", "", "--out board.json/x design.keo", 6, "board.json/x");
    addRow("export is a folder", "folder", "design.keo", 6, "design_core0_window0.vcd");
}

void tst_CaptureProgram::endsWithItsStatus()
{
    QFETCH(QString, change);
    QFETCH(QString, line);
    QFETCH(int, status);
    QFETCH(QString, words);
    TestDesign design;
    design.windows = change == "windows" ? 2 : 1;
    design.fires = change != "quiet";
    design.programmed = change != "blank";
    if (change == "dies")
        design.faults = R"([{"at": "READ_RAM", "nth": 2, "do": "die"}])";
    if (change == "result")
        design.faults = R"([{"at": "OPEN", "nth": 1, "do": "result", "value": 77}])";
    design.lite = change == "lite" || change == "two";
    if (change == "lite")
        design.samplesPerSecond = 10;
    board(design);
    if (change == "two") {
        QFile description(file("design.keo"));
        QVERIFY(description.open(QIODevice::ReadWrite));
        QByteArray text = description.readAll();
        text.replace("<KEO_ID>", "<KoCore_Lite/><KEO_ID>");
        QVERIFY(description.seek(0) && description.write(text) > 0);
        qputenv("SIGNALSCOPE_BOARD", ""); // what the board makes of it is not the point here
    }
    if (change == "folder")
        QDir(m_directory->path()).mkdir("design_core0_window0.vcd");
    if (change == "text") {
        QFile description(file("design.keo"));
        QVERIFY(description.open(QIODevice::WriteOnly) && description.write("no XML") > 0);
    }
    const Outcome outcome = run("--device KR-A " + line);
    QVERIFY2(outcome.status == status, qPrintable(outcome.errors));
    QVERIFY2(outcome.errors.contains(words), qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
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
        QFile kept(old);
        QVERIFY(kept.open(QIODevice::WriteOnly) && kept.write("good") == 4);
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

void tst_CaptureProgram::forcesTheTrigger()
{
    TestDesign design;
    design.fires = false;
    board(design);
    const Outcome outcome = run("--device KR-A --force-after 0.6 --format csv design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QVERIFY(outcome.errors.contains("Forcing the trigger."));
    // Wherever it was forced, the samples are a piece of the stimulus without a gap.
    const QList<QStringList> csv = csvRows(file("design_core0_window0.csv"));
    const int start = csv.first().at(1).toInt(nullptr, 16);
    for (int sample = 0; sample < design.amount; ++sample)
        QCOMPARE(csv.at(sample).at(1).toInt(nullptr, 16), (start + sample) % TestDesign::kLength);
}

void tst_CaptureProgram::numbersTheRounds()
{
    board(TestDesign());
    const Outcome outcome = run("--device KR-A --auto 3 design.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    for (const char *round : {"1", "2", "3"}) {
        const QString path = file(QString("design_%1_core0_window0.vcd").arg(round));
        QVERIFY(outcome.output.contains(path));
        QVERIFY(lines(path).contains("$comment Sample 16 (Trigger) $end"));
    }
}

void tst_CaptureProgram::capturesFromLiteCores_data()
{
    addColumns<QString, QString, int, bool, int>(
        {"device", "extension", "implementation", "initData", "amount"});
    addRow("in the list", "KR-H", "keo", 0, false, 300);
    addRow("not in the list", "KR-Z", "keo", 0, false, 300);
    addRow(".zeo", "KR-H", "zeo", 0, false, 300);
    addRow("another implementation", "KR-H", "keo", 2, false, 256);
    addRow("data is there already", "KR-H", "keo", 0, true, 129);
    addRow("one sample", "KR-H", "keo", 0, false, 1);
}

/// Every signal at every sample is the stimulus, round after round without a gap.
void tst_CaptureProgram::capturesFromLiteCores()
{
    QFETCH(const QString, device);
    QFETCH(const QString, extension);
    QFETCH(const int, amount);
    TestDesign design;
    design.lite = true;
    design.device = device;
    design.extension = extension;
    design.amount = amount;
    design.noise = 70; // rows of more than 64 bits
    QFETCH(const int, implementation);
    design.implementation = implementation;
    QFETCH(const bool, initData);
    design.initData = initData;
    board(design);
    const Outcome outcome =
        run("--device " + device + " --auto 2 --format csv --format prn design." + extension);
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.output.split(u'\n', Qt::SkipEmptyParts),
             (QStringList{file("design_1.csv"), file("design_1_core0_window0.prn"),
                          file("design_2.csv"), file("design_2_core0_window0.prn")}));
    for (const int round : {0, 1}) {
        const QList<QStringList> csv =
            csvRows(file(QStringLiteral("design_%1.csv").arg(round + 1)));
        QCOMPARE(csv.size(), amount);
        for (int i = 0; i < amount; ++i) {
            const qint64 sample = round * amount + i;
            for (int signal = 0; signal < design.signalCount(); ++signal)
                QCOMPARE(csv.at(i).at(2 + signal).at(0).digitValue(),
                         int(design.level(signal, sample)));
        }
    }
}

/// The core takes no sample before the delay is over, and --force-after cuts it short.
void tst_CaptureProgram::startsLiteCoresLater()
{
    TestDesign design;
    design.lite = true;
    board(design);
    QElapsedTimer time;
    time.start();
    QCOMPARE(run("--device KR-A --delay 1500 design.keo").status, 0);
    QVERIFY(time.elapsed() >= 1500);
    QVERIFY(lines(file("design.vcd")).contains("$comment Sample 0 (Trigger) $end"));
    const Outcome forced = run("--device KR-A --delay 3600000 --force-after 0.3 "
                               "--picture shot.png design.keo");
    QVERIFY2(forced.status == 0, qPrintable(forced.errors));
    QVERIFY(forced.errors.contains("Forcing the trigger."));
    QCOMPARE(QImage(file("shot.png")).size(), QSize(1280, 720));
}

void tst_CaptureProgram::capturesBothCoresOfTheExample()
{
    const QString example = QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo");
    qputenv("SIGNALSCOPE_BOARD", (example + "/board.json").toLocal8Bit());
    const Outcome outcome = run("--device KR-C --core 0 --core 1 " + example + "/uart_fifo.keo");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.errors));
    QVERIFY(outcome.output.contains("uart_fifo_core0_window0.vcd"));
    QVERIFY(outcome.output.contains("uart_fifo_core1_window1.vcd"));
}

void tst_CaptureProgram::usesAServerThatRuns()
{
    board(TestDesign());
    QProcess server;
    server.start(kServer, {"-local"});
    QVERIFY(server.waitForStarted());
    QTRY_VERIFY(isListening("keo1"));
    for (int time = 0; time < 2; ++time)
        QCOMPARE(run("--device KR-A design.keo").status, 0);
    QVERIFY(isListening("keo1"));
    server.closeWriteChannel();
    QVERIFY(server.waitForFinished());
}

void tst_CaptureProgram::stopsOnCtrlC()
{
    TestDesign design;
    design.fires = false;
    board(design);
    QProcess process;
    process.setWorkingDirectory(m_directory->path());
    process.start(kProgram, {"--device", "KR-A", "design.keo"});
    QVERIFY(process.waitForStarted());
    QString errors;
    QTRY_VERIFY((errors += process.readAllStandardError()).contains("Waiting for the trigger"));
    QVERIFY(isListening("keo1"));
    ::kill(pid_t(process.processId()), SIGINT);
    const Outcome outcome = finished(process);
    QCOMPARE(outcome.status, 130);
    QVERIFY(!isListening("keo1"));
    QVERIFY(outcome.errors.contains("Capture Stopped!"));
}

void tst_CaptureProgram::findsNoServer()
{
    board(TestDesign());
    const QString copy = copyWithoutServers();
    for (const char *line : {"design.keo", "--list-cables"})
        QCOMPARE(run(line, copy).status, 3);
}

void tst_CaptureProgram::listsCables()
{
    board(TestDesign());
    const Outcome outcome = run("--list-cables");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, "Tarno USB Cable(FT2CH)\nParallel Port(LPT)\nLK7\n");
}

KEO_TEST_MAIN(tst_CaptureProgram)
#include "tst_captureprogram.moc"
