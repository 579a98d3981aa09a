// The programs of the simulated board as processes: sockets, bytes, exit codes, output.

#include <link/wireserver.h>

#include <support/bittext.h>
#include <support/files.h>
#include <support/testmain.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

namespace {

using Message = Wire::Packet;

constexpr int kPatienceMs = 20000;
const QString kExample = QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/");
const QString kBitstreams = kExample + QStringLiteral("bitstreams/");

QByteArray frameOf(const QByteArray &payload)
{
    QByteArray length;
    QDataStream(&length, QIODevice::WriteOnly) << qint32(payload.size());
    return length + payload;
}

/// A program on a board file, ended by the end of its input.
class Program : public QProcess
{
public:
    Program(const QString &name, const QString &board, const QStringList &arguments = {"-local"})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("SIGNALSCOPE_BOARD"), board);
        setProcessEnvironment(environment);
        start(QStringLiteral(KEO_BURNER_DIR "/") + name, arguments);
        waitForStarted(kPatienceMs); // brings state() up to date as well
    }
    ~Program() override
    {
        closeWriteChannel();
        if (!waitForFinished(kPatienceMs))
            kill();
    }

    /// Waits until standard error holds \a text.
    bool complains(const QString &text)
    {
        QElapsedTimer clock;
        clock.start();
        while (!complaints.contains(text) && clock.elapsed() < kPatienceMs) {
            waitForReadyRead(20);
            complaints += QString::fromLocal8Bit(readAllStandardError());
        }
        return complaints.contains(text);
    }

    QString complaints;
};

/// A call of the programmer that ran to its end.
struct Call
{
    Call(const QString &board, const QStringList &arguments)
    {
        Program process("burner_cli", board, arguments);
        process.waitForFinished(kPatienceMs);
        status = process.exitStatus() == QProcess::CrashExit ? -1 : process.exitCode();
        output = process.readAllStandardOutput();
        complaint = process.readAllStandardError();
    }

    int status;
    QByteArray output;
    QByteArray complaint;
};

/// A client with a reader of its own for what comes back.
class Client
{
public:
    explicit Client(const QString &name)
    {
        QElapsedTimer clock;
        clock.start();
        do {
            socket.connectToServer(name);
            if (socket.waitForConnected(100))
                break;
            QTest::qWait(10);
        } while (clock.elapsed() < kPatienceMs);
    }

    void send(const Message &message) { sendBytes(Wire::frame(message)); }
    void sendBytes(const QByteArray &bytes)
    {
        socket.write(bytes);
        socket.flush();
    }

    /// The next message; one key "none" when nothing complete comes within \a ms.
    Message receive(int ms = kPatienceMs)
    {
        QElapsedTimer clock;
        clock.start();
        while (true) {
            buffer += socket.readAll();
            if (const auto message = Wire::take(buffer))
                return *message;
            incomplete += !buffer.isEmpty();
            const qint64 left = ms - clock.elapsed();
            if (left <= 0 || !socket.waitForReadyRead(int(left)))
                if (socket.bytesAvailable() == 0)
                    return {{QStringLiteral("none"), true}};
        }
    }

    int open(const QList<int> &chain = {0}, uint id = 0)
    {
        QVariantList list;
        for (const int code : chain)
            list.append(code);
        send({{"CMD", "OPEN"}, {"CHAIN", list}, {"request_id", id}});
        const Message reply = receive();
        return reply.value("request_id").toUInt() == id ? reply.value("RES", 4711).toInt() : 4712;
    }

    void write(const QString &word)
    {
        send({{"CMD", "WRITE"}, {"OPRATE", "WRITE_REGISTOR"}, {"DATA", bitsOf(word)}});
    }

    void askStart(int width, uint id)
    {
        write("01101" + binary(0, 16));
        send({{"CMD", "READ"},
              {"OPRATE", "READ_START_REG"},
              {"SIZE", width},
              {"data_request_id", id}});
    }

    QLocalSocket socket;
    QByteArray buffer;
    int incomplete = 0; ///< looks at the buffer that found part of a frame
};

// The cable "keo" has two devices: one without analyzer, and the example's.
const QList<int> kOpenChain{6, 0};

QStringList downloadOf(const QString &fsFile)
{
    return {"--device",      "KR-C", "--fsFile",     fsFile, "--operation_index", "2",
            "--cable-index", "2",    "--chain_size", "2",    "--chain_index",     "1",
            "--chain_ir",    "6,8"};
}
const QStringList kDownload = downloadOf(kBitstreams + QStringLiteral("uart_fifo.fs"));

QStringList replaced(QStringList arguments, const QString &name, const QString &value)
{
    arguments[arguments.indexOf(name) + 1] = value;
    return arguments;
}

} // namespace

class tst_SimPrograms : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void opens();
    void closedDevice();
    void oneClientHoldsTheDevice();
    void faults_data();
    void faults();
    void piecesAndGlued();
    void hangs();
    void hostileClients();
    void namesOfTheDeadAndTheLiving();
    void refusals();
    void programs();
    void keepsOffLinks();
    void programmerFaults_data();
    void programmerFaults();
    void programmerFailsOnce();
    void programmerHangs();
    void programmerRefusals();

private:
    /// The example on the cables "keo1", with these faults of its server, and "keo", with these
    /// keys of its programmer.
    QString board(const QByteArray &faults = {}, const QByteArray &programmer = R"("scan_ms": 1)",
                  bool isProgrammed = true)
    {
        const QByteArray example = "\"description\": \"" + kExample.toUtf8() +
                                   "uart_fifo.zeo\", \"stimulus\": \"" + kExample.toUtf8() +
                                   "uart_fifo.vcd\"}";
        return putFile(
            m_directory.filePath(QStringLiteral("board.json")),
            "{\"log\": \"log\", \"scan\": \"keo\", \"cables\": {\"keo1\": {\"chain\": [{" +
                example + "], \"faults\": [" + faults + "]}, \"keo\": {\"chain\": [" +
                R"({"series": "KS", "model": "KS-1", "idcode": "0900281b", "instruction": 6},
                      {"model": "KR-C", "also_named": ["KR-CX"], "idcode": "1100381B",
                       "programmed": )" +
                (isProgrammed ? "true, " : "false, ") + example +
                "], \"programmer\": {\"download_ms\": 1, " + programmer + "}}}}");
    }

    QTemporaryDir m_directory;
};

void tst_SimPrograms::opens()
{
    struct Row
    {
        const char *program, *socket, *board;
        QList<int> chain;
        int result;
    };
    const Row rows[] = {{"chainserver", "keo1", "board.json", {0}, 0},
                        {"chainserver", "keo1", "board.json", {}, 1},
                        {"chainserver_lpt", "keo", "board.json", {0}, -20}, // no bitstream
                        {"chainserver", "keo1", "board_chain.json", {8, 0}, -20},
                        {"chainserver_lk7", "keolk7", "board.json", {0}, 1}, // a fault says so
                        {"chainserver_lpt", "keo", "", {6, 0}, 0},
                        {"chainserver_lpt", "keo", "", {7, 0}, 1},
                        {"chainserver_lpt", "keo", "", {0}, 1},
                        {"chainserver_lk7", "keolk7", "", {0}, 1}}; // nothing on the cable
    for (const Row &row : rows) {
        const QString name = QLatin1String(row.board);
        Program server(row.program, name.isEmpty() ? board() : kExample + name);
        Client client(row.socket);
        QCOMPARE(client.open(row.chain, 5), row.result);
    }
}

void tst_SimPrograms::closedDevice()
{
    Program server("chainserver", board());
    Client client("keo1");
    client.write("01001" + binary(0x21, 16) + binary(5, 16));
    QVERIFY(server.complains("a write, and the device isn't open"));
    client.askStart(16, 9);
    const Message reply = client.receive();
    QCOMPARE(reply.value("data_request_id"), QVariant(9u));
    QCOMPARE(reply.value("DATA"), QVariant(QBitArray()));

    QCOMPARE(client.open(), 0);
    client.write("10000");
    client.askStart(20, 9);
    QVERIFY(server.complains("core 0: a read of 20 bits where 16 are to come"));
    QVERIFY(!client.receive().value("DATA").toBitArray().isEmpty());
    client.write("11111");
    QVERIFY(server.complains("no core 15"));
    client.askStart(16, 9);
    QVERIFY(client.receive().value("DATA").toBitArray().isEmpty());
    client.send({{"CMD", "EXPLODE"}});
    QVERIFY(server.complains("unknown command \"EXPLODE\""));
}

void tst_SimPrograms::oneClientHoldsTheDevice()
{
    Program server("chainserver", board());
    auto first = std::make_unique<Client>("keo1");
    Client second("keo1");
    QCOMPARE(first->open(), 0);
    QCOMPARE(second.open(), 1);
    QCOMPARE(first->open(), 0); // opening again is no harm
    first.reset();              // gone without CLOSE
    QTRY_COMPARE(second.open(), 0);
}

void tst_SimPrograms::faults_data()
{
    // What comes back for polls 1 to 3: the ids in order; "xx" stands for a frame without id.
    const auto row = addColumns<QByteArray, QString>({"fault", "arrivals"});
    row("none", R"("nth": 4, "do": "lost")", "1 2 3");
    row("lost", R"("nth": 2, "do": "lost")", "1 3");
    row("late", R"("nth": 2, "do": "late", "ms": 300)", "1 3 2");
    row("doubled", R"("nth": 2, "do": "doubled")", "1 2 2 3");
    row("swapped", R"("nth": 2, "do": "swapped")", "1 3 2");
    row("garbage", R"("nth": 2, "do": "garbage", "kind": "empty")", "1 xx 2 3");
    row("hex", R"("nth": 2, "do": "garbage", "hex": "00000004 00000000")", "1 xx 2 3");
    row("every", R"("nth": "every", "do": "doubled")", "1 1 2 2 3 3");
}

void tst_SimPrograms::faults()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, arrivals);
    Program server("chainserver", board(R"({"at": "READ_START_REG", )" + fault + '}'));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    client.write("10000");
    for (uint id = 1; id <= 3; ++id)
        client.askStart(16, id);
    QStringList seen;
    while (seen.size() < arrivals.split(u' ').size()) {
        const Message message = client.receive();
        QVERIFY(!message.contains("none"));
        seen.append(message.value("data_request_id", "xx").toString());
    }
    QCOMPARE(seen.join(u' '), arrivals);
    QVERIFY(client.receive(50).contains("none")); // and nothing more
}

/// These two change nothing but the moments at which bytes arrive.
void tst_SimPrograms::piecesAndGlued()
{
    Program server("chainserver",
                   board(R"({"at": "READ_START_REG", "do": "pieces", "bytes": 30, "ms": 100},
                            {"at": "READ_START_REG", "nth": 2, "do": "glued"})"));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    client.write("10000");
    client.askStart(16, 1);
    client.incomplete = 0;
    QCOMPARE(client.receive().value("data_request_id"), QVariant(1u));
    QVERIFY(client.incomplete > 0);
    client.askStart(16, 2);
    QVERIFY(client.receive(100).contains("none"));
    client.askStart(16, 3);
    QCOMPARE(client.receive().value("data_request_id"), QVariant(2u));
    QCOMPARE(client.receive().value("data_request_id"), QVariant(3u));
}

void tst_SimPrograms::hangs()
{
    Program server("chainserver", board(R"({"at": "READ_RAM", "do": "hang"})"));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    client.send({{"CMD", "READ"}, {"OPRATE", "READ_RAM"}, {"SIZE", 33}, {"data_request_id", 1u}});
    client.askStart(16, 2);
    QVERIFY(client.receive(200).contains("none"));
    Client late("keo1"); // comes to a server that hangs already
    late.send({{"CMD", "OPEN"}, {"CHAIN", QVariantList{0}}, {"request_id", 0u}});
    QVERIFY(late.receive(200).contains("none"));
    QCOMPARE(server.state(), QProcess::Running);
    server.closeWriteChannel(); // a hanging server still ends with its parent
    QVERIFY(server.waitForFinished(kPatienceMs));
}

/// Whatever one client sends, the server says so and serves the next one.
void tst_SimPrograms::hostileClients()
{
    const auto value = [](const QByteArray &hex) { // of the key "A"
        return frameOf(QByteArray::fromHex("00000001 00000002 0041" + hex));
    };
    const QByteArray open = Wire::frame({{"CMD", "OPEN"}, {"CHAIN", QVariantList{0}}});
    const std::pair<QByteArray, const char *> rows[] = {
        {QByteArray(16, '\xff'), "is cut off: a frame says"},
        {QByteArray::fromHex("7fffffff00"), "is cut off: a frame says"},
        {frameOf(QByteArray::fromHex("ffffffff")), "it ends early"},
        {frameOf(QByteArray::fromHex("0000000001")), "left over"},
        {frameOf(QByteArray::fromHex("00000001 00000003 414141")), "odd number"},
        {value("00001077 00 7fffffff"), "type 4215"},
        {value("0000000d 00 ffffffff"), "it ends early"},
        {value("00000009 00 ffffffff"), "it ends early"},
        {value(QByteArray("00000009 00 00000001").repeated(5000)), "nested too deep"},
        {open + Wire::frame({{"CMD", "READ"}, {"SIZE", 2147483647}}), "a read of 2147483647 bits"},
        {Wire::frame({{"CMD", "OPEN"}, {"CHAIN", "0"}}) +
             Wire::frame({{"CMD", "WRITE"}, {"DATA", 1}}),
         "the device isn't open"}};
    Program server("chainserver", board());
    for (const auto &[bytes, complaint] : rows) {
        server.complaints.clear();
        {
            Client client("keo1");
            client.sendBytes(bytes);
            QVERIFY2(server.complains(complaint), qPrintable(server.complaints));
        }
        Client next("keo1");
        QTRY_COMPARE(next.open(), 0);
    }
}

void tst_SimPrograms::namesOfTheDeadAndTheLiving()
{
    {
        Program dead("chainserver", board());
        QCOMPARE(Client("keo1").open(), 0);
        dead.kill();
        QVERIFY(dead.waitForFinished(kPatienceMs));
    }
    QVERIFY(QFileInfo::exists(QDir::tempPath() + QStringLiteral("/keo1")));
    Program living("chainserver", board());
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    Program second("chainserver", board());
    QVERIFY(second.complains("another server is alive"));
    QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, kPatienceMs);
    QCOMPARE(second.exitCode(), 3);
    QCOMPARE(client.open(), 0); // the first one is untouched

    QFile file(QDir::tempPath() + QStringLiteral("/keolk7")); // not a socket: somebody's own
    QVERIFY(file.open(QIODevice::WriteOnly));
    Program third("chainserver_lk7", board());
    QVERIFY(third.complains("a file stands where"));
    QVERIFY(file.remove());
}

void tst_SimPrograms::refusals()
{
    struct Row
    {
        QString board;
        QStringList arguments;
        int status;
        const char *complaint;
    };
    const Row rows[] = {{board(), {}, 1, "start it with -local"},
                        {board(), {"-local", "-remote"}, 1, "remote"},
                        {"/nowhere/b.json", {"-local"}, 2, "there is no such file"},
                        {QDir::tempPath(), {"-local"}, 2, "is no regular file"},
                        {board(), {"-local", "--log", "/nowhere/x.log"}, 2, "/nowhere/x.log"},
                        {{}, {"--check", "/nowhere/b.json"}, 2, ""}};
    for (const Row &row : rows) {
        Program server("chainserver", row.board, row.arguments);
        QVERIFY(server.waitForFinished(kPatienceMs));
        QCOMPARE(server.exitCode(), row.status);
        QVERIFY2(server.complains(row.complaint), qPrintable(server.complaints));
    }
}

/// Blank, programmed, and blank again after the next start of the server.
void tst_SimPrograms::programs()
{
    const QString path = board({}, R"("download_ms": 150)", false);
    {
        Program server("chainserver_lpt", path);
        Client client("keo");
        QCOMPARE(client.open(kOpenChain), -20);
        QElapsedTimer clock;
        clock.start();
        const Call call(path, kDownload);
        QVERIFY(clock.elapsed() >= 150);
        QVERIFY2(call.output.contains("Finished."), call.output);
        QVERIFY(call.output.contains("[#                   ]\r[##                  ]\r"));
        QVERIFY(call.output.contains("[####################]\r\n"));
        QVERIFY(!call.output.toLower().contains("error"));
        QCOMPARE(client.open(kOpenChain), 0);
        QCOMPARE(Client("keo").open({6, 8}), 1); // still the board's chain and no other
    }
    Program again("chainserver_lpt", path);
    QCOMPARE(Client("keo").open(kOpenChain), -20);
    QVERIFY(contentOf(m_directory.filePath("log"))
                .contains("burner_cli runs " + kDownload.join(u' ').toUtf8() + '\n'));
}

// What another user put beside the socket leads to any file of this one.
void tst_SimPrograms::keepsOffLinks()
{
    const QString path = board({}, R"("download_ms": 1)", false);
    const QString victim = putFile(m_directory.filePath("victim"), "mine");
    QVERIFY(Call(path, kDownload).output.contains("Finished.")); // it makes the chain's file
    const QDir folder(QDir::tempPath());
    QStringList links = folder.entryList({"keo-*.chain"}, QDir::Files);
    links.append("keo.burner");
    for (const QString &link : std::as_const(links)) {
        QFile::remove(folder.filePath(link));
        QVERIFY(QFile::link(victim, folder.filePath(link)));
        QVERIFY(!Call(path, kDownload).output.contains("Finished."));
        QVERIFY(QFileInfo(folder.filePath(link)).isSymLink());
        QVERIFY(QFile::remove(folder.filePath(link)));
    }
    QCOMPARE(contentOf(victim), "mine");
}

void tst_SimPrograms::programmerFaults_data()
{
    // status: -1 for a crash
    // open: result, of a device that was programmed before
    const auto row = addColumns<QByteArray, int, QByteArray, QByteArray, int>(
        {"fault", "status", "seen", "unseen", "open"});
    row("exit", R"("do": "exit", "status": 3)", 3, "Programming ...\r\n[#", "Verifying", -20);
    row("error", R"("do": "error", "text": "an error")", 0, "\r\nan error\r\n", "Verifying", -20);
    row("killed", R"("do": "killed")", -1, "Programming ...\r\n[#", "Verifying", -20);
    row("absent", R"("do": "absent")", 127, "", "\n", 0);
    row("cut", R"("do": "cut", "bytes": 50)", 0, "Erasing ...\r\n[# ", "##", -20);
    row("flood", R"("do": "flood", "bytes": 1000001)", 0, ".....", "Error", 0);
}

void tst_SimPrograms::programmerFaults()
{
    QFETCH(QByteArray, fault);
    QFETCH(QByteArray, seen);
    QFETCH(QByteArray, unseen);
    const QString path = board({}, R"("faults": [{"at": "download", )" + fault + "}]");
    Program server("chainserver_lpt", path);
    Client client("keo");
    QCOMPARE(client.open(kOpenChain), 0);
    const Call call(path, kDownload);
    QTEST(call.status, "status");
    QVERIFY2(call.output.contains(seen), call.output.left(2000));
    QVERIFY2(!call.output.contains(unseen), call.output.left(2000));
    QCOMPARE(call.output.contains("Finished."), fault.contains("flood"));
    QTEST(client.open(kOpenChain), "open");
}

/// Faults count the calls since the power came on, scans and downloads apart; a call that was
/// killed leaves no lock.
void tst_SimPrograms::programmerFailsOnce()
{
    const QString path = board({}, R"("faults": [{"at": "download", "nth": 1, "do": "killed"},
        {"at": "scan", "nth": 2, "do": "cut", "bytes": 70},
        {"at": "scan", "nth": 3, "do": "exit"}])",
                               false);
    Program server("chainserver_lpt", path);
    Client client("keo");
    QVERIFY(Call(path, {"--scan"}).output.endsWith("found: 2\r\n"));
    QCOMPARE(Call(path, kDownload).status, -1);
    QVERIFY(Call(path, {"--scan"}).output.endsWith("  Name: KS-1\r\n  ID"));
    QCOMPARE(Call(path, {"--scan"}).status, 1);
    QCOMPARE(client.open(kOpenChain), -20);
    QVERIFY(Call(path, kDownload).output.endsWith("Finished.\r\n"));
    QCOMPARE(client.open(kOpenChain), 0);
}

/// While it hangs the cable is taken; it goes with the one who started it.
void tst_SimPrograms::programmerHangs()
{
    const QString path = board({}, R"("faults": [{"at": "download", "do": "hang"}])");
    Program server("chainserver_lpt", path);
    Client client("keo");
    QCOMPARE(client.open(kOpenChain), 0);
    Program hung("burner_cli", path, kDownload);
    QByteArray output;
    while (!output.contains("Programming ...") && hung.waitForReadyRead(kPatienceMs))
        output += hung.readAllStandardOutput();
    QCOMPARE(client.open(kOpenChain), -20); // the bitstream is gone from the first moment on
    QCOMPARE(Call(path, kDownload).output, "Error: the cable is in use.\r\n");
    hung.closeWriteChannel();
    QVERIFY(hung.waitForFinished(kPatienceMs));
    QVERIFY(hung.exitCode() != 0);
    QVERIFY(Call(path, kDownload).output.contains("Finished."));
}

/// The device keeps what it has, whatever is refused and why.
void tst_SimPrograms::programmerRefusals()
{
    const QString path = board();
    Program server("chainserver_lpt", path);
    Client client("keo");
    const auto with = [](const char *name, const char *value) {
        return replaced(kDownload, QLatin1String(name), QLatin1String(value));
    };
    const std::pair<QStringList, QByteArray> commands[] = {
        {{}, "--device is missing"},
        {kDownload + QStringList{"--scan"}, "--scan stands alone"},
        {kDownload + QStringList{"now"}, "\"now\" is no option"},
        {kDownload + QStringList{"--device", "KR-C"}, "--device is there 2 times"},
        {with("--cable-index", "3"), "there is no cable 3"},
        {with("--chain_size", "3"), "2 entries"},
        {with("--chain_index", "2"), "--chain_index is 2"},
        {kDownload.first(kDownload.size() - 2), "--chain_ir is missing"},
        {with("--chain_ir", "6,"), "--chain_ir: \"\""}};
    for (const auto &[arguments, reason] : commands) {
        const Call call(path, arguments);
        QVERIFY2(call.complaint.contains(reason), call.complaint);
        QCOMPARE(call.status, 1);
    }
    const std::pair<QStringList, QByteArray> answers[] = {
        {with("--cable-index", "0"), "no device answers"},
        {kDownload + QStringList{"--channel", "1"}, "no device answers on cable 2, "},
        {kDownload.first(8), "the chain has 2 devices, not 1."},
        {with("--chain_ir", "8,8"), "device 1 of the chain does not take"},
        {replaced(with("--chain_index", "0"), "--chain_ir", "8,8"),
         "ID code 0x0900281B is not that of KR-C."},
        {with("--device", "KR-A"), "ID code 0x1100381B is not that of"},
        {downloadOf("/nowhere/a.fs"), "the fs file /nowhere/a.fs can't"},
        {downloadOf(kBitstreams + "other_device.fs"), "the fs file is made for KS-1, not for"}};
    for (const auto &[arguments, reason] : answers) {
        const Call call(path, arguments);
        QVERIFY2(call.output.contains("Error: " + reason), call.output);
        QCOMPARE(call.status, 0);
    }
    QCOMPARE(client.open(kOpenChain), 0);
}

KEO_TEST_MAIN(tst_SimPrograms)
#include "tst_sim_programs.moc"
