// What a user or a server may do in the middle of a capture, at each of its steps: nothing crashes,
// hangs or leaves a tip behind, and there is always a way on.

#include "desktop.h"

#include <QElapsedTimer>

using namespace KEO;

class tst_DesktopFaults : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void atEachStep_data();
    void atEachStep();
};

namespace {

enum class Step {
    BeforePoll,
    Polling,
    InSections,
    TabComes,
    BetweenWindows,
    LastSection,
    Rounds,
    Box
};
enum class Act { Stop, Open, CloseNo, OpenAndCloseNo, CloseYes, DeleteWindow, ServerDies };

constexpr int kSections = 4; // two windows of two

/// Has a capture come to the step? Asked by a timer, which runs in the section loop as well.
bool hasCome(Step step, const Desktop &d, qint64 sinceStart)
{
    switch (step) {
    case Step::BeforePoll:
        return true;
    case Step::Polling:
        return sinceStart > 700 && d.isBusy();
    case Step::InSections:
        return d.requests("READ_RAM") >= 1; // a busy machine may do two at once
    case Step::BetweenWindows:
    case Step::Rounds:
        return d.tabs()->count() >= 2;
    case Step::LastSection:
        return d.requests("READ_RAM") == kSections;
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
    case Act::Open:
        d.open();
        break;
    case Act::CloseNo:
        d.boxes.answer = QMessageBox::No;
        d.window->close();
        break;
    case Act::OpenAndCloseNo:
        d.open();
        d.boxes.answer = QMessageBox::No;
        d.window->close();
        break;
    case Act::CloseYes:
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
    QTest::addColumn<Step>("step");
    QTest::addColumn<Act>("what");
    const char *steps[] = {
        "before the first poll", "polling",      "between two sections",   "as a tab comes",
        "between two windows",   "last section", "between rounds of Auto", "in the box at the end"};
    const char *acts[] = {"stop",       "open",           "close, no",  "open and close, no",
                          "close, yes", "window deleted", "server dies"};
    for (int step = 0; step <= int(Step::Box); ++step) {
        for (int what = 0; what <= int(Act::ServerDies); ++what) {
            // A run refuses both to open and, after a No, to close, so one run does for the two.
            const bool isOne = Act(what) == Act::Open || Act(what) == Act::CloseNo;
            const bool isBoth = Act(what) == Act::OpenAndCloseNo;
            if (Step(step) == Step::Box ? isBoth : isOne)
                continue;
            // The toolkit's tab widget does not survive its own end in a tab change.
            if (Step(step) != Step::TabComes || Act(what) != Act::DeleteWindow)
                QTest::addRow("%s: %s", steps[step], acts[what]) << Step(step) << Act(what);
        }
    }
}

void tst_DesktopFaults::atEachStep()
{
    QFETCH(Step, step);
    QFETCH(Act, what);
    TestDesign design;
    design.windows = step == Step::Rounds ? 1 : 2;
    design.fires = step != Step::Polling;
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
    QTest::qWait(100); // late replies and ticks
    QTRY_VERIFY(!QApplication::activeModalWidget());

    if (what == Act::CloseYes || what == Act::DeleteWindow) {
        QVERIFY(!waitingTip());
        QVERIFY(!d.window || (!d.window->isVisible() && d.tabs()->count() == 0));
        return;
    }
    if (step == Step::Box && what == Act::CloseNo) {
        QVERIFY(!d.window->isVisible()); // nothing was running, so nobody asked
        return;
    }
    // Who refused to stop finds the capture going on, or finished by itself.
    if (what == Act::Open || what == Act::OpenAndCloseNo) {
        QVERIFY(d.window->isVisible());
        if (design.fires && design.programmed && step != Step::Rounds) {
            QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
            QCOMPARE(d.tabs()->count(), 3);
        }
    }
    if (d.isBusy())
        d.press(Qt::Key_F4);
    QVERIFY(d.isIdle());
    QVERIFY(d.tool("Start")->isEnabled());
    if (what == Act::Stop && design.fires && design.programmed) {
        d.capture();
        QCOMPARE(d.tabs()->count(), 1 + design.windows);
    }
}

KEO_WIDGET_TEST_MAIN(tst_DesktopFaults)
#include "tst_desktopfaults.moc"
