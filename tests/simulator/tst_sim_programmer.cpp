#include "boardprograms.h"

#include <support/testmain.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

const QString kBitstreams = kExample + QStringLiteral("bitstreams/");

/// A call of the programmer that ran to its end.
struct Call
{
    Call(const QString &board, const QStringList &arguments)
    {
        QProcess process;
        startOnBoard(process, "burner_cli", board, arguments);
        process.waitForFinished(kPatienceMs);
        isCrash = process.exitStatus() == QProcess::CrashExit;
        status = process.exitCode();
        output = process.readAllStandardOutput();
        complaint = process.readAllStandardError();
    }

    bool isCrash = false;
    int status = 0;
    QByteArray output;
    QByteArray complaint;
};

QStringList downloadOf(const QString &fsFile)
{
    return {"--device", "KR-C", "--fsFile", fsFile, "--operation_index", "2", "--cable-index", "2"};
}

QStringList replaced(QStringList arguments, const QString &name, const QString &value)
{
    arguments[arguments.indexOf(name) + 1] = value;
    return arguments;
}

const QStringList kChain{"--chain_size", "2", "--chain_index", "1", "--chain_ir", "6,8"};
const QStringList kDownload = downloadOf(kBitstreams + QStringLiteral("uart_fifo.fs")) + kChain;
const QList<int> kOpenChain{6, 0};

} // namespace

/// The programmer and the server of the second cable, "keo", which has two devices: one without
/// analyzer, and the example's.
class tst_SimProgrammer : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void scans();
    void programs();
    void faults_data();
    void faults();
    void failsOnce();
    void hangs();
    void keepsOffLinks_data();
    void keepsOffLinks();
    void refusals_data();
    void refusals();

private:
    QString board(const QByteArray &programmer, bool isProgrammed = false)
    {
        const QString path = m_directory.filePath("board.json");
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write(R"({"log": "log", "cables": {"keo": {"chain": [
            {"series": "KS", "model": "KS-1", "idcode": "0900281b", "instruction": 6},
            {"model": "KR-C", "also_named": ["KR-CX"], "idcode": "1100381B", "programmed": )" +
                   QByteArray(isProgrammed ? "true" : "false") + ", \"description\": \"" +
                   kExample.toUtf8() + "uart_fifo.zeo\", \"stimulus\": \"" + kExample.toUtf8() +
                   "uart_fifo.vcd\"}], \"programmer\": {\"scan_ms\": 1, " + programmer + "}}}}");
        return path;
    }

    QTemporaryDir m_directory;
};

void tst_SimProgrammer::scans()
{
    const Call call(board("\"download_ms\": 1"), {"--scan"});
    QCOMPARE(call.status, 0);
    QCOMPARE(call.output, "Scanning the chain ...\r\n"
                          "Device Info:\r\n  Family: KS\r\n  Name: KS-1\r\n  ID: 0x0900281B\r\n"
                          "Device Info:\r\n  Family: KR\r\n  Name: KR-C\r\n  ID: 0x1100381B\r\n"
                          "Devices found: 2\r\n");

    QFile file(m_directory.filePath("two.json")); // "scan" goes before the order of the cables
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"scan": "keolk7", "cables": {"keo1": {"chain": [{"model": "KR-A"}]},
                                                "keolk7": {}}})");
    file.close();
    const Call other(file.fileName(), {"--scan"});
    QCOMPARE(other.output, "Scanning the chain ...\r\nDevices found: 0\r\n");
}

/// Blank, programmed, and blank again after the next start of the server.
void tst_SimProgrammer::programs()
{
    constexpr int kDownloadMs = 150;
    const QString path = board("\"download_ms\": " + QByteArray::number(kDownloadMs));
    {
        ServerProcess server("chainserver_lpt", path);
        Client client("keo");
        QCOMPARE(client.open(kOpenChain), -20);
        QElapsedTimer clock;
        clock.start();
        const Call call(path, kDownload);
        QVERIFY(clock.elapsed() >= kDownloadMs);
        QVERIFY2(call.output.contains("Finished."), call.output);
        QVERIFY(call.output.contains("[#                   ]\r[##                  ]\r"));
        QVERIFY(call.output.contains("[####################]\r\n"));
        QVERIFY(!call.output.toLower().contains("error"));
        QCOMPARE(client.open(kOpenChain), 0);
        Client next("keo");
        QCOMPARE(next.open({6, 8}), 1); // still the board's chain and no other
    }
    ServerProcess again("chainserver_lpt", path);
    QCOMPARE(Client("keo").open(kOpenChain), -20);

    QFile log(m_directory.filePath("log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QVERIFY(log.readAll().contains("burner_cli runs --device KR-C --fsFile " +
                                   kBitstreams.toUtf8() +
                                   "uart_fifo.fs --operation_index 2 --cable-index 2 "
                                   "--chain_size 2 --chain_index 1 --chain_ir 6,8\n"));
}

void tst_SimProgrammer::faults_data()
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

void tst_SimProgrammer::faults()
{
    QFETCH(QByteArray, fault);
    QFETCH(int, status);
    QFETCH(QByteArray, seen);
    QFETCH(QByteArray, unseen);
    const QString path =
        board("\"download_ms\": 1, \"faults\": [{\"at\": \"download\", " + fault + "}]", true);
    ServerProcess server("chainserver_lpt", path);
    Client client("keo");
    QCOMPARE(client.open(kOpenChain), 0);
    const Call call(path, kDownload);
    QCOMPARE(call.isCrash, status < 0);
    QVERIFY(call.isCrash || call.status == status);
    QVERIFY2(call.output.contains(seen), call.output.left(2000));
    QVERIFY2(!call.output.contains(unseen), call.output.left(2000));
    QVERIFY(call.output.contains("Finished.") == (fault.contains("flood")));
    QTEST(client.open(kOpenChain), "open");
}

/// Faults count the calls since the power came on, scans and downloads apart; a call that was
/// killed leaves no lock.
void tst_SimProgrammer::failsOnce()
{
    const QString path = board(R"("download_ms": 1, "faults": [
        {"at": "download", "nth": 1, "do": "killed"},
        {"at": "scan", "nth": 2, "do": "cut", "bytes": 70},
        {"at": "scan", "nth": 3, "do": "exit"}])");
    ServerProcess server("chainserver_lpt", path);
    Client client("keo");
    QCOMPARE(client.open(kOpenChain), -20);
    QVERIFY(Call(path, {"--scan"}).output.endsWith("found: 2\r\n"));
    QVERIFY(Call(path, kDownload).isCrash);
    QVERIFY(Call(path, {"--scan"}).output.endsWith("  Name: KS-1\r\n  ID"));
    QCOMPARE(Call(path, {"--scan"}).status, 1);
    QCOMPARE(client.open(kOpenChain), -20);
    const Call second(path, kDownload);
    QVERIFY2(second.output.endsWith("Finished.\r\n"), second.output);
    QCOMPARE(client.open(kOpenChain), 0);
}

/// While it hangs the cable is taken; it goes with the one who started it.
void tst_SimProgrammer::hangs()
{
    const QString path =
        board(R"("download_ms": 1, "faults": [{"at": "download", "do": "hang"}])", true);
    ServerProcess server("chainserver_lpt", path);
    Client client("keo");
    QCOMPARE(client.open(kOpenChain), 0);
    QProcess hung;
    startOnBoard(hung, "burner_cli", path, kDownload);
    QByteArray output;
    while (!output.contains("Programming ...") && hung.waitForReadyRead(kPatienceMs))
        output += hung.readAllStandardOutput();
    QVERIFY(output.contains("Programming ..."));
    QCOMPARE(client.open(kOpenChain), -20); // the bitstream is gone from the first moment on
    QCOMPARE(Call(path, kDownload).output, "Error: the cable is in use.\r\n");
    hung.closeWriteChannel();
    QVERIFY(hung.waitForFinished(kPatienceMs));
    QVERIFY(hung.exitCode() != 0);
    QVERIFY(Call(path, kDownload).output.contains("Finished."));
}

void tst_SimProgrammer::keepsOffLinks_data()
{
    const auto row = addColumns<bool>({"isLock"});
    row("chain", false);
    row("lock", true);
}

// What another user put beside the socket leads to any file of this one.
void tst_SimProgrammer::keepsOffLinks()
{
    QFETCH(bool, isLock);
    const QString path = board("\"download_ms\": 1");
    const QString victim = m_directory.filePath("victim");
    QFile file(victim);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    const QDir folder(QDir::tempPath());
    QVERIFY(Call(path, kDownload).output.contains("Finished.")); // it makes the chain's file
    const QStringList chains = folder.entryList({"keo-*.chain"}, QDir::Files, QDir::Time);
    QVERIFY(!chains.isEmpty());
    const QString link = folder.filePath(isLock ? QStringLiteral("keo.burner") : chains.first());
    QFile::remove(link);
    QVERIFY(QFile::link(victim, link));
    const Call call(path, kDownload);
    QVERIFY(!call.output.contains("Finished."));
    QVERIFY(QFileInfo(link).isSymLink());
    QFile::remove(link);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), "mine");
}

void tst_SimProgrammer::refusals_data()
{
    // reason: in the output, or behind a bad command line
    const auto row = addColumns<QStringList, int, QByteArray>({"arguments", "status", "reason"});
    const QStringList good = kDownload;
    const auto command = [&](const char *name, const QStringList &arguments, const char *reason) {
        row(name, arguments, 1, QByteArray(reason));
    };
    command("nothing", {}, "--device is missing");
    command("scan and more", good + QStringList{"--scan"}, "--scan stands alone");
    command("unknown option", good + QStringList{"--fast"}, "fast");
    command("stray word", good + QStringList{"now"}, "\"now\" is no option");
    command("twice", good + QStringList{"--device", "KR-C"}, "--device is there 2 times");
    command("no number", replaced(good, "--operation_index", "-1"), "--operation_index");
    command("unknown cable", replaced(good, "--cable-index", "3"), "there is no cable 3");
    command("chain of one size and another", replaced(good, "--chain_size", "3"), "2 entries");
    command("target behind the chain", replaced(good, "--chain_index", "2"), "--chain_index is 2");
    command("half a chain", good.first(good.size() - 2), "--chain_ir is missing");
    command("odd codes", replaced(good, "--chain_ir", "6,"), "--chain_ir: \"\"");

    const auto board = [&](const char *name, const QStringList &arguments,
                           const QByteArray &reason) {
        row(name, arguments, 0, "Error: " + reason);
    };
    board("cable without devices", replaced(good, "--cable-index", "0"), "no device answers");
    board("other channel", good + QStringList{"--channel", "1"}, "no device answers on cable 2, ");
    board("chain not told", good.first(8), "the chain has 2 devices, not 1.");
    board("wrong code", replaced(good, "--chain_ir", "8,8"), "device 1 of the chain does not take");
    board("the neighbour", replaced(replaced(good, "--chain_index", "0"), "--chain_ir", "8,8"),
          "ID code 0x0900281B is not that of KR-C.");
    board("other device", replaced(good, "--device", "KR-A"), "ID code 0x1100381B is not that of");
    board("no fs file", downloadOf("/nowhere/a.fs") + kChain, "the fs file /nowhere/a.fs can't");
    board("a directory", downloadOf(kExample) + kChain, "the fs file " + kExample.toUtf8());
    board("made for another", downloadOf(kBitstreams + "other_device.fs") + kChain,
          "the fs file is made for KS-1, not for KR-C.");
}

void tst_SimProgrammer::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QByteArray, reason);
    const QString path = board("\"download_ms\": 1", true);
    ServerProcess server("chainserver_lpt", path);
    Client client("keo");
    QCOMPARE(client.open(kOpenChain), 0);
    const Call call(path, arguments);
    QCOMPARE(call.status, status);
    const QByteArray &told = status == 0 ? call.output : call.complaint;
    QVERIFY2(told.contains(reason), told);
    QCOMPARE(client.open(kOpenChain), 0); // and the device keeps what it has
}

KEO_TEST_MAIN(tst_SimProgrammer)
#include "tst_sim_programmer.moc"
