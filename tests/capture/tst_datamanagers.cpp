// The data managers of both kinds of core, packet by packet. What they promise alike is tried on
// both; faults on replies have a test of their own.

#include "fakeserver.h"

#include <capture/litedatamanager.h>
#include <capture/standarddatamanager.h>
#include <link/jtagsession.h>

#include <support/files.h>
#include <support/testmain.h>

#include <QTemporaryDir>
#include <QTimer>

#include <limits>
#include <memory>

using namespace KEO;

namespace {

enum class Kind { Standard, Lite };
constexpr Kind kKinds[] = {Kind::Standard, Kind::Lite};
constexpr int kForever = 1'000'000'000;

/// One captured signal: 16-bit registers.
std::unique_ptr<CoreConfig> standardCore(int index, int amount, int windows = 1)
{
    auto core = std::make_unique<CoreConfig>(index);
    core->signals = {{QStringLiteral("s"), {}, {}}};
    core->capture_amount = amount;
    core->window_num = windows;
    core->expressions = QStringList{QStringLiteral("M0")};
    return core;
}

/// Three captured signals: registers and rows of 3 bits.
std::unique_ptr<LiteCoreConfig> liteCore(int amount)
{
    auto core = std::make_unique<LiteCoreConfig>(4);
    core->signals = QList<SignalEntry>(3);
    core->capture_amount = amount;
    return core;
}

/// A manager with one core behind a server of its own. What it says is written down, and every
/// window fetched.
struct Rig
{
    explicit Rig(Kind kind, int amount = 256) : rowBits(kind == Kind::Lite ? 3 : 16)
    {
        session.connectServer({"cable", server.name()}, 1000);
        session.selectCable("cable");
        if (kind == Kind::Lite) {
            server.leadingBits = 0;
            lite = new KeoLiteDataManager;
            manager.reset(lite);
            lite->setCore(liteCore(amount));
            QObject::connect(lite, &KeoLiteDataManager::readRamComplete, &context, [this] {
                note(QStringLiteral("ram"));
                if (manager && fetches)
                    windows += lite->rawCapture();
            });
        } else {
            standard = new KeoStandardDataManager;
            manager.reset(standard);
            CoreList cores;
            cores.push_back(standardCore(0, amount));
            standard->setCores(std::move(cores));
            QObject::connect(standard, &KeoStandardDataManager::readRamComplete, &context,
                             [this](int core, int window) {
                                 note(QStringLiteral("ram %1 %2").arg(core).arg(window));
                                 if (manager && fetches)
                                     windows += standard->rawWindow(window);
                             });
            QObject::connect(&ticks, &QTimer::timeout, standard, [this] {
                if (isImpatient)
                    standard->checkState();
            });
            ticks.start(5);
        }
        QObject::connect(manager.get(), &CaptureManager::statusChanged, &context,
                         [this](bool isBusy) {
                             note(isBusy ? QString::number(int(state())) : QStringLiteral("idle"));
                         });
        QObject::connect(manager.get(), &CaptureManager::sectionRead, &context,
                         [this] { note(QStringLiteral("section")); });
        QObject::connect(manager.get(), &CaptureManager::triggerComplete, &context,
                         [this](int result) { note(QStringLiteral("complete %1").arg(result)); });
    }
    ~Rig()
    {
        manager.reset();
        session.disconnectAll();
        QCoreApplication::processEvents();
    }

    void start()
    {
        if (lite)
            lite->start(0);
        else
            standard->start({0});
    }
    void open()
    {
        manager->openDevice({0});
        start();
    }
    CaptureState state() const { return manager->state(); }
    bool isOver() const { return events.value(events.size() - 1).startsWith(u"complete"); }
    qsizetype sent(const char *operation) const
    {
        return server.logged(QLatin1String(operation)).size();
    }
    const char *firstRead() const { return lite ? "OP_READ_CAPTURE_INIT" : "READ_START_REG"; }
    /// The sections of window 0 as the server has them, the last one first.
    QList<QBitArray> stored(int sections = 2, int rows = 128) const
    {
        QList<QBitArray> all;
        for (int section = 0; section < sections; ++section) {
            all.prepend(QBitArray(rows * rowBits));
            for (qsizetype i = 0; i < all.first().size(); ++i)
                all.first().setBit(i, FakeServer::storedBit(0, section, i));
        }
        return all;
    }
    void note(const QString &event)
    {
        events += event;
        if (onEvent)
            onEvent(event);
    }

    JtagSession &session = *JtagSession::instance();
    FakeServer server;
    QObject context;
    QTimer ticks;
    std::unique_ptr<CaptureManager> manager;
    KeoStandardDataManager *standard = nullptr; // either of them
    KeoLiteDataManager *lite = nullptr;
    int rowBits;
    bool isImpatient = true; ///< polls more often than a standard core's timer does
    bool fetches = true;
    QStringList events;
    std::function<void(const QString &)> onEvent;
    QList<QList<QBitArray>> windows;
};

using Replies = FakeServer::Replies;
using Windows = QList<QList<QBitArray>>;

bool isFor(const Wire::Packet &request, const char *operation)
{
    return request.value("OPRATE", request["CMD"]).toString() == QLatin1String(operation);
}

const QString kStart = QStringLiteral("WRITE_START_REG 010010000000000000000");

} // namespace

class tst_DataManagers : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void packetsOfAStandardRun();
    void packetsOfALiteRun();
    void receiversMayDoAnything_data();
    void receiversMayDoAnything();
    void failedOpen();
    void repliesOfAStoppedRun_data();
    void repliesOfAStoppedRun();
    void sectionsOutOfOrder();
    void sectionsThatAreNone_data();
    void sectionsThatAreNone();
    void answersOfRegisters_data();
    void answersOfRegisters();
    void contradiction();
    void serverThatIsGone();
    void autoRuns();
    void coresAndWindows();
    void forceTrigger();
    void numbersOfADescription();
    void delays();
    void longWait();
    void truthTableOnItsWay();
    void boundedPace();
    void lostPolls();
    void load();
    void timeout();
};

/// A dynamic core without units: five setting words and a truth table with one entry.
void tst_DataManagers::packetsOfAStandardRun()
{
    Rig rig(Kind::Standard, 64);
    rig.isImpatient = false;
    rig.standard->cores()[0]->dynamic = 1;
    rig.server.busyPolls = 1;
    rig.manager->openDevice({0, 13});
    rig.standard->start({0, 1, -1}); // there is no core at the other positions
    rig.standard->start({0});        // not while a run is going on
    QTRY_VERIFY(rig.isOver());
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    const QString zeros(16, u'0');
    const QString write = QStringLiteral("WRITE_REGISTOR 01001");
    const QString poll = QStringLiteral("WRITE_START_REG 011010000000000000000");
    QCOMPARE(rig.server.log,
             QStringList({"OPEN", "WRITE_REGISTOR 10000", write + "0000000000100000" + zeros,
                          write + "0000000000100001" + "0000000000111111",
                          write + "0000000000100010" + "0000000000111100", // 64 - 0 - 4
                          write + "0000000000100011" + zeros,
                          write + "1010101100000000" + zeros, // M0 has no slot: never
                          kStart + "0000000000000001",
                          "WRITE_REGISTOR 10000", // the first poll selects, the second does not
                          poll, "READ_START_REG 16", poll, "READ_START_REG 16",
                          "BRUST_READ 0011100000000000000000000000001000000 0 0 1",
                          "READ_RAM 1057 0 0 1", // 16 * 64 + 33
                          "CLOSE"}));
    QCOMPARE(rig.events,
             QStringList({"1", "1", "1", "3", "section", "4", "ram 0 0", "idle", "complete 0"}));
    QCOMPARE(rig.windows, Windows{rig.stored(1, 64)});
}

void tst_DataManagers::packetsOfALiteRun()
{
    Rig rig(Kind::Lite, 200);
    rig.server.busyPolls = kForever;
    rig.open();
    rig.start(); // not while a run is going on
    QTRY_COMPARE(rig.state(), CaptureState::Polling);
    rig.lite->onDelay(); // armed already
    QTRY_VERIFY(rig.sent("READ_START_REG") > 0);
    rig.server.busyPolls = 0;
    QTRY_VERIFY(rig.isOver());
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    QStringList log = rig.server.log;
    log.removeAll(QStringLiteral("WRITE_START_REG 011010000000000000000")); // selects for a poll
    log.removeAll(QStringLiteral("READ_START_REG 3"));
    QCOMPARE(log,
             QStringList(
                 {"OPEN", "OP_SELECT_CAPTURE_INIT 011010000000000000010", "OP_READ_CAPTURE_INIT 3",
                  kStart + "001", "BRUST_READ 001110000000000000000000 0 0 2",
                  "READ_RAM 385 0 0 2", // 3 * 128 + 1
                  "BRUST_READ 001110000000010000000000 0 1 2", "READ_RAM 385 0 1 2", "CLOSE"}));
    QCOMPARE(rig.events, QStringList({"1", "2", "3", "section", "section", "4", "ram", "1", "idle",
                                      "complete 0"}));
    QCOMPARE(rig.windows, Windows{rig.stored()});
    QVERIFY(rig.lite->rawCapture().isEmpty()); // once for each capture
    QCOMPARE(rig.state(), CaptureState::Idle);
}

void tst_DataManagers::receiversMayDoAnything_data()
{
    addColumns<Kind, QString, QString>({"kind", "where", "what"});
    for (const Kind kind : kKinds) {
        for (const char *where : {"1", "2", "3", "section", "4", "ram", "idle", "complete"}) {
            for (const char *what : {"stop", "delete", "restart", "restart inside"}) {
                if (kind == Kind::Lite || *where != '2') // a state of lite cores
                    addRow(
                        qPrintable(QStringLiteral("%1 %2 in %3")
                                       .arg(kind == Kind::Lite ? "lite" : "standard", what, where)),
                        kind, QString(where), QString(what));
            }
        }
    }
}

/// Inside a signal, the first receiver stops the run, deletes the manager, or starts the next run;
/// perhaps a box then keeps an event loop going until that run reads memory itself.
void tst_DataManagers::receiversMayDoAnything()
{
    QFETCH(const Kind, kind);
    QFETCH(const QString, where);
    QFETCH(const QString, what);
    Rig rig(kind);
    bool isDone = false;
    rig.onEvent = [&](const QString &event) {
        if (!event.startsWith(where) || std::exchange(isDone, true))
            return;
        if (what == u"delete") {
            rig.manager.reset();
            return;
        }
        if (rig.state() != CaptureState::Idle)
            rig.manager->stop();
        if (what != u"stop")
            rig.start();
        if (what == u"restart inside") {
            QVERIFY(QTest::qWaitFor([&] { return rig.state() == CaptureState::Reading; }));
        }
    };
    rig.open();
    QTRY_VERIFY(isDone);
    if (what == u"delete") {
        QTest::qWait(100);
        return;
    }
    QTRY_COMPARE(rig.state(), CaptureState::Idle);
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    if (what != u"stop") { // the second run is whole, and has nothing of the first one
        QCOMPARE(rig.windows.last(), rig.stored());
        const qsizetype begin = rig.server.log.lastIndexOf(QStringLiteral("CLOSE"), -2);
        QCOMPARE(rig.server.log.mid(begin).filter("READ_RAM").size(), 2);
    }
    if (what == u"stop" && kind == Kind::Lite) // a standard core is armed after the first state
        QCOMPARE(rig.server.logged(kStart + "000").size(), where == u"1" || where == u"2");
    QVERIFY(rig.standard ? rig.standard->rawWindow(0).isEmpty() : rig.lite->rawCapture().isEmpty());
    // Nothing goes on, whatever still arrives or would have come due.
    const qsizetype packets = rig.server.log.size();
    QTest::qWait(100);
    QCOMPARE(rig.server.log.size(), packets);
}

void tst_DataManagers::failedOpen()
{
    for (const Kind kind : kKinds) {
        for (const QVariant &result : {QVariant(-20), QVariant(QVariantList())}) {
            Rig rig(kind);
            rig.server.busyPolls = kForever;
            rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
                if (isFor(request, "OPEN"))
                    reply["RES"] = result;
                return Replies{reply};
            };
            rig.open();
            const int told = result.canConvert<int>() ? result.toInt() : -1;
            QTRY_COMPARE(rig.events.last(), QStringLiteral("complete %1").arg(told));
            QCOMPARE(rig.events.mid(rig.events.size() - 3, 2), QStringList({"idle", "complete 0"}));
        }
    }
}

void tst_DataManagers::repliesOfAStoppedRun_data()
{
    addColumns<Kind, bool>({"kind", "opened"});
    addRow("standard, opened", Kind::Standard, true);
    addRow("standard, nothing answered", Kind::Standard, false);
    addRow("lite, opened", Kind::Lite, true);
    addRow("lite, nothing answered", Kind::Lite, false);
}

/// A server stalls, with "OPEN" answered or not, until the user has stopped and started again. Its
/// answer to the first read, a zero, is not the new run's, in which the core still waits.
void tst_DataManagers::repliesOfAStoppedRun()
{
    QFETCH(const Kind, kind);
    QFETCH(const bool, opened);
    Rig rig(kind);
    bool isStalled = true;
    int opens = 0;
    Replies stalled;
    rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
        opens += isFor(request, "OPEN");
        const bool isRegister = reply.contains("DATA") && !reply.contains("WINDOW");
        if (isRegister)
            reply["DATA"] = QBitArray(rig.rowBits, opens > 1); // a zero for the first run
        if (!isStalled || (isFor(request, "OPEN") && opened && opens == 1))
            return Replies{reply};
        stalled += reply;
        return Replies{};
    };
    rig.open();
    QTRY_VERIFY(rig.sent(rig.firstRead()) > 0);
    rig.manager->stop();
    rig.open();
    QTRY_VERIFY(rig.server.log.filter(rig.firstRead()).size() > 1 && opens == 2);
    QTest::qWait(20); // the ids of the first run are all in use again
    isStalled = false;
    for (const Wire::Packet &reply : std::exchange(stalled, {}))
        rig.server.send(reply);
    QTRY_VERIFY(rig.lite ? rig.state() == CaptureState::Polling : rig.sent("READ_START_REG") > 20);
    QCOMPARE(rig.sent("READ_RAM"), 0);
    rig.server.answer = nullptr;
    QTRY_VERIFY(rig.isOver());
    QCOMPARE(rig.windows, Windows{rig.stored()});
    QVERIFY(rig.manager->report() == RunReport());
}

/// Sections that change places, and the first one comes twice, one later; it has more bits than
/// asked for.
void tst_DataManagers::sectionsOutOfOrder()
{
    for (const Kind kind : kKinds) {
        for (const bool isDoubled : {false, true}) {
            Rig rig(kind);
            Wire::Packet first;
            rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
                if (!isFor(request, "READ_RAM"))
                    return Replies{reply};
                if (request["SECTION"] == 0) {
                    QBitArray data = reply["DATA"].toBitArray();
                    data.resize(data.size() + 1000);
                    first = reply;
                    first["DATA"] = data;
                    return isDoubled ? Replies{first} : Replies{};
                }
                return isDoubled ? Replies{first, reply} : Replies{reply, first};
            };
            rig.open();
            QTRY_VERIFY(rig.isOver());
            QCOMPARE(rig.windows, Windows{rig.stored()});
        }
    }
}

void tst_DataManagers::sectionsThatAreNone_data()
{
    addColumns<QString, QVariant, bool>({"key", "value", "counts"}); // no value removes the key
    addRow("window beyond", "WINDOW", QVariant(1), false);
    addRow("negative window", "WINDOW", QVariant(-1), false);
    addRow("no window", "WINDOW", QVariant(), false);
    addRow("window is no number", "WINDOW", QVariant("x"), false);
    addRow("count too small", "SECTION_COUNT", QVariant(1), true);
    addRow("no count", "SECTION_COUNT", QVariant(), true);
    addRow("no data", "DATA", QVariant(), true);
    addRow("data is no bits", "DATA", QVariant("1111"), true);
    addRow("less than the filling", "DATA", QVariant(QBitArray(20)), true);
    addRow("one bit short", "DATA", QVariant(QBitArray(384)), true);
}

/// A reply that counts makes its window be handed out empty. Another one is like a lost one: the
/// run waits for the user, and the window is named at the end.
void tst_DataManagers::sectionsThatAreNone()
{
    QFETCH(const QString, key);
    QFETCH(const QVariant, value);
    QFETCH(const bool, counts);
    for (const Kind kind : kKinds) {
        Rig rig(kind);
        rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
            if (!isFor(request, "READ_RAM") || request["SECTION"] != 0)
                return Replies{reply};
            reply[key] = value;
            if (!value.isValid())
                reply.remove(key);
            return Replies{reply};
        };
        rig.open();
        if (!counts) {
            QTRY_COMPARE(rig.events.last(), QStringLiteral("section"));
            QTest::qWait(50);
            QCOMPARE(rig.state(), CaptureState::Reading);
            rig.manager->stop();
        }
        QTRY_VERIFY(rig.isOver());
        QCOMPARE(rig.windows.size(), counts ? 1 : 0);
        QVERIFY(rig.windows.value(0).isEmpty());
        const RunReport::Window window{rig.lite ? 4 : 0, 0};
        QCOMPARE(rig.manager->report().missing.contains(window), !counts);
    }
}

void tst_DataManagers::answersOfRegisters_data()
{
    // What the run does: goes on waiting, reads, or reads and says that it may be wrong.
    addColumns<Kind, QVariant, QString>({"kind", "data", "what"});
    addRow("standard, nothing", Kind::Standard, QVariant(), "waits");
    addRow("standard, no bits", Kind::Standard, QVariant(QBitArray()), "waits");
    addRow("standard, number", Kind::Standard, QVariant(0), "waits");
    addRow("standard, short", Kind::Standard, QVariant(QBitArray(15)), "waits");
    addRow("standard, long", Kind::Standard, QVariant(QBitArray(70'000)), "reads");
    addRow("standard, not zero", Kind::Standard, QVariant(QBitArray(70'000, true)), "waits");
    addRow("lite, nothing", Kind::Lite, QVariant(), "doubts");
    addRow("lite, no bits", Kind::Lite, QVariant(QBitArray()), "doubts");
    addRow("lite, number", Kind::Lite, QVariant(0), "waits");
    addRow("lite, short", Kind::Lite, QVariant(QBitArray(2)), "waits");
    addRow("lite, zero", Kind::Lite, QVariant(QBitArray(3)), "reads");
}

void tst_DataManagers::answersOfRegisters()
{
    QFETCH(const Kind, kind);
    QFETCH(const QVariant, data);
    QFETCH(const QString, what);
    for (const char *operation : {"OP_READ_CAPTURE_INIT", "READ_START_REG"}) {
        Rig rig(kind);
        rig.server.busyPolls = kForever;
        rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
            if (isFor(request, operation))
                reply["DATA"] = data;
            if (!reply["DATA"].isValid())
                reply.remove("DATA");
            return Replies{reply};
        };
        if (kind == Kind::Standard && !isFor({{"CMD", "READ_START_REG"}}, operation))
            continue;
        rig.open();
        if (what == u"waits") {
            QTRY_VERIFY(rig.sent(operation) > 0);
            QTest::qWait(50);
            QVERIFY(rig.sent("READ_RAM") == 0 && !rig.isOver());
            continue;
        }
        QTRY_VERIFY(rig.isOver());
        QCOMPARE(rig.windows, Windows{rig.stored()});
        QCOMPARE(!rig.manager->report().doubtful.isEmpty(), what == u"doubts");
    }
}

/// A zero that no read of this run was for, and the read's own answer after it: before the samples
/// are handed out, they are not; afterwards they are named.
void tst_DataManagers::contradiction()
{
    for (const Kind kind : kKinds) {
        for (const bool isLate : {false, true}) {
            Rig rig(kind);
            Wire::Packet answer;
            rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
                if (!isFor(request, rig.firstRead()) || !answer.isEmpty())
                    return Replies{reply};
                Wire::Packet zero = answer = reply;
                zero["DATA"] = QBitArray(rig.rowBits);
                answer["DATA"] = QBitArray(rig.rowBits, true);
                return isLate ? Replies{zero} : Replies{zero, answer};
            };
            rig.open();
            QTRY_VERIFY(!rig.windows.isEmpty());
            if (isLate)
                rig.server.send(answer);
            QTRY_VERIFY(rig.isOver());
            QCOMPARE(rig.windows.first().isEmpty(), !isLate);
            if (isLate)
                QTRY_COMPARE(rig.manager->report().doubtful.size(), 1);
        }
    }
}

/// Silent first, then dead; the run waits for the user all the same.
void tst_DataManagers::serverThatIsGone()
{
    using Server = RunReport::Server;
    for (const Kind kind : kKinds) {
        Rig rig(kind);
        bool isSilent = true;
        rig.server.answer = [&](const Wire::Packet &, const Wire::Packet &reply) {
            return isSilent ? Replies{} : Replies{reply};
        };
        rig.server.busyPolls = kForever;
        rig.open();
        QTRY_COMPARE_WITH_TIMEOUT(rig.manager->report().server, Server::Silent, 8000);
        QVERIFY(!rig.manager->report().text().isEmpty());
        isSilent = false;
        QTRY_COMPARE_WITH_TIMEOUT(rig.manager->report().server, Server::Answers, 8000);
        rig.server.drop();
        QTRY_COMPARE(rig.manager->report().server, Server::Gone);
        QVERIFY(!rig.isOver());
        rig.manager->stop();
        QVERIFY(rig.isOver());
    }
}

void tst_DataManagers::autoRuns()
{
    for (const Kind kind : kKinds) {
        Rig rig(kind, 32);
        if (rig.standard)
            rig.standard->cores()[0]->dynamic = 1;
        QList<int> rounds;
        rig.onEvent = [&](const QString &event) {
            if (event.startsWith(u"ram"))
                rounds += rig.manager->autorun();
        };
        rig.manager->setAutorun(0);
        rig.start();
        QTRY_VERIFY(rounds.size() >= 3);
        QCOMPARE(rounds.first(3), (QList<int>{1, 2, 3}));
        QCOMPARE(rig.sent("CLOSE"), 0);
        rig.manager->stop();
        QCOMPARE(rig.manager->autorun(), -1);
        QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
        if (rig.standard) { // the settings go out in every round, the truth table once
            QVERIFY(rig.sent("WRITE_REGISTOR 010010000000000100001") >= 3);
            QCOMPARE(rig.sent("WRITE_REGISTOR 010011010101100000000"), 1);
        }
    }
}

/// Programmed in the order asked for, polled in the order of the description. A section of the
/// first window is lost, and the run ends nonetheless.
void tst_DataManagers::coresAndWindows()
{
    Rig rig(Kind::Standard);
    CoreList cores;
    cores.push_back(standardCore(9, 200, 3)); // one section of 128 rows, stride 1024 / 4
    cores.push_back(standardCore(5, 32));     // not started
    cores.push_back(standardCore(7, 300));    // two sections
    rig.standard->setCores(std::move(cores));
    rig.server.answer = [](const Wire::Packet &request, const Wire::Packet &reply) {
        const bool isFirst =
            isFor(request, "READ_RAM") && request["WINDOW"] == 0 && request["SECTION_COUNT"] == 1;
        return isFirst ? Replies{} : Replies{reply};
    };
    QStringList progress;
    connect(rig.standard, &CaptureManager::sectionRead, this,
            [&](int core, int window, int read, int all) {
                progress +=
                    QStringLiteral("%1/%2 %3 of %4").arg(core).arg(window).arg(read).arg(all);
            });
    rig.standard->start({2, 0});
    QCOMPARE(rig.standard->activeCores().size(), 2);
    QTRY_VERIFY(rig.isOver());
    QCOMPARE(rig.events.filter("ram"), QStringList({"ram 9 1", "ram 9 2", "ram 7 0"}));
    QCOMPARE(progress, QStringList({"9/1 1 of 1", "9/2 1 of 1", "7/0 1 of 2", "7/0 2 of 2"}));
    QCOMPARE(rig.manager->report().text(), "Not delivered: core 9 window 0.");
    QStringList addresses;
    for (const QString &line : rig.server.logged("BRUST_READ"))
        addresses += QString::number(line.mid(16, 16).toInt(nullptr, 2)) + line.mid(48);
    QCOMPARE(addresses, QStringList({"0 0 0 1", "256 1 0 1", "512 2 0 1", "0 0 0 2", "128 0 1 2"}));
    const QString select = QStringLiteral("WRITE_REGISTOR 1");
    QCOMPARE(rig.server.logged(select),
             QStringList({select + "0111", select + "1001", select + "1001", select + "0111"}));
    QCOMPARE(rig.windows.last(), rig.stored());
    QCOMPARE(rig.standard->cores()[1]->active, 0);
}

void tst_DataManagers::forceTrigger()
{
    Rig rig(Kind::Standard);
    rig.isImpatient = false;
    CoreList cores;
    cores.push_back(standardCore(1, 256));
    cores.push_back(standardCore(2, 32));
    rig.standard->setCores(std::move(cores));
    rig.server.busyPolls = kForever;
    rig.standard->start({0, 1});
    rig.standard->checkState();
    QTRY_COMPARE(rig.sent("READ_START_REG"), 1);
    rig.server.log.clear();
    rig.standard->forceTrigger();
    QCOMPARE(rig.state(), CaptureState::Armed);
    rig.standard->checkState();
    QTRY_COMPARE(rig.sent("READ_START_REG"), 1);
    const QString force = kStart + "0000000000000011";
    // Forcing leaves the last core selected, while the first one is still to be polled and read.
    QCOMPARE(rig.server.log.first(5),
             QStringList({"WRITE_REGISTOR 10001", force, "WRITE_REGISTOR 10010", force,
                          "WRITE_REGISTOR 10001"}));
    rig.server.busyPolls = 0;
    rig.onEvent = [&](const QString &event) {
        rig.server.log.clear();
        if (event == u"section" && rig.state() == CaptureState::Reading)
            rig.standard->forceTrigger(); // too late to ask
    };
    QTRY_VERIFY(rig.isOver());
    QCOMPARE(rig.sent("WRITE_START_REG 01001"), 0);
}

/// Whatever a description says, a run asks for sections one by one and ends on stop.
void tst_DataManagers::numbersOfADescription()
{
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    const int rows[][4] = {{0, kMost, 1024, 0}, {kLeast, kMost, 1024, 0}, {32, kLeast, 1024, 0},
                           {32, 2, kLeast, 2},  {32, kMost, 1024, 3},     {kMost, 2, kMost, 3}};
    for (const auto &[amount, windows, depth, reads] : rows) {
        Rig rig(Kind::Standard, amount);
        rig.standard->cores()[0]->window_num = windows;
        rig.standard->cores()[0]->storage_depth = depth;
        rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
            if (isFor(request, reads > 0 ? "READ_RAM" : "READ_START_REG") &&
                rig.sent("READ_RAM") == reads)
                QTimer::singleShot(50, rig.manager.get(), &CaptureManager::stop);
            return Replies{reply};
        };
        rig.start();
        QTRY_VERIFY(rig.isOver());
        QVERIFY(rig.events.contains("3"));
    }
    const int sizes[][3] = {{1, 1, 4}, {100, 1, 301}, {128, 1, 385}, {129, 2, 385}};
    for (const auto &[amount, reads, size] : sizes) {
        Rig rig(Kind::Lite, amount);
        rig.start();
        QTRY_VERIFY(rig.isOver());
        QCOMPARE(rig.sent(qPrintable(QStringLiteral("READ_RAM %1 ").arg(size))), reads);
    }
}

void tst_DataManagers::delays()
{
    for (const int delay : {-1, 60'000}) {
        Rig rig(Kind::Lite, 8);
        rig.lite->start(delay);
        QTest::qWait(50);
        QVERIFY(rig.state() == CaptureState::Started && rig.server.log.isEmpty());
        rig.lite->onDelay(); // Force Trigger
        rig.lite->onDelay(); // and once more, before the answer
        QTRY_VERIFY(rig.isOver());
        QVERIFY(rig.sent("READ_RAM") == 1 && rig.windows.size() == 1);
    }
    // The timer fires once; a lost answer is asked for again.
    Rig rig(Kind::Lite, 8);
    rig.server.answer = [&](const Wire::Packet &, const Wire::Packet &reply) {
        return rig.sent("OP_READ_CAPTURE_INIT") == 1 ? Replies{} : Replies{reply};
    };
    rig.lite->start(20);
    QTRY_COMPARE(rig.sent("OP_READ_CAPTURE_INIT"), 1);
    QTest::qWait(100);
    QCOMPARE(rig.sent("OP_READ_CAPTURE_INIT"), 1);
    QTRY_VERIFY(rig.isOver());
}

/// While a core takes its time, every turn of the event loop may poll, and still timers fire and
/// the packets on their way keep within bounds.
void tst_DataManagers::longWait()
{
    Rig rig(Kind::Lite, 8);
    rig.server.busyPolls = kForever;
    rig.start();
    int fired = 0;
    QTimer user;
    connect(&user, &QTimer::timeout, this, [&] { ++fired; });
    user.start(1);
    QTRY_VERIFY(rig.sent("READ_START_REG") > 2000);
    QVERIFY(fired > 10);
    // A server that goes silent is asked some more, and then no more for a while.
    rig.server.answer = [](const Wire::Packet &, const Wire::Packet &) { return Replies{}; };
    QTest::qWait(100);
    const qsizetype polls = rig.sent("READ_START_REG");
    QTest::qWait(500);
    QCOMPARE(rig.sent("READ_START_REG"), polls);
}

/// A table of 4,096 words goes out in portions, and all that is asked meanwhile finds its place: a
/// poll and a forced trigger behind it, a stop at once.
void tst_DataManagers::truthTableOnItsWay()
{
    Rig rig(Kind::Standard, 32);
    CoreConfig &core = *rig.standard->cores()[0];
    core.dynamic = 1;
    QStringList units;
    for (size_t i = 0; i < 12; ++i) {
        core.triggers[i]->signals = {{QStringLiteral("s"), {}, {}}};
        core.matchUnits[i]->enabled = true;
        core.matchUnits[i]->trigger = core.triggers[i].get();
        units += QStringLiteral("M%1").arg(i);
    }
    core.expressions = QStringList{units.join(u'&')};
    core.expressionEnabled = {true};
    const qsizetype words = rig.standard->startWords({0}).size() - 3; // arm, and those of a poll

    rig.open();
    rig.standard->checkState();
    rig.manager->stop();
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    QCOMPARE(rig.server.log.at(rig.server.log.size() - 2), kStart + QString(16, u'0'));
    QVERIFY(words > 4096 && rig.server.log.size() < 1000);
    QCOMPARE(rig.sent("READ_START_REG"), 0);

    rig.server.log.clear();
    rig.start();
    rig.standard->forceTrigger();
    rig.standard->checkState();
    QTRY_VERIFY(rig.isOver() && rig.events.count("ram 0 0") == 1);
    QCOMPARE(rig.server.log.filter("WRITE_REGISTOR 0").size(), words - 1); // the other one selects
    QCOMPARE(rig.server.log.mid(words, 3),
             QStringList({kStart + "0000000000000001", "WRITE_REGISTOR 10000",
                          kStart + "0000000000000011"}));
    QCOMPARE(rig.windows, Windows{rig.stored(1, 32)});
}

/// A server with answers that take their time never has more to answer than the bounds allow, and
/// all is asked for in order; a poll and a section without an answer hold nothing up for good.
void tst_DataManagers::boundedPace()
{
    for (const Kind kind : kKinds) {
        Rig rig(kind, 6 * CaptureManager::kSectionRows);
        rig.isImpatient = false;
        rig.manager->setPace(
            {.sectionPause = 0, .sectionsInFlight = 2, .pollInterval = 5, .pollsInFlight = 1});
        rig.server.busyPolls = 6;
        QMap<bool, int> waiting; // by whether they are sections
        QMap<bool, int> most;
        rig.server.answer = [&](const Wire::Packet &request, const Wire::Packet &reply) {
            const bool isSection = isFor(request, "READ_RAM");
            most[isSection] = std::max(most[isSection], ++waiting[isSection]);
            const bool isLost =
                isSection ? rig.sent("READ_RAM") == 3
                          : isFor(request, "READ_START_REG") && rig.sent("READ_START_REG") == 2;
            // The next one may come as soon as this one does not count any more.
            const int delay = isLost ? CapturePace::kAnswerPatience - 1000 : 3;
            QTimer::singleShot(delay, &rig.context, [&, isSection, isLost, reply] {
                --waiting[isSection];
                if (!isLost)
                    rig.server.send(reply);
            });
            return Replies{};
        };
        rig.start();
        QTRY_COMPARE_WITH_TIMEOUT(rig.sent("READ_RAM"), 6, 12'000);
        QVERIFY(rig.sent("READ_START_REG") >= 7);
        QCOMPARE(most, (QMap<bool, int>{{false, 1}, {true, 2}}));
        QStringList sections;
        for (const QString &line : rig.server.logged("READ_RAM"))
            sections += line.section(u' ', 3, 3);
        QCOMPARE(sections, QStringList({"0", "1", "2", "3", "4", "5"}));
        QTRY_COMPARE(rig.events.count("section"), 5);
        rig.manager->stop();
        QCOMPARE(rig.manager->report().missing.size(), 1);
    }
}

/// More answers are lost than polls may wait, some at first and then every second one: polling goes
/// on nonetheless. The first ones come after all, while the memory is read under the same ids.
void tst_DataManagers::lostPolls()
{
    Rig rig(Kind::Lite);
    rig.server.busyPolls = 300;
    int lost = 0;
    uint highest = 0;
    Replies kept;
    rig.server.answer = [&](const Wire::Packet &request, Wire::Packet reply) {
        highest = std::max(highest, request["data_request_id"].toUInt());
        if (isFor(request, "READ_RAM"))
            return std::exchange(kept, {}) + Replies{reply};
        if (!isFor(request, "READ_START_REG") || (++lost > 100 && lost % 2 == 0))
            return Replies{reply};
        reply["DATA"] = QBitArray(3);
        if (kept.size() < 64)
            kept += reply;
        return Replies{};
    };
    rig.start();
    QTRY_VERIFY_WITH_TIMEOUT(rig.isOver(), 60'000);
    QCOMPARE(rig.windows, Windows{rig.stored()});
    QVERIFY(highest < 80); // what is given up leaves its id to others
}

void tst_DataManagers::load()
{
    QTemporaryDir directory;
    KeoStandardDataManager manager;
    QString id;
    const auto loads = [&](const QString &name, const QByteArray &cores) {
        const QString path = directory.filePath(name);
        if (!cores.isNull())
            putFile(path, "<KEO_CONFIG><Version>3.0</Version>" + cores +
                              "<KEO_ID>1A2B</KEO_ID></KEO_CONFIG>");
        return manager.load(path, id);
    };
    const QByteArray core = "<KoCore index=\"2\"/>";
    QVERIFY(loads("a.zeo", core) && manager.isZeo() && manager.coreByIndex(2));
    QCOMPARE(id, QStringLiteral("1A2B"));
    QVERIFY(!loads("none.keo", {}) && manager.isZeo() && manager.cores().size() == 1);
    QVERIFY(loads("b.keo", core) && !manager.isZeo());
    QVERIFY(loads("c.ZEO", core) && !manager.isZeo()); // says nothing about the form
    QVERIFY(!loads("d.zeo", "") && manager.isZeo() && manager.cores().empty());
}

void tst_DataManagers::timeout()
{
    Rig rig(Kind::Standard);
    QStringList shown;
    rig.standard->setErrorBox([&](const QString &title, const QString &text) {
        shown += {title, text};
        QCOMPARE(rig.state(), CaptureState::Idle);
    });
    rig.start();
    rig.standard->onTimeout();
    QTRY_COMPARE(rig.server.lastLine(), QStringLiteral("CLOSE"));
    QCOMPARE(rig.sent(qPrintable(kStart + QString(16, u'0'))), 1); // disarmed
    QCOMPARE(shown, QStringList({"Error", "ERROR: No response was reveived from Chainserver, the "
                                          "server probably timed out."}));
}

KEO_TEST_MAIN(tst_DataManagers)
#include "tst_datamanagers.moc"
