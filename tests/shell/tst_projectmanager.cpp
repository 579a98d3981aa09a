#include "fakeproject.h"

#include <shell/projectmanager.h>
#include <support/widgettest.h>

#include <QAction>
#include <QDataStream>
#include <QFile>
#include <QSettings>
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
    void failedOpen();
    void goneWhileOpening();
    void opensProjectFiles();
    void opensNothing_data();
    void opensNothing();
    void hostileProjectFile_data();
    void hostileProjectFile();
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
    row("too deep", QByteArray("<Config>").repeated(5000) + QByteArray("</Config>").repeated(5000),
        Unknown);
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
    bench.open(second); // the same object once more
    QCOMPARE(bench.log.take().first(), "lite: close");

    bench.log.busy = true;
    bench.open(first);
    QVERIFY(!bench.manager->closeCurrent(&bench.window, {}));
    QVERIFY(!bench.manager->closeCurrent(&bench.window, [] { return false; }));
    QCOMPARE(bench.log.take(), QStringList(3, "lite: close refused"));
    QVERIFY(!asked && bench.manager->closeCurrent(&bench.window, ask) && asked);
    QCOMPARE(bench.log.take(), QStringList{"lite: close"});
}

void tst_ProjectManager::failedOpen()
{
    Bench bench;
    bench.log.opens = false;
    const QString file = bench.standard();
    bench.open(file);
    QCOMPARE(bench.log.take(), (QStringList{"standard: setup", "standard: open " + file,
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

void tst_ProjectManager::opensProjectFiles()
{
    Bench bench;
    const QString file = bench.dir.filePath("run, 1 @home.analyzer_prj");
    QSettings settings(file, QSettings::IniFormat);
    const QByteArray content = "<Config><Mode>Lite</Mode></Config>";
    // Names that an INI file has to quote or escape.
    for (const char *name :
         {"plain.keo", "a, b;c.zeo", "50% \"@Home\" = é\t.keo", "@Variant.keo"}) {
        settings.setValue("KEO_FILE", bench.write(QString::fromUtf8(name), content));
        settings.sync();
        bench.open(file);
        QVERIFY2(bench.log.take().contains("lite: open " + file), name);
    }
}

void tst_ProjectManager::opensNothing_data()
{
    const auto row = addColumns<QString, QByteArray>({"name", "content"});
    row("other extension", "x.xml", "<Config/>");
    row("unknown mode", "x.keo", "<C><Mode>Heavy</Mode></C>");
    row("no project settings", "x.analyzer_prj", {});
    row("key of another section", "x.analyzer_prj", "[Other]\nKEO_FILE=DIR/s.keo\n");
    row("a list", "x.analyzer_prj", "KEO_FILE=DIR/s.keo, DIR/s.keo\n");
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

void tst_ProjectManager::hostileProjectFile_data()
{
    // open: how the opening of a serialised value is written
    const auto row = addColumns<QByteArray>({"open"});
    row("plain", "@Variant(");
    row("octal", "\\100V\\x61riant(");
    row("beyond 16 bits", "\\x10040Variant(");
    row("pieces in quotes", "\"@\"Var\"iant(\"");
    row("escapes that mean nothing", "\\q@Va\\priant\\x(");
    row("over two lines of another system", "@Var\\\r\niant(");
}

// A serialised text here, which would open; from a stranger it may be anything.
void tst_ProjectManager::hostileProjectFile()
{
    QFETCH(QByteArray, open);
    Bench bench;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_0);
    stream << QVariant(bench.standard());
    QByteArray line = "KEO_FILE=" + open;
    for (const char byte : std::as_const(bytes))
        line += "\\x" + QByteArray::number(uchar(byte), 16);
    bench.open(bench.write("x.analyzer_prj", line + ")\n"));
    QCOMPARE(bench.log.take(), QStringList());
}

KEO_WIDGET_TEST_MAIN(tst_ProjectManager)
#include "tst_projectmanager.moc"
