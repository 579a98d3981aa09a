#include "fakeproject.h"

#include <base/userfolder.h>
#include <link/jtagsession.h>
#include <shell/analyzer.h>
#include <shell/examplecopy.h>
#include <shell/startup.h>
#include <support/files.h>
#include <support/testdesign.h>
#include <support/widgettest.h>
#include <widgets/elidedlabel.h>

#include <QLocalSocket>
#include <QLoggingCategory>
#include <QProcess>
#include <QPushButton>
#include <QSplashScreen>
#include <QTabWidget>

using namespace KEO;

Q_DECLARE_METATYPE(StartupOptions)

/// From the command line to the exit code, with stand-ins and with the simulated servers.
class tst_Startup : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void options_data();
    void options();
    void fails();
    void runs();
    void opensByHand();
    void example();
    void program();

private:
    QTemporaryDir m_dir;
    TestDesign m_design;
};

namespace {

/// A directory with servers.
struct BurnerDir : QTemporaryDir
{
    /// A stand-in that starts, prints and never listens.
    void addSilent(const QString &executable) { add(executable, STANDIN_SERVER); }
    void addSimulated(const QString &executable)
    {
        add(executable, QStringLiteral(KEO_BURNER_DIR "/") + executable);
    }
    void add(const QString &executable, const QString &program)
    {
        if (!QFile::copy(program, filePath(executable)))
            qFatal("cannot copy %s", qPrintable(program));
    }
};

bool listens(const QString &serverName)
{
    QLocalSocket socket;
    socket.connectToServer(serverName);
    return socket.waitForConnected(200);
}

Analyzer *shownWindow()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *const window = qobject_cast<Analyzer *>(widget);
        if (window && window->isVisible())
            return window;
    }
    return nullptr;
}

bool splashShows()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    return std::any_of(widgets.begin(), widgets.end(), [](const QWidget *widget) {
        return qobject_cast<const QSplashScreen *>(widget) && widget->isVisible();
    });
}

const StartupOptions kDevice{"", "", "KR", "KR-A", ""};

} // namespace

void tst_Startup::initTestCase()
{
    m_design.write(m_dir.path());
    qputenv("SIGNALSCOPE_BOARD", m_dir.filePath("board.json").toLocal8Bit());
}

void tst_Startup::cleanup()
{
    JtagSession::instance()->disconnectAll();
}

void tst_Startup::options_data()
{
    const auto row = addColumns<QString, StartupOptions, bool>({"line", "expected", "debug"});

    row("everything, in any order", "-fs d.fs -device KR-C -keo a.keo -family KR -dir /waves",
        {"a.keo", "/waves", "KR", "KR-C", "d.fs"}, false);
    row("the last mention counts", "-keo a.keo -keo b.keo", {"b.keo", "", "", "", ""}, false);
    row("nothing behind the last", "-device KR-C -family", {"", "", "", "KR-C", ""}, false);
    row("no value swallows nothing", "-keo -family KR", {"-family", "", "KR", "", ""}, false);
    StartupOptions paced{"-pace", "", "KR", "KR-C", ""};
    paced.sectionPause = 5;
    row("pause in bounds, and others passed over",
        "-keo -pace 5 -family KR -device KR-C -pace 10001 -pace -1 -pace slow", paced, false);
    StartupOptions transcribed{"", "", "KR", "", ""};
    transcribed.transcript = "t";
    row("transcript", "-transcript t -family KR", transcribed, false);
    StartupOptions byHand{"a.keo", "", "", "", ""};
    byHand.openFile = "b.keo";
    row("a file of a file manager", "-open b.keo -keo a.keo", byHand, false);
    row("debug as a value", "-keo -debug", {"-debug", "", "", "", ""}, true);
    row("unknown words are passed over", "x -Keo a.keo -FS b --family KR -debug -device KR-C y",
        {"", "", "", "KR-C", ""}, true);
}

void tst_Startup::options()
{
    QFETCH(QString, line);
    // The program's name never counts, whatever it is.
    const QStringList words = QStringList{"-keo"} + line.split(' ', Qt::SkipEmptyParts);
    QTEST(parseStartupOptions(words), "expected");
    QTEST(wantsDebugMessages(words), "debug");
}

void tst_Startup::fails()
{
    BoxWatcher boxes;
    boxes.whileOpen = [](const QMessageBox &box) { QVERIFY(!box.parentWidget()); };
    BurnerDir burner;
    burner.addSilent("chainserver");
    for (const StartupOptions &options :
         {StartupOptions{"", "", "KR", "", ""}, StartupOptions{"a.keo", "", "", "KR-A", ""}}) {
        QCOMPARE(Startup(options, {.serverDirectory = burner.path()}).run(), 1);
        QCOMPARE(std::exchange(boxes.seen, {}), QStringList("Error: Can not set device."));
    }
    StartupOptions unwritable = kDevice;
    unwritable.transcript = m_dir.path();
    QCOMPARE(Startup(unwritable, {.serverDirectory = burner.path()}).run(), 3);
    QVERIFY(
        std::exchange(boxes.seen, {}).value(0).startsWith("Error: The transcript " + m_dir.path()));
    QVERIFY(!QFile::exists(burner.filePath("chainserver.args")));

    bool covered = true;
    boxes.whileOpen = [&](const QMessageBox &) { covered = splashShows(); };
    QCOMPARE(Startup(kDevice, {.serverDirectory = QTemporaryDir().path()}).run(), 1);
    QCOMPARE(std::exchange(boxes.seen, {}), QStringList("Error: Can not launch JTAG server."));
    QVERIFY(!covered);
    QCOMPARE(Startup(kDevice, {.serverDirectory = burner.path()}).run(), 2); // that never listens
    QCOMPARE(boxes.seen, QStringList("Error: Can not connect to JTAG server."));
    QVERIFY(!shownWindow());
}

// Two servers of three answer; the file opens in a window that shows already.
void tst_Startup::runs()
{
    BurnerDir burner;
    burner.addSimulated("chainserver");
    burner.addSilent("chainserver_lpt");
    burner.addSimulated("chainserver_lk7");
    ProjectLog log;
    QStringList cables;
    bool wasShown = false;
    QTimer poll;
    connect(&poll, &QTimer::timeout, this, [&] {
        Analyzer *const window = shownWindow();
        if (!window || log.calls.isEmpty())
            return;
        wasShown = window->isMaximized() && !splashShows() && window->startDir() == "/waves";
        for (const auto &cable : JtagSession::instance()->availableCables())
            cables.append(cable.first);
        poll.stop();
        window->close();
    });
    poll.start(20);
    const StartupOptions options{m_dir.filePath("design.keo"), "/waves", "KR", "KR-A", "a.fs"};
    QCOMPARE(
        Startup(options, {.serverDirectory = burner.path(), .projects = fakeProjects(log)}).run(),
        0);
    QVERIFY(wasShown);
    QVERIFY(!QLoggingCategory::defaultCategory()->isDebugEnabled()); // nobody asked for -debug
    QCOMPARE(cables, (QStringList{"Tarno USB Cable(FT2CH)", "LK7"}));
    QCOMPARE(log.take(), (QStringList{"standard: setup", "standard: open " + options.keoFile,
                                      "standard: device KR/KR-A/a.fs", "standard: close"}));
    QVERIFY(!listens("keo1"));
    QVERIFY(!listens("keolk7"));
}

// From a file manager a file comes without its device: that of the last start counts, if any.
void tst_Startup::opensByHand()
{
    BurnerDir burner;
    burner.addSimulated("chainserver");
    const auto statusOf = [&](const StartupOptions &options) {
        QString told;
        QTimer poll;
        connect(&poll, &QTimer::timeout, this, [&] {
            Analyzer *const window = shownWindow();
            const QString title = window ? window->windowTitle() : QString();
            if (!title.startsWith("design.keo"))
                return;
            poll.stop();
            for (const char *part : {"toldStatus", "deviceStatus"})
                told += window->findChild<ElidedLabel *>(part)->text() + '|';
            window->close();
        });
        poll.start(20);
        const Startup::Surroundings surroundings{.serverDirectory = burner.path()};
        return Startup(options, surroundings).run() == 0 ? told : QString();
    };
    QFile::remove(userDataFolder() + "/last-device");
    StartupOptions byHand;
    byHand.openFile = m_dir.filePath("design.keo");
    const QString unknown = statusOf(byHand);
    QVERIFY2(unknown.contains("No device is set"), qPrintable(unknown));
    QVERIFY2(!unknown.contains("KR-A"), qPrintable(unknown));
    StartupOptions named = kDevice;
    named.keoFile = byHand.openFile;
    QVERIFY(statusOf(named).contains("|KR-A on "));
    const QString known = statusOf(byHand);
    QVERIFY2(known.contains("of the last start, KR-A.|KR-A on "), qPrintable(known));
}

// Without a design one key opens a copy of the example, which can be captured from at once and
// keeps what its owner has saved in it. Servers that play no example, or another board, offer none.
void tst_Startup::example()
{
    QTemporaryDir home;
    const QByteArray oldHome = qgetenv("HOME");
    qputenv("HOME", home.path().toLocal8Bit());
    const QByteArray board = qgetenv("SIGNALSCOPE_BOARD");
    QString copy;
    int tabs = 0;
    const auto run = [&](const QString &servers, bool wants) {
        bool isOffered = false;
        QTimer poll;
        connect(&poll, &QTimer::timeout, this, [&] {
            Analyzer *const window = shownWindow();
            auto *const button =
                window ? window->findChild<QPushButton *>("exampleButton") : nullptr;
            if (!button)
                return;
            poll.stop();
            isOffered = button->isVisible();
            if (isOffered && wants) {
                QTRY_COMPARE(QApplication::focusWidget(), button);
                QTest::keyClick(button, Qt::Key_Return);
                QTRY_VERIFY(window->windowTitle().startsWith("uart_fifo"));
                copy = window->startDir();
                QTest::keyClick(window, Qt::Key_F1);
                auto *const pages = window->findChild<QTabWidget *>("tabWidget");
                QTRY_COMPARE_WITH_TIMEOUT(pages->count(), 2, 20'000);
                tabs = pages->count();
            }
            window->close();
        });
        poll.start(20);
        const Startup::Surroundings surroundings{.serverDirectory = servers};
        return Startup(kDevice, surroundings).run() == 0 && isOffered;
    };
    BoxWatcher boxes(QMessageBox::Yes);
    const QString stage = QStringLiteral(KEO_BURNER_DIR);
    QVERIFY(!run(stage, false)); // the board of the environment counts
    qunsetenv("SIGNALSCOPE_BOARD");
    BurnerDir bare;
    bare.addSimulated("chainserver");
    QVERIFY(!run(bare.path(), false));

    QVERIFY(run(stage, true));
    QCOMPARE(tabs, 2);
    QCOMPARE(copy, home.filePath("Documents/Signal Scope/uart_fifo.keo"));
    const QString example = KEO_SOURCE_DIR "/examples/uart_fifo/uart_fifo.keo";
    QByteArray text = contentOf(example);
    QCOMPARE(contentOf(copy), text);
    putFile(copy, text.replace("trigger_pos=\"128\"", "trigger_pos=\"64\""));
    QCOMPARE(*copyOfExample(example), copy);
    QCOMPARE(contentOf(copy), text);
    putFile(copy, text.replace("rx_valid", "rx_ready")); // as an older version might have it
    QCOMPARE(*copyOfExample(example), home.filePath("Documents/Signal Scope/uart_fifo-2.keo"));
    QCOMPARE(contentOf(copy), text);
    qputenv("HOME", oldHome);
    qputenv("SIGNALSCOPE_BOARD", board);
}

// The program as it is installed, and its servers beside it, which don't outlive it.
void tst_Startup::program()
{
    QProcess program;
    program.start(KEO_BIN_DIR "/signalscope",
                  {"-family", "KR", "-device", "KR-A", "-debug", "-keo", "/none/such.txt"});
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(listens("keo1") && listens("keo") && listens("keolk7"), 20'000);
    // What the debug dock handles reaches standard error, reasons for silence among it.
    QByteArray messages;
    QTRY_VERIFY_WITH_TIMEOUT(
        (messages += program.readAllStandardError()).contains("Core descriptions end in .keo"),
        20'000);
    QCOMPARE(program.state(), QProcess::Running);
    program.terminate();
    QVERIFY(program.waitForFinished());
    QTRY_VERIFY_WITH_TIMEOUT(!listens("keo1") && !listens("keo") && !listens("keolk7"), 20'000);
}

KEO_WIDGET_TEST_MAIN(tst_Startup)
#include "tst_startup.moc"
