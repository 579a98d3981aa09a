#include "wireserver.h"

#include <link/jtagclient.h>
#include <link/jtagsession.h>
#include <support/testmain.h>

#include <QLocalServer>
#include <QTest>
#include <QThread>

#include <unistd.h>

using namespace KEO;

/// The session's rules against two servers on real sockets. There is one session for the whole
/// program, so each test function ends by dropping its connections.
class tst_JtagSession : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void beforeAnyCableWasSelected(); // has to be the first
    void servers();
    void lateServer();
    void strangersServer();
    void selecting();

    void requestIds();
    void dataTaskStaysUntilDone();
    void hostileIds_data();
    void hostileIds();
    void deadServer();

    void taskSends();
    void taskDisconnects();
    void doneAfterClearing();
    void capturesThatCallBack();

private:
    void connectBoth();
    /// Sends a request and waits until the server has it; gives the id that it came with.
    unsigned int request(JtagTask task);
    unsigned int dataRequest(JtagDataTask task);
    /// Sends \a packet from the first server and waits until the session must have seen it.
    void replyAndWait(const Wire::Packet &packet);

    JtagSession &m_session = *JtagSession::instance();
    std::unique_ptr<WireServer> m_first;
    std::unique_ptr<WireServer> m_second;
    QStringList m_calls;
};

namespace {

JtagConnection record(const QString &name, int cable = 0, int channel = 0)
{
    return {name, "server-" + name, 0, cable, channel};
}

} // namespace

void tst_JtagSession::init()
{
    QTest::failOnWarning(QRegularExpression(".*")); // hides the init of QuietTest
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
    const auto before = m_first->packets.size();
    m_session.sendCommand({{"CMD", "OPEN"}}, std::move(task));
    if (!QTest::qWaitFor([&] { return m_first->packets.size() > before; }))
        return ~0u;
    return m_first->packets.last().value("request_id", ~0u).toUInt();
}

unsigned int tst_JtagSession::dataRequest(JtagDataTask task)
{
    const auto before = m_first->packets.size();
    m_session.sendDataCommand({{"CMD", "READ"}}, std::move(task));
    if (!QTest::qWaitFor([&] { return m_first->packets.size() > before; }))
        return ~0u;
    return m_first->packets.last().value("data_request_id", ~0u).toUInt();
}

void tst_JtagSession::replyAndWait(const Wire::Packet &packet)
{
    // Frames keep their order, so once a marker behind the packet is there, so was the packet.
    static int markers = 0;
    const int marker = ++markers;
    bool seen = false;
    QList<QMetaObject::Connection> watches;
    for (JtagClient *client : m_session.findChildren<JtagClient *>()) {
        watches.append(connect(client, &JtagClient::cmdReceived, this, [&](const CmdPack &pack) {
            seen = seen || pack.value("MARKER") == marker;
        }));
    }
    m_first->reply(packet);
    m_first->reply({{"MARKER", marker}});
    QTRY_VERIFY(seen);
    for (const QMetaObject::Connection &watch : watches)
        disconnect(watch);
}

void tst_JtagSession::beforeAnyCableWasSelected()
{
    QVERIFY(!m_session.hasConnection());
    QVERIFY(!m_session.selectCable("first"));
    m_session.sendCommand({{"CMD", "OPEN"}}, [this](const CmdPack &) { m_calls << "early"; });
    m_session.sendDataCommand({{"CMD", "READ"}}, [](const CmdPack &, bool *) {});
    connectBoth();
    QCOMPARE(request([](const CmdPack &) {}), 1u); // the lost request waits on under 0
    replyAndWait({{"request_id", 0u}});
    QCOMPARE(m_calls, QStringList{"early"});
}

void tst_JtagSession::servers()
{
    const QList<JtagConnection> failed =
        m_session.connectServers({record("second", 2, 1), record("nobody", 7), record("first", 1)});
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed[0].name, "nobody");
    QCOMPARE(failed[0].client, nullptr);
    QVERIFY(m_session.hasConnection());
    QCOMPARE(m_session.availableCables(),
             (QList<QPair<QString, int>>{{"second", 5}, {"first", 2}}));
}

void tst_JtagSession::lateServer()
{
    // The attempts block this thread, so the server comes up on another one.
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
    QCOMPARE(request([this](const CmdPack &) { m_calls << "request"; }), 0u);
    QVERIFY(m_session.selectCable("second"));
    m_session.sendCommand({{"CMD", "CLOSE"}});
    QTRY_COMPARE(m_second->packets.size(), 1);
    QCOMPARE(m_first->packets.size(), 1);
    replyAndWait({{"request_id", 0u}}); // of the cable that was left
    QCOMPARE(m_calls, QStringList());
    m_second->reply({{"request_id", 0u}}); // whoever is current may answer
    QTRY_COMPARE(m_calls, QStringList{"request"});
}

void tst_JtagSession::requestIds()
{
    connectBoth();
    QList<CmdPack> replies;
    const JtagTask task = [&](const CmdPack &pack) { replies.append(pack); };
    QCOMPARE(request(task), 0u);
    QCOMPARE(request(task), 1u);
    QCOMPARE(request(task), 2u);
    QCOMPARE(m_first->packets.last().value("request_id").typeId(), QMetaType::UInt);
    QCOMPARE(dataRequest([](const CmdPack &, bool *) {}), 0u); // a table of its own

    replyAndWait({{"request_id", 1u}, {"RES", -20}});
    QCOMPARE(replies, (QList<CmdPack>{{{"RES", -20}}})); // the id is taken out
    replyAndWait({{"request_id", 1u}, {"RES", 0}});      // a second reply
    QCOMPARE(replies.size(), 1);
    QCOMPARE(request(task), 1u);
    QCOMPARE(request(task), 3u);
    replyAndWait({{"request_id", 0}}); // the number counts, not its type
    QCOMPARE(replies.size(), 2);
    QCOMPARE(request(task), 0u);
}

void tst_JtagSession::dataTaskStaysUntilDone()
{
    connectBoth();
    QList<CmdPack> replies;
    const auto task = [&](const CmdPack &pack, bool *done) {
        replies.append(pack);
        *done = replies.size() == 2;
    };
    QCOMPARE(dataRequest(task), 0u);
    replyAndWait({{"data_request_id", 0u}, {"WINDOW", 1}});
    QCOMPARE(dataRequest([](const CmdPack &, bool *) {}), 1u);
    replyAndWait({{"data_request_id", 0u}, {"WINDOW", 2}});
    replyAndWait({{"data_request_id", 0u}, {"WINDOW", 3}});
    QCOMPARE(replies, (QList<CmdPack>{{{"WINDOW", 1}}, {{"WINDOW", 2}}}));
    QCOMPARE(dataRequest([](const CmdPack &, bool *) {}), 0u);
}

void tst_JtagSession::hostileIds_data()
{
    const auto row = addColumns<QVariant>({"id"});
    row("nobody waits", QVariant(1u));
    row("2^32 - 1", QVariant(0xFFFFFFFFu));
    row("-1", QVariant(-1));
    row("text", QVariant("zero"));
    row("list", QVariant(QVariantList{0}));
}

void tst_JtagSession::hostileIds()
{
    QFETCH(QVariant, id);

    connectBoth();
    QCOMPARE(request([this](const CmdPack &) { m_calls << "request"; }), 0u);
    QCOMPARE(dataRequest([this](const CmdPack &, bool *) { m_calls << "data"; }), 0u);
    replyAndWait({{"request_id", id}});
    replyAndWait({{"data_request_id", id}});
    replyAndWait({{"RES", 0}});
    replyAndWait({});
    QCOMPARE(m_calls, QStringList());
    QCOMPARE(request([](const CmdPack &) {}), 1u);
    replyAndWait({{"request_id", 0u}, {"data_request_id", 0u}}); // the request's alone
    QCOMPARE(m_calls, QStringList{"request"});
    replyAndWait({{"data_request_id", 0u}});
    QCOMPARE(m_calls, (QStringList{"request", "data"}));
}

void tst_JtagSession::deadServer()
{
    connectBoth();
    m_first->drop();
    JtagClient *const client = m_session.findChildren<JtagClient *>().at(
        m_session.findChildren<JtagClient *>().size() - 2);
    QTRY_COMPARE(client->state(), QLocalSocket::UnconnectedState);
    m_session.sendCommand({{"CMD", "OPEN"}}, [](const CmdPack &) {});
    m_session.sendDataCommand({{"CMD", "READ"}}, {}); // nor does a missing task harm
    QVERIFY(m_session.hasConnection());               // its cable stays in the list
    QVERIFY(m_session.selectCable("first"));
}

void tst_JtagSession::taskSends()
{
    connectBoth();
    unsigned int innerRequest = ~0u;
    unsigned int innerData = ~0u;
    request([&](const CmdPack &) {
        innerRequest = request([this](const CmdPack &) { m_calls << "request"; });
    });
    dataRequest([&](const CmdPack &, bool *done) {
        innerData = dataRequest([this](const CmdPack &, bool *) { m_calls << "data"; });
        *done = true;
    });
    replyAndWait({{"request_id", 0u}});
    replyAndWait({{"data_request_id", 0u}});
    QCOMPARE(innerRequest, 0u); // a one-shot task has left its id before it runs,
    QCOMPARE(innerData, 1u);    // a data task only when it is done
    replyAndWait({{"request_id", 0u}});
    replyAndWait({{"data_request_id", 1u}});
    QCOMPARE(m_calls, (QStringList{"request", "data"}));
}

void tst_JtagSession::taskDisconnects()
{
    connectBoth();
    dataRequest([this](const CmdPack &, bool *done) {
        m_calls << "data";
        m_session.disconnectAll();
        *done = true;
    });
    m_first->reply({{"data_request_id", 0u}});
    m_first->reply({{"data_request_id", 0u}});
    QTRY_COMPARE(m_calls.size(), 1);
    QVERIFY(!m_session.hasConnection());
    QTest::qWait(20);
    QCOMPARE(m_calls.size(), 1);
    m_session.sendCommand({{"CMD", "CLOSE"}}); // goes nowhere
}

void tst_JtagSession::doneAfterClearing()
{
    connectBoth();
    dataRequest([this](const CmdPack &, bool *done) {
        m_session.clearTasks();
        m_session.sendDataCommand({{"CMD", "READ"}},
                                  [this](const CmdPack &, bool *) { m_calls << "new"; });
        *done = true; // speaks for the old one alone
    });
    replyAndWait({{"data_request_id", 0u}});
    replyAndWait({{"data_request_id", 0u}});
    QCOMPARE(m_calls, QStringList{"new"});
}

void tst_JtagSession::capturesThatCallBack()
{
    // What a task captured may use the session when it goes.
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
    dataRequest([kept = farewell()](const CmdPack &, bool *done) { *done = true; });
    replyAndWait({{"data_request_id", 0u}});
    QTRY_COMPARE(m_first->packets.size(), 6 + 1 + 2);
}

KEO_TEST_MAIN(tst_JtagSession)
#include "tst_jtagsession.moc"
