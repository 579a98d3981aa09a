// Saving and opening projects in a window, with real files, keys and dialogs.

#include "../design/randomwindow.h"
#include "projectwindow.h"

#include <base/wholefile.h>
#include <design/datafilewriter.h>
#include <design/projectfile.h>

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QProcess>

#include <cstring>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

using namespace KEO;
using WaveMonitor::WindowContents;

class tst_ProjectFiles : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void captureComesBack();
    void arrangementsComeBack();
    void anyPath_data();
    void anyPath();
    void asksWhere_data();
    void asksWhere();
    void opensWhatItCan_data();
    void opensWhatItCan();
    void writesWhatItCan_data();
    void writesWhatItCan();
    void fullDiskTakesNothing();
    void killedWhileSaving();
    void sharedDomains();
};

namespace {

QByteArray bytesOf(const QString &path)
{
    const auto bytes = readWholeFile(path, 1'000'000'000, LineEnds::AsTheyAre);
    return bytes ? *bytes : QByteArray();
}

void write(const QString &path, const QByteArray &content)
{
    if (writeWholeFile(path, content, LineEnds::AsTheyAre))
        qFatal("cannot write %s", qPrintable(path));
}

/// A saved project in a folder of its own, made without the program's windows: a design with
/// \a windows windows and one random arrangement for each.
struct SavedProject
{
    explicit SavedProject(quint32 seed = 1, int windows = 1, const QString &folder = {})
        : path(directory.filePath(folder))
    {
        design.windows = windows;
        QDir().mkpath(path);
        design.write(path);
        std::vector<WindowContents> contents;
        QList<WindowToSave> list;
        for (int window = 0; window < windows; ++window)
            contents.push_back(arrangement(seed + quint32(window) * 1000));
        for (int window = 0; window < windows; ++window)
            list.append({design.coreIndex, window, &contents[size_t(window)]});
        if (writeDataFile(data(), list) || writeProjectFile(project(), {keo(), data()}))
            qFatal("no project");
    }

    [[nodiscard]] WindowContents arrangement(quint32 seed) const
    {
        QStringList names;
        for (int i = 0; i < design.signalCount(); ++i)
            names.append(design.name(i));
        QRandomGenerator random(seed);
        WindowContents contents;
        arrangeRandomly(contents, random, names, design.amount);
        contents.setTriggerPosition(design.position);
        return contents;
    }
    [[nodiscard]] QString keo() const { return path + "/design.keo"; }
    [[nodiscard]] QString data() const { return path + "/saved.xml"; }
    [[nodiscard]] QString project() const { return path + "/saved.analyzer_prj"; }
    [[nodiscard]] QByteArrayList files() const
    {
        return {bytesOf(keo()), bytesOf(data()), bytesOf(project())};
    }

    TestDesign design;
    QTemporaryDir directory;
    QString path;
};

void save(const ProjectWindow &w)
{
    w.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(w.window.get()));
    QTest::keySequence(w.window.get(), QKeySequence::Save);
}

/// Presses Save and types \a name into the dialog, or closes it for an empty one.
void saveAs(const ProjectWindow &w, const QString &name)
{
    QString caption;
    QStringList filters;
    const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        caption = box->windowTitle();
        filters = box->nameFilters();
        box->findChild<QLineEdit *>()->setText(name);
        QTest::keyClick(box, name.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
    });
    save(w);
    QVERIFY(dialog.seen());
    QCOMPARE(caption, "Save Data File");
    QCOMPARE(filters, QStringList("KEO Analyzer Project File (*.analyzer_prj)"));
}

} // namespace

void tst_ProjectFiles::captureComesBack()
{
    TestDesign design;
    design.windows = 2;
    design.coreIndex = 3;
    design.cores = 2;
    const Bench bench(design);
    const QString project = bench.directory.filePath("my run.1");
    QStringList windows;
    QByteArray description;
    {
        ProjectWindow w(bench.file());
        QCOMPARE(w.enabled(), "OS-----P");
        w.tree()->topLevelItem(1)->setCheckState(0, Qt::Checked);
        w.capture();
        QCOMPARE(w.tabs->count(), 5);
        QVERIFY(w.isEnabled("saveAction"));
        // The user arranges one window, and renames.
        QRandomGenerator random(5);
        WindowContents arranged;
        const auto names = [&] {
            QStringList all;
            for (int i = 0; i < design.signalCount(); ++i)
                all.append(design.name(i));
            return all;
        };
        arrangeRandomly(arranged, random, names(), design.amount);
        arranged.setTriggerPosition(design.position);
        w.wave(2)->loadWindow(std::move(arranged));
        // Of core 4, which was checked last; both of its windows still exist.
        w.tabs->findChild<QComboBox *>(QStringLiteral("comboBoxWindow"))->setCurrentText("4");
        saveAs(w, project + ".analyzer_prj");
        for (int tab = 1; tab < 5; ++tab)
            windows.append(textOf(w.wave(tab)->contents()));
        QVERIFY(w.boxes.seen.isEmpty());
        description = bytesOf(bench.file());
    }
    QVERIFY(QFile::exists(bench.directory.filePath("my run.xml")));
    const QByteArray data = bytesOf(bench.directory.filePath("my run.xml"));
    const QByteArray ini = bytesOf(project + ".analyzer_prj");

    ProjectWindow w;
    QVERIFY(w.open(project + ".analyzer_prj"));
    QVERIFY(w.boxes.seen.isEmpty());
    QCOMPARE(w.titles(), (QStringList{"Configuration", "core 3 Window 0", "core 3 Window 1",
                                      "core 4 Window 0", "core 4 Window 1"}));
    QStringList again;
    for (int tab = 1; tab < 5; ++tab)
        again.append(textOf(w.wave(tab)->contents()));
    QCOMPARE(again, windows);
    QCOMPARE(w.wave(4)->windowTitle(), "core 4 window 1");
    QCOMPARE(w.wave(4)->property("domain").toULongLong(), 16u);
    // Saving asks nothing now and changes no byte.
    save(w);
    QCOMPARE(bytesOf(bench.file()), description);
    QCOMPARE(bytesOf(bench.directory.filePath("my run.xml")), data);
    QCOMPARE(bytesOf(project + ".analyzer_prj"), ini);
    w.tree()->setCurrentItem(w.tree()->topLevelItem(1));
    QCOMPARE(w.tabs->findChild<QComboBox *>(QStringLiteral("comboBoxWindow"))->currentText(), "4");
    // The arrangement outlives a new capture.
    w.capture();
    QCOMPARE(w.titles(), (QStringList{"Configuration", "core 3 window 0", "core 3 window 1"}));
    const auto rowsOf = [](const QString &window) { return window.section("<Layout", 1); };
    QCOMPARE(rowsOf(textOf(w.wave(2)->contents())), rowsOf(windows[1]));
    QVERIFY(w.project->closeProject(w.window.get(), {}));
    QVERIFY(!w.isEnabled("saveAction"));
}

void tst_ProjectFiles::arrangementsComeBack()
{
    for (quint32 seed = 1; seed <= 6; ++seed) {
        const SavedProject saved(seed, 1 + int(seed % 3));
        QStringList arranged;
        {
            ProjectWindow w(saved.project());
            for (int window = 0; window < saved.design.windows; ++window) {
                w.wave(window + 1)->loadWindow(saved.arrangement(seed * 7 + quint32(window)));
                arranged.append(textOf(w.wave(window + 1)->contents()));
            }
            save(w);
        }
        const QByteArrayList files = saved.files();
        ProjectWindow w(saved.project());
        for (int window = 0; window < saved.design.windows; ++window)
            QCOMPARE(textOf(w.wave(window + 1)->contents()), arranged[window]);
        save(w);
        QCOMPARE(saved.files(), files);
        QVERIFY(w.boxes.seen.isEmpty());
    }
}

void tst_ProjectFiles::anyPath_data()
{
    QTest::addColumn<QString>("folder");
    for (const char *folder : {"with blanks", "\u00fcml\u00e4ut", "\u4fe1\u53f7\u6ce2\u5f62",
                               "\"double\" 'single'", "100%1 %20", "a,b;c=d[e]", "\U0001F600"})
        QTest::newRow(folder) << QString::fromUtf8(folder);
}

void tst_ProjectFiles::anyPath()
{
    QFETCH(QString, folder);
    const SavedProject saved(1, 1, folder);
    const QString path = saved.path + "/new " + folder;
    QString shown;
    {
        ProjectWindow w(saved.project());
        shown = textOf(w.wave(1)->contents());
        QVERIFY(w.project->closeProject(w.window.get(), {}));
        QVERIFY(w.open(saved.keo()));
        QCOMPARE(w.tabs->count(), 1);
    }
    QVERIFY(!writeProjectFile(path + ".analyzer_prj", {saved.keo(), saved.data()}));
    const ProjectWindow w(path + ".analyzer_prj");
    save(w);
    QCOMPARE(w.titles(), (QStringList{"Configuration", "core 0 Window 0"}));
    QCOMPARE(textOf(w.wave(1)->contents()), shown);
    QVERIFY(w.boxes.seen.isEmpty());
    const auto project = readProjectFile(path + ".analyzer_prj");
    QVERIFY(project && *project == (ProjectFile{saved.keo(), saved.data()}));
}

void tst_ProjectFiles::asksWhere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("no suffix") << "b" << QStringList{"b.analyzer_prj", "b.xml"};
    QTest::newRow("suffix") << "b.analyzer_prj" << QStringList{"b.analyzer_prj", "b.xml"};
    QTest::newRow("other suffix") << "b.txt" << QStringList{"b.txt", "b.xml"};
    QTest::newRow("dots") << "run.1.analyzer_prj" << QStringList{"run.1.analyzer_prj", "run.xml"};
    QTest::newRow("given up") << "" << QStringList();
}

void tst_ProjectFiles::asksWhere()
{
    QFETCH(QString, name);
    QFETCH(QStringList, files);
    TestDesign design;
    design.amount = 32;
    const Bench bench(design);
    const ProjectWindow w(bench.file());
    w.capture();
    const QByteArray before = bytesOf(bench.file());
    QVERIFY(QDir(bench.directory.path()).mkdir("new"));
    const QDir folder(bench.directory.filePath("new"));
    saveAs(w, name.isEmpty() ? name : folder.filePath(name));
    QCOMPARE(folder.entryList(QDir::Files, QDir::Name), files);
    QCOMPARE(bytesOf(bench.file()) == before, files.isEmpty()); // Save rewrites the description
    if (files.isEmpty()) {
        saveAs(w, folder.filePath("x")); // it asks again
        return;
    }
    const auto project = readProjectFile(folder.filePath(files.first()));
    QVERIFY(project);
    QCOMPARE(project->keoFile, bench.file());
    QCOMPARE(project->dataFile, folder.filePath(files.last()));
    for (const QString &file : files)
        QFile::remove(folder.filePath(file));
    save(w); // from now on it asks nothing
    QCOMPARE(folder.entryList(QDir::Files, QDir::Name), files);
    QVERIFY(w.boxes.seen.isEmpty());
}

void tst_ProjectFiles::opensWhatItCan_data()
{
    QTest::addColumn<QByteArray>("data"); // of the data file; null: there is none
    QTest::addColumn<QString>("keo");     // what becomes of the description
    QTest::addColumn<bool>("opens");
    QTest::addColumn<QString>("box");
    const QByteArray none = "<WaveData/>";
    QTest::newRow("no description")
        << none << "gone" << false << "Error: Invalid KEO file specified in project file.";
    QTest::newRow("description without cores")
        << none << "empty" << false << "Error: Invalid KEO file specified in project file.";
    QTest::newRow("no data file")
        << QByteArray() << "" << true
        << "Warning: Cached data file specified in project file is missing.";
    QTest::newRow("data file cut off")
        << QByteArray("<WaveData>\n<Window>") << "" << true
        << "Error: Error when reading data file.\n line: 2 column: 8, Premature end of document.";
    QTest::newRow("of another design") << QByteArray("<WaveData><Window/></WaveData>") << "" << true
                                       << "Warning: Data file miss match the project";
    QTest::newRow("no windows") << none << "" << true << "";
}

void tst_ProjectFiles::opensWhatItCan()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, keo);
    QFETCH(bool, opens);
    QFETCH(QString, box);
    const SavedProject saved;
    QFile::remove(saved.data());
    if (!data.isNull())
        write(saved.data(), data);
    if (keo == "gone")
        QFile::remove(saved.keo());
    if (keo == "empty")
        write(saved.keo(), "<KEO_CONFIG/>");
    ProjectWindow w;
    QCOMPARE(w.open(saved.project()), opens);
    QCOMPARE(w.boxes.seen, box.isEmpty() ? QStringList() : QStringList(box));
    QCOMPARE(w.tabs->count(), opens ? 1 : 0);
    if (opens)
        QCOMPARE(w.enabled(), "OSA----P");
}

void tst_ProjectFiles::writesWhatItCan_data()
{
    QTest::addColumn<int>("blocked");
    QTest::newRow("description") << 0;
    QTest::newRow("data file") << 1;
    QTest::newRow("project file") << 2;
}

// A folder in the place of a file refuses everybody, even those whom permissions don't stop.
void tst_ProjectFiles::writesWhatItCan()
{
    QFETCH(int, blocked);
    const SavedProject saved;
    const QStringList paths{saved.keo(), saved.data(), saved.project()};
    const ProjectWindow w(saved.project());
    const QByteArrayList before = saved.files();
    for (int i = 0; i < 3; ++i) {
        QFile::remove(paths[i]);
        if (i == blocked)
            QVERIFY(QDir().mkdir(paths[i]));
    }
    save(w);
    QCOMPARE(w.boxes.seen,
             blocked == 0 ? QStringList("Error: Can not save to " + saved.keo()) : QStringList());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(QFileInfo(paths[i]).isFile(), i != blocked);
    QVERIFY(QDir(paths[blocked]).isEmpty());
    QVERIFY(QDir().rmdir(paths[blocked]));
    save(w);
    const QByteArrayList after = saved.files();
    QCOMPARE(after[1], before[1]);
    QCOMPARE(after[2], before[2]);
    QVERIFY(!after[0].isEmpty());
}

// A limit on the size of a file stands for the full disk: no file fits.
void tst_ProjectFiles::fullDiskTakesNothing()
{
#ifdef Q_OS_UNIX
    const SavedProject saved;
    ProjectWindow w(saved.project());
    const QByteArrayList before = saved.files();
    w.wave(1)->loadWindow(saved.arrangement(99));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
    rlimit tight = usual;
    tight.rlim_cur = 20;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
    save(w);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &usual), 0);
    QCOMPARE(saved.files(), before);
    QCOMPARE(w.boxes.seen, QStringList("Error: Can not save to " + saved.keo()));
    save(w);
    QVERIFY(saved.files()[1] != before[1]);
#else
    QSKIP("needs a limit on the file size");
#endif
}

namespace {

const char *const kSaveForEver = "--save-for-ever";

/// The life of the process that gets killed: opens the project and saves two arrangements in turn.
int saveForEver(const QString &project)
{
    const SavedProject twin; // for its arrangements
    ProjectWindow w(project);
    for (quint32 seed = 1;; seed = 3 - seed) {
        w.wave(1)->loadWindow(twin.arrangement(seed));
        QCoreApplication::processEvents();
        w.action("saveAction")->trigger();
        std::puts("saved");
        std::fflush(stdout);
    }
}

} // namespace

void tst_ProjectFiles::killedWhileSaving()
{
    const SavedProject saved;
    {
        const ProjectWindow w(saved.project());
        save(w); // the description as the program writes it
    }
    const QByteArrayList before = saved.files();
    QByteArrayList datas;
    for (quint32 seed = 1; seed <= 2; ++seed) {
        const WindowContents contents = saved.arrangement(seed);
        datas.append(dataFileText({{saved.design.coreIndex, 0, &contents}}));
    }
    QRandomGenerator random(1);
    bool sawBoth = false;
    for (int round = 0; round < 8; ++round) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {kSaveForEver, saved.project()});
        for (int saves = 1 + round % 2; saves > 0;) {
            QVERIFY(process.waitForReadyRead(30000));
            saves -= int(process.readAllStandardOutput().count('\n'));
        }
        QTest::qWait(random.bounded(40));
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit); // it did not end by itself
        const QByteArrayList after = saved.files();
        QCOMPARE(after[0], before[0]);
        QVERIFY2(datas.contains(after[1]), after[1]);
        QCOMPARE(after[2], before[2]);
        sawBoth = sawBoth || after[1] == datas[1];
    }
    QVERIFY(sawBoth); // it was at work
}

// Windows of two cores can share a number, and then all that they tell of one another.
void tst_ProjectFiles::sharedDomains()
{
    SavedProject saved(4, 2);
    saved.design.cores = 2;
    saved.design.write(saved.path);
    const WindowContents first = saved.arrangement(4);
    const WindowContents second = saved.arrangement(5);
    QVERIFY(!writeDataFile(saved.data(), {{0, 1, &first}, {1, 1, &second}, {0, 1, &first}}));
    ProjectWindow w(saved.project());
    QCOMPARE(w.titles(), (QStringList{"Configuration", "core 0 Window 1", "core 1 Window 1",
                                      "core 0 Window 1"}));
    w.wave(1)->zoomFit();
    QCoreApplication::processEvents();
    w.tabs->setCurrentIndex(2);
    w.press(Qt::Key_F8);
    QCoreApplication::processEvents();
    delete w.wave(1);
    w.press(Qt::Key_F7);
    QCoreApplication::processEvents();
    QCOMPARE(textOf(w.wave(1)->contents()), textOf(second));
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    if (argc == 3 && std::strcmp(argv[1], kSaveForEver) == 0) {
        const QApplication application(argc, argv);
        return saveForEver(QString::fromLocal8Bit(argv[2]));
    }
    return runTest<tst_ProjectFiles, QApplication>(argc, argv);
}
#include "tst_projectfiles.moc"
