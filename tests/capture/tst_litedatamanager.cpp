#include "fakeserver.h"

#include <capture/litedatamanager.h>
#include <link/jtagsession.h>

#include <support/testmain.h>

#include <QTemporaryDir>
#include <QTimer>

#include <limits>
#include <memory>

using namespace KEO;

namespace {

/// A core with three captured signals: registers and rows of 3 bits.
std::unique_ptr<LiteCoreConfig> makeCore(int amount)
{
    auto core = std::make_unique<LiteCoreConfig>(4);
    core->signals = QList<SignalEntry>(3);
    core->capture_amount = amount;
    return core;
}

/// A manager behind a server of its own, with the signals written down and every capture fetched.
struct Rig
{
    explicit Rig(std::unique_ptr<LiteCoreConfig> core)
    {
        server.leadingBits = 0;
        session.connectServer({"cable", server.name()}, 1000);
        session.selectCable("cable");
        manager->setCore(std::move(core));
        auto *source = manager.get();
        QObject::connect(source, &KeoLiteDataManager::statusChanged, &context, [this](bool busy) {
            events += busy ? QString::number(int(manager->state())) : QStringLiteral("idle");
        });
        QObject::connect(
            source, &KeoLiteDataManager::triggerComplete, &context,
            [this](int result) { events += QStringLiteral("complete %1").arg(result); });
        QObject::connect(source, &KeoLiteDataManager::readRamComplete, &context, [this] {
            events += QStringLiteral("ram");
            if (fetch)
                captures += manager->rawCapture();
        });
    }
    ~Rig()
    {
        manager.reset();
        session.disconnectAll();
        QCoreApplication::processEvents();
    }

    bool isOver() const { return events.value(events.size() - 1).startsWith(u"complete"); }
    CaptureState state() const { return manager->state(); }
    qsizetype polls() const { return server.logged("READ_START_REG").size(); }
    /// Leaves the replies to \a operation out while \a condition holds.
    template <typename Condition>
    void drop(const char *operation, Condition condition)
    {
        server.answer = [operation, condition](const Wire::Packet &request,
                                               const Wire::Packet &reply) {
            const bool isDropped =
                request["OPRATE"].toString() == QLatin1String(operation) && condition();
            return isDropped ? FakeServer::Replies{} : FakeServer::Replies{reply};
        };
    }

    JtagSession &session = *JtagSession::instance();
    FakeServer server;
    QObject context;
    std::unique_ptr<KeoLiteDataManager> manager = std::make_unique<KeoLiteDataManager>();
    QStringList events;
    bool fetch = true;
    QList<QList<QBitArray>> captures;
};

/// The rows that the server stores for a section.
QBitArray storedSection(int section, qsizetype rows)
{
    QBitArray bits(3 * rows);
    for (qsizetype i = 0; i < bits.size(); ++i)
        bits.setBit(i, FakeServer::storedBit(0, section, i));
    return bits;
}

const QString kStart = QStringLiteral("WRITE_START_REG 010010000000000000000");
constexpr int kForever = 1'000'000'000;

} // namespace

class tst_LiteDataManager : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void packetsOfARun();
    void sections_data();
    void sections();
    void delays();
    void answersWithoutBits();
    void autoRun();
    void stopInEveryState_data();
    void stopInEveryState();
    void receiversMayDoAnything_data();
    void receiversMayDoAnything();
    void failedOpen();
    void longWait();
    void lostPolls();
    void lateAnswersOfLostPolls();
    void load();
};

void tst_LiteDataManager::packetsOfARun()
{
    Rig rig(makeCore(200));
    rig.server.busyPolls = kForever;
    rig.manager->openDevice({0});
    rig.manager->start(0);
    rig.manager->start(0); // not while a run is going on
    QTRY_COMPARE(rig.state(), CaptureState::Polling);
    rig.manager->onDelay(); // armed already
    rig.server.busyPolls = 0;
    QTRY_VERIFY(rig.isOver());
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));

    QStringList log = rig.server.log;
    log.removeAll(QStringLiteral("WRITE_START_REG 011010000000000000000")); // selects for a poll
    log.removeAll(QStringLiteral("READ_START_REG 3"));
    QVERIFY(rig.polls() > 0);
    const QString zeros(3, u'0');
    const QStringList expected = {"OPEN",
                                  "OP_SELECT_CAPTURE_INIT 011010000000000000010",
                                  "OP_READ_CAPTURE_INIT 3",
                                  kStart + "001",
                                  "BRUST_READ 001110000000000000000" + zeros + " 0 0 2",
                                  "READ_RAM 385 0 0 2", // 3 * 128 + 1
                                  "BRUST_READ 001110000000010000000" + zeros + " 0 1 2",
                                  "READ_RAM 385 0 1 2",
                                  "CLOSE"};
    QCOMPARE(log, expected);
    QCOMPARE(rig.events, QStringList({"1", "2", "3", "4", "ram", "1", "idle", "complete 0"}));
    QCOMPARE(rig.captures,
             (QList<QList<QBitArray>>{{storedSection(1, 128), storedSection(0, 128)}}));
    QCOMPARE(rig.manager->core()->active, 2);
    QVERIFY(rig.manager->rawCapture().isEmpty()); // once for each capture
    QCOMPARE(rig.state(), CaptureState::Idle);
}

void tst_LiteDataManager::sections_data()
{
    QTest::addColumn<int>("amount");
    QTest::addColumn<int>("reads");
    QTest::addColumn<int>("size");
    QTest::newRow("nothing") << 0 << 0 << 0;
    QTest::newRow("negative") << std::numeric_limits<int>::min() << 0 << 0;
    QTest::newRow("one row") << 1 << 1 << 4;
    QTest::newRow("one section") << 100 << 1 << 301;
    QTest::newRow("just full") << 128 << 1 << 385;
    QTest::newRow("rounded up") << 129 << 2 << 385;
    QTest::newRow("many") << 1024 << 8 << 385;
}

void tst_LiteDataManager::sections()
{
    QFETCH(const int, amount);
    QFETCH(const int, reads);
    QFETCH(const int, size);
    Rig rig(makeCore(amount));
    rig.manager->start(0);
    if (reads == 0) { // nothing arrives, so the user has to end it
        QTRY_COMPARE(rig.state(), CaptureState::Reading);
        rig.manager->stop();
    }
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 10000);
    QStringList expected;
    for (int i = 0; i < reads; ++i)
        expected += QStringLiteral("READ_RAM %1 0 %2 %3").arg(size).arg(i).arg(reads);
    QCOMPARE(rig.server.logged("READ_RAM"), expected);
}

void tst_LiteDataManager::delays()
{
    const QString init = QStringLiteral("OP_READ_CAPTURE_INIT");
    for (const int delay : {-1, 60'000}) {
        Rig rig(makeCore(8));
        rig.manager->start(delay);
        QTest::qWait(100);
        QCOMPARE(rig.state(), CaptureState::Started);
        QVERIFY(rig.server.log.isEmpty());
        rig.manager->onDelay(); // Force Trigger
        rig.manager->onDelay(); // and once more, before the answer
        QTRY_VERIFY(rig.isOver());
        QCOMPARE(rig.server.logged("READ_RAM").size(), 1);
        QCOMPARE(rig.captures.size(), 1);
    }
    Rig rig(makeCore(8));
    rig.drop("OP_READ_CAPTURE_INIT", [] { return true; });
    rig.manager->start(20);
    QTRY_COMPARE(rig.server.logged(init).size(), 1);
    QTest::qWait(100);
    QCOMPARE(rig.server.logged(init).size(), 1); // the timer has been stopped
}

/// An answer without bits counts as zeros: the core holds data, or is done.
void tst_LiteDataManager::answersWithoutBits()
{
    for (const char *operation : {"OP_READ_CAPTURE_INIT", "READ_START_REG"}) {
        Rig rig(makeCore(8));
        rig.server.busyPolls = kForever;
        rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
            if (request["OPRATE"].toString() == QLatin1String(operation))
                reply["DATA"] = QBitArray();
            return FakeServer::Replies{reply};
        };
        rig.manager->start(0);
        QTRY_VERIFY(rig.isOver());
        QCOMPARE(rig.captures.size(), 1);
        QCOMPARE(rig.server.logged(kStart).isEmpty(),
                 QByteArray(operation) == "OP_READ_CAPTURE_INIT");
    }
}

void tst_LiteDataManager::autoRun()
{
    Rig rig(makeCore(8));
    QList<int> rounds;
    connect(rig.manager.get(), &KeoLiteDataManager::readRamComplete, &rig.context,
            [&] { rounds += rig.manager->autorun(); });
    rig.manager->setAutorun(0);
    rig.manager->start(50);
    QTRY_VERIFY(rounds.size() >= 3);
    QCOMPARE(rounds.mid(0, 3), (QList<int>{1, 2, 3}));
    QTRY_VERIFY(rig.server.logged(kStart + "001").size() > 3); // the next round, without the delay
    QVERIFY(rig.server.logged("CLOSE").isEmpty());
    rig.manager->stop();
    QCOMPARE(rig.manager->autorun(), -1);
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
}

void tst_LiteDataManager::stopInEveryState_data()
{
    QTest::addColumn<CaptureState>("state");
    QTest::addColumn<int>("disarmed");
    QTest::newRow("idle") << CaptureState::Idle << 0;
    QTest::newRow("started") << CaptureState::Started << 1;
    QTest::newRow("polling") << CaptureState::Polling << 1;
    QTest::newRow("reading") << CaptureState::Reading << 0;
    QTest::newRow("read complete") << CaptureState::ReadComplete << 0;
}

void tst_LiteDataManager::stopInEveryState()
{
    QFETCH(const CaptureState, state);
    QFETCH(const int, disarmed);
    Rig rig(makeCore(512));
    rig.fetch = false;
    rig.server.busyPolls = state == CaptureState::Polling ? kForever : 0;
    if (state == CaptureState::Reading) {
        // The user's click, while the event loop runs between two sections.
        connect(rig.manager.get(), &KeoLiteDataManager::sectionRead, this,
                [&] { QTimer::singleShot(0, rig.manager.get(), &KeoLiteDataManager::stop); });
    }
    if (state != CaptureState::Idle) {
        rig.manager->start(state == CaptureState::Started ? 200 : 0);
        QTRY_VERIFY(rig.events.contains(QString::number(int(state))));
    }
    if (state != CaptureState::Reading) {
        QCOMPARE(rig.state(), state);
        rig.manager->stop();
    }
    QTRY_VERIFY(rig.isOver());
    QCOMPARE(rig.state(), CaptureState::Idle);
    QCOMPARE(rig.events.mid(rig.events.size() - 2), QStringList({"idle", "complete 0"}));
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    QCOMPARE(rig.server.logged(kStart + "000").size(), disarmed);

    // Nothing goes on afterwards, whatever still arrives or would have come due.
    const QStringList events = rig.events;
    const qsizetype packets = rig.server.log.size();
    QTest::qWait(300);
    QCOMPARE(rig.events, events);
    QCOMPARE(rig.server.log.size(), packets);
}

void tst_LiteDataManager::receiversMayDoAnything_data()
{
    QTest::addColumn<QString>("where"); // an event of a run, or one that it runs into
    QTest::addColumn<QByteArray>("what");
    for (const char *where : {"1", "2", "3", "4", "ram", "idle", "complete 0"}) {
        for (const char *what : {"stop", "delete", "restart"})
            QTest::addRow("%s in %s", what, where) << where << QByteArray(what);
    }
}

/// A receiver, told before the others, stops the run, deletes the manager or starts the next run.
void tst_LiteDataManager::receiversMayDoAnything()
{
    QFETCH(const QString, where);
    QFETCH(const QByteArray, what);
    Rig rig(makeCore(256));
    bool happened = false;
    const auto act = [&](const QString &event) {
        if (event != where || std::exchange(happened, true))
            return;
        if (what == "delete") {
            rig.manager.reset();
            return;
        }
        if (rig.state() != CaptureState::Idle)
            rig.manager->stop();
        if (what == "restart")
            rig.manager->start(0);
    };
    QObject::disconnect(rig.manager.get(), nullptr, &rig.context, nullptr);
    auto *manager = rig.manager.get();
    connect(manager, &KeoLiteDataManager::statusChanged, this, [&](bool busy) {
        act(busy ? QString::number(int(rig.state())) : QStringLiteral("idle"));
    });
    connect(manager, &KeoLiteDataManager::triggerComplete, this, [&](int) { act("complete 0"); });
    connect(manager, &KeoLiteDataManager::readRamComplete, this, [&] {
        act("ram");
        if (rig.manager)
            rig.captures += rig.manager->rawCapture();
    });
    rig.manager->start(0);
    QTRY_VERIFY(happened);
    if (what == "delete") {
        QTest::qWait(150);
        return;
    }
    QTRY_COMPARE(rig.state(), CaptureState::Idle);
    if (what == "restart") { // the second run is whole, and nothing of the first one is in it
        QCOMPARE(rig.captures.last(),
                 QList<QBitArray>({storedSection(1, 128), storedSection(0, 128)}));
    }
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    const qsizetype packets = rig.server.log.size();
    QTest::qWait(150);
    QCOMPARE(rig.server.log.size(), packets);
}

void tst_LiteDataManager::failedOpen()
{
    Rig rig(makeCore(32));
    rig.server.openResult = -20;
    rig.server.busyPolls = kForever;
    rig.manager->openDevice({0});
    rig.manager->start(-1);
    QTRY_COMPARE(rig.events, QStringList({"1", "idle", "complete 0", "complete -20"}));
}

/// While a core takes its time, every turn of the event loop may poll, and still timers fire,
/// queued calls run, and the packets on their way keep within bounds.
void tst_LiteDataManager::longWait()
{
    Rig rig(makeCore(8));
    rig.server.busyPolls = kForever;
    qsizetype answered = 0;
    rig.server.answer = [&](const Wire::Packet &, const Wire::Packet &reply) {
        answered += reply.contains("DATA");
        return FakeServer::Replies{reply};
    };
    rig.manager->start(0);
    QTRY_COMPARE(rig.state(), CaptureState::Polling);
    int ticks = 0;
    int calls = 0;
    QTimer user;
    connect(&user, &QTimer::timeout, this, [&] {
        ++ticks;
        QMetaObject::invokeMethod(
            this, [&calls] { ++calls; }, Qt::QueuedConnection);
    });
    user.start(1);
    QTRY_VERIFY(rig.polls() > 2000);
    QVERIFY(ticks > 10 && calls > 10);
    QVERIFY(answered > 1900);

    // A server that goes silent is asked some more, and then no more for a while.
    rig.drop("READ_START_REG", [] { return true; });
    QTest::qWait(100);
    const qsizetype polls = rig.polls();
    QTest::qWait(500);
    QCOMPARE(rig.polls(), polls);
    rig.manager->stop();
    QVERIFY(rig.isOver());
}

/// More answers are lost than polls may wait, some at first and then every second one: polling goes
/// on nonetheless, and the device's refusal, late as it may be, still finds its task.
void tst_LiteDataManager::lostPolls()
{
    Rig rig(makeCore(8));
    rig.server.busyPolls = 300;
    qsizetype lost = 0;
    rig.drop("READ_START_REG", [&] { return lost < 100 || lost % 2 == 0 ? ++lost : (++lost, 0); });
    rig.manager->start(0);
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 60000);
    QCOMPARE(rig.captures.size(), 1);

    Wire::Packet refusal;
    rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
        if (request["CMD"].toString() == u"OPEN") {
            refusal = reply;
            refusal["RES"] = 1;
            return FakeServer::Replies{};
        }
        const bool isPoll = request["OPRATE"].toString() == u"READ_START_REG";
        return isPoll ? FakeServer::Replies{} : FakeServer::Replies{reply};
    };
    rig.manager->openDevice({0});
    rig.manager->start(0);
    QTest::qWait(2500); // longer than polls are waited for
    rig.server.send(refusal);
    QTRY_COMPARE(rig.events.last(), QStringLiteral("complete 1"));
}

/// Polls that were given up are answered after all, while the memory is read: sections take the
/// same ids again, and must not take those answers.
void tst_LiteDataManager::lateAnswersOfLostPolls()
{
    Rig rig(makeCore(256));
    FakeServer::Replies kept;
    rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
        const QString operation = request["OPRATE"].toString();
        if (operation == u"READ_START_REG" && kept.size() < 64) {
            kept += reply;
            return FakeServer::Replies{};
        }
        if (operation == u"READ_RAM")
            return std::exchange(kept, FakeServer::Replies(64)) + FakeServer::Replies{reply};
        return FakeServer::Replies{reply};
    };
    rig.manager->start(0);
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 10000);
    QCOMPARE(rig.captures,
             (QList<QList<QBitArray>>{{storedSection(1, 128), storedSection(0, 128)}}));
}

void tst_LiteDataManager::load()
{
    QTemporaryDir directory;
    const QByteArray core = "<KoCore_Lite index=\"2\"/>";
    KeoLiteDataManager manager;
    QString id;
    const auto loads = [&](const QString &name, const QByteArray &cores) {
        QFile file(directory.filePath(name));
        const QByteArray content =
            "<KEO_CONFIG><Version>3.0</Version>" + cores + "<KEO_ID>1A2B</KEO_ID></KEO_CONFIG>";
        if (!cores.isNull() && (!file.open(QIODevice::WriteOnly) || file.write(content) < 0))
            return false;
        file.close();
        return manager.load(file.fileName(), id);
    };
    QVERIFY(loads("a.zeo", core) && manager.isZeo());
    QCOMPARE(id, QStringLiteral("1A2B"));
    QCOMPARE(manager.core()->index, 2);
    QVERIFY(!loads("none.keo", {}) && manager.isZeo() && manager.core());
    QVERIFY(!loads("two.keo", core + core) && !manager.isZeo() && !manager.core());
    manager.start(0); // without a core there is nothing to start
    QCOMPARE(manager.state(), CaptureState::Idle);
}

KEO_TEST_MAIN(tst_LiteDataManager)
#include "tst_litedatamanager.moc"
