// Faults on any reply at any step, as a seed says, between real cable servers with the simulated
// board and the data managers of both kinds. One rule: what a manager hands out is what the core
// captured in that run, or the report names it; and the next run is right.
//
// SIGNALSCOPE_FAULT_SEEDS=1000 capture_tests tst_faultserver     runs so many seeds,
// SIGNALSCOPE_FAULT_SEED=17 capture_tests tst_faultserver        begins with that one.

#include "faultproxy.h"

#include <capture/litedatamanager.h>
#include <capture/standarddatamanager.h>
#include <link/jtagsession.h>

#include <support/files.h>
#include <support/testdesign.h>
#include <support/testmain.h>

#include <QDir>
#include <QProcess>
#include <QTimer>

using namespace KEO;

namespace {

constexpr int kPollInterval = 10; // ms; a standard core's 500 would make the test slow

/// A kind of core on a cable of its own.
struct Setup
{
    const char *server;
    const char *socket;
    bool lite;
    int cores;
    int windows;
    int amount;

    bool canAuto() const { return cores == 1 && windows == 1; }
    int leadingBits() const { return lite ? 0 : 32; }
};

constexpr Setup kSetups[] = {{"chainserver", "keo1", false, 1, 1, 256},
                             {"chainserver_lpt", "keo", false, 2, 2, 128},
                             {"chainserver_lk7", "keolk7", true, 1, 1, 256}};

/// What a manager has handed out.
struct Shown
{
    qsizetype reading = 0; ///< of its run
    RunReport::Window place;
    QList<QBitArray> sections; ///< none if the user gets the box "No data"
};

/// What a user would know of one run.
struct RunLog
{
    QList<Shown> shown;
    QList<RunReport::Window> told; ///< as missing or doubtful
    qsizetype readings = 0;
    int result = 0;
    bool isOver = false;
    bool isStopped = false;
};

/// A data manager behind a proxy, with all that it says written down run by run.
class Rig final
{
public:
    Rig(const Setup &setup, FaultProxy &proxy, const QString &description)
        : m_setup(setup), m_proxy(proxy)
    {
        QString id;
        if (setup.lite) {
            auto lite = std::make_unique<KeoLiteDataManager>();
            lite->load(description, id);
            QObject::connect(lite.get(), &KeoLiteDataManager::readRamComplete, &m_context,
                             [this, raw = lite.get()] {
                                 note({0, 0}, raw->rawCapture());
                             });
            m_manager = std::move(lite);
        } else {
            auto standard = std::make_unique<KeoStandardDataManager>();
            standard->load(description, id);
            QObject::connect(standard.get(), &KeoStandardDataManager::readRamComplete, &m_context,
                             [this, raw = standard.get()](int core, int window) {
                                 note({core, window}, raw->rawWindow(window));
                             });
            QObject::connect(&m_ticks, &QTimer::timeout, standard.get(),
                             &KeoStandardDataManager::checkState);
            m_ticks.start(kPollInterval);
            m_manager = std::move(standard);
        }
        m_manager->setDeviceName("KR-A");
        QObject::connect(m_manager.get(), &CaptureManager::statusChanged, &m_context, [this] {
            if (m_manager->state() == CaptureState::Reading)
                ++m_log.readings;
        });
        QObject::connect(m_manager.get(), &CaptureManager::reportChanged, &m_context, [this] {
            m_log.told += m_manager->report().missing + m_manager->report().doubtful;
        });
        QObject::connect(m_manager.get(), &CaptureManager::triggerComplete, &m_context,
                         [this](int result) {
                             m_log.isOver = true;
                             m_log.result = result;
                         });
    }

    void hurry() { m_manager->setPace(kEagerPace); }
    /// One run, which the user stops after a while.
    RunLog run(int rounds, int time)
    {
        m_log = RunLog();
        JtagSession::instance()->selectCable(m_setup.socket);
        m_manager->openDevice({0});
        m_manager->setAutorun(rounds > 0 ? 0 : -1);
        if (auto *lite = qobject_cast<KeoLiteDataManager *>(m_manager.get()))
            lite->start(0);
        else if (auto *standard = qobject_cast<KeoStandardDataManager *>(m_manager.get()))
            standard->start(m_setup.cores == 2 ? QList{0, 1} : QList{0});
        const auto isOver = [&] {
            return m_log.isOver || (rounds > 0 && m_log.shown.size() >= rounds);
        };
        (void)QTest::qWaitFor(isOver, time);
        if (!m_log.isOver) {
            m_manager->stop();
            m_log.isStopped = true;
        }
        return m_log;
    }
    /// Of the latest run, until now.
    const RunLog &log() const { return m_log; }

    /// What is wrong with a run, or nothing.
    QString flaw(const RunLog &log, const BoardRun &board) const
    {
        for (const Shown &shown : log.shown) {
            const auto &[core, window] = shown.place;
            const QString name = QStringLiteral("core %1 window %2: ").arg(core).arg(window);
            if (shown.sections.isEmpty() || log.told.contains(shown.place))
                continue;
            if (shown.reading < 1 || shown.reading > board.readings.size())
                return name + "nobody read it";
            BoardRun::Reading truth = board.readings[shown.reading - 1];
            if (!truth.isDone)
                return name + "read before it was captured";
            QList<QBitArray> sections;
            for (const auto &[number, data] : truth.windows[window])
                sections.prepend(rowsOf(data));
            if (shown.sections != sections)
                return name + "other samples";
        }
        if (log.isStopped || log.result != 0)
            return {};
        for (int core = 0; core < m_setup.cores; ++core) {
            for (int window = 0; window < m_setup.windows; ++window) {
                const RunReport::Window place{core, window};
                const bool isShown =
                    std::ranges::find(log.shown, place, &Shown::place) != log.shown.end();
                if (!isShown && !log.told.contains(place))
                    return QStringLiteral("core %1 window %2: missing").arg(core).arg(window);
            }
        }
        return {};
    }

private:
    void note(RunReport::Window place, const QList<QBitArray> &sections)
    {
        m_log.shown += Shown{m_log.readings, place, sections};
    }

    QBitArray rowsOf(const QBitArray &data) const
    {
        QBitArray rows(data.size() - m_setup.leadingBits() - 1);
        for (qsizetype i = 0; i < rows.size(); ++i)
            rows.setBit(i, data[i + m_setup.leadingBits()]);
        return rows;
    }

    const Setup &m_setup;
    FaultProxy &m_proxy;
    QObject m_context;
    QTimer m_ticks;
    std::unique_ptr<CaptureManager> m_manager;
    RunLog m_log;
};

int environmentNumber(const char *name, int otherwise)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? number : otherwise;
}

} // namespace

class tst_FaultServer : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void anyFault_data();
    void anyFault();
    void cleanupTestCase();

private:
    QTemporaryDir m_directory;
    std::vector<std::unique_ptr<QProcess>> m_servers;
    std::vector<std::unique_ptr<FaultProxy>> m_proxies;
};

/// One board with the three setups on its cables. A capture takes some polls.
void tst_FaultServer::initTestCase()
{
    QString cables;
    for (const Setup &setup : kSetups) {
        TestDesign design;
        design.lite = setup.lite;
        design.cores = setup.cores;
        design.windows = setup.windows;
        design.amount = setup.amount;
        design.noise = 3;
        const QString folder = m_directory.filePath(setup.socket);
        QVERIFY(QDir().mkpath(folder));
        design.write(folder);
        cables += QStringLiteral("%1\"%2\": {\"chain\": [{\"model\": \"KR-A\", \"description\": "
                                 "\"%2/design.keo\", \"stimulus\": \"%2/design.vcd\"}]}")
                      .arg(cables.isEmpty() ? "" : ", ", setup.socket);
    }
    const QString board =
        putFile(m_directory.filePath("board.json"),
                "{\"samples_per_second\": 4000, \"cables\": {" + cables.toUtf8() + "}}");
    qputenv("SIGNALSCOPE_BOARD", board.toLocal8Bit());
    for (const Setup &setup : kSetups) {
        m_servers.push_back(std::make_unique<QProcess>());
        m_servers.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_servers.back()->start(QStringLiteral(KEO_BURNER_DIR "/") + setup.server, {"-local"});
        QVERIFY(m_servers.back()->waitForStarted());
        m_proxies.push_back(std::make_unique<FaultProxy>(setup.socket));
        QVERIFY(m_proxies.back()->isConnected());
        QVERIFY(
            JtagSession::instance()->connectServer({setup.socket, m_proxies.back()->name()}, 1000));
    }
}

/// Some seeds a row, since the time of a row is limited.
void tst_FaultServer::anyFault_data()
{
    constexpr int kSeedsPerRow = 25;
    addColumns<int, int>({"first", "end"});
    const int first = environmentNumber("SIGNALSCOPE_FAULT_SEED", 1);
    const int end = first + environmentNumber("SIGNALSCOPE_FAULT_SEEDS", 50);
    for (int seed = first; seed < end; seed += kSeedsPerRow)
        addRow(qPrintable(QString::number(seed)), seed, std::min(seed + kSeedsPerRow, end));
}

void tst_FaultServer::anyFault()
{
    QFETCH(const int, first);
    QFETCH(const int, end);
    int shown = 0;
    int empty = 0;
    int told = 0;
    for (int seed = first; seed < end; ++seed) {
        const size_t which = size_t(seed) % std::size(kSetups);
        const Setup &setup = kSetups[which];
        FaultProxy &proxy = *m_proxies[which];
        Rig rig(setup, proxy, m_directory.filePath(setup.socket) + "/design.keo");
        if (seed / std::size(kSetups) % 2 == 1)
            rig.hurry();
        QRandomGenerator user(seed);
        const qsizetype before = proxy.runs.size();
        proxy.play(quint32(seed), user.bounded(3, 12));
        QList<RunLog> logs;
        for (int run = 0; run < 2; ++run) {
            // An impatient user, or one who waits for the samples.
            const int time = user.bounded(2) == 0 ? user.bounded(10, 150) : 400;
            logs += rig.run(setup.canAuto() ? user.bounded(3) : 0, time);
            if (user.bounded(4) == 0)
                QTest::qWait(user.bounded(50));
            logs.last() = rig.log(); // with what was told afterwards
        }
        proxy.playFair();
        const bool drained = QTest::qWaitFor([&] { return proxy.isDrained(); });
        QTest::qWait(10); // and what it has handed on has arrived
        logs.last() = rig.log();
        logs += rig.run(0, 10000);
        const auto arrived = [&] { return proxy.isDrained() && proxy.runs.size() == before + 3; };
        const auto fail = [&](const QString &flaw) {
            return qPrintable(QStringLiteral("seed %1: %2\n%3")
                                  .arg(QString::number(seed), flaw, proxy.played.join(u'\n')));
        };
        QVERIFY2(drained && QTest::qWaitFor(arrived), fail("replies lacking"));
        for (qsizetype run = 0; run < logs.size(); ++run) {
            const QString flaw = rig.flaw(logs[run], proxy.runs[before + run]);
            QVERIFY2(flaw.isEmpty(), fail(QStringLiteral("run %1, %2").arg(run + 1).arg(flaw)));
            for (const Shown &window : logs[run].shown)
                ++(window.sections.isEmpty() ? empty : shown);
            told += int(logs[run].told.size());
        }
        QVERIFY2(!logs.last().isStopped, fail("the next run does not end"));
        QVERIFY2(logs.last().told.isEmpty() && logs.last().result == 0,
                 fail("the next run is not right"));
        const auto isEmpty = [](const Shown &window) { return window.sections.isEmpty(); };
        QVERIFY2(std::ranges::none_of(logs.last().shown, isEmpty), fail("the next run is empty"));
        QCOMPARE(logs.last().shown.size(), setup.cores * setup.windows);
    }
    qInfo("%d windows with samples, %d without, %d named", shown, empty, told);
}

void tst_FaultServer::cleanupTestCase()
{
    JtagSession::instance()->disconnectAll();
    for (const auto &server : m_servers) {
        server->closeWriteChannel();
        server->waitForFinished();
    }
    m_proxies.clear();
}

KEO_TEST_MAIN(tst_FaultServer)
#include "tst_faultserver.moc"
