#include "fakeproject.h"

#include <link/jtagsession.h>
#include <shell/analyzer.h>
#include <support/widgettest.h>

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QIcon>
#include <QLineEdit>
#include <QLocalServer>
#include <QMimeData>
#include <QPushButton>
#include <QTabWidget>
#include <QToolBar>
#include <QUrl>

using namespace KEO;

/// The main window, with fake projects in it.
class tst_Analyzer : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void picturesLoad();
    void opensByHand();
    void takesDroppedFiles();
    void reopens();
    void closes();
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

} // namespace

// Resources of a static library are easily lost on the way into a program.
void tst_Analyzer::picturesLoad()
{
    const QString names = "add auto control_cursor_blue control_play_blue control_stop_red delete "
                          "down document_export folder programmer_run programmer_scan save up "
                          "warning zoom_fit zoom_in zoom_out";
    for (const QString &name : names.split(' ')) {
        QCOMPARE(QImage(":/keo/image/" + name + ".png").size(), QSize(24, 24));
        QCOMPARE(QImage(":/keo/image/" + name + "@2x.png").size(), QSize(48, 48));
    }
    const QSize splash = QImage(":/keo/image/Tarno_LOGO_blue.png").size();
    QVERIFY(splash.width() >= 400);
    QCOMPARE(QImage(":/keo/image/Tarno_LOGO_blue@2x.png").size(), 2 * splash);
    QVERIFY(!QIcon(":/keo/image/chip_tarno.png").availableSizes().isEmpty());
    QVERIFY(Bench().window.windowIcon().availableSizes().size() >= 6);
}

void tst_Analyzer::opensByHand()
{
    Bench bench;
    const auto *const toolBar = bench.window.findChild<QToolBar *>("toolBar");
    QCOMPARE(toolBar->actions().size(), 2); // Open and a separator
    // A menu to hide the tool bar would leave the user without it.
    QCOMPARE(bench.window.contextMenuPolicy(), Qt::NoContextMenu);
    QVERIFY(!bench.window.findChild<QDockWidget *>());
    bench.window.openFile(bench.first, "KR", "KR-C", "a.fs");
    bench.window.setStartDir(bench.dir.path());
    bench.log.take();
    QString seen;
    const OnModal<QFileDialog> cancelled([&](QFileDialog *box) {
        seen = QStringList{box->windowTitle(), box->directory().path()}.join('|') + '|' +
               box->nameFilters().join('|');
        QTest::keyClick(box, Qt::Key_Escape);
    });
    QTest::keyClick(&bench.window, Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(seen, "Open Project...|" + QDir(bench.dir.path()).path() +
                       "|Supported Files (*.analyzer_prj *.keo *.zeo)"
                       "|KEO Analyzer Project File (*.analyzer_prj)"
                       "|TARNO Signal Scope Config File (*.keo *.zeo)");
    QVERIFY(bench.log.calls.isEmpty());
    QCOMPARE(bench.window.startDir(), bench.dir.path());

    QString selected;
    for (const QString &file : {bench.second, bench.first}) {
        const OnModal<QFileDialog> next([&](QFileDialog *box) {
            auto *const edit = box->findChild<QLineEdit *>("fileNameEdit");
            selected = edit->text();
            edit->setText(file); // pasted, since typing pops completions up
            QTest::keyClick(edit, Qt::Key_Return);
        });
        toolBar->actions().first()->trigger();
        // The device of the command line is not that of a file opened by hand.
        QCOMPARE(bench.log.take(), (QStringList{"standard: close", "standard: setup",
                                                "standard: open " + file, "standard: device //"}));
        QCOMPARE(bench.window.startDir(), file);
    }
    QCOMPARE(selected, "second.keo");
}

void tst_Analyzer::takesDroppedFiles()
{
    Bench bench;
    const auto drop = [&](const QList<QUrl> &urls) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&bench.window, &enter);
        QDropEvent event({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&bench.window, &event);
        QCoreApplication::processEvents();
        return enter.isAccepted();
    };
    const QUrl first = QUrl::fromLocalFile(bench.first);
    const QString text = bench.dir.filePath("notes.txt");
    QVERIFY(QFile(bench.first).copy(text));
    auto *open = bench.window.findChild<QAction *>("openAction");
    open->setEnabled(false); // as during a capture
    QVERIFY(!drop({first}));
    open->setEnabled(true);
    QVERIFY(!drop({QUrl::fromLocalFile(text)}));
    QVERIFY(!drop({QUrl::fromLocalFile(bench.dir.filePath("gone.keo"))}));
    QVERIFY(!drop({first, QUrl::fromLocalFile(bench.second)}));
    QVERIFY(!drop({QUrl("http://localhost/first.keo")}));
    QVERIFY(bench.log.calls.isEmpty());
    QVERIFY(drop({first}));
    QCOMPARE(bench.log.take(), (QStringList{"standard: setup", "standard: open " + bench.first,
                                            "standard: device //"}));
    QCOMPARE(bench.window.startDir(), bench.first);
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

void tst_Analyzer::closes()
{
    QLocalServer server;
    QVERIFY(server.listen("keo-closing"));
    JtagConnection cable;
    cable.serverName = "keo-closing";
    QVERIFY(JtagSession::instance()->connectServer(cable, 1000));
    Bench bench;
    bench.window.openFile(bench.first, "KR", "KR-C", "");
    bench.log.busy = true;
    BoxWatcher no(QMessageBox::No);
    no.whileOpen = [](const QMessageBox &box) {
        QCOMPARE(box.standardButtons(), QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box.standardButton(box.defaultButton()), QMessageBox::No);
    };
    QVERIFY(!bench.window.close());
    QCOMPARE(no.seen, QStringList("Exit: Task is still running, do you want to exit?"));
    QVERIFY(bench.window.isVisible() && bench.log.busy);
    QVERIFY(JtagSession::instance()->hasConnection());
    no.isPassive = true;

    const BoxWatcher yes(QMessageBox::Yes);
    QVERIFY(bench.window.close());
    QCOMPARE(yes.seen.size(), 1);
    QCOMPARE(bench.log.take().last(), "standard: close");
    QVERIFY(!JtagSession::instance()->hasConnection());
    bench.window.openFile(bench.first, "KR", "KR-C", "");
    QVERIFY(bench.window.close()); // while idle, so nobody is asked
    QCOMPARE(yes.seen.size(), 1);
}

KEO_WIDGET_TEST_MAIN(tst_Analyzer)
#include "tst_analyzer.moc"
