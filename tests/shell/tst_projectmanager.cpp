#include "fakeproject.h"

#include <shell/projectmanager.h>
#include <support/widgettest.h>

#include <QAction>
#include <QFile>
#include <QTabWidget>
#include <QToolBar>

using namespace KEO;

/// Which project gets a file, and how it is driven.
class tst_ProjectManager : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void kind_data();
    void kind();
    void opensAndCloses();
    void goneWhileOpening();
    void opensNothing_data();
    void opensNothing();
};

namespace {

/// A manager of fake projects, the parts of a main window, and a folder for files.
struct Bench
{
    void open(const QString &file)
    {
        manager->tabWidgetGetter = [this] { return &tabs; };
        manager->toolBarGetter = [this] { return &toolBar; };
        manager->openActionGetter = [this] { return &action; };
        manager->openFile(&window, "KR", "KR-C", "a.fs", file);
    }
    [[nodiscard]] QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }
    [[nodiscard]] QString standard() const { return write("s.keo", "<Config/>"); }
    [[nodiscard]] QString lite() const
    {
        return write("l.zeo", "<Config><Mode>Lite</Mode></Config>");
    }

    QTemporaryDir dir;
    ProjectLog log;
    QWidget window;
    QTabWidget tabs;
    QToolBar toolBar;
    QAction action;
    // The window ends it, and both end the projects: once.
    ProjectManager *manager = new ProjectManager(&window, fakeProjects(log));
};

} // namespace

void tst_ProjectManager::kind_data()
{
    const auto row = addColumns<QByteArray, ProjectKind>({"content", "expected"});
    const auto mode = [](const char *text) {
        return QByteArray("<Config><Mode>") + text + "</Mode></Config>";
    };
    using enum ProjectKind;
    row("no mode", "<Config/>", Standard);
    row("lite", mode("Lite"), Lite);
    row("other", mode("Heavy"), Unknown);
    row("blanks count", mode(" Lite"), Unknown);
    row("mode deeper down", "<Config><KoCore><Mode>Lite</Mode></KoCore></Config>", Standard);
    row("the first mode counts", "<Config><Mode>Lite</Mode><Mode>Standard</Mode></Config>", Lite);
    row("saved with a short version", "<?xml version=\"1\"?><Config><Mode>Lite</Mode></Config>",
        Lite);
    row("byte order mark, and a byte that UTF-8 does not have",
        "\xEF\xBB\xBF<Config><Mode>Lite</Mode><Signal>\xe9</Signal></Config>", Lite);
    row("cut off", "<Config><Mode>Lite</Mode>", Unknown);
}

void tst_ProjectManager::kind()
{
    QFETCH(QByteArray, content);
    const Bench bench;
    QTEST(kindOfFile(bench.write("a.keo", content)), "expected");
}

void tst_ProjectManager::opensAndCloses()
{
    Bench bench;
    bool asked = false;
    const auto ask = [&asked] { return asked = true; };
    QVERIFY(bench.manager->closeCurrent(&bench.window, ask)); // nothing, so nobody is asked
    const QString first = bench.standard();
    bench.open(first);
    QCOMPARE(bench.log.take(), (QStringList{"standard: setup", "standard: open " + first,
                                            "standard: device KR/KR-C/a.fs"}));
    QVERIFY(!bench.manager->tabWidgetGetter && !bench.manager->toolBarGetter &&
            !bench.manager->openActionGetter);
    const QString second = bench.lite();
    bench.open(second);
    QCOMPARE(bench.log.take(), (QStringList{"standard: close", "lite: setup",
                                            "lite: open " + second, "lite: device KR/KR-C/a.fs"}));
    // The same object once more, by a project file that names it.
    const QString project = bench.write("p.analyzer_prj", "KEO_FILE=" + second.toUtf8() + '\n');
    bench.open(project);
    QCOMPARE(bench.log.take().mid(0, 3),
             (QStringList{"lite: close", "lite: setup", "lite: open " + project}));

    bench.log.busy = true;
    bench.open(first);
    QVERIFY(!bench.manager->closeCurrent(&bench.window, {}));
    QVERIFY(!bench.manager->closeCurrent(&bench.window, [] { return false; }));
    QCOMPARE(bench.log.take(), QStringList(3, "lite: close refused"));
    QVERIFY(!asked && bench.manager->closeCurrent(&bench.window, ask) && asked);
    QCOMPARE(bench.log.take(), QStringList{"lite: close"});

    bench.log.opens = false;
    bench.open(first);
    QCOMPARE(bench.log.take(), (QStringList{"standard: setup", "standard: open " + first,
                                            "standard: close", "standard: device KR/KR-C/a.fs"}));
    // Still the current project, so the next open closes it again.
    bench.open("none");
    QCOMPARE(bench.log.take(), QStringList{"standard: close"});
}

// A file that fails to open says so in a box, and the window may go before the box does.
void tst_ProjectManager::goneWhileOpening()
{
    for (const bool opens : {true, false}) {
        Bench bench;
        bench.log.opens = opens;
        bench.log.whileOpening = [&] { delete std::exchange(bench.manager, nullptr); };
        const QString file = bench.standard();
        bench.open(file);
        QCOMPARE(bench.log.take(), (QStringList{"standard: setup", "standard: open " + file}));
    }
}

void tst_ProjectManager::opensNothing_data()
{
    const auto row = addColumns<QString, QByteArray>({"name", "content"});
    row("other extension", "x.xml", "<Config/>");
    row("unknown mode", "x.keo", "<C><Mode>Heavy</Mode></C>");
    row("key of another section", "x.analyzer_prj", "[Other]\nKEO_FILE=DIR/s.keo\n");
    row("names itself", "x.analyzer_prj", "KEO_FILE=DIR/x.analyzer_prj\n");
    row("in capitals", "x.ANALYZER_PRJ", "KEO_FILE=DIR/s.keo\n");
    row("project file too large", "x.analyzer_prj",
        QByteArray("KEO_FILE=DIR/s.keo\n") + QByteArray(2 * 1024 * 1024, ';') + '\n');
}

void tst_ProjectManager::opensNothing()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    Bench bench;
    bench.open(bench.standard());
    bench.log.take();
    bench.open(bench.write(name, content.replace("DIR", bench.dir.path().toLocal8Bit())));
    QCOMPARE(bench.log.take(), QStringList{"standard: close"});

    bench.open(bench.dir.filePath("missing.keo"));
    bench.open(bench.dir.filePath("missing.analyzer_prj"));
    QVERIFY(bench.log.calls.isEmpty());
    QVERIFY(!QFile::exists(bench.dir.filePath("missing.analyzer_prj")));
}

KEO_WIDGET_TEST_MAIN(tst_ProjectManager)
#include "tst_projectmanager.moc"
