#include "fakeproject.h"

#include <shell/analyzer.h>
#include <support/widgettest.h>

#include <QPlainTextEdit>

#include <memory>
#include <thread>

using namespace KEO;

/// The debug dock of a program that was started with -debug.
class tst_DebugDock : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsMessages();
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

KEO_OWN_TEST_MAIN((runTest<tst_DebugDock, DebugApplication>))
#include "tst_debugdock.moc"
