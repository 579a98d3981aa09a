#include "fakeproject.h"

#include <shell/analyzer.h>
#include <support/debugapplication.h>
#include <support/widgettest.h>

#include <QDockWidget>
#include <QPlainTextEdit>
#include <QToolButton>

#include <memory>
#include <thread>

using namespace KEO;

/// The debug dock of a program that was started with -debug.
class tst_DebugDock : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsMessages();
    void comesBack();
    void givesTheHandlerBack();
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
    QVERIFY(bench.pane->isReadOnly());
    qDebug("CLEAR");
    qInfo() << "nothing <b>bold</b>";
    QCOMPARE(bench.pane->toPlainText(), "CLEAR\nnothing <b>bold</b>");
    qDebug("CLEAR ");
    QCOMPARE(bench.pane->toPlainText(), "");
    std::thread([] { qDebug("from afar"); }).join();
    QTRY_COMPARE(bench.pane->toPlainText(), "from afar");
    QCOMPARE(g_elsewhere, QStringList());
    // A server's text can fill a frame; laid out, one line of it froze the window.
    qDebug("CLEAR ");
    qDebug().noquote() << QString(1'000'000, u'x');
    QVERIFY(bench.pane->toPlainText().startsWith("xxxx"));
    QVERIFY(bench.pane->toPlainText().endsWith("(1000000 characters)"));
    QVERIFY(bench.pane->toPlainText().size() < 5000);
}

void tst_DebugDock::comesBack()
{
    const Bench bench;
    bench.window->show();
    QVERIFY(QTest::qWaitForWindowActive(bench.window.get()));
    auto *const dock = bench.window->findChild<QDockWidget *>("debugDock");
    auto *const button = bench.window->findChild<QToolButton *>("debugToggle");
    for (const bool byKey : {true, false}) {
        QVERIFY(dock->isVisible());
        QVERIFY(dock->close());
        if (byKey)
            QTest::keyClick(bench.window.get(), Qt::Key_F12);
        else
            button->click();
    }
    QVERIFY(dock->isVisible());
}

void tst_DebugDock::givesTheHandlerBack()
{
    for (const bool closed : {true, false}) {
        Bench bench;
        if (closed)
            QVERIFY(bench.window->close());
        else
            bench.window.reset();
        qDebug("late");
        QCOMPARE(g_elsewhere, QStringList{"late"});
    }
    // A later handler stays.
    Bench bench;
    static QStringList later;
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { later.append(text); });
    bench.window.reset();
    qDebug("late");
    QCOMPARE(later, QStringList{"late"});
}

KEO_OWN_TEST_MAIN((runTest<tst_DebugDock, DebugApplication>))
#include "tst_debugdock.moc"
