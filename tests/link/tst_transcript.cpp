// Transcripts of sessions on real sockets, read by the simulated board's own reader.

#include "wireserver.h"

#include <link/jtagsession.h>
#include <link/packetcodec.h>
#include <link/transcript.h>
#include <replay.h>
#include <support/files.h>
#include <support/fulldisk.h>
#include <support/testmain.h>
#include <transcriptfile.h>

#include <QBitArray>
#include <QRandomGenerator>

#include <algorithm>

using namespace KEO;

class tst_Transcript : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void holdsEveryPacket();
    void foldsPolls();
    void endsAtItsLimit();
    void diskGetsFull();
    void keepsOtherFiles();

private:
    [[nodiscard]] QString path() const { return m_directory.filePath("transcript"); }

    QTemporaryDir m_directory;
    JtagSession &m_session = *JtagSession::instance();
};

namespace {

using Line = Sim::TranscriptLine;

QString randomText(QRandomGenerator &random)
{
    if (random.bounded(8) == 0)
        return {};
    QString text = QStringLiteral("");
    for (int left = random.bounded(6); left > 0; --left) {
        // What ends a line or a text, orders for a terminal, text that turns around, a lone half.
        constexpr char16_t kOdd[] = {u'\n', u'\r',  u'"',   u'\\', 0x1b,
                                     0x9b,  0x202e, 0xd800, 0,     u'='};
        text.append(random.bounded(2) ? QChar(kOdd[random.bounded(int(std::size(kOdd)))])
                                      : QChar('a' + random.bounded(26)));
    }
    return text;
}

QVariant randomValue(QRandomGenerator &random, int level)
{
    switch (random.bounded(level < 3 ? 5 : 4)) {
    case 0:
        return int(random.generate());
    case 1:
        return random.generate();
    case 2:
        return randomText(random);
    case 3: {
        QBitArray bits(random.bounded(40));
        for (int i = 0; i < bits.size(); ++i)
            bits.setBit(i, random.bounded(2));
        return bits;
    }
    default:
        break;
    }
    QVariantList list;
    for (int left = random.bounded(4); left > 0; --left)
        list.append(randomValue(random, level + 1));
    return list;
}

CmdPack randomPack(QRandomGenerator &random)
{
    CmdPack pack;
    for (int left = random.bounded(6); left > 0; --left)
        pack.insert(randomText(random), randomValue(random, 0));
    return pack;
}

/// Any other packet, or almost the latest one once more, as in a register image.
CmdPack nextPack(QRandomGenerator &random, const QList<CmdPack> &earlier)
{
    if (earlier.isEmpty() || earlier.last().isEmpty() || random.bounded(3) == 0)
        return randomPack(random);
    CmdPack pack = earlier.last();
    const QString key = pack.keys().at(random.bounded(int(pack.size())));
    pack[key] = randomValue(random, 0);
    return pack;
}

QList<Line> linesOf(const QString &path, const QString &server)
{
    const auto lines = Sim::readTranscript(contentOf(path), server);
    if (!lines)
        qWarning("%s", qPrintable(lines.error()));
    return lines ? *lines : QList<Line>();
}

/// Of a limited transcript: the last line, with what is before it checked.
void checkCut(const QByteArray &text, int sent, qint64 limit)
{
    QVERIFY(text.size() <= limit && text.endsWith(" packets\n"));
    const auto lines = text.trimmed().split('\n');
    const auto written =
        std::ranges::count_if(lines, [](const QByteArray &line) { return line.contains(" > "); });
    QVERIFY(written > 0);
    QCOMPARE(lines.last(), "# Not written: " + QByteArray::number(sent - written) + " packets");
}

} // namespace

void tst_Transcript::cleanup()
{
    m_session.disconnectAll();
    m_session.stopTranscript();
}

/// Random packets of both directions, with whatever a hostile server may put into texts, come back
/// from lines of printable ASCII. A payload that makes no packet stands there byte for byte.
void tst_Transcript::holdsEveryPacket()
{
    const QString name = "server with \"blanks\"";
    WireServer server(name);
    QVERIFY(!m_session.startTranscript(path()));
    QVERIFY(m_session.connectServer({"cable\x1b[2J", name}, 5000));
    QVERIFY(m_session.selectCable("cable\x1b[2J"));
    QRandomGenerator random(11);
    QList<CmdPack> sent;
    QList<CmdPack> received;
    for (int i = 0; i < 300; ++i) {
        sent.append(nextPack(random, sent));
        m_session.sendCommand(sent.last());
    }
    QTRY_COMPARE(server.packets.size(), sent.size());
    for (int i = 0; i < 300; ++i) {
        received.append(nextPack(random, received));
        server.reply(received.last());
    }
    const QByteArray malformed = QByteArray::fromHex("0000000700ff0a1b");
    server.write(QByteArray::fromHex("00000008") + malformed);
    QTRY_VERIFY(contentOf(path()).contains(" ! 0000000700ff0a1b\n")); // without an end
    server.drop();
    QTRY_VERIFY(contentOf(path()).endsWith(" * disconnected\n"));
    m_session.stopTranscript();

    const QByteArray text = contentOf(path());
    QVERIFY(std::ranges::all_of(text, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
    QList<CmdPack> sentLines;
    QList<CmdPack> receivedLines;
    const QList<Line> lines = linesOf(path(), name);
    for (const Line &line : lines) {
        if (line.kind == Line::Kind::Malformed)
            QCOMPARE(line.payload, malformed);
        else
            (line.kind == Line::Kind::ToServer ? sentLines : receivedLines).append(line.packet);
    }
    QCOMPARE(sentLines, sent);
    QCOMPARE(receivedLines, received);
    QVERIFY(linesOf(path(), "another").isEmpty());
}

/// Thousands of polls with the same answer are a handful of lines; the answer that is new stands
/// there with its request, and a replay gives it to a program that polls more or less often.
void tst_Transcript::foldsPolls()
{
    constexpr int kPolls = 3000;
    const CmdPack select{{"CMD", "WRITE"}, {"DATA", QBitArray(21)}};
    const CmdPack poll{{"CMD", "READ"}, {"SIZE", 16}};
    WireServer server("keo1");
    int polls = 0;
    server.onPacket = [&](const Wire::Packet &packet) {
        if (packet["CMD"] == "READ")
            server.reply({{"data_request_id", packet["data_request_id"]},
                          {"DATA", QBitArray(16, ++polls < kPolls)}});
    };
    QVERIFY(!m_session.startTranscript(path()));
    QVERIFY(m_session.connectServer({"cable", "keo1"}, 5000) && m_session.selectCable("cable"));
    int answers = 0;
    for (int i = 0; i < kPolls; ++i) {
        m_session.sendCommand(select);
        m_session.sendDataCommand(poll, [&](const CmdPack &, bool *done) {
            *done = true;
            ++answers;
        });
        if (i % 60 == 59)
            QTRY_COMPARE(answers, i + 1);
    }
    m_session.sendCommand({{"CMD", "CLOSE"}});
    QTRY_COMPARE(server.packets.last(), (Wire::Packet{{"CMD", "CLOSE"}}));
    m_session.disconnectAll();
    m_session.stopTranscript();
    QVERIFY(contentOf(path()).size() < 20'000);

    Sim::Replay replay(linesOf(path(), "keo1"), "transcript");
    const auto answered = [&](CmdPack pack) {
        pack.insert("data_request_id", 77u);
        const QByteArray frames = replay.take(pack).frames;
        return decodePayload(QByteArrayView(frames).sliced(std::min<qsizetype>(4, frames.size())))
            .value_or(CmdPack());
    };
    const CmdPack ready{{"data_request_id", 77u}, {"DATA", QBitArray(16)}};
    int asked = 0;
    do {
        QVERIFY(replay.take(select).told.isEmpty());
    } while (answered(poll) != ready && ++asked < 100);
    QVERIFY(asked > 10 && asked < 100);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(answered(poll), ready);
    QVERIFY(replay.take({{"CMD", "CLOSE"}}).told.isEmpty());
}

void tst_Transcript::endsAtItsLimit()
{
    constexpr qint64 kLimit = 5000;
    constexpr int kPackets = 1000;
    const auto transcript = Transcript::open(path(), {}, kLimit);
    QVERIFY(transcript);
    const int server = (*transcript)->addServer("keo1");
    for (int i = 0; i < kPackets; ++i)
        (*transcript)->frameSent(server, *encodeFrame({{"CMD", "WRITE"}, {"N", i}}));
    (*transcript)->finish();
    checkCut(contentOf(path()), kPackets, kLimit);
}

/// Told once, by the session as a warning; no half of a line is left, and the link goes on.
void tst_Transcript::diskGetsFull()
{
    WireServer server("keo1");
    QVERIFY(!m_session.startTranscript(path()));
    QVERIFY(m_session.connectServer({"cable", "keo1"}, 5000) && m_session.selectCable("cable"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("transcript.* can not be written"));
    const FullDisk full(3000);
    for (int i = 0; i < 500; ++i)
        m_session.sendCommand({{"CMD", "WRITE"}, {"N", i}});
    QTRY_COMPARE(server.packets.size(), 500);
    QTest::qWait(20); // for a second warning
    QVERIFY(contentOf(path()).size() <= 3000 && contentOf(path()).endsWith('\n'));
    m_session.stopTranscript();
}

void tst_Transcript::keepsOtherFiles()
{
    putFile(path(), "<KEO_CONFIG>\n");
    const auto error = m_session.startTranscript(path());
    QVERIFY(error && error->kind == Error::File && error->message.contains(path()));
    QCOMPARE(contentOf(path()), "<KEO_CONFIG>\n");
    QVERIFY(m_session.startTranscript(m_directory.path()));
    QVERIFY(m_session.startTranscript("/nowhere/transcript"));
    putFile(path(), "# Signal Scope transcript 1\nold\n");
    QVERIFY(!m_session.startTranscript(path()));
    QVERIFY(!contentOf(path()).contains("old"));
}

KEO_TEST_MAIN(tst_Transcript)
#include "tst_transcript.moc"
