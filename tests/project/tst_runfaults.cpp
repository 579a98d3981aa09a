// Projects that are closed or deleted, and servers that die or talk nonsense, at every step of a
// run: no crash, no stray tip, and always a way back to Start.

#include "projectwindow.h"

#include <capture/fakeserver.h>

using namespace KEO;

class tst_RunFaults : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void serverFails_data();
    void serverFails();
    void goneWhileReading_data();
    void goneWhileReading();
    void goneInsideABox_data();
    void goneInsideABox();
    void emptyWindows();
};

namespace {

enum class End { Close, DeleteProject, DeleteWindow };

void addEnds(std::initializer_list<End> ends)
{
    QTest::addColumn<End>("end");
    for (const End end : ends) {
        const char *names[] = {"closed", "project deleted", "window deleted"};
        QTest::newRow(names[int(end)]) << end;
    }
}

void bringAbout(End end, ProjectWindow &w)
{
    if (end == End::Close)
        w.project->closeProject(w.window.get(), [] { return true; });
    else if (end == End::DeleteProject)
        delete w.project;
    else
        w.window.reset();
}

} // namespace

void tst_RunFaults::serverFails_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *operation : {"OPEN", "WRITE_REGISTOR", "READ_START_REG", "READ_RAM"}) {
        for (const char *what : {"die", "hang"}) {
            QTest::addRow("%s at %s", what, operation)
                << QStringLiteral("{ \"at\": \"%1\", \"do\": \"%2\" }").arg(operation, what);
        }
    }
    QTest::newRow("lost section") << R"({ "at": "READ_RAM", "do": "lost" })";
    for (const char *kind :
         {"wrong length", "huge length", "unknown type", "huge count", "deep nesting"}) {
        QTest::addRow("%s at READ_RAM", kind)
            << QStringLiteral(R"({ "at": "READ_RAM", "do": "garbage", "kind": "%1" })").arg(kind);
    }
}

void tst_RunFaults::serverFails()
{
    QFETCH(QString, fault);
    TestDesign design;
    design.faults = u'[' + fault + u']';
    const Bench bench(design);
    const ProjectWindow w(bench.file());
    w.press(Qt::Key_F1);
    QTest::qWait(1300);                       // opened, polled, and read if it comes to that
    const bool isOver = !w.project->isBusy(); // garbage may be harmless
    if (!isOver) {
        QVERIFY(ProjectWindow::tip());
        w.press(Qt::Key_F4);
        QCOMPARE(w.boxes.seen, QStringList("Window: Capture Stopped!"));
    }
    QVERIFY(w.isReady());
}

void tst_RunFaults::goneWhileReading_data()
{
    addEnds({End::Close, End::DeleteProject, End::DeleteWindow});
}

// Inside the loop that reads the sections, and inside the tab change of the window just read.
void tst_RunFaults::goneWhileReading()
{
    QFETCH(End, end);
    TestDesign design;
    design.windows = 4;
    for (const bool inTabChange : {false, true}) {
        if (inTabChange && end == End::DeleteWindow)
            continue; // the toolkit's tab widget does not survive that itself
        const Bench bench(design);
        ProjectWindow w(bench.file());
        bool isDone = false;
        QTimer inLoop;
        const auto act = [&] {
            if (isDone || w.tabs->count() < 2)
                return;
            isDone = true;
            inLoop.stop();
            bringAbout(end, w);
        };
        connect(&inLoop, &QTimer::timeout, this, act);
        if (inTabChange)
            connect(w.tabs, &QTabWidget::currentChanged, this, act);
        else
            inLoop.start(5);
        w.project->onStart();
        QTRY_VERIFY_WITH_TIMEOUT(isDone, kCaptureTime);
        QTest::qWait(600); // late replies and ticks
        QVERIFY(!ProjectWindow::tip());
        QVERIFY(!w.tabs || w.tabs->count() == 0);
    }
}

void tst_RunFaults::goneInsideABox_data()
{
    addEnds({End::Close, End::DeleteProject});
}

// The boxes of a stop and of a failed open.
void tst_RunFaults::goneInsideABox()
{
    QFETCH(End, end);
    TestDesign design;
    design.fires = false;
    for (const bool isError : {false, true}) {
        design.programmed = !isError;
        const Bench bench(design);
        ProjectWindow w(bench.file());
        w.boxes.whileOpen = [&](const QMessageBox &) { bringAbout(end, w); };
        w.press(Qt::Key_F1);
        if (!isError)
            QTest::keyClick(ProjectWindow::tip(), Qt::Key_F4);
        QTRY_COMPARE_WITH_TIMEOUT(w.boxes.seen.size(), 1, kCaptureTime);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QVERIFY(!ProjectWindow::tip());
        QCOMPARE(w.tabs->count(), 0);
    }
}

// A server that answers each read with nothing: one box at a time, however many rounds pass.
void tst_RunFaults::emptyWindows()
{
    const TestDesign design;
    const QTemporaryDir directory;
    design.write(directory.path());
    FakeServer server;
    server.answer = [](const QVariantMap &request, QVariantMap reply) {
        if (request["OPRATE"] == "READ_RAM")
            reply["DATA"] = QBitArray(33);
        return FakeServer::Replies{reply};
    };
    QVERIFY(JtagSession::instance()->connectServer({"fake", server.name()}, 1000));
    ProjectWindow w(directory.filePath("design.keo"));

    // The box keeps the test waiting as well, so a timer looks on from inside its event loop.
    w.boxes.isPassive = true;
    int mostBoxes = 0;
    qsizetype readsAtFirst = 0;
    QTimer onlooker;
    connect(&onlooker, &QTimer::timeout, this, [&] {
        const qsizetype reads = server.logged("READ_RAM").size();
        if (w.boxes.openBoxes() > 0 && mostBoxes == 0)
            readsAtFirst = reads;
        mostBoxes = qMax(mostBoxes, w.boxes.openBoxes());
        if (mostBoxes > 0 && reads >= readsAtFirst + 4) // two more rounds
            w.boxes.isPassive = false;
    });
    onlooker.start(10);
    w.project->onAuto();
    QTRY_VERIFY_WITH_TIMEOUT(w.boxes.seen.contains("Error: No data in core 0 window 0"),
                             kCaptureTime);
    QCOMPARE(mostBoxes, 1);
    w.project->onStop();
    QTRY_VERIFY(w.boxes.openBoxes() == 0);
    QVERIFY(!w.project->isBusy() && !ProjectWindow::tip());
    QCOMPARE(w.tabs->count(), 1);
    JtagSession::instance()->disconnectAll();
}

KEO_WIDGET_TEST_MAIN(tst_RunFaults)
#include "tst_runfaults.moc"
