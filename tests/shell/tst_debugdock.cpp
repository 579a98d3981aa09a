#include "fakeproject.h"

#include <config/coreconfig.h>
#include <shell/analyzer.h>
#include <support/debugapplication.h>
#include <support/testdesign.h>
#include <support/widgettest.h>
#include <trigger_ui/dynamicconfigwidget.h>

#include <QDockWidget>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTemporaryDir>
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
    void previewsTheRun();
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

/// Without a server. What the page shows counts, and stays on the page.
void tst_DebugDock::previewsTheRun()
{
    const QTemporaryDir directory;
    TestDesign design;
    design.dynamic = true;
    design.write(directory.path());
    Analyzer window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    auto *const dock = window.findChild<QDockWidget *>("debugDock");
    const auto *const pane = window.findChild<QPlainTextEdit *>("debugPane");
    QVERIFY(dock->close());
    QTest::keyClick(&window, Qt::Key_F12, Qt::ControlModifier);
    QVERIFY(dock->isVisible());
    QVERIFY(pane->toPlainText().endsWith("There is no core to start."));

    window.openFile(directory.filePath("design.keo"), {}, {}, {});
    const auto *const page = window.findChild<DynamicConfigWidget *>();
    auto *const position = window.findChild<QSpinBox *>("spinBoxTrPos");
    position->setValue(40);
    auto *const list = window.findChild<QListWidget *>("listExpressions");
    list->item(0)->setCheckState(Qt::Unchecked);
    qDebug("CLEAR ");
    window.findChild<QToolButton *>("previewButton")->click();
    const QString text = pane->toPlainText();
    QVERIFY2(text.startsWith("Start would send 20 words:\nselect         core 0\n"),
             qPrintable(text));
    QVERIFY(text.contains("trigger offset = 212\n"));
    QVERIFY(text.contains("truth table 0, 4 words = 1 everywhere\n"));
    QVERIFY(text.endsWith("Core 0: No expression is checked, so any sample triggers."));
    QCOMPARE(page->core()->trigger_pos, 16);
    QCOMPARE(page->core()->expressionEnabled, QList<bool>{true});
    QCOMPARE(position->value(), 40);
    QVERIFY(window.close());
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
