// Captures that are replayed from their transcript, and captures through a forwarded socket: both
// export what the simulated board itself gave.

#include <support/desktop.h>
#include <support/files.h>

#include <export_ui/exportdialog.h>

#include <QDir>
#include <QRegularExpression>
#include <QScopeGuard>

#include <csignal>
#include <unistd.h>

Q_DECLARE_METATYPE(TestDesign)

using namespace KEO;

class tst_ReplayRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void replays_data();
    void replays();
    void replaysToTheWindow();
    void tellsDifferences();
    void handledByPeople();
    void breaksOff();
    void badFiles();
    void remoteLab();
    void remoteLabInTheWindow();

private:
    struct Outcome
    {
        int status = -1;
        QString told;
        QMap<QString, QByteArray> files; ///< exports by name, without the date of a VCD file
    };

    [[nodiscard]] QString path(const QString &name) const { return m_directory->filePath(name); }
    /// Runs the capture program on the design in m_directory, with exports in a folder of their own
    /// and \a variables added to an environment without board.
    [[nodiscard]] Outcome capture(const QStringList &options,
                                  const QMap<QString, QString> &variables) const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

namespace {

/// A server in one socket folder, the program in another, and a forwarder between them, as between
/// two machines.
struct Lab
{
    explicit Lab(const QString &board)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", folder.path());
        environment.insert("SIGNALSCOPE_BOARD", board);
        server.setProcessEnvironment(environment);
        server.start(KEO_BURNER_DIR "/chainserver", {"-local"});
        QTRY_VERIFY(QFile::exists(folder.filePath("keo1")));
        // One process serves each connection, so they make a group to be cut off together.
        forwarder.setChildProcessModifier([] { setpgid(0, 0); });
    }
    ~Lab()
    {
        cut();
        server.closeWriteChannel();
        server.waitForFinished();
    }

    void forward()
    {
        forwarder.start("socat", {"UNIX-LISTEN:" + desk.filePath("keo1") + ",fork,unlink-early",
                                  "UNIX-CONNECT:" + folder.filePath("keo1")});
        QTRY_VERIFY2(QFile::exists(desk.filePath("keo1")), "socat is missing; test.sh installs it");
    }
    /// Leaves the socket's file where it is.
    void cut()
    {
        if (forwarder.processId() == 0)
            return;
        kill(-pid_t(forwarder.processId()), SIGKILL);
        forwarder.waitForFinished();
    }

    QTemporaryDir folder{"/tmp/keo-XXXXXX"};
    QTemporaryDir desk{"/tmp/keo-XXXXXX"};
    QProcess server;
    QProcess forwarder;
};

} // namespace

void tst_ReplayRoad::init()
{
    WidgetTest::init();
    m_directory = std::make_unique<QTemporaryDir>();
}

tst_ReplayRoad::Outcome tst_ReplayRoad::capture(const QStringList &options,
                                                const QMap<QString, QString> &variables) const
{
    const QTemporaryDir out;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove("SIGNALSCOPE_BOARD");
    environment.remove("SIGNALSCOPE_REPLAY");
    for (auto entry = variables.begin(); entry != variables.end(); ++entry)
        environment.insert(entry.key(), entry.value());
    QProcess process;
    process.setProcessEnvironment(environment);
    const QString file = QDir(m_directory->path()).entryList({"design.?eo"}).value(0);
    QStringList arguments{"--timeout", "60", "--out", out.path(), path(file)};
    for (const char *format : {"csv", "vcd", "prn", "csv-plain", "vcd-plain"})
        arguments << "--format" << format;
    process.start(KEO_BIN_DIR "/signalscope-capture", arguments + options);
    if (!process.waitForFinished(90'000))
        process.kill();
    Outcome outcome{process.exitCode(), QString::fromUtf8(process.readAllStandardError()), {}};
    const QDir directory(out.path());
    for (const QString &name : directory.entryList(QDir::Files)) {
        QByteArray bytes = contentOf(directory.filePath(name));
        if (const qsizetype date = bytes.indexOf("$date"); date >= 0)
            bytes.remove(date, bytes.indexOf("$end", date) - date);
        outcome.files.insert(name, bytes);
    }
    return outcome;
}

void tst_ReplayRoad::replays_data()
{
    addColumns<TestDesign, QStringList>({"design", "options"});
    addRow("static", TestDesign{.noise = 20}, QStringList());
    addRow(
        "windows of two cores",
        TestDesign{.dynamic = true, .storageDepth = 1024, .windows = 3, .amount = 128, .cores = 2},
        QStringList{"--core", "0", "--core", "1"});
    addRow("forced", TestDesign{.extension = "zeo", .fires = false},
           QStringList{"--force-after", "1.2"});
    addRow("lite, polled without a pause",
           TestDesign{.lite = true, .amount = 300, .samplesPerSecond = 1500},
           QStringList{"--auto", "2"});
    addRow(
        "faults",
        TestDesign{.amount = 1024, .faults = R"([{"at": "READ_START_REG", "do": "late", "ms": 700},
                                    {"at": "READ_RAM", "nth": 4, "do": "swapped"},
                                    {"at": "READ_RAM", "nth": 2, "do": "doubled"},
                                    {"at": "READ_RAM", "nth": 3, "do": "garbage",
                                     "kind": "unknown type"}])"},
        QStringList());
}

void tst_ReplayRoad::replays()
{
    QFETCH(TestDesign, design);
    QFETCH(QStringList, options);
    design.write(m_directory->path());
    const Outcome recorded = capture(options + QStringList{"-transcript", path("transcript")},
                                     {{"SIGNALSCOPE_BOARD", path("board.json")}});
    QVERIFY2(recorded.status == 0 && !recorded.files.isEmpty(), qPrintable(recorded.told));
    const Outcome replayed = capture(options, {{"SIGNALSCOPE_REPLAY", path("transcript")}});
    QVERIFY2(replayed.status == 0, qPrintable(replayed.told));
    QVERIFY2(!replayed.told.contains("differs"), qPrintable(replayed.told));
    QCOMPARE(replayed.files.keys(), recorded.files.keys());
    QVERIFY(replayed.files == recorded.files);
}

/// What the command line recorded, twice in the window; its own transcript is replayed as well.
void tst_ReplayRoad::replaysToTheWindow()
{
    TestDesign().write(m_directory->path());
    const Outcome recorded = capture({"--name", "w", "--transcript", path("transcript")},
                                     {{"SIGNALSCOPE_BOARD", path("board.json")}});
    QCOMPARE(recorded.status, 0);
    const auto forget = qScopeGuard([] { qunsetenv("SIGNALSCOPE_REPLAY"); });
    for (const QString &transcript : QStringList{"transcript", "window's"}) {
        qputenv("SIGNALSCOPE_REPLAY", path(transcript).toLocal8Bit());
        if (transcript == "transcript")
            QVERIFY(!JtagSession::instance()->startTranscript(path("window's")));
        const BenchServer server;
        const UserWindow user;
        user.window->openFile(path("design.keo"), {}, {}, {});
        for (int round = 0; round < 2; ++round) {
            user.capture();
            QVERIFY(user.isIdle() && user.tabs()->count() == 2);
            const OnModal<ExportDialog> dialog([](ExportDialog *box) {
                QTest::keyClicks(box->findChild<QLineEdit *>("editName"), "w");
                QTest::keyClick(box, Qt::Key_Return);
            });
            user.click("Export");
            QVERIFY(dialog.seen());
            const QString name = "w_core0_window0.csv";
            QCOMPARE(contentOf(path(name)), recorded.files.value(name));
            QVERIFY(QFile::remove(path(name)));
        }
        JtagSession::instance()->stopTranscript();
    }
}

void tst_ReplayRoad::tellsDifferences()
{
    const TestDesign design;
    design.write(m_directory->path());
    QCOMPARE(
        capture({"--transcript", path("transcript")}, {{"SIGNALSCOPE_BOARD", path("board.json")}})
            .status,
        0);
    const Outcome other =
        capture({"--set", "M0===XXXXXXXX00000001"}, {{"SIGNALSCOPE_REPLAY", path("transcript")}});
    QCOMPARE(other.status, 3);
    QVERIFY(other.files.isEmpty());
    static const QRegularExpression difference(
        "packet \\d+ differs: got WRITE .*, but line (\\d+) of .* has WRITE ");
    const auto match = difference.match(other.told);
    QVERIFY2(match.hasMatch(), qPrintable(other.told));
    const QByteArray line =
        contentOf(path("transcript")).split('\n').value(match.captured(1).toInt() - 1);
    QVERIFY2(line.contains("WRITE_REGISTOR"), line.constData());
}

/// Line ends of mail, a byte order mark, and an empty frame whose line lost its last blank.
void tst_ReplayRoad::handledByPeople()
{
    TestDesign().write(m_directory->path());
    const Outcome recorded =
        capture({"--transcript", path("transcript")}, {{"SIGNALSCOPE_BOARD", path("board.json")}});
    QByteArray text = contentOf(path("transcript"));
    text.replace("\n", "\r\n");
    text.insert(text.lastIndexOf(" keo1 <"), " keo1 !\r\n9999.9");
    putFile(path("transcript"), "\xef\xbb\xbf" + text);
    const Outcome replayed = capture({}, {{"SIGNALSCOPE_REPLAY", path("transcript")}});
    QVERIFY2(replayed.status == 0 && !replayed.told.contains(path("transcript")),
             qPrintable(replayed.told));
    QVERIFY(replayed.files == recorded.files);
}

/// The program that wrote it was killed while it read samples, or before it asked for them.
void tst_ReplayRoad::breaksOff()
{
    TestDesign().write(m_directory->path());
    QCOMPARE(
        capture({"--transcript", path("transcript")}, {{"SIGNALSCOPE_BOARD", path("board.json")}})
            .status,
        0);
    const QByteArray text = contentOf(path("transcript"));
    const qsizetype request = text.indexOf('\n', text.lastIndexOf("READ_RAM")) + 1;
    const qsizetype line = text.first(request).count('\n');
    const auto replay = [&](qsizetype size) {
        putFile(path("cut"), text.first(size));
        return capture({"--timeout", "2"}, {{"SIGNALSCOPE_REPLAY", path("cut")}});
    };
    const Outcome reading = replay(request);
    QCOMPARE(reading.status, 4);
    QVERIFY2(reading.told.contains(QString("gets no answer: line %1 of ").arg(line)),
             qPrintable(reading.told));
    const Outcome armed = replay(text.lastIndexOf('\n', text.indexOf("BRUST_READ")) + 30);
    QCOMPARE(armed.status, 3);
    QCOMPARE(armed.told.count("cut has nothing more"), 1);
}

/// A transcript that can't be written keeps the capture from starting; one that can't be read keeps
/// the server from it.
void tst_ReplayRoad::badFiles()
{
    TestDesign design;
    design.logs = true;
    design.write(m_directory->path());
    const Outcome unwritable =
        capture({"--transcript", path("board.json")}, {{"SIGNALSCOPE_BOARD", path("board.json")}});
    QCOMPARE(unwritable.status, 6);
    QVERIFY2(unwritable.told.contains("board.json can not be written"),
             qPrintable(unwritable.told));
    QVERIFY(!QFile::exists(path("packets.log")));
    const QByteArray start = "# Signal Scope transcript 1\n";
    putFile(path("transcript"), start); // kept by a call that does not come to a capture
    QCOMPARE(capture({"--transcript", path("transcript"), "--set", "M9===1"}, {}).status, 2);
    QCOMPARE(contentOf(path("transcript")), start);
    const Outcome unread =
        capture({"--cable", "Tarno USB Cable(FT2CH)"}, {{"SIGNALSCOPE_REPLAY", path("none")}});
    QCOMPARE(unread.status, 3);
    for (const QByteArray &text :
         {QByteArray(), QByteArray("x"), start + "1.0 keo1 > A=bits(99999999999:\n",
          start + "1.0 keo1 > A=[[[[[1]]]]]\n", start + "1.0 keo1 > A=\"\\u00\n",
          start + "1.0 keo1 > A=bits(8:zz)\n", start + "1.0 keo1 ! 000\n"}) {
        putFile(path("transcript"), text);
        QProcess server;
        server.start(KEO_BURNER_DIR "/chainserver", {"-local", "--replay", path("transcript")});
        QVERIFY(server.waitForFinished());
        QCOMPARE(server.exitCode(), 2);
        const QByteArray told = server.readAllStandardError();
        QVERIFY2(told.contains("line "), told.constData());
    }
}

/// The program's own server would have no board.
void tst_ReplayRoad::remoteLab()
{
    TestDesign().write(m_directory->path());
    const Outcome direct = capture({}, {{"SIGNALSCOPE_BOARD", path("board.json")}});
    QCOMPARE(direct.status, 0);

    Lab lab(path("board.json"));
    const QMap<QString, QString> desk{{"TMPDIR", lab.desk.path()}};
    const Outcome early = capture({"--no-server-start"}, desk);
    QVERIFY2(early.status == 3 && early.told.contains(lab.desk.path()), qPrintable(early.told));
    lab.forward();
    const Outcome remote = capture({"--no-server-start"}, desk);
    QVERIFY2(remote.status == 0, qPrintable(remote.told));
    QVERIFY(remote.files == direct.files);

    // The lab's server ends; the forwarder does not know.
    lab.server.closeWriteChannel();
    QVERIFY(lab.server.waitForFinished());
    const Outcome gone = capture({}, desk);
    QVERIFY2(gone.status == 3 && gone.told.contains("went away"), qPrintable(gone.told));
}

/// The way breaks while the trigger is awaited, and while samples are read: the window says so,
/// what it shows stays, and once the way is back the program captures again when it is started
/// again.
void tst_ReplayRoad::remoteLabInTheWindow()
{
    TestDesign design;
    design.fires = false;
    design.amount = 2048;
    design.faults = R"([{"at": "READ_RAM", "do": "pieces", "bytes": 40, "ms": 5}])";
    design.write(m_directory->path());
    Lab lab(path("board.json"));
    const auto home = qScopeGuard([tmp = qgetenv("TMPDIR")] { qputenv("TMPDIR", tmp); });
    qputenv("TMPDIR", lab.desk.path().toLocal8Bit());
    for (const bool isReading : {false, true}) {
        lab.forward();
        const BenchServer leavesTheName;
        const UserWindow user;
        const auto status = [&user](const char *name) { return user.find<QLabel>(name)->text(); };
        const auto force = [&] {
            user.press(Qt::Key_F1);
            QTRY_VERIFY(status("runStatus").startsWith("Waiting"));
            user.click("Force Trigger");
        };
        user.window->openFile(path("design.keo"), {}, {}, {});
        force();
        QTRY_VERIFY_WITH_TIMEOUT(user.isIdle() && user.tabs()->count() == 2, kCaptureTime);
        user.press(Qt::Key_F1);
        user.press(Qt::Key_F4);
        QVERIFY(user.isIdle());
        force();
        QTRY_VERIFY_WITH_TIMEOUT(user.isIdle() && user.tabs()->count() == 2, kCaptureTime);

        if (isReading) {
            force();
            QTRY_VERIFY(status("runStatus").startsWith("Reading"));
        } else {
            user.press(Qt::Key_F1);
            QTRY_VERIFY(status("runStatus").startsWith("Waiting"));
        }
        lab.cut();
        QTRY_VERIFY2(status("runStatus").endsWith("The cable server went away."),
                     qPrintable(status("runStatus")));
        QVERIFY(status("deviceStatus").endsWith(": server is gone"));
        user.press(Qt::Key_F4);
        QVERIFY(user.isIdle());
    }
}

KEO_WIDGET_TEST_MAIN(tst_ReplayRoad)
#include "tst_replayroad.moc"
