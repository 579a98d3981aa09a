#include <link/jtagsession.h>
#include <link/packetcodec.h>

#include <QBitArray>
#include <QCoreApplication>
#include <QEventLoop>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QtEndian>

#include <benchmark/benchmark.h>

#include <cstdio>

using namespace KEO;

namespace {

constexpr int kWrites = 65'536; // the largest register image

CmdPack registerWrite(quint32 number)
{
    QBitArray word(37);
    for (int bit = 0; bit < 32; ++bit)
        word.setBit(bit, (number >> bit & 1) != 0);
    return {{"CMD", "WRITE"}, {"OPRATE", "WRITE_REGISTOR"}, {"DATA", word}};
}

/// The reply of one section of a RAM read: 128 rows of 64 bits.
CmdPack ramReply()
{
    QBitArray rows(128 * 64 + 33);
    for (qsizetype bit = 0; bit < rows.size(); bit += 3)
        rows.setBit(bit);
    return {{"DATA", rows}, {"SECTION_COUNT", 8}, {"WINDOW", 0}, {"data_request_id", 3u}};
}

/// A server on a thread of its own that counts frames and answers each one behind \a writes others
/// with the reply to request 0.
class CountingServer final : public QThread
{
public:
    ~CountingServer() override
    {
        quit();
        wait();
    }

    /// The name to connect to, once the server listens.
    static QString socketName() { return QStringLiteral("bench"); }

protected:
    void run() override
    {
        QLocalServer server;
        if (!server.listen(socketName()))
            return;
        QObject::connect(&server, &QLocalServer::newConnection, &server, [&] {
            QLocalSocket *const client = server.nextPendingConnection();
            QObject::connect(client, &QLocalSocket::readyRead, client, [this, client] {
                countFrames(client->readAll());
                if (m_frames < kWrites + 1)
                    return;
                m_frames = 0;
                client->write(reply());
            });
        });
        exec();
    }

private:
    void countFrames(const QByteArray &bytes)
    {
        m_input += bytes;
        qsizetype start = 0;
        while (m_input.size() - start >= 4) {
            const auto size = qFromBigEndian<qint32>(m_input.constData() + start);
            if (m_input.size() - start - 4 < size)
                break;
            start += 4 + size;
            ++m_frames;
        }
        m_input.remove(0, start);
    }

    static QByteArray reply() // request_id: unsigned 0
    {
        return QByteArray::fromHex("00000025 00000001"
                                   "00000014 0072006500710075006500730074005f00690064"
                                   "0000000300 00000000");
    }

    QByteArray m_input;
    int m_frames = 0;
};

/// The argument says whether a transcript is written.
void registerImageToAServer(benchmark::State &state)
{
    const QTemporaryDir directory;
    CountingServer server;
    server.start();
    JtagSession &session = *JtagSession::instance();
    session.stopTranscript();
    if (state.range(0) != 0 && session.startTranscript(directory.filePath("transcript"))) {
        state.SkipWithError("no transcript");
        return;
    }
    if (!session.connectServer({"cable", CountingServer::socketName()}, 5000) ||
        !session.selectCable("cable")) {
        state.SkipWithError("no connection");
        return;
    }
    for (auto _ : state) {
        for (int i = 0; i < kWrites; ++i)
            session.sendCommand(registerWrite(static_cast<quint32>(i)));
        QEventLoop untilAllCounted;
        bool counted = false;
        session.sendCommand({{"CMD", "OPEN"}}, [&](const CmdPack &) {
            counted = true;
            untilAllCounted.quit();
        });
        untilAllCounted.exec();
        if (!counted)
            state.SkipWithError("no reply");
    }
    session.disconnectAll();
    state.SetItemsProcessed(state.iterations() * kWrites);
}
BENCHMARK(registerImageToAServer)
    ->ArgName("transcript")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(5) // so that the transcript stays below its limit
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void encode(benchmark::State &state, const CmdPack &pack)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeFrame(pack));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(encode, registerWrite, registerWrite(0x12345678));
BENCHMARK_CAPTURE(encode, ramReply, ramReply());

void decode(benchmark::State &state, const CmdPack &pack)
{
    const QByteArray payload = encodeFrame(pack).value_or(QByteArray()).mid(kLengthFieldSize);
    if (decodePayload(payload) != pack)
        state.SkipWithError("wrong packet");
    for (auto _ : state)
        benchmark::DoNotOptimize(decodePayload(payload));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(decode, registerWrite, registerWrite(0x12345678));
BENCHMARK_CAPTURE(decode, ramReply, ramReply());

} // namespace

int main(int argc, char **argv)
{
    // A socket directory of its own, so that no other server is met.
    QTemporaryDir sockets;
    if (!sockets.isValid()) {
        std::fputs("no temporary directory\n", stderr);
        return 1;
    }
    qputenv("TMPDIR", sockets.path().toLocal8Bit());
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
