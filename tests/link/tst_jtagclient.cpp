#include "wireserver.h"

#include <link/jtagclient.h>
#include <support/testmain.h>

#include <QBitArray>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace KEO;

/// The framing over a real socket.
class tst_JtagClient : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void arrival_data();
    void arrival();
    void badLengthEndsTheInput_data();
    void badLengthEndsTheInput();
    void largestFrame();
    void incompleteInputStaysBounded();
    void lastWordsOfAServer();
    void receiverRunsAnEventLoop();
    void receiverDeletesTheClient();
    void sending();

private:
    QList<int> m_numbers; // "N" of each packet that came, -1 if it has none
    std::unique_ptr<WireServer> m_server;
    std::unique_ptr<JtagClient> m_client;
};

namespace {

QByteArray numbered(int number)
{
    return Wire::frame({{"N", number}});
}

} // namespace

void tst_JtagClient::init()
{
    QTest::failOnWarning(QRegularExpression(".*")); // hides the init of QuietTest
    m_numbers.clear();
    m_server = std::make_unique<WireServer>("framing");
    m_client = std::make_unique<JtagClient>();
    connect(m_client.get(), &JtagClient::cmdReceived, this,
            [this](const CmdPack &pack) { m_numbers.append(pack.value("N", -1).toInt()); });
    m_client->connectToServer("framing");
    QVERIFY(m_client->waitForConnected(5000));
    QTRY_VERIFY(m_server->hasClient());
}

void tst_JtagClient::cleanup()
{
    m_client.reset();
    m_server.reset();
}

void tst_JtagClient::arrival_data()
{
    const auto row = addColumns<QByteArrayList, QList<int>>({"chunks", "numbers"});

    const QByteArray one = numbered(1);
    const QByteArray two = numbered(2);
    row("whole", {one}, {1});
    row("cut in the length", {one.left(3), one.mid(3)}, {1});
    row("cut behind the length", {one.left(4), one.mid(4)}, {1});
    row("cut before the last byte", {one.chopped(1), one.last(1)}, {1});
    row("two in one", {one + two}, {1, 2});
    row("two, cut in the second length", {one + two.left(2), two.mid(2)}, {1, 2});
    row("no entries", {Wire::frame({}) + two}, {-1, 2});
    row("no payload", {QByteArray(4, '\0') + two}, {-1, 2});
    row("no payload, at the end", {QByteArray(4, '\0')}, {-1});
    row("not all of it yet", {one + two.chopped(1)}, {1});
    QByteArray wrong = one;
    wrong[13] = 99; // the type of the value
    row("malformed", {wrong + two}, {-1, 2});

    QByteArrayList bytes;
    for (const char byte : one + two)
        bytes.append(QByteArray(1, byte));
    row("byte by byte", bytes, {1, 2});
}

void tst_JtagClient::arrival()
{
    QFETCH(QByteArrayList, chunks);
    QFETCH(QList<int>, numbers);

    for (const QByteArray &chunk : chunks) {
        QSignalSpy arrived(m_client.get(), &QIODevice::readyRead);
        m_server->write(chunk);
        QTRY_VERIFY(!arrived.isEmpty());
    }
    QTRY_COMPARE(m_numbers, numbers);
    QTest::qWait(1); // nothing comes twice
    QCOMPARE(m_numbers, numbers);
}

void tst_JtagClient::badLengthEndsTheInput_data()
{
    const auto row = addColumns<QByteArray>({"field"});
    row("-1", QByteArray::fromHex("ffffffff"));
    row("2^31 - 1", QByteArray::fromHex("7fffffff"));
    row("16 MiB and one", QByteArray::fromHex("01000001"));
}

void tst_JtagClient::badLengthEndsTheInput()
{
    QFETCH(QByteArray, field);

    m_server->write(numbered(1) + field + numbered(2));
    QTRY_COMPARE(m_numbers, QList{1});
    for (int i = 0; i < 3; ++i) {
        m_server->write(numbered(3) + QByteArray(10'000'000, '\0'));
        QTRY_COMPARE(m_server->bytesPending(), 0);
    }
    QTRY_COMPARE(m_client->bytesAvailable(), 0); // read and thrown away
    QCOMPARE(m_numbers, QList{1});

    m_client->sendPack({{"CMD", "CLOSE"}});
    QTRY_COMPARE(m_server->packets, (QList<Wire::Packet>{{{"CMD", "CLOSE"}}}));
}

void tst_JtagClient::largestFrame()
{
    // 8 bytes of count and key length, a key of one letter, type, null flag, bit count
    constexpr qsizetype overhead = 8 + 2 + 5 + 4;
    const QBitArray bits((16 * 1024 * 1024 - overhead) * 8, true);
    QList<CmdPack> packs;
    connect(m_client.get(), &JtagClient::cmdReceived, this,
            [&](const CmdPack &pack) { packs.append(pack); });
    m_server->write(Wire::frame({{"D", bits}}) + numbered(2));
    QTRY_COMPARE(packs.size(), 2);
    QCOMPARE(packs[0], (CmdPack{{"D", bits}}));
    QCOMPARE(packs[1], (CmdPack{{"N", 2}}));
}

void tst_JtagClient::incompleteInputStaysBounded()
{
    QList<bool> bounded;
    connect(m_client.get(), &QIODevice::readyRead, this,
            [&] { bounded.append(m_client->bytesAvailable() <= 16 * 1024 * 1024 + 4); });
    m_server->write(QByteArray::fromHex("01000000") + QByteArray(40 * 1024 * 1024, '\0'));
    // Zeros: one frame of 16 MiB, then some six million frames without payload.
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.size() > 1000, 30'000);
    QVERIFY(!bounded.contains(false));
}

void tst_JtagClient::lastWordsOfAServer()
{
    m_server->write(numbered(1) + numbered(2));
    m_server->drop();
    QTRY_COMPARE(m_client->state(), QLocalSocket::UnconnectedState);
    QTRY_COMPARE(m_numbers, (QList{1, 2}));
}

void tst_JtagClient::receiverRunsAnEventLoop()
{
    bool nextCameInside = false;
    connect(m_client.get(), &JtagClient::cmdReceived, this, [&](const CmdPack &pack) {
        if (pack.value("N") != 1)
            return;
        // Later than any pass that was due when the first one came.
        QTimer::singleShot(50, this, [this] { m_server->write(numbered(2)); });
        nextCameInside = QTest::qWaitFor([this] { return m_numbers.contains(2); });
    });
    m_server->write(numbered(1));
    QTRY_COMPARE(m_numbers, (QList{1, 2}));
    QVERIFY(nextCameInside);
}

void tst_JtagClient::receiverDeletesTheClient()
{
    connect(m_client.get(), &JtagClient::cmdReceived, this, [this] { m_client.reset(); });
    m_server->write(numbered(1) + numbered(2));
    QTRY_VERIFY(!m_client);
    QTest::qWait(20);
    QCOMPARE(m_numbers, QList{1});
}

void tst_JtagClient::sending()
{
    QBitArray bits(33);
    bits.setBit(32);
    const QList<CmdPack> packs = {
        {{"CMD", "OPEN"}, {"CHAIN", QVariantList{0, 9}}, {"request_id", 4000000000u}},
        {{"CMD", QString::fromUtf8("Ω𝄞")}, {"SIZE", -1}, {"DATA", bits}},
    };
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^packet not sent, .*SIZE"));
    m_client->sendPack({{"SIZE", qlonglong(5)}});
    for (const CmdPack &pack : packs)
        m_client->sendPack(pack);
    QTRY_COMPARE(m_server->packets, packs);
    m_server->drop();
    QTRY_COMPARE(m_client->state(), QLocalSocket::UnconnectedState);
    m_client->sendPack({{"CMD", "CLOSE"}}); // goes nowhere
    JtagClient().sendPack({{"CMD", "CLOSE"}});
}

KEO_TEST_MAIN(tst_JtagClient)
#include "tst_jtagclient.moc"
