#include "boardprograms.h"

#include <support/testmain.h>

#include <QDataStream>
#include <QDir>
#include <QLocalServer>

#include <memory>

namespace {

/// The rows in the order of time, beginning \a position rows before the trigger, whose marker
/// stands two rows after it; empty unless there is exactly one marker.
QStringList unrolled(const QStringList &rows, int position)
{
    static const QRegularExpression marked(QStringLiteral("^1.*"));
    if (rows.filter(marked).size() != 1)
        return {};
    const qsizetype oldest = (rows.indexOf(marked) - 2 - position + rows.size()) % rows.size();
    return rows.mid(oldest) + rows.mid(0, oldest);
}

} // namespace

class tst_SimServer : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void opens_data();
    void opens();
    void capturesStaticCore();
    void closedDevice();
    void oneClientHoldsTheDevice();
    void faults_data();
    void faults();
    void piecesAndGlued();
    void hangs();
    void hostileClient_data();
    void hostileClient();
    void namesOfTheDeadAndTheLiving();
    void refusals_data();
    void refusals();

private:
    /// A board file of the example with these faults on the first cable.
    QString boardWith(const QByteArray &faults, const QByteArray &more = {})
    {
        const QString path = m_directory.filePath(QStringLiteral("board.json"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return {};
        const QByteArray device = "{\"description\": \"" + kExample.toUtf8() +
                                  "uart_fifo.zeo\", \"stimulus\": \"" + kExample.toUtf8() +
                                  "uart_fifo.vcd\"}";
        file.write("{" + more + "\"cables\": {\"keo1\": {\"chain\": [" + device +
                   "], \"faults\": [" + faults +
                   "]}, \"keo\": {\"chain\": [{\"instruction\": 6}, " + device + ", {}]}}}");
        return path;
    }

    QTemporaryDir m_directory;
};

void tst_SimServer::opens_data()
{
    const auto row = addColumns<QString, QString, QString, QList<int>, int>(
        {"program", "socket", "board", "chain", "result"});
    const QString example = kExample + QStringLiteral("board.json");
    const QString chain; // the board with three devices
    row("programmed", "chainserver", "keo1", example, {0}, 0);
    row("no bitstream", "chainserver_lpt", "keo", example, {0}, -20);
    row("no bitstream, behind a neighbour", "chainserver", "keo1",
        kExample + QStringLiteral("board_chain.json"), {8, 0}, -20);
    row("fails", "chainserver_lk7", "keolk7", example, {0}, 1);
    row("three devices", "chainserver_lpt", "keo", chain, {6, 0, 8}, 0);
    row("other code", "chainserver_lpt", "keo", chain, {7, 0, 8}, 1);
    row("other length", "chainserver_lpt", "keo", chain, {0}, 1);
    row("empty chain", "chainserver", "keo1", example, {}, 1);
    row("cable without a board", "chainserver_lk7", "keolk7", chain, {0}, 1);
}

void tst_SimServer::opens()
{
    QFETCH(QString, program);
    QFETCH(QString, socket);
    QFETCH(QString, board);
    QFETCH(QList<int>, chain);
    ServerProcess server(program, board.isEmpty() ? boardWith({}) : board);
    Client client(socket);
    QTEST(client.open(chain, 5), "result");
}

/// Core 0 fires on the letter H: its window holds the line that begins there.
void tst_SimServer::capturesStaticCore()
{
    constexpr int kWidth = 16, kAmount = 1024, kPosition = 128;
    ServerProcess server("chainserver", kExample + QStringLiteral("board.json"));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    for (int run = 0; run < 2; ++run) { // the second round goes on in the stimulus
        client.write(QStringLiteral("1") + binary(0, 4));
        const QList<QPair<int, int>> registers{
            {0x20, 0},    {0x21, kAmount - 1}, {0x22, kAmount - kPosition - 3 - 1}, // a .keo
            {0x23, 0},    {0x100, 1},          {0x101, 1},
            {0x110, 'H'}, {0x111, 0xff},       {0, 1}};
        for (const auto &[address, value] : registers)
            client.writeRegister(address, quint64(value), kWidth);
        QVERIFY(client.waitUntilIdle(kWidth));

        const QStringList rows = unrolled(client.readWindow(kAmount, kWidth), kPosition);
        QCOMPARE(rows.size(), kAmount);
        QByteArray before, after;
        for (qsizetype row = 0; row < rows.size(); ++row) {
            if (rows.at(row).at(2) == u'1')
                (row < kPosition ? before : after)
                    .append(char(rows.at(row).mid(3, 8).toInt(nullptr, 2)));
        }
        QCOMPARE(rows.at(kPosition).at(2), u'1');
        QCOMPARE(before, QByteArray());
        QCOMPARE(after, run == 0 ? QByteArray("HELLO FPGA\r\n") : QByteArray("HELLO FIFO\r\n"));
    }
    client.send({{"CMD", "CLOSE"}});
}

void tst_SimServer::closedDevice()
{
    ServerProcess server("chainserver", boardWith({}));
    Client client("keo1");
    client.writeRegister(0x21, 5, 16);
    QVERIFY(server.complains(QStringLiteral("a write, and the device isn't open")));
    client.askStart(16, 9);
    const Message reply = client.receive();
    QCOMPARE(reply.value("data_request_id"), QVariant(9u));
    QCOMPARE(reply.value("DATA").typeId(), int(QMetaType::QBitArray));
    QVERIFY(reply.value("DATA").toBitArray().isEmpty());

    QCOMPARE(client.open(), 0);
    client.write(QStringLiteral("11111")); // no core 15
    QVERIFY(server.complains(QStringLiteral("no core 15")));
    client.askStart(16, 9);
    QVERIFY(client.receive().value("DATA").toBitArray().isEmpty());
    client.write(QStringLiteral("10000"));
    client.askStart(20, 9);
    QVERIFY(server.complains(QStringLiteral("core 0: a read of 20 bits where 16 are to come")));
    client.send({{"CMD", "EXPLODE"}});
    QVERIFY(server.complains(QStringLiteral("unknown command \"EXPLODE\"")));
}

void tst_SimServer::oneClientHoldsTheDevice()
{
    ServerProcess server("chainserver", boardWith({}));
    auto first = std::make_unique<Client>("keo1");
    Client second("keo1");
    QCOMPARE(first->open(), 0);
    QCOMPARE(second.open(), 1);
    QCOMPARE(first->open(), 0); // opening again is no harm
    first.reset();              // gone without CLOSE
    QTRY_COMPARE(second.open(), 0);
}

void tst_SimServer::faults_data()
{
    // What comes back for polls 1 to 3: the ids in order; "xx" stands for a frame without id.
    const auto row = addColumns<QByteArray, QString>({"fault", "arrivals"});
    const auto at = [](const char *rest) {
        return QByteArray("{\"at\": \"READ_START_REG\", \"nth\": 2, ") + rest + "}";
    };
    row("none", {}, "1 2 3");
    row("lost", at(R"("do": "lost")"), "1 3");
    row("late", at(R"("do": "late", "ms": 300)"), "1 3 2");
    row("doubled", at(R"("do": "doubled")"), "1 2 2 3");
    row("swapped", at(R"("do": "swapped")"), "1 3 2");
    row("garbage", at(R"("do": "garbage", "kind": "empty")"), "1 xx 2 3");
    row("hex", at(R"("do": "garbage", "hex": "00000004 00000000")"), "1 xx 2 3");
    row("every", R"({"at": "READ_START_REG", "nth": "every", "do": "doubled"})", "1 1 2 2 3 3");
}

void tst_SimServer::faults()
{
    QFETCH(QByteArray, fault);
    ServerProcess server("chainserver", boardWith(fault));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    client.write(QStringLiteral("10000"));
    for (uint id = 1; id <= 3; ++id)
        client.askStart(16, id);
    QFETCH(QString, arrivals);
    QStringList seen;
    while (seen.size() < arrivals.split(u' ').size()) {
        const Message message = client.receive();
        QVERIFY(!message.contains("none"));
        const QVariant id = message.value("data_request_id");
        seen.append(id.isValid() ? id.toString() : QStringLiteral("xx"));
    }
    QCOMPARE(seen.join(u' '), arrivals);
    QVERIFY(client.receive(50).contains("none")); // and nothing more
}

/// These two change nothing but the moments at which bytes arrive.
void tst_SimServer::piecesAndGlued()
{
    ServerProcess server("chainserver",
                         boardWith("{\"at\": \"READ_START_REG\", \"nth\": 1, \"do\": \"pieces\", "
                                   "\"bytes\": 30, \"ms\": 100},"
                                   "{\"at\": \"READ_START_REG\", \"nth\": 2, \"do\": \"glued\"}"));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    client.write(QStringLiteral("10000"));
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

void tst_SimServer::hangs()
{
    ServerProcess server("chainserver", boardWith("{\"at\": \"READ_RAM\", \"do\": \"hang\"}"));
    Client client("keo1");
    QCOMPARE(client.open(), 0);
    client.send({{"CMD", "READ"}, {"OPRATE", "READ_RAM"}, {"SIZE", 33}, {"data_request_id", 1u}});
    client.askStart(16, 2);
    Client late("keo1");
    late.send({{"CMD", "OPEN"}, {"CHAIN", QVariantList{0}}, {"request_id", 0u}});
    QVERIFY(client.receive(200).contains("none"));
    QVERIFY(late.receive(50).contains("none"));
    QCOMPARE(server.process.state(), QProcess::Running);
    server.process.closeWriteChannel(); // a hanging server still ends with its parent
    QVERIFY(server.process.waitForFinished(kPatienceMs));
}

void tst_SimServer::hostileClient_data()
{
    const auto row = addColumns<QByteArray, QString>({"bytes", "complaint"});
    const auto frame = [](const char *hex) {
        const QByteArray payload = QByteArray::fromHex(hex);
        QByteArray length;
        QDataStream(&length, QIODevice::WriteOnly) << qint32(payload.size());
        return QByteArray(length + payload);
    };
    row("negative length", QByteArray(16, '\xff'), "is cut off: a frame says");
    row("huge length", QByteArray::fromHex("7fffffff00"), "is cut off: a frame says");
    row("huge entry count", frame("ffffffff"), "it ends early");
    row("empty frame", frame(""), "it ends early");
    row("left over", frame("0000000001"), "left over");
    row("odd text", frame("00000001 00000003 414141"), "odd number");
    row("unknown type", frame("00000001 00000002 0041 00001077 00 7fffffff"), "type 4215");
    row("huge bit array", frame("00000001 00000002 0041 0000000d 00 ffffffff"), "it ends early");
    row("huge list", frame("00000001 00000002 0041 00000009 00 ffffffff"), "it ends early");
    row("nested lists",
        frame(QByteArray("00000001 00000002 0041") +
              QByteArray("00000009 00 00000001").repeated(5000)),
        "nested too deep");
    row("read of nothing",
        frameOf({{"CMD", "OPEN"}, {"CHAIN", QVariantList{0}}}) +
            frameOf({{"CMD", "READ"}, {"SIZE", 2147483647}}),
        "a read of 2147483647 bits");
    row("wrong types",
        frameOf({{"CMD", "OPEN"}, {"CHAIN", "0"}}) + frameOf({{"CMD", "WRITE"}, {"DATA", 1}}),
        "the device isn't open");
}

/// Whatever one client sends, the server says so and serves the next one.
void tst_SimServer::hostileClient()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, complaint);
    ServerProcess server("chainserver", boardWith({}));
    {
        Client client("keo1");
        client.socket.write(bytes);
        client.socket.flush();
        QVERIFY2(server.complains(complaint), qPrintable(server.complaints));
    }
    Client next("keo1");
    QTRY_COMPARE(next.open(), 0);
}

void tst_SimServer::namesOfTheDeadAndTheLiving()
{
    {
        ServerProcess dead("chainserver", boardWith({}));
        Client client("keo1");
        QCOMPARE(client.open(), 0);
        dead.process.kill();
        QVERIFY(dead.process.waitForFinished(kPatienceMs));
    }
    QVERIFY(QFileInfo::exists(QDir::tempPath() + QStringLiteral("/keo1")));
    ServerProcess living("chainserver", boardWith({}));
    Client client("keo1");
    QCOMPARE(client.open(), 0);

    ServerProcess second("chainserver", boardWith({}));
    QVERIFY(second.complains(QStringLiteral("another server is alive")));
    QTRY_COMPARE_WITH_TIMEOUT(second.process.state(), QProcess::NotRunning, kPatienceMs);
    QCOMPARE(second.process.exitCode(), 3);
    QCOMPARE(client.open(), 0); // the first one is untouched

    QFile file(QDir::tempPath() + QStringLiteral("/keolk7")); // not a socket: somebody's own
    QVERIFY(file.open(QIODevice::WriteOnly));
    ServerProcess third(QStringLiteral("chainserver_lk7"), boardWith({}));
    QVERIFY(third.complains(QStringLiteral("a file stands where")));
    QVERIFY(file.remove());
}

void tst_SimServer::refusals_data()
{
    const auto row = addColumns<QString, QStringList, int, QString>(
        {"board", "arguments", "status", "complaint"});
    row("not local", boardWith({}), {}, 1, "start it with -local");
    row("unknown option", boardWith({}), {"-local", "-remote"}, 1, "remote");
    row("no board file", "/nowhere/b.json", {"-local"}, 2, "there is no such file");
    row("a directory", QDir::tempPath(), {"-local"}, 2, "is no regular file");
    row("log can't be written", boardWith({}), {"-local", "--log", "/nowhere/x.log"}, 2,
        "/nowhere/x.log");
    row("check of a missing file", {}, {"--check", "/nowhere/b.json"}, 2, "");
}

void tst_SimServer::refusals()
{
    QFETCH(QString, board);
    QFETCH(QStringList, arguments);
    QFETCH(QString, complaint);
    ServerProcess server("chainserver", board, arguments);
    QVERIFY(server.process.waitForFinished(kPatienceMs));
    QTEST(server.process.exitCode(), "status");
    QVERIFY2(server.complains(complaint), qPrintable(server.complaints));
}

KEO_TEST_MAIN(tst_SimServer)
#include "tst_sim_server.moc"
