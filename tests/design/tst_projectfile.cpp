#include <design/projectfile.h>
#include <support/files.h>
#include <support/testmain.h>

#include <QDir>
#include <QScopeGuard>
#include <QSettings>

using namespace KEO;

class tst_ProjectFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_directory.isValid()); }
    void keepsPaths_data();
    void keepsPaths();
    void refusesObjects_data();
    void refusesObjects();
    void replacesWhatIsThere_data();
    void replacesWhatIsThere();
    void failsWithoutHarm();
    void besideTheProject();

private:
    QString path(const char *name) const { return m_directory.filePath(QLatin1String(name)); }
    QTemporaryDir m_directory;
};

void tst_ProjectFile::keepsPaths_data()
{
    const auto row = addColumns<QString>({"folder"});
    for (const char *folder : {"/plain",
                               "/with blanks ",
                               "/\u00fcml\u00e4ut",
                               "/\u4fe1\u53f7\u6ce2\u5f62",
                               "/\"double\"",
                               "/'single'",
                               "/100%",
                               "/%20%41",
                               "/a,b;c=d",
                               "/[General]",
                               "/@home",
                               "/\U0001F600",
                               "/x\\y",
                               "/#",
                               "/a@Variant(",
                               "@Variant(",
                               "@@DateTime(",
                               "@String(a)",
                               "/\t\a\x01"
                               "5\x7f",
                               " ",
                               "/?\"'\\\"",
                               "/\n[S]\nKEO_FILE=x",
                               ""})
        row(folder, QString::fromUtf8(folder));
}

void tst_ProjectFile::keepsPaths()
{
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", "/dev/null"); // as useless as one that is full
    const auto restore = qScopeGuard([&] { qputenv("TMPDIR", before); });
    QFETCH(QString, folder);
    const ProjectFile project{folder + "/a.keo", folder + "/a.xml"};
    QVERIFY(!writeProjectFile(path("p.analyzer_prj"), project));
    const auto again = readProjectFile(path("p.analyzer_prj"));
    QVERIFY(again);
    const QDir directory(m_directory.path()); // from where relative paths are seen
    QCOMPARE(again->keoFile, directory.absoluteFilePath(project.keoFile));
    QCOMPARE(again->dataFile, directory.absoluteFilePath(project.dataFile));
    // Any reader of INI files finds the two keys where they belong.
    // The toolkit remembers a file that it has read by its name: a new one for each row.
    static int rows = 0;
    const QString copy = path(QByteArray::number(++rows) + ".ini");
    QVERIFY(QFile::copy(path("p.analyzer_prj"), copy));
    {
        const QSettings settings(copy, QSettings::IniFormat);
        QCOMPARE(settings.allKeys(), (QStringList{"DATA_FILE", "KEO_FILE"}));
        QCOMPARE(settings.value("KEO_FILE").toString(), project.keoFile);
    }
    QFile::remove(copy);
    // And what the toolkit writes is read here.
    {
        QSettings settings(copy, QSettings::IniFormat);
        settings.setValue("KEO_FILE", project.keoFile);
        settings.setValue("DATA_FILE", project.dataFile);
    }
    QCOMPARE(contentOf(copy), contentOf(path("p.analyzer_prj")));
    QFile::remove(copy);
}

void tst_ProjectFile::refusesObjects_data()
{
    const auto row = addColumns<QByteArray>({"opening"});
    row("any", "@Variant(");
    row("a time", "@DateTime(");
    row("octal", "\\100V\\x61riant(");
    row("beyond 16 bits", "\\x10040Variant(");
    row("pieces in quotes", "\"@\"Var\"iant(\"");
    row("escapes that mean nothing", "\\q@Da\\pteTime\\x(");
    row("over two lines of another system", "@Date\\\r\nTime(");
}

// However its opening is written, an object from a stranger is not made.
void tst_ProjectFile::refusesObjects()
{
    QFETCH(QByteArray, opening);
    QVERIFY(!parseProjectFile("[General]\nKEO_FILE=" + opening + "\\0\\0\\0\\xa\\0)\n"));
}

void tst_ProjectFile::replacesWhatIsThere_data()
{
    const auto row = addColumns<QByteArray, QByteArray>({"before", "after"});
    const QByteArray keys = "DATA_FILE=/b.xml\nKEO_FILE=/b.keo\n";
    row("other keys stay", "[General]\nKEO_FILE=/a.keo\nDATA_FILE=/a.xml\nother=1\n\n[S]\nx=2\n",
        "[General]\n" + keys + "other=1\n\n[S]\nx=2\n");
    row("comments and odd lines stay",
        "; mine\n\n[S]\nKEO_FILE=no\n[general] ; here\nother=\"a\nb\"\n;c\n  KEO_FILE = /a\\\n.keo",
        "; mine\n\n[S]\nKEO_FILE=no\n[general] ; here\n" + keys + "other=\"a\nb\"\n;c\n  ");
    row("without a header", "other=1\n[S]\nx=2\n", "[General]\n" + keys + "other=1\n[S]\nx=2\n");
    row("other sections alone", "[S]\nx=2\n", "[General]\n" + keys + "\n[S]\nx=2\n");
    row("serialised objects go", QByteArray("[General]\nx=@Variant(\\0\\0\\0\\t\\xff)\n"),
        "[General]\n" + keys);
    row("empty", {}, "[General]\n" + keys);
    row("no settings at all", "<?xml version=\"1.0\"?>\n<WaveData/>\n", "[General]\n" + keys);
}

void tst_ProjectFile::replacesWhatIsThere()
{
    QFETCH(QByteArray, before);
    const QString file = path("there.analyzer_prj");
    putFile(file, before);
    QVERIFY(!writeProjectFile(file, {"/b.keo", "/b.xml"}));
    QTEST(contentOf(file), "after");
}

void tst_ProjectFile::failsWithoutHarm()
{
    QVERIFY(QDir().mkpath(path("folder")));
    const auto error = writeProjectFile(path("folder"), {"/b.keo", "/b.xml"});
    QVERIFY(error && error->kind == Error::File);
    QVERIFY(writeProjectFile(path("missing/p.analyzer_prj"), {}));
    QVERIFY(QDir(path("folder")).isEmpty());
    QVERIFY(!readProjectFile(path("folder")));
    QVERIFY(!readProjectFile(path("missing")));
}

void tst_ProjectFile::besideTheProject()
{
    QCOMPARE(dataFileBeside("/a/run.1.analyzer_prj"), "/a/run.xml");
    QCOMPARE(dataFileBeside("/a.b/c"), "/a.b/c.xml");
    QCOMPARE(dataFileBeside("/\u4fe1 1/\"x\" 100%.analyzer_prj"), "/\u4fe1 1/\"x\" 100%.xml");
}

KEO_TEST_MAIN(tst_ProjectFile)
#include "tst_projectfile.moc"
