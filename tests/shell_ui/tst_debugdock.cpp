#include "fakeproject.h"
#include "windowtest.h"

#include <shell/analyzer.h>

#include <QDockWidget>
#include <QPlainTextEdit>

#include <memory>
#include <thread>

using namespace KEO;

/// The debug dock of a program that was started with -debug.
class tst_DebugDock : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsMessages();
    void clears();
    void otherThreads();
    void messagesOfThePaneItself();
    void givesTheHandlerBack_data();
    void givesTheHandlerBack();
    void leavesALaterHandlerAlone();
};

namespace {

QStringList g_elsewhere; // what reached the handler that was there before

void noteElsewhere(QtMsgType, const QMessageLogContext &, const QString &text)
{
    g_elsewhere.append(text);
}

/// The window with its dock; before it and after it messages go to a handler that only notes.
struct Bench
{
    Bench() { g_elsewhere.clear(); }
    ~Bench()
    {
        window.reset();
        qInstallMessageHandler(original);
    }

    QtMessageHandler original = qInstallMessageHandler(noteElsewhere);
    ProjectLog log;
    std::unique_ptr<Analyzer> window = std::make_unique<Analyzer>(nullptr, fakeProjects(log));
    QPlainTextEdit *pane = window->findChild<QPlainTextEdit *>("debugPane");
};

} // namespace

void tst_DebugDock::showsMessages()
{
    const Bench bench;
    const auto *const dock = bench.window->findChild<QDockWidget *>("debugDock");
    QCOMPARE(dock->windowTitle(), "Debug Message");
    QCOMPARE(bench.window->dockWidgetArea(const_cast<QDockWidget *>(dock)),
             Qt::RightDockWidgetArea);
    QCOMPARE(dock->minimumSize(), QSize(500, 300));
    QVERIFY(bench.pane->isReadOnly());
    qDebug("rows 1 to 4");
    qInfo() << "nothing <b>bold</b>";
    QCOMPARE(bench.pane->toPlainText(), "rows 1 to 4\nnothing <b>bold</b>");
    QCOMPARE(g_elsewhere, QStringList());
}

void tst_DebugDock::clears()
{
    const Bench bench;
    qDebug("before");
    qDebug("CLEAR");
    QCOMPARE(bench.pane->toPlainText(), "before\nCLEAR");
    qDebug("CLEAR ");
    QCOMPARE(bench.pane->toPlainText(), "");
    qDebug("after");
    QCOMPARE(bench.pane->toPlainText(), "after");
}

void tst_DebugDock::otherThreads()
{
    const Bench bench;
    std::thread([] { qDebug("from afar"); }).join();
    QTRY_COMPARE(bench.pane->toPlainText(), "from afar");
}

void tst_DebugDock::messagesOfThePaneItself()
{
    const Bench bench;
    connect(bench.pane, &QPlainTextEdit::textChanged, this, [] { qDebug("again"); });
    qDebug("once");
    QCOMPARE(bench.pane->toPlainText(), "once");
}

void tst_DebugDock::givesTheHandlerBack_data()
{
    QTest::addColumn<bool>("closed");
    QTest::newRow("window closed") << true;
    QTest::newRow("window destroyed") << false;
}

void tst_DebugDock::givesTheHandlerBack()
{
    QFETCH(bool, closed);
    Bench bench;
    if (closed)
        QVERIFY(bench.window->close());
    else
        bench.window.reset();
    qDebug("late");
    QCOMPARE(g_elsewhere, QStringList{"late"});
}

void tst_DebugDock::leavesALaterHandlerAlone()
{
    Bench bench;
    static QStringList later;
    const auto note = [](QtMsgType, const QMessageLogContext &, const QString &text) {
        later.append(text);
    };
    qInstallMessageHandler(note);
    bench.window.reset();
    qDebug("late");
    QCOMPARE(later, QStringList{"late"});
}

namespace {

/// An application whose command line says -debug, without the test's own options.
class DebugApplication final : public QApplication
{
public:
    DebugApplication(int &, char **) : QApplication(s_count, s_arguments) {}

private:
    static inline char s_name[] = "signalscope";
    static inline char s_debug[] = "-debug";
    static inline char *s_arguments[] = {s_name, s_debug, nullptr};
    static inline int s_count = 2;
};

} // namespace

int main(int argc, char **argv)
{
    return runTest<tst_DebugDock, DebugApplication>(argc, argv);
}
#include "tst_debugdock.moc"
