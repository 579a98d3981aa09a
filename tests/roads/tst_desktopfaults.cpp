// What a user or a server may do in the middle of a capture, at each of its steps: nothing crashes,
// hangs or leaves a tip behind, and there is always a way on.

#include <capture/fakeserver.h>
#include <support/desktop.h>

#include <QElapsedTimer>

using namespace KEO;

class tst_DesktopFaults : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void atEachStep_data();
    void atEachStep();
    void answersWithoutBits_data();
    void answersWithoutBits();
};

namespace {

enum class Step { BeforePoll, Polling, InSections, TabComes, Rounds, Box };
enum class Act { Stop, CloseYes, DeleteWindow, DeleteInQuestion, ServerDies };

/// Has a capture come to the step? Asked by a timer, which runs in the section loop as well.
bool hasCome(Step step, const Desktop &d, qint64 sinceStart)
{
    switch (step) {
    case Step::BeforePoll:
        return true;
    case Step::Polling:
        return sinceStart > 600 && d.isBusy();
    case Step::InSections:
        return d.requests("READ_RAM") >= 1; // a busy machine may do two at once
    case Step::Rounds:
        return d.tabs()->count() >= 2;
    case Step::TabComes:
    case Step::Box:
        break; // told otherwise
    }
    return false;
}

void act(Act what, Desktop &d)
{
    switch (what) {
    case Act::Stop:
        QTest::keyClick(d.window.get(), Qt::Key_F4);
        break;
    case Act::CloseYes:
        d.window->close();
        break;
    case Act::DeleteInQuestion:
        d.boxes.whileOpen = [&](const QMessageBox &) { d.window.reset(); };
        d.window->close();
        break;
    case Act::DeleteWindow:
        d.window.reset();
        break;
    case Act::ServerDies:
        d.servers.begin()->second->kill();
        d.servers.begin()->second->waitForFinished(3000);
        break;
    }
}

} // namespace

void tst_DesktopFaults::atEachStep_data()
{
    addColumns<bool, Step, Act>({"lite", "step", "what"});
    const char *steps[] = {"before the first poll",  "polling",
                           "between two sections",   "as a tab comes",
                           "between rounds of Auto", "in the box at the end"};
    const char *acts[] = {"stop", "close, yes", "window deleted", "window deleted by the question",
                          "server dies"};
    for (const bool lite : {false, true}) {
        for (const Step step : {Step::BeforePoll, Step::Polling, Step::InSections, Step::TabComes,
                                Step::Rounds, Step::Box}) {
            for (int what = 0; what <= int(Act::ServerDies); ++what) {
                // The toolkit's tab widget does not survive its own end in a tab change.
                const bool isFatal = step == Step::TabComes && Act(what) == Act::DeleteWindow;
                // Elsewhere the other rows prove it, and after the run there is no question.
                const bool isTold = Act(what) == Act::DeleteInQuestion && step != Step::Polling;
                const bool isTwin = lite && step != Step::Polling && step != Step::Box;
                if (!isFatal && !isTold && !isTwin)
                    QTest::addRow("%s%s: %s", lite ? "lite, " : "", steps[int(step)], acts[what])
                        << lite << step << Act(what);
            }
        }
    }
}

void tst_DesktopFaults::atEachStep()
{
    QFETCH(bool, lite);
    QFETCH(Step, step);
    QFETCH(Act, what);
    TestDesign design;
    design.lite = lite;
    design.windows = lite || step == Step::Rounds ? 1 : 2;
    design.fires = step != Step::Polling;
    if (lite && step == Step::Polling)
        design.samplesPerSecond = 1;
    design.programmed = step != Step::Box;
    Desktop d(design);
    d.open();
    bool isDone = false;
    QElapsedTimer clock;
    QTimer onlooker;
    const auto actOnce = [&] {
        if (!std::exchange(isDone, true))
            act(what, d);
    };
    connect(&onlooker, &QTimer::timeout, this, [&] {
        if (!isDone && d.window && hasCome(step, d, clock.elapsed()))
            actOnce();
    });
    if (step == Step::Box)
        d.boxes.whileOpen = [&](const QMessageBox &) { actOnce(); };
    if (step == Step::TabComes)
        connect(d.tabs(), &QTabWidget::currentChanged, &onlooker, actOnce);
    d.press(step == Step::Rounds ? Qt::Key_F2 : Qt::Key_F1);
    clock.start();
    onlooker.start(2);
    QTRY_VERIFY_WITH_TIMEOUT(isDone, kCaptureTime);
    QTest::qWait(50); // late replies and ticks
    QTRY_VERIFY(!QApplication::activeModalWidget());

    if (what == Act::DeleteWindow || what == Act::DeleteInQuestion || what == Act::CloseYes) {
        QVERIFY(!waitingTip());
        QVERIFY(!d.window || (!d.window->isVisible() && d.tabs()->count() == 0));
        if (lite && step == Step::Polling)
            QCOMPARE(d.requests("CLOSE"), 0); // its run is left to the connection
        if (!lite && what == Act::CloseYes) {
            d.window->show();
            d.open();
            QVERIFY(d.isIdle() && d.isEnabled("Start"));
        }
        return;
    }
    if (d.isBusy())
        d.press(Qt::Key_F4);
    QVERIFY(d.isIdle());
    QVERIFY(d.isEnabled("Start"));
    if (what == Act::Stop && step != Step::Polling && step != Step::Box) {
        d.capture();
        QCOMPARE(d.tabs()->count(), 1 + design.windows);
    }
}

void tst_DesktopFaults::answersWithoutBits_data()
{
    addColumns<bool, Qt::Key, QString>({"lite", "key", "text"});
    addRow("Auto of a standard core", false, Qt::Key_F2, "No data in core 0 window 0");
    addRow("lite core", true, Qt::Key_F1, "No data.");
}

// A server that answers each read with nothing: one box at a time, however many rounds pass.
void tst_DesktopFaults::answersWithoutBits()
{
    QFETCH(bool, lite);
    QFETCH(Qt::Key, key);
    QFETCH(QString, text);
    FakeServer server;
    server.leadingBits = lite ? 0 : server.leadingBits;
    server.answer = [lite](const QVariantMap &request, QVariantMap reply) {
        const QString operation = request["OPRATE"].toString();
        if (operation == "READ_RAM")
            reply["DATA"] = QBitArray(lite ? 0 : 33);
        if (lite && operation == "READ_START_REG")
            reply["DATA"] = QBitArray(); // counts as done
        return FakeServer::Replies{reply};
    };
    TestDesign design;
    design.lite = lite;
    Desktop d(design);
    JtagSession::instance()->disconnectAll();
    QVERIFY(JtagSession::instance()->connectServer({"fake", server.name()}, 1000));
    d.open();

    // The box keeps the test waiting as well, so a timer looks on from inside its event loop.
    d.boxes.isPassive = true;
    int mostBoxes = 0;
    qsizetype readsAtFirst = 0;
    QTimer onlooker;
    connect(&onlooker, &QTimer::timeout, this, [&] {
        const qsizetype reads = server.logged("READ_RAM").size();
        if (d.boxes.openBoxes() > 0 && mostBoxes == 0)
            readsAtFirst = reads;
        mostBoxes = qMax(mostBoxes, d.boxes.openBoxes());
        if (mostBoxes > 0 && (lite || reads >= readsAtFirst + 4)) // two more rounds
            d.boxes.isPassive = false;
    });
    onlooker.start(10);
    d.press(key);
    QTRY_COMPARE_WITH_TIMEOUT(d.boxes.seen.value(0), "Error: " + text, kCaptureTime);
    QCOMPARE(mostBoxes, 1);
    if (!lite)
        d.press(Qt::Key_F4);
    QTRY_VERIFY(d.boxes.openBoxes() == 0 && d.isIdle());
    QCOMPARE(d.tabs()->count(), 1);
    const QString end = d.find<QLabel>("runStatus")->text();
    QVERIFY2(end.contains("windows captured: 0"), qPrintable(end));
}

KEO_WIDGET_TEST_MAIN(tst_DesktopFaults)
#include "tst_desktopfaults.moc"
