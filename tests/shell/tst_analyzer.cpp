#include "fakeproject.h"

#include <link/jtagsession.h>
#include <shell/analyzer.h>
#include <support/files.h>
#include <support/widgettest.h>

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QIcon>
#include <QLineEdit>
#include <QLocalServer>
#include <QMimeData>
#include <QPushButton>
#include <QToolBar>
#include <QUrl>

using namespace KEO;

/// The main window with fake projects in it: which of them gets a file, and how it is driven.
class tst_Analyzer : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void picturesLoad();
    void choosesTheProject_data();
    void choosesTheProject();
    void opensAndCloses();
    void goneWhileOpening();
    void opensByHand();
    void takesDroppedFiles();
    void closes();
};

namespace {

/// The window, shown, with a file of each kind.
struct Bench
{
    Bench()
    {
        window->show();
        if (!QTest::qWaitForWindowActive(window.get()))
            qFatal("the window does not show");
    }
    void open(const QString &file) const { window->openFile(file, "KR", "KR-C", "a.fs"); }
    [[nodiscard]] QString write(const QString &name, const QByteArray &content) const
    {
        return putFile(dir.filePath(name), content);
    }
    /// As a project does, which knows only that it has a window.
    [[nodiscard]] bool closeCurrent() const
    {
        bool closed = false;
        QWidget *const plain = window.get();
        QMetaObject::invokeMethod(plain, "closeCurrentProject", Q_RETURN_ARG(bool, closed));
        return closed;
    }

    ProjectLog log;
    std::unique_ptr<Analyzer> window = std::make_unique<Analyzer>(nullptr, fakeProjects(log));
    QTemporaryDir dir;
    QString standard = write("s.keo", "<Config/>");
    QString lite = write("l.zeo", "<Config><Mode>Lite</Mode></Config>");
};

} // namespace

// Resources of a static library are easily lost on the way into a program.
void tst_Analyzer::picturesLoad()
{
    for (const char *name : {"add", "auto", "control_stop_red", "programmer_scan", "zoom_in"}) {
        const QString path = QStringLiteral(":/keo/image/%1%2.png").arg(QLatin1String(name));
        QCOMPARE(QImage(path.arg("")).size(), QSize(24, 24));
        QCOMPARE(QImage(path.arg("@2x")).size(), QSize(48, 48));
    }
    const QSize splash = QImage(":/keo/image/Tarno_LOGO_blue.png").size();
    QVERIFY(splash.width() >= 400);
    QCOMPARE(QImage(":/keo/image/Tarno_LOGO_blue@2x.png").size(), 2 * splash);
    QVERIFY(Bench().window->windowIcon().availableSizes().size() >= 6);
}

void tst_Analyzer::choosesTheProject_data()
{
    const auto row = addColumns<QString, QByteArray, QString>({"name", "content", "project"});
    const auto mode = [](const char *text) {
        return QByteArray("<Config><Mode>") + text + "</Mode></Config>";
    };
    row("no mode", "x.keo", "<Config/>", "standard");
    row("lite", "x.zeo", mode("Lite"), "lite");
    row("other mode", "x.keo", mode("Heavy"), "");
    row("blanks count", "x.keo", mode(" Lite"), "");
    row("mode deeper down", "x.keo", "<C><KoCore><Mode>Lite</Mode></KoCore></C>", "standard");
    row("the first mode counts", "x.keo", "<C><Mode>Lite</Mode><Mode>Standard</Mode></C>", "lite");
    row("saved with a short version", "x.keo", "<?xml version=\"1\"?>" + mode("Lite"), "lite");
    row("byte order mark, and a byte that UTF-8 does not have", "x.keo",
        "\xEF\xBB\xBF<Config><Mode>Lite</Mode><Signal>\xe9</Signal></Config>", "lite");
    row("cut off", "x.keo", "<Config><Mode>Lite</Mode>", "");
    row("other extension", "x.xml", "<Config/>", "");
    row("project file", "x.analyzer_prj", "KEO_FILE=DIR/l.zeo\n", "lite");
    row("key of another section", "x.analyzer_prj", "[Other]\nKEO_FILE=DIR/s.keo\n", "");
    row("names itself", "x.analyzer_prj", "KEO_FILE=DIR/x.analyzer_prj\n", "");
    row("in capitals", "x.ANALYZER_PRJ", "KEO_FILE=DIR/s.keo\n", "");
    row("project file too large", "x.analyzer_prj",
        QByteArray("KEO_FILE=DIR/s.keo\n") + QByteArray(2 * 1024 * 1024, ';') + '\n', "");
}

void tst_Analyzer::choosesTheProject()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, project);
    Bench bench;
    bench.open(bench.standard);
    bench.log.take();
    const QString file = bench.write(name, content.replace("DIR", bench.dir.path().toLocal8Bit()));
    bench.open(file);
    QStringList expected("standard: close");
    if (!project.isEmpty())
        expected +=
            {project + ": setup", project + ": open " + file, project + ": device KR/KR-C/a.fs"};
    QCOMPARE(bench.log.take(), expected);
}

void tst_Analyzer::opensAndCloses()
{
    Bench bench;
    QVERIFY(bench.closeCurrent()); // nothing
    bench.open(bench.lite);
    bench.open(bench.standard);
    bench.log.take();
    QWidget *const plain = bench.window.get();
    QVERIFY(QMetaObject::invokeMethod(plain, "reopen", Q_ARG(QString, bench.lite)));
    QCOMPARE(bench.log.take(),
             (QStringList{"standard: close", "lite: setup", "lite: open " + bench.lite,
                          "lite: device KR/KR-C/a.fs"}));
    bench.log.busy = true;
    bench.open(bench.standard);
    QVERIFY(!bench.closeCurrent());
    QCOMPARE(bench.log.take(), QStringList(2, "lite: close refused"));
    bench.log.busy = false;
    QVERIFY(bench.closeCurrent());
    QCOMPARE(bench.log.take(), QStringList("lite: close"));

    bench.log.opens = false;
    bench.open(bench.standard);
    QCOMPARE(bench.log.take(), (QStringList{"standard: setup", "standard: open " + bench.standard,
                                            "standard: close", "standard: device KR/KR-C/a.fs"}));
    // Still the current project, so the next open closes it again.
    for (const char *missing : {"missing.keo", "missing.analyzer_prj"})
        bench.open(bench.dir.filePath(missing));
    QCOMPARE(bench.log.take(), QStringList("standard: close"));
    QVERIFY(!QFile::exists(bench.dir.filePath("missing.analyzer_prj")));
}

// A file that fails to open says so in a box, and the window may go before the box does.
void tst_Analyzer::goneWhileOpening()
{
    for (const bool opens : {true, false}) {
        Bench bench;
        bench.log.opens = opens;
        bench.log.whileOpening = [&] { bench.window.reset(); };
        bench.open(bench.standard);
        QCOMPARE(bench.log.take(),
                 (QStringList{"standard: setup", "standard: open " + bench.standard}));
    }
}

void tst_Analyzer::takesDroppedFiles()
{
    Bench bench;
    Analyzer &window = *bench.window;
    const auto drop = [&](const QList<QUrl> &urls) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enter.ignore();
        QCoreApplication::sendEvent(&window, &enter);
        QDropEvent event({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &event);
        QCoreApplication::processEvents();
        return enter.isAccepted();
    };
    const QUrl standard = QUrl::fromLocalFile(bench.standard);
    auto *open = window.findChild<QAction *>("openAction");
    open->setEnabled(false); // as during a capture
    QVERIFY(!drop({standard}));
    open->setEnabled(true);
    QVERIFY(!drop({QUrl::fromLocalFile(bench.write("notes.txt", "x"))}));
    QVERIFY(!drop({QUrl::fromLocalFile(bench.dir.filePath("gone.keo"))}));
    QVERIFY(!drop({standard, QUrl::fromLocalFile(bench.lite)}));
    QVERIFY(!drop({QUrl("http://localhost/s.keo")}));
    QVERIFY(bench.log.calls.isEmpty());
    QVERIFY(drop({standard}));
    QCOMPARE(bench.log.take().last(), "standard: device //");
    QCOMPARE(window.startDir(), bench.standard);
}

void tst_Analyzer::opensByHand()
{
    Bench bench;
    Analyzer &window = *bench.window;
    const auto *const toolBar = window.findChild<QToolBar *>("toolBar");
    QCOMPARE(toolBar->actions().size(), 2); // Open and a separator
    // A menu to hide the tool bar would leave the user without it.
    QCOMPARE(window.contextMenuPolicy(), Qt::NoContextMenu);
    QVERIFY(!window.findChild<QDockWidget *>());
    bench.open(bench.standard);
    window.setStartDir(bench.dir.path());
    bench.log.take();
    QString seen;
    const OnModal<QFileDialog> cancelled([&](QFileDialog *box) {
        seen = QStringList{box->windowTitle(), box->directory().path()}.join('|') + '|' +
               box->nameFilters().join('|');
        QTest::keyClick(box, Qt::Key_Escape);
    });
    QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(seen, "Open Project...|" + QDir(bench.dir.path()).path() +
                       "|Supported Files (*.analyzer_prj *.keo *.zeo)"
                       "|KEO Analyzer Project File (*.analyzer_prj)"
                       "|TARNO Signal Scope Config File (*.keo *.zeo)");
    QVERIFY(bench.log.calls.isEmpty());
    QCOMPARE(window.startDir(), bench.dir.path());

    QString selected;
    for (int time = 0; time < 2; ++time) {
        const OnModal<QFileDialog> next([&](QFileDialog *box) {
            auto *const edit = box->findChild<QLineEdit *>("fileNameEdit");
            selected = edit->text();
            edit->setText(bench.standard); // pasted, since typing pops completions up
            QTest::keyClick(edit, Qt::Key_Return);
        });
        toolBar->actions().first()->trigger();
        // The device of the command line is not that of a file opened by hand.
        QCOMPARE(bench.log.take().last(), "standard: device //");
        QCOMPARE(window.startDir(), bench.standard);
    }
    QCOMPARE(selected, "s.keo");
}

void tst_Analyzer::closes()
{
    QLocalServer server;
    QVERIFY(server.listen("keo-closing"));
    JtagConnection cable;
    cable.serverName = "keo-closing";
    QVERIFY(JtagSession::instance()->connectServer(cable, 1000));
    Bench bench;
    bench.open(bench.standard);
    bench.log.busy = true;
    BoxWatcher no(QMessageBox::No);
    no.whileOpen = [](const QMessageBox &box) {
        QCOMPARE(box.standardButtons(), QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box.standardButton(box.defaultButton()), QMessageBox::No);
    };
    QVERIFY(!bench.window->close());
    QCOMPARE(no.seen, QStringList("Exit: Task is still running, do you want to exit?"));
    QVERIFY(bench.window->isVisible() && bench.log.busy);
    QVERIFY(JtagSession::instance()->hasConnection());
    no.isPassive = true;

    const BoxWatcher yes(QMessageBox::Yes);
    QVERIFY(bench.window->close());
    QCOMPARE(yes.seen.size(), 1);
    QCOMPARE(bench.log.take().last(), "standard: close");
    QVERIFY(!JtagSession::instance()->hasConnection());
    bench.open(bench.standard);
    QVERIFY(bench.window->close()); // while idle, so nobody is asked
    QCOMPARE(yes.seen.size(), 1);
}

KEO_WIDGET_TEST_MAIN(tst_Analyzer)
#include "tst_analyzer.moc"
