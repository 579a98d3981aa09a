// The session and its clients against two servers on real sockets.

#include "wireserver.h"

#include <link/jtagclient.h>
#include <link/jtagsession.h>
#include <support/testmain.h>

#include <QLocalServer>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <unistd.h>

using namespace KEO;

/// There is one session for the whole program, so each test function ends by dropping its
/// connections.
class tst_JtagSession : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void beforeAnyCableWasSelected(); // has to be the first
    void servers();
    void serversThatAreLateOrFull();
    void strangersServer();
    void selecting();
    void ids();
    void hostileIds();
    void lateReplies();
    void tasksDoAnything();

    void chunks();
    void inputWithoutEnd_data();
    void inputWithoutEnd();
    void serverDies();

private:
    void connectBoth();
    /// Sends a request and waits until the server has it; gives the id that it came with.
    unsigned int request(JtagTask task);
    unsigned int dataRequest(JtagDataTask task);
    unsigned int sentId(const QString &key);
    /// A task that notes its name and its reply.
    JtagTask noting(const QString &name);
    JtagDataTask notingData(const QString &name, bool isDone = false);
    /// Sends \a packets from the first server and waits until the session must have seen them.
    void reply(const QList<Wire::Packet> &packets);

    JtagSession &m_session = *JtagSession::instance();
    std::unique_ptr<WireServer> m_first;
    std::unique_ptr<WireServer> m_second;
    QStringList m_calls;
    int m_marker = 0; ///< of the latest request
};

namespace {

JtagConnection record(const QString &name, int cable = 0, int channel = 0)
{
    return {name, "server-" + name, 0, cable, channel};
}

Wire::Packet answer(unsigned int id, int number = 0)
{
    return {{"request_id", id}, {"N", number}};
}

Wire::Packet dataAnswer(unsigned int id, int number = 0)
{
    return {{"data_request_id", id}, {"N", number}};
}

} // namespace

void tst_JtagSession::init()
{
    QuietTest::init();
    m_calls.clear();
    m_first = std::make_unique<WireServer>("server-first");
    m_second = std::make_unique<WireServer>("server-second");
}

void tst_JtagSession::cleanup()
{
    m_session.disconnectAll();
    QVERIFY(!m_session.hasConnection());
    m_first.reset();
    m_second.reset();
}

void tst_JtagSession::connectBoth()
{
    QVERIFY(m_session.connectServers({record("first"), record("second")}).isEmpty());
    QTRY_VERIFY(m_first->hasClient() && m_second->hasClient());
    QVERIFY(m_session.selectCable("first"));
}

unsigned int tst_JtagSession::request(JtagTask task)
{
    m_session.sendCommand({{"CMD", "OPEN"}, {"SIZE", ++m_marker}}, std::move(task));
    return sentId("request_id");
}

unsigned int tst_JtagSession::dataRequest(JtagDataTask task)
{
    m_session.sendDataCommand({{"CMD", "READ"}, {"SIZE", ++m_marker}}, std::move(task));
    return sentId("data_request_id");
}

unsigned int tst_JtagSession::sentId(const QString &key)
{
    const auto isMarked = [marker = m_marker](const Wire::Packet &packet) {
        return packet["SIZE"] == marker;
    };
    const auto &sent = m_first->packets;
    (void)QTest::qWaitFor([&] { return std::ranges::any_of(sent, isMarked); });
    const auto found = std::ranges::find_if(sent, isMarked);
    return found == sent.end() ? ~0u : found->value(key, ~0u).toUInt();
}

JtagTask tst_JtagSession::noting(const QString &name)
{
    return [this, name](const CmdPack &pack) {
        m_calls << name + (pack.contains("request_id") ? u'?' : u' ') + pack["N"].toString();
    };
}

JtagDataTask tst_JtagSession::notingData(const QString &name, bool isDone)
{
    return [note = noting(name), isDone](const CmdPack &pack, bool *done) {
        *done = isDone; // before all, a task may have more to do
        note(pack);
    };
}

void tst_JtagSession::reply(const QList<Wire::Packet> &packets)
{
    for (const Wire::Packet &packet : packets)
        m_first->reply(packet);
    // Frames keep their order, so once the answer to a last request is there, so were the others.
    bool isSeen = false;
    const unsigned int last = dataRequest(
        [&](const CmdPack &pack, bool *done) { *done = isSeen = pack.contains("LAST"); });
    m_first->reply({{"data_request_id", last}, {"LAST", 1}});
    QTRY_VERIFY(isSeen);
}

void tst_JtagSession::beforeAnyCableWasSelected()
{
    QVERIFY(!m_session.hasConnection() && !m_session.selectCable("first"));
    m_session.sendCommand({{"CMD", "OPEN"}}, noting("early"));
    m_session.sendDataCommand({{"CMD", "READ"}}, {});
    connectBoth();
    QCOMPARE(request(noting("late")), 1u); // the lost request waits on under 0
    reply({answer(0)});
    QCOMPARE(m_calls, QStringList{"early 0"});
}

void tst_JtagSession::servers()
{
    const QList<JtagConnection> failed =
        m_session.connectServers({record("second", 2, 1), record("nobody", 7), record("first", 1)});
    QCOMPARE(failed.size(), 1);
    QVERIFY(failed[0].name == "nobody" && !failed[0].client);
    QCOMPARE(m_session.availableCables(),
             (QList<QPair<QString, int>>{{"second", 5}, {"first", 2}}));
}

/// The attempts block this thread, so the late server comes up on another one. Where too many wait
/// already, one attempt is enough, and none is sat out once nobody wants it any more.
void tst_JtagSession::serversThatAreLateOrFull()
{
    m_first.reset();
    const std::unique_ptr<QThread> thread(QThread::create([] {
        QThread::msleep(150);
        QLocalServer server;
        if (server.listen("server-first"))
            server.waitForNewConnection(5000);
    }));
    thread->start();
    QVERIFY(m_session.connectServer(record("first"), 5000));
    QVERIFY(thread->wait());

    QLocalServer full;
    full.setListenBacklogSize(1);
    QVERIFY(full.listen("server-full"));
    std::vector<std::unique_ptr<QLocalSocket>> others;
    do {
        others.push_back(std::make_unique<QLocalSocket>());
        others.back()->connectToServer("server-full");
    } while (others.back()->state() == QLocalSocket::ConnectedState);
    int asked = 0;
    const auto isGivenUp = [&] { return ++asked > 3; };
    QVERIFY(!m_session.connectServer(record("full"), 200));
    QVERIFY(!m_session.connectServer(record("full"), 3'600'000, isGivenUp));
}

// Whoever runs first has the name of a cable, in a folder that all users share.
void tst_JtagSession::strangersServer()
{
    if (geteuid() != 0)
        QSKIP("only the administrator can be somebody else");
    constexpr uid_t kStranger = 65534;
    const QTemporaryDir shared("/tmp/keo-shared-XXXXXX"); // where anybody may go
    QVERIFY(QFile::setPermissions(shared.path(), QFileDevice::Permissions(0x7777)));
    const QString name = shared.filePath("cable");
    QCOMPARE(seteuid(kStranger), 0);
    auto stranger = std::make_unique<WireServer>(name);
    QCOMPARE(seteuid(0), 0);
    QVERIFY(!m_session.connectServer({"cable", name, 0, 0, 0}, 1000));
    QVERIFY(!m_session.hasConnection());
}

void tst_JtagSession::selecting()
{
    connectBoth();
    QVERIFY(!m_session.selectCable("First")); // and the first one stays
    QCOMPARE(request(noting("request")), 0u);
    reply({{{"RES", 0}}});
    QVERIFY(m_session.selectCable("second") && m_session.selectCable("second"));
    m_session.sendCommand({{"CMD", "CLOSE"}});
    QTRY_COMPARE(m_second->packets, (QList<Wire::Packet>{{{"CMD", "CLOSE"}}}));
    m_first->reply(answer(0)); // of the cable that was left
    QTest::qWait(20);
    QCOMPARE(m_calls, QStringList());
    m_second->reply(answer(0, 7)); // whoever is current may answer
    QTRY_COMPARE(m_calls, QStringList{"request 7"});
}

/// Numbers are small, count apart for the two kinds, and are used again at once.
void tst_JtagSession::ids()
{
    connectBoth();
    for (const unsigned int id : {0u, 1u, 2u})
        QCOMPARE(request(noting(QString::number(id))), id);
    QCOMPARE(m_first->packets.last().value("request_id").typeId(), QMetaType::UInt);
    QCOMPARE(dataRequest(notingData("data")), 0u);
    reply({answer(1, 5), answer(1, 6), dataAnswer(0, 7), dataAnswer(0, 8)});
    QCOMPARE(m_calls, (QStringList{"1 5", "data 7", "data 8"})); // until it is done
    QCOMPARE(request(noting("new")), 1u);
    QCOMPARE(request(noting("3")), 3u);
    reply({{{"request_id", 0}, {"N", 9}}}); // the number counts, not its type
    QCOMPARE(m_calls.last(), "0 9");
    QCOMPARE(request(noting("again")), 0u);
    QCOMPARE(dataRequest(notingData("done", true)), 1u);
    const JtagDataRequest kept = m_session.sendDataCommand({{"CMD", "READ"}}, notingData("kept"));
    reply({dataAnswer(1), dataAnswer(1)});
    QCOMPARE(m_calls.last(), "done 0");
    m_session.finishData(kept);
    reply({dataAnswer(2)});
    QCOMPARE(m_calls.last(), "done 0");
    m_session.clearTasks();
    m_session.finishData(kept);
    QCOMPARE(dataRequest({}), ~0u); // without a task there is no id
}

void tst_JtagSession::hostileIds()
{
    connectBoth();
    request(noting("request"));
    dataRequest(notingData("data"));
    for (const QVariant &id : {QVariant(7u), QVariant(0xFFFFFFFFu), QVariant(-1), QVariant("zero"),
                               QVariant(QVariantList{0})})
        reply({{{"request_id", id}}, {{"data_request_id", id}}, {{"RES", 0}}, {}});
    QCOMPARE(m_calls, QStringList());
    QCOMPARE(request(noting("next")), 1u);
    reply({{{"request_id", 0u}, {"data_request_id", 0u}}}); // the request's alone
    QCOMPARE(m_calls, QStringList{"request "});
}

void tst_JtagSession::lateReplies()
{
    connectBoth();
    m_session.setLateReplies({true, 1, 1});
    m_session.selectCable("second");
    QVERIFY(!m_session.lateReplies().areAwaited);
    m_session.selectCable("first");
    reply({answer(3), answer(3), dataAnswer(3)}); // nobody waits for them
    QVERIFY(m_session.lateReplies().areAwaited);
    QVERIFY(m_session.lateReplies().commands == 0 && m_session.lateReplies().data == 0);
    request([this](const CmdPack &) { m_session.awaitReply(noting("second")); });
    reply({answer(0, 1), answer(0, 2)});
    QCOMPARE(m_calls, QStringList{"second 2"});
}

/// Tasks send, clear and disconnect; what they captured calls back when it goes.
void tst_JtagSession::tasksDoAnything()
{
    connectBoth();
    const auto farewell = [this] {
        return std::shared_ptr<void>(nullptr, [this](void *) {
            m_session.sendCommand({{"CMD", "CLOSE"}}, [](const CmdPack &) {});
            m_session.sendDataCommand({{"CMD", "CLOSE"}}, [](const CmdPack &, bool *) {});
        });
    };
    request([kept = farewell()](const CmdPack &) {});
    dataRequest([kept = farewell()](const CmdPack &, bool *done) { *done = true; });
    m_session.clearTasks();
    QTRY_COMPARE(m_first->packets.size(), 2 + 4);
    m_session.clearTasks();

    unsigned int inner = ~0u;
    request([&](const CmdPack &) { inner = request(noting("inner")); });
    dataRequest([this](const CmdPack &, bool *done) {
        m_session.clearTasks();
        m_session.sendDataCommand({{"CMD", "READ"}}, notingData("new"));
        *done = true; // speaks for the old one alone
    });
    m_first->reply(answer(0));
    QTRY_COMPARE(inner, 0u); // a one-shot task has left its id before it runs
    for (const Wire::Packet &packet : {answer(0, 1), dataAnswer(0), dataAnswer(0, 2)})
        m_first->reply(packet);
    QTRY_COMPARE(m_calls, (QStringList{"inner 1", "new 2"}));

    m_session.clearTasks();
    dataRequest([this](const CmdPack &, bool *) {
        m_calls << "last";
        m_session.disconnectAll();
    });
    m_first->reply(dataAnswer(0));
    m_first->reply(dataAnswer(0));
    QTRY_VERIFY(!m_session.hasConnection());
    QTest::qWait(20);
    QCOMPARE(m_calls.count("last"), 1);
    m_session.sendCommand({{"CMD", "CLOSE"}}); // goes nowhere
}

/// Frames in pieces of every size, malformed and empty ones among them.
void tst_JtagSession::chunks()
{
    connectBoth();
    dataRequest(notingData("data"));
    QByteArray wrong = Wire::frame(dataAnswer(0, 4));
    wrong[wrong.indexOf('\x02') - 1] = 99; // no type
    const QByteArray bytes = Wire::frame(dataAnswer(0, 1)) + QByteArray(4, '\0') + Wire::frame({}) +
                             wrong + Wire::frame(dataAnswer(0, 2)) + Wire::frame(dataAnswer(0, 3));
    for (const qsizetype size : {qsizetype(1), qsizetype(3), qsizetype(50), bytes.size()}) {
        m_calls.clear();
        for (qsizetype at = 0; at < bytes.size(); at += size) {
            m_first->write(bytes.mid(at, size));
            QCoreApplication::processEvents();
        }
        QTRY_COMPARE(m_calls, (QStringList{"data 1", "data 2", "data 3"}));
    }
    const QBitArray bits((16 * 1024 * 1024 - 1000) * 8, true); // nearly as much as a frame takes
    Wire::Packet largest = dataAnswer(0, 4);
    largest["DATA"] = bits;
    reply({largest});
    QCOMPARE(m_calls.last(), "data 4");
}

void tst_JtagSession::inputWithoutEnd_data()
{
    const auto row = addColumns<QByteArray>({"field"});
    row("-1", QByteArray::fromHex("ffffffff"));
    row("2^31 - 1", QByteArray::fromHex("7fffffff"));
    row("16 MiB and one", QByteArray::fromHex("01000001"));
    row("16 MiB", QByteArray::fromHex("01000000")); // the largest frame, and more behind it
}

/// Where the next frame starts is unknown, so all that follows is thrown away; sending goes on.
void tst_JtagSession::inputWithoutEnd()
{
    QFETCH(QByteArray, field);
    connectBoth();
    auto *const client = m_session.findChildren<JtagClient *>().at(
        m_session.findChildren<JtagClient *>().size() - 2);
    bool isBounded = true;
    connect(client, &QIODevice::readyRead, this,
            [&] { isBounded = isBounded && client->bytesAvailable() <= 16 * 1024 * 1024 + 4; });
    dataRequest(notingData("data"));
    m_first->write(Wire::frame(dataAnswer(0, 1)) + field);
    for (int i = 0; i < 3; ++i)
        m_first->write(Wire::frame(dataAnswer(0, 2)) + QByteArray(10'000'000, '\0'));
    QTRY_COMPARE(m_calls, QStringList{"data 1"});
    if (field != QByteArray::fromHex("01000000")) {
        QTRY_VERIFY(m_first->bytesPending() == 0 && client->bytesAvailable() == 0);
        QCOMPARE(m_calls.size(), 1);
    }
    QVERIFY(isBounded);
    QCOMPARE(dataRequest(notingData("next")), 1u);
}

/// Its last words arrive; its cable stays in the list.
void tst_JtagSession::serverDies()
{
    connectBoth();
    request(noting("a"));
    request(noting("b"));
    QVERIFY(m_session.isCurrentConnected());
    m_first->reply(answer(0));
    m_first->reply(answer(1));
    m_first->drop();
    QTRY_COMPARE(m_calls, (QStringList{"a 0", "b 0"}));
    QTRY_VERIFY(!m_session.isCurrentConnected());
    m_session.sendCommand({{"CMD", "OPEN"}}, noting("c"));
    QVERIFY(m_session.hasConnection() && m_session.selectCable("first"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^packet not sent, .*SIZE"));
    m_session.selectCable("second");
    m_session.sendCommand({{"SIZE", qlonglong(5)}});
}

KEO_TEST_MAIN(tst_JtagSession)
#include "tst_jtagsession.moc"
