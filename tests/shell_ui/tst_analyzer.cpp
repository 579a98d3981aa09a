#include "fakeproject.h"
#include "windowtest.h"

#include <link/jtagsession.h>
#include <shell/analyzer.h>

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QIcon>
#include <QLineEdit>
#include <QLocalServer>
#include <QPixmap>
#include <QTabWidget>
#include <QToolBar>

using namespace KEO;

/// The main window, with fake projects in it.
class tst_Analyzer : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void picturesLoad();
    void isAlmostEmpty();
    void opensByHand();
    void cancelledDialog();
    void reopens();
    void closesIdle();
    void closesDuringCapture();
};

namespace {

/// The window, shown, with a file of each kind.
struct Bench
{
    Bench()
    {
        for (const QString &file : {first, second}) {
            QFile written(file);
            if (!written.open(QIODevice::WriteOnly) || written.write("<Config/>") < 0)
                qFatal("cannot write %s", qPrintable(file));
        }
        window.show();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not show");
    }

    ProjectLog log;
    Analyzer window{nullptr, fakeProjects(log)};
    QTemporaryDir dir;
    QString first = dir.filePath("first.keo");
    QString second = dir.filePath("second.keo");
};

/// Enters a path in the file dialog and presses Enter. Pasted, since typing pops completions up.
void choose(QFileDialog *dialog, const QString &path)
{
    auto *const edit = dialog->findChild<QLineEdit *>("fileNameEdit");
    edit->setText(path);
    QTest::keyClick(edit, Qt::Key_Return);
}

} // namespace

// Resources of a static library are easily lost on the way into a program.
void tst_Analyzer::picturesLoad()
{
    const QStringList toolIcons = {"add",
                                   "auto",
                                   "control_cursor_blue",
                                   "control_play_blue",
                                   "control_stop_red",
                                   "delete",
                                   "down",
                                   "document_export",
                                   "folder",
                                   "programmer_run",
                                   "programmer_scan",
                                   "save",
                                   "up",
                                   "warning",
                                   "zoom_fit",
                                   "zoom_in",
                                   "zoom_out"};
    for (const QString &name : toolIcons) {
        QCOMPARE(QImage(":/keo/image/" + name + ".png").size(), QSize(24, 24));
        QCOMPARE(QImage(":/keo/image/" + name + "@2x.png").size(), QSize(48, 48));
    }
    const QSize splash = QImage(":/keo/image/Tarno_LOGO_blue.png").size();
    QVERIFY(splash.width() >= 400);
    QCOMPARE(QImage(":/keo/image/Tarno_LOGO_blue@2x.png").size(), 2 * splash);
    const Bench bench;
    QVERIFY(bench.window.windowIcon().availableSizes().size() >= 6);
    QVERIFY(!QIcon(":/keo/image/chip_tarno.png").availableSizes().isEmpty());
}

void tst_Analyzer::isAlmostEmpty()
{
    Bench bench;
    QCOMPARE(bench.window.windowTitle(), "Tarno Signal Scope");
    QCOMPARE(bench.window.property("domain").toULongLong(), 0u);
    const auto *const toolBar = bench.window.findChild<QToolBar *>("toolBar");
    QCOMPARE(toolBar->windowTitle(), "Tool Bar");
    QCOMPARE(toolBar->actions().size(), 2);
    QCOMPARE(toolBar->actions().at(0)->toolTip(), "Open...");
    QVERIFY(toolBar->actions().at(1)->isSeparator());
    QCOMPARE(bench.window.centralWidget(), bench.window.findChild<QTabWidget *>());
    QVERIFY(!bench.window.findChild<QDockWidget *>());
    // A menu to hide the tool bar would leave the user without it.
    QCOMPARE(bench.window.contextMenuPolicy(), Qt::NoContextMenu);
}

void tst_Analyzer::opensByHand()
{
    Bench bench;
    bench.window.openFile(bench.first, "KR", "KR-C", "a.fs");
    bench.window.setStartDir(bench.dir.path());
    bench.log.take();
    QString seen;
    const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        seen =
            box->windowTitle() + '|' + box->directory().path() + '|' + box->nameFilters().join('|');
        choose(box, bench.second);
    });
    QTest::keyClick(&bench.window, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(dialog.seen());
    QCOMPARE(seen, "Open Project...|" + QDir(bench.dir.path()).path() +
                       "|Supported Files (*.analyzer_prj *.keo *.zeo)"
                       "|KEO Analyzer Project File (*.analyzer_prj)"
                       "|TARNO Signal Scope Config File (*.keo *.zeo)");
    // The device of the command line is not that of a file opened by hand.
    QCOMPARE(bench.log.take(),
             (QStringList{"standard: close", "standard: setup", "standard: open " + bench.second,
                          "standard: device //"}));
    QCOMPARE(bench.window.startDir(), bench.second);

    QString selected;
    const OnModal<QFileDialog> next([&](QFileDialog *box) {
        selected = box->findChild<QLineEdit *>("fileNameEdit")->text();
        choose(box, bench.first);
    });
    bench.window.findChild<QAction *>("openAction")->trigger();
    QCOMPARE(selected, "second.keo");
    QCOMPARE(bench.window.startDir(), bench.first);
}

void tst_Analyzer::cancelledDialog()
{
    Bench bench;
    bench.window.setStartDir(bench.dir.path());
    const OnModal<QFileDialog> dialog(
        [](QFileDialog *box) { QTest::keyClick(box, Qt::Key_Escape); });
    bench.window.onOpen();
    QVERIFY(dialog.seen());
    QVERIFY(bench.log.calls.isEmpty());
    QCOMPARE(bench.window.startDir(), bench.dir.path());
}

void tst_Analyzer::reopens()
{
    Bench bench;
    bench.window.openFile(bench.first, "KR", "KR-C", "a.fs");
    bench.log.take();
    // As a project does, which knows only that it has a window.
    QWidget *const window = &bench.window;
    QVERIFY(QMetaObject::invokeMethod(window, "reopen", Q_ARG(QString, bench.second)));
    QCOMPARE(bench.log.take(),
             (QStringList{"standard: close", "standard: setup", "standard: open " + bench.second,
                          "standard: device KR/KR-C/a.fs"}));
    bool closed = false;
    bench.log.busy = true;
    QVERIFY(QMetaObject::invokeMethod(window, "closeCurrentProject", Q_RETURN_ARG(bool, closed)));
    QVERIFY(!closed);
    bench.log.busy = false;
    QVERIFY(QMetaObject::invokeMethod(window, "closeCurrentProject", Q_RETURN_ARG(bool, closed)));
    QVERIFY(closed);
    QCOMPARE(bench.log.take(), (QStringList{"standard: close refused", "standard: close"}));
}

void tst_Analyzer::closesIdle()
{
    Bench bench;
    bench.window.openFile(bench.first, "KR", "KR-C", "");
    const BoxAnswer box(QMessageBox::No);
    QVERIFY(bench.window.close());
    QVERIFY(!box.seen());
    QVERIFY(!bench.window.isVisible());
    QCOMPARE(bench.log.take().last(), "standard: close");
}

void tst_Analyzer::closesDuringCapture()
{
    QLocalServer server;
    QVERIFY(server.listen("keo-closing"));
    JtagConnection cable;
    cable.serverName = "keo-closing";
    QVERIFY(JtagSession::instance()->connectServer(cable, 1000));
    Bench bench;
    bench.window.openFile(bench.first, "KR", "KR-C", "");
    bench.log.busy = true;
    {
        const BoxAnswer box(QMessageBox::No);
        QVERIFY(!bench.window.close());
        QCOMPARE(box.text(), "Exit: Task is still running, do you want to exit?");
        QCOMPARE(box.buttons(), QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box.defaultButton(), QMessageBox::No);
    }
    QVERIFY(bench.window.isVisible());
    QVERIFY(bench.log.busy);
    QVERIFY(JtagSession::instance()->hasConnection());

    const BoxAnswer box(QMessageBox::Yes);
    QVERIFY(bench.window.close());
    QVERIFY(box.seen());
    QCOMPARE(bench.log.take().last(), "standard: close");
    QVERIFY(!JtagSession::instance()->hasConnection());
}

KEO_WINDOW_TEST_MAIN(tst_Analyzer)
#include "tst_analyzer.moc"
