// Saving and opening projects in a window, with real files, keys and dialogs.

#include "../design/randomwindow.h"
#include "projectwindow.h"

#include <base/wholefile.h>
#include <config/standardconfig.h>
#include <design/datafilewriter.h>
#include <design/projectfile.h>
#include <design/savedcapture.h>

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QProcess>
#include <QScopeGuard>
#include <QSet>
#include <QSpinBox>

#include <cstring>
#include <optional>

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
    void asksBeforeItReplaces_data();
    void asksBeforeItReplaces();
    void opensWhatItCan_data();
    void opensWhatItCan();
    void writesWhatItCan_data();
    void writesWhatItCan();
    void fullDiskTakesNothing();
    void keepsWhatTheToolWrote_data();
    void keepsWhatTheToolWrote();
    void pathsHoldAnywhere();
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
struct SavedSession
{
    explicit SavedSession(quint32 seed = 1, int windows = 1, const QString &folder = {})
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
        const SavedSession saved(seed, 1 + int(seed % 3));
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
    const SavedSession saved(1, 1, folder);
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

void tst_ProjectFiles::asksBeforeItReplaces_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    QTest::newRow("yes") << QMessageBox::Yes;
    QTest::newRow("no") << QMessageBox::No;
}

// Named without its suffix, a project is not seen by the dialog, which asks for any other file.
void tst_ProjectFiles::asksBeforeItReplaces()
{
    QFETCH(QMessageBox::StandardButton, answer);
    const SavedSession saved;
    const QByteArray before = bytesOf(saved.project());
    ProjectWindow w(saved.keo());
    w.boxes.answer = answer;
    w.action("saveAction")->setEnabled(true);
    std::optional<OnModal<QFileDialog>> again;
    const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        again.emplace([](QFileDialog *second) { QTest::keyClick(second, Qt::Key_Escape); });
        box->findChild<QLineEdit *>()->setText(saved.path + "/saved");
        QTest::keyClick(box, Qt::Key_Return);
    });
    save(w);
    QVERIFY(dialog.seen());
    QCOMPARE(w.boxes.seen, QStringList("Warning: " + saved.project() +
                                       " already exists. Do you want to replace it?"));
    QCOMPARE(again->seen(), answer == QMessageBox::No); // it asks for another name
    QCOMPARE(bytesOf(saved.data()).contains("<Window"), answer == QMessageBox::No);
    QCOMPARE(bytesOf(saved.project()), before); // the same paths in either case
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
    const SavedSession saved;
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
    const SavedSession saved;
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
    const SavedSession saved;
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

void tst_ProjectFiles::keepsWhatTheToolWrote_data()
{
    QTest::addColumn<QByteArray>("onDisk"); // meanwhile; null: nothing
    QTest::addColumn<QStringList>("kept");
    const QStringList one("design.kept-1.keo");
    QTest::newRow("untouched") << QByteArray() << QStringList();
    QTest::newRow("written anew") << QByteArray("<KEO_CONFIG><KEO_ID>1</KEO_ID></KEO_CONFIG>")
                                  << one;
    QTest::newRow("half written") << QByteArray("<KEO_CONFIG>") << one;
}

void tst_ProjectFiles::keepsWhatTheToolWrote()
{
    QFETCH(QByteArray, onDisk);
    QFETCH(QStringList, kept);
    const SavedSession saved;
    const ProjectWindow w(saved.project());
    QStringList told;
    connect(w.project, &CaptureProject::told, &w.boxes,
            [&](const QString &text) { told.append(text); });
    if (!onDisk.isNull())
        write(saved.keo(), onDisk);
    save(w);
    const QDir folder(saved.path);
    QCOMPARE(folder.entryList({"*kept*"}), kept);
    QCOMPARE(told.size(), 1);
    QVERIFY2(told[0].contains("Saved " + saved.project()), qPrintable(told[0]));
    for (const QString &copy : kept) {
        QCOMPARE(bytesOf(folder.filePath(copy)), onDisk);
        QVERIFY2(told[0].contains(folder.filePath(copy)), qPrintable(told[0]));
    }
    save(w); // our own file is no news
    QCOMPARE(folder.entryList({"*kept*"}), kept);
    QVERIFY(w.boxes.seen.isEmpty());
}

void tst_ProjectFiles::pathsHoldAnywhere()
{
    const SavedSession saved;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(saved.path));
    const auto restore = qScopeGuard([&] { QDir::setCurrent(before); });
    // In a project they count from its folder.
    write(saved.project(), "[General]\nDATA_FILE=saved.xml\nKEO_FILE=design.keo\n");
    QVERIFY(QDir::setCurrent("/"));
    {
        const ProjectWindow w(saved.project());
        QCOMPARE(w.tabs->count(), 2);
    }
    QVERIFY(QDir::setCurrent(saved.path));
    const ProjectWindow w("design.keo");
    w.action("saveAction")->setEnabled(true);
    QString suggested;
    {
        const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
            auto *name = box->findChild<QLineEdit *>("fileNameEdit");
            suggested = box->directory().path() + u'/' + name->text();
            name->setText("new");
            QVERIFY(QDir::setCurrent("/"));
            QTest::keyClick(box, Qt::Key_Return);
        });
        save(w);
        QVERIFY(dialog.seen());
    }
    QCOMPARE(suggested, saved.path + "/design");
    const auto project = readProjectFile(saved.path + "/new.analyzer_prj");
    QVERIFY(project);
    QCOMPARE(*project, (ProjectFile{saved.keo(), saved.path + "/new.xml"}));
}

namespace {

const char *const kSaveForEver = "--save-for-ever";

constexpr quint32 kPositions = 200; // of the trigger, one a save

/// The life of the process that gets killed: opens the project and saves one trigger position after
/// the other, as if each came with a new capture.
int saveForEver(const QString &project)
{
    SavedSession twin; // for its arrangements
    ProjectWindow w(project);
    auto *position = w.tabs->findChild<QSpinBox *>(QStringLiteral("spinBoxTrPos"));
    for (quint32 save = QRandomGenerator::global()->generate();; ++save) {
        twin.design.position = int(save % kPositions);
        position->setValue(twin.design.position);
        w.wave(1)->loadWindow(twin.arrangement(1));
        QCoreApplication::processEvents();
        w.action("saveAction")->trigger();
        std::puts("saved");
        std::fflush(stdout);
    }
}

/// What KEO::openProject shows, and the position that the description has.
struct Generation
{
    int described = -1;
    int captured = -1;
};

Generation generationOf(const SavedSession &saved)
{
    Generation generation;
    const CoreList cores = loadStandardConfigFile(saved.keo());
    if (!cores.empty())
        generation.described = cores.front()->trigger_pos;
    const auto project = openProject(saved.project());
    if (project && project->captures.front().contents.maxDataLength() == saved.design.amount)
        generation.captured = project->captures.front().core.triggerSample;
    return generation;
}

} // namespace

// KEO_TEST_KILLS=300 tries for longer. A set can be caught between two renames, but hardly ever.
void tst_ProjectFiles::killedWhileSaving()
{
    const SavedSession saved;
    const QByteArrayList before = saved.files();
    const int rounds = qEnvironmentVariable("KEO_TEST_KILLS", "8").toInt();
    QRandomGenerator random(1);
    QSet<int> seen;
    int mixed = 0;
    for (int round = 0; round < rounds; ++round) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(),
                      {"tst_projectfiles", kSaveForEver, saved.project()});
        for (int saves = 1 + round % 2; saves > 0;) {
            QVERIFY(process.waitForReadyRead(30000));
            saves -= int(process.readAllStandardOutput().count('\n'));
        }
        QTest::qWait(random.bounded(40));
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit); // it did not end by itself
        const Generation generation = generationOf(saved);
        QVERIFY2(generation.captured >= 0, "it no longer opens with waves");
        if (generation.captured != generation.described) {
            ++mixed;
            write(saved.keo(), before[0]); // a window shows no such waves
            write(saved.data(), before[1]);
        }
        seen.insert(generation.captured);
    }
    qInfo("%d of %d kills fell between two renames", mixed, rounds);
    QVERIFY(mixed <= 2 + rounds / 30);
    QVERIFY(seen.size() > 2); // it was at work
}

// Windows of two cores can share a number, and then all that they tell of one another.
void tst_ProjectFiles::sharedDomains()
{
    SavedSession saved(4, 2);
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

static int testOrSaveForEver(int argc, char **argv)
{
    if (argc == 3 && std::strcmp(argv[1], kSaveForEver) == 0) {
        const QApplication application(argc, argv);
        return saveForEver(QString::fromLocal8Bit(argv[2]));
    }
    return runWidgetTest<tst_ProjectFiles>(argc, argv);
}

KEO_OWN_TEST_MAIN(testOrSaveForEver)
#include "tst_projectfiles.moc"
