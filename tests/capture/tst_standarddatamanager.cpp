#include "fakeserver.h"

#include <capture/standarddatamanager.h>
#include <link/jtagsession.h>

#include <support/testmain.h>

#include <QTemporaryDir>
#include <QTimer>

#include <limits>
#include <memory>

using namespace KEO;

namespace {

/// A core with one captured signal: 16-bit registers.
std::unique_ptr<CoreConfig> makeCore(int index, int amount, int windows = 1)
{
    auto core = std::make_unique<CoreConfig>(index);
    core->signals = {{QStringLiteral("s"), {}, {}}};
    core->capture_amount = amount;
    core->window_num = windows;
    core->expressions = QStringList{QStringLiteral("M0")};
    return core;
}

/// A manager behind a server of its own, with the signals written down and every window fetched.
struct Rig
{
    explicit Rig(std::vector<std::unique_ptr<CoreConfig>> cores = {})
    {
        session.connectServer({"cable", server.name()}, 1000);
        session.selectCable("cable");
        manager->setCores(std::move(cores));
        auto *source = manager.get();
        QObject::connect(source, &KeoStandardDataManager::statusChanged, &context,
                         [this](bool busy) {
                             events += busy ? QStringLiteral("busy") : QStringLiteral("idle");
                         });
        QObject::connect(
            source, &KeoStandardDataManager::triggerComplete, &context,
            [this](int result) { events += QStringLiteral("complete %1").arg(result); });
        QObject::connect(source, &KeoStandardDataManager::readRamComplete, &context,
                         [this](int core, int window) {
                             events += QStringLiteral("ram %1 %2").arg(core).arg(window);
                             if (fetch)
                                 windows += manager->rawWindow(window);
                         });
    }
    ~Rig()
    {
        manager.reset();
        session.disconnectAll();
        QCoreApplication::processEvents();
    }

    static std::vector<std::unique_ptr<CoreConfig>> one(std::unique_ptr<CoreConfig> core)
    {
        std::vector<std::unique_ptr<CoreConfig>> cores;
        cores.push_back(std::move(core));
        return cores;
    }

    /// Starts the first core without waiting for the timer's first tick.
    void run()
    {
        manager->start({0});
        manager->checkState();
    }
    bool isOver() const { return events.value(events.size() - 1).startsWith(u"complete"); }
    CaptureState state() const { return manager->state(); }

    JtagSession &session = *JtagSession::instance();
    FakeServer server;
    QObject context;
    std::unique_ptr<KeoStandardDataManager> manager = std::make_unique<KeoStandardDataManager>();
    QStringList events;
    bool fetch = true;
    QList<QList<QBitArray>> windows;
};

/// The rows that the server stores for a section.
QBitArray storedSection(int window, int section, qsizetype size)
{
    QBitArray bits(size);
    for (qsizetype i = 0; i < size; ++i)
        bits.setBit(i, FakeServer::storedBit(window, section, i));
    return bits;
}

/// The events without the status that every poll repeats.
QStringList withoutRepeats(const QStringList &events)
{
    QStringList kept;
    for (const QString &event : events) {
        if (kept.isEmpty() || event != kept.last() || event != u"busy")
            kept += event;
    }
    return kept;
}

const QString kSelect = QStringLiteral("WRITE_REGISTOR 1");
const QString kReadSelect = QStringLiteral("WRITE_START_REG 011010000000000000000");
const QString kStart0 = QStringLiteral("WRITE_START_REG 010010000000000000000");

} // namespace

class tst_StandardDataManager : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void packetsOfARun();
    void coresAndWindows();
    void autoRun();
    void forceTrigger();
    void stopInEveryState_data();
    void stopInEveryState();
    void receiversMayDoAnything_data();
    void receiversMayDoAnything();
    void failedOpen();
    void hostileSections_data();
    void hostileSections();
    void hostilePolls();
    void repliesOfAnEarlierRun();
    void pollsOfAnEarlierRun();
    void replyOfAnEarlierRound();
    void hostileNumbers();
    void load();
    void timeout();
};

/// A dynamic core without units: five setting words and a truth table with one entry.
void tst_StandardDataManager::packetsOfARun()
{
    Rig rig(Rig::one(makeCore(3, 64)));
    rig.manager->cores()[0]->dynamic = 1;
    rig.server.busyPolls = 1;
    rig.manager->openDevice({0, 13});
    rig.manager->start({0, 1, -1}); // there is no core at the other positions
    rig.manager->start({0});        // not while a run is going on
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 5000);
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));

    const QString zeros(16, u'0');
    const QString write = QStringLiteral("WRITE_REGISTOR 01001");
    const QStringList expected = {"OPEN",
                                  "WRITE_REGISTOR 10011",
                                  write + "0000000000100000" + zeros,
                                  write + "0000000000100001" + "0000000000111111",
                                  write + "0000000000100010" + "0000000000111100", // 64 - 0 - 4
                                  write + "0000000000100011" + zeros,
                                  write + "1010101100000000" + zeros, // M0 has no slot: never
                                  kStart0 + "0000000000000001",
                                  "WRITE_REGISTOR 10011", // the first poll selects
                                  kReadSelect,
                                  "READ_START_REG 16",
                                  kReadSelect, // the second one does not
                                  "READ_START_REG 16",
                                  "BRUST_READ 0011100000000000000000000000001000000 0 0 1",
                                  "READ_RAM 1057 0 0 1", // 16 * 64 + 33
                                  "CLOSE"};
    QCOMPARE(rig.server.log, expected);
    QCOMPARE(rig.events, QStringList({"busy", "busy", "busy", "busy", "busy", "ram 3 0", "idle",
                                      "complete 0"}));
    QCOMPARE(rig.windows, (QList<QList<QBitArray>>{{storedSection(0, 0, 16 * 64)}}));
    QCOMPARE(rig.manager->cores()[0]->active, 2);
}

void tst_StandardDataManager::coresAndWindows()
{
    auto cores = Rig::one(makeCore(9, 200, 3)); // one section of 128 rows, stride 1024 / 4
    cores.push_back(makeCore(5, 32));           // not started
    cores.push_back(makeCore(7, 300));          // two sections
    Rig rig(std::move(cores));
    QStringList progress;
    connect(rig.manager.get(), &KeoStandardDataManager::sectionRead, this,
            [&](int core, int window, int read, int all) {
                progress +=
                    QStringLiteral("%1/%2 %3 of %4").arg(core).arg(window).arg(read).arg(all);
            });
    rig.manager->start({2, 0});
    QCOMPARE(rig.manager->activeCores().size(), 2);
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 8000);

    QCOMPARE(withoutRepeats(rig.events),
             QStringList({"busy", "ram 9 0", "ram 9 1", "busy", "ram 9 2", "busy", "ram 7 0",
                          "idle", "complete 0"}));
    QCOMPARE(progress,
             QStringList({"9/0 1 of 1", "9/1 1 of 1", "9/2 1 of 1", "7/0 1 of 2", "7/0 2 of 2"}));
    QStringList addresses;
    for (const QString &line : rig.server.logged("BRUST_READ"))
        addresses += QString::number(line.mid(16, 16).toInt(nullptr, 2)) + line.mid(48);
    QCOMPARE(addresses, QStringList({"0 0 0 1", "256 1 0 1", "512 2 0 1", "0 0 0 2", "128 0 1 2"}));
    // Programmed in the order asked for, polled in the order of the description.
    QCOMPARE(rig.server.logged(kSelect),
             QStringList({kSelect + "0111", kSelect + "1001", kSelect + "1001", kSelect + "0111"}));
    QCOMPARE(rig.windows.size(), 4);
    QCOMPARE(rig.windows[3],
             QList<QBitArray>({storedSection(0, 1, 16 * 128), storedSection(0, 0, 16 * 128)}));
    QCOMPARE(rig.manager->cores()[1]->active, 0);
}

void tst_StandardDataManager::autoRun()
{
    Rig rig(Rig::one(makeCore(0, 32)));
    rig.manager->cores()[0]->dynamic = 1;
    rig.manager->setAutorun(0);
    rig.manager->start({0});
    QTRY_COMPARE_WITH_TIMEOUT(rig.windows.size(), 3, 8000);
    QCOMPARE(rig.manager->autorun(), 3);
    QCOMPARE(rig.state(), CaptureState::Armed);
    QTRY_COMPARE(rig.server.logged(kStart0).size(), 4);
    // The settings go out in every round, the truth table once.
    QCOMPARE(rig.server.logged("WRITE_REGISTOR 010010000000000100001").size(), 4);
    QCOMPARE(rig.server.logged("WRITE_REGISTOR 010011010101100000000").size(), 1);
    QVERIFY(rig.server.logged("CLOSE").isEmpty());

    rig.manager->stop();
    QCOMPARE(rig.manager->autorun(), -1);
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    QCOMPARE(rig.events.mid(rig.events.size() - 2), QStringList({"idle", "complete 0"}));
}

void tst_StandardDataManager::forceTrigger()
{
    auto cores = Rig::one(makeCore(1, 300));
    cores.push_back(makeCore(2, 32));
    Rig rig(std::move(cores));
    rig.server.busyPolls = 1'000'000;
    rig.manager->start({0, 1});
    QTRY_VERIFY(!rig.server.logged("READ_START_REG").isEmpty());
    rig.server.log.clear();
    rig.manager->forceTrigger();
    QCOMPARE(rig.state(), CaptureState::Armed);
    rig.manager->checkState();
    QTRY_COMPARE(rig.server.logged("READ_START_REG").size(), 1);
    const QString force = kStart0 + "0000000000000011";
    // Forcing leaves the last core selected, while the first one is still to be polled and read.
    QCOMPARE(rig.server.log.mid(0, 5),
             QStringList({kSelect + "0001", force, kSelect + "0010", force, kSelect + "0001"}));

    rig.server.busyPolls = 0;
    connect(rig.manager.get(), &KeoStandardDataManager::sectionRead, this, [&] {
        rig.server.log.clear();
        if (rig.state() == CaptureState::Reading)
            rig.manager->forceTrigger(); // too late to ask
    });
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 5000);
    QVERIFY(rig.server.logged(kStart0).isEmpty());
}

void tst_StandardDataManager::stopInEveryState_data()
{
    QTest::addColumn<CaptureState>("state");
    QTest::addColumn<int>("disarmed");
    QTest::newRow("idle") << CaptureState::Idle << 0;
    QTest::newRow("armed") << CaptureState::Armed << 2;
    QTest::newRow("reading") << CaptureState::Reading << 1;
    QTest::newRow("read complete") << CaptureState::ReadComplete << 1;
}

void tst_StandardDataManager::stopInEveryState()
{
    QFETCH(const CaptureState, state);
    QFETCH(const int, disarmed);
    auto cores = Rig::one(makeCore(0, 512));
    cores.push_back(makeCore(1, 512));
    Rig rig(std::move(cores));
    rig.server.busyPolls = state == CaptureState::Armed ? 1'000'000 : 0;
    if (state == CaptureState::Reading) {
        // The user's click, while the event loop runs between two sections.
        connect(rig.manager.get(), &KeoStandardDataManager::sectionRead, this,
                [&] { QTimer::singleShot(0, rig.manager.get(), &KeoStandardDataManager::stop); });
    }
    if (state != CaptureState::Idle) {
        rig.manager->start({0, 1});
        QTRY_COMPARE(rig.state(), state);
    }
    if (state == CaptureState::Armed)
        QTRY_VERIFY(!rig.server.logged("READ_START_REG").isEmpty());
    if (state != CaptureState::Reading)
        rig.manager->stop();
    QTRY_VERIFY(rig.isOver());
    QCOMPARE(rig.state(), CaptureState::Idle);
    QCOMPARE(rig.events.mid(rig.events.size() - 2), QStringList({"idle", "complete 0"}));
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    QCOMPARE(rig.server.logged(kStart0 + "0000000000000000").size(), disarmed);
    QVERIFY(rig.manager->rawWindow(0).isEmpty());

    // Nothing goes on afterwards, whatever still arrives.
    const QStringList events = rig.events;
    const qsizetype packets = rig.server.log.size();
    QTest::qWait(550);
    QCOMPARE(rig.events, events);
    QCOMPARE(rig.server.log.size(), packets);
}

void tst_StandardDataManager::receiversMayDoAnything_data()
{
    QTest::addColumn<QByteArray>("where");
    QTest::addColumn<QByteArray>("what");
    for (const char *where : {"status", "section", "ram", "complete", "loop"}) {
        for (const char *what : {"stop", "release", "delete", "restart"})
            QTest::addRow("%s in %s", what, where) << QByteArray(where) << QByteArray(what);
    }
}

/// In the middle of a run with two windows of two sections something happens once, inside a signal
/// or in the event loop between two sections.
void tst_StandardDataManager::receiversMayDoAnything()
{
    QFETCH(const QByteArray, where);
    QFETCH(const QByteArray, what);
    Rig rig(Rig::one(makeCore(0, 256, 2)));
    bool happened = false;
    const auto act = [&] {
        if (std::exchange(happened, true))
            return;
        if (what == "stop" || what == "restart")
            rig.manager->stop();
        if (what == "restart") {
            rig.run(); // and a box keeps an event loop going until the next read is under way
            QVERIFY(QTest::qWaitFor([&] { return rig.state() == CaptureState::Reading; }));
        }
        if (what == "release")
            rig.manager->release();
        if (what == "delete")
            rig.manager.reset();
    };
    const auto *manager = rig.manager.get();
    if (where == "status") {
        connect(manager, &KeoStandardDataManager::statusChanged, this, [&] {
            if (rig.manager && rig.state() == CaptureState::Reading)
                act();
        });
    } else if (where == "section") {
        connect(manager, &KeoStandardDataManager::sectionRead, this, act);
    } else if (where == "ram") {
        connect(manager, &KeoStandardDataManager::readRamComplete, this, act);
    } else if (where == "complete") {
        connect(manager, &KeoStandardDataManager::triggerComplete, this, act);
    } else {
        rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
            if (request.contains("SECTION"))
                QTimer::singleShot(0, this, act);
            return FakeServer::Replies{reply};
        };
    }
    rig.run();
    QTRY_VERIFY_WITH_TIMEOUT(happened, 5000);
    if (what == "restart") {
        const auto completed = [&] { return rig.events.count(QStringLiteral("complete 0")); };
        QTRY_COMPARE_WITH_TIMEOUT(completed(), where == "complete" ? 3 : 2, 5000);
        // The second run is whole, and nothing of the first one is in it.
        QCOMPARE(rig.windows.last(),
                 QList<QBitArray>({storedSection(1, 1, 16 * 128), storedSection(1, 0, 16 * 128)}));
        // Two windows of two sections, and no read that a loop of the first run still sends.
        QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
        const qsizetype begin = rig.server.log.lastIndexOf(QStringLiteral("CLOSE"), -2);
        QCOMPARE(rig.server.log.mid(begin).filter("READ_RAM").size(), 4);
        return;
    }
    const QStringList events = rig.events;
    QTest::qWait(300);
    QCOMPARE(rig.events, events);
    if (what != "delete")
        QCOMPARE(rig.state(), CaptureState::Idle);
}

void tst_StandardDataManager::failedOpen()
{
    Rig rig(Rig::one(makeCore(0, 32)));
    rig.server.openResult = -20;
    rig.manager->openDevice({0});
    rig.manager->start({0});
    QTRY_VERIFY(rig.events.contains(QStringLiteral("complete -20")));
    QCOMPARE(rig.events, QStringList({"busy", "idle", "complete 0", "complete -20"}));
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
}

void tst_StandardDataManager::hostileSections_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value"); // of the first section's reply; invalid removes the key
    QTest::addColumn<int>("copies");     // of that reply
    QTest::addColumn<bool>("waits");     // for the section, since this was none
    QTest::addColumn<QString>("sizes");  // bits of the sections handed out

    const auto row = [](const char *name, const QString &key, const QVariant &value,
                        const QString &sizes, int copies = 1) {
        QTest::newRow(name) << key << value << copies << (key == u"WINDOW") << sizes;
    };
    row("window beyond", "WINDOW", 1, "");
    row("negative window", "WINDOW", -1, "");
    row("no window", "WINDOW", QVariant(), "");
    row("window is no number", "WINDOW", "x", "");
    row("count too small", "SECTION_COUNT", 1, "");
    row("count negative", "SECTION_COUNT", -2, "");
    row("no count", "SECTION_COUNT", QVariant(), "");
    row("no data", "DATA", QVariant(), "");
    row("data is no bits", "DATA", "1111", "");
    row("less than the filling", "DATA", QBitArray(33), "");
    row("one bit short", "DATA", QBitArray(32 + 2048), "");
    row("giant data", "DATA", QBitArray(50'000'000), "2048 2048");
    row("a hundred replies", "OTHER", 1, "2048 2048", 100);
}

/// A window of which a section is not what was asked for is handed out empty.
void tst_StandardDataManager::hostileSections()
{
    QFETCH(const QString, key);
    QFETCH(const QVariant, value);
    QFETCH(const int, copies);
    QFETCH(const bool, waits);
    QFETCH(const QString, sizes);
    Rig rig(Rig::one(makeCore(0, 256)));
    rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
        if (request["OPRATE"] != QStringLiteral("READ_RAM") || request["SECTION"] != 0)
            return FakeServer::Replies{reply};
        reply[key] = value;
        if (!value.isValid())
            reply.remove(key);
        return FakeServer::Replies(copies, reply);
    };
    rig.run();
    if (waits) { // like a lost reply: the run waits for the user
        QTRY_COMPARE(rig.server.logged("READ_RAM").size(), 2);
        QTest::qWait(200);
        QCOMPARE(rig.state(), CaptureState::Reading);
        rig.manager->stop();
        QCOMPARE(rig.manager->report().missing, (QList<RunReport::Window>{{0, 0}}));
    }
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 5000);
    QCOMPARE(rig.events.contains("ram 0 0"), !waits);
    QStringList read;
    for (const QBitArray &section : rig.windows.value(0))
        read += QString::number(section.size());
    QCOMPARE(read.join(u' '), sizes);
}

void tst_StandardDataManager::hostilePolls()
{
    const QList<QPair<QVariant, bool>> rows = {
        {QVariant(), false}, // no data at all
        {QBitArray(), false},     {0, false}, {QBitArray(70'000, true), false},
        {QBitArray(15), false}, // the set bit may lack
        {QBitArray(70'000), true}};
    for (const auto &[data, triggers] : rows) {
        Rig rig(Rig::one(makeCore(0, 32)));
        bool isFirst = true;
        rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
            if (request["OPRATE"] == QStringLiteral("READ_START_REG") &&
                std::exchange(isFirst, false))
                reply["DATA"] = data;
            if (!reply["DATA"].isValid())
                reply.remove("DATA");
            return FakeServer::Replies(2, reply); // the second one finds the run reading
        };
        rig.run();
        QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 5000);
        QCOMPARE(rig.server.logged("READ_START_REG").size(), triggers ? 1 : 2); // polled again
        QCOMPARE(rig.windows.size(), 1);
    }
}

/// A server keeps a reply back until the next run uses the same id again. It must not be taken for
/// an answer of that run.
void tst_StandardDataManager::repliesOfAnEarlierRun()
{
    Rig rig(Rig::one(makeCore(0, 256)));
    FakeServer::Replies kept;
    rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
        if (!request.contains("SECTION"))
            return FakeServer::Replies{reply};
        kept += reply;
        return FakeServer::Replies{};
    };
    rig.run();
    QTRY_COMPARE(kept.size(), 2);
    rig.manager->stop();
    for (const Wire::Packet &reply : std::as_const(kept))
        rig.server.send(reply);
    QTest::qWait(50);
    rig.server.busyPolls = 1'000'000;
    rig.run();
    QTRY_COMPARE(rig.server.logged("READ_START_REG").size(), 2);
    for (const Wire::Packet &reply : std::as_const(kept))
        rig.server.send(reply);
    QTest::qWait(50);
    QCOMPARE(rig.state(), CaptureState::Armed);
    QVERIFY(rig.windows.isEmpty());
}

/// A slow server answers two polls of a stopped run while the next one reads. Neither may stand in
/// for a section, or the run would wait for that one for ever.
void tst_StandardDataManager::pollsOfAnEarlierRun()
{
    Rig rig(Rig::one(makeCore(0, 256)));
    FakeServer::Replies polls;
    rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
        if (request.contains("SECTION"))
            return std::exchange(polls, {}) + FakeServer::Replies{reply};
        if (polls.size() == 2) // the next run is answered
            return FakeServer::Replies{reply};
        polls += reply;
        return FakeServer::Replies{};
    };
    rig.run();
    rig.manager->checkState();
    QTRY_COMPARE(polls.size(), 2);
    rig.manager->stop();
    rig.events.clear();
    rig.run();
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 5000);
    QCOMPARE(rig.windows, (QList<QList<QBitArray>>{
                              {storedSection(0, 1, 128 * 16), storedSection(0, 0, 128 * 16)}}));
}

/// The "triggered" of one round comes once more when the next round waits for its trigger.
void tst_StandardDataManager::replyOfAnEarlierRound()
{
    Rig rig(Rig::one(makeCore(0, 256)));
    Wire::Packet triggered;
    rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
        if (request["OPRATE"] == QStringLiteral("READ_START_REG"))
            triggered = reply;
        if (request["OPRATE"] == QStringLiteral("READ_RAM"))
            rig.server.busyPolls = 1'000'000;
        return FakeServer::Replies{reply};
    };
    rig.manager->setAutorun(0);
    rig.run();
    QTRY_COMPARE(rig.windows.size(), 1);
    const Wire::Packet kept = triggered;
    rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
        const bool isPoll = request["OPRATE"] == QStringLiteral("READ_START_REG");
        return isPoll ? FakeServer::Replies{kept} : FakeServer::Replies{reply};
    };
    rig.manager->checkState();
    QTest::qWait(100);
    QCOMPARE(rig.state(), CaptureState::Armed);
    QCOMPARE(rig.windows.size(), 1);
}

void tst_StandardDataManager::hostileNumbers()
{
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    struct Row
    {
        int amount;
        int windows;
        int depth;
        int reads;
    };
    for (const Row &row :
         {Row{0, 1, 1024, 0}, Row{0, kMost, 1024, 0}, Row{kLeast, kMost, 1024, 0},
          Row{32, 0, 1024, 0}, Row{32, kLeast, 1024, 0}, Row{32, 2, 0, 2}, Row{32, 2, kLeast, 2},
          Row{32, kMost, 1024, 3}, Row{kMost, 2, kMost, 3}}) {
        Rig rig(Rig::one(makeCore(0, row.amount, row.windows)));
        rig.manager->cores()[0]->storage_depth = row.depth;
        // Reading goes on inside one call for as long as there are windows, so it is stopped there.
        rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
            if (request["OPRATE"].toString() == u"READ_RAM" &&
                rig.server.logged("READ_RAM").size() == row.reads) {
                QTimer::singleShot(0, rig.manager.get(), &KeoStandardDataManager::stop);
            }
            return FakeServer::Replies{reply};
        };
        rig.run();
        QTRY_COMPARE(rig.server.logged("READ_START_REG").size(), 1);
        if (row.reads == 0) {
            QTRY_COMPARE(rig.state(), CaptureState::Reading);
            rig.manager->stop();
        }
        QTRY_VERIFY(rig.isOver());
        QVERIFY(rig.server.logged("READ_RAM").size() >= row.reads);
    }
}

void tst_StandardDataManager::load()
{
    QTemporaryDir directory;
    const QByteArray core =
        "<KEO_CONFIG><Version>3.0</Version><KoCore index=\"2\"/><KEO_ID>1A2B</KEO_ID></KEO_CONFIG>";
    KeoStandardDataManager manager;
    QString id;
    const auto loads = [&](const QString &name, const QByteArray &content) {
        QFile file(directory.filePath(name));
        if (!content.isEmpty() && (!file.open(QIODevice::WriteOnly) || file.write(content) < 0))
            return false;
        file.close();
        return manager.load(file.fileName(), id);
    };
    QVERIFY(loads("a.zeo", core) && manager.isZeo());
    QCOMPARE(id, QStringLiteral("1A2B"));
    QVERIFY(manager.coreByIndex(2) == manager.cores()[0].get() && !manager.coreByIndex(0));
    QVERIFY(!loads("none.keo", {}) && manager.isZeo() && manager.cores().size() == 1);
    QVERIFY(loads("b.keo", core) && !manager.isZeo());
    QVERIFY(loads("c.ZEO", core) && !manager.isZeo()); // says nothing about the form
    QVERIFY(!loads("d.zeo", "<KEO_CONFIG/>") && manager.isZeo() && manager.cores().empty());
}

void tst_StandardDataManager::timeout()
{
    Rig rig(Rig::one(makeCore(0, 32)));
    QStringList shown;
    rig.manager->setErrorBox([&](const QString &title, const QString &text) {
        shown += {title, text};
        QCOMPARE(rig.state(), CaptureState::Idle);
    });
    rig.manager->start({0});
    rig.manager->onTimeout();
    QCOMPARE(shown, QStringList({"Error", "ERROR: No response was reveived from Chainserver, the "
                                          "server probably timed out."}));
}

KEO_TEST_MAIN(tst_StandardDataManager)
#include "tst_standarddatamanager.moc"
